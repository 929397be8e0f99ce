#include "hosts/cli/command_line.h"

#include <gtest/gtest.h>

namespace scrubwell::hosts {
namespace {

TEST(CommandLine, ReadsDrives) {
  // Letter 0: refused.
  const std::tuple<const char*, char16_t, const char*, DriveKind> rows[] = {
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
  for (const auto& [text, letter, folder, kind] : rows) {
    const auto drive = ParseDrive(text);
    ASSERT_EQ(drive.has_value(), letter != 0) << text;
    if (!drive) continue;
    EXPECT_EQ(drive->letter, letter) << text;
    EXPECT_EQ(drive->folder, folder) << text;
    EXPECT_EQ(drive->kind, kind) << text;
  }
}

}  // namespace
}  // namespace scrubwell::hosts
