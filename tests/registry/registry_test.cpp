// Registry operations over a small world, and what each answers when it can't tell.
#include <gtest/gtest.h>

#include <algorithm>

#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"
#include "support/world.h"

namespace scrubwell {
namespace {

using test::World;

constexpr TZmRegOptions k32{zmreg32Bit};
constexpr TZmRegOptions k64{zmreg64Bit};
constexpr TZmRegOptions kNative{zmregNative};

constexpr std::string_view kRegistry = R"reg(
[HKEY_LOCAL_MACHINE\SOFTWARE\T\Empty]
[HKEY_LOCAL_MACHINE\SOFTWARE\T\EmptyDefault]
@=""
[HKEY_LOCAL_MACHINE\SOFTWARE\T\Default]
@="x"
[HKEY_LOCAL_MACHINE\SOFTWARE\T\NumberDefault]
@=dword:0
[HKEY_LOCAL_MACHINE\SOFTWARE\T\EmptyNamed]
"a"=""
[HKEY_LOCAL_MACHINE\SOFTWARE\T\Parent\Child]
[HKEY_LOCAL_MACHINE\SOFTWARE\T\Values]
"sz"="text"
"cut"=hex(1):61,00,62,00,63
"nul"=hex(1):61,00,00,00,62,00
"expand"=hex(2):25,00,41,00,25,00,00,00
"multi"=hex(7):61,00,00,00,62,00,00,00,00,00
"dword"=dword:80000001
"short"=hex(4):01,00
"big"=hex(5):00,00,01,00
"qword"=hex(b):01,00,00,00,00,00,00,80
"binary text"=hex:41,00,62,00
"binary"=hex:01,00,00,00
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\T\Narrow]
[HKEY_CURRENT_USER\Software\U]
)reg";

TEST(Registry, TellsEmptyFromContent) {
  World world(kRegistry);
  constexpr std::tuple<UnicodeView, bool, bool, bool, int> rows[] = {
      {u"Empty", true, true, false, 0},        {u"EmptyDefault", true, false, false, 1},
      {u"Default", false, false, false, 1},    {u"NumberDefault", false, false, false, 1},
      {u"EmptyNamed", false, false, false, 1}, {u"Parent", false, false, true, 0},
      {u"Missing", false, false, false, 2},
  };
  for (const auto& [name, emptyEx, emptyExEx, hasKeys, hasValues] : rows) {
    const UnicodeString key = u"SOFTWARE\\T\\" + UnicodeString(name);
    SCOPED_TRACE(ToUtf8(key));
    EXPECT_EQ(KeyEmptyEx(HKEY_LOCAL_MACHINE, key, k64), emptyEx);
    EXPECT_EQ(KeyEmptyExEx(HKEY_LOCAL_MACHINE, key.c_str(), k64), emptyExEx);
    EXPECT_EQ(HasSubKeys(HKEY_LOCAL_MACHINE, key, k64), hasKeys);
    EXPECT_EQ(HasValuesEx(HKEY_LOCAL_MACHINE, key, k64), hasValues);
    EXPECT_EQ(KeyExist(HKEY_LOCAL_MACHINE, key, k64, false), hasValues != 2);
  }
}

