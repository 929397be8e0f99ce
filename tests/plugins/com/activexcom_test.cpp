#include <gtest/gtest.h>

#include <algorithm>

#include "plugins/com/Rcp_activexcom.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

TEST(ActiveXCOM, Servers) {
  CheckClasses<TRCPActiveXCOM>(R"(
      # healthy forms of a server
      W\CLSID\{A}\InprocServer32 = mscoree.dll
      W\CLSID\{B}\InprocServer32 = %SystemRoot%\system32\only32.dll
      W\CLSID\{F}\InprocServer32 = C:\x\folder\ ; W\CLSID\{H}\InprocServer32 = D:\x.dll
      W\CLSID\{I}\InprocServer32 = nowhere.dll ; W\CLSID\{L}\InprocServer32 : ThreadingModel = Both
      W\CLSID\{N}\InprocServer32 = dword:1 ; W\CLSID\Stray\InprocServer32 = C:\x\gone.dll
      W\CLSID\{344FFE45-abad-4bd0-b655-f1f7f22b0817}\InprocServer32 = C:\x\gone.dll
      W\CLSID\{M}\InprocHandler32 = C:\x\gone.dll
      + C:\Windows\SysWOW64\only32.dll ; C:\x\folder\ ; drive D: removable
      # each server for itself; the class goes with the last (!)
      W\CLSID\{A}\InprocServer32 = C:\x\gone.dll ; W\CLSID\{A}\LocalServer32 = C:\no.exe
      ? 1|servertype:InprocServer32{k32}CLSID\{A}\InprocServer32{c}{A}{f}C:\x\gone.dll
      ? 1|servertype:LocalServer32{k32}CLSID\{A}\LocalServer32{c}{A}{f}C:\no.exe
      ! {-W}CLSID\{A}\InprocServer32 ; {-W}CLSID\{A}\LocalServer32 ; {-W}CLSID\{A}
      # a server that is left keeps the class
      W\CLSID\{A}\InprocServer = C:\x\gone.dll ; W\CLSID\{A}\LocalServer = x.exe
      ? 1|servertype:InprocServer{k32}CLSID\{A}\InprocServer{c}{A}{f}C:\x\gone.dll
      ! {-W}CLSID\{A}\InprocServer
      # so does an AppID
      W\CLSID\{A} : AppId = {X} ; AppID\{X} ; W\CLSID\{A}\InprocServer32 = C:\x\gone.dll
      ? 1|servertype:InprocServer32{k32}CLSID\{A}\InprocServer32{c}{A}{f}C:\x\gone.dll
      ! {-W}CLSID\{A}\InprocServer32
      # empty server; a named value is content (!)
      W\CLSID\{A}\LocalServer32 ; W\CLSID\{B}\LocalServer32 : x = y
      ? 23|key:LocalServer32{k32}CLSID\{A}\LocalServer32{c}{A}
      ! {-W}CLSID\{A}\LocalServer32 ; {-W}CLSID\{A}
      # the other view's entry works, or can't be judged
      W\CLSID\{A}\InprocServer32 = C:\x\gone.dll ; CLSID\{A}\InprocServer32 = C:\x\here.dll
      W\CLSID\{B}\InprocServer32 = C:\x\gone.dll ; CLSID\{B}\InprocServer32 : x = y
      + C:\x\here.dll
      # the other view's is as broken, or the same (!)
      W\CLSID\{A}\InprocServer32 = C:\x\gone.dll ; CLSID\{A}\InprocServer32 = C:\x\lost.dll
      ? 1|servertype:InprocServer32{k32}CLSID\{A}\InprocServer32{c}{A}{f}C:\x\gone.dll
      ? 1|servertype:InprocServer32{k64}CLSID\{A}\InprocServer32{c}{A}{f}C:\x\lost.dll
      ! {-W}CLSID\{A}\InprocServer32 ; {-W}CLSID\{A} ; {-C}CLSID\{A}\InprocServer32 ; {-C}CLSID\{A}
      # the user's class; the machine's of the same name stays (!)
      U\Wow6432Node\CLSID\{A}\InprocServer32 = C:\x\gone.dll ; W\CLSID\{A} = Machine
      ? 1|servertype:InprocServer32{k32}CLSID\{A}\InprocServer32{c}Machine{f}C:\x\gone.dll
      ! delete key HKCU\Software\Classes\Wow6432Node\CLSID\{A}\InprocServer32
      ! delete key HKCU\Software\Classes\Wow6432Node\CLSID\{A}
      # one view on a 32-bit system (!)
      & 32-bit
      CLSID\{A}\InprocServer32 = C:\x\gone.dll
      ? 1|servertype:InprocServer32{k32}CLSID\{A}\InprocServer32{c}{A}{f}C:\x\gone.dll
      ! {-C}CLSID\{A}\InprocServer32 ; {-C}CLSID\{A}
      # what may not be deleted is not shown
      & deny-delete HKLM\SOFTWARE\Classes\Wow6432Node\CLSID\{A}\InprocServer32
      W\CLSID\{A}\InprocServer32 = C:\x\gone.dll)");
}

