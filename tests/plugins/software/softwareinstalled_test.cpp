#include "plugins/software/Rcp_softwareinstalled.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const Abbreviations kShort = {
    {"{k}", "1|existingkey:HKEY_"}, {"{p}", "{v}Path{f}C:\\gone"}, {"{=}", " : Path = C:\\gone"}};
const MemoryOptions kBits32{.is64Bit = false};

TEST(SoftwareInstalled, FindsAndCleans) {
  CheckText<TRCPSoftwareInstalled>(R"(
      # healthy, or not to be told
      & 32-bit
      {S}WinRar : Path = C:\x y ; : My File = C:\x y\a.exe,0 ; : Icon = C:\x, z\b@c.ico,-3
      {S}WinRar : Plugins = C:\x y;C:\no z ; : Temp = %ProgramFiles%\wide ; : Root = D:\gone
      {S}WinRar : Logo = @C:\gone.dll,-1 ; : Default = gone.exe ; : Download = {}
      {S}WinRar : Components = dword:7 ; : Installed = C:\gone ; : PathTo = C:\gone
      {LM}MozillaPlugins\@v.com/plugin : Path = C:\gone ; {LM}Microsoft\Other : Path = C:\gone
      {S}P2P Networking : Path = C:\gone
      + C:\x y\a.exe ; C:\x, z\b@c.ico ; C:\Program Files\wide\ ; drive D: removable
      # names and separators
      & 32-bit
      {S}WinRar : Path = C:\gone dir\a.exe,0 ; : Icon File = C:\gone|x,y
      {S}WinRar : i N S t A l l D i r = C:\gone\	x ; : MyDataFile = "C:\gone\a b.exe"
      {S}WinRar : source = C:\gone\a@b|c ; : UninstallCommand = C:\gone dir\u.exe /x
      {S}WinRar : TempPath = C:\no z;C:\no w ; : a/Path = C:\gone\f ; : Uninstall = C:\gone\u.exe,%1
      ? {k}CURRENT_USER\Software\WinRar{v}Path{f}C:\gone dir\a.exe
      ? {k}CURRENT_USER\Software\WinRar{v}Icon File{f}C:\gone
      ? {k}CURRENT_USER\Software\WinRar{v}i N S t A l l D i r{f}C:\gone\
      ? {k}CURRENT_USER\Software\WinRar{v}MyDataFile{f}"C:\gone\a b.exe"
      ? {k}CURRENT_USER\Software\WinRar{v}source{f}C:\gone\a
      ? {k}CURRENT_USER\Software\WinRar{v}UninstallCommand{f}C:\gone dir\u.exe /x
      ? {k}CURRENT_USER\Software\WinRar{v}TempPath{f}C:\no z;C:\no w
      ? {k}CURRENT_USER\Software\WinRar{v}a/Path{f}C:\gone\f
      ? {k}CURRENT_USER\Software\WinRar{v}Uninstall{f}C:\gone\u.exe
      # every depth, a key after its subkeys, areas in their order
      & 32-bit
      {S}Update\b : Path = C:\gone ; {S}Update\a\deep\deeper : Path = C:\gone
      {S}Update : Path = C:\gone ; {LM}Update\x : Path = C:\gone
      ? {k}LOCAL_MACHINE\Software\Update\x{p} ; {k}CURRENT_USER\Software\Update\a\deep\deeper{p}
      ? {k}CURRENT_USER\Software\Update\b{p} ; {k}CURRENT_USER\Software\Update{p}
      ! {-v}Update\x "Path" ; {-S}Update\a\deep\deeper "Path"
      ! {-S}Update\b "Path" ; {-S}Update "Path"
      # the process's own view alone
      {LM}JavaSoft\wide : Path = C:\gone ; {W}JavaSoft\narrow : Path = C:\gone
      ? {k}LOCAL_MACHINE\Software\JavaSoft\narrow{p}
      ! {-Wv}JavaSoft\narrow "Path")",
                                   kShort);
}

// Every area is searched, and every name of the table asked for.
TEST(SoftwareInstalled, CountsTheKeysOfItsAreas) {
  std::string registry;
  for (const std::string root : {"HKEY_LOCAL_MACHINE\\Software\\", "{S}"}) {
    for (const char* area :
         {"Clients", "JavaSoft", "Mozilla", "MozillaPlugIns", "NetScape", "Symantec", "Update",
          "WinRar", "P2P Networking", "Microsoft\\MMC\\Internet Explorer", "Microsoft\\MMC\\Office",
          "Microsoft\\MMC\\SnapIns", "Microsoft\\MMC\\Windows Media", "Microsoft\\Updates"})
      registry += root + area + "\\a\\b{=} ; " + root + area + "\\c\n";
  }
  World world(ReadCases("# areas\n" + registry, kShort)[0].registry, {}, kBits32);
  EXPECT_EQ(world.Run<TRCPSoftwareInstalled>().size(), 27U);
  EXPECT_EQ(world.Plugin().FScanItemsDone, 54);
}

TEST(SoftwareInstalled, StopsInEachPhaseAfterItsFirstStep) {
  const Case row = ReadCases(R"(# two areas
      {S}Update\a{=} ; {S}Update\b\c{=} ; {S}WinRar\d{=}
      ? {k}CURRENT_USER\Software\Update\a{p})",
                             kShort)[0];
  World world(row.registry, {}, kBits32);
  auto& plugin = world.Create<TRCPSoftwareInstalled>();
  plugin.OnScanProgress = [](TRCPlugin& self, std::int32_t, UnicodeView, bool) {
    StopSearch = StopSearch || self.FScanItemsDone == 2;
  };
  EXPECT_EQ(world.Scan(), row.problems);
  EXPECT_EQ(plugin.FState, rcpScanned);
  EXPECT_EQ(plugin.FScanItemsDone, 2);
}

}  // namespace
}  // namespace scrubwell::test
