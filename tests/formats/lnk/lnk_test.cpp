#include "formats/lnk/lnk.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "registry/Stringhelper.h"

namespace scrubwell::lnk {
namespace {

void Put(Bytes& out, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i) out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}
void PutAnsi(Bytes& out, std::string_view text) {
  out.insert(out.end(), text.begin(), text.end());
  out.push_back(0);
}
void PutWide(Bytes& out, UnicodeView text) {
  for (const char16_t unit : text) Put(out, unit, 2);
}
void Append(Bytes& out, const Bytes& more) {
  out.insert(out.end(), more.begin(), more.end());
}

Bytes Item(const Bytes& content) {
  Bytes out;
  Put(out, content.size() + 2, 2);
  Append(out, content);
  return out;
}
const Bytes kComputer = Item({0x1F, 0x50, 0xE0, 0x4F, 0xD0, 0x20});
const Bytes kDriveC = Item({0x2F, 'C', ':', '\\', 0, 0});
const Bytes kControlPanel = Item({0x71, 0, 0, 0});

Bytes FileItem(std::string_view shortName, UnicodeView longName) {
  Bytes content(12);
  content[0] = 0x32;
  PutAnsi(content, shortName);
  if (content.size() % 2 != 0) content.push_back(0);
  if (longName.empty()) return Item(content);
  const std::size_t block = content.size() + 2;
  Put(content, 0x14 + (longName.size() + 1) * 2 + 2, 2);
  Put(content, 3, 2);
  Put(content, 0xBEEF0004, 4);
  Put(content, 0, 8);
  Put(content, 0x14, 4);
  PutWide(content, longName);
  Put(content, 0, 2);
  Put(content, block, 2);
  return Item(content);
}

struct Parts {
  std::vector<Bytes> items = {};
  std::string_view base = {}, suffix = {};  ///< with a base there is a link information block
  UnicodeView wideBase = {}, wideSuffix = {}, relativePath = {}, environment = {};
  std::uint32_t extraFlags = 0;
};

Bytes LinkInfo(const Parts& parts) {
  const bool wide = !parts.wideBase.empty();
  const std::size_t header = wide ? 0x24 : 0x1C;
  const std::size_t base = header + 17;
  const std::size_t suffix = base + parts.base.size() + 1;
  const std::size_t wideBase = suffix + parts.suffix.size() + 1;
  Bytes out;
  for (const std::size_t value : {header, std::size_t{1}, header, base, std::size_t{0}, suffix}) {
    Put(out, value, 4);
  }
  if (wide) Put(out, wideBase, 4);
  if (wide) Put(out, wideBase + (parts.wideBase.size() + 1) * 2, 4);
  for (const std::uint32_t value : {17U, 3U, 1U, 16U}) Put(out, value, 4);
  out.push_back(0);
  PutAnsi(out, parts.base);
  PutAnsi(out, parts.suffix);
  if (wide) {
    PutWide(out, parts.wideBase);
    Put(out, 0, 2);
    PutWide(out, parts.wideSuffix);
    Put(out, 0, 2);
  }
  Bytes sized;
  Put(sized, out.size() + 4, 4);
  Append(sized, out);
  return sized;
}

Bytes BuildLink(const Parts& parts) {
  Bytes out;
  Put(out, 0x4C, 4);
  Append(out, {0x01, 0x14, 0x02, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46});
  Put(out,
      (parts.items.empty() ? 0U : 1U) | (parts.base.empty() ? 0U : 2U) |
          (parts.relativePath.empty() ? 0U : 8U) | 0x80U |
          (parts.environment.empty() ? 0U : 0x200U) | parts.extraFlags,
      4);
  out.resize(0x4C);
  if (!parts.items.empty()) {
    Bytes list;
    for (const Bytes& item : parts.items) Append(list, item);
    Put(list, 0, 2);
    Append(out, Item(list));
    out[0x4C] = static_cast<std::uint8_t>(list.size());
  }
  if (!parts.base.empty()) Append(out, LinkInfo(parts));
  if (!parts.relativePath.empty()) Put(out, parts.relativePath.size(), 2);
  PutWide(out, parts.relativePath);
  if (!parts.environment.empty()) {
    Put(out, 788, 4);
    Put(out, 0xA0000001, 4);
    const std::size_t start = out.size();
    out.resize(start + 260);
    PutWide(out, parts.environment);
    out.resize(start + 780);
  }
  Put(out, 0, 4);
  return out;
}

TEST(Lnk, PrefersTheBestSource) {
  const std::vector<Bytes> file = {kComputer, kDriveC, FileItem("DIRONE~1", u"Dir \u0416"),
                                   FileItem("A.EXE", u"")};
  struct Row {
    const char* name;
    Parts parts;
    Status status;
    UnicodeView target;
    Source source = Source::LocalPath;
  };
  const Row kRows[] = {
      {"environment",
       {file, "C:\\b", "", {}, {}, u".\\r", u"%windir%\\e.exe"},
       Status::Ok,
       u"%windir%\\e.exe",
       Source::Environment},
      {"local", {file, "C:\\b.exe", "", {}, {}, u".\\r"}, Status::Ok, u"C:\\b.exe"},
      {"ansi", {{}, "C:\\\xE4.exe", ""}, Status::Ok, u"C:\\\u00E4.exe"},
      {"wide", {{}, "C:\\?", "", u"C:\\\u65E5", u""}, Status::Ok, u"C:\\\u65E5"},
      {"suffix", {{}, "C:\\b", "c\\d.exe"}, Status::Ok, u"C:\\b\\c\\d.exe"},
      {"wide suffix",
       {{}, "C:\\?", "?", u"C:\\b\\", u"\u65E5.exe"},
       Status::Ok,
       u"C:\\b\\\u65E5.exe"},
      {"items", {file}, Status::Ok, u"C:\\Dir \u0416\\A.EXE", Source::ItemList},
      {"drive", {{kComputer, kDriveC}}, Status::Ok, u"C:\\", Source::ItemList},
      {"surrogate",
       {file, "C:\\?", "", u"C:\\\xD800.exe", u""},
       Status::Ok,
       u"C:\\Dir \u0416\\A.EXE",
       Source::ItemList},
      {"relative",
       {{}, "", "", {}, {}, u"..\\r.exe"},
       Status::Ok,
       u"..\\r.exe",
       Source::RelativePath},
      {"advertised", {file, "C:\\b.exe", "", {}, {}, u".\\r", {}, 0x1000}, Status::Absent, u""},
      {"virtual", {{kComputer, kControlPanel}, "", "", {}, {}, u".\\r"}, Status::Absent, u""},
      {"nothing", {}, Status::Absent, u""},
      {"no drive", {{kComputer, FileItem("A.EXE", u"")}}, Status::Unknown, u""},
      {"in an archive",
       {{kComputer, kDriveC, FileItem("A.ZIP", u""), Item({0x52, 0, 0})}},
       Status::Unknown,
       u""},
      {"ansi item", {{kComputer, kDriveC, FileItem("\xE4.EXE", u"")}}, Status::Unknown, u""},
      {"overlong item", {{kComputer, kDriveC, Bytes{0xFF, 0x00, 0x32}}}, Status::Corrupt, u""},
  };
  for (const Row& row : kRows) {
    Link link;
    EXPECT_EQ(ReadLink(BuildLink(row.parts), 1252, link), row.status) << row.name;
    EXPECT_EQ(link.target, row.target) << row.name << " " << ToUtf8(link.target);
    if (row.status == Status::Ok) {
      EXPECT_EQ(link.source, row.source) << row.name;
    }
  }
  Link link;
  EXPECT_EQ(ReadLink(BuildLink({{}, "C:\\\xE4.exe", ""}), 65001, link), Status::Unknown);
  EXPECT_EQ(ReadLink(BuildLink({{}, "C:\\a.exe", ""}), 65001, link), Status::Ok);
}

TEST(Lnk, RefusesDamage) {
  const Bytes whole = BuildLink({{}, "C:\\a.exe"});
  Link link;
  for (const std::size_t size : {0U, 1U, 0x4BU, 0x4DU, 0x60U}) {
    EXPECT_EQ(ReadLink(std::span(whole).first(size), 1252, link), Status::Corrupt) << size;
  }
  // A length of gigabytes in a small file.
  Bytes file = whole;
  file[0x4C + 3] = 0x7F;
  EXPECT_EQ(ReadLink(file, 1252, link), Status::Corrupt);
  EXPECT_EQ(ReadLink(Bytes(kMaxFileSize + 1), 1252, link), Status::Corrupt);
  EXPECT_EQ(ReadLink(Bytes(4096, 0x4C), 1252, link), Status::Corrupt);
}

/// What an independent reader prints for real shortcuts, where it prints a path at all.
TEST(Lnk, AgreesOnRealShortcuts) {
  const char* data = std::getenv("SCRUBWELL_DATA");
  if (data == nullptr) {
    std::printf("without SCRUBWELL_DATA no real shortcuts\n");
    return;
  }
  struct Row {
    const char* file;
    Status status;
    UnicodeView target;
  };
  constexpr Row kRows[] = {
      {"NeroInfoTool", Status::Ok,
       u"C:\\Program Files (x86)\\Nero\\Nero 9\\Nero InfoTool\\InfoTool.exe"},
      {"museum-001-Chess 2", Status::Ok, u"%ProgramFiles%\\Microsoft Games\\chess\\chess.exe"},
      {"museum-001-Windows Messenger", Status::Ok, u"C:\\Program Files\\Messenger\\msmsgs.exe"},
      {"unpaired_surrogate", Status::Ok, u"C:\\test\\unicode_U+0000d800_\xD800.exe"},
      {"museum-001-Window Switcher", Status::Absent, u""},
      {"museum-001-Home Page 7", Status::Absent, u""},
      {"museum-001-App 2", Status::Absent, u""},
  };
  for (const Row& row : kRows) {
    std::ifstream in(std::string(data) + "/artefacts/lnk/" + row.file + ".lnk", std::ios::binary);
    const Bytes file{std::istreambuf_iterator<char>(in), {}};
    Link link;
    EXPECT_EQ(ReadLink(file, 1252, link), row.status) << row.file;
    EXPECT_EQ(link.target, row.target) << row.file;
  }
}

}  // namespace
}  // namespace scrubwell::lnk
