#include <gtest/gtest.h>

#include <algorithm>

#include "plugins/com/Rcp_activexcom.h"
#include "support/class_text.h"

namespace scrubwell::test {
namespace {

const char* const kFiles = "C:\\x\\here.dll\nC:\\x\\folder\\\n";

const MemoryOptions kBits32{.is64Bit = false};

TEST(ActiveXCOM, Servers) {
  const std::string a = "32:HKCR\\CLSID\\{A}", gone = "C:\\x\\gone.dll";
  const auto missing = [](const std::string& server, const std::string& key,
                          const std::string& file) {
    return "1|servertype:" + server + "|existingkey:" + key + "\\" + server +
           "|caption:{A}|missingfile:" + file;
  };
  const ClassRow rows[] = {
      {"healthy forms of a server",
       R"(W\CLSID\{A}\InprocServer32 = mscoree.dll
         W\CLSID\{B}\InprocServer32 = %SystemRoot%\system32\only32.dll
         W\CLSID\{F}\InprocServer32 = C:\x\folder\
         W\CLSID\{H}\InprocServer32 = D:\x.dll
         W\CLSID\{I}\InprocServer32 = nowhere.dll
         W\CLSID\{L}\InprocServer32 : ThreadingModel = Both
         W\CLSID\{N}\InprocServer32 = dword:1
         W\CLSID\Stray\InprocServer32 = C:\x\gone.dll
         W\CLSID\{344FFE45-abad-4bd0-b655-f1f7f22b0817}\InprocServer32 = C:\x\gone.dll
         W\CLSID\{M}\InprocHandler32 = C:\x\gone.dll)",
       {},
       {},
       {},
       "C:\\Windows\\SysWOW64\\only32.dll\nC:\\x\\folder\\\ndrive D: removable\n"},
      {"each server for itself; the class goes with the last (!)",
       "W\\CLSID\\{A}\\InprocServer32 = C:\\x\\gone.dll\nW\\CLSID\\{A}\\LocalServer32 = C:\\no.exe",
       {missing("InprocServer32", a, gone), missing("LocalServer32", a, "C:\\no.exe")},
       {"delete key W\\CLSID\\{A}\\InprocServer32", "delete key W\\CLSID\\{A}\\LocalServer32",
        "delete key W\\CLSID\\{A}"}},
      {"a server that is left keeps the class",
       "W\\CLSID\\{A}\\InprocServer = C:\\x\\gone.dll\nW\\CLSID\\{A}\\LocalServer = x.exe",
       {missing("InprocServer", a, gone)},
       {"delete key W\\CLSID\\{A}\\InprocServer"}},
      {"so does an AppID",
       "W\\CLSID\\{A} : AppId = {X}\nAppID\\{X}\nW\\CLSID\\{A}\\InprocServer32 = C:\\x\\gone.dll",
       {missing("InprocServer32", a, gone)},
       {"delete key W\\CLSID\\{A}\\InprocServer32"}},
      {"empty server; a named value is content (!)",
       "W\\CLSID\\{A}\\LocalServer32\nW\\CLSID\\{B}\\LocalServer32 : x = y",
       {"23|key:LocalServer32|existingkey:" + a + "\\LocalServer32|caption:{A}"},
       {"delete key W\\CLSID\\{A}\\LocalServer32", "delete key W\\CLSID\\{A}"}},
      {"the other view's entry works, or can't be judged",
       R"(W\CLSID\{A}\InprocServer32 = C:\x\gone.dll
          CLSID\{A}\InprocServer32 = C:\x\here.dll
          W\CLSID\{B}\InprocServer32 = C:\x\gone.dll
          CLSID\{B}\InprocServer32 : x = y)"},
      {"the other view's is as broken, or the same (!)",
       R"(W\CLSID\{A}\InprocServer32 = C:\x\gone.dll
          CLSID\{A}\InprocServer32 = C:\x\lost.dll)",
       {missing("InprocServer32", a, gone),
        missing("InprocServer32", "64:HKCR\\CLSID\\{A}", "C:\\x\\lost.dll")},
       {"delete key W\\CLSID\\{A}\\InprocServer32", "delete key W\\CLSID\\{A}",
        "delete key C\\CLSID\\{A}\\InprocServer32", "delete key C\\CLSID\\{A}"}},
      {"the user's class; the machine's of the same name stays (!)",
       R"(U\Wow6432Node\CLSID\{A}\InprocServer32 = C:\x\gone.dll
          W\CLSID\{A} = Machine)",
       {"1|servertype:InprocServer32|existingkey:" + a +
        "\\InprocServer32|caption:Machine|missingfile:C:\\x\\gone.dll"},
       {"delete key HKCU\\Software\\Classes\\Wow6432Node\\CLSID\\{A}\\InprocServer32",
        "delete key HKCU\\Software\\Classes\\Wow6432Node\\CLSID\\{A}"}},
      {"one view on a 32-bit system (!)",
       "CLSID\\{A}\\InprocServer32 = C:\\x\\gone.dll",
       {missing("InprocServer32", a, gone)},
       {"delete key C\\CLSID\\{A}\\InprocServer32", "delete key C\\CLSID\\{A}"},
       {},
       "",
       kBits32},
      {"what may not be deleted is not shown",
       "",
       {},
       {},
       {},
       "",
       {},
       [](World& world) {
         ASSERT_EQ(world.Backend().AddRegistry(
                       Classes("W\\CLSID\\{A}\\InprocServer32 = C:\\x\\gone.dll")),
                   "");
         world.Backend().DenyDelete(
             u"HKLM\\SOFTWARE\\Classes\\Wow6432Node\\CLSID\\{A}\\InprocServer32");
       }},
  };
  CheckClasses<TRCPActiveXCOM>(rows, kFiles);
}