const std::string kEveryPart = R"(
      # every part of a class (!)
      W\CLSID\{A} = Class A ; : AppID = {X} ; W\CLSID\{A}\ProgID
      W\CLSID\{A}\VersionIndependentProgID ; W\CLSID\{A}\shell\open\command = C:\x\gone.exe "%1"
      W\CLSID\{A}\shell\empty ; W\CLSID\{A}\ShellEx\ContextMenuHandlers\named
      W\CLSID\{A}\ShellEx\ContextMenuHandlers\other = {GONE}
      W\CLSID\{A}\ShellEx\IconHandler = {GONE} ; W\CLSID\{A}\ShellEx\DropHandler
      W\CLSID\{A}\DefaultIcon = C:\Program Files\A,B\x.dll,3 ; W\CLSID\{A}\TypeLib =  {GONE}
      W\CLSID\{A}\ToolboxBitmap32 = gone.ocx, 1 ; W\CLSID\{A}\PersistentHandler = word
      W\CLSID\{A}\AutoConvertTo = {GONE} ; W\CLSID\{A}\TreatAs = {GONE}
      W\CLSID\{B}\LocalServer = x.exe ; W\CLSID\{B}\DefaultIcon : x = y
      W\CLSID\{B}\ToolboxBitmap32 ; W\CLSID\{B}\AutoConvertTo ; W\CLSID\{B}\TreatAs
      ? 18{k32}CLSID\{A}\ProgID{c}Class A ; 18{k32}CLSID\{A}\VersionIndependentProgID{c}Class A
      ? 22{k32}CLSID\{A}\shell\empty{c}Class A
      ? 2{c}Class A{k32}CLSID\{A}\shell\open\command{f}C:\x\gone.exe "%1"
      ? 20{k32}CLSID\{A}\ShellEx\ContextMenuHandlers\named{c}Class A
      ? 3{k32}CLSID\{A}\ShellEx\ContextMenuHandlers\other{c}Class A{m}CLSID\{GONE}
      ? 20{k32}CLSID\{A}\ShellEx\DropHandler{c}Class A
      ? 3{k32}CLSID\{A}\ShellEx\IconHandler{c}Class A{m}CLSID\{GONE}
      ? 4{k32}CLSID\{A}\DefaultIcon{c}Class A{f}C:\Program Files\A,B\x.dll,3
      ? 5{k32}CLSID\{A}\TypeLib{c}Class A{m}TypeLib\{GONE}
      ? 9{c}Class A{k32}CLSID\{A}|existingvalue:AppID{m32}AppID\{X}
      ? 6{c}Class A{k32}CLSID\{A}\ToolboxBitmap32{f}gone.ocx
      ? 8{c}Class A{k32}CLSID\{A}\PersistentHandler{m32}CLSID\word
      ? 3{k32}CLSID\{A}\AutoConvertTo{c}Class A{m32}CLSID\{GONE}
      ? 3{k32}CLSID\{A}\TreatAs{c}Class A{m32}CLSID\{GONE} ; 21{k32}CLSID\{B}\DefaultIcon{c}{B}
      ? 23{c}{B}{k32}CLSID\{B}\ToolboxBitmap32|key:ToolboxBitmap32
      ? 23{c}{B}{k32}CLSID\{B}\AutoConvertTo|key:AutoConvertTo
      ? 23{c}{B}{k32}CLSID\{B}\TreatAs|key:TreatAs
      ! {-W}CLSID\{A}\ProgID ; {-W}CLSID\{A}\VersionIndependentProgID ; {-W}CLSID\{A}\shell\empty
      ! {-W}CLSID\{A}\shell\open\command ; {-W}CLSID\{A}\shell\open ; {-W}CLSID\{A}\shell
      ! {-W}CLSID\{A}\ShellEx\ContextMenuHandlers\named
      ! {-W}CLSID\{A}\ShellEx\ContextMenuHandlers\other
      ! {-W}CLSID\{A}\ShellEx\ContextMenuHandlers ; {-W}CLSID\{A}\ShellEx\DropHandler
      ! {-W}CLSID\{A}\ShellEx\IconHandler ; {-W}CLSID\{A}\ShellEx ; {-W}CLSID\{A}\DefaultIcon
      ! {-W}CLSID\{A}\TypeLib ; delete value HKLM\SOFTWARE\Classes\Wow6432Node\CLSID\{A} "AppID"
      ! {-W}CLSID\{A}\ToolboxBitmap32 ; {-W}CLSID\{A} ; {-W}CLSID\{B}\DefaultIcon
      ! {-W}CLSID\{B}\ToolboxBitmap32 ; {-W}CLSID\{B}\AutoConvertTo ; {-W}CLSID\{B}\TreatAs
)";

