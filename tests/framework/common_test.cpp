#include <gtest/gtest.h>

#include "framework/Rc_common.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

TEST(Templates, InsertData) {
  const World world(R"([HKEY_CLASSES_ROOT\txt\shell\view]
@="Plain name"
"MUIVerb"=" &Look "
[HKEY_CLASSES_ROOT\txt\shell\indirect]
@="&Default && more"
"MUIVerb"="@shell32.dll,-1"
[HKEY_CLASSES_ROOT\txt\shell\OpenAs\command]
)");
  const UnicodeString nul(u"missingfile:a\0b", 15);
  const std::tuple<UnicodeView, TStringList, UnicodeView> rows[] = {
      {u"a #x# b #y#", {u"x:1", u"y:2"}, u"a 1 b 2"},
      {u"first of two #x#", {u"x:1", u"x:2"}, u"first of two 1"},
      {u"names are exact #X#", {u"x:1"}, u"names are exact #X#"},
      {u"lone # stays", {u"x:1"}, u"lone # stays"},
      {u"#gone# and #x#", {u"x:1"}, u"#gone# and 1"},
      {u"closing mark #no#x#", {u"x:1"}, u"closing mark #no1"},
      {u"bare item: ##", {u"no colon"}, u"bare item: no colon"},
      {u"#x:unheard#", {u"x:1"}, u"1"},
      {u"not filled again #x#", {u"x:#y#", u"y:2"}, u"not filled again #y#"},
      {u"#k#", {u"k:64:HKEY_USERS\\a"}, u"HKEY_USERS\\a"},
      {u"#k:short#", {u"k:32:HKEY_USERS\\a\\b"}, u"HKU\\a\\b"},
      {u"#k:short#", {u"k:HKEY_USERSX\\a"}, u"HKEY_USERSX\\a"},
      {u"#k:lastpart# #k:nomain#", {u"k:32:HKEY_USERS\\a\\b"}, u"b a\\b"},
      {u"#k:ext#", {u"k:32:HKEY_CLASSES_ROOT\\.txt\\x"}, u".txt"},
      {u"#f:path# #f:name# #f:namenoext#", {u"f:C:\\a b\\c.d.ocx"}, u"C:\\a b c.d.ocx c.d"},
      {u"#f:path#|#f:name#|#f:namenoext#", {u"f:C:\\g\\u.exe /s"}, u"C:\\g|u.exe /s|u"},
      {u"#f:path#|#f:name#", {u"f:C:/c"}, u"|C:/c"},
      {u"#missingfile#", {u"missingfile:\"C:\\a\" \"C:\\b\""}, u"\"C:\\a\" \"C:\\b\""},
      {u"#k:regjump#", {u"k:64:HKU\\a"}, u"<a href=\"regjump:64:HKU\\a\">HKU\\a</a>"},
      {u"#k:regjump#", {u"k:HKEY_USERS"}, u"<a href=\"regjump:HK:HKEY_USERS\">HKEY_USERS</a>"},
      {u"#k:regjump#", {u"k:x"}, u"<a href=\"regjump:x:x\">x</a>"},
      // The mark of a view counts anywhere in the value.
      {u"#missingfile#", {u"missingfile:C:\\file32:x"}, u"\\file32:x"},
      {u"#missingfile#", {u"missingfile:C:\\"}, u"C:\\"},
      {u"#missingfile#", {u"missingfile:\"C:\\\""}, u"C:"},
      {u"#missingfile:name#", {u"missingfile:\"C:\\a\""}, u"a\""},
      {u"#f#", {u"f:\"C:\\a\\\""}, u"\"C:\\a\\\""},
      {u"#missingfile#", {nul}, u"a?b"},
      {u"#k:action#", {u"k:32:HKEY_CLASSES_ROOT\\txt\\shell\\view\\Command"}, u"Look"},
      {u"#k:action#", {u"k:hkey_classes_root\\txt\\shell\\indirect"}, u"Default & more"},
      {u"#k:action#", {u"k:64:HKEY_CLASSES_ROOT\\txt\\shell\\OpenAs\\command"}, u"Öffnen mit..."},
      {u"#k:action#", {u"k:32:HKEY_CLASSES_ROOT\\txt\\shell\\Own"}, u"Own"},
      {u"#k:action#", {u"k:32:HKEY_USERS\\shell\\open"}, u"HKEY_USERS\\shell\\open"},
  };
  for (const auto& [pattern, data, expected] : rows)
    EXPECT_EQ(ToUtf8(InsertData(pattern, data)), ToUtf8(expected))
        << ToUtf8(pattern) << " of " << ToUtf8(data.empty() ? u"" : data.front());
}

