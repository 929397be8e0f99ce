#include <gtest/gtest.h>

#include "plugins/system/Rcp_fonts.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

const std::string kFonts = R"(Microsoft\Windows NT\CurrentVersion\Fonts)";
const std::string kKey = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\" + kFonts + "]\n";
const std::string kShell = R"(Software\Microsoft\Windows\CurrentVersion\Explorer\Shell Folders)";

std::string Problem(const std::string& kind, const std::string& view, const std::string& name,
                    const std::string& file, const std::string& fonts = kFonts) {
  return kind + "|existingkey:" + view + ":HKEY_LOCAL_MACHINE\\Software\\" + fonts +
         "|existingvalue:" + name + "|caption:" + name +
         (kind == "1" ? "|missingfile:" : "|existingfile:") + file;
}

std::string Removal(const std::string& name, const std::string& fonts = kFonts) {
  return "delete value HKLM\\SOFTWARE\\" + fonts + " \"" + name + "\"";
}

TEST(Fonts, FindsAndCleans) {
  const MemoryOptions bits32{.is64Bit = false};
  const std::string gone = kKey + "\"Gone\"=\"gone.ttf\"\n";
  const std::string windows9x = R"(Microsoft\Windows\CurrentVersion\Fonts)";
  const Case rows[] = {
      {.name = "no list"},
      {.name = "healthy, or not to be told",
       .registry = kKey + R"(@="gone.ttf"
"Arial"="arial.ttf"
"Old"="VGAOEM.FON"
"Local"="C:\\Users\\tester\\AppData\\Local\\Microsoft\\Windows\\Fonts\\own.otf"
"Variable"="%windir%\\Fonts\\arial.ttf"
"Stick"="D:\\gone.ttf"
"Number"=dword:1
)",
       .files =
           "C:\\Windows\\Fonts\\arial.ttf\nC:\\Windows\\Fonts\\vgaoem.fon\ndrive D: removable\n"
           "C:\\Users\\tester\\AppData\\Local\\Microsoft\\Windows\\Fonts\\own.otf"},
      {.name = "missing and empty, bare and with a folder; a share is looked for in the folder",
       .registry = kKey + R"("A"="gone.ttf"
"B"="nil.fon"
"C"="C:\\x\\gone.ttc"
"D"="C:\\x\\nil.ttf"
"E"="\\\\server\\fonts\\gone.ttf"
"F"="%windir%\\gone.ttf"
)",
       .files = "C:\\Windows\\Fonts\\nil.fon | size=0\nC:\\x\\nil.ttf | size=0",
       .problems = {Problem("1", "32", "A", "gone.ttf"), Problem("2", "32", "B", "nil.fon"),
                    Problem("1", "32", "C", "C:\\x\\gone.ttc"),
                    Problem("2", "32", "D", "C:\\x\\nil.ttf"),
                    Problem("1", "32", "E", "\\\\server\\fonts\\gone.ttf"),
                    Problem("1", "32", "F", "%windir%\\gone.ttf")},
       .journal = Lines{Removal("A"), Removal("B"), Removal("C"), Removal("D"), Removal("E"),
                        Removal("F")},
       .options = bits32},
      {.name = "the list that both views share",
       .registry = gone,
       .problems = {Problem("1", "32", "Gone", "gone.ttf"), Problem("1", "64", "Gone", "gone.ttf")},
       .journal = Lines{Removal("Gone")}},
      {.name = "the default profile's folder comes second",
       .registry = kKey + "\"A\"=\"a.ttf\"\n\"B\"=\"b.ttf\"\n\"Gone\"=\"gone.ttf\"\n" +
                   "[HKEY_USERS\\.DEFAULT\\" + kShell + "]\n\"Fonts\"=\"C:\\\\Default\"\n",
       .files = "C:\\Default\\a.ttf\nC:\\Default\\b.ttf | size=0\nC:\\Windows\\Fonts\\b.ttf",
       .problems = {Problem("1", "32", "Gone", "gone.ttf")},
       .options = bits32},
      {.name = "the user's folder where the shell knows none",
       .registry = gone + "\"A\"=\"a.ttf\"\n[HKEY_CURRENT_USER\\" + kShell +
                   "]\n\"Fonts\"=\"C:\\\\Mine\\\\\"\n",
       .files = "C:\\Mine\\a.ttf",
       .problems = {Problem("1", "32", "Gone", "gone.ttf")},
       .options = bits32,
       .setup = [](World& world) { world.Windows().shell.folders.erase(20); }},
      {.name = "no folder is known",
       .registry = gone,
       .setup = [](World& world) { world.Windows().shell.folders.erase(20); }},
      {.name = "before Windows NT",
       .registry = gone + "[HKEY_LOCAL_MACHINE\\SOFTWARE\\" + windows9x + "]\n\"Nine\"=\"g.ttf\"\n",
       .problems = {Problem("1", "32", "Nine", "g.ttf", windows9x)},
       .journal = Lines{Removal("Nine", windows9x)},
       .options = {.is64Bit = false, .version = OsVersion::WinME}},
      {.name = "a list that can't be written",
       .registry = gone,
       .setup =
           [](World& world) {
             world.Backend().DenyWrite(
                 u"HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Fonts");
           }},
  };
  CheckCases<TRCPFonts>(rows);
  for (const std::size_t row : {2U, 4U}) CheckFaults<TRCPFonts>(rows[row]);
}

}  // namespace
}  // namespace scrubwell::test
