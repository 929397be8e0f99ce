#include <algorithm>

#include "backends/windows/win32.h"
#include "registry/Stringhelper.h"
#include "scratch.h"

namespace scrubwell::test {
namespace {

using namespace std::string_literals;

constexpr const char* kPlanted[] = {
    "HKLM\\SOFTWARE\\ScrubTest", "HKLM\\SOFTWARE\\Wow6432Node\\ScrubTest",
    "HKLM\\SOFTWARE\\Classes\\.scrubtest", "HKCU\\Software\\Classes\\.scrubtest"};

// What every backend must answer is asked by the shared contract; here is what only this one can.
class LiveRegistry : public testing::Test {
 protected:
  void SetUp() override {
    Clear();
    for (const char* line :
         {"set 64 HKLM\\SOFTWARE\\ScrubTest\\Tool > Name=64",
          "create 64 HKLM\\SOFTWARE\\ScrubTest\\Tool\\Sub", "create 32 HKLM\\SOFTWARE\\ScrubTest",
          "set 64 HKLM\\SOFTWARE\\Classes\\.scrubtest > =machine",
          "set 64 HKCU\\Software\\Classes\\.scrubtest > =user"})
      ASSERT_EQ(Ask(registry_, line), "Ok") << line;
  }
  void TearDown() override { Clear(); }
  void Clear() {
    for (const std::string place : kPlanted) Ask(registry_, "force 64 " + place);
  }
  static KeyRef Scratch(UnicodeView below = {}) {
    static UnicodeString path;
    path = u"SOFTWARE\\ScrubTest";
    if (!below.empty()) (path += u'\\') += below;
    return {RootKey::LocalMachine, path, View::Bits64};
  }

