#include <gtest/gtest.h>

#include <algorithm>

#include "formats/reg/reg_text.h"
#include "registry/Stringhelper.h"

namespace scrubwell::reg {

namespace {

// The document in another form, to compare with.
std::string Show(const Document& document) {
  if (!document.Ok()) return std::to_string(document.errorLine) + ": " + document.error;
  std::string out;
  for (const KeyEntry& key : document.keys) {
    out += (key.remove ? "-" : "+") + ToUtf8(key.path) + ";";
    for (const ValueEntry& entry : key.values)
      out += entry.remove ? "-" + ToUtf8(entry.value.name) + ";"
                          : ToUtf8(FormatValue(entry.value)) + ";";
  }
  return out;
}

struct Case {
  const char* name;
  std::string text, shown;
};

const std::string kHead = "Windows Registry Editor Version 5.00\r\n\r\n";

const Case kCases[] = {
    {"kinds",
     kHead + "[K]\r\n@=\"d\"\r\n\"n\"=dword:1F\r\n\"b\"=hex:0,ff\r\n\"q\"=hex(b):01,02\r\n",
     "+K;@=\"d\";\"n\"=dword:0000001f;\"b\"=hex:00,ff;\"q\"=hex(b):01,02;"},
    {"removals", kHead + "[-K\\a]\n[L]\n\"x\"=-\n@=-\n", "-K\\a;+L;-x;-;"},
    {"escapes", kHead + "[K]\n\"a\\\\b\\\"c\"=\"C:\\\\x \\\"y\\\"\"\n",
     "+K;\"a\\\\b\\\"c\"=\"C:\\\\x \\\"y\\\"\";"},
    {"continued lines", kHead + "[K]\n\"b\"=hex(2):01,\\\r\n  02,\\\n03\n\"c\"=\"x\"",
     "+K;\"b\"=hex(2):01,02,03;\"c\"=\"x\";"},
    {"comments and blanks", kHead + "; a\n [K]  \n;b\n \"n\" = dword:00000001 ; one\n",
     "+K;\"n\"=dword:00000001;"},
    {"no data", kHead + "[K]\n\"b\"=hex:\n\"t\"=hex(2):\n", "+K;\"b\"=hex:;\"t\"=hex(2):;"},
    {"brackets in names", kHead + "[K\\a]b[]\n", "+K\\a]b[;"},
    {"old form widens texts", "REGEDIT4\n[K]\n\"e\"=hex(2):41,e4,00\n\"b\"=hex:41\n",
     "+K;\"e\"=hex(2):41,00,e4,00,00,00;\"b\"=hex:41;"},
    {"a text over lines", kHead + "[K]\n\"a\"=\"one\ntwo\"\n", "+K;\"a\"=\"one\ntwo\";"},
    {"UTF-8 with its mark", "\xEF\xBB\xBF" + kHead + "[K\\\xC3\xA4]\n", "+K\\\xC3\xA4;"},
    {"UTF-16", EncodeUtf16(FromUtf8(kHead + "[\xE2\x82\xAC]\n\"\xF0\x9F\x98\x80\"=\"x\"\n")),
     "+\xE2\x82\xAC;\"\xF0\x9F\x98\x80\"=\"x\";"},
    {"no first line", "[K]\n", "1: not a registry text: the first line is missing"},
    {"empty", "", "1: not a registry text: the first line is missing"},
    {"a value too early", kHead + "\"a\"=\"b\"\n", "3: a value before the first key"},
    {"open bracket", kHead + "[K\n", "3: a key without its closing bracket"},
    {"no name", kHead + "[]\n", "3: a key without a name"},
    {"open quotation", kHead + "[K]\n\"a\n", "5: a text without its closing quotation mark"},
    {"no equals sign", kHead + "[K]\n\"a\"\n", "4: a value without an equals sign"},
    {"long number", kHead + "[K]\n\"a\"=dword:123456789\n", "4: a number that is none"},
    {"long byte", kHead + "[K]\n\n\"a\"=hex:00,100\n", "5: a byte that is none"},
    {"end in bytes", kHead + "[K]\n\"a\"=hex:00,", "4: a byte that is none"},
    {"hand-written forms need leave", kHead + "[K]\n\"a\"=expand:\"x\"\n",
     "4: a kind of data that is not known"},
    {"garbage behind", kHead + "[K]\n\"a\"=\"b\" c\n", "4: unexpected text behind the value"},
    {"garbage", kHead + "K\n", "3: neither a key nor a value"},
};

}  // namespace

TEST(RegText, Parses) {
  for (const Case& test : kCases) EXPECT_EQ(Show(Parse(test.text)), test.shown) << test.name;
  EXPECT_EQ(Show(Parse("[K]\n\"e\"=expand:\"A\"\n\"m\"=multi:\"A\",\"B\"\n\"n\"=multi:\n",
                       {.needsHeader = false})),
            "+K;\"e\"=hex(2):41,00,00,00;\"m\"=hex(7):41,00,00,00,42,00,00,00,00,00;"
            "\"n\"=hex(7):00,00;");
}

TEST(RegText, ReadsBackWhatItWrites) {
  std::vector<KeyEntry> keys(2);
  keys[0].path = u"HKEY_USERS\\a]b\x00e4";
  for (const std::uint32_t type : {0U, 1U, 2U, 3U, 4U, 7U, 11U, 0xFFFF0001U})
    for (const Bytes& data : {Bytes{}, Bytes{65}, Bytes{65, 0}, Bytes{65, 0, 0, 0},
                              Bytes{0, 0, 65, 0, 0, 0}, Bytes{1, 2, 3, 4}})
      keys[0].values.push_back(
          {{u"v\\\"" + IntToStr(static_cast<std::int64_t>(keys[0].values.size())), type, data},
           false});
  keys[0].values.push_back({{u"gone", 0, {}}, true});
  keys[0].values.push_back({{u"lone \xD800 and \x0001", REGT_DWORD, {1, 0, 0, 0}}, false});
  keys[1].path = u"HKEY_USERS\\b";
  keys[1].remove = true;
  const Document back = Parse(EncodeUtf16(Format(keys)));
  ASSERT_EQ(back.keys.size(), keys.size()) << back.error;
  const auto same = [](const ValueEntry& a, const ValueEntry& b) {
    return a.value == b.value && a.remove == b.remove;
  };
  for (std::size_t i = 0; i < keys.size(); ++i) {
    EXPECT_EQ(back.keys[i].path, keys[i].path);
    EXPECT_EQ(back.keys[i].remove, keys[i].remove);
    EXPECT_TRUE(std::ranges::equal(back.keys[i].values, keys[i].values, same)) << Show(back);
  }
}

}  // namespace scrubwell::reg
