#include "hosts/cli/command_line.h"

#include <gtest/gtest.h>

namespace scrubwell::hosts {
namespace {

TEST(CommandLine, ReadsDrives) {
  struct Row {
    const char* text;
    char16_t letter;  // 0: refused
    const char* folder;
    DriveKind kind;
  };
  const Row rows[] = {
      {"E=/mnt/e", u'E', "/mnt/e", DriveKind::Fixed},
      {"e=/mnt/e:removable", u'E', "/mnt/e", DriveKind::Removable},
      {"F=/mnt/a:b:cdrom", u'F', "/mnt/a:b", DriveKind::CdRom},
      {"G=x:network", u'G', "x", DriveKind::Network},
      {"H=/mnt/h:fixed:fixed", u'H', "/mnt/h:fixed", DriveKind::Fixed},
      {"H=/mnt/h:floppy", u'H', "/mnt/h:floppy", DriveKind::Fixed},
      {"", 0, "", {}},
      {"E", 0, "", {}},
      {"E=", 0, "", {}},
      {"E=:fixed", 0, "", {}},
      {"EE=/x", 0, "", {}},
      {"1=/x", 0, "", {}},
  };
  for (const Row& row : rows) {
    const auto drive = ParseDrive(row.text);
    ASSERT_EQ(drive.has_value(), row.letter != 0) << row.text;
    if (!drive) continue;
    EXPECT_EQ(drive->letter, row.letter) << row.text;
    EXPECT_EQ(drive->folder, row.folder) << row.text;
    EXPECT_EQ(drive->kind, row.kind) << row.text;
  }
}

}  // namespace
}  // namespace scrubwell::hosts
