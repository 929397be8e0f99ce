#include <gtest/gtest.h>

#include "plugins/history/Rcp_history.h"
#include "registry/Stringhelper.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const std::string kHome = "C:\\Users\\tester\\AppData\\Roaming\\";
const std::string kRecent = kHome + "Microsoft\\Windows\\Recent\\";

std::string Fix(std::string_view application) {
  const TTracePluginList& plugins = TracePlugins();
  std::int32_t i = 0;
  while (ToUtf8(plugins.Get(i)->ApplicationName()) != application) ++i;
  return "|fixhistory:" + std::to_string(plugins.ReferenceOf(*plugins.Get(i))) + "|cleanmode:1";
}

const Abbreviations kShort = {{"{Windows}", Fix("Windows")},
                              {"{Excel}", Fix("Microsoft Excel") + "|traceapp:Microsoft Excel"},
                              {"{WinRAR}", Fix("WinRAR") + "|traceapp:WinRAR"},
                              {"{nil}", "|nil:nil|cleanmode:1"},
                              {"{U}", "{E}UserAssist\\{UA}"},
                              {"{-U}", "{-E}UserAssist\\{UA}"},
                              {"{UA}", "{75048700-EF1F-11D0-9888-006097DEACF9}\\Count"},
                              {"{k}", "|existingkey:"},
                              {"{R}", kRecent},
                              {"{H}", kHome}};