TEST(Registry, GivesDataAsText) {
  World world(kRegistry);
  constexpr UnicodeView key = u"SOFTWARE\\T\\Values";
  const std::pair<UnicodeView, UnicodeView> rows[] = {
      {u"sz", u"text"},    {u"cut", u"ab"},         {u"nul", u"a"},
      {u"expand", u"%A%"}, {u"multi", u"a\nb"},     {u"dword", u"2147483649"},
      {u"short", u""},     {u"big", u"256"},        {u"qword", u"9223372036854775809"},
      {u"binary", u""},    {u"binary text", u"Ab"},
  };
  TStringList names = {u"old"};
  TStringList data = {u"old", u"older"};
  EnumRegValuesEx(HKEY_LOCAL_MACHINE, key, names, data, k64);
  ASSERT_EQ(data.size(), std::size(rows));
  for (const auto& [name, text] : rows) {
    const auto at = std::ranges::find(names, UnicodeString(name)) - names.begin();
    EXPECT_EQ(data.at(static_cast<std::size_t>(at)), text) << ToUtf8(name);
  }
  UnicodeString text;
  EXPECT_EQ(GetRegStringValue(HKEY_LOCAL_MACHINE, key, u"expand", text, k64), 0);
  EXPECT_EQ(text, u"%A%") << "the text as stored";
  EXPECT_EQ(GetRegStringValue(HKEY_LOCAL_MACHINE, key, u"dword", text, k64), ERRC_UNSUPPORTED_TYPE);
  EXPECT_EQ(GetRegStringValue(HKEY_LOCAL_MACHINE, key, u"none", text, k64), ERRC_FILE_NOT_FOUND);
  EXPECT_EQ(text, u"");
  EXPECT_EQ(GetRegStringValueDef(HKEY_LOCAL_MACHINE, key, u"none", u"else", k64), u"else");
  std::uint32_t number = 7;
  EXPECT_EQ(GetRegDWORDValue(HKEY_LOCAL_MACHINE, key, u"big", number, k64), 0);
  EXPECT_EQ(number, 256U);
  EXPECT_NE(GetRegDWORDValue(HKEY_LOCAL_MACHINE, key, u"short", number, k64), 0);
  EXPECT_EQ(number, 0U);
}

TEST(Registry, SplitsFullPathsAndSaysWhereTheKeyIs) {
  World world(kRegistry);
  const std::tuple<UnicodeView, bool, TZmRegOptions> rows[] = {
      {u"HKLM\\Software\\T\\Narrow", true, {}},
      {u"hkey_local_machine\\software\\t\\empty", true, k64},
      {u"HKLM\\Software\\T\\None", false, {}},
      {u"HKEY_NOWHERE\\Software", false, {}},
      {u"", false, {}},
      {u"HKCU\\Software\\U", true, {}},
  };
  for (const auto& [path, found, wantedOpts] : rows) {
    RootKey root{};
    UnicodeString key;
    TZmRegOptions opts;
    EXPECT_EQ(GetRegKeyFromString(path, root, key, opts), found) << ToUtf8(path);
    EXPECT_EQ(opts, wantedOpts) << ToUtf8(path);
  }
  EXPECT_EQ(RegKeyToStr(HKEY_USERS, u"a\\b", true), u"HKU\\a\\b");
  EXPECT_EQ(RegKeyToStr(HKEY_CURRENT_CONFIG, u"", false), u"HKEY_CURRENT_CONFIG");
  EXPECT_EQ(GetMainKeyFromString(u"HKDD"), HKEY_DYN_DATA);
  EXPECT_EQ(GetMainKeyFromString(u""), RootKey::None);
}

TEST(Registry, ViewsAreChosenByTheOptions) {
  World world(kRegistry);
  constexpr UnicodeView narrow = u"Software\\T\\Narrow";
  EXPECT_TRUE(KeyExist(HKEY_LOCAL_MACHINE, narrow, k32, false));
  EXPECT_TRUE(KeyExist(HKEY_LOCAL_MACHINE, narrow, kNative, false));
  EXPECT_TRUE(KeyExist(HKEY_LOCAL_MACHINE, narrow, {}, false));
  EXPECT_FALSE(KeyExist(HKEY_LOCAL_MACHINE, narrow, k64, false));
  EXPECT_FALSE(KeyExist(HKEY_LOCAL_MACHINE, narrow, {zmreg64Bit, zmregOption4}, false));
  // Both views at once name no key; nobody may conclude that one is missing.
  EXPECT_TRUE(KeyExist(HKEY_LOCAL_MACHINE, narrow, {zmreg64Bit, zmreg32Bit}, false));
  EXPECT_EQ(GetSubKeyCount(HKEY_LOCAL_MACHINE, u"Software\\T", k64), 7);
}

