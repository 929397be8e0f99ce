// What a text in the registry means as a file: search order, command lines, drives, both systems.
#include <gtest/gtest.h>

#include "registry/Shelllink.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"
#include "registry/Zmverinfo.h"
#include "support/world.h"

namespace scrubwell {
namespace {

using test::World;

constexpr std::string_view kFiles = R"(
C:\Windows\explorer.exe
C:\Windows\win.com
C:\Windows\hh.exe
C:\Windows\IsUninst.exe
C:\Windows\System32\rundll32.exe
C:\Windows\System32\regsvr32.exe
C:\Windows\System32\cmd.exe
C:\Windows\System32\control.exe
C:\Windows\System32\javaw.exe
C:\Windows\System32\msiexec.exe
C:\Windows\System32\wscript.exe
C:\Windows\System32\shell32.dll
C:\Windows\SysWOW64\only32.dll
C:\Windows\System\old.drv
C:\Program Files\App\app.exe
C:\Program Files\App\unins000.exe
C:\Program Files\App\unins000.dat
C:\Program Files\App\unins001.exe
C:\Program Files\App\UNWISE.EXE
C:\Program Files\App\UNINSTWA.EXE
N:\here.dll
C:\Program Files\App\INSTALL.LOG
C:\Program Files\A,B\x.dll
C:\Program Files\C, D\x.cpl
C:\Program Files\C, D\y.dll
C:\Program Files (x86)\Narrow\n.exe
C:\Tools\bin\tool.cmd
C:\Tools\Sub Folder\
drive D: removable
drive E: fixed
drive N: network
)";

constexpr std::string_view kRegistry =
    R"([HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\App Paths\named.exe]
@="\"C:\\Program Files\\App\\app.exe\""
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\App Paths\stale.exe]
@="C:\\Gone\\stale.exe")";

// There: 0 = the program is there or nobody can tell, 1 = proven missing, 2 = its file is missing.
struct Row {
  UnicodeView text;
  int verdict;
  UnicodeView found = u"";
};