  WindowsBackend backend_{MayChange()};
  IRegistry& registry_ = backend_.Platform().registry;
};

TEST_F(LiveRegistry, ThirtyTwoBitPartsAreNotListed) {
  TStringList names;
  const KeyRef software{RootKey::LocalMachine, u"SOFTWARE", View::Bits64};
  ASSERT_EQ(registry_.EnumKeys(software, names), Status::Ok);
  EXPECT_EQ(std::ranges::count(names, u"ScrubTest"), 1);
  EXPECT_TRUE(std::ranges::none_of(names, [](auto& n) { return SameText(n, u"Wow6432Node"); }));
}

TEST_F(LiveRegistry, Deletes) {
  const AskRow rows[] = {
      {"drop 64 HKCR\\.scrubtest > ", "Ok"},
      {"drop 32 HKCR\\.scrubtest > ", "Absent"},
      {"force 64 HKLM\\SOFTWARE", "Denied"},
      {"force 64 HKLM\\SYSTEM", "Denied"},
  };
  CheckRows(registry_, rows);
  backend_.ForgetDeletions();
  EXPECT_EQ(Ask(registry_, "drop 64 HKCR\\.scrubtest > "), "Ok");
}

TEST_F(LiveRegistry, ChangesNothingUnlessLet) {
  WindowsBackend reader{WindowsOptions{}};
  for (const char* verb : {"delete", "force", "create", "set", "drop"}) {
    const std::string query =
        verb + " 64 HKLM\\SOFTWARE\\ScrubTest\\Tool > Name"s + (verb == "set"s ? "=x" : "");
    EXPECT_EQ(Ask(reader.Platform().registry, query), "Denied") << query;
  }
  EXPECT_EQ(Ask(registry_, "open 64 HKLM\\SOFTWARE\\ScrubTest\\Tool"), "1 1");
}

// Names with a NUL can be neither opened nor deleted through the functions that end there.
TEST_F(LiveRegistry, NamesWithNul) {
  const UnicodeString odd = u"Odd\0Name"s;
  RegValue value{u"v\0w"s, REGT_SZ, {u'x', 0, 0, 0}};
  ASSERT_EQ(registry_.CreateKey(Scratch(odd + u"\\Below")), Status::Ok);
  ASSERT_EQ(registry_.SetValue(Scratch(odd), value), Status::Ok);
  TStringList names;
  ASSERT_EQ(registry_.EnumKeys(Scratch(), names), Status::Ok);
  EXPECT_EQ(names, (TStringList{odd, u"Tool"}));
  std::vector<RegValue> values;
  ASSERT_EQ(registry_.EnumValues(Scratch(odd), values), Status::Ok);
  EXPECT_EQ(values, std::vector{value});
  RegValue read;
  EXPECT_EQ(registry_.GetValue(Scratch(odd), u"v", read), Status::Absent);
  EXPECT_EQ(registry_.GetValue(Scratch(odd), value.name, read), Status::Ok);
  EXPECT_EQ(read, value);
  EXPECT_EQ(registry_.CheckAccess(Scratch(odd), Access::Delete), Status::Ok);
  EXPECT_EQ(registry_.CheckAccess(Scratch(u"Odd"), Access::Delete), Status::Absent);
  EXPECT_EQ(registry_.DeleteValue(Scratch(odd), value.name), Status::Ok);
  EXPECT_EQ(registry_.GetValue(Scratch(odd), value.name, read), Status::Absent);
  EXPECT_EQ(registry_.DeleteKey(Scratch(odd), false), Status::Ok);
  EXPECT_EQ(Ask(registry_, "keys 64 HKLM\\SOFTWARE\\ScrubTest"), "Tool");
  ASSERT_EQ(registry_.CreateKey(Scratch(odd + u"\\Below")), Status::Ok);
  EXPECT_EQ(Ask(registry_, "delete 64 HKLM\\SOFTWARE\\ScrubTest"), "Ok");
  EXPECT_EQ(Ask(registry_, "open 64 HKLM\\SOFTWARE\\ScrubTest"), "Absent");
}

TEST_F(LiveRegistry, HugeValuesAndEnumerationsWithoutEnd) {
  RegValue huge{u"huge", REGT_BINARY, Bytes(3U << 20U, 0x5A)};
  huge.data[huge.data.size() - 1] = 1;
  ASSERT_EQ(registry_.SetValue(Scratch(u"Big"), huge), Status::Ok);
  RegValue read;
  EXPECT_EQ(registry_.GetValue(Scratch(u"Big"), u"huge", read), Status::Ok);
  EXPECT_TRUE(read == huge);
  std::vector<RegValue> values;
  EXPECT_EQ(registry_.EnumValues(Scratch(u"Big"), values), Status::Ok);
  EXPECT_TRUE(values == std::vector{huge});
  const KeyRef perflib{RootKey::LocalMachine,
                       u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Perflib\\009",
                       View::Native};
  registry_.EnumValues(perflib, values);  // comes back, whatever the answer
}

bool HoldsPrivilege(const wchar_t* name) {
  PRIVILEGE_SET set{1, PRIVILEGE_SET_ALL_NECESSARY, {}};
  HANDLE token = nullptr;
  BOOL held = FALSE;
  OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
  LookupPrivilegeValueW(nullptr, name, &set.Privilege[0].Luid);
  PrivilegeCheck(token, &set, &held);
  CloseHandle(token);
  return held != FALSE;
}

// A key below denies everything: nothing of the tree goes, until it is forced. It stays the user's
// own, for not every system lets an owner be replaced.
TEST_F(LiveRegistry, Rights) {
  const bool before = HoldsPrivilege(SE_TAKE_OWNERSHIP_NAME);
  SetRights(HKEY_LOCAL_MACHINE, L"SOFTWARE\\ScrubTest\\Tool\\Sub", L"D:P(D;;KA;;;WD)");
  const AskRow rows[] = {
      {"candelete 64 HKLM\\SOFTWARE\\ScrubTest\\Tool", "Ok"},
      {"canwrite 64 HKLM\\SOFTWARE\\ScrubTest\\Tool\\Sub", "Denied"},
      {"open 64 HKLM\\SOFTWARE\\ScrubTest\\Tool\\Sub", "Denied"},
      {"delete 64 HKLM\\SOFTWARE\\ScrubTest\\Tool\\Sub", "Denied"},
      {"set 64 HKLM\\SOFTWARE\\ScrubTest\\Tool\\Sub > x=y", "Denied"},
      {"delete 64 HKLM\\SOFTWARE\\ScrubTest\\Tool", "Denied"},
      {"open 64 HKLM\\SOFTWARE\\ScrubTest\\Tool", "1 1"},
      {"force 64 HKLM\\SOFTWARE\\ScrubTest\\Tool", "Ok"},
      {"open 64 HKLM\\SOFTWARE\\ScrubTest\\Tool", "Absent"},
  };
  CheckRows(registry_, rows);
  EXPECT_EQ(HoldsPrivilege(SE_TAKE_OWNERSHIP_NAME), before);
}

std::size_t KeysBelow(IRegistry& registry, const UnicodeString& path) {
  TStringList names;
  if (registry.EnumKeys({RootKey::LocalMachine, path, View::Bits64}, names) != Status::Ok) return 0;
  std::size_t count = 1;
  for (const UnicodeString& name : names) count += KeysBelow(registry, path + u"\\" + name);
  return count;
}

TEST_F(LiveRegistry, ManyLinksBackShowNoEndlessTree) {
  for (const wchar_t* name : {L"a", L"b", L"c", L"d", L"e", L"f"})
    MakeLink(HKEY_LOCAL_MACHINE, (L"SOFTWARE\\ScrubTest\\Way\\"s + name).c_str(),
             L"\\Registry\\Machine\\SOFTWARE\\ScrubTest\\Way");
  EXPECT_LT(KeysBelow(registry_, u"SOFTWARE\\ScrubTest\\Way"), 1100U);
}

TEST_F(LiveRegistry, LinksGoThemselves) {
  MakeLink(HKEY_LOCAL_MACHINE, L"SOFTWARE\\ScrubTest\\Way\\Link",
           L"\\Registry\\Machine\\SOFTWARE\\ScrubTest\\Tool");
  MakeLink(HKEY_LOCAL_MACHINE, L"SOFTWARE\\ScrubTest\\Way\\Ring",
           L"\\Registry\\Machine\\SOFTWARE\\ScrubTest\\Way");
  const AskRow rows[] = {
      {"open 64 HKLM\\SOFTWARE\\ScrubTest\\Way\\Link", "1 1"},
      {"open 64 HKLM\\SOFTWARE\\ScrubTest\\Way\\Ring\\Link", "1 1"},
      {"open 64 HKLM\\SOFTWARE\\ScrubTest\\Way\\Ring\\Ring", "Unknown"},
      {"delete 64 HKLM\\SOFTWARE\\ScrubTest\\Way", "Ok"},
      {"open 64 HKLM\\SOFTWARE\\ScrubTest\\Way", "Absent"},
      {"open 64 HKLM\\SOFTWARE\\ScrubTest\\Tool", "1 1"},
  };
  CheckRows(registry_, rows);
}

}  // namespace
}  // namespace scrubwell::test
