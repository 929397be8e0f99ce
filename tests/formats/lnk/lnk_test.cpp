#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "formats/lnk/lnk_samples.h"
#include "registry/Stringhelper.h"
#include "support/disk.h"
#include "support/witness.h"

namespace scrubwell::lnk {
namespace {

using enum Status;
using enum Source;

TEST(Lnk, PrefersTheBestSource) {
  const std::vector<Bytes> file = {kComputer, kDriveC, FileItem("DIRONE~1", u"Dir \u0416"),
                                   FileItem("A.EXE", u"")};
  const Parts whole{.items = file, .base = "C:\\b.exe", .relativePath = u".\\r"};
  const auto with = [&whole](UnicodeView environment, std::uint32_t flags) {
    Parts parts = whole;
    parts.environment = environment;
    parts.extraFlags = flags;
    return parts;
  };
  struct Row {
    const char* name;
    Parts parts;
    Status status;
    UnicodeView target;
    Source source = LocalPath;
  };
  const Bytes zip = FileItem("A.ZIP", u"");
  const Row kRows[] = {
      {"environment", with(u"%windir%\\e.exe", 0), Ok, u"%windir%\\e.exe", Environment},
      {"local", whole, Ok, u"C:\\b.exe"},
      {"ansi", {.base = "C:\\\xE4.exe"}, Ok, u"C:\\\u00E4.exe"},
      {"wide", {.base = "C:\\?", .wideBase = u"C:\\\u65E5"}, Ok, u"C:\\\u65E5"},
      {"suffix", {.base = "C:\\b", .suffix = "c\\d.exe"}, Ok, u"C:\\b\\c\\d.exe"},
      {"wide suffix",
       {.base = "C:\\?", .suffix = "?", .wideBase = u"C:\\b\\", .wideSuffix = u"\u65E5.exe"},
       Ok,
       u"C:\\b\\\u65E5.exe"},
      {"items", {file}, Ok, u"C:\\Dir \u0416\\A.EXE", ItemList},
      {"drive", {{kComputer, kDriveC}}, Ok, u"C:\\", ItemList},
      {"surrogate",
       {.items = file, .base = "C:\\?", .wideBase = u"C:\\\xD800.exe"},
       Ok,
       u"C:\\Dir \u0416\\A.EXE",
       ItemList},
      {"relative", {.relativePath = u"..\\r.exe"}, Ok, u"..\\r.exe", RelativePath},
      {"no link information", with(u"", 0x100), Ok, u"C:\\Dir \u0416\\A.EXE", ItemList},
      {"nor a virtual target",
       {.items = {kComputer, kControlPanel}, .base = "C:\\b", .extraFlags = 0x100},
       Absent,
       u""},
      {"advertised", with(u"", 0x1000), Absent, u""},
      {"virtual", {.items = {kComputer, kControlPanel}, .relativePath = u".\\r"}, Absent, u""},
      {"nothing", {}, Absent, u""},
      {"no drive", {{kComputer, zip}}, Unknown, u""},
      {"in an archive", {{kComputer, kDriveC, zip, Item({0x52, 0, 0})}}, Unknown, u""},
      {"ansi item", {{kComputer, kDriveC, FileItem("\xE4.EXE", u"")}}, Unknown, u""},
      {"overlong item", {{kComputer, kDriveC, Bytes{0xFF, 0x00, 0x32}}}, Corrupt, u""},
  };
  for (const Row& row : kRows) {
    Link link;
    EXPECT_EQ(ReadLink(BuildLink(row.parts), 1252, link), row.status) << row.name;
    EXPECT_EQ(link.target, row.target) << row.name << " " << ToUtf8(link.target);
    if (row.status == Ok) {
      EXPECT_EQ(link.source, row.source) << row.name;
    }
  }
  Link link;
  EXPECT_EQ(ReadLink(BuildLink({.base = "C:\\\xE4.exe"}), 65001, link), Unknown);
  EXPECT_EQ(ReadLink(BuildLink({.base = "C:\\a.exe"}), 65001, link), Ok);
}

TEST(Lnk, RefusesDamage) {
  const Bytes whole = BuildLink({.base = "C:\\a.exe"});
  Link link;
  for (const std::size_t size : {0U, 1U, 0x4BU, 0x4DU, 0x60U}) {
    EXPECT_EQ(ReadLink(std::span(whole).first(size), 1252, link), Corrupt) << size;
  }
  // A length of gigabytes in a small file.
  Bytes file = whole;
  file[0x4C + 3] = 0x7F;
  EXPECT_EQ(ReadLink(file, 1252, link), Corrupt);
  EXPECT_EQ(ReadLink(Bytes(kMaxFileSize + 1), 1252, link), Corrupt);
  EXPECT_EQ(ReadLink(Bytes(4096, 0x4C), 1252, link), Corrupt);
}

// What lnkinfo prints of a shortcut, in our order of preference; empty when it prints no target.
std::string WitnessTarget(const std::string& path) {
  std::map<std::string, std::string> facts;
  std::string items;
  std::size_t folder = 0;
  std::istringstream in(test::OutputOf("lnkinfo '" + path + "'"));
  for (std::string line; std::getline(in, line);) {
    const std::size_t from = line.find_first_not_of('\t');
    const std::size_t colon = line.find("\t: ");
    if (colon == line.npos) continue;
    const std::string name = line.substr(from, line.find('\t', from) - from);
    const std::string text = line.substr(colon + 3);
    facts.emplace(name, text);
    if (name == "Volume name") items = text;
    if (name == "Name") folder = items.size();
    // A short name comes first, a long one takes its place.
    if (name == "Name" || name == "Long name") {
      items.resize(folder);
      items += (items.ends_with('\\') ? "" : "\\") + text;
    }
  }
  for (const char* name : {"Environment variables location", "Local path", "Network path"}) {
    if (facts.contains(name)) return facts[name];
  }
  return facts.contains("Number of items") ? items : facts["Relative path"];
}

TEST(Lnk, AgreesOnRealShortcuts) {
  const std::string data = test::SharedData();
  if (data.empty()) return;
  const bool witness = test::HasWitness("lnkinfo");
  std::map<std::string, Status> statuses;
  for (const auto& entry : std::filesystem::directory_iterator(data + "/artefacts/lnk")) {
    SCOPED_TRACE(entry.path());
    Link link;
    statuses[entry.path().stem()] = ReadLink(test::ReadBytes(entry.path()), 1252, link);
    const std::string target = ToUtf8(link.target);
    if (entry.path().stem() == "unpaired_surrogate") {
      EXPECT_EQ(link.target, u"C:\\test\\unicode_U+0000d800_\xD800.exe");
    }
    if (!witness) continue;
    const std::string expected = WitnessTarget(entry.path());
    // lnkinfo prints this for a lone surrogate and swallows the unit behind it.
    const std::size_t lost = expected.find("\uFFFD");
    if (lost == expected.npos) {
      EXPECT_EQ(target, expected);
    } else {
      EXPECT_TRUE(target.starts_with(expected.substr(0, lost)));
      EXPECT_TRUE(target.ends_with(expected.substr(lost + 3)));
    }
  }
  // Nothing, a virtual folder, an address.
  for (const char* name : {"App 2", "Window Switcher", "Home Page 7"}) {
    EXPECT_EQ(statuses.at(std::string("museum-001-") + name), Absent) << name;
  }
  EXPECT_EQ(statuses.size(), 31U);
}

}  // namespace
}  // namespace scrubwell::lnk
