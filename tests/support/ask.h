// Questions to a registry or a file system as one line of text, answers as another: rows of tests
// that read like what they ask.
//
//   Ask(registry, "keys 64 HKCR\\CLSID")          "{A},{B}", or "Absent", "Unknown" ...
//   Ask(registry, "get 32 HKLM\\SOFTWARE\\X > n")  "n"="text" as in a registry text
//
// Verbs: open (counts of subkeys and values), keys, values, get, set (KEY > name=text), create,
// delete, force (delete in spite of rights), drop (a value), candelete, canwrite. Views: 64, 32,
// own, both.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "registry/platform.h"

namespace scrubwell::test {

const char* StatusName(Status status);
std::string Ask(IRegistry& registry, std::string_view query);
/// Verbs: stat ("file 12", "folder"), list, read, drive, erase, rmdir. Views: disk, 32.
std::string Ask(IFiles& files, std::string_view query);

struct AskRow {
  const char* question;
  const char* answer;
  unsigned needs = 0;  ///< what a backend must have, in bits of the suite's own
};

/// Asks and compares row by row, in order; rows that need any of `lacks` are left out.
template <class Rows, class Asked>
void CheckRows(Asked& asked, const Rows& rows, unsigned lacks = 0) {
  for (const AskRow& row : rows) {
    if ((row.needs & lacks) != 0) continue;
    EXPECT_EQ(Ask(asked, row.question), row.answer) << row.question;
  }
}

}  // namespace scrubwell::test
