// Places of the private Windows that a test furnishes and clears again.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "backends/windows/win32.h"
#include "backends/windows/windows_backend.h"
#include "support/ask.h"

// After the general header.
#include <sddl.h>

namespace scrubwell::test {

/// A backend that may change things, with copies of files below the folder for temporary ones.
inline WindowsOptions MayChange() {
  WindowsOptions options;
  options.mayChange = true;
  options.backupFolder = u"C:\\scrubwell-test\\backup";
  return options;
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

/// Gives a key the owner, group and rights that a text in the system's own form says.
inline void SetRights(HKEY root, const wchar_t* path, const wchar_t* rights,
                      SECURITY_INFORMATION parts = DACL_SECURITY_INFORMATION) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1,
                                                                   &descriptor, nullptr));
  const bool whole = (parts & OWNER_SECURITY_INFORMATION) != 0;
  const REGSAM access = (whole ? KEY_ALL_ACCESS : WRITE_DAC) | KEY_WOW64_64KEY;
  HKEY key = nullptr;
  ASSERT_EQ(RegOpenKeyExW(root, path, 0, access, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegSetKeySecurity(key, parts, descriptor), ERROR_SUCCESS);
  RegCloseKey(key);
  LocalFree(descriptor);
}

inline std::string ReadText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// With the folders above it.
inline void WriteText(const std::string& path, const std::string& content) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
  EXPECT_EQ(ReadText(path), content) << path;
}

}  // namespace scrubwell::test
