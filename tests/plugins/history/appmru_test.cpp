#include <gtest/gtest.h>

#include "plugins/history/Rcp_appmru.h"
#include "registry/Stringhelper.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const Abbreviations kShort = {{"{k}", "|existingkey:"}};

TEST(AppMRU, FindsAndCleans) {
  CheckText<TRCPAppMRU>(R"(
      # healthy, or not to be told
      {E}ComDlg32\OpenSaveMRU : a = C:\here.txt ; : b = C:\Windows ; : MRULIST = C:\gone.txt
      {E}ComDlg32\OpenSaveMRU\x : MruList = C:\gone.txt ; : a = D:\gone.txt
      {E}ComDlg32\OpenSaveMRU\x ; : d = C:\here.txt\inner\x.txt ; : e = dword:1
      {E}FileExts\.txt\OpenWithList : a = x
      {S}Microsoft\Office\12.0\Excel\Recent Files : File1 = C:\here.txt ; : File = C:\gone.txt
      {S}Microsoft\Office\12.0\Excel\Recent Files : FileX = C:\gone.txt
      {S}Microsoft\Office\13.0\Excel\Recent Files : File1 = C:\gone.txt
      {S}Microsoft\Office\12.0\Access\Settings : MRUFlags1 = C:\gone.txt
      + C:\here.txt ; drive D: network
      # the order loses the letter and keeps the others
      {E}ComDlg32\OpenSaveMRU : c = C:\gone.txt ; : MRUList = cab
      {E}ComDlg32\OpenSaveMRU\x : a = C:\gone.x
      ? 1{k}{E}ComDlg32\OpenSaveMRU{v}c{f}C:\gone.txt
      ? 1{k}{E}ComDlg32\OpenSaveMRU\x{v}a{f}C:\gone.x
      ! {-E}ComDlg32\OpenSaveMRU "c" ; {=E}ComDlg32\OpenSaveMRU "MRUList"="ab"
      ! {-E}ComDlg32\OpenSaveMRU\x "a"
      # lists of programs
      {S}Microsoft\Office\12.0\Excel\Recent Files : File2 = C:\gone.xls ; : File3 = C:\here.xls
      {S}Microsoft\Office\9.0\Access\Settings : mru10 = C:\gone.mdb
      {S}Nico Mak Computing\WinZip\extract : extract0 = C:\gone
      + C:\here.xls
      ? 1{k}{S}Microsoft\Office\9.0\Access\Settings{v}mru10{f}C:\gone.mdb
      ? 1{k}{S}Microsoft\Office\12.0\Excel\Recent Files{v}File2{f}C:\gone.xls
      ? 1{k}{S}Nico Mak Computing\WinZip\extract{v}extract0{f}C:\gone
      ! {-S}Microsoft\Office\9.0\Access\Settings "mru10"
      ! {-S}Microsoft\Office\12.0\Excel\Recent Files "File2"
      ! {-S}Nico Mak Computing\WinZip\extract "extract0"
      ! {=S}Microsoft\Office\12.0\Excel\Recent Files "File1"="C:\\here.xls"
      ! {-S}Microsoft\Office\12.0\Excel\Recent Files "File3"
      # open-with keys
      {E}FileExts\.a ; {E}FileExts\.b\OpenWithList ; {E}FileExts\.c\Other
      ? 2{k}{E}FileExts\.a ; 2{k}{E}FileExts\.b
      ! {-kE}FileExts\.a ; {-kE}FileExts\.b)",
                        kShort);
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
  const Case row = ReadCases(R"(# two entries
      {E}ComDlg32\OpenSaveMRU : a = C:\x\gone.txt ; : b = C:\gone2.txt
      ! {-E}ComDlg32\OpenSaveMRU "a")",
                             kShort)[0];
  World world(row.registry);
  world.Run<TRCPAppMRU>();
  SetRegStringValue(
      HKEY_CURRENT_USER,
      u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\OpenSaveMRU", u"b",
      u"C:\\other", {});
  EXPECT_EQ(world.CleanAll(), *row.journal);
}

}  // namespace
}  // namespace scrubwell::test