TEST(Registry, WritesAndDeletes) {
  World world(kRegistry);
  constexpr UnicodeView values = u"Software\\T\\Values";
  SetRegStringValue(HKEY_LOCAL_MACHINE, values, u"expand", u"%B%", k64);
  SetRegDWORDValue(HKEY_LOCAL_MACHINE, u"Software\\T\\New", u"n", 0x01020304, k64);
  RegValue value;
  ASSERT_EQ(
      Platform().registry.GetValue({HKEY_LOCAL_MACHINE, values, View::Bits64}, u"expand", value),
      Status::Ok);
  EXPECT_EQ(value.type, REGT_EXPAND_SZ) << "an expandable text stays one";
  EXPECT_EQ(GetRegStringValueDef(HKEY_LOCAL_MACHINE, values, u"expand", {}, k64), u"%B%");
  std::uint32_t number = 0;
  GetRegDWORDValue(HKEY_LOCAL_MACHINE, u"Software\\T\\New", u"n", number, k64);
  EXPECT_EQ(number, 0x01020304U);
  EXPECT_EQ(DeleteRegValue(HKEY_LOCAL_MACHINE, u"Software\\T\\Default", u"", k64), 0);
  EXPECT_FALSE(RegValueExists(HKEY_LOCAL_MACHINE, u"Software\\T\\Default", u"", k64));
  EXPECT_EQ(DeleteRegKey(HKEY_LOCAL_MACHINE, u"", k64), ERRC_INVALID_PARAMETER);
  EXPECT_EQ(DeleteRegKey(HKEY_LOCAL_MACHINE, u"Software\\T", k64), 0);
  EXPECT_EQ(DeleteRegKey(HKEY_LOCAL_MACHINE, u"Software\\T", k64), ERRC_FILE_NOT_FOUND);
  EXPECT_TRUE(KeyExist(HKEY_LOCAL_MACHINE, u"Software\\T\\Narrow", k32, false))
      << "the other view stays";
}

// Each question about a key whose place can't be read is answered so that nothing gets reported
// missing or empty, and nothing gets deleted.
TEST(Registry, UnreadableMeansNeitherMissingNorEmpty) {
  for (const Status fault : {Status::Denied, Status::Corrupt, Status::Unknown}) {
    World world(kRegistry);
    world.Backend().Faults().FailPath(u"SOFTWARE\\T\\Empty", fault);
    constexpr UnicodeView key = u"Software\\T\\Empty";
    EXPECT_TRUE(KeyExist(HKEY_LOCAL_MACHINE, key, k64, false));
    EXPECT_TRUE(HasSubKeys(HKEY_LOCAL_MACHINE, key, k64));
    EXPECT_TRUE(HasValues(HKEY_LOCAL_MACHINE, key, k64));
    EXPECT_EQ(HasValuesEx(HKEY_LOCAL_MACHINE, key, k64), 2);
    EXPECT_FALSE(KeyEmptyEx(HKEY_LOCAL_MACHINE, key, k64));
    EXPECT_FALSE(KeyEmptyExEx(HKEY_LOCAL_MACHINE, key, k64));
    EXPECT_TRUE(RegValueExists(HKEY_LOCAL_MACHINE, key, u"x", k64));
    EXPECT_FALSE(KeyIsDeletable(HKEY_LOCAL_MACHINE, key, k64, false));
    EXPECT_NE(DeleteRegKey(HKEY_LOCAL_MACHINE, key, k64), 0);
    RootKey root{};
    UnicodeString path;
    TZmRegOptions opts;
    EXPECT_TRUE(GetRegKeyFromString(u"HKLM\\Software\\T\\Empty", root, path, opts));
  }
}

}  // namespace
}  // namespace scrubwell
