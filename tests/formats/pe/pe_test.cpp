#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "formats/pe/pe_samples.h"
#include "registry/Stringhelper.h"

namespace scrubwell::pe {
namespace {

using enum Status;

TEST(Pe, ReadsTextsInTheBestLanguage) {
  struct Row {
    std::uint32_t id;
    std::vector<LangId> languages;
    Status status;
    UnicodeView text;
  };
  const Row kRows[] = {
      {5, {0x0407}, Ok, u"f\xFCnf"},
      {5, {0x0C07}, Ok, u"f\xFCnf"},
      {5, {0x040C}, Ok, u"five"},
      {5, {}, Ok, u"five"},
      {5, {0x0807, 0x0407}, Ok, u"foif"},
      {99, {0x0407, 0x0409}, Ok, u"drei"},
      {6, {}, Absent, u""},
      {99, {0x0407}, Ok, u"drei"},
      {111, {0x0407}, Ok, u"last"},
      {128, {0x0407}, Ok, u"\u65E5"},
      {500, {}, Absent, u""},
      {0xFFFFFFFF, {}, Absent, u""},
  };
  for (const bool wide : {false, true}) {
    const Bytes file = BuildFile(SampleTree(), wide);
    Image image;
    ASSERT_EQ(image.Open(file), Ok);
    EXPECT_EQ(image.IsWide(), wide);
    EXPECT_EQ(image.MachineType(), wide ? MachineAmd64 : MachineI386);
    for (const Row& row : kRows) {
      UnicodeString text;
      EXPECT_EQ(image.String(row.id, row.languages, text), row.status) << row.id;
      EXPECT_EQ(text, row.text) << row.id;
    }
    std::vector<LangId> languages;
    EXPECT_EQ(image.Languages(ResourceString, languages), Ok);
    EXPECT_EQ(languages, (std::vector<LangId>{0x0407, 0x0409, 0x0411, 0x0807}));
    EXPECT_EQ(image.Languages(ResourceIcon, languages), Absent);
  }
}

TEST(Pe, ReadsVersions) {
  const Bytes file = BuildFile(SampleTree(), false);
  Image image;
  ASSERT_EQ(image.Open(file), Ok);
  Version version;
  EXPECT_EQ(image.FileVersion(version), Ok);
  EXPECT_EQ(version, (Version{11, 1, 0x157C, 2}));
  constexpr std::pair<UnicodeView, UnicodeView> kTexts[] = {
      {u"companyname", u"Acme"}, {u"Odd", u"abc"}, {u"None", u""}};
  for (const auto& [name, expected] : kTexts) {
    UnicodeString text;
    EXPECT_EQ(image.VersionText(name, {}, text), expected.empty() ? Absent : Ok);
    EXPECT_EQ(text, expected);
  }
}

TEST(Pe, TellsDamageFromOtherFiles) {
  const Bytes whole = BuildFile(SampleTree(), true);
  struct Row {
    std::size_t size;
    Status open, text;
  };
  constexpr Row kRows[] = {{0, Unknown, Absent},
                           {1, Unknown, Absent},
                           {0x100, Corrupt, Absent},
                           {0x400, Corrupt, Absent},
                           {0x420, Ok, Corrupt}};
  for (const Row& row : kRows) {
    Image image;
    UnicodeString text;
    EXPECT_EQ(image.Open(std::span(whole).first(row.size)), row.open) << row.size;
    EXPECT_EQ(image.String(5, {}, text), row.text) << row.size;
  }
}

TEST(Pe, NamesSatellites) {
  constexpr UnicodeView kLanguages[] = {u"de-DE", u"en-US"};
  EXPECT_EQ(SatellitePaths(u"C:\\x\\a.dll", kLanguages),
            (TStringList{u"C:\\x\\de-DE\\a.dll.mui", u"C:\\x\\en-US\\a.dll.mui"}));
}

}  // namespace
}  // namespace scrubwell::pe
