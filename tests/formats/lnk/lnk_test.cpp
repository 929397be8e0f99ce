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
  const Bytes zip = FileItem("A.ZIP", u"");
  const std::pair<Parts, std::pair<UnicodeView, Source>> found[] = {
      {with(u"%windir%\\e.exe", 0), {u"%windir%\\e.exe", Environment}},
      {whole, {u"C:\\b.exe", LocalPath}},
      {{.base = "C:\\\xE4.exe"}, {u"C:\\\u00E4.exe", LocalPath}},
      {{.base = "C:\\?", .wideBase = u"C:\\\u65E5"}, {u"C:\\\u65E5", LocalPath}},
      {{.base = "C:\\b", .suffix = "c\\d.exe"}, {u"C:\\b\\c\\d.exe", LocalPath}},
      {{.base = "?", .suffix = "?", .wideBase = u"C:\\b\\", .wideSuffix = u"\u65E5.exe"},
       {u"C:\\b\\\u65E5.exe", LocalPath}},
      {{file}, {u"C:\\Dir \u0416\\A.EXE", ItemList}},
      {{{kComputer, kDriveC}}, {u"C:\\", ItemList}},
      {{.items = file, .base = "C:\\?", .wideBase = u"C:\\\xD800.exe"},
       {u"C:\\Dir \u0416\\A.EXE", ItemList}},
      {{.relativePath = u"..\\r.exe"}, {u"..\\r.exe", RelativePath}},
      {with(u"", 0x100), {u"C:\\Dir \u0416\\A.EXE", ItemList}},  // no link information
  };
  Link link;
  for (const auto& [parts, expected] : found) {
    EXPECT_EQ(ReadLink(BuildLink(parts), 1252, link), Ok) << ToUtf8(expected.first);
    EXPECT_EQ(link.target, expected.first) << ToUtf8(link.target);
    EXPECT_EQ(link.source, expected.second) << ToUtf8(link.target);
  }
  const std::vector<Bytes> virtualItems = {kComputer, kControlPanel};
  const struct {
    const char* name;
    Parts parts;
    Status status;
  } none[] = {
      {"a virtual target alone",
       {.items = virtualItems, .base = "C:\\b", .extraFlags = 0x100},
       Absent},
      {"advertised", with(u"", 0x1000), Absent},
      {"virtual", {.items = virtualItems, .relativePath = u".\\r"}, Absent},
      {"nothing", {}, Absent},
      {"no drive", {{kComputer, zip}}, Unknown},
      {"in an archive", {{kComputer, kDriveC, zip, Item({0x52, 0, 0})}}, Unknown},
      {"ansi item", {{kComputer, kDriveC, FileItem("\xE4.EXE", u"")}}, Unknown},
      {"overlong item", {{kComputer, kDriveC, Bytes{0xFF, 0x00, 0x32}}}, Corrupt},
  };
  for (const auto& row : none) {
    EXPECT_EQ(ReadLink(BuildLink(row.parts), 1252, link), row.status) << row.name;
    EXPECT_EQ(link.target, u"") << row.name;
  }
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