constexpr Row kRows[] = {
    // plain paths
    {u"C:\\Program Files\\App\\app.exe", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"c:/program files/app/APP.EXE", 0, u"c:/program files/app/APP.EXE"},
    {u"C:\\Program Files\\App\\gone.exe", 1},
    {u"C:\\Program Files\\App", 1},  // a folder is no file
    {u"\\??\\C:\\Gone\\x.sys", 1},
    {u"\\SystemRoot\\System32\\shell32.dll", 0, u"C:\\Windows\\System32\\shell32.dll"},
    {u"System32\\shell32.dll", 0, u"C:\\Windows\\System32\\shell32.dll"},
    {u"System32\\gone.sys", 1},
    // folders that nobody knows, and devices
    {u".\\gone.exe", 0},
    {u"\\\\.\\C:\\Gone\\x.exe", 0},
    {u"\\\\?\\GLOBALROOT\\Device\\x.exe", 0},
    {u"\\\\?\\C:\\Gone\\x.exe", 1},
    // variables, by view
    {u"%SystemRoot%\\system32\\shell32.dll", 0, u"C:\\Windows\\system32\\shell32.dll"},
    {u"%ProgramFiles%\\Narrow\\n.exe", 0, u"C:\\Program Files (x86)\\Narrow\\n.exe"},
    {u"%ProgramFiles%\\App\\app.exe", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"%ProgramFiles%\\Gone\\n.exe", 1},
    {u"%NoSuchVariable%\\x.exe", 0},
    {u"C:\\Gone\\%1", 0},
    // the 32-bit system folder
    {u"C:\\Windows\\System32\\only32.dll", 0, u"C:\\Windows\\System32\\only32.dll"},
    // bare names
    {u"explorer", 0, u"C:\\Windows\\explorer.exe"},
    {u"only32.dll", 0, u"C:\\Windows\\System32\\only32.dll"},
    {u"tool", 0, u"C:\\Tools\\bin\\tool.cmd"},  // from PATH
    {u"old", 0, u"C:\\Windows\\System\\old.drv"},
    {u"named", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"stale.exe", 1},
    {u"b.vxd", 1},
    // quotes, blanks, arguments
    {u"\"C:\\Program Files\\App\\app.exe\" /tray", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"\"C:\\Program Files\\App\\app.exe /tray\"", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"\"C:\\Program Files\\App\\app.exe", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"'C:\\Program Files\\App\\app.exe'", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"C:\\Program Files\\App\\app /tray", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"C:\\Program Files\\App\\app.exe,", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"C:\\Program Files\\A,B\\x.dll,3", 0, u"C:\\Program Files\\A,B\\x.dll"},
    {u"C:\\Gone App\\x.exe \"C:\\Program Files\\App\\app.exe\"", 1},
    {u"C:\\Gone App\\x.exe C:\\Program Files\\App\\app.exe", 1},
    {u"C:\\Gone App\\x.exe \"%1\" %*", 1},
    {u"C:\\Gone App\\x.exe /uninst C:\\Gone App\\x.log", 1},
    {u"C:\\Gone\\x /uninst C:\\Gone\\x.log", 1},
    {u"C:\\Gone\\x.exe\tC:\\Program Files\\App\\app.exe", 1},
    {u"C:\\Program Files\\App\\app.exe /x C:\\y", 0, u"C:\\Program Files\\App\\app.exe"},
    {u"C:\\Gone App\\*.dll", 0},
    {u"C:\\Gone App\\100% x.exe", 0},
    {u"C:\\Gone App\\x;C:\\Program Files\\App\\app.exe", 0},
    {u"\"%1\" %*", 0},
    // what is no file at all
    {u"", 0},
    {u"\"\"", 0},
    {u"http://example.org/x.exe", 0},
    {u"shell:AppsFolder\\x", 0},
    {u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", 0},
    {u"@C:\\gone.dll,-1", 0},
    // drives that nobody can look at
    {u"D:\\gone.exe", 0},
    {u"Z:\\gone.exe", 0},
    {u"E:\\gone.exe", 1},
    {u"\\\\server\\share\\x.exe", 0},
    {u"\\Device\\HarddiskVolume1\\x.exe", 0},
    // launchers
    {u"rundll32.exe shell32.dll,Control_RunDLL", 0, u"C:\\Windows\\System32\\rundll32.exe"},
    {u"rundll32 \"%ProgramFiles%\\App\\gone.dll\",Entry %1", 2},
    {u"rundll32.exe C:\\Program Files\\A,B\\x.dll,Entry C:\\Gone", 0},
    {u"rundll32.exe C:\\Program Files\\C, D\\y.dll, Entry", 0},
    {u"rundll32.exe \"C:\\Program Files\\C, D\\y.dll\",Entry", 0},
    {u"rundll32.exe D:\\gone.dll,Entry", 0},
    {u"rundll32.exe gone.dll,Entry", 2},
    {u"rundll32.exe sub\\gone.dll,Entry", 0},
    {u"rundll32.exe /d C:\\Gone\\x.dll,Entry", 2},
    {u"rundll32.exe /sta {0F22C794-89DE-4F31-9479-827E3385CDAE} C:\\Gone\\x.dll", 0},
    {u"rundll32.exe -localserver {0F22C794-89DE-4F31-9479-827E3385CDAE}", 0},
    {u"rundll32.exe javascript:alert()", 0},
    {u"regsvr32 /s /u C:\\Gone\\x.ocx", 2},
    {u"regsvr32 /i:\"some text\" shell32.dll", 0},
    {u"regsvr32 C:\\Gone\\x.ocx /s /i:\"C:\\a \\\"b c\\\"\"", 2},
    {u"regsvr32 \"shell32.dll\" \"C:\\Gone\\x.ocx\" -s", 0},
    {u"msiexec /fomus {0F22C794-89DE-4F31-9479-827E3385CDAE} /l*v C:\\Gone\\x.log", 0},
    {u"msiexec /lvx+! \"C:\\Gone x\\a.log\" -i \"C:\\Program Files\\App\\app.exe\"", 0},
    {u"msiexec /log C:\\Gone\\x.log /x C:\\Gone\\f.msi", 2},
    {u"msiexec /passive TRANSFORMS=C:\\Gone\\x.mst C:\\Gone\\f.msi", 0},
    {u"msiexec /fC:\\Gone\\f.msi", 2},
    {u"msiexec /xC:\\Program Files\\App\\app.exe /qn", 0},
    {u"msiexec -i\"C:\\Gone\\f.msi\"", 2},
    {u"msiexec /update C:\\Gone\\f.msp REINSTALL=ALL", 2},
    {u"msiexec /i gone.msi", 0},
    {u"cmd /c del C:\\Gone\\x.txt", 0},
    {u"cmd.exe /c start \"\" \"C:\\Gone\\x.exe\" -a", 2},
    {u"cmd.exe /c start \"\" /D \"C:\\Tools\\Sub Folder\" C:\\Gone\\x.exe", 2},
    {u"cmd.exe /c start /b /d C:\\Tools tool.cmd", 0},
    {u"cmd /c C:\\Gone\\x.exe && echo", 0},
    {u"cmd /s /c C:\\Gone\\x.exe", 2},
    {u"control.exe C:\\Gone\\x.cpl,@2", 2},
    {u"control.exe /name gone.cpl", 0},
    {u"control.exe \"C:\\Program Files\\C, D\\x.cpl\",Name", 0},
    {u"javaw.exe -Xmx1g -jar \"C:\\Gone\\x.jar\" a", 2},
    {u"javaw.exe Main", 0},
    {u"wscript //B \"C:\\Gone\\s.vbs\"", 2},
    {u"wscript s.vbs", 0},
    {u"explorer.exe /e,C:\\Tools", 0},
    {u"explorer.exe /e,C:\\Gone", 2},
    {u"explorer.exe", 0},
    {u"hh.exe C:\\Gone\\x.chm::/page.htm", 2},
    {u"hh.exe -decompile C:\\out.d C:\\Gone\\x.chm", 0},
};

void SetPath(World& world) {
  world.Windows().system.variables[u"Path"] = u"\"C:\\Tools\\bin\\\";C:\\NotThere";
}

TEST(FindFile, FindsWhatATextMeans) {
  World world(kRegistry, kFiles);
  SetPath(world);
  for (const Row& row : kRows) {
    UnicodeString found;
    UnicodeString arguments;
    EXPECT_EQ(FindFileAndVerifyArguments(row.text, found, arguments), row.verdict)
        << ToUtf8(row.text);
    EXPECT_EQ(FindFile(row.text, found, arguments), row.verdict == 0) << ToUtf8(row.text);
    if (!row.found.empty()) {
      EXPECT_EQ(found, row.found) << ToUtf8(row.text);
    }
  }
  UnicodeString words;
  for (int i = 0; i < 400; ++i) words += u" word";
  EXPECT_FALSE(FindFile(u"C:\\Windows\\gone.exe" + words));
  EXPECT_TRUE(FindFile(u"C:\\Windows\\win.com" + words));
}

TEST(FindFile, LooksAtNetworkDrivesForWhomAsksForThem) {
  World world(kRegistry, kFiles);
  EXPECT_FALSE(FindFileOnAnyDrive(u"N:\\gone.dll"));
  EXPECT_FALSE(FindFileOnAnyDrive(u"\"N:\\gone\""));
  for (const UnicodeView text :
       {u"N:\\here.dll", u"N:\\here.dll /s", u"D:\\gone.dll", u"rundll32.exe N:\\gone.dll,Entry"})
    EXPECT_TRUE(FindFileOnAnyDrive(text)) << ToUtf8(text);
  EXPECT_TRUE(FindFile(u"N:\\gone.dll"));
}

// A folder of the search path that can't be looked into may hold the file.
TEST(FindFile, LeavesBareNamesOpenWhileTheSearchPathIs) {
  for (const UnicodeView path : {u"%Unresolved%\\bin", u"D:\\bin", u"\\\\server\\bin"}) {
    World world(kRegistry, kFiles);
    world.Windows().system.variables[u"Path"] = path;
    EXPECT_TRUE(FindFile(u"b.vxd")) << ToUtf8(path);
    EXPECT_FALSE(FindFile(u"C:\\Gone\\b.vxd")) << ToUtf8(path);
  }
}

// What only an uninstaller's check asks for: the program is there, its record is not.
TEST(FindFile, AsksForTheRecordOfAnUninstaller) {
  World world(kRegistry, kFiles);
  constexpr Row rows[] = {
      {u"\"C:\\Program Files\\App\\unins000.exe\" /SILENT", 0},
      {u"C:\\Program Files\\App\\unins001.exe", 2},
      {u"C:\\Program Files\\App\\UNINSTWA.EXE", 0},
      {u"C:\\Program Files\\App\\UNWISE.EXE C:\\Program Files\\App\\INSTALL.LOG", 0},
      {u"C:\\Program Files\\App\\UNWISE.EXE /A C:\\Gone App\\INSTALL.LOG", 2},
      {u"C:\\Windows\\IsUninst.exe -f\"C:\\Gone\\Uninst.isu\" -c\"C:\\x.dll\"", 2},
      {u"C:\\Windows\\IsUninst.exe -y -fC:\\Gone\\Uninst.isu -x", 2},
      {u"C:\\Windows\\IsUninst.exe -f\"C:\\Program Files\\App\\INSTALL.LOG\"", 0},
  };
  for (const Row& row : rows) {
    UnicodeString found;
    UnicodeString arguments;
    EXPECT_EQ(FindFileAndVerifyArguments(row.text, found, arguments), row.verdict)
        << ToUtf8(row.text);
    EXPECT_TRUE(FindFile(row.text)) << ToUtf8(row.text);
  }
}

TEST(FindFile, TakesFoldersOnlyWhereTheyAreMeant) {
  World world(kRegistry, kFiles);
  for (const UnicodeView text :
       {u"\"C:\\Tools\\Sub Folder\\\"", u"C:\\Tools\\Sub Folder;", u"C:\\Gone It;D:\\x",
        u"C:\\Gone It;\"C:\\Tools\\Sub Folder\"", u"C:\\Gone It;sub"})
    EXPECT_TRUE(FindFileOrDir(text)) << ToUtf8(text);
  EXPECT_FALSE(FindFileOrDir(u"C:\\Tools Gone\\x.exe")) << "C:\\Tools is not meant";
  EXPECT_FALSE(FindFileOrDir(u"C:\\Gone It;C:\\Tools\\Gone;"));
  EXPECT_FALSE(DirectoryExists(u"C:\\Windows\\explorer.exe"));
  EXPECT_TRUE(FileOrDirExists(u"C:\\Gone", true));
  EXPECT_FALSE(FileOrDirExists(u"C:\\Tools", true));
  EXPECT_FALSE(FileOrDirExists(u"D:\\gone", true)) << "not proven";
  EXPECT_TRUE(FileOrDirExistsEx(u"D:\\gone"));
  EXPECT_FALSE(PathFileExistsWrapper(u"nothing.exe"));
  EXPECT_TRUE(PathFileExistsWrapper(u"explorer.exe"));
  EXPECT_EQ(ZMGetFileSize(u"C:\\Windows\\explorer.exe"), 1);
  EXPECT_EQ(ZMGetFileSize(u"C:\\Windows\\gone.exe"), -1);
  EXPECT_TRUE(IsDirectoryEmpty(u"C:\\Tools\\Sub Folder"));
  EXPECT_FALSE(IsDirectoryEmpty(u"C:\\Tools"));
  EXPECT_FALSE(IsDirectoryEmpty(u"C:\\Gone"));
  // Type libraries may carry a number.
  EXPECT_TRUE(FindTypeLib(u"C:\\Windows\\System32\\shell32.dll\\2"));
  EXPECT_TRUE(FindTypeLib(u"gone.dll\\2")) << "nobody knows where it is looked for";
  EXPECT_FALSE(FindTypeLib(u"C:\\Windows\\System32\\gone.dll\\2"));
  EXPECT_FALSE(FindTypeLib(u"C:\\Windows\\System32\\shell32.dll\\x"));
}

TEST(FixedDrive, CountsOnlyWhatIsKnownToLieOnOne) {
  World world(kRegistry, kFiles);
  for (const UnicodeView path : {u"C:\\x", u"\"C:\\x y\" /s", u"%SystemRoot%\\x", u"\\??\\C:\\x"})
    EXPECT_TRUE(FileIsOnFixedDrive(path, true)) << ToUtf8(path);
  for (const UnicodeView path : {u"x.exe", u"rundll32 D:\\x.dll,E", u"rundll32\tD:\\x.dll,E"}) {
    EXPECT_TRUE(FileIsOnFixedDrive(path, false)) << ToUtf8(path);
    EXPECT_FALSE(FileIsOnFixedDrive(path, true)) << ToUtf8(path);
  }
  for (const UnicodeView path :
       {u"\\??\\UNC\\s\\h", u"\\\\.\\C:\\x", u"D:\\x", u"Z:\\x", u"\\\\server\\x", u"//server/x",
        u"\\Device\\x", u"http://x", u"%Unknown%\\x", u"%1", u""})
    EXPECT_FALSE(FileIsOnFixedDrive(path, false)) << ToUtf8(path);
}

TEST(Files, FaultsNeverProveAnythingMissing) {
  for (const Status fault : {Status::Denied, Status::Corrupt, Status::Unknown}) {
    World world(kRegistry, kFiles);
    world.Backend().Faults().FailPath(u"Gone", fault);
    EXPECT_TRUE(FindFile(u"C:\\Gone\\x.exe"));
    EXPECT_FALSE(FileOrDirExists(u"C:\\Gone\\x.exe", true));
    EXPECT_TRUE(ZMFileExists(u"C:\\Gone\\x.exe"));
    EXPECT_TRUE(FindTypeLib(u"C:\\Gone\\x.tlb"));
    EXPECT_EQ(ZMGetFileSize(u"C:\\Gone\\x.exe"), -2);
  }
}

TEST(System, ProfileStringsLinksAndVersions) {
  EXPECT_EQ(RemoveQuotationMarks(u"\"a b\""), u"a b");
  for (const UnicodeView text : {u"\"a\" \"b\"", u"a\" \"b", u"\""})
    EXPECT_EQ(RemoveQuotationMarks(text), text);
  World world({}, "C:\\Windows\\win.ini | text=[Windows]\\nload=a.exe , b.exe\\nrun=\\n");
  world.Windows().shell.links[u"C:\\x.lnk"] = u"C:\\target.exe";
  world.Windows().resources.versions[u"C:\\w.exe"] = {11, 0, 5, 6};
  EXPECT_EQ(GetShellLinkTarget(u"C:\\x.lnk", false), u"C:\\target.exe");
  EXPECT_EQ(GetShellLinkTarget(u"C:\\none.lnk", false), u"");
  EXPECT_EQ(GetFileVersionIdentificationFromFile(u"C:\\w.exe"), u"11.0");
  EXPECT_EQ(GetPPString(u"win.ini", u"windows", u"LOAD", u"none"), u"a.exe , b.exe");
  EXPECT_EQ(GetPPString(u"C:\\Windows\\win.ini", u"windows", u"nokey", u"none"), u"none");
  EXPECT_EQ(EnumPPEntries(u"win.ini", u"windows"), UnicodeString(u"load\0run\0", 9));
  EXPECT_EQ(GetWinDir(), u"C:\\Windows\\");
  ServiceInfo info;
  UnicodeString text;
  EXPECT_NE(GetServiceState(u"MpsSvc", info, text), 0);
  world.Windows().services.services[u"MpsSvc"].state = 4;
  EXPECT_EQ(GetServiceState(u"mpssvc", info, text), 0);
  EXPECT_EQ(info.state, 4U);
}

}  // namespace
}  // namespace scrubwell
