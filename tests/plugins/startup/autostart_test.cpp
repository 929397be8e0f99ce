#include <gtest/gtest.h>

#include "plugins/startup/Rcp_autostart.h"
#include "registry/Stringhelper.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

const std::string kPath = R"(Microsoft\Windows\CurrentVersion\)";
const std::string kMachine32 = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\" + kPath;
const std::string kMachine64 = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\" + kPath;
const std::string kUser = "[HKEY_CURRENT_USER\\Software\\" + kPath;

std::string Problem(const std::string& view, const std::string& root, const std::string& key,
                    const std::string& name, const std::string& command = "C:\\gone.exe") {
  return "1|existingkey:" + view + ":HKEY_" + root + "\\Software\\" + kPath + key +
         "|existingvalue:" + name + "|caption:" + name + "|missingfile:" + command;
}

std::string Removal(const std::string& place, const std::string& key, const std::string& name) {
  return "delete value " + place + kPath + key + " \"" + name + "\"";
}

// What Run keys really hold.
TEST(Autostart, JudgesCommandLines) {
  constexpr const char* files = R"(C:\Program Files\Good App\good.exe
C:\Program Files (x86)\Old\old.exe
C:\Tools\run.bat
C:\Tools\start.lnk
C:\Tools\lib.dll
C:\Windows\explorer.exe
C:\Windows\System32\rundll32.exe
C:\Windows\System32\cmd.exe
C:\Windows\SysWOW64\only32.exe
C:\Users\tester\AppData\Local\Microsoft\WindowsApps\alias.exe | size=0
drive E: network
)";
  const struct {
    const char* command;
    bool isMissing;
  } rows[] = {
      {R"(C:\Program Files\Good App\good.exe /tray "C:\x y")", false},
      {R"("C:\Program Files\Good App\good.exe" -hide)", false},
      {R"(C:\Program Files\Good App\good,)", false},
      {R"("C:\Program Files\Good App\gone.exe" /tray)", true},
      {R"(C:\Program Files\Good App\gone.exe,)", true},
      {R"(%ProgramFiles(x86)%\Old\old.exe)", false},
      {R"(%ProgramFiles%\Old\old.exe)", false},  // as the 32-bit view has it
      {R"(%NoSuchVariable%\gone.exe)", false},
      {R"(rundll32.exe C:\Tools\lib.dll,Start)", false},
      {R"(rundll32.exe C:\Tools\gone.dll,Start)", true},
      {R"(cmd /c C:\Tools\run.bat)", false},
      {R"(cmd.exe /c start "" "C:\Tools\gone.bat")", true},
      {R"(C:\Tools\run.bat)", false},
      {R"(C:\Tools\start.lnk)", false},
      {R"(explorer.exe)", false},
      {R"(explorer.exe shell:AppsFolder\Firm.App_1!App)", false},
      {R"(%LOCALAPPDATA%\Microsoft\WindowsApps\alias.exe)", false},
      {R"(C:\Windows\System32\only32.exe)", false},
      {R"(goner.exe -q)", true},
      {R"(E:\gone.exe)", false},
      {R"(\\server\share\gone.exe)", false},
  };
  for (const auto& row : rows) {
    const UnicodeString text =
        Replace(Replace(FromUtf8(row.command), u"\\", u"\\\\"), u"\"", u"\\\"");
    World world(kMachine32 + "Run]\n\"n\"=\"" + ToUtf8(text) + "\"\n", files);
    Lines expected;
    if (row.isMissing) expected = {Problem("32", "LOCAL_MACHINE", "Run", "n", row.command)};
    EXPECT_EQ(world.Run<TRCPAutostart>(), expected) << row.command;
  }
}