TEST(ActiveXCOM, ClassParts) {
  CheckClasses<TRCPActiveXCOM>(kEveryPart + R"(
      # healthy parts of a class
      W\CLSID\{A} : AppID = {X} ; AppID\{X} ; W\CLSID\{A}\ProgID = x
      W\CLSID\{A}\shell\c\command = "C:\x\gone.exe" ; : command = installer's mark
      W\CLSID\{A}\shell\d\DropTarget ; W\CLSID\{A}\shell\e\command : DelegateExecute = {G}
      W\CLSID\{A}\ShellEx\MayChangeDefaultMenu ; W\CLSID\{A}\ShellEx\ExtShellFolderViews\{GONE}
      W\CLSID\{A}\ShellEx\ContextMenuHandlers\x = {F9DB5320-233e-11D1-9F84-707F02C10627}
      W\CLSID\{A}\ShellEx\PropertySheetHandlers\{B} ; W\CLSID\{A}\ShellEx\{GONE} : x = y
      W\CLSID\{A}\ShellEx\{GONE} = {B} ; W\CLSID\{A}\ShellEx\word = word
      W\CLSID\{A}\DefaultIcon = %1 ; W\CLSID\{D}\DefaultIcon = dword:1
      W\CLSID\{D}\ToolboxBitmap32 = dword:1 ; W\CLSID\{D}\TypeLib = dword:1
      W\CLSID\{D}\shell\a\command = dword:1
      W\CLSID\{A}\TypeLib = {05f6b36c-7630-4A4D-945E-80C59DC2C832}
      W\CLSID\{A}\ToolboxBitmap32 = C:\x\here.dll, 101 ; W\CLSID\{A}\PersistentHandler : x = y
      W\CLSID\{A}\TreatAs = word ; W\CLSID\{A}\AutoConvertTo = {B}
      CLSID\{B}\DefaultIcon = x.dll,-3
      W\CLSID\{C} : AppID = {887839a0-0624-4af0-B9A5-E3FE3B831E20} ; CLSID\{C}\DefaultIcon
      W\CLSID\{C}\DefaultIcon = C:\x\gone.dll ; CLSID\{C}\ProgID ; W\CLSID\{C}\ProgID = x
      CLSID\{C}\TypeLib = {GONE} ; W\CLSID\{C}\TypeLib
      + C:\x\here.dll ; C:\x\folder\
      # a missing replacement stays by design
      W\CLSID\{A}\TreatAs = {GONE}
      ? 3{k32}CLSID\{A}\TreatAs{c}{A}{m32}CLSID\{GONE}
      = 3{k32}CLSID\{A}\TreatAs{c}{A}{m32}CLSID\{GONE}
      # a handler takes its empty parents along, the class too (!)
      W\CLSID\{A}\ShellEx\DragDropHandlers\{GONE}
      ? 3{k32}CLSID\{A}\ShellEx\DragDropHandlers\{GONE}{c}{A}{m}CLSID\{GONE}
      ! {-W}CLSID\{A}\ShellEx\DragDropHandlers\{GONE} ; {-W}CLSID\{A}\ShellEx\DragDropHandlers
      ! {-W}CLSID\{A}\ShellEx ; {-W}CLSID\{A}
      # a single handler: two parents, the class being one of them (!)
      W\CLSID\{A}\ShellEx\{GONE}
      ? 3{k32}CLSID\{A}\ShellEx\{GONE}{c}{A}{m}CLSID\{GONE}
      ! {-W}CLSID\{A}\ShellEx\{GONE} ; {-W}CLSID\{A}\ShellEx ; {-W}CLSID\{A}
      # a verb's removal reaches the class (!)
      W\CLSID\{A}\shell\open\command = C:\no.exe
      ? 2{c}{A}{k32}CLSID\{A}\shell\open\command{f}C:\no.exe
      ! {-W}CLSID\{A}\shell\open\command ; {-W}CLSID\{A}\shell\open ; {-W}CLSID\{A}\shell
      ! {-W}CLSID\{A}
      # views that differ in an earlier subkey alone count as the same (!)
      W\CLSID\{A}\DefaultIcon\1 = x ; CLSID\{A}\DefaultIcon\1 = y ; W\CLSID\{A}\DefaultIcon\2 = z
      CLSID\{A}\DefaultIcon\2 = Z
      ? 21{k32}CLSID\{A}\DefaultIcon{c}{A} ; 21{k64}CLSID\{A}\DefaultIcon{c}{A}
      ! {-W}CLSID\{A}\DefaultIcon ; {-W}CLSID\{A} ; {-C}CLSID\{A}\DefaultIcon ; {-C}CLSID\{A})");
}

