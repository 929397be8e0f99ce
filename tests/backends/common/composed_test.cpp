#include <gtest/gtest.h>

#include "backends/common/composed_registry.h"
#include "backends/memory/memory_backend.h"
#include "formats/reg/reg_text.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"
#include "support/ask.h"

namespace scrubwell::test {

namespace {

struct Case {
  const char* name;
  MemoryOptions options;
  const char* registry;
  std::vector<AskRow> rows;
};

// The value that makes a key a link, as a line.
std::string Link(UnicodeView target) {
  Bytes data = TextData(target);
  data.resize(data.size() - 2);
  return ToUtf8(reg::FormatValue({u"SymbolicLinkValue", REGT_LINK, data})) + "\n";
}

const MemoryOptions kBits32{.is64Bit = false};
const MemoryOptions kVista{.rules = ViewRules::BeforeWindows7};
const MemoryOptions kNobody{.userSid = u""};

constexpr const char* kBothViews = R"(
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID\{64}]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\.x\64]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\HCP\shared]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\Wow6432Node\CLSID\{32}]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\Wow6432Node\.x\32]
[HKEY_LOCAL_MACHINE\SOFTWARE\Clients\64]
[HKEY_LOCAL_MACHINE\SOFTWARE\Policies\shared]
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion\Fonts\shared]
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Clients\32]
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Only32]
)";

const Case kCases[] = {
    {"a 32-bit Windows has one view",
     kBits32,
     kBothViews,
     {{"keys 32 HKCR\\CLSID", "{64}"},
      {"keys 64 HKCR\\CLSID", "{64}"},
      {"keys own HKLM\\SOFTWARE", "Classes,Clients,Microsoft,Policies,Wow6432Node"}}},
    {"Windows 7 shares all classes but some",
     {},
     kBothViews,
     {{"keys 32 HKCR\\CLSID", "{32}"},
      {"keys 32 HKCR\\.x", "64"},
      {"keys 32 HKLM\\SOFTWARE\\Clients", "64"},
      {"keys 64 HKLM\\SOFTWARE", "Classes,Clients,Microsoft,Policies"},
      {"keys 32 HKLM\\SOFTWARE", "Classes,Clients,Only32,Policies"},
      {"open 32 HKLM\\SOFTWARE", "4 0"},
      {"keys 32 HKCR", ".x,CLSID,HCP"},
      {"keys 64 HKCR\\Wow6432Node", ".x,CLSID"}}},
    {"before Windows 7 the classes and the clients are redirected",
     kVista,
     kBothViews,
     {{"keys 32 HKCR\\CLSID", "{32}"},
      {"keys 32 HKCR\\.x", "32"},
      {"keys 32 HKCR\\HCP", "shared"},
      {"keys 32 HKLM\\SOFTWARE\\Clients", "32"},
      {"keys 32 HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Fonts", "shared"}}},
    {"without a user the classes root is the machine's",
     kNobody,
     kBothViews,
     {{"keys 64 HKCR\\CLSID", "{64}"}, {"open 64 HKCU\\Software", "Unknown"}}},
    {"control set, hardware profile, system account",
     {},
     R"([HKEY_LOCAL_MACHINE\SYSTEM\Select]
"Current"=dword:0
"Default"=dword:2
[HKEY_LOCAL_MACHINE\SYSTEM\ControlSet002\Control\IDConfigDB]
"CurrentConfig"=dword:1
[HKEY_LOCAL_MACHINE\SYSTEM\ControlSet002\Hardware Profiles\0001\Software]
[HKEY_USERS\.DEFAULT\Software\D]
)",
     {{"keys 64 HKLM\\SYSTEM\\CurrentControlSet", "Control,Hardware Profiles"},
      {"keys 64 HKLM\\SYSTEM", "ControlSet001,ControlSet002,CurrentControlSet,Select"},
      {"keys 64 HKCC", "Software"},
      {"keys 64 HKU\\S-1-5-18\\Software", "D"},
      {"keys 64 HKU", ".DEFAULT,S-1-5-21-1-2-3-1001,S-1-5-21-1-2-3-1001_Classes"},
      {"open 64 HKLM\\SECURITY\\Policy", "Unknown"},
      {"open 64 HKLM\\Nonsense", "Absent"}}},
};

}  // namespace

