#include "plugins/software/Rcp_odbc.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const Abbreviations kShort = {
    {"{listed}", "|existingkey:HKLM\\Software\\ODBC\\ODBC.INI\\ODBC Data Sources{v}"},
    {"{driver}", "|existingkey:HKEY_LOCAL_MACHINE\\Software\\ODBC\\ODBCINST.INI\\"},
    {"{source}", "|existingkey:HKEY_LOCAL_MACHINE\\Software\\ODBC\\ODBC.INI\\"},
    {"{gone}", "{v}Driver{f}C:\\x\\gone.dll|missingdrv:"},
    {"{D}", "{LM}ODBC\\ODBCINST.INI\\"},
    {"{S}", "{LM}ODBC\\ODBC.INI\\"},
    {"{L}", "{LM}ODBC\\ODBC.INI\\ODBC Data Sources"},
    {"{-L}", "{-v}ODBC\\ODBC.INI\\ODBC Data Sources"}};

TEST(ODBC, FindsAndCleans) {
  std::vector<Case> rows = ReadCases(R"(
      # healthy, or not to be told
      & 32-bit
      {D}Here : Driver = C:\x\here.dll ; {D}Bare : Driver = sys.dll ; {D}Away : Driver = D:\gone.dll
      {D}Empty : Driver = {} ; {D}ODBC Drivers : Gone = Installed ; {S}own : Driver = sys.dll
      {S}other ; {S}number ; {L} : own = Bare ; : other = here ; : number = dword:1 ; : a\b = Here
      {L} = Gone ; {LM}ODBC\ODBC.INI : Driver = C:\x\gone.dll
      + C:\x\here.dll ; C:\Windows\System32\sys.dll ; drive D: removable
      # an invalid driver and those who use it; without it they are another problem
      & 32-bit
      {D}Bad : Driver = C:\x\gone.dll ; {D}Bare : Driver = gone.dll ; {S}a ; {S}b ; {S}c
      {L} : a = Bad ; : b = Bad ; : c = bad
      ? 1{driver}Bad{gone}Bad ; 1{driver}Bare{v}Driver{f}gone.dll|missingdrv:Bare
      ? 5{listed}a|missingdrv:Bad ; 5{listed}b|missingdrv:Bad
      ! {-k}ODBC\ODBCINST.INI\Bad ; {-k}ODBC\ODBCINST.INI\Bare
      = 4{listed}a|missingdrv:Bad ; 4{listed}b|missingdrv:Bad ; 4{listed}c|missingdrv:bad
      # listed without a key, and with one but no driver
      & 32-bit
      {D}Here : Driver = C:\x\here.dll ; {S}b ; {L} : a = None ; : b = None
      + C:\x\here.dll
      ? 2{listed}a ; 4{listed}b|missingdrv:None
      ! {-L} "a" ; {-L} "b"
      # a data source's own driver comes first
      & 32-bit
      {D}Bad : Driver = C:\x\gone.dll ; {S}a : Driver = C:\x\gone.dll
      {S}b : Driver = C:\x\gone.dll ; {L} : a = Bad ; : b = None
      ? 1{driver}Bad{gone}Bad ; 3{source}a{v}Driver|missingds:a{f}C:\x\gone.dll
      ? 3{source}b{v}Driver|missingds:b{f}C:\x\gone.dll
      ! {-k}ODBC\ODBCINST.INI\Bad ; {-k}ODBC\ODBC.INI\a ; {-L} "a" ; {-k}ODBC\ODBC.INI\b ; {-L} "b"
      # a protected data source, a network drive, a driver that is no text
      & 32-bit
      {S}BRW2008_NDS_NW : Driver = C:\x\gone.dll ; {L} : BRW2008_NDS_NW = X
      {D}Bad : Driver = N:\gone.dll ; {D}No : Driver = dword:1
      + drive N: network
      ? 1{driver}Bad{v}Driver{f}N:\gone.dll|missingdrv:Bad
      # the process's own view alone
      {D}Bad : Driver = C:\x\gone.dll ; {L} : a = None)",
                                     kShort);
  CheckCases<TRCPODBC>(rows);
  // Where a data source's own key or driver can't be told, its listing still can.
  const std::string listed = rows[2].problems[0].substr(1, rows[2].problems[0].size() - 2);
  for (const std::size_t row : {1U, 2U, 3U}) {
    for (const char* open : {"a|missingdrv:None", "b|missingdrv:None"})
      rows[row].problems.push_back("4" + listed + open);
    rows[row].problems.push_back("5" + listed + "a|missingdrv:Bad");
    CheckFaults<TRCPODBC>(rows[row]);
  }
}

TEST(ODBC, AnnouncesNothingAndStopsAfterTheFirstOfEachPass) {
  const Case row = ReadCases(R"(# two of each
      {D}A : Driver = C:\x\gone.dll ; {D}B : Driver = C:\x\gone.dll ; {L} : a = A ; : b = B
      ? 1{driver}A{gone}A ; 2{listed}a)",
                             kShort)[0];
  World world(row.registry, {}, {.is64Bit = false});
  auto& plugin = world.Create<TRCPODBC>();
  plugin.OnScanProgress = [](TRCPlugin&, std::int32_t, UnicodeView, bool) { ADD_FAILURE(); };
  plugin.Init();
  EXPECT_EQ(plugin.FScanItemCount, 4);
  StopSearch = true;
  plugin.Scan();
  EXPECT_EQ(world.Problems(), row.problems);
  EXPECT_EQ(plugin.FState, rcpScanned);
}

}  // namespace
}  // namespace scrubwell::test