const char* const kClassParts = R"(W\CLSID\{A} = Class A
  W\CLSID\{A} : AppID = {X}
  W\CLSID\{A}\ProgID
  W\CLSID\{A}\VersionIndependentProgID
  W\CLSID\{A}\shell\open\command = C:\x\gone.exe "%1"
  W\CLSID\{A}\shell\empty
  W\CLSID\{A}\ShellEx\ContextMenuHandlers\named
  W\CLSID\{A}\ShellEx\ContextMenuHandlers\other = {GONE}
  W\CLSID\{A}\ShellEx\IconHandler = {GONE}
  W\CLSID\{A}\ShellEx\DropHandler
  W\CLSID\{A}\DefaultIcon = C:\Program Files\A,B\x.dll,3
  W\CLSID\{A}\TypeLib =  {GONE}
  W\CLSID\{A}\ToolboxBitmap32 = gone.ocx, 1
  W\CLSID\{A}\PersistentHandler = word
  W\CLSID\{A}\AutoConvertTo = {GONE}
  W\CLSID\{A}\TreatAs = {GONE}
  W\CLSID\{B}\LocalServer = x.exe
  W\CLSID\{B}\DefaultIcon : x = y
  W\CLSID\{B}\ToolboxBitmap32
  W\CLSID\{B}\AutoConvertTo
  W\CLSID\{B}\TreatAs)";

