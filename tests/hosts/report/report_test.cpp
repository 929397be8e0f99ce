#include "hosts/report/report.h"

#include <gtest/gtest.h>

#include "hosts/report/json_writer.h"

namespace scrubwell::hosts {
namespace {

TEST(JsonWriter, EscapesWhatJsonAndUnicodeDemand) {
  const std::pair<UnicodeString, std::string> rows[] = {
      {u"C:\\a \"b\"", R"("C:\\a \"b\"")"},
      {u"\n\r\t\u001d\u007f", R"("\n\r\t\u001d\u007f")"},
      {UnicodeString(u"a\0b", 3), R"("a\u0000b")"},
      {u"Größe €", "\"Größe €\""},
      {u"\xD83D\xDE00", "\"\xF0\x9F\x98\x80\""},
      {UnicodeString{0xD83D}, R"("\ud83d")"},
      {UnicodeString{0xDE00, 0xD83D}, R"("\ude00\ud83d")"},
      {UnicodeString{0xD83D, u'x'}, R"("\ud83dx")"},
  };
  for (const auto& [text, expected] : rows) {
    std::string out;
    JsonWriter(out).Text(UnicodeView(text));
    EXPECT_EQ(out, expected);
  }
}

TEST(Report, NoEntrySteersTheTerminal) {
  const std::pair<UnicodeString, std::string> rows[] = {
      {u"plain Ä €", "plain Ä €"},           {u"\u001b[2J\u009b\u0007", "\uFFFD[2J\uFFFD\uFFFD"},
      {u"exe\u202Egpj", "exe\uFFFDgpj"},     {UnicodeString{0xD83D, u'x', 0xDE00}, "\uFFFDx\uFFFD"},
      {u"\xD83D\xDE00", "\xF0\x9F\x98\x80"},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(Printable(text), expected);
}

}  // namespace
}  // namespace scrubwell::hosts
