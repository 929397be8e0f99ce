// Places of the private Windows that a test furnishes and clears again.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "backends/windows/win32.h"
#include "backends/windows/windows_backend.h"
#include "support/ask.h"

namespace scrubwell::test {

struct AskRow {
  const char* question;
  const char* answer;
};

/// A backend that may change things, with copies of files below the folder for temporary ones.
inline WindowsOptions MayChange() {
  WindowsOptions options;
  options.mayChange = true;
  options.backupFolder = u"C:\\scrubwell-test\\backup";
  return options;
}

/// Asks and compares row by row, in order.
template <class Rows, class Asked>
void CheckRows(Asked& asked, const Rows& rows) {
  for (const AskRow& row : rows) EXPECT_EQ(Ask(asked, row.question), row.answer) << row.question;
}

/// A key that leads to another, with the keys on the way to it.
inline void MakeLink(HKEY root, const wchar_t* path, const std::wstring& target) {
  HKEY key = nullptr;
  ASSERT_EQ(
      RegCreateKeyExW(root, path, 0, nullptr, REG_OPTION_CREATE_LINK,
                      KEY_SET_VALUE | KEY_CREATE_LINK | KEY_WOW64_64KEY, nullptr, &key, nullptr),
      ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExW(key, L"SymbolicLinkValue", 0, REG_LINK,
                           reinterpret_cast<const BYTE*>(target.data()),
                           static_cast<DWORD>(target.size() * sizeof(wchar_t))),
            ERROR_SUCCESS);
  RegCloseKey(key);
}

}  // namespace scrubwell::test