TEST(ActiveXCOM, InterfacesAndTypeLibs) {
  CheckClasses<TRCPActiveXCOM>(R"(
      # healthy
      W\Interface\{I} = IThing
      W\Interface\{I}\ProxyStubClsid = {00000320-0000-0000-c000-000000000046}
      W\Interface\{I}\ProxyStubClsid32 = {B} ; W\Interface\{I}\BaseInterface = iUnknown
      W\Interface\{I}\SynchronousInterface ; W\Interface\{I}\TypeLib =  {T} {}
      W\Interface\{I}\OLEViewerIViewerCLSID = {F9DB5320-233E-11D1-9F84-707F02C10628}
      CLSID\{F9DB5320-233E-11D1-9F84-707F02C10628} ; CLSID\{B}
      W\Interface\{a648e88e-6C78-4373-A64E-665C05B4075B}\TypeLib = {GONE}
      W\Interface\{5984FFE0-28D4-11CF-AE66-08002B2E1262}\TypeLib = {GONE}
      W\Interface\Stray\TypeLib = {GONE} ; TypeLib\{T}\1.0\0\win32 = C:\x\here.dll\2
      TypeLib\{T}\1.0\0\win64 = C:\x\gone.dll ; TypeLib\{T}\1.0\0c\win32 = C:\x\gone.dll
      TypeLib\{T}\1.0\1033\win32 = C:\x\gone.dll ; TypeLib\{T}\1.0\FLAGS = 0
      TypeLib\{T}\1.0\HELPDIR = [?]x ; TypeLib\{T}\1.1\HELPDIR = C:\x\folder\
      TypeLib\{T}\1.2\HELPDIR : x = y ; TypeLib\{T}\1.3\409\win32 : x = y
      TypeLib\{T}\1.4\0\win32 = gone.tlb ; TypeLib\{T}\1.5\0\win32 = dword:1
      TypeLib\{T}\1.5\HELPDIR = dword:1
      TypeLib\{5984FFE0-28D4-11CF-AE66-08002B2E1262}\1.0\0\win32 = C:\x\gone.dll
      + C:\x\here.dll ; C:\x\folder\
      # references of an interface
      W\Interface\{I} = IThing ; W\Interface\{I}\BaseInterface = word
      W\Interface\{I}\OLEViewerIViewerCLSID = {GONE} ; W\Interface\{I}\ProxyStubClsid32 = {GONE}
      W\Interface\{I}\TypeLib = {GONE}
      ? 10|stubtype:ProxyStubClsid32{k32}Interface\{I}\ProxyStubClsid32{c}IThing{m}CLSID\{GONE}
      ? 10|stubtype:OLEViewerIViewerCLSID{k32}Interface\{I}\OLEViewerIViewerCLSID{c}IThing{m}CLSID\{GONE}
      ? 11{k32}Interface\{I}\BaseInterface{c}IThing{m}Interface\word
      ? 12{k32}Interface\{I}\TypeLib{c}IThing{m}TypeLib\{GONE}
      ? 12{k32}Interface\{I}\OLEViewerIViewerCLSID{c}IThing{m}CLSID\{GONE}
      ! {-W}Interface\{I}\ProxyStubClsid32 ; {-W}Interface\{I}\OLEViewerIViewerCLSID
      ! {-W}Interface\{I}\BaseInterface ; {-W}Interface\{I}\TypeLib
      # a library shared by both views is seen in each; its removal takes all of it
      TypeLib\{T}\1.0 =  Lib {} ; TypeLib\{T}\1.0\409\win32 = C:\x\gone.tlb
      TypeLib\{T}\1.0\FLAGS = 0 ; TypeLib\{T}\1.0\HELPDIR = C:\x\no folder
      + C:\x\folder\
      ? 13{k32}TypeLib\{T}\1.0\409\win32|subkey:1.0\409\win32{c}Lib{f}C:\x\gone.tlb
      ? 15{k32}TypeLib\{T}\1.0\HELPDIR|subkey:1.0\HELPDIR{c}Lib{f}C:\x\no folder
      ? 13{k64}TypeLib\{T}\1.0\409\win32|subkey:1.0\409\win32{c}Lib{f}C:\x\gone.tlb
      ? 15{k64}TypeLib\{T}\1.0\HELPDIR|subkey:1.0\HELPDIR{c}Lib{f}C:\x\no folder
      ! {-C}TypeLib\{T}\1.0\409\win32 ; {-C}TypeLib\{T}\1.0\409 ; {-C}TypeLib\{T}\1.0
      ! {-C}TypeLib\{T}
      # empty entries; another language keeps the version
      & 32-bit
      TypeLib\{T}\1.0\0\win32 ; TypeLib\{T}\1.0\0\win64 = x ; TypeLib\{T}\1.0\9\win32
      TypeLib\{T}\1.0\helpdir
      ? 14{k32}TypeLib\{T}\1.0\0\win32|subkey:1.0\0\win32{c}{T}
      ? 14{k32}TypeLib\{T}\1.0\9\win32|subkey:1.0\9\win32{c}{T}
      ? 16{k32}TypeLib\{T}\1.0\HELPDIR|subkey:1.0\HELPDIR{c}{T}
      ! {-C}TypeLib\{T}\1.0\0\win32 ; {-C}TypeLib\{T}\1.0\9\win32 ; {-C}TypeLib\{T}\1.0\9
      ! {-C}TypeLib\{T}\1.0\HELPDIR)");
}