ClassRow ClassPartsRow() {
  const std::string a = "existingkey:32:HKCR\\CLSID\\{A}\\", b = "existingkey:32:HKCR\\CLSID\\{B}";
  const std::string name = "|caption:Class A", gone = "|missingkey:HKCR\\CLSID\\{GONE}";
  const std::string w = "delete key W\\CLSID\\{A}\\", x = "delete key W\\CLSID\\{B}\\";
  const Lines replaced = {"3|" + a + "AutoConvertTo" + name + "|missingkey:32:HKCR\\CLSID\\{GONE}",
                          "3|" + a + "TreatAs" + name + "|missingkey:32:HKCR\\CLSID\\{GONE}"};
  return {
      "every part of a class (!)",
      kClassParts,
      {"18|" + a + "ProgID" + name, "18|" + a + "VersionIndependentProgID" + name,
       "22|" + a + "shell\\empty" + name,
       "2" + name + "|" + a + "shell\\open\\command|missingfile:C:\\x\\gone.exe \"%1\"",
       "20|" + a + "ShellEx\\ContextMenuHandlers\\named" + name,
       "3|" + a + "ShellEx\\ContextMenuHandlers\\other" + name + gone,
       "20|" + a + "ShellEx\\DropHandler" + name, "3|" + a + "ShellEx\\IconHandler" + name + gone,
       "4|" + a + "DefaultIcon" + name + "|missingfile:C:\\Program Files\\A,B\\x.dll,3",
       "5|" + a + "TypeLib" + name + "|missingkey:HKCR\\TypeLib\\{GONE}",
       "9" + name +
           "|existingkey:32:HKCR\\CLSID\\{A}|existingvalue:AppID"
           "|missingkey:32:HKCR\\AppID\\{X}",
       "6" + name + "|" + a + "ToolboxBitmap32|missingfile:gone.ocx",
       "8" + name + "|" + a + "PersistentHandler|missingkey:32:HKCR\\CLSID\\word", replaced[0],
       replaced[1], "21|" + b + "\\DefaultIcon|caption:{B}",
       "23|caption:{B}|" + b + "\\ToolboxBitmap32|key:ToolboxBitmap32",
       "23|caption:{B}|" + b + "\\AutoConvertTo|key:AutoConvertTo",
       "23|caption:{B}|" + b + "\\TreatAs|key:TreatAs"},
      {w + "ProgID",
       w + "VersionIndependentProgID",
       w + "shell\\empty",
       w + "shell\\open\\command",
       w + "shell\\open",
       w + "shell",
       w + "ShellEx\\ContextMenuHandlers\\named",
       w + "ShellEx\\ContextMenuHandlers\\other",
       w + "ShellEx\\ContextMenuHandlers",
       w + "ShellEx\\DropHandler",
       w + "ShellEx\\IconHandler",
       w + "ShellEx",
       w + "DefaultIcon",
       w + "TypeLib",
       "delete value W\\CLSID\\{A} \"AppID\"",
       w + "ToolboxBitmap32",
       "delete key W\\CLSID\\{A}",
       x + "DefaultIcon",
       x + "ToolboxBitmap32",
       x + "AutoConvertTo",
       x + "TreatAs"}};
}

TEST(ActiveXCOM, ClassParts) {
  const std::string treatAs =
      "3|existingkey:32:HKCR\\CLSID\\{A}\\TreatAs|caption:{A}|missingkey:32:HKCR\\CLSID\\{GONE}";
  const std::string handlers = "existingkey:32:HKCR\\CLSID\\{A}\\ShellEx\\";
  const ClassRow rows[] = {
      {"healthy parts of a class",
       R"(W\CLSID\{A} : AppID = {X}
         AppID\{X}
         W\CLSID\{A}\ProgID = x
         W\CLSID\{A}\shell\c\command = "C:\x\gone.exe"
         W\CLSID\{A}\shell\c\command : command = installer's mark
         W\CLSID\{A}\shell\d\DropTarget
         W\CLSID\{A}\shell\e\command : DelegateExecute = {G}
         W\CLSID\{A}\ShellEx\MayChangeDefaultMenu
         W\CLSID\{A}\ShellEx\ExtShellFolderViews\{GONE}
         W\CLSID\{A}\ShellEx\ContextMenuHandlers\x = {F9DB5320-233e-11D1-9F84-707F02C10627}
         W\CLSID\{A}\ShellEx\PropertySheetHandlers\{B}
         W\CLSID\{A}\ShellEx\{GONE} : x = y
         W\CLSID\{A}\ShellEx\{GONE} = {B}
         W\CLSID\{A}\ShellEx\word = word
         W\CLSID\{A}\DefaultIcon = %1
         W\CLSID\{D}\DefaultIcon = dword:1
         W\CLSID\{D}\ToolboxBitmap32 = dword:1
         W\CLSID\{D}\TypeLib = dword:1
         W\CLSID\{D}\shell\a\command = dword:1
         W\CLSID\{A}\TypeLib = {05f6b36c-7630-4A4D-945E-80C59DC2C832}
         W\CLSID\{A}\ToolboxBitmap32 = C:\x\here.dll, 101
         W\CLSID\{A}\PersistentHandler : x = y
         W\CLSID\{A}\TreatAs = word
         W\CLSID\{A}\AutoConvertTo = {B}
         CLSID\{B}\DefaultIcon = x.dll,-3
         W\CLSID\{C} : AppID = {887839a0-0624-4af0-B9A5-E3FE3B831E20}
         CLSID\{C}\DefaultIcon
         W\CLSID\{C}\DefaultIcon = C:\x\gone.dll
         CLSID\{C}\ProgID
         W\CLSID\{C}\ProgID = x
         CLSID\{C}\TypeLib = {GONE}
         W\CLSID\{C}\TypeLib)"},
      ClassPartsRow(),
      {"a missing replacement stays by design",
       "W\\CLSID\\{A}\\TreatAs = {GONE}",
       {treatAs},
       {},
       {treatAs}},
      {"a handler takes its empty parents along, the class too (!)",
       "W\\CLSID\\{A}\\ShellEx\\DragDropHandlers\\{GONE}",
       {"3|" + handlers + "DragDropHandlers\\{GONE}|caption:{A}|missingkey:HKCR\\CLSID\\{GONE}"},
       {"delete key W\\CLSID\\{A}\\ShellEx\\DragDropHandlers\\{GONE}",
        "delete key W\\CLSID\\{A}\\ShellEx\\DragDropHandlers", "delete key W\\CLSID\\{A}\\ShellEx",
        "delete key W\\CLSID\\{A}"}},
      {"a single handler: two parents, the class being one of them (!)",
       "W\\CLSID\\{A}\\ShellEx\\{GONE}",
       {"3|" + handlers + "{GONE}|caption:{A}|missingkey:HKCR\\CLSID\\{GONE}"},
       {"delete key W\\CLSID\\{A}\\ShellEx\\{GONE}", "delete key W\\CLSID\\{A}\\ShellEx",
        "delete key W\\CLSID\\{A}"}},
      {"a verb's removal reaches the class (!)",
       "W\\CLSID\\{A}\\shell\\open\\command = C:\\no.exe",
       {"2|caption:{A}|existingkey:32:HKCR\\CLSID\\{A}\\shell\\open\\command"
        "|missingfile:C:\\no.exe"},
       {"delete key W\\CLSID\\{A}\\shell\\open\\command", "delete key W\\CLSID\\{A}\\shell\\open",
        "delete key W\\CLSID\\{A}\\shell", "delete key W\\CLSID\\{A}"}},
      {"views that differ in an earlier subkey alone count as the same (!)",
       R"(W\CLSID\{A}\DefaultIcon\1 = x
          CLSID\{A}\DefaultIcon\1 = y
          W\CLSID\{A}\DefaultIcon\2 = z
          CLSID\{A}\DefaultIcon\2 = Z)",
       {"21|existingkey:32:HKCR\\CLSID\\{A}\\DefaultIcon|caption:{A}",
        "21|existingkey:64:HKCR\\CLSID\\{A}\\DefaultIcon|caption:{A}"},
       {"delete key W\\CLSID\\{A}\\DefaultIcon", "delete key W\\CLSID\\{A}",
        "delete key C\\CLSID\\{A}\\DefaultIcon", "delete key C\\CLSID\\{A}"}},
  };
  CheckClasses<TRCPActiveXCOM>(rows, kFiles);
}

