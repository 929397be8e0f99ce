#include <gtest/gtest.h>

#include "plugins/filetypes/Rcp_filetypes.h"
#include "registry/Stringhelper.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const char* const kFiles = "C:\\x\\here.exe";

TEST(FileTypes, ExtensionsAndTypes) {
  CheckClasses<TRCPFileTypes>(R"(
      # healthy
      .txt = txtfile ; .log = TXTFILE ; txtfile = Text
      txtfile\shell\a\command = "C:\x\here.exe" "%1" ; txtfile\shell\e\DropTarget
      txtfile\shell\f\command : DelegateExecute = {G} ; txtfile\shell\f\ddeexec = [open]
      txtfile\shell\g\command = D:\x.exe ; txtfile\DefaultIcon = "C:\x\here.exe",-3
      .number = dword:1 ; AppX1\ShellEx\IconHandler = dword:1 ; Big\DefaultIcon = dword:1
      Big\CLSID = dword:1 ; AppX1\DefaultIcon = @{App_1.0?ms-resource://App/Files/x.png}
      AppX1\shell\open\command : DelegateExecute = {G} ; .a = AppX1 ; .own = gone ; .own\CLSID = {G}
      .que ; .x = autocad.gone ; .named : PerceivedType = text ; NTI-Anything
      Wrong\DefaultIcon = %1 ; Type\CLSID = {GONE}
      Big\ShellEx\{F9DB5320-233e-11D1-9F84-707F02C10627} ; Big\ShellEx\ContextMenuHandlers\{G}
      Big\ShellEx\ExtShellFolderViews\{V}
      HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Microsoft\Windows\CurrentVersion\ExtShellViews\{V}
      CLSID\{G}\x
      + C:\x\here.exe
      # missing type; the extension goes
      .xyz = no.such.type
      ? 2{k32}.xyz{m32}no.such.type{c}.XYZ-Datei (*.xyz)
      ! {-C}.xyz
      # empty keys (!)
      .e ; .e2 = {} ; EmptyType ; Named : x = y
      ? 8{k32}.e{c}.E-Datei (*.e) ; 8{k32}.e2{c}.E2-Datei (*.e2) ; 8{k32}EmptyType{c}EmptyType
      ! {-C}.e ; {-C}.e2 ; {-C}EmptyType
      # a type of two extensions is checked once, and goes when its verb was all (!)
      .tx1 = TxtFile ; .txt = txtfile ; txtfile\shell\open\command = C:\gone.exe %1
      ? 1{c}TxtFile (*.tx1){k32}TxtFile\shell\open\command{f}C:\gone.exe %1
      ! {-C}TxtFile\shell\open\command ; {-C}TxtFile\shell\open ; {-C}TxtFile\shell ; {-C}TxtFile
      = 2{k32}.tx1{m32}TxtFile{c}.TX1-Datei (*.tx1) ; 2{k32}.txt{m32}txtfile{c}.TXT-Datei (*.txt)
      # a type that holds more stays
      .txt = txtfile ; txtfile =  Text {} ; txtfile\shell\open\command = C:\gone.exe %1
      ? 1{c}Text (*.txt){k32}txtfile\shell\open\command{f}C:\gone.exe %1
      ! {-C}txtfile\shell\open\command ; {-C}txtfile\shell\open ; {-C}txtfile\shell
      # parts of an extension's own key
      .p\shell ; .p\ShellEx\MayChangeDefaultMenu = {} ; .p\ShellEx\{GONE}
      .p\ShellEx\PropertySheetHandlers\word ; .p\ShellEx\ExtShellFolderViews\{GONE}
      .p\DefaultIcon =  {} ; .q\shell\open ; .q\DefaultIcon = noicon,1
      ? 10{k32}.p\shell{c}.p
      ? 3{k32}.p\ShellEx\ExtShellFolderViews\{GONE}{c}.P-Datei (*.p){m32}CLSID\{GONE}
      ? 6{k32}.p\ShellEx\MayChangeDefaultMenu{c}.P-Datei (*.p)
      ? 6{k32}.p\ShellEx\PropertySheetHandlers\word{c}.P-Datei (*.p)
      ? 3{k32}.p\ShellEx\{GONE}{c}.P-Datei (*.p){m32}CLSID\{GONE}
      ? 5{k32}.q\shell\open{c}.Q-Datei (*.q) ; 4{k32}.q\DefaultIcon{c}.Q-Datei (*.q){f}noicon,1
      ! {-C}.p\shell ; {-C}.p\ShellEx\ExtShellFolderViews\{GONE}
      ! {-C}.p\ShellEx\ExtShellFolderViews ; {-C}.p\ShellEx\MayChangeDefaultMenu
      ! {-C}.p\ShellEx\PropertySheetHandlers\word ; {-C}.p\ShellEx\PropertySheetHandlers
      ! {-C}.p\ShellEx\{GONE} ; {-C}.p\ShellEx ; {-C}.q\shell\open ; {-C}.q\shell
      ! {-C}.q\DefaultIcon ; {-C}.q
      # a single handler, an icon, a user's class take their types along (!)
      A\ShellEx\IconHandler = {GONE} ; B\DefaultIcon ; U\C\CLSID = word
      ? 3{k32}A\ShellEx\IconHandler{c}A{m32}CLSID\{GONE} ; 7{k32}B\DefaultIcon{c}B
      ? 3{k32}C\CLSID{c}C{m32}CLSID\word
      ! {-C}A\ShellEx\IconHandler ; {-C}A\ShellEx ; {-C}A ; {-C}B\DefaultIcon ; {-C}B
      ! delete key HKCU\Software\Classes\C\CLSID ; delete key HKCU\Software\Classes\C)");
}

TEST(FileTypes, OtherPlaces) {
  CheckClasses<TRCPFileTypes>(
      R"(
      # an application's missing program: the command alone goes, and the verb is next
      Applications\x.exe\shell\open\command = C:\gone.exe ; Applications\y.exe\shell
      Applications\z.exe\shell\a ; Applications\z.exe\DefaultIcon = C:\gone.ico
      ? 1{c}x.exe{k32}Applications\x.exe\shell\open\command{f}C:\gone.exe
      ? 10{k32}Applications\y.exe\shell{c}Applications\y.exe
      ? 5{k32}Applications\z.exe\shell\a{c}z.exe
      ! {-C}Applications\x.exe\shell\open\command ; {-C}Applications\y.exe\shell
      ! {-C}Applications\z.exe\shell\a
      = 5{k32}Applications\x.exe\shell\open{c}x.exe
      = 10{k32}Applications\z.exe\shell{c}Applications\z.exe
      # associations with a default value at most
      SystemFileAssociations\.x = d ; SystemFileAssociations\.y : a = b
      SystemFileAssociations\.z\shell
      ? 12{k32}SystemFileAssociations\.x{c}SystemFileAssociations\.x
      ! {-C}SystemFileAssociations\.x
      # Explorer's extensions, two levels deep
      {X}.a ; {X}.b = d ; {X}.c\OpenWithList\deep : x = y ; {X}.d\OpenWithList : a = x.exe
      {X}.e : Application = x ; {X}word
      ? 12|existingkey:32:HKEY_CURRENT_USER\{x}.a{c}{x}.a
      ? 12|existingkey:32:HKEY_CURRENT_USER\{x}.b{c}{x}.b
      ? 12|existingkey:32:HKEY_CURRENT_USER\{x}.c{c}{x}.c
      ! delete key HKCU\{x}.a ; delete key HKCU\{x}.b ; delete key HKCU\{x}.c
      # deletion overrides rights where no check asks for them (!)
      & deny-write HKLM\SOFTWARE\Classes\.no
      & deny-delete HKLM\SOFTWARE\Classes\.skip
      & deny-delete HKLM\SOFTWARE\Classes\EmptyType
      EmptyType
      ? 8{k32}.no{c}.NO-Datei (*.no) ; 8{k32}EmptyType{c}EmptyType
      ! {-C}.no ; {-C}EmptyType
      # one view on a 32-bit system
      & 32-bit
      Type\CLSID = {GONE} ; U\Mine\ShellEx\IconHandler = {G} ; CLSID\{G}\x)",
      {{"{X}", "HKEY_USERS\\S-1-5-21-1-2-3-1001\\{x}"},
       {"{x}", "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\"}});
}

TEST(FileTypes, Faults) {
  CheckFaults<TRCPFileTypes>(ReadCases(R"(# faults
      .txt = txtfile ; txtfile\shell\open\command = C:\x\here.exe
      txtfile\ShellEx\IconHandler = {G} ; txtfile\ShellEx\ContextMenuHandlers\{G}
      txtfile\DefaultIcon = C:\x\here.exe,1 ; U\mine\CLSID = {G} ; .n : x = y ; .g = goner
      Applications\x.exe\shell\open\command = C:\gone.exe ; SystemFileAssociations\.z\shell
      SystemFileAssociations\.y : a = b ; CLSID\{G}\x
      HKEY_USERS\S-1-5-21-1-2-3-1001\Software\Microsoft\Windows\CurrentVersion\Explorer\FileExts\.d\x : a = b
      + C:\x\here.exe
      ? 1{c}x.exe{k32}Applications\x.exe\shell\open\command{f}C:\gone.exe
      ? 2{k32}.g{m32}goner{c}.G-Datei (*.g))",
                                       kClassNames)[0]);
}

TEST(FileTypes, Captions) {
  World world(Classes(R"(.a = at
      at =  Text 
      at\shell ; .b = bt ; bt\shell\a ; .c = ct ; ct =  Text 
      ct\shell\a ; .d = dt ; dt = Text ; : FriendlyTypeName = @C:\x\here.exe,-7 ; dt\shell\a
      .e = et ; et = Text ; : FriendlyTypeName = Plain ; et\shell\a ; *\shell\a ; Unknown\shell\a
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
  EXPECT_EQ(world.Problems(), ReadCases(R"(# both
      ? 11{k32}b{c}C ; 3{k32}b\CLSID{c}C{m32}CLSID\{GONE})",
                                        kClassNames)[0]
                                  .problems);
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
    const std::string place = row.key[0] == 'C' ? "HKLM\\SOFTWARE\\Classes" : "HKCU";
    const Lines deleted = {"delete key " + place + row.deleted.substr(row.deleted.empty() ? 0 : 1)};
    EXPECT_EQ(world.Journal(), row.deleted.empty() ? Lines() : deleted) << row.kind;
    EXPECT_FALSE(ShouldReSearch || ForceRegDelete);
  }
}

}  // namespace
}  // namespace scrubwell::test
