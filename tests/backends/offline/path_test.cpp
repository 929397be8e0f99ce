#include <gtest/gtest.h>

#include "backends/offline/offline_browser.h"
#include "backends/offline/offline_services.h"
#include "backends/offline/text_services.h"
#include "backends/offline/users.h"
#include "backends/offline/win_path.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

TEST(WinPath, IsCutAndNormalised) {
  // Empty: no path on a drive.
  const std::pair<UnicodeView, UnicodeView> rows[] = {
      {u"c:\\a\\b.txt", u"C:\\a\\b.txt"},
      {u"C:", u"C:\\"},
      {u"C:/a//b/", u"C:\\a\\b"},
      {u"C:\\a\\.\\..\\..\\b", u"C:\\b"},
      {u"\\??\\C:\\a", u"C:\\a"},
      {u"\\DosDevices\\d:\\a", u"D:\\a"},
      {u"\\\\?\\C:\\a.\\b ", u"C:\\a.\\b "},
      // Names that no file has, and that this machine would take for something else.
      {u"\\\\?\\C:\\a\\..\\b", u""},
      {u"\\\\?\\C:\\.\\b", u""},
      {u"\\\\?\\C:\\a/../b", u""},
      {{u"C:\\a\0b", 6}, u""},
      {u"\\\\?\\UNC\\server\\x", u""},
      {u"\\\\server\\share\\x", u""},
      {u"\\Device\\HarddiskVolume1\\x", u""},
      {u"C:a", u""},
      {u"a.txt", u""},
      {u"", u""},
      {u"1:\\a", u""},
      {u"C:\\a.exe \"x\"", u""},
      {u"C:\\*.dll", u""},
      {u"C:\\a.txt:stream", u""},
  };
  for (const auto& [text, wantedPath] : rows) {
    WinPath path;
    const bool good = ParsePath(text, path);
    EXPECT_EQ(ToUtf8(good ? PathText(path) : u""), ToUtf8(wantedPath)) << ToUtf8(text);
  }
}

TEST(WinPath, KnowsShortNamesAndDevices) {
  const std::tuple<UnicodeView, UnicodeView, bool, bool> rows[] = {
      {u"PROGRA~1", u"Program Files", true, true},
      {u"progra~2.", u"Program Files", false, true},
      {u"LONGFI~1.TEX", u"long file.text", true, true},
      {u"LONGFI~1.TXT", u"long file.doc", true, false},
      {u"MI1F2A~1", u"Microsoft Games", true, true},
      {u"MI1G2A~1", u"Microsoft Games", true, false},
      {u"SHORT~1", u"short", true, false},  // needs no short name
      {u"A.B~1", u"a.b c", true, false},
      {u"TOOLONGX~1", u"toolongx y", false, true},
      {u"PLAIN", u"plain name", false, false},
      {u"X~", u"x y", false, true},
  };
  for (const auto& [shortName, longName, form, fits] : rows) {
    EXPECT_EQ(IsShortNameForm(shortName), form) << ToUtf8(shortName);
    EXPECT_EQ(MayBeShortNameOf(shortName, longName), fits) << ToUtf8(shortName);
  }
  for (const UnicodeView name : {u"nul", u"CON.txt", u"Com1", u"lpt9.x", u"aux ", u"conin$"}) {
    EXPECT_TRUE(IsDeviceName(name)) << ToUtf8(name);
  }
  for (const UnicodeView name : {u"null", u"com0", u"com", u"com10", u"x.nul"}) {
    EXPECT_FALSE(IsDeviceName(name)) << ToUtf8(name);
  }
}

TEST(OsVersion, ComesFromTheBuildElseTheText) {
  const std::tuple<std::uint32_t, UnicodeView, OsVersion> rows[] = {
      {22631, u"6.3", OsVersion::Win11}, {19045, u"6.3", OsVersion::Win10},
      {9600, u"6.3", OsVersion::Win81},  {9200, u"", OsVersion::Win8},
      {7601, u"6.1", OsVersion::Win7},   {6002, u"6.0", OsVersion::Vista},
      {3790, u"5.2", OsVersion::WinXP},  {2600, u"5.1", OsVersion::WinXP},
      {0, u"6.1", OsVersion::Win7},      {0, u"", OsVersion::Unknown},
      {950, u"4.0", OsVersion::Unknown},
  };
  for (const auto& [build, version, os] : rows) EXPECT_EQ(OsVersionOf(build, version), os) << build;
}