TEST(ActiveXCOM, InterfacesAndTypeLibs) {
  const std::string i = "existingkey:32:HKCR\\Interface\\{I}\\", t = "HKCR\\TypeLib\\{T}\\1.0\\";
  const ClassRow rows[] = {
      {"healthy", R"(W\Interface\{I} = IThing
         W\Interface\{I}\ProxyStubClsid = {00000320-0000-0000-c000-000000000046}
         W\Interface\{I}\ProxyStubClsid32 = {B}
         W\Interface\{I}\BaseInterface = iUnknown
         W\Interface\{I}\SynchronousInterface
         W\Interface\{I}\TypeLib =  {T} 
         W\Interface\{I}\OLEViewerIViewerCLSID = {F9DB5320-233E-11D1-9F84-707F02C10628}
         CLSID\{F9DB5320-233E-11D1-9F84-707F02C10628}
         CLSID\{B}
         W\Interface\{a648e88e-6C78-4373-A64E-665C05B4075B}\TypeLib = {GONE}
         W\Interface\{5984FFE0-28D4-11CF-AE66-08002B2E1262}\TypeLib = {GONE}
         W\Interface\Stray\TypeLib = {GONE}
         TypeLib\{T}\1.0\0\win32 = C:\x\here.dll\2
         TypeLib\{T}\1.0\0\win64 = C:\x\gone.dll
         TypeLib\{T}\1.0\0c\win32 = C:\x\gone.dll
         TypeLib\{T}\1.0\1033\win32 = C:\x\gone.dll
         TypeLib\{T}\1.0\FLAGS = 0
         TypeLib\{T}\1.0\HELPDIR = [?]x
         TypeLib\{T}\1.1\HELPDIR = C:\x\folder\
         TypeLib\{T}\1.2\HELPDIR : x = y
         TypeLib\{T}\1.3\409\win32 : x = y
         TypeLib\{T}\1.4\0\win32 = gone.tlb
         TypeLib\{T}\1.5\0\win32 = dword:1
         TypeLib\{T}\1.5\HELPDIR = dword:1
         TypeLib\{5984FFE0-28D4-11CF-AE66-08002B2E1262}\1.0\0\win32 = C:\x\gone.dll)"},
      {"references of an interface",
       R"(W\Interface\{I} = IThing
         W\Interface\{I}\BaseInterface = word
         W\Interface\{I}\OLEViewerIViewerCLSID = {GONE}
         W\Interface\{I}\ProxyStubClsid32 = {GONE}
         W\Interface\{I}\TypeLib = {GONE})",
       {"10|stubtype:ProxyStubClsid32|" + i +
            "ProxyStubClsid32|caption:IThing|missingkey:HKCR\\CLSID\\{GONE}",
        "10|stubtype:OLEViewerIViewerCLSID|" + i +
            "OLEViewerIViewerCLSID|caption:IThing|missingkey:HKCR\\CLSID\\{GONE}",
        "11|" + i + "BaseInterface|caption:IThing|missingkey:HKCR\\Interface\\word",
        "12|" + i + "TypeLib|caption:IThing|missingkey:HKCR\\TypeLib\\{GONE}",
        "12|" + i + "OLEViewerIViewerCLSID|caption:IThing|missingkey:HKCR\\CLSID\\{GONE}"},
       {"delete key W\\Interface\\{I}\\ProxyStubClsid32",
        "delete key W\\Interface\\{I}\\OLEViewerIViewerCLSID",
        "delete key W\\Interface\\{I}\\BaseInterface", "delete key W\\Interface\\{I}\\TypeLib"}},
      {"a library shared by both views is seen in each; its removal takes all of it",
       R"(TypeLib\{T}\1.0 =  Lib 
          TypeLib\{T}\1.0\409\win32 = C:\x\gone.tlb
          TypeLib\{T}\1.0\FLAGS = 0
          TypeLib\{T}\1.0\HELPDIR = C:\x\no folder)",
       {"13|existingkey:32:" + t +
            "409\\win32|subkey:1.0\\409\\win32|caption:Lib|missingfile:C:\\x\\gone.tlb",
        "15|existingkey:32:" + t +
            "HELPDIR|subkey:1.0\\HELPDIR|caption:Lib|missingfile:C:\\x\\no folder",
        "13|existingkey:64:" + t +
            "409\\win32|subkey:1.0\\409\\win32|caption:Lib|missingfile:C:\\x\\gone.tlb",
        "15|existingkey:64:" + t +
            "HELPDIR|subkey:1.0\\HELPDIR|caption:Lib|missingfile:C:\\x\\no folder"},
       {"delete key C\\TypeLib\\{T}\\1.0\\409\\win32", "delete key C\\TypeLib\\{T}\\1.0\\409",
        "delete key C\\TypeLib\\{T}\\1.0", "delete key C\\TypeLib\\{T}"}},
      {"empty entries; another language keeps the version",
       R"(TypeLib\{T}\1.0\0\win32
          TypeLib\{T}\1.0\0\win64 = x
          TypeLib\{T}\1.0\9\win32
          TypeLib\{T}\1.0\helpdir)",
       {"14|existingkey:32:" + t + "0\\win32|subkey:1.0\\0\\win32|caption:{T}",
        "14|existingkey:32:" + t + "9\\win32|subkey:1.0\\9\\win32|caption:{T}",
        "16|existingkey:32:" + t + "HELPDIR|subkey:1.0\\HELPDIR|caption:{T}"},
       {"delete key C\\TypeLib\\{T}\\1.0\\0\\win32", "delete key C\\TypeLib\\{T}\\1.0\\9\\win32",
        "delete key C\\TypeLib\\{T}\\1.0\\9", "delete key C\\TypeLib\\{T}\\1.0\\HELPDIR"},
       {},
       "",
       kBits32},
  };
  CheckClasses<TRCPActiveXCOM>(rows, kFiles);
}