TEST(ComposedRegistry, RootsAndViews) {
  for (const Case& test : kCases) {
    MemoryBackend backend(test.options);
    ASSERT_EQ(backend.AddRegistry(test.registry), "") << test.name;
    SCOPED_TRACE(test.name);
    CheckRows(backend.Registry(), test.rows);
  }
}

TEST(ComposedRegistry, LinksStayInside) {
  MemoryBackend backend;
  const std::string head = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\";
  std::string text = head + "Target\\Below]\n\"v\"=\"there\"\n";
  text += head + "Wow6432Node\\Linked]\n" + Link(u"\\Registry\\Machine\\Software\\Target");
  text += head + "Self]\n" + Link(u"\\REGISTRY\\MACHINE\\SOFTWARE\\Self\\x");
  text += head + "Ping]\n" + Link(u"\\REGISTRY\\MACHINE\\SOFTWARE\\Pong");
  text += head + "Pong]\n" + Link(u"\\REGISTRY\\MACHINE\\SOFTWARE\\Ping");
  text += head + "Gone]\n" + Link(u"\\REGISTRY\\MACHINE\\SOFTWARE\\Nothing");
  text += head + "Odd]\n" + Link(u"C:\\Windows");
  text += "[HKEY_CURRENT_USER\\L]\n" + Link(u"\\REGISTRY\\MACHINE\\SOFTWARE\\Target");
  text += head + "Hall\\Room]\n";
  for (const char* const door : {"East", "West"})
    text += head + "Hall\\" + door + "]\n" + Link(u"\\REGISTRY\\MACHINE\\SOFTWARE\\Hall");
  std::u16string last = u"Target";
  for (int i = 1; i <= 17; ++i) {
    const std::string name = "L" + std::to_string(i);
    text += head + name + "]\n" + Link(u"\\REGISTRY\\MACHINE\\SOFTWARE\\" + last);
    last.assign(name.begin(), name.end());
  }
  ASSERT_EQ(backend.AddRegistry(text), "");
  const AskRow rows[] = {
      {"get 32 HKLM\\SOFTWARE\\Linked\\Below > v", "\"v\"=\"there\""},
      {"get 64 HKCU\\L\\Below > v", "\"v\"=\"there\""},
      {"open 64 HKLM\\SOFTWARE\\Self\\y", "Unknown"},
      {"open 64 HKLM\\SOFTWARE\\Ping", "Unknown"},
      // Links to the key that they lie in: each may be passed once on a way.
      {"keys 64 HKLM\\SOFTWARE\\Hall\\East\\West", "East,Room,West"},
      {"open 64 HKLM\\SOFTWARE\\Hall\\East\\West\\Room", "0 0"},
      {"open 64 HKLM\\SOFTWARE\\Hall\\East\\West\\East", "Unknown"},
      {"get 64 HKLM\\SOFTWARE\\Hall\\East\\East\\Room > v", "Unknown"},
      // Sixteen links, and one more.
      {"open 64 HKLM\\SOFTWARE\\L16\\Below", "0 1"},
      {"open 64 HKLM\\SOFTWARE\\L17\\Below", "Unknown"},
      {"open 64 HKLM\\SOFTWARE\\Gone", "Absent"},
      {"open 64 HKLM\\SOFTWARE\\Odd", "Corrupt"},
      {"set 64 HKCU\\L\\Below > w=1", "Ok"},
      {"delete 64 HKCU\\L", "Ok"},  // the link, not what it leads to
      {"open 64 HKCU\\L", "Absent"},
      {"open 64 HKLM\\SOFTWARE\\Target\\Below", "0 2"},
      {"delete 64 HKLM\\SOFTWARE\\Ping", "Ok"},
  };
  CheckRows(backend.Registry(), rows);
  const std::vector<std::string> journal{"set value HKLM\\SOFTWARE\\Target\\Below \"w\"=\"1\"",
                                         "delete key HKCU\\L", "delete key HKLM\\SOFTWARE\\Ping"};
  EXPECT_EQ(backend.Journal(), journal);
}