TEST(ChooseUser, ByNameSidAccountOrLastUse) {
  const auto user = [](UnicodeView sid, UnicodeView name, std::uint64_t used) {
    UserProfile profile;
    profile.sid = sid;
    profile.name = name;
    profile.hive = u"x";
    profile.lastUsed = used;
    return profile;
  };
  std::vector<UserProfile> users = {
      user(u"S-1-5-21-1-2-3-1001", u"anna", 5), user(u"S-1-5-21-1-2-3-1002", u"bert", 9),
      user(u"S-1-5-21-4-5-6-1003", u"cora", 1), user(u"S-1-5-21-7-8-9-1003", u"cora.B", 2),
      user(u"S-1-5-19", u"LocalService", 99),   user(u"S-1-5-21-0-0-0-1004", u"old", 98)};
  users[4].isService = true;
  users[5].sidKnown = false;
  const auto number = [](UnicodeView name) -> std::optional<std::uint32_t> {
    if (name == u"berta") return 1002;
    if (name == u"double") return 1003;
    return {};
  };
  const std::pair<UnicodeView, UnicodeView> rows[] = {
      {u"", u"bert"},
      {u"ANNA", u"anna"},
      {u"s-1-5-21-1-2-3-1001", u"anna"},
      {u"berta", u"bert"},
      {u"double", u""},
      {u"nobody", u""},
      {u"old", u"old"},
      {u"localservice", u"LocalService"},
  };
  for (const auto& [wanted, wantedName] : rows) {
    const UserProfile* const found = ChooseUser(users, wanted, number);
    EXPECT_EQ(ToUtf8(found == nullptr ? u"" : found->name), ToUtf8(wantedName)) << ToUtf8(wanted);
  }
}

TEST(Firewall, ReadsBothForms) {
  // At last image|name|enabled, empty when it is none.
  const std::tuple<bool, UnicodeView, UnicodeView, UnicodeView> rows[] = {
      {false, u"C:\\a.exe", u"C:\\a.exe:*:Enabled:A: the tool", u"C:\\a.exe|A: the tool|1"},
      {false, u"C:\\a.exe", u"C:\\other.exe:LocalSubNet:Disabled:A", u"C:\\a.exe|A|0"},
      {false, u"C:\\a.exe", u"C:\\a.exe:*:Enabled", u""},
      {false, u"C:\\a.exe", u"", u""},
      {true, u"", u"v2.10|Action=Allow|Active=TRUE|Dir=In|App=C:\\a.exe|Name=A|", u"C:\\a.exe|A|1"},
      {true, u"", u"v2.10|Action=Allow|Active=FALSE|Dir=In|App=C:\\a.exe|", u"C:\\a.exe||0"},
      {true, u"", u"v2.10|Action=Block|Dir=In|App=C:\\a.exe|", u""},
      {true, u"", u"v2.10|Action=Allow|Dir=Out|App=C:\\a.exe|", u""},
      {true, u"", u"v2.10|Action=Allow|Dir=In|App=System|", u""},
      {true, u"", u"v2.10|Action=Allow|Dir=In|App=C:\\s.exe|Svc=x|", u""},
      {true, u"", u"v2.10|Action=Allow|Dir=In|Profile=Domain|Profile=Public|App=C:\\a.exe|", u""},
      {true, u"", u"v2.10|Action=Allow|Dir=In|Profile=Private|Profile=Public|App=C:\\a.exe|",
       u"C:\\a.exe||1"},
  };
  for (const auto& [rule, name, data, expected] : rows) {
    FirewallApplication got;
    const bool good = rule ? ParseFirewallRule(data, got) : ParseFirewallEntry(name, data, got);
    const UnicodeString text = got.imageFile + u"|" + got.name + (got.enabled ? u"|1" : u"|0");
    EXPECT_EQ(ToUtf8(good ? text : u""), ToUtf8(expected)) << ToUtf8(data);
  }
}

TEST(TextServices, DecodesAndOrders) {
  TextServices german(1252);
  TextServices japanese(932);
  EXPECT_EQ(german.FromAnsi("\x80\xE4\x81z"), u"\u20AC\u00E4\u0081z");
  EXPECT_EQ(german.ToAnsi(u"\u20AC\u3042z"), "\x80?z");
  EXPECT_EQ(japanese.FromAnsi("\x82\xA0"), u"\u3042");
  EXPECT_EQ(japanese.FromAnsi("a\x82"), u"a?");
  EXPECT_FALSE(TextServices(77777).IsExact());
  const UnicodeView ordered[] = {u"",      u"Abel",   u"\u00C4ffin", u"Affinit\u00E4t",
                                 u"zebra", u"Zebra 2"};
  for (std::size_t i = 0; i + 1 < std::size(ordered); ++i) {
    EXPECT_LT(german.CompareText(ordered[i], ordered[i + 1]), 0) << i;
    EXPECT_GT(german.CompareText(ordered[i + 1], ordered[i]), 0) << i;
  }
  EXPECT_EQ(german.CompareText(u"\u00E4B", u"\u00C4b"), 0);
}

}  // namespace
}  // namespace scrubwell::offline
