#include <gtest/gtest.h>

#include "plugins/software/Rcp_uninstall.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

const std::string kUninstall = R"(Microsoft\Windows\CurrentVersion\Uninstall\)";
const std::string kCache = R"(Microsoft\Windows\CurrentVersion\App Management\ARPCache\)";
const std::string kWow = "Wow6432Node\\";

std::string Entry(const std::string& name, const std::string& values,
                  const std::string& node = {}) {
  return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\" + node + kUninstall + name + "]\n" + values + "\n";
}
std::string Cached(const std::string& name, const std::string& node = {}) {
  return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\" + node + kCache + name + "]\n";
}
std::string Command(const std::string& command) {
  return "\"UninstallString\"=\"" + command + "\"\n";
}
std::string Problem(const std::string& kind, const std::string& key, const std::string& caption,
                    const std::string& file = {}, const std::string& view = "32") {
  return kind + "|existingkey:" + view + ":HKEY_LOCAL_MACHINE\\Software\\" + kUninstall + key +
         "|caption:" + caption + (file.empty() ? "" : "|missingfile:" + file);
}
std::string Orphan(const std::string& name, const std::string& view = "32") {
  return "4|caption:" + name + "|existingkey:" + view + ":HKEY_LOCAL_MACHINE\\Software\\" + kCache +
         name;
}
std::string KeyRemoval(const std::string& key) {
  return "delete key HKLM\\SOFTWARE\\" + key;
}

const std::string kEmpty = "\"x\"=\"\"\n";
const std::string kGone = Command("C:\\\\p\\\\gone.exe");
const std::string kFiles = R"(C:\p q\setup.exe
C:\p q\unins000.exe
C:\p q\unins000.dat
C:\p q\UNWISE.EXE
C:\p q\INSTALL.LOG
C:\p q\media\
C:\Windows\IsUninst.exe
C:\Windows\System32\msiexec.exe
C:\Windows\System32\rundll32.exe
C:\Program Files\wide\
drive D: removable
)";
const MemoryOptions kBits32{.is64Bit = false};

// What real machines hold and what must never be reported.
TEST(Uninstall, StaysSilent) {
  std::string registry;
  int count = 0;
  const auto add = [&](const std::string& values) {
    registry += Entry("entry" + std::to_string(++count), values);
  };
  for (const char* command :
       {R"(\"C:\\p q\\unins000.exe\" /SILENT)", R"(C:\\p q\\UNWISE.EXE C:\\p q\\INSTALL.LOG)",
        R"(MsiExec.exe /X{0F22C794-89DE-4F31-9479-827E3385CDAE})", R"(D:\\gone.exe)"})
    add(Command(command));
  for (const std::string values :
       {"\"NoRemove\"=dword:1\n", "\"WindowsInstaller\"=dword:1\n", "\"WindowsInstaller\"=\"0\"\n",
        "\"SystemComponent\"=dword:0\n", "\"UninstallString\"=dword:1\n",
        "\"QuietUninstallString\"=\"C:\\\\p q\\\\setup.exe\"\n"})
    add(values);
  for (const char* source :
       {R"(C:\\p q\\media\\)", R"(\"C:\\p q\\media\")", R"(C:\\p q\\setup.exe)", R"(D:\\)",
        R"(media)", R"(%ProgramFiles%\\wide)", R"(.)"})
    add(Command("C:\\\\p q\\\\setup.exe") + "\"InstallSource\"=\"" + source + "\"\n");
  for (const char* name :
       {"InstallShield Uninstall Information", "MYST v", "SilverFast UScan-SE",
        "{fbccf9ce-61ee-425e-be4d-959d76fa7701}", "{0F22C794-89DE-4F31-9479-827E3385CDAE}",
        "{FDAE2B3E-E3A8-42FF-AF6F-0AF4C59AE2CC}", "cineplayer.EXE",
        "{4AA5742C-2B17-4289-A502-CB2EE0971CFF}", "{2D5D9603-22CF-4B99-83F6-0CD20330F62E}",
        "Agnitum Outpost 2"})
    registry += Entry(name, kEmpty);
  registry += Entry("AddressBook", "") + Entry("AddressBook", "", kWow);
  registry += Cached("entry1") + Cached("{gone}") + Cached("ENTRY2", kWow);
  World world(registry, kFiles);
  EXPECT_EQ(world.Run<TRCPUninstall>(), Lines());
}

