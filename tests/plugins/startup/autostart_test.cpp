#include <gtest/gtest.h>

#include "plugins/startup/Rcp_autostart.h"
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
      {.name = "the file of a launcher counts; folders are something, too",
       .registry = kMachine32 + "Run]\n\"a\"=\"rundll32.exe C:\\\\gone.dll,x\"\n" +
                   "\"b\"=\"C:\\\\Windows\"\n\"c\"=\"E:\\\\gone.exe\"\n",
       .files = "C:\\Windows\\System32\\rundll32.exe\ndrive E: network",
       .problems = {Problem("32", "LOCAL_MACHINE", "Run", "a", "rundll32.exe C:\\gone.dll,x")}},
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
                                           {u"4.job", u"D:\\gone.exe"}};
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
  CheckFaults<TRCPAutostart>(EverySource());
}

}  // namespace
}  // namespace scrubwell::test
