#include "plugins/system/Rcp_fonts.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const Abbreviations kShort = {
    {"{Gone}", "{K}{v}Gone|caption:Gone{f}gone.ttf"},
    {"{K}", "Microsoft\\Windows NT\\CurrentVersion\\Fonts"},
    {"{9}", "Microsoft\\Windows\\CurrentVersion\\Fonts"},
    {"{shell}", "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders : Fonts"}};

TEST(Fonts, FindsAndCleans) {
  CheckText<TRCPFonts>(
      R"(
      # healthy, or not to be told
      {LM}{K} = gone.ttf ; : Arial = arial.ttf ; : Old = VGAOEM.FON
      {LM}{K} : Local = C:\Users\tester\AppData\Local\Microsoft\Windows\Fonts\own.otf
      {LM}{K} : Variable = %windir%\Fonts\arial.ttf ; : Stick = D:\gone.ttf ; : Number = dword:1
      + C:\Windows\Fonts\arial.ttf ; C:\Windows\Fonts\vgaoem.fon ; drive D: removable
      + C:\Users\tester\AppData\Local\Microsoft\Windows\Fonts\own.otf
      # missing and empty, bare and with a folder; a share is looked for in the folder
      & 32-bit
      {LM}{K} : A = gone.ttf ; : B = nil.fon ; : C = C:\x\gone.ttc ; : D = C:\x\nil.ttf
      {LM}{K} : E = \\server\fonts\gone.ttf ; : F = %windir%\gone.ttf
      + C:\Windows\Fonts\nil.fon | size=0 ; C:\x\nil.ttf | size=0
      ? 1{32}{K}{v}A|caption:A{f}gone.ttf ; 2{32}{K}{v}B|caption:B|existingfile:nil.fon
      ? 1{32}{K}{v}C|caption:C{f}C:\x\gone.ttc ; 2{32}{K}{v}D|caption:D|existingfile:C:\x\nil.ttf
      ? 1{32}{K}{v}E|caption:E{f}\\server\fonts\gone.ttf
      ? 1{32}{K}{v}F|caption:F{f}%windir%\gone.ttf
      ! {-v}{K} "A" ; {-v}{K} "B" ; {-v}{K} "C" ; {-v}{K} "D" ; {-v}{K} "E" ; {-v}{K} "F"
      # the list that both views share
      {LM}{K} : Gone = gone.ttf
      ? 1{32}{Gone} ; 1{64}{Gone}
      ! {-v}{K} "Gone"
      # the default profile's folder comes second
      & 32-bit
      {LM}{K} : A = a.ttf ; : B = b.ttf ; : Gone = gone.ttf
      HKEY_USERS\.DEFAULT\{shell} = C:\Default
      + C:\Default\a.ttf ; C:\Default\b.ttf | size=0 ; C:\Windows\Fonts\b.ttf
      ? 1{32}{Gone}
      # a list that can't be written
      & deny-write HKLM\SOFTWARE\{K}
      {LM}{K} : Gone = gone.ttf
      # where the shell knows no folder, the user's is asked for
      & 32-bit
      & no font folder
      {LM}{K} : Gone = gone.ttf ; : A = a.ttf ; HKEY_CURRENT_USER\{shell} = C:\Mine\
      + C:\Mine\a.ttf
      ? 1{32}{Gone}
      # without any folder nothing can be told
      & 32-bit
      & no font folder
      {LM}{K} : Gone = gone.ttf
      # an older list
      & Windows ME
      {LM}{K} : Gone = gone.ttf ; {LM}{9} : Nine = g.ttf
      ? 1{32}{9}{v}Nine|caption:Nine{f}g.ttf
      ! {-v}{9} "Nine")",
      kShort,
      {{"no font folder",
        [](Case& row) {
          row.setup = [](World& world) { world.Windows().shell.folders.erase(20); };
        }},
       {"Windows ME",
        [](Case& row) { row.options = {.is64Bit = false, .version = OsVersion::WinME}; }}});
}

}  // namespace
}  // namespace scrubwell::test