// The default value of every source is no program, and neither the user's services nor RunOnce are
// sources.
Case EverySource() {
  Case row{.name = "every source in its order", .journal = Lines()};
  const std::string gone = "]\n\"a\"=\"C:\\\\gone.exe\"\n@=\"C:\\\\gone.exe\"\n";
  for (const char* key : {"Run", "Run-", "RunServices"}) {
    row.registry += kMachine64 + key + gone + kMachine32 + key + gone + kUser + key + gone;
    row.problems.push_back(Problem("32", "LOCAL_MACHINE", key, "a"));
    row.problems.push_back(Problem("64", "LOCAL_MACHINE", key, "a"));
    row.journal->push_back(Removal("HKLM\\SOFTWARE\\Wow6432Node\\", key, "a"));
    row.journal->push_back(Removal("HKLM\\SOFTWARE\\", key, "a"));
  }
  row.registry += kMachine64 + "RunOnce" + gone;
  for (const char* key : {"Run", "Run-"}) {
    row.problems.push_back(Problem("32", "CURRENT_USER", key, "a"));
    row.journal->push_back(Removal("HKCU\\Software\\", key, "a"));
  }
  row.problems.push_back(
      "2|displayname:\xC3\xA4.b|missingfile:C:\\gone.exe|jobfile:\xC3\x83\xC2\xA4.b.job");
  row.journal->push_back("remove task \xC3\xA4.b.job");
  row.setup = [](World& world) {
    world.Windows().tasks.jobs = {{u"\u00E4.b.job", u"C:\\gone.exe"}};
  };
  return row;
}

TEST(Autostart, FindsAndCleans) {
  const Case rows[] = {
      {.name = "nothing there, or no text",
       .registry = kMachine64 + "Run]\n\"a\"=dword:1\n\"b\"=hex:78,00,79,00\n"},
      EverySource(),
      {.name = "one entry of the machine's Run key is never reported",
       .registry = kMachine32 + "Run]\n\"wbLogon\"=\"C:\\\\gone.exe\"\n" + kMachine64 +
                   "Run]\n\"WBLOGON\"=\"C:\\\\gone.exe\"\n" + kMachine64 +
                   "Run-]\n\"WBLOGON\"=\"C:\\\\gone.exe\"\n" + kUser +
                   "Run]\n\"WBLOGON\"=\"C:\\\\gone.exe\"\n",
       .problems = {Problem("64", "LOCAL_MACHINE", "Run-", "WBLOGON"),
                    Problem("32", "CURRENT_USER", "Run", "WBLOGON")}},
      {.name = "tasks that are sound or tell nothing",
       .files = "C:\\here.exe\nC:\\Windows\\System32\\bare.exe\ndrive D: removable\n",
       .setup =
           [](World& world) {
             world.Windows().tasks.jobs = {{u"1.job", u"\"C:\\here.exe\""},
                                           {u"2.job", u"bare"},
                                           {u"3.job", u""},
                                           {u"4.job", u"D:\\gone.exe"},
                                           {u"5.job", u"\\\\s\\x\\y"}};
           }},
      {.name = "without a scheduler only the registry counts",
       .registry = kUser + "Run]\n\"a\"=\"C:\\\\gone.exe\"\n",
       .problems = {Problem("32", "CURRENT_USER", "Run", "a")},
       .setup =
           [](World& world) {
             world.Windows().tasks.connection = Status::Unknown;
             world.Windows().tasks.jobs = {{u"1.job", u"C:\\gone.exe"}};
           }},
  };
  CheckCases<TRCPAutostart>(rows);
  CheckFaults(EverySource(), [](World& world) { world.Create<TRCPAutostart>(); });
}

TEST(Autostart, StopsAtEveryItem) {
  constexpr std::int32_t items = 17;  // eight sources of two values, and the task
  const Case row = EverySource();
  for (std::int32_t stopAt = 1; stopAt <= items; ++stopAt) {
    World world(row.registry);
    row.setup(world);
    auto& plugin = world.Create<TRCPAutostart>();
    std::int32_t shown = 0;
    plugin.OnScanProgress = [&](TRCPlugin&, std::int32_t, UnicodeView, bool) {
      StopSearch = ++shown == stopAt;
    };
    world.Scan();
    EXPECT_EQ(shown, stopAt);
    EXPECT_EQ(plugin.FScanItemCount, items - 1);
    EXPECT_EQ(plugin.FState, stopAt == items ? rcpScanned : rcpInited) << stopAt;
    EXPECT_EQ(SweepErrors->Count(), (stopAt + 1) / 2) << stopAt;
  }
}

}  // namespace
}  // namespace scrubwell::test