// Hives that hold the 32-bit classes below the 32-bit part of SOFTWARE, as a key or as a link.
TEST(ComposedRegistry, ClassesTheOtherWayRound) {
  for (const bool linked : {false, true}) {
    MemoryBackend backend;
    MemoryHive& software = backend.Hive(u"HKLM\\SOFTWARE");
    software.Make(u"Classes\\TypeLib\\{T}");
    software.Make(linked ? u"Classes\\Wow6432Node\\CLSID\\{32}"
                         : u"Wow6432Node\\Classes\\CLSID\\{32}");
    if (linked) {
      ASSERT_EQ(backend.AddRegistry("[HKLM\\SOFTWARE\\Temp]\n" +
                                    Link(u"\\REGISTRY\\MACHINE\\SOFTWARE\\Classes\\Wow6432Node")),
                "");
      RegValue value;
      software.Value(software.Make(u"Temp"), u"SymbolicLinkValue", value);
      software.Put(software.Make(u"Wow6432Node\\Classes"), value);
    }
    for (const char* root : {"HKCR", "HKLM\\SOFTWARE\\Classes"})
      EXPECT_EQ(Ask(backend.Registry(), std::string("keys 32 ") + root + "\\CLSID"), "{32}");
    EXPECT_EQ(Ask(backend.Registry(), "keys 64 HKLM\\SOFTWARE\\Wow6432Node\\Classes\\CLSID"),
              "{32}");
    EXPECT_EQ(Ask(backend.Registry(), "keys 64 HKLM\\SOFTWARE\\Wow6432Node\\Classes\\TypeLib"),
              "{T}");
  }
}

TEST(ComposedRegistry, WhatCantBeReadIsNeverAbsent) {
  MemoryBackend backend;
  ASSERT_EQ(backend.AddRegistry("[HKCR\\.a]\n\"v\"=\"m\"\n[HKCU\\Software\\Classes\\.a]\n"
                                "\"u\"=\"u\"\n[HKLM\\SOFTWARE\\Bad\\Sub]\n[HKCR\\.b]\n"),
            "");
  backend.BreakKey(u"HKLM\\SOFTWARE\\Bad", Status::Corrupt);
  ComposedRegistry& registry = backend.Registry();
  EXPECT_EQ(Ask(registry, "open 64 HKLM\\SOFTWARE\\Bad\\Sub"), "Corrupt");
  backend.BreakKey(u"HKCR\\.a", Status::Corrupt);
  const AskRow machineBroken[] = {
      {"get 64 HKCR\\.a > u", "\"u\"=\"u\""},
      {"get 64 HKCR\\.a > v", "Corrupt"},
      {"keys 64 HKCR\\.a", "Corrupt"},
      {"open 64 HKCR\\.a", "Corrupt"},
  };
  CheckRows(registry, machineBroken);
  const UnicodeString classes = u"HKU\\" + backend.Options().userSid + u"_Classes";
  registry.MountFailed(classes, Status::Corrupt);
  const AskRow userBroken[] = {
      {"open 64 HKCR\\.b", "Corrupt"},      {"open 64 HKCR\\.none", "Corrupt"},
      {"delete 64 HKCR\\.b", "Corrupt"},    {"open 64 HKCU\\Software\\Classes\\.a", "Corrupt"},
      {"set 64 HKCR\\.b > x=y", "Corrupt"}, {"open 64 HKLM\\SOFTWARE\\Classes\\.b", "0 0"},
  };
  CheckRows(registry, userBroken);
  MemoryHive late;
  late.Make(u".late");
  int opened = 0;
  registry.MountLazily(classes, [&](Status&) { return ++opened, &late; });
  EXPECT_EQ(opened, 0);
  EXPECT_EQ(Ask(registry, "open 64 HKCR\\.late"), "0 0");
  EXPECT_EQ(Ask(registry, "open 64 HKCR\\.b"), "0 0");
  EXPECT_EQ(opened, 1);
}

