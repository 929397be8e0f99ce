#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "formats/lnk/lnk_samples.h"
#include "registry/Stringhelper.h"
#include "support/disk.h"

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

TEST(Lnk, ReadsRealShortcuts) {
  const std::string data = test::SharedData();
  if (data.empty()) return;
  std::map<std::string, std::pair<Status, UnicodeString>> read;
  for (const auto& entry : std::filesystem::directory_iterator(data + "/artefacts/lnk")) {
    Link link;
    const Status status = ReadLink(test::ReadBytes(entry.path()), 1252, link);
    read[entry.path().stem()] = {status, link.target};
  }
  EXPECT_EQ(read.at("unpaired_surrogate").second, u"C:\\test\\unicode_U+0000d800_\xD800.exe");
  // Nothing, a virtual folder, an address.
  for (const char* name : {"App 2", "Window Switcher", "Home Page 7"})
    EXPECT_EQ(read.at(std::string("museum-001-") + name).first, Absent) << name;
  EXPECT_EQ(std::ranges::count(read, Ok, [](const auto& file) { return file.second.first; }), 24);
}

}  // namespace
}  // namespace scrubwell::lnk
