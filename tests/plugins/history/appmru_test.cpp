#include <gtest/gtest.h>

#include "plugins/history/Rcp_appmru.h"
#include "registry/Stringhelper.h"
#include "support/class_text.h"

namespace scrubwell::test {
namespace {

const std::string kUser = "HKEY_CURRENT_USER\\Software\\";
const std::string kExplorer = kUser + "Microsoft\\Windows\\CurrentVersion\\Explorer\\";
const std::string kDialogs = kExplorer + "ComDlg32\\OpenSaveMRU";

// Lines as for classes; "D" stands for the dialogs' key, "E\" for Explorer's, "S\" for software.
std::string Keys(const std::string& lines) {
  std::string text = ReplaceAll(ReplaceAll(lines, "E\\", kExplorer), "S\\", kUser);
  text = ReplaceAll(text, "D :", kDialogs + " :");
  return Classes(ReplaceAll(text, "D\\x", kDialogs + "\\x"));
}
std::string Problem(const std::string& key, const std::string& value, const std::string& file) {
  return "1|existingkey:" + key + "|existingvalue:" + value + "|missingfile:" + file;
}
std::string Change(const std::string& what, const std::string& key, const std::string& rest) {
  return what + " value " + ReplaceAll(key, "HKEY_CURRENT_USER", "HKCU") + " \"" + rest;
}

TEST(AppMRU, FindsAndCleans) {
  const std::string excel = kUser + "Microsoft\\Office\\12.0\\Excel\\Recent Files";
  const std::string access = kUser + "Microsoft\\Office\\9.0\\Access\\Settings";
  const std::string zip = kUser + "Nico Mak Computing\\WinZip\\extract";
  const Case rows[] = {
      {.name = "nothing"},
      {.name = "healthy, or not to be told",
       .registry = Keys(R"(D : a = C:\here.txt
           D : b = C:\Windows
           D : MRULIST = C:\gone.txt
           D\x : MruList = C:\gone.txt
           D\x : a = D:\gone.txt
           D\x : c =
           D\x : d = C:\here.txt\inner\x.txt
           D\x : e = dword:1
           E\FileExts\.txt\OpenWithList : a = x
           S\Microsoft\Office\12.0\Excel\Recent Files : File1 = C:\here.txt
           S\Microsoft\Office\12.0\Excel\Recent Files : File = C:\gone.txt
           S\Microsoft\Office\12.0\Excel\Recent Files : FileX = C:\gone.txt
           S\Microsoft\Office\13.0\Excel\Recent Files : File1 = C:\gone.txt
           S\Microsoft\Office\12.0\Access\Settings : MRUFlags1 = C:\gone.txt)"),
       .files = "C:\\here.txt\ndrive D: network"},
      {.name = "the order loses the letter and keeps the others",
       .registry = Keys(R"(D : c = C:\gone.txt
           D : MRUList = cab
           D\x : a = C:\gone.x)"),
       .problems = {Problem(kDialogs, "c", "C:\\gone.txt"),
                    Problem(kDialogs + "\\x", "a", "C:\\gone.x")},
       .journal =
           Lines{Change("delete", kDialogs, "c\""), Change("set", kDialogs, "MRUList\"=\"ab\""),
                 Change("delete", kDialogs + "\\x", "a\"")}},
      {.name = "lists of programs",
       .registry = Keys(R"(S\Microsoft\Office\12.0\Excel\Recent Files : File2 = C:\gone.xls
           S\Microsoft\Office\12.0\Excel\Recent Files : File3 = C:\here.xls
           S\Microsoft\Office\9.0\Access\Settings : mru10 = C:\gone.mdb
           S\Nico Mak Computing\WinZip\extract : extract0 = C:\gone)"),
       .files = "C:\\here.xls",
       .problems = {Problem(access, "mru10", "C:\\gone.mdb"),
                    Problem(excel, "File2", "C:\\gone.xls"), Problem(zip, "extract0", "C:\\gone")},
       .journal = Lines{Change("delete", access, "mru10\""), Change("delete", excel, "File2\""),
                        Change("delete", zip, "extract0\""),
                        Change("set", excel, "File1\"=\"C:\\\\here.xls\""),
                        Change("delete", excel, "File3\"")}},
      {.name = "open-with keys",
       .registry = Keys("E\\FileExts\\.a\nE\\FileExts\\.b\\OpenWithList\nE\\FileExts\\.c\\Other"),
       .problems = {"2|existingkey:" + kExplorer + "FileExts\\.a",
                    "2|existingkey:" + kExplorer + "FileExts\\.b"},
       .journal = Lines{"delete key " + ReplaceAll(kExplorer, "HKEY_CURRENT_USER", "HKCU") +
                            "FileExts\\.a",
                        "delete key " + ReplaceAll(kExplorer, "HKEY_CURRENT_USER", "HKCU") +
                            "FileExts\\.b"}},
  };
  CheckCases<TRCPAppMRU>(rows);
  CheckFaults<TRCPAppMRU>(rows[3]);
  CheckFaults<TRCPAppMRU>(rows[4]);
}

TEST(AppMRU, Addresses) {
  const struct {
    const char* entry;
    const char* file;
    const char* missing;
  } rows[] = {
      {"Visited: me@file:///C:/a/gone.txt", "", "C:\\a\\gone.txt"},
      {"Visited: file:///C|/gone.txt", "", "C:\\gone.txt"},
      {"Visited: file:///C:/a.zip/gone.txt", "C:\\a.zip", nullptr},
      {"Visited: me@file:///C:/a%20b.txt", "", "C:\\a%20b.txt"},
      {"Visited: me@file:///C:/here@x.txt", "C:\\here@x.txt", nullptr},
      {"Visited: me@FILE:///C:/gone.txt", "", nullptr},
      {"visited: me@file:///C:/gone.txt", "", nullptr},
      {"file:///C:/gone.txt", "", nullptr},
      {"Visited: me@file://server/gone.txt", "", nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.entry);
    World world("", row.file);
    world.Windows().browser.cacheNames = {FromUtf8(row.entry)};
    const std::string item = row.missing == nullptr ? "" : row.missing;
    EXPECT_EQ(world.Run<TRCPAppMRU>(),
              row.missing == nullptr ? Lines() : Lines{"3|missingfile:" + item});
    EXPECT_EQ(world.CleanAll(), Lines()) << "addresses are never removed";
  }
}

TEST(AppMRU, LeavesAnEntryThatChanged) {
  World world(Keys("D : a = C:\\x\\gone.txt\nD : b = C:\\gone2.txt"));
  world.Run<TRCPAppMRU>();
  SetRegStringValue(HKEY_CURRENT_USER, FromUtf8(kDialogs.substr(18)), u"b", u"C:\\other", {});
  EXPECT_EQ(world.CleanAll(), Lines{Change("delete", kDialogs, "a\"")});
}

}  // namespace
}  // namespace scrubwell::test