TEST(ComposedRegistry, ChangesAskForRightsAndAreAnnounced) {
  struct Veto final : IRegistryObserver {
    bool BeforeChange(const RegistryChange&) override { return false; }
  } veto;
  MemoryBackend backend;
  ASSERT_EQ(backend.AddRegistry("[HKLM\\SOFTWARE\\K]\n\"v\"=\"1\"\n[HKCR\\.m]\n"), "");
  backend.DenyWrite(u"HKLM\\SOFTWARE\\W");
  backend.DenyDelete(u"HKLM\\SOFTWARE\\D");
  const std::string before = backend.DumpRegistry();
  const AskRow denied[] = {
      {"set 64 HKLM\\SOFTWARE\\W > a=b", "Denied"}, {"create 64 HKLM\\SOFTWARE\\W\\Sub", "Denied"},
      {"candelete 64 HKLM\\SOFTWARE\\W", "Ok"},     {"canwrite 64 HKLM\\SOFTWARE\\W", "Denied"},
      {"delete 64 HKLM\\SOFTWARE\\D", "Denied"},    {"candelete 64 HKLM\\SOFTWARE\\D", "Denied"},
  };
  CheckRows(backend.Registry(), denied);
  backend.Registry().SetObserver(&veto);
  for (const char* question :
       {"delete 64 HKLM\\SOFTWARE\\K", "drop 64 HKLM\\SOFTWARE\\K > v", "create 64 HKCR\\.n",
        "set 64 HKLM\\SOFTWARE\\K > v=2", "force 64 HKLM\\SOFTWARE\\D"})
    EXPECT_EQ(Ask(backend.Registry(), question), "Denied") << question;
  EXPECT_EQ(backend.DumpRegistry(), before);
  backend.Registry().SetObserver(nullptr);
  EXPECT_EQ(Ask(backend.Registry(), "force 64 HKLM\\SOFTWARE\\D"), "Ok");
  std::vector<PhysicalKey> places;
  backend.Registry().Locate({RootKey::ClassesRoot, u".m", View::Bits32}, places);
  ASSERT_EQ(places.size(), 1U);
  EXPECT_EQ(places[0].mount + u"|" + places[0].path, u"HKLM\\SOFTWARE|Classes\\.m");
}

// A deletion through a shared key is the same deletion in both views, until it is forgotten.
TEST(ComposedRegistry, DeletionsUncoverNothing) {
  MemoryBackend backend;
  ASSERT_EQ(backend.AddRegistry("[HKCR\\.a\\s]\n[HKCU\\Software\\Classes\\.a]\n[HKCR\\.ab]\n"), "");
  const AskRow rows[] = {{"delete 64 HKCR\\.a", "Ok"},
                         {"delete 32 HKCR\\.A", "Absent"},
                         {"drop 32 HKCR\\.a\\s > x", "Absent"},
                         {"delete 64 HKCR\\.ab", "Ok"},
                         {"open 64 HKCR\\.a", "1 0"}};
  CheckRows(backend.Registry(), rows);
  backend.Registry().ForgetDeletions();
  EXPECT_EQ(Ask(backend.Registry(), "delete 32 HKCR\\.a"), "Ok");
}

}  // namespace scrubwell::test
