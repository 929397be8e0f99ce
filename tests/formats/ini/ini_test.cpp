#include "formats/ini/ini.h"

#include <gtest/gtest.h>

#include "registry/Stringhelper.h"

namespace scrubwell::ini {
namespace {

using enum Status;

/// Latin-1 stands for an ANSI page: what it lacks becomes "?".
Codec Latin1() {
  return {[](std::string_view bytes) {
            UnicodeString out;
            for (const char byte : bytes) out.push_back(static_cast<unsigned char>(byte));
            return out;
          },
          [](UnicodeView text) {
            std::string out;
            for (const char16_t unit : text) out.push_back(unit < 0x100 ? char(unit) : '?');
            return out;
          }};
}

Bytes ToBytes(std::string_view text) {
  return {text.begin(), text.end()};
}

Bytes Utf16File(UnicodeView text) {
  Bytes out{0xFF, 0xFE};
  for (const char16_t unit : text) {
    out.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    out.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  return out;
}

Document Parsed(const Bytes& data) {
  Document document;
  EXPECT_EQ(document.Parse(data, Latin1()), Ok);
  EXPECT_EQ(document.Bytes(), data);
  return document;
}

TEST(Ini, ReadsAsWindowsDoes) {
  constexpr std::string_view kFile =
      "early=1\r\n  [Windows] rest\r\n;run=no\r\n  Run = a ; b # c \r\nLoad=\"a b\"\nQ='x\"\n"
      "run=second\nflag\n=nameless\n k\xE4y =v\xF6\r[other]\rempty=\r[WINDOWS]\nlate=1\n[open\nx=1";
  const struct {
    UnicodeView section, key;
    Status status;
    UnicodeView value;
  } kRows[] = {
      {u"windows", u"RUN", Ok, u"a ; b # c"}, {u"windows", u"load", Ok, u"a b"},
      {u"windows", u"q", Ok, u"'x\""},        {u"windows", u"K\u00C4Y", Ok, u"v\u00F6"},
      {u"windows", u"flag", Absent, u""},     {u"windows", u";run", Absent, u""},
      {u"windows", u"late", Absent, u""},     {u"windows", u"early", Absent, u""},
      {u"other", u"empty", Ok, u""},          {u"other", u"x", Absent, u""},
      {u"none", u"run", Absent, u""},
  };
  const Document document = Parsed(ToBytes(kFile));
  for (const auto& row : kRows) {
    UnicodeString value;
    EXPECT_EQ(document.Get(row.section, row.key, value), row.status) << ToUtf8(row.key);
    EXPECT_EQ(value, row.value) << ToUtf8(row.key);
  }
  TStringList names;
  EXPECT_EQ(document.Entries(u"WINDOWS", names), Ok);
  EXPECT_EQ(names, (TStringList{u"Run", u"Load", u"Q", u"k\u00E4y"}));
}

TEST(Ini, ChangesNothingButWhatIsNamed) {
  const struct {
    std::string_view before;
    UnicodeView section, key;
    const char16_t* value;  ///< null removes
    Status status;
    std::string_view after;
  } kRows[] = {
      {"[a]\r\n k =  \"old\"  \r\nz=1", u"A", u"K", u"new", Ok, "[a]\r\n k =  new  \r\nz=1"},
      {"[a]\nk=old", u"a", u"k", u"", Ok, "[a]\nk="},
      {"[a]\nk=  \nz=1\n", u"a", u"k", u"v", Ok, "[a]\nk=v  \nz=1\n"},
      {"[a]\nk=1\nk=2\n", u"a", u"k", nullptr, Ok, "[a]\nk=2\n"},
      {"[a]\r\n;c\r\nk=1", u"a", u"k", nullptr, Ok, "[a]\r\n;c\r\n"},
      {"[a]\nx=1\n;end\n\n \n[b]\n", u"a", u"k", u"v", Ok, "[a]\nx=1\n;end\nk=v\n\n \n[b]\n"},
      {"[a]\r\n[b]", u"b", u"k", u"v", Ok, "[a]\r\n[b]\r\nk=v"},
      {"[a]\r[b]\r", u"a", u"k", u"v", Ok, "[a]\rk=v\r[b]\r"},
      {"[a]\nx=1\r\n\r\n", u"a", u"k", u"v", Ok, "[a]\nx=1\r\nk=v\r\n\r\n"},
      {"[a]\nx=1", u"n", u"k", u"v", Ok, "[a]\nx=1\n[n]\nk=v"},
      {"", u"n", u"k", u"v", Ok, "[n]\r\nk=v\r\n"},
      {"\xEF\xBB\xBF[a]\nk=1\n", u"a", u"k", u"v", Ok, "\xEF\xBB\xBF[a]\nk=1\n[a]\nk=v\n"},
      {"[a]\nk=\xE4\n", u"a", u"k", u"\u00FC", Ok, "[a]\nk=\xFC\n"},
      {"[a]\nk=1\n", u"a", u"k", u"\u0416", Denied, "[a]\nk=1\n"},
      {"[a]\nk=1\n", u"a", u"k", u"1\nz=2", Denied, "[a]\nk=1\n"},
      {"[a]\nk=1\n", u"a", u"x=y", u"1", Denied, "[a]\nk=1\n"},
      {"[a]\nk=1\n", u"a", u"z", nullptr, Absent, "[a]\nk=1\n"},
  };
  for (const auto& row : kRows) {
    Document document = Parsed(ToBytes(row.before));
    const Status status = row.value == nullptr ? document.Remove(row.section, row.key)
                                               : document.Set(row.section, row.key, row.value);
    EXPECT_EQ(status, row.status) << row.before;
    EXPECT_EQ(document.Bytes(), ToBytes(row.after)) << row.before;
  }
}

TEST(Ini, KeepsTheFormOfTheFile) {
  Document wide = Parsed(Utf16File(u"[\u0416]\r\nk=\u65E5\xD800\r\nz=\r\n"));
  UnicodeString value;
  EXPECT_EQ(wide.Get(u"\u0436", u"K", value), Ok);
  EXPECT_EQ(value, u"\u65E5\xD800");
  EXPECT_EQ(wide.Set(u"\u0436", u"z", u"\u0416"), Ok);
  EXPECT_EQ(wide.Bytes(), Utf16File(u"[\u0416]\r\nk=\u65E5\xD800\r\nz=\u0416\r\n"));

  Bytes cut = Utf16File(u"[a]\nk=1\n");
  cut.push_back('x');
  Document half = Parsed(cut);
  EXPECT_EQ(half.Remove(u"a", u"k"), Ok);
  Bytes expected = Utf16File(u"[a]\n");
  expected.push_back('x');
  EXPECT_EQ(half.Bytes(), expected);

  using namespace std::string_view_literals;
  Document withNul = Parsed(ToBytes("[a]\n\0k=1\nz=2\0 \n"sv));
  EXPECT_EQ(withNul.Get(u"a", u"z", value), Ok);
  EXPECT_EQ(value, u"2\0"sv);

  Document refused;
  EXPECT_EQ(refused.Parse({0xFE, 0xFF, 0, '['}, Latin1()), Unknown);
  EXPECT_EQ(refused.Parse(Bytes(kMaxFileSize + 1, '\n'), Latin1()), Corrupt);
}

}  // namespace
}  // namespace scrubwell::ini
