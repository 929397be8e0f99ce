#include <gtest/gtest.h>

#include "plugins/history/Rcp_history.h"
#include "registry/Stringhelper.h"
#include "support/class_text.h"

namespace scrubwell::test {
namespace {

const std::string kUser = "HKEY_CURRENT_USER\\Software\\";
const std::string kExplorer = kUser + "Microsoft\\Windows\\CurrentVersion\\Explorer\\";
const std::string kHome = "C:\\Users\\tester\\AppData\\Roaming\\";
const std::string kRecent = kHome + "Microsoft\\Windows\\Recent\\";
const std::string kMenu = kHome + "Microsoft\\Windows\\Start Menu\\Programs\\";

// Lines as for classes; "E\" stands for Explorer's key, "S\" for the user's software.
std::string Keys(const std::string& lines) {
  return Classes(ReplaceAll(ReplaceAll(lines, "E\\", kExplorer), "S\\", kUser));
}

std::string Trace(int kind, const std::string& key, const std::string& value,
                  const std::string& file, const std::string& rest) {
  return std::to_string(kind) + "|existingkey:" + ReplaceAll(key, "E\\", kExplorer) +
         "|existingvalue:" + value + "|missingfile:" + file + "|" + rest;
}

int Reference(std::string_view application) {
  const TTracePluginList& plugins = TracePlugins();
  for (std::int32_t i = 0; i < plugins.Count(); ++i) {
    if (ToUtf8(plugins.Get(i)->ApplicationName()) == application) {
      return plugins.ReferenceOf(*plugins.Get(i));
    }
  }
  return 0;
}

std::string Fix(std::string_view application, int mode) {
  return "fixhistory:" + std::to_string(Reference(application)) +
         "|cleanmode:" + std::to_string(mode);
}

std::string Short(std::string key) {
  return ReplaceAll(ReplaceAll(std::move(key), "E\\", kExplorer), "HKEY_CURRENT_USER", "HKCU");
}
std::string Deleted(const std::string& key, const std::string& value) {
  return "delete value " + Short(key) + " \"" + value + "\"";
}
std::string Set(const std::string& key, const std::string& value, const std::string& text) {
  return "set value " + Short(key) + " \"" + value + "\"=\"" + text + "\"";
}

TEST(History, OpenWithKeys) {
  const auto problem = [](const std::string& extension, const std::string& caption) {
    return "2|existingkey:" + kExplorer + "FileExts\\" + extension + "|caption:" + caption;
  };
  const auto removal = [](const std::string& extension) {
    return "delete key " + Short("E\\FileExts\\" + extension);
  };
  const Case rows[] = {
      {.name = "nothing"},
      {.name = "keys that hold something", .registry = Keys(R"(E\FileExts\.val : Application = x
           E\FileExts\.def = x
           E\FileExts\.list\OpenWithList : a = x
           E\FileExts\.deep\OpenWithList\x
           E\FileExts\.other\OpenWithList
           E\FileExts\.other\OpenWithProgids)")},
      {.name = "keys that hold nothing, and their names",
       .registry = Keys(R"(E\FileExts\.a
           E\FileExts\.b\OPENWITHLIST
           E\FileExts\.c
           E\FileExts\.d
           .b = btype
           btype = B document
           .c = ctype
           ctype
           .d = gone)"),
       .problems = {problem(".a", ".A-Datei (*.a)"), problem(".b", "B document (*.b)"),
                    problem(".c", "ctype (*.c)"), problem(".d", ".D-Datei (*.d)")},
       .journal = Lines{removal(".a"), removal(".b"), removal(".c"), removal(".d")}},
  };
  CheckCases<TRCPHistory>(rows);
}

TEST(History, ListsOfTheRegistry) {
  const std::string dialogs = "E\\ComDlg32\\OpenSaveMRU";
  const std::string run = "E\\RunMRU";
  const std::string excel = kUser + "Microsoft\\Office\\16.0\\Excel\\File MRU";
  const std::string item = "[F00000000][T01D0000000000000][O00000000]*";
  const std::string usage = "E\\UserAssist\\{75048700-EF1F-11D0-9888-006097DEACF9}\\Count";
  const Case rows[] = {
      {.name = "dialogs: the order loses the letter",
       .registry = Keys(R"(E\ComDlg32\OpenSaveMRU : a = C:\here.txt
           E\ComDlg32\OpenSaveMRU : b = C:\gone.txt
           E\ComDlg32\OpenSaveMRU : mrulist = ba
           E\ComDlg32\OpenSaveMRU\txt : c = C:\gone.txt
           E\ComDlg32\OpenSaveMRU\txt : d = D:\gone.txt
           E\ComDlg32\OpenSaveMRU\txt : e = \\server\gone.txt
           E\ComDlg32\OpenSaveMRU\txt : f = C:\here.txt\inner
           E\ComDlg32\OpenSaveMRU\txt : MRUList = cde
           E\ComDlg32\OpenSaveMRU\zip : a = C:\gone.zip)"),
       .files = "C:\\here.txt\ndrive D: removable",
       .problems = {Trace(1, dialogs, "b", "C:\\gone.txt", "nil:nil|cleanmode:1"),
                    Trace(1, dialogs + "\\txt", "c", "C:\\gone.txt", "nil:nil|cleanmode:1"),
                    Trace(1, dialogs + "\\zip", "a", "C:\\gone.zip", "nil:nil|cleanmode:1")},
       .journal = Lines{Deleted(dialogs, "b"), Set(dialogs, "MRUList", "a"),
                        Deleted(dialogs + "\\txt", "c"), Set(dialogs + "\\txt", "MRUList", "de"),
                        Deleted(dialogs + "\\zip", "a")}},
      {.name = "commands: only programs that are surely gone, one repair",
       .registry = Keys(R"(E\RunMRU : a = C:\gone\x.exe -a /b\1
           E\RunMRU : b = notepad\1
           E\RunMRU : c = "C:\gone dir\y.exe" z\1
           E\RunMRU : d = %windir%\here.exe /q\1
           E\RunMRU : e = http://x/\1
           E\RunMRU : f = \\server\x\1
           E\RunMRU : g = C:\gone dir\z.exe C:\here.txt\1
           E\RunMRU : h = C:\gone\my.doc D:\x\1
           E\RunMRU : i = C:\Windows\System32\rundll32 C:\gone.dll,Entry\1
           E\RunMRU : j = dword:1
           E\RunMRU : MRUList = cabdefghij)"),
       .files = "C:\\Windows\\here.exe\nC:\\Windows\\System32\\rundll32.exe",
       .problems = {Trace(5, run, "a", "C:\\gone\\x.exe", Fix("Windows", 1)),
                    Trace(5, run, "c", "C:\\gone dir\\y.exe", Fix("Windows", 1)),
                    Trace(5, run, "g", "C:\\gone dir\\z.exe", Fix("Windows", 1)),
                    Trace(5, run, "h", "C:\\gone\\my.doc", Fix("Windows", 1))},
       .journal = Lines{Deleted(run, "a"), Deleted(run, "c"), Deleted(run, "g"), Deleted(run, "h"),
                        Set(run, "MRUList", "bdefij")}},
      {.name = "numbered lists close up, with what is kept beside them",
       .registry = Keys(R"(E\TypedPaths : url1 = C:\gone
           E\TypedPaths : url2 = C:\Windows
           S\Microsoft\Internet Explorer\TypedURLs : url1 = http://a/
           S\Microsoft\Internet Explorer\TypedURLs : url2 = file:///C:/gone%20x.htm
           S\Microsoft\Internet Explorer\TypedURLs : url3 = http://c/
           S\Microsoft\Internet Explorer\TypedURLsTime : url2 = t2
           S\Microsoft\Internet Explorer\TypedURLsTime : url3 = t3)"),
       .problems = {Trace(5, "E\\TypedPaths", "url1", "C:\\gone", Fix("Windows", 1)),
                    Trace(5, kUser + "Microsoft\\Internet Explorer\\TypedURLs", "url2",
                          "C:\\gone x.htm", Fix("Windows", 1))},
       .journal =
           Lines{Deleted("E\\TypedPaths", "url1"),
                 Deleted(kUser + "Microsoft\\Internet Explorer\\TypedURLs", "url2"),
                 Set("E\\TypedPaths", "url1", "C:\\\\Windows"), Deleted("E\\TypedPaths", "url2"),
                 Set(kUser + "Microsoft\\Internet Explorer\\TypedURLs", "url2", "http://c/"),
                 Deleted(kUser + "Microsoft\\Internet Explorer\\TypedURLs", "url3"),
                 Set(kUser + "Microsoft\\Internet Explorer\\TypedURLsTime", "url2", "t3"),
                 Deleted(kUser + "Microsoft\\Internet Explorer\\TypedURLsTime", "url3")}},
      {.name = "programs: files, folders, other texts",
       .registry = Keys(
           "S\\Microsoft\\Office\\16.0\\Excel\\File MRU : Item 1 = " + item + "C:\\here.xls\n" +
           "S\\Microsoft\\Office\\16.0\\Excel\\File MRU : Item 2 = " + item + "C:\\gone.xls\n" +
           "S\\Microsoft\\Office\\16.0\\Excel\\File MRU : Item 3 = C:\\no mark.xls\n" +
           "S\\Microsoft\\Office\\16.0\\Excel\\File MRU : Item = " + item + "C:\\gone.xls\n" +
           R"(S\WinRAR\ArcHistory : 0 = C:\gone.rar
           S\WinRAR\ArcHistory : 1 = C:\here.xls
           S\WinRAR\DialogEditHistory\ExtrPath : 0 = C:\gone dir
           S\WinRAR\DialogEditHistory\ExtrPath : 1 = C:\here.xls\inner\
           S\Microsoft\Windows\CurrentVersion\Applets\Regedit : LastKey = C:\gone)"),
       .files = "C:\\here.xls",
       .problems = {Trace(4, excel, "Item 2", "C:\\gone.xls",
                          Fix("Microsoft Excel", 1) + "|traceapp:Microsoft Excel"),
                    Trace(4, kUser + "WinRAR\\ArcHistory", "0", "C:\\gone.rar",
                          Fix("WinRAR", 1) + "|traceapp:WinRAR"),
                    Trace(8, kUser + "WinRAR\\DialogEditHistory\\ExtrPath", "0", "C:\\gone dir",
                          Fix("WinRAR", 1) + "|traceapp:WinRAR")},
       .journal = Lines{Deleted(excel, "Item 2"), Deleted(kUser + "WinRAR\\ArcHistory", "0"),
                        Deleted(kUser + "WinRAR\\DialogEditHistory\\ExtrPath", "0"),
                        Set(excel, "Item 2", "C:\\\\no mark.xls"), Deleted(excel, "Item 3"),
                        Set(kUser + "WinRAR\\ArcHistory", "0", "C:\\\\here.xls"),
                        Deleted(kUser + "WinRAR\\ArcHistory", "1"),
                        Set(kUser + "WinRAR\\DialogEditHistory\\ExtrPath", "0",
                            "C:\\\\here.xls\\\\inner\\\\"),
                        Deleted(kUser + "WinRAR\\DialogEditHistory\\ExtrPath", "1")}},
      {.name = "usage counters: Start menu, full paths, names of no place",
       .registry = Keys(ReplaceAll(R"(C : HRZR_EHACVQY:%pfvqy2%\Tbar.yax = x
           C : HRZR_EHACVQY:%pfvqy23%\Qve\Tbar.yax = x
           C : HRZR_EHACVQY:%pfvqy2%\Tbar Qve = x
           C : HRZR_EHACVQY:%pfvqy2%\Urer.yax = x
           C : HRZR_EHACNGU:P:\tbar.rkr = x
           C : HRZR_EHACNGU = x
           C : {S38OS404-1Q43-42S2-9305-67QR0O28SP23}\tbar.rkr = x
           C : Zvpebfbsg.Jvaqbjf.Rkcybere = x)",
                                   "C :", usage + " :")),
       .files = "C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Here.lnk",
       .problems =
           {Trace(9, usage, "HRZR_EHACVQY:%pfvqy2%\\Tbar.yax", "Gone.lnk", "nil:nil|cleanmode:1"),
            Trace(6, usage, "HRZR_EHACVQY:%pfvqy23%\\Qve\\Tbar.yax", "Dir\\Gone.lnk",
                  "nil:nil|cleanmode:1"),
            Trace(7, usage, "HRZR_EHACVQY:%pfvqy2%\\Tbar Qve", "Gone Dir", "nil:nil|cleanmode:1"),
            Trace(5, usage, "HRZR_EHACNGU:P:\\tbar.rkr", "C:\\gone.exe", "nil:nil|cleanmode:1"),
            Trace(5, usage, "{S38OS404-1Q43-42S2-9305-67QR0O28SP23}\\tbar.rkr",
                  "%windir%\\gone.exe", "nil:nil|cleanmode:1")},
       .journal = Lines{Deleted(usage, "HRZR_EHACVQY:%pfvqy2%\\Tbar.yax"),
                        Deleted(usage, "HRZR_EHACVQY:%pfvqy23%\\Qve\\Tbar.yax"),
                        Deleted(usage, "HRZR_EHACVQY:%pfvqy2%\\Tbar Qve"),
                        Deleted(usage, "HRZR_EHACNGU:P:\\tbar.rkr"),
                        Deleted(usage, "{S38OS404-1Q43-42S2-9305-67QR0O28SP23}\\tbar.rkr")}},
      {.name = "a Start menu folder that is not known proves nothing",
       .registry = Keys(usage + " : HRZR_EHACVQY:%pfvqy2%\\Tbar.yax = x"),
       .setup = [](World& world) { world.Windows().shell.folders.erase(22); }},
  };
  CheckCases<TRCPHistory>(rows);
  CheckFaults<TRCPHistory>(rows[3]);
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
  const std::string office = kHome + "Microsoft\\Office\\Zuletzt\\gone.lnk";
  const std::string names[] = {"here.lnk", "gone.LNK", "net.lnk",   "virtual.lnk",
                               "gone.pif", "gone.url", "broken.lnk"};
  std::string files =
      "C:\\here.doc\nC:\\Office\\winword.exe\n" + kHome + "keep.txt\n" + office + "\n";
  for (const std::string& name : names) files += kRecent + name + "\n";
  const Case rows[] = {
      {.name = "links of both folders",
       .registry =
           Keys("S\\Microsoft\\Office\\14.0\\Common\\General : RecentFiles = Zuletzt") +
           Classes("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\"
                   "WINWORD.EXE = C:\\Office\\winword.exe"),
       .files = files,
       .problems = {"10|existingfile:" + kRecent + "gone.LNK|missingfile:C:\\gone.doc|caption:gone",
                    "11|existingfile:" + office + "|missingfile:C:\\gone.xls|caption:gone"},
       .journal = Lines{"backup " + kRecent + "gone.LNK", "erase file " + kRecent + "gone.LNK",
                        "backup " + office, "erase file " + office,
                        "erase folder " + kHome + "Microsoft\\Office\\Zuletzt",
                        "erase folder " + kHome + "Microsoft\\Office"},
       .setup = setLinks},
      {.name = "a folder is spared only in the form that is compared",
       .registry = Keys("E\\Shell Folders : Start Menu = c:\\users\\tester\\appdata\\roaming\\"
                        "microsoft\\windows\\recent\\\n"
                        "E\\Shell Folders : AppData = " +
                        kHome),
       .files = kRecent + "gone.LNK",
       .problems = {"10|existingfile:" + kRecent +
                    "gone.LNK|missingfile:C:\\gone.doc|caption:gone"},
       .journal = Lines{"backup " + kRecent + "gone.LNK", "erase file " + kRecent + "gone.LNK"},
       .setup = setLinks},
      {.name = "damaged, or not to be told; no version to look for a folder with",
       .registry = Keys("S\\Microsoft\\Office\\Common\\General : RecentFiles = Zuletzt"),
       .files = office + "\n" + kRecent + "broken.lnk\n" + kRecent + "other.lnk | size=0"},
  };
  CheckCases<TRCPHistory>(rows);
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
  const std::string key = kUser + "WinRAR\\ArcHistory";
  World world(Keys(R"(S\WinRAR\ArcHistory : 0 = C:\gone0.rar
      S\WinRAR\ArcHistory : 1 = C:\gone1.rar
      S\WinRAR\ArcHistory : 2 = C:\here.rar)"),
              "C:\\here.rar");
  ASSERT_EQ(world.Run<TRCPHistory>().size(), 2U);
  (*SweepErrors)[1].Selected = false;
  EXPECT_EQ(world.CleanAll().size(), 4U);
  // The second one is number 0 by now, and what is number 1 now must stay.
  (*SweepErrors)[1].Selected = true;
  EXPECT_EQ(world.CleanAll(), Lines());
  const Lines left = {Trace(4, key, "0", "C:\\gone1.rar", Fix("WinRAR", 1) + "|traceapp:WinRAR")};
  EXPECT_EQ(world.Scan(), left);
}

TEST(History, AStopAmongTheLastItemsIsNoWholeScan) {
  World world(Keys("E\\TypedPaths : url1 = C:\\gone\nE\\TypedPaths : url2 = C:\\gone2"));
  auto& plugin = world.Create<TRCPHistory>();
  plugin.OnScanProgress = [](TRCPlugin&, std::int32_t, UnicodeView, bool) { StopSearch = true; };
  EXPECT_EQ(world.Scan().size(), 1U);
  EXPECT_EQ(plugin.FState, rcpInited);
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
