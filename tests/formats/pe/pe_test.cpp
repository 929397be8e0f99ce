#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "formats/pe/pe_samples.h"
#include "registry/Stringhelper.h"

namespace scrubwell::pe {
namespace {

using enum Status;

TEST(Pe, ReadsTextsInTheBestLanguage) {
  const struct {
    std::uint32_t id;
    std::vector<LangId> languages;
    UnicodeView text;  ///< empty: there is none
  } kRows[] = {
      {5, {0x0407}, u"f\xFCnf"},
      {5, {0x0C07}, u"f\xFCnf"},
      {5, {0x040C}, u"five"},
      {5, {}, u"five"},
      {5, {0x0807, 0x0407}, u"foif"},
      {5, {0x0C07, 0x0409, 0x0407, 0x0807}, u"five"},
      {99, {0x0407}, u"drei"},
      {99, {0x0407, 0x0409}, u"drei"},
      {111, {0x0407}, u"last"},
      {128, {0x0407}, u"\u65E5"},
      {6, {}, u""},
      {500, {}, u""},
      {0xFFFFFFFF, {}, u""},
  };
  for (const bool wide : {false, true}) {
    const Bytes file = BuildFile(SampleTree(), wide);
    Image image;
    ASSERT_EQ(image.Open(file), Ok);
    EXPECT_EQ(image.IsWide(), wide);
    EXPECT_EQ(image.MachineType(), wide ? MachineAmd64 : MachineI386);
    for (const auto& row : kRows) {
      UnicodeString text;
      EXPECT_EQ(image.String(row.id, row.languages, text), row.text.empty() ? Absent : Ok)
          << row.id;
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
  const std::tuple<std::size_t, Status, Status> kRows[] = {
      {1, Unknown, Absent}, {0x400, Corrupt, Absent}, {0x420, Ok, Corrupt}};
  for (const auto& [size, open, read] : kRows) {
    Image image;
    UnicodeString text;
    EXPECT_EQ(image.Open(std::span(whole).first(size)), open) << size;
    EXPECT_EQ(image.String(5, {}, text), read) << size;
  }
}

TEST(Pe, NamesSatellites) {
  constexpr UnicodeView kLanguages[] = {u"de-DE", u"en-US"};
  EXPECT_EQ(SatellitePaths(u"C:\\x\\a.dll", kLanguages),
            (TStringList{u"C:\\x\\de-DE\\a.dll.mui", u"C:\\x\\en-US\\a.dll.mui"}));
}

}  // namespace
}  // namespace scrubwell::pe
