#include <gtest/gtest.h>

#include "plugins/software/Rcp_sharedfiles.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

const std::string kShared = R"(Microsoft\Windows\CurrentVersion\SharedDLLs)";
const std::string kKey32 = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\" + kShared + "]\n";
const std::string kKey64 = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\" + kShared + "]\n";

std::string Problem(const std::string& view, const std::string& file) {
  return "1|existingkey:" + view + ":HKEY_LOCAL_MACHINE\\Software\\" + kShared +
         "|existingvalue:" + file + "|missingfile:" + file;
}

std::string Removal(const std::string& node, const std::string& file) {
  return "delete value HKLM\\SOFTWARE\\" + node + kShared + " \"" + file + "\"";
}

TEST(SharedFiles, FindsAndCleans) {
  const std::string gone = "\"C:\\\\x\\\\gone.dll\"=dword:1\n";
  const MemoryOptions bits32{.is64Bit = false};
  const Case rows[] = {
      {.name = "no list"},
      {.name = "both views, each its own problem",
       .registry = kKey32 + gone + "\"C:\\\\x\\\\here.dll\"=dword:0\n" + kKey64 + gone,
       .files = "C:\\x\\here.dll",
       .problems = {Problem("32", "C:\\x\\gone.dll"), Problem("64", "C:\\x\\gone.dll")},
       .journal =
           Lines{Removal("Wow6432Node\\", "C:\\x\\gone.dll"), Removal("", "C:\\x\\gone.dll")}},
      {.name = "one view on a 32-bit system",
       .registry = kKey64 + gone,
       .problems = {Problem("32", "C:\\x\\gone.dll")},
       .journal = Lines{Removal("", "C:\\x\\gone.dll")},
       .options = bits32},
      {.name = "drives that prove nothing, texts that are no path",
       .registry = kKey32 + R"("D:\\gone.dll"=dword:1
@="C:\\gone.dll"
)",
       .files = "drive D: removable"},
      {.name = "variable, and a file that only one system folder holds",
       .registry = kKey32 + R"("%SystemRoot%\\gone.dll"=dword:1
"C:\\Windows\\System32\\only32.dll"=dword:1
)",
       .files = "C:\\Windows\\SysWOW64\\only32.dll",
       .problems = {Problem("32", "%SystemRoot%\\gone.dll")}},
      {.name = "a list that can't be written",
       .registry = kKey32 + gone + kKey64 + gone,
       .problems = {Problem("64", "C:\\x\\gone.dll")},
       .setup =
           [](World& world) {
             world.Backend().DenyWrite(
                 u"HKLM\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs");
           }},
  };
  CheckCases<TRCPSharedFiles>(rows);
  CheckFaults<TRCPSharedFiles>(rows[1]);
}

TEST(SharedFiles, Texts) {
  World world(kKey64 + "\"C:\\\\x\\\\gone.dll\"=dword:1\n");
  world.Run<TRCPSharedFiles>();
  EXPECT_EQ(world.Texts(),
            (Lines{"Fehlende gemeinsam genutzte Datei \"gone.dll\"|Die Datei konnte im angegebenen "
                   "Ordner \"C:\\x\" nicht gefunden werden.|Die Registrierung verweist unter \"<a "
                   "href=\"regjump:64:HKEY_LOCAL_MACHINE\\Software\\" +
                   kShared + "\">HKEY_LOCAL_MACHINE\\Software\\" + kShared +
                   "</a>\" auf die fehlende gemeinsam genutzte Datei \"C:\\x\\gone.dll\"."}));
}

}  // namespace
}  // namespace scrubwell::test
