// Places of the private Windows that a test furnishes and clears again.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

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

}  // namespace scrubwell::test