TEST(ActiveXCOM, Faults) {
  ClassRow row = ClassPartsRow();
  row.classes = ReplaceAll(row.classes, "{A} = Class A", "{A}") + R"(
    W\Interface\{I}\ProxyStubClsid32 = {B}
    W\Interface\{I}\BaseInterface = {I}
    W\CLSID\{C}\InprocServer32 = C:\x\here.dll
    W\CLSID\{C}\TypeLib = {T}
    TypeLib\{T}\1.0\0\win32 = C:\x\here.dll
    TypeLib\{T}\1.0\HELPDIR = C:\x\folder)";
  for (std::string& line : row.problems) line = ReplaceAll(line, "Class A", "{A}");
  CheckFaults<TRCPActiveXCOM>(AsCase(row, kFiles));
}

// What each class has to show for itself, the first one nothing.
TEST(ActiveXCOM, Captions) {
  World world(Classes(R"(W\CLSID\{A}\LocalServer
      W\CLSID\{B} =  Given 
      W\CLSID\{B}\LocalServer
      W\CLSID\{C} = Given
      W\CLSID\{C} : LocalizedString = Plain
      W\CLSID\{C}\LocalServer
      W\CLSID\{D} = Given
      W\CLSID\{D} : LocalizedString = @C:\x\here.dll,-8
      W\CLSID\{D}\LocalServer
      W\CLSID\{E} = Given
      W\CLSID\{E} : FriendlyTypeName = Plain
      W\CLSID\{E}\LocalServer
      W\CLSID\{F} : LocalizedString = Plain
      W\CLSID\{F} : FriendlyTypeName = @C:\x\here.dll,-7
      W\CLSID\{F}\LocalServer)"),
              "C:\\x\\here.dll");
  world.Windows().resources.strings[u"C:\\x\\here.dll"][7] = u"Seven";
  world.Run<TRCPActiveXCOM>();
  EXPECT_EQ(world.Captions(), (Lines{"{A}", " Given ", "Plain", "Given", "Given", "Seven"}));
}