TEST(History, ListsOfTheRegistry) {
  CheckText<TRCPHistory>(R"(
      # open-with keys that hold something
      {E}FileExts\.val : Application = x ; {E}FileExts\.def = x
      {E}FileExts\.list\OpenWithList : a = x ; {E}FileExts\.deep\OpenWithList\x
      {E}FileExts\.other\OpenWithList ; {E}FileExts\.other\OpenWithProgids
      # open-with keys that hold nothing, and their names (~)
      {E}FileExts\.a ; {E}FileExts\.b\OPENWITHLIST ; {E}FileExts\.c ; {E}FileExts\.d
      HKEY_LOCAL_MACHINE\SOFTWARE\Classes\.b = btype
      HKEY_LOCAL_MACHINE\SOFTWARE\Classes\btype = B document
      HKEY_LOCAL_MACHINE\SOFTWARE\Classes\.c = ctype ; HKEY_LOCAL_MACHINE\SOFTWARE\Classes\ctype
      HKEY_LOCAL_MACHINE\SOFTWARE\Classes\.d = gone
      ? 2{k}{E}FileExts\.a|caption:.A-Datei (*.a) ; 2{k}{E}FileExts\.b|caption:B document (*.b)
      ? 2{k}{E}FileExts\.c|caption:ctype (*.c) ; 2{k}{E}FileExts\.d|caption:.D-Datei (*.d)
      ! {-kE}FileExts\.a ; {-kE}FileExts\.b ; {-kE}FileExts\.c ; {-kE}FileExts\.d
      # dialogs: the order loses the letter
      {E}ComDlg32\OpenSaveMRU : a = C:\here.txt ; : b = C:\gone.txt ; : mrulist = ba
      {E}ComDlg32\OpenSaveMRU\txt : c = C:\gone.txt ; : d = D:\gone.txt ; : e = \\server\gone.txt
      {E}ComDlg32\OpenSaveMRU\txt : f = C:\here.txt\inner ; : MRUList = cde
      {E}ComDlg32\OpenSaveMRU\zip : a = C:\gone.zip
      + C:\here.txt ; drive D: removable
      ? 1{k}{E}ComDlg32\OpenSaveMRU{v}b{f}C:\gone.txt{nil}
      ? 1{k}{E}ComDlg32\OpenSaveMRU\txt{v}c{f}C:\gone.txt{nil}
      ? 1{k}{E}ComDlg32\OpenSaveMRU\zip{v}a{f}C:\gone.zip{nil}
      ! {-E}ComDlg32\OpenSaveMRU "b" ; {=E}ComDlg32\OpenSaveMRU "MRUList"="a"
      ! {-E}ComDlg32\OpenSaveMRU\txt "c" ; {=E}ComDlg32\OpenSaveMRU\txt "MRUList"="de"
      ! {-E}ComDlg32\OpenSaveMRU\zip "a"
      # commands: only programs that are surely gone, one repair
      {E}RunMRU : a = C:\gone\x.exe -a /b\1 ; : b = notepad\1 ; : c = "C:\gone dir\y.exe" z\1
      {E}RunMRU : d = %windir%\here.exe /q\1 ; : e = http://x/\1 ; : f = \\server\x\1
      {E}RunMRU : g = C:\gone dir\z.exe C:\here.txt\1 ; : h = C:\gone\my.doc D:\x\1
      {E}RunMRU : i = C:\Windows\System32\rundll32 C:\gone.dll,Entry\1 ; : j = dword:1
      {E}RunMRU : MRUList = cabdefghij
      + C:\Windows\here.exe ; C:\Windows\System32\rundll32.exe
      ? 5{k}{E}RunMRU{v}a{f}C:\gone\x.exe{Windows} ; 5{k}{E}RunMRU{v}c{f}C:\gone dir\y.exe{Windows}
      ? 5{k}{E}RunMRU{v}g{f}C:\gone dir\z.exe{Windows} ; 5{k}{E}RunMRU{v}h{f}C:\gone\my.doc{Windows}
      ! {-E}RunMRU "a" ; {-E}RunMRU "c" ; {-E}RunMRU "g" ; {-E}RunMRU "h"
      ! {=E}RunMRU "MRUList"="bdefij"
      # numbered lists close up, with what is kept beside them
      {E}TypedPaths : url1 = C:\gone ; : url2 = C:\Windows
      {S}Microsoft\Internet Explorer\TypedURLs : url1 = http://a/ ; : url2 = file:///C:/gone%20x.htm
      {S}Microsoft\Internet Explorer\TypedURLs : url3 = http://c/
      {S}Microsoft\Internet Explorer\TypedURLsTime : url2 = t2 ; : url3 = t3
      ? 5{k}{E}TypedPaths{v}url1{f}C:\gone{Windows}
      ? 5{k}{S}Microsoft\Internet Explorer\TypedURLs{v}url2{f}C:\gone x.htm{Windows}
      ! {-E}TypedPaths "url1" ; {-S}Microsoft\Internet Explorer\TypedURLs "url2"
      ! {=E}TypedPaths "url1"="C:\\Windows" ; {-E}TypedPaths "url2"
      ! {=S}Microsoft\Internet Explorer\TypedURLs "url2"="http://c/"
      ! {-S}Microsoft\Internet Explorer\TypedURLs "url3"
      ! {=S}Microsoft\Internet Explorer\TypedURLsTime "url2"="t3"
      ! {-S}Microsoft\Internet Explorer\TypedURLsTime "url3"
      # programs: files, folders, other texts
      {S}Microsoft\Office\16.0\Excel\File MRU : Item 1 = [F00000000][T01D0000000000000][O00000000]*C:\here.xls
      {S}Microsoft\Office\16.0\Excel\File MRU : Item 2 = [F00000000][T01D0000000000000][O00000000]*C:\gone.xls
      {S}Microsoft\Office\16.0\Excel\File MRU : Item 3 = C:\no mark.xls
      {S}Microsoft\Office\16.0\Excel\File MRU : Item = [F00000000][T01D0000000000000][O00000000]*C:\gone.xls
      {S}WinRAR\ArcHistory : 0 = C:\gone.rar ; : 1 = C:\here.xls
      {S}WinRAR\DialogEditHistory\ExtrPath : 0 = C:\gone dir ; : 1 = C:\here.xls\inner\
      {S}Microsoft\Windows\CurrentVersion\Applets\Regedit : LastKey = C:\gone
      + C:\here.xls
      ? 4{k}{S}Microsoft\Office\16.0\Excel\File MRU{v}Item 2{f}C:\gone.xls{Excel}
      ? 4{k}{S}WinRAR\ArcHistory{v}0{f}C:\gone.rar{WinRAR}
      ? 8{k}{S}WinRAR\DialogEditHistory\ExtrPath{v}0{f}C:\gone dir{WinRAR}
      ! {-S}Microsoft\Office\16.0\Excel\File MRU "Item 2" ; {-S}WinRAR\ArcHistory "0"
      ! {-S}WinRAR\DialogEditHistory\ExtrPath "0"
      ! {=S}Microsoft\Office\16.0\Excel\File MRU "Item 2"="C:\\no mark.xls"
      ! {-S}Microsoft\Office\16.0\Excel\File MRU "Item 3"
      ! {=S}WinRAR\ArcHistory "0"="C:\\here.xls" ; {-S}WinRAR\ArcHistory "1"
      ! {=S}WinRAR\DialogEditHistory\ExtrPath "0"="C:\\here.xls\\inner\\"
      ! {-S}WinRAR\DialogEditHistory\ExtrPath "1"
      # usage counters: Start menu, full paths, names of no place
      {U} : HRZR_EHACVQY:%pfvqy2%\Tbar.yax = x ; : HRZR_EHACVQY:%pfvqy23%\Qve\Tbar.yax = x
      {U} : HRZR_EHACVQY:%pfvqy2%\Tbar Qve = x ; : HRZR_EHACVQY:%pfvqy2%\Urer.yax = x
      {U} : HRZR_EHACNGU:P:\tbar.rkr = x ; : HRZR_EHACNGU = x
      {U} : {S38OS404-1Q43-42S2-9305-67QR0O28SP23}\tbar.rkr = x ; : Zvpebfbsg.Jvaqbjf.Rkcybere = x
      + C:\ProgramData\Microsoft\Windows\Start Menu\Here.lnk
      ? 9{k}{U}{v}HRZR_EHACVQY:%pfvqy2%\Tbar.yax{f}Gone.lnk{nil}
      ? 6{k}{U}{v}HRZR_EHACVQY:%pfvqy23%\Qve\Tbar.yax{f}Dir\Gone.lnk{nil}
      ? 7{k}{U}{v}HRZR_EHACVQY:%pfvqy2%\Tbar Qve{f}Gone Dir{nil}
      ? 5{k}{U}{v}HRZR_EHACNGU:P:\tbar.rkr{f}C:\gone.exe{nil}
      ? 5{k}{U}{v}{S38OS404-1Q43-42S2-9305-67QR0O28SP23}\tbar.rkr{f}%windir%\gone.exe{nil}
      ! {-U} "HRZR_EHACVQY:%pfvqy2%\Tbar.yax" ; {-U} "HRZR_EHACVQY:%pfvqy23%\Qve\Tbar.yax"
      ! {-U} "HRZR_EHACVQY:%pfvqy2%\Tbar Qve" ; {-U} "HRZR_EHACNGU:P:\tbar.rkr"
      ! {-U} "{S38OS404-1Q43-42S2-9305-67QR0O28SP23}\tbar.rkr"
      # a Start menu folder that is not known proves nothing
      & no Start menu
      {U} : HRZR_EHACVQY:%pfvqy2%\Tbar.yax = x)",
                         kShort, {{"no Start menu", [](Case& row) {
                                     row.setup = [](World& world) {
                                       world.Windows().shell.folders.erase(22);
                                     };
                                   }}});
}

