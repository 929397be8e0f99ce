#include "hosts/report/report.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>

#include "hosts/report/backend_sentences.h"
#include "hosts/report/json_writer.h"
#include "hosts/report/system_sentence.h"
#include "registry/Stringhelper.h"

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
      {u"\x0085\x009B\x202E\x2066", R"("\u0085\u009b\u202e\u2066")"},
  };
  for (const auto& [text, expected] : rows) {
    std::string out;
    JsonWriter(out).Text(UnicodeView(text));
    EXPECT_EQ(out, expected);
  }
  std::string line;
  JsonWriter(line, JsonLayout::OneLine).Text(UnicodeView(u"a\xD83D"));
  EXPECT_EQ(line, R"("a\ufffd")");
}

TEST(Sentences, ComeInTheReportsLanguage) {
  const std::pair<const char*, const char*> rows[] = {
      {"/mnt/a: b: No such file or directory", "/mnt/a: b: Datei oder Ordner nicht gefunden"},
      {"/x: y: the volume is mounted read-only",
       "/x: y: das Laufwerk ist nur zum Lesen eingehängt"},
      {"A clean would be refused: /c: Permission denied",
       "Eine Reinigung würde abgelehnt: /c: Keine Berechtigung"},
      {"a: taken for the profile of S-1, whose folder b is not there",
       "a: gilt als Profil von S-1, dessen Ordner b nicht da ist"},
      {"nobody knows this: one", "nobody knows this: one"},
      {": the volume can't be read", ": the volume can't be read"},
  };
  SetPackageLanguage(TLanguage::German);
  for (const auto& [said, shown] : rows) EXPECT_EQ(InReportLanguage(said), shown);
}

// A sentence that no backend says any more is not found by what it says now.
TEST(Sentences, AreThoseOfTheBackends) {
  std::string sources;
  for (const std::string folder : {"backends", "formats", "registry"}) {
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(SCRUBWELL_SOURCE_DIR "/src/" + folder)) {
      std::ifstream file(entry.path());
      if (entry.is_regular_file()) sources.append(std::istreambuf_iterator<char>(file), {});
    }
  }
  sources = std::regex_replace(sources, std::regex("\"\\s*u?\""), "");
  for (const TText& known : kBackendSentences) {
    const std::string text = ToUtf8(known.english);
    const std::size_t last = text.rfind("%s");
    std::string end = text.substr(last == std::string::npos ? 0 : last + 2);
    if (end.starts_with(": ")) end.erase(0, 2);
    EXPECT_TRUE(end.size() < 4 || sources.find(end) != std::string::npos) << text;
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