TEST(Uninstall, FindsAndCleans) {
  const std::string gone = "C:\\p\\gone.exe";
  const Lines wholeKey{KeyRemoval(kUninstall + "a")};
  const auto broken = [&](const char* name, const std::string& values, const std::string& problem) {
    return Case{.name = name,
                .registry = Entry("a", values),
                .files = kFiles,
                .problems = {problem},
                .journal = wholeKey,
                .options = kBits32};
  };
  const Case rows[] = {
      broken("uninstaller", kGone, Problem("1", "a", "a", gone)),
      broken("marks off", Command("\\\"C:\\\\p\\\\gone.exe\\\""), Problem("1", "a", "a", gone)),
      broken("marks stay before arguments", Command("\\\"C:\\\\p\\\\gone.exe\\\" /x"),
             Problem("1", "a", "a", "\"C:\\p\\gone.exe\" /x")),
      broken("quiet command and quiet name",
             "\"QuietUninstallString\"=\"C:\\\\p\\\\gone.exe\"\n\"DisplayName\"=\" \"\n"
             "\"QuietDisplayName\"=\" Q \"\n",
             Problem("1", "a", " Q ", gone)),
      broken("log", Command("C:\\\\p q\\\\UNWISE.EXE C:\\\\p q\\\\gone.log"),
             Problem("2", "a", "a", "C:\\p q\\UNWISE.EXE C:\\p q\\gone.log")),
      broken("library of a launcher", Command("RunDll32 C:\\\\p\\\\gone.dll,LaunchSetup x"),
             Problem("2", "a", "a", "RunDll32 C:\\p\\gone.dll,LaunchSetup x")),
      broken("no command", "\"DisplayName\"=\"App\"\n\"NoRemove\"=dword:0\n",
             Problem("3", "a", "App")),
      broken("a mark of another type", "\"NoRemove\"=\"1\"\n", Problem("3", "a", "a")),
      {.name = "small letters are no exception",
       .registry = Entry("outpost", kEmpty),
       .problems = {Problem("3", "outpost", "outpost")},
       .journal = Lines{KeyRemoval(kUninstall + "outpost")},
       .options = kBits32},
      {.name = "source, of an installer package too",
       .registry = Entry("a", "\"WindowsInstaller\"=dword:1\n" + kGone +
                                  "\"InstallSource\"=\"C:\\\\no\\\\\"\n") +
                   Entry("b", "\"WindowsInstaller\"=dword:1\n\"InstallSource\"=\"C:\\\\no\"\n"),
       .problems = {Problem("5", "a", "a", "C:\\no\\")},
       .journal = Lines{"delete value HKLM\\SOFTWARE\\" + kUninstall + "a \"InstallSource\""},
       .options = kBits32},
      {.name = "both views; one entry with two problems",
       .registry = Entry("a", kGone + "\"InstallSource\"=\"\\\"C:\\\\no\\\"\"\n") +
                   Entry("a", kEmpty, kWow),
       .problems = {Problem("3", "a", "a"), Problem("1", "a", "a", gone, "64"),
                    Problem("5", "a", "a", "C:\\no", "64")},
       .journal = Lines{KeyRemoval(kWow + kUninstall + "a"), wholeKey[0]}},
      {.name = "cache of either view",
       .registry =
           Cached("a") + Cached("b") + Cached("b", kWow) + Entry("a", "\"NoRemove\"=dword:1"),
       .problems = {Orphan("b"), Orphan("b", "64")},
       .journal = Lines{KeyRemoval(kWow + kCache + "b"), KeyRemoval(kCache + "b")}},
      {.name = "no cache on old systems",
       .registry = Cached("b"),
       .options = {.is64Bit = false, .version = OsVersion::WinNT4}},
  };
  CheckCases<TRCPUninstall>(rows);
  for (const std::size_t row : {3U, 4U, 6U, 9U, 10U, 11U}) CheckFaults<TRCPUninstall>(rows[row]);
}

}  // namespace
}  // namespace scrubwell::test