TEST(History, RecentDocuments) {
  const auto setLinks = [](World& world) {
    auto& links = world.Windows().shell.links;
    const UnicodeString recent = FromUtf8(kRecent);
    links[recent + u"here.lnk"] = u"C:\\here.doc";
    links[recent + u"gone.LNK"] = u"\"C:\\gone.doc\"";
    links[recent + u"net.lnk"] = u"\\\\server\\gone.doc";
    links[recent + u"virtual.lnk"] = u"";
    links[recent + u"gone.pif"] = u"C:\\gone.doc";
    links[u"C:\\Users\\tester\\AppData\\Roaming\\Microsoft\\Office\\Zuletzt\\gone.lnk"] =
        u"C:\\gone.xls";
    world.Windows().resources.versions[u"C:\\Office\\winword.exe"] = {14, 0, 1, 2};
  };
  CheckText<TRCPHistory>(R"(
      # links of both folders
      & links
      {S}Microsoft\Office\14.0\Common\General : RecentFiles = Zuletzt
      HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\App Paths\WINWORD.EXE = C:\Office\winword.exe
      + C:\here.doc ; C:\Office\winword.exe ; {H}keep.txt ; {H}Microsoft\Office\Zuletzt\gone.lnk
      + {R}here.lnk ; {R}gone.LNK ; {R}net.lnk ; {R}virtual.lnk ; {R}gone.pif ; {R}gone.url
      + {R}broken.lnk
      ? 10|existingfile:{R}gone.LNK{f}C:\gone.doc|caption:gone
      ? 11|existingfile:{H}Microsoft\Office\Zuletzt\gone.lnk{f}C:\gone.xls|caption:gone
      ! backup {R}gone.LNK ; erase file {R}gone.LNK ; backup {H}Microsoft\Office\Zuletzt\gone.lnk
      ! erase file {H}Microsoft\Office\Zuletzt\gone.lnk ; erase folder {H}Microsoft\Office\Zuletzt
      ! erase folder {H}Microsoft\Office
      # a folder is spared only in the form that is compared
      & links
      {E}Shell Folders : Start Menu = c:\users\tester\appdata\roaming\microsoft\windows\recent\
      {E}Shell Folders : AppData = {H}
      + {R}gone.LNK
      ? 10|existingfile:{R}gone.LNK{f}C:\gone.doc|caption:gone
      ! backup {R}gone.LNK ; erase file {R}gone.LNK
      # damaged, or not to be told; no version to look for a folder with
      {S}Microsoft\Office\Common\General : RecentFiles = Zuletzt
      + {H}Microsoft\Office\Zuletzt\gone.lnk ; {R}broken.lnk ; {R}other.lnk | size=0)",
                         kShort, {{"links", [=](Case& row) { row.setup = setLinks; }}});
}

