#include <gtest/gtest.h>

#include "plugins/filetypes/Rcp_filetypes.h"
#include "registry/Stringhelper.h"
#include "support/class_text.h"

namespace scrubwell::test {
namespace {

const char* const kFiles = "C:\\x\\here.exe";

TEST(FileTypes, ExtensionsAndTypes) {
  const std::string gone =
      "1|caption:Text (*.txt)|existingkey:32:HKCR\\txtfile\\shell\\open"
      "\\command|missingfile:C:\\gone.exe %1";
  const ClassRow rows[] = {
      {"healthy", R"(.txt = txtfile
         .log = TXTFILE
         txtfile = Text
         txtfile\shell\a\command = "C:\x\here.exe" "%1"
         txtfile\shell\e\DropTarget
         txtfile\shell\f\command : DelegateExecute = {G}
         txtfile\shell\f\ddeexec = [open]
         txtfile\shell\g\command = D:\x.exe
         txtfile\DefaultIcon = "C:\x\here.exe",-3
         .number = dword:1
         AppX1\ShellEx\IconHandler = dword:1
         Big\DefaultIcon = dword:1
         Big\CLSID = dword:1
         AppX1\DefaultIcon = @{App_1.0?ms-resource://App/Files/x.png}
         AppX1\shell\open\command : DelegateExecute = {G}
         .a = AppX1
         .own = gone
         .own\CLSID = {G}
         .que
         .x = autocad.gone
         .named : PerceivedType = text
         NTI-Anything
         Wrong\DefaultIcon = %1
         Type\CLSID = {GONE}
         Big\ShellEx\{F9DB5320-233e-11D1-9F84-707F02C10627}
         Big\ShellEx\ContextMenuHandlers\{G}
         Big\ShellEx\ExtShellFolderViews\{V}
         HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Microsoft\Windows\CurrentVersion\ExtShellViews\{V}
         CLSID\{G}\x)"},
      {"missing type; the extension goes",
       ".xyz = no.such.type",
       {"2|existingkey:32:HKCR\\.xyz|missingkey:32:HKCR\\no.such.type|caption:.XYZ-Datei (*.xyz)"},
       {"delete key C\\.xyz"}},
      {"empty keys (!)",
       ".e\n.e2 = \nEmptyType\nNamed : x = y",
       {"8|existingkey:32:HKCR\\.e|caption:.E-Datei (*.e)",
        "8|existingkey:32:HKCR\\.e2|caption:.E2-Datei (*.e2)",
        "8|existingkey:32:HKCR\\EmptyType|caption:EmptyType"},
       {"delete key C\\.e", "delete key C\\.e2", "delete key C\\EmptyType"}},
      {"a type of two extensions is checked once, and goes when its verb was all (!)",
       ".tx1 = TxtFile\n.txt = txtfile\ntxtfile\\shell\\open\\command = C:\\gone.exe %1",
       {"1|caption:TxtFile (*.tx1)|existingkey:32:HKCR\\TxtFile\\shell\\open\\command"
        "|missingfile:C:\\gone.exe %1"},
       {"delete key C\\TxtFile\\shell\\open\\command", "delete key C\\TxtFile\\shell\\open",
        "delete key C\\TxtFile\\shell", "delete key C\\TxtFile"},
       {"2|existingkey:32:HKCR\\.tx1|missingkey:32:HKCR\\TxtFile|caption:.TX1-Datei (*.tx1)",
        "2|existingkey:32:HKCR\\.txt|missingkey:32:HKCR\\txtfile|caption:.TXT-Datei (*.txt)"}},
      {"a type that holds more stays",
       ".txt = txtfile\ntxtfile =  Text \ntxtfile\\shell\\open\\command = C:\\gone.exe %1",
       {gone},
       {"delete key C\\txtfile\\shell\\open\\command", "delete key C\\txtfile\\shell\\open",
        "delete key C\\txtfile\\shell"}},
      {"parts of an extension's own key",
       R"(.p\shell
         .p\ShellEx\MayChangeDefaultMenu = 
         .p\ShellEx\{GONE}
         .p\ShellEx\PropertySheetHandlers\word
         .p\ShellEx\ExtShellFolderViews\{GONE}
         .p\DefaultIcon =  
         .q\shell\open
         .q\DefaultIcon = noicon,1)",
       {"10|existingkey:32:HKCR\\.p\\shell|caption:.p",
        "3|existingkey:32:HKCR\\.p\\ShellEx\\ExtShellFolderViews\\{GONE}|caption:.P-Datei (*.p)"
        "|missingkey:32:HKCR\\CLSID\\{GONE}",
        "6|existingkey:32:HKCR\\.p\\ShellEx\\MayChangeDefaultMenu|caption:.P-Datei (*.p)",
        "6|existingkey:32:HKCR\\.p\\ShellEx\\PropertySheetHandlers\\word|caption:.P-Datei (*.p)",
        "3|existingkey:32:HKCR\\.p\\ShellEx\\{GONE}|caption:.P-Datei (*.p)"
        "|missingkey:32:HKCR\\CLSID\\{GONE}",
        "5|existingkey:32:HKCR\\.q\\shell\\open|caption:.Q-Datei (*.q)",
        "4|existingkey:32:HKCR\\.q\\DefaultIcon|caption:.Q-Datei (*.q)|missingfile:noicon,1"},
       {"delete key C\\.p\\shell", "delete key C\\.p\\ShellEx\\ExtShellFolderViews\\{GONE}",
        "delete key C\\.p\\ShellEx\\ExtShellFolderViews",
        "delete key C\\.p\\ShellEx\\MayChangeDefaultMenu",
        "delete key C\\.p\\ShellEx\\PropertySheetHandlers\\word",
        "delete key C\\.p\\ShellEx\\PropertySheetHandlers", "delete key C\\.p\\ShellEx\\{GONE}",
        "delete key C\\.p\\ShellEx", "delete key C\\.q\\shell\\open", "delete key C\\.q\\shell",
        "delete key C\\.q\\DefaultIcon", "delete key C\\.q"}},
      {"a single handler, an icon, a user's class take their types along (!)",
       "A\\ShellEx\\IconHandler = {GONE}\nB\\DefaultIcon\nU\\C\\CLSID = word",
       {"3|existingkey:32:HKCR\\A\\ShellEx\\IconHandler|caption:A|missingkey:32:HKCR\\CLSID\\{"
        "GONE}",
        "7|existingkey:32:HKCR\\B\\DefaultIcon|caption:B",
        "3|existingkey:32:HKCR\\C\\CLSID|caption:C|missingkey:32:HKCR\\CLSID\\word"},
       {"delete key C\\A\\ShellEx\\IconHandler", "delete key C\\A\\ShellEx", "delete key C\\A",
        "delete key C\\B\\DefaultIcon", "delete key C\\B",
        "delete key HKCU\\Software\\Classes\\C\\CLSID", "delete key HKCU\\Software\\Classes\\C"}},
  };
  CheckClasses<TRCPFileTypes>(rows, kFiles);
}

TEST(FileTypes, OtherPlaces) {
  const std::string exts =
      "HKEY_USERS\\S-1-5-21-1-2-3-1001\\Software\\Microsoft\\Windows"
      "\\CurrentVersion\\Explorer\\FileExts\\";
  const std::string shown = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\";
  const auto empty = [&](const std::string& name) {
    return "12|existingkey:32:HKEY_CURRENT_USER\\" + shown + name + "|caption:" + shown + name;
  };
  const ClassRow rows[] = {
      {"an application's missing program: the command alone goes, and the verb is next",
       "Applications\\x.exe\\shell\\open\\command = C:\\gone.exe\n"
       "Applications\\y.exe\\shell\nApplications\\z.exe\\shell\\a\n"
       "Applications\\z.exe\\DefaultIcon = C:\\gone.ico",
       {"1|caption:x.exe|existingkey:32:HKCR\\Applications\\x.exe\\shell\\open\\command"
        "|missingfile:C:\\gone.exe",
        "10|existingkey:32:HKCR\\Applications\\y.exe\\shell|caption:Applications\\y.exe",
        "5|existingkey:32:HKCR\\Applications\\z.exe\\shell\\a|caption:z.exe"},
       {"delete key C\\Applications\\x.exe\\shell\\open\\command",
        "delete key C\\Applications\\y.exe\\shell", "delete key C\\Applications\\z.exe\\shell\\a"},
       {"5|existingkey:32:HKCR\\Applications\\x.exe\\shell\\open|caption:x.exe",
        "10|existingkey:32:HKCR\\Applications\\z.exe\\shell|caption:Applications\\z.exe"}},
      {"associations with a default value at most",
       "SystemFileAssociations\\.x = d\nSystemFileAssociations\\.y : a = b\n"
       "SystemFileAssociations\\.z\\shell",
       {"12|existingkey:32:HKCR\\SystemFileAssociations\\.x|caption:SystemFileAssociations\\.x"},
       {"delete key C\\SystemFileAssociations\\.x"}},
      {"Explorer's extensions, two levels deep",
       exts + ".a\n" + exts + ".b = d\n" + exts + ".c\\OpenWithList\\deep : x = y\n" + exts +
           ".d\\OpenWithList : a = x.exe\n" + exts + ".e : Application = x\n" + exts + "word",
       {empty(".a"), empty(".b"), empty(".c")},
       {"delete key HKCU\\" + shown + ".a", "delete key HKCU\\" + shown + ".b",
        "delete key HKCU\\" + shown + ".c"}},
      {"deletion overrides rights where no check asks for them (!)",
       "EmptyType",
       {"8|existingkey:32:HKCR\\.no|caption:.NO-Datei (*.no)",
        "8|existingkey:32:HKCR\\EmptyType|caption:EmptyType"},
       {"delete key C\\.no", "delete key C\\EmptyType"},
       {},
       {},
       {},
       [](World& world) {
         world.Backend().DenyWrite(u"HKLM\\SOFTWARE\\Classes\\.no");
         world.Backend().DenyDelete(u"HKLM\\SOFTWARE\\Classes\\.skip");
         world.Backend().DenyDelete(u"HKLM\\SOFTWARE\\Classes\\EmptyType");
       }},
      {"one view on a 32-bit system",
       "Type\\CLSID = {GONE}\nU\\Mine\\ShellEx\\IconHandler = {G}\nCLSID\\{G}\\x",
       {},
       {},
       {},
       {},
       {.is64Bit = false}},
  };
  CheckClasses<TRCPFileTypes>(rows, kFiles);
}

TEST(FileTypes, Faults) {
  ClassRow row{"faults",
               R"(.txt = txtfile
    txtfile\shell\open\command = C:\x\here.exe
    txtfile\ShellEx\IconHandler = {G}
    txtfile\ShellEx\ContextMenuHandlers\{G}
    txtfile\DefaultIcon = C:\x\here.exe,1
    U\mine\CLSID = {G}
    .n : x = y
    .g = goner
    Applications\x.exe\shell\open\command = C:\gone.exe
    SystemFileAssociations\.z\shell
    SystemFileAssociations\.y : a = b
    CLSID\{G}\x
    HKEY_USERS\S-1-5-21-1-2-3-1001\Software\Microsoft\Windows\CurrentVersion\Explorer\FileExts\.d\x : a = b)",
               {"1|caption:x.exe|existingkey:32:HKCR\\Applications\\x.exe\\shell\\open\\command"
                "|missingfile:C:\\gone.exe",
                "2|existingkey:32:HKCR\\.g|missingkey:32:HKCR\\goner|caption:.G-Datei (*.g)"}};
  CheckFaults<TRCPFileTypes>(AsCase(row, kFiles));
}

TEST(FileTypes, Captions) {
  World world(Classes(R"(.a = at
      at =  Text 
      at\shell
      .b = bt
      bt\shell\a
      .c = ct
      ct =  Text 
      ct\shell\a
      .d = dt
      dt = Text
      dt : FriendlyTypeName = @C:\x\here.exe,-7
      dt\shell\a
      .e = et
      et = Text
      et : FriendlyTypeName = Plain
      et\shell\a
      *\shell\a
      Unknown\shell\a
      k =  Key 
      k\shell\a)"),
              kFiles);
  world.Windows().resources.strings[u"C:\\x\\here.exe"][7] = u"Seven";
  world.Run<TRCPFileTypes>();
  EXPECT_EQ(world.Captions(),
            (Lines{"at", "bt (*.b)", "Text (*.c)", "Seven", "Text (*.e)", "* (Alle Dateien)",
                   " Key ", "Unknown (Alle Dateien unbekannten Typs)"}));
}

TEST(FileTypes, ChecksThatNoScanMakes) {
  World world(
      Classes("a : Extension = b\nb : Extension = c\nb : CLSID = {GONE}\n"
              "a : CLSID = {G}\nCLSID\\{G}\\x"));
  auto& plugin = world.Create<TRCPFileTypes>();
  const classes::TCaption caption(u"C");
  for (const char16_t* key : {u"a", u"b"}) {
    plugin.Check_Extension(key, caption);
    plugin.Check_CLSID({key, caption, {}}, false);
  }
  EXPECT_EQ(world.Problems(), Full({"11|existingkey:32:HKCR\\b|caption:C",
                                    "3|existingkey:32:HKCR\\b\\CLSID|caption:C|missingkey:32:"
                                    "HKCR\\CLSID\\{GONE}"}));
}

// "C" is the classes root, "U" the user's.
TEST(FileTypes, CleansByShape) {
  const struct {
    std::int32_t kind;
    std::string key;
    std::string deleted = {};
  } rows[] = {{1, "C\\a\\b\\c"},
              {1, "U\\a\\b\\c\\d"},
              // Below any root by design.
              {1, "U\\a\\b\\c\\d\\e", "U\\a\\b\\c\\d\\e"},
              {5, "U\\a\\b\\c\\d", "U\\a\\b\\c\\d"},
              {5, "U\\a\\b\\c"},
              {2, "C\\a\\b"},
              {3, "C\\a\\b"},
              {3, "C\\a\\b\\c\\clsid"},
              {3, "C\\a\\b\\c\\d\\clsid", "C\\a\\b\\c\\d"},
              {6, "C\\a\\b\\c\\d\\clsid"},
              {4, "C\\a\\b"},
              {8, "C\\a\\b"},
              {8, "C"},
              {9, "C\\a"},
              {10, "U\\a\\b"},
              {11, "C\\a\\b\\c\\d", "C\\a\\b\\c\\d"},
              {12, "U\\a\\b", "U\\a\\b"}};
  for (const auto& row : rows) {
    World world(
        Classes("a : x = y\na\\b\\c : x = y\na\\b\\c\\d\\clsid\n"
                "HKEY_USERS\\S-1-5-21-1-2-3-1001\\a\\b\\c\\d\\e"));
    TSweepError error;
    error.ErrorType = row.kind;
    const std::string root = row.key[0] == 'C' ? "HKEY_CLASSES_ROOT" : "HKEY_CURRENT_USER";
    error.Data = {FromUtf8("existingkey:32:" + root + row.key.substr(1))};
    EXPECT_TRUE(world.Create<TRCPFileTypes>().CleanError(error));
    const std::string shown = ReplaceAll("delete key " + row.deleted, " U", " HKCU");
    EXPECT_EQ(world.Journal(), row.deleted.empty() ? Lines() : Full({shown})) << row.kind;
    EXPECT_FALSE(ShouldReSearch || ForceRegDelete);
  }
}

}  // namespace
}  // namespace scrubwell::test
