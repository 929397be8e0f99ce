#include "hosts/cli/report.h"

#include <gtest/gtest.h>

#include "hosts/cli/command_line.h"
#include "hosts/cli/json_writer.h"

namespace scrubwell::cli {
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

TEST(JsonWriter, Nests) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("a").BeginArray();
  json.EndArray();
  json.Key("b").BeginArray();
  json.Number(-1);
  json.BeginObject();
  json.Key("c").Bool(true);
  json.EndObject();
  json.EndArray();
  json.EndObject();
  EXPECT_EQ(out, "{\n  \"a\": [],\n  \"b\": [\n    -1,\n    {\n      \"c\": true\n    }\n  ]\n}");
}

TEST(Report, NoEntrySteersTheTerminal) {
  const std::pair<UnicodeString, std::string> rows[] = {
      {u"plain Ä €", "plain Ä €"},           {u"\u001b[2J\u009b\u0007", "\uFFFD[2J\uFFFD\uFFFD"},
      {u"exe\u202Egpj", "exe\uFFFDgpj"},     {UnicodeString{0xD83D, u'x', 0xDE00}, "\uFFFDx\uFFFD"},
      {u"\xD83D\xDE00", "\xF0\x9F\x98\x80"},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(Printable(text), expected);
}

TEST(CommandLine, ReadsDrives) {
  struct Row {
    const char* text;
    char16_t letter;  // 0: refused
    const char* folder;
    DriveKind kind;
  };
  const Row rows[] = {
      {"E=/mnt/e", u'E', "/mnt/e", DriveKind::Fixed},
      {"e=/mnt/e:removable", u'E', "/mnt/e", DriveKind::Removable},
      {"F=/mnt/a:b:cdrom", u'F', "/mnt/a:b", DriveKind::CdRom},
      {"G=x:network", u'G', "x", DriveKind::Network},
      {"H=/mnt/h:fixed:fixed", u'H', "/mnt/h:fixed", DriveKind::Fixed},
      {"H=/mnt/h:floppy", u'H', "/mnt/h:floppy", DriveKind::Fixed},
      {"", 0, "", {}},
      {"E", 0, "", {}},
      {"E=", 0, "", {}},
      {"E=:fixed", 0, "", {}},
      {"EE=/x", 0, "", {}},
      {"1=/x", 0, "", {}},
  };
  for (const Row& row : rows) {
    const auto drive = ParseDrive(row.text);
    ASSERT_EQ(drive.has_value(), row.letter != 0) << row.text;
    if (!drive) continue;
    EXPECT_EQ(drive->letter, row.letter) << row.text;
    EXPECT_EQ(drive->folder, row.folder) << row.text;
    EXPECT_EQ(drive->kind, row.kind) << row.text;
  }
}

}  // namespace
}  // namespace scrubwell::cli
