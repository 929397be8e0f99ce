#include <gtest/gtest.h>

#include "plugins/software/Rcp_softwareinstalled.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

const std::string kUser = R"(HKEY_CURRENT_USER\Software\)";
const std::string kMachine = R"(HKEY_LOCAL_MACHINE\Software\)";

std::string Key(const std::string& key, const std::string& values) {
  return "[" + key + "]\n" + values + "\n";
}
std::string Problem(const std::string& key, const std::string& value, const std::string& path) {
  return "1|existingkey:" + key + "|existingvalue:" + value + "|missingfile:" + path;
}
std::string Removal(const std::string& key, const std::string& value) {
  return "delete value " + key + " \"" + value + "\"";
}

const std::string kGone = "\"Path\"=\"C:\\\\gone\"\n";
const MemoryOptions kBits32{.is64Bit = false};

TEST(SoftwareInstalled, FindsAndCleans) {
  const std::string area = kUser + "WinRar";
  const Case rows[] = {
      {.name = "no areas"},
      {.name = "healthy, or not to be told",
       .registry = Key(area, R"("Path"="C:\\x y"
"My File"="C:\\x y\\a.exe,0"
"Icon"="C:\\x, z\\b@c.ico,-3"
"Plugins"="C:\\x y;C:\\no z"
"Temp"="%ProgramFiles%\\wide"
"Root"="D:\\gone"
"Logo"="@C:\\gone.dll,-1"
"Default"="gone.exe"
"Download"=""
"Components"=dword:7
"Installed"="C:\\gone"
"PathTo"="C:\\gone"
)") + Key(kMachine + "MozillaPlugins\\@v.com/plugin", kGone) +
                   Key(kMachine + "Microsoft\\Other", kGone) + Key(kUser + "P2P Networking", kGone),
       .files = "C:\\x y\\a.exe\nC:\\x, z\\b@c.ico\nC:\\Program Files\\wide\\\ndrive D: removable",
       .options = kBits32},
      {.name = "names and separators",
       .registry = Key(area, R"("Path"="C:\\gone dir\\a.exe,0"
"Icon File"="C:\\gone|x,y"
"i N S t A l l D i r"="C:\\gone\\	x"
"MyDataFile"="\"C:\\gone\\a b.exe\""
"source"="C:\\gone\\a@b|c"
"UninstallCommand"="C:\\gone dir\\u.exe /x"
"TempPath"="C:\\no z;C:\\no w"
"a/Path"="C:\\gone\\f"
)"),
       .problems = {Problem(area, "Path", "C:\\gone dir\\a.exe"),
                    Problem(area, "Icon File", "C:\\gone"),
                    Problem(area, "i N S t A l l D i r", "C:\\gone\\"),
                    Problem(area, "MyDataFile", "\"C:\\gone\\a b.exe\""),
                    Problem(area, "source", "C:\\gone\\a"),
                    Problem(area, "UninstallCommand", "C:\\gone dir\\u.exe /x"),
                    Problem(area, "TempPath", "C:\\no z;C:\\no w"),
                    Problem(area, "a/Path", "C:\\gone\\f")},
       .options = kBits32},
      {.name = "every depth, a key after its subkeys, areas in their order",
       .registry = Key(kUser + "Update\\b", kGone) + Key(kUser + "Update\\a\\deep\\deeper", kGone) +
                   Key(kUser + "Update", kGone) + Key(kMachine + "Update\\x", kGone),
       .problems = {Problem(kMachine + "Update\\x", "Path", "C:\\gone"),
                    Problem(kUser + "Update\\a\\deep\\deeper", "Path", "C:\\gone"),
                    Problem(kUser + "Update\\b", "Path", "C:\\gone"),
                    Problem(kUser + "Update", "Path", "C:\\gone")},
       .journal = Lines{Removal("HKLM\\SOFTWARE\\Update\\x", "Path"),
                        Removal("HKCU\\Software\\Update\\a\\deep\\deeper", "Path"),
                        Removal("HKCU\\Software\\Update\\b", "Path"),
                        Removal("HKCU\\Software\\Update", "Path")},
       .options = kBits32},
      {.name = "the process's own view alone",
       .registry = Key(kMachine + "JavaSoft\\wide", kGone) +
                   Key(kMachine + "Wow6432Node\\JavaSoft\\narrow", kGone),
       .problems = {Problem(kMachine + "JavaSoft\\narrow", "Path", "C:\\gone")},
       .journal = Lines{Removal("HKLM\\SOFTWARE\\Wow6432Node\\JavaSoft\\narrow", "Path")}},
  };
  CheckCases<TRCPSoftwareInstalled>(rows);
  CheckFaults<TRCPSoftwareInstalled>(rows[3]);
}

// Every area is searched, and every name of the table asked for.
TEST(SoftwareInstalled, CountsTheKeysOfItsAreas) {
  std::string registry;
  for (const std::string& root : {kMachine, kUser}) {
    for (const char* area :
         {"Clients", "JavaSoft", "Mozilla", "MozillaPlugIns", "NetScape", "Symantec", "Update",
          "WinRar", "P2P Networking", "Microsoft\\MMC\\Internet Explorer", "Microsoft\\MMC\\Office",
          "Microsoft\\MMC\\SnapIns", "Microsoft\\MMC\\Windows Media", "Microsoft\\Updates"})
      registry += Key(root + area + "\\a\\b", kGone) + Key(root + area + "\\c", "");
  }
  World world(registry, {}, kBits32);
  EXPECT_EQ(world.Run<TRCPSoftwareInstalled>().size(), 27U);
  EXPECT_EQ(world.Plugin().FScanItemsDone, 54);
}

TEST(SoftwareInstalled, StopsInEachPhaseAfterItsFirstStep) {
  World world(Key(kUser + "Update\\a", kGone) + Key(kUser + "Update\\b\\c", kGone) +
                  Key(kUser + "WinRar\\d", kGone),
              {}, kBits32);
  auto& plugin = world.Create<TRCPSoftwareInstalled>();
  plugin.OnScanProgress = [](TRCPlugin& self, std::int32_t, UnicodeView, bool) {
    StopSearch = StopSearch || self.FScanItemsDone == 2;
  };
  EXPECT_EQ(world.Scan(), Lines{Problem(kUser + "Update\\a", "Path", "C:\\gone")});
  EXPECT_EQ(plugin.FState, rcpScanned);
  EXPECT_EQ(plugin.FScanItemsDone, 2);
}

}  // namespace
}  // namespace scrubwell::test