TEST(Locators, RegistryPlaceAndIdentification) {
  const World world;
  const std::tuple<TStringList, RootKey, UnicodeView, UnicodeView, TZmRegOptions, UnicodeView>
      rows[] = {
          {{}, RootKey::None, u"", u"", {zmregNative}, u"32:0|\"-\"|\"-\"|\"-\"|\"-\""},
          {{u"existingkey:64:HKLM\\a b\\c", u"existingvalue:x:y", u"url:http://a=b"},
           HKEY_LOCAL_MACHINE,
           u"a b\\c",
           u"x:y",
           {zmreg64Bit},
           u"64:2147483650|a=20b\\c|x:y|\"-\"|http://a=b"},
          {{u"existingkey:32:HKEY_CLASSES_ROOT\\ä", u"existingfile:32:C:\\f"},
           HKEY_CLASSES_ROOT,
           u"ä",
           u"",
           {zmreg32Bit},
           u"32:2147483648|=C3=A4|\"-\"|C:\\f|\"-\""},
      };
  for (const auto& [data, wantedRoot, wantedKey, wantedValue, wantedOpts, identification] : rows) {
    TSweepError e;
    e.Data = data;
    RootKey root{};
    UnicodeString key, value;
    TZmRegOptions opts;
    GetErrorRegValue(e, u"existingkey", u"existingvalue", root, key, value, opts);
    EXPECT_TRUE(root == wantedRoot && key == wantedKey && value == wantedValue &&
                opts == wantedOpts)
        << ToUtf8(identification);
    EXPECT_EQ(ToUtf8(Replace(BuildErrorIdentificationString(e), u"\x1D", u"|")),
              ToUtf8(identification));
  }
  // Past the last item that the caller names nothing is looked at.
  EXPECT_EQ(GetErrorStringValue({u"a:1", u"b:2"}, 0, u"b"), u"");
  EXPECT_EQ(StripLastKey(u"a\\b\\c"), u"a\\b");
  EXPECT_EQ(StripLastKey(u"a"), u"a");
  for (const auto& [name, expected] : {std::pair{u"{x}", true}, {u"{", false}, {u"", false}})
    EXPECT_EQ(IsCLSIDKey(name), expected);
}

TEST(Ignorelist, ParsesWhatItWrites) {
  const World world;
  for (const UnicodeView text : {u"", u"= \x1D ä"}) {
    ClearIgnoredProblems();
    AddIgnoredProblem(u"n", BuildIgnoredProblemData(u"32:0|x", u"one", text, text));
    const auto* p = static_cast<TIgnoredProblem*>(IgnoredProblems->Get(u"32:0|x"));
    ASSERT_NE(p, nullptr) << ToUtf8(text);
    EXPECT_TRUE(p->StoredName == u"n" && p->Text1 == u"one" && p->Text2 == text && p->Text3 == text)
        << ToUtf8(text);
  }
  ClearIgnoredProblems();
  for (const UnicodeView data : {u"", u"id|1|2|3", u"id|||one|two", u"id||||two|three"}) {
    AddIgnoredProblem(u"n", Replace(data, u"|", u"\x1D"));
    EXPECT_EQ(IgnoredProblems->Count(), 0U) << ToUtf8(data);
  }
}

TEST(Ignorelist, LoadsTheMachinesAndTheUsers) {
  const World world;
  EXPECT_EQ(IgnoredProblemsKey(), u"Software\\Scrubwell\\IgnoredProblems");
  const auto store = [](RootKey root, UnicodeView name, UnicodeView identification) {
    SetRegStringValue(root, IgnoredProblemsKey(), name,
                      BuildIgnoredProblemData(identification, u"1", u"2", u"3"), {});
  };
  store(HKEY_LOCAL_MACHINE, u"machine", u"A");
  store(HKEY_LOCAL_MACHINE, u"both", u"B");
  store(HKEY_CURRENT_USER, u"both too", u"B");
  store(HKEY_CURRENT_USER, u"user", u"C");
  for (int i = 0; i < 2; ++i) LoadIgnoredProblems();
  EXPECT_EQ(IgnoredProblems->Count(), 3U);
  ClearIgnoredProblems();
  EXPECT_EQ(IgnoredProblems->Count(), 0U);
}

TEST(Progress, RoundsEachShareHalfToEven) {
  struct Item {
    UnicodeView name;
    std::int32_t count, weight, promille;
  };
  const std::tuple<std::vector<Item>, std::int32_t, std::int32_t, std::int32_t> rows[] = {
      {{}, 0, 0, 0},
      {{{u"a", 10, 0, 1000}}, 0, 10, 10},
      {{{u"a", 1, 1, 499}}, 0, 0, 1},
      {{{u"a", 1, 1, 500}}, 0, 0, 1},
      {{{u"a", 1, 1, 501}}, 1000, 1, 1},
      {{{u"a", 3, 3, 500}, {u"b", 5, 5, 500}}, 500, 4, 8},
      // The later of two of one name is the one that moves.
      {{{u"a", 4, 10, 0}, {u"a", 6, 30, 1000}}, 750, 6, 10},
  };
  for (const auto& [items, total, done, all] : rows) {
    TProgressManager m;
    for (const Item& i : items) m.AddItem(i.name, i.count, i.weight);
    for (const Item& i : items) m.SetProgress(i.name, i.promille);
    m.SetProgress(u"unknown", 1000);
    EXPECT_EQ(m.GetTotalProgress(), total);
    EXPECT_EQ(m.GetDoneItems(), done);
    EXPECT_EQ(m.TotalItems(), all);
    m.BeginItem(u"a");
    m.EndItem(u"a");
    m.Clear();
    EXPECT_EQ(m.TotalItems() + m.GetTotalProgress() + m.GetDoneItems(), 0);
    EXPECT_EQ(m.TimingLog().size(), items.empty() ? 0U : 1U);
  }
}

}  // namespace
}  // namespace scrubwell::test