TEST(History, Addresses) {
  const struct {
    const char* name;
    const char* url;
    const char* file;     ///< there is
    const char* missing;  ///< what is reported; null for nothing
    int version = 11;
  } rows[] = {
      {"gone", "file:///C:/a%20b.txt", "", "C:\\a b.txt"},
      {"there, decoded", "file:///C:/a%20b.txt", "C:\\a b.txt", nullptr},
      {"there, as written", "file:///C:/a%20b.txt", "C:\\a%20b.txt", nullptr},
      {"decoded twice", "file:///C:/a%2520b.txt", "C:\\a b.txt", nullptr},
      {"inside of a file", "file:///C:/a.zip/x.txt", "C:\\a.zip", nullptr},
      {"old spelling of the drive", "file:///C|/gone.txt", "", "C:\\gone.txt"},
      {"a folder of that name", "file:///C:/dir", "C:\\dir\\", nullptr},
      {"other letter case", "FILE:///C:/gone.txt", "", nullptr},
      {"other address", "http://x/C:/gone.txt", "", nullptr},
      {"share", "file:///server/gone.txt", "", nullptr},
      {"removable", "file:///D:/gone.txt", "drive D: removable", nullptr},
      {"names that can't be asked for", "file:///C:/a%5B1%5D.txt", "", nullptr},
      {"nor these", "file:///C:/%C3%A4.txt", "", nullptr},
      {"but only the name counts", "file:///C:/%C3%A4/x.txt", "", "C:\\ä\\x.txt"},
      {"older browsers can", "file:///C:/a%5B1%5D.txt", "", "C:\\a[1].txt", 6},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    World world("", row.file);
    const UnicodeString url = FromUtf8(row.url);
    world.Windows().browser.urls = {u"http://y/", url};
    world.Windows().browser.version = row.version;
    const std::string item = row.missing == nullptr ? "" : row.missing;
    const Lines expected = {"3|missingfile:" + item + "|url:" + row.url};
    EXPECT_EQ(world.Run<TRCPHistory>(), row.missing == nullptr ? Lines() : expected);
    if (row.missing == nullptr) continue;
    EXPECT_EQ(world.CleanAll(), Lines{std::string("remove url ") + row.url});
    EXPECT_EQ(world.Scan(), Lines());
  }
}

TEST(History, CleansWhatIsStillThere) {
  const Case row = ReadCases(R"(# three archives
      {S}WinRAR\ArcHistory : 0 = C:\gone0.rar ; : 1 = C:\gone1.rar ; : 2 = C:\here.rar
      + C:\here.rar
      ? 4{k}{S}WinRAR\ArcHistory{v}0{f}C:\gone1.rar{WinRAR})",
                             kShort)[0];
  World world(row.registry, row.files);
  ASSERT_EQ(world.Run<TRCPHistory>().size(), 2U);
  (*SweepErrors)[1].Selected = false;
  EXPECT_EQ(world.CleanAll().size(), 4U);
  // The second one is number 0 by now, and what is number 1 now must stay.
  (*SweepErrors)[1].Selected = true;
  EXPECT_EQ(world.CleanAll(), Lines());
  EXPECT_EQ(world.Scan(), row.problems);
}

TEST(History, AddressesAreAnnouncedTwice) {
  World world;
  world.Windows().browser.urls = {u"file:///C:/gone.txt", u"file:///D:/gone.txt"};
  auto& plugin = world.Create<TRCPHistory>();
  std::string shown;
  plugin.OnScanProgress = [&](TRCPlugin&, std::int32_t promille, UnicodeView text, bool) {
    shown += std::to_string(promille) + " " + ToUtf8(text) + "\n";
  };
  world.Backend().Files().SetDrive(u'D', DriveKind::Network);
  world.Scan();
  EXPECT_EQ(shown, "500 C:\\gone.txt\n1000 C:\\gone.txt\n1500 D:\\gone.txt\n");
}

}  // namespace
}  // namespace scrubwell::test