TEST(ActiveXCOM, Faults) {
  const std::string plain = ReplaceAll(kEveryPart, "{A} = Class A", "{A}");
  CheckFaults<TRCPActiveXCOM>(ReadCases(ReplaceAll(plain, "Class A", "{A}") + R"(
      W\Interface\{I}\ProxyStubClsid32 = {B} ; W\Interface\{I}\BaseInterface = {I}
      W\CLSID\{C}\InprocServer32 = C:\x\here.dll ; W\CLSID\{C}\TypeLib = {T}
      TypeLib\{T}\1.0\0\win32 = C:\x\here.dll ; TypeLib\{T}\1.0\HELPDIR = C:\x\folder
      + C:\x\here.dll ; C:\x\folder\)",
                                        kClassNames)[0]);
}

// What each class has to show for itself, the first one nothing.
TEST(ActiveXCOM, Captions) {
  World world(Classes(R"(W\CLSID\{A}\LocalServer
      W\CLSID\{B} =  Given 
      W\CLSID\{B}\LocalServer ; W\CLSID\{C} = Given ; : LocalizedString = Plain
      W\CLSID\{C}\LocalServer ; W\CLSID\{D} = Given ; : LocalizedString = @C:\x\here.dll,-8
      W\CLSID\{D}\LocalServer ; W\CLSID\{E} = Given ; : FriendlyTypeName = Plain
      W\CLSID\{E}\LocalServer ; W\CLSID\{F} : LocalizedString = Plain
      W\CLSID\{F} : FriendlyTypeName = @C:\x\here.dll,-7 ; W\CLSID\{F}\LocalServer)"),
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
  const Case row = ReadCases(R"(# kinds and what they never lie in
      W\CLSID\{A}\shell : v = x ; W\CLSID\{A}\shell\x\other ; W\CLSID\{A}\DefaultIcon
      W\CLSID\{A}\TypeLib ; W\CLSID\{A}\TreatAs ; TypeLib\{A}\1.0\0
      ? 1{k32}CLSID\{A} ; 1{k32}Interface\{A}\x ; 2{k32}CLSID\{A}\shell\x\other
      ? 3{k32}CLSID\{A}\TreatAs ; 4{k32}CLSID\{A}\TypeLib ; 5{k32}CLSID\{A}\DefaultIcon
      ? 9{k32}CLSID\{A}\shell{v}v ; 13{k32}TypeLib\{A}\1.0\0 ; 15{k32}TypeLib\{A}\1.0\0
      ? 19{k32}CLSID\{A}\x ; 22{k32}CLSID\{A}\shell)",
                             kClassNames)[0];
  World world(row.registry);
  auto& plugin = world.Create<TRCPActiveXCOM>();
  for (const std::string& problem : row.problems) {
    for (const char* root : {"HKEY_CLASSES_ROOT", "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes"}) {
      std::istringstream in(ReplaceAll(problem, "HKEY_CLASSES_ROOT", root));
      TSweepError error;
      in >> error.ErrorType;
      in.ignore();
      for (std::string item; std::getline(in, item, '|');) error.Data.push_back(FromUtf8(item));
      EXPECT_TRUE(plugin.CleanError(error));
      EXPECT_EQ(world.Journal(), Lines()) << problem;
      EXPECT_FALSE(ShouldReSearch);
    }
  }
}

}  // namespace
}  // namespace scrubwell::test