TEST(ActiveXCOM, StopsBetweenTheListsThatItReads) {
  World world(Classes("W\\CLSID\\{A}\nCLSID\\{B}\nTypeLib\\{T}\\1.0"));
  auto& plugin = world.Create<TRCPActiveXCOM>();
  StopSearch = true;
  plugin.Init();
  EXPECT_TRUE(plugin.FState == rcpUnknown && plugin.FScanItemCount == 0);
  EXPECT_EQ(world.Windows().system.pumped, 1);
  StopSearch = false;
  plugin.Init();
  EXPECT_EQ(world.Windows().system.pumped, 6) << "once after each list, in both views";
  EXPECT_EQ(plugin.FScanItemCount, 4) << "the type library is seen in both";
}

TEST(ActiveXCOM, CleansNothingOfAnotherShape) {
  World world(
      Classes("W\\CLSID\\{A}\\shell\\x\\other\nW\\CLSID\\{A}\\DefaultIcon\n"
              "W\\CLSID\\{A}\\TypeLib\nW\\CLSID\\{A}\\TreatAs\nTypeLib\\{A}\\1.0\\0"));
  auto& plugin = world.Create<TRCPActiveXCOM>();
  const std::pair<std::int32_t, UnicodeView> rows[] = {{1, u"CLSID\\{A}"},
                                                       {1, u"Interface\\{A}\\x"},
                                                       {2, u"CLSID\\{A}\\shell\\x\\other"},
                                                       {3, u"CLSID\\{A}\\TreatAs"},
                                                       {4, u"CLSID\\{A}\\TypeLib"},
                                                       {5, u"CLSID\\{A}\\DefaultIcon"},
                                                       {9, u"CLSID\\{A}\\x"},
                                                       {13, u"TypeLib\\{A}\\1.0\\0"},
                                                       {15, u"TypeLib\\{A}\\1.0\\0"},
                                                       {19, u"CLSID\\{A}\\x"},
                                                       {22, u"CLSID\\{A}\\shell"}};
  for (const auto& [kind, key] : rows) {
    TSweepError error;
    error.ErrorType = kind;
    error.Data = {UnicodeString(u"existingkey:32:HKEY_CLASSES_ROOT\\").append(key)};
    EXPECT_TRUE(plugin.CleanError(error));
    error.Data = {
        UnicodeString(u"existingkey:32:HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\").append(key)};
    EXPECT_TRUE(plugin.CleanError(error));
    EXPECT_EQ(world.Journal(), Lines()) << kind;
    EXPECT_FALSE(ShouldReSearch);
  }
}

}  // namespace
}  // namespace scrubwell::test
