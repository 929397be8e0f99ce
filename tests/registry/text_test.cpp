// Text operations: case table, fields, resources, addresses, encodings, masks.
#include <gtest/gtest.h>

#include "registry/Hashlist.h"
#include "registry/Stringhelper.h"
#include "registry/Wildcards.h"
#include "registry/Zmregistry.h"
#include "support/world.h"

namespace scrubwell {
namespace {

using namespace std::string_view_literals;

TEST(CaseTable, MapsOneUnitToOneUnitAsWindowsDoes) {
  constexpr std::pair<char16_t, char16_t> rows[] = {
      {u'a', u'A'},     {u'{', u'{'},     {0xE4, 0xC4},     {0xF7, 0xF7},  // the division sign
      {0xFF, 0x178},    {0xB5, 0xB5},     {0xDF, 0xDF},     {0x131, 0x131},   {0x17F, 0x17F},
      {0x3C2, 0x3A3},   {0x3C3, 0x3A3},   {0x451, 0x401},   {0x1E01, 0x1E00}, {0x24D0, 0x24B6},
      {0xFF41, 0xFF21}, {0xD801, 0xD801}, {0x10D0, 0x10D0},  // capitals that came later than the
                                                             // table
  };
  for (const auto& [unit, capital] : rows) {
    EXPECT_EQ(UpCase(unit), capital) << std::hex << static_cast<int>(unit);
  }
  for (std::uint32_t c = 0; c < 0x10000; ++c) {
    const char16_t up = UpCase(static_cast<char16_t>(c));
    ASSERT_EQ(UpCase(up), up) << std::hex << c;
  }
  EXPECT_LT(CompareUpCase(u"ab", u"B"), 0);
  EXPECT_GT(CompareUpCase(u"_a", u"Z"), 0) << "compared upper-cased, where _ lies behind Z";
}

TEST(Fields, CountSelectAndRemove) {
  // At last the text without the item "b".
  constexpr std::tuple<UnicodeView, char16_t, int, UnicodeView, UnicodeView> rows[] = {
      {u"", u',', 0, u"", u""},
      {u"b", u',', 1, u"", u""},
      {u"a, b ,c", u',', 3, u" b ", u"a,c"},
      {u"b,a,,B", u',', 4, u"a", u"a,"},
      {u"a,,b", u',', 3, u"", u"a,"},
      {u" b,c ", u',', 2, u"c ", u"c "},
      {u"a b c", 0, 1, u"", u"a b c"},
      {u"ab,cb", u',', 2, u"cb", u"ab,cb"},
      {u",", u',', 2, u"", u","},
  };
  for (const auto& [text, separator, count, second, removed] : rows) {
    SCOPED_TRACE(ToUtf8(text));
    EXPECT_EQ(ParamXCount(text, separator), count);
    EXPECT_EQ(ParamX(text, separator, 2), second);
    EXPECT_EQ(ParamX(text, separator, 0), u"");
    EXPECT_EQ(RemoveParamX(text, separator, u" b"), removed);
  }
}

TEST(ResourceTexts, SplitIntoFileAndNumber) {
  constexpr std::tuple<UnicodeView, bool, UnicodeView, std::uint32_t> rows[] = {
      {u"@C:\\a,b\\x.dll,-12", true, u"C:\\a,b\\x.dll", 12},
      {u"@%SystemRoot%\\x.dll,-7;v2", true, u"%SystemRoot%\\x.dll", 7},
      {u"@\"C:\\x y.dll\",-3#immutable1", true, u"C:\\x y.dll", 3},
      {u"x.dll, 5", true, u"x.dll", 5},
      {u"@x.inf,%Name%;text", false, u"", 0},
      {u"@{Pkg?ms-resource://Pkg/x}", false, u"", 0},
      {u"@x.dll,-99999999999", false, u"", 0},
      {u"@,-1", false, u"", 0},
      {u"", false, u"", 0},
  };
  for (const auto& [text, ok, wantedFile, wantedId] : rows) {
    UnicodeString file = u"before";
    std::uint32_t id = 99;
    EXPECT_EQ(ExtractResFileAndIDFromString(text, file, id), ok) << ToUtf8(text);
    EXPECT_EQ(file, wantedFile) << ToUtf8(text);
    EXPECT_EQ(id, wantedId) << ToUtf8(text);
  }
}

TEST(Paths, TakeThemApart) {
  constexpr std::tuple<UnicodeView, UnicodeView, UnicodeView, UnicodeView> rows[] = {
      {u"C:\\a.b\\c.txt", u"c.txt", u"C:\\a.b", u".txt"},
      {u"C:\\a", u"a", u"C:\\", u""},
      {u"C:\\a.b\\c", u"c", u"C:\\a.b", u""},
      {u"c.tar.gz", u"c.tar.gz", u"", u".gz"},
      {u"C:x", u"x", u"C:", u""},
  };
  for (const auto& [wantedPath, name, folder, extension] : rows) {
    EXPECT_EQ(ExtractFileName(wantedPath), name);
    EXPECT_EQ(ExtractFilePath(wantedPath), folder);
    EXPECT_EQ(ExtractFileExt(wantedPath), extension);
  }
  constexpr std::tuple<UnicodeView, UnicodeView, std::int32_t> icons[] = {
      {u"C:\\A,B\\x.dll,3", u"C:\\A,B\\x.dll", 3},
      {u"\"C:\\x y.exe\",-110", u"C:\\x y.exe", -110},
      {u"C:\\A,B\\x.dll", u"C:\\A,B\\x.dll", 0},
      {u"%1", u"%1", 0},
  };
  for (const auto& [text, wantedPath, index] : icons) {
    UnicodeString path(text);
    EXPECT_EQ(PathParseIconLocation(path), index) << ToUtf8(text);
    EXPECT_EQ(path, wantedPath);
  }
}

TEST(Addresses, BecomePaths) {
  test::World world;
  constexpr std::tuple<UnicodeView, bool, UnicodeView> rows[] = {
      {u"file:///C:/a%20b/c.txt", true, u"C:\\a b\\c.txt"},
      {u"FILE:///C|/x", true, u"C:\\x"},
      {u"file://server/share/x", true, u"\\\\server\\share\\x"},
      {u"file:///C:/%C3%A4.txt", true, u"C:\\\u00E4.txt"},
      {u"file:///C:/%E4.txt", true, u"C:\\\u00E4.txt"},  // not UTF-8: the ANSI page
      {u"file:///C:/100%.txt", true, u"C:\\100%.txt"},
      {u"http://x/y", false, u""},
      {u"file:", false, u""},
  };
  for (const auto& [url, ok, wantedPath] : rows) {
    UnicodeString path;
    EXPECT_EQ(PathCreateFromUrl(url, path), ok) << ToUtf8(url);
    EXPECT_EQ(path, wantedPath) << ToUtf8(url);
  }
}

TEST(Encodings, QuotedPrintableAndUtf8GoBothWays) {
  constexpr std::pair<UnicodeView, UnicodeView> rows[] = {
      {u"", u""},
      {u"Software\\a b=c!<>~", u"Software\\a=20b=3Dc!<>~"},
      {u"\u00E4\u20AC", u"=C3=A4=E2=82=AC"},
      {u"\U0001F600", u"=F0=9F=98=80"},
      {u"\x7F\x1D", u"=7F=1D"},
  };
  for (const auto& [text, encoded] : rows) {
    EXPECT_EQ(QuotedPrintableEncode(text), encoded);
    EXPECT_EQ(QuotedPrintableDecode(encoded), text);
  }
  const UnicodeString odd = {u'a', 0, 0xD800, u'b', 0xDC00};  // NUL and lone surrogates survive
  EXPECT_EQ(QuotedPrintableDecode(QuotedPrintableEncode(odd)), odd);
  EXPECT_EQ(QuotedPrintableDecode(u"=G1=4"), u"=G1=4");
  for (const std::string_view broken :
       {"\xC0\x80"sv, "\xFF"sv, "\xE2\x82"sv, "\xF5\x80\x80\x80"sv}) {
    EXPECT_EQ(FromUtf8(broken).front(), 0xFFFD);
  }
}

TEST(SmallTexts, KeepTheirRules) {
  EXPECT_EQ(RemoveAccelChar(u"&Open && c&lose&"), u"Open & close");
  EXPECT_EQ(Replace(u"aaa", u"aa", u"b"), u"ba");
  EXPECT_EQ(Replace(u"cab", u"c", u""), u"ab");
  EXPECT_EQ(Replace(u"x", u"", u"y"), u"x");
  EXPECT_EQ(FormatText(u"%s-Datei (*%s)", {u"%s", u".x"}), u"%s-Datei (*.x)");
  EXPECT_EQ(Trim(u"\x00\t a b\x1F "sv), u"a b");
  for (const UnicodeView text : {u"4a", u"", u" 1", u"-", u"2147483648"})
    EXPECT_EQ(StrToIntDef(text, 1000), 1000) << ToUtf8(text);
  EXPECT_EQ(StrToIntDef(u"409", 1000), 409);
  EXPECT_EQ(StrToIntDef(u"-2147483648", 1000), INT32_MIN);
}

TEST(Wildcards, MatchWholeTextsWithoutCase) {
  constexpr std::tuple<UnicodeView, UnicodeView, bool> rows[] = {
      {u"Outpost Pro", u"*outpost*", true},
      {u"abc", u"a?c", true},
      {u"ac", u"a?c", false},
      {u"", u"*", true},
      {u"", u"?", false},
      {u"abab", u"*ab", true},
      {u"abx", u"*ab", false},
      {u"a", u"", false},
      {u"\u00C4x", u"\u00E4**", true},
  };
  for (const auto& [text, mask, match] : rows) {
    TWildcardMatcher matcher;
    matcher.AddSearchMask(u"no such text");
    matcher.AddSearchMask(mask, 3);
    EXPECT_EQ(matcher.Match(text), match) << ToUtf8(text) << " " << ToUtf8(mask);
  }
  const UnicodeString hard(20000, u'a');
  EXPECT_FALSE(MatchesMask(hard, u"*a*a*a*a*a*a*b")) << "must not blow up";
}

TEST(HashList, ReplacesIteratesAndClears) {
  THashList list;
  int one = 1;
  int two = 2;
  list.Add(u"A", &one);
  list.Put(u"A", &two);
  list.Add(u"b", &one);
  EXPECT_EQ(list.Get(u"A"), &two);
  EXPECT_EQ(list.Get(u"B"), nullptr) << "keys compare exactly";
  EXPECT_TRUE(list.First() != nullptr && list.Next() != nullptr && list.Next() == nullptr);
  list.Clear();
  EXPECT_EQ(list.First(), nullptr);
}

}  // namespace
}  // namespace scrubwell
