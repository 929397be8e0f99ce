#include "hosts/cli/command_line.h"

#include <gtest/gtest.h>

namespace scrubwell::hosts {
namespace {

TEST(CommandLine, ReadsDrives) {
  // Letter, folder and kind; empty: refused.
  const std::pair<const char*, std::string> rows[] = {
      {"E=/mnt/e", "E /mnt/e fixed"},
      {"e=/mnt/e:removable", "E /mnt/e removable"},
      {"F=/mnt/a:b:cdrom", "F /mnt/a:b cdrom"},
      {"G=x:network", "G x network"},
      {"H=/mnt/h:fixed:fixed", "H /mnt/h:fixed fixed"},
      {"H=/mnt/h:floppy", "H /mnt/h:floppy fixed"},
      {"", ""},
      {"E", ""},
      {"E=", ""},
      {"E=:fixed", ""},
      {"EE=/x", ""},
      {"1=/x", ""},
  };
  constexpr const char* kKinds[] = {"unknown", "fixed", "removable", "cdrom", "network"};
  for (const auto& [text, expected] : rows) {
    std::string read;
    if (const auto drive = ParseDrive(text)) {
      read = std::string(1, static_cast<char>(drive->letter)) + ' ' + drive->folder + ' ' +
             kKinds[static_cast<int>(drive->kind)];
    }
    EXPECT_EQ(read, expected) << text;
  }
}

}  // namespace
}  // namespace scrubwell::hosts
