#include <gtest/gtest.h>

#include "plugins/software/Rcp_helpfiles.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

const std::string kHelp = R"(Microsoft\Windows\Help)";
const std::string kHtml = R"(Microsoft\Windows\HTML Help)";

std::string Key(const std::string& key, const std::string& values, const std::string& node = {}) {
  return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\" + node + key + "]\n" + values + "\n";
}

// Of a file in C:\h, which the registration names with or without a trailing backslash.
std::string Problem(const std::string& kind, const std::string& view, const std::string& key,
                    const std::string& name) {
  return kind + "|existingkey:" + view + ":HKEY_LOCAL_MACHINE\\Software\\" + key +
         "|existingvalue:" + name + (kind == "3" ? "|existingfile:" : "|missingfile:") + "C:\\h\\" +
         name;
}

std::string Removal(const std::string& key, const std::string& name) {
  return "delete value HKLM\\SOFTWARE\\" + key + " \"" + name + "\"";
}

TEST(HelpFiles, FindsAndCleans) {
  const std::string wow = "Wow6432Node\\";
  const std::string gone = "\"gone.hlp\"=\"C:\\\\h\"\n";
  const MemoryOptions bits32{.is64Bit = false};
  const Case rows[] = {
      {.name = "no registrations"},
      {.name = "healthy, or not to be told",
       .registry = Key(kHelp, R"("a.hlp"="C:\\h"
"b c.hlp"="C:\\h\\"
"only32.hlp"="C:\\Windows\\System32"
"gone.hlp"="D:\\h"
"num.hlp"=dword:1
@="C:\\h"
)"),
       .files = "C:\\h\\a.hlp\nC:\\h\\b c.hlp\n"
                "C:\\Windows\\SysWOW64\\only32.hlp\ndrive D: cdrom"},
      {.name = "all four lists in their order",
       .registry =
           Key(kHtml, gone) + Key(kHtml, gone, wow) + Key(kHelp, gone) + Key(kHelp, gone, wow),
       .problems = {Problem("1", "32", kHelp, "gone.hlp"), Problem("1", "64", kHelp, "gone.hlp"),
                    Problem("2", "32", kHtml, "gone.hlp"), Problem("2", "64", kHtml, "gone.hlp")},
       .journal = Lines{Removal(wow + kHelp, "gone.hlp"), Removal(kHelp, "gone.hlp"),
                        Removal(wow + kHtml, "gone.hlp"), Removal(kHtml, "gone.hlp")}},
      {.name = "empty files, with and without a backslash",
       .registry = Key(kHelp, R"("nil.hlp"="C:\\h\\")") + Key(kHtml, R"("nil.chm"="C:\\h")"),
       .files = "C:\\h\\nil.hlp | size=0\nC:\\h\\nil.chm | size=0",
       .problems = {Problem("3", "32", kHelp, "nil.hlp"), Problem("3", "32", kHtml, "nil.chm")},
       .journal = Lines{Removal(kHelp, "nil.hlp"), Removal(kHtml, "nil.chm")},
       .options = bits32},
  };
  CheckCases<TRCPHelpFiles>(rows);
  for (const std::size_t row : {2U, 3U}) CheckFaults<TRCPHelpFiles>(rows[row]);
}

}  // namespace
}  // namespace scrubwell::test
