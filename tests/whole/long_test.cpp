// What is long, deep, many or odd, in memory and on a disk: both find the same, as much as is
// expected, and a clean takes all of it away.
#include <gtest/gtest.h>

#include <cstdlib>

#include "backends/offline/offline_backend.h"
#include "formats/reg/reg_text.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"
#include "whole/sample.h"

namespace scrubwell::test {
namespace {

constexpr UnicodeView kSid = u"S-1-5-21-1-2-3-1001";
const UnicodeString kSoftware = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\";
const UnicodeString kUser = u"HKEY_USERS\\" + UnicodeString(kSid);
const UnicodeString kCurrent = kSoftware + u"Microsoft\\Windows\\CurrentVersion\\";
const UnicodeString kClass = kSoftware + u"Classes\\CLSID\\";
const UnicodeString kSelf = u"Classes\\CLSID\\{00000000-0000-0000-0000-00000000A001}";

using Keys = std::vector<reg::KeyEntry>;

RegValue Text(UnicodeView name, UnicodeView text) {
  return {UnicodeString(name), REGT_SZ, TextData(text)};
}

reg::KeyEntry Key(const UnicodeString& path, std::vector<RegValue> values = {}) {
  reg::KeyEntry key{path, false, 0, {}};
  for (RegValue& value : values) key.values.push_back({std::move(value), false});
  return key;
}

UnicodeString Many(std::size_t count, UnicodeView part) {
  UnicodeString text;
  while (count-- > 0) text += part;
  return text;
}

// Only the last one has anything wrong.
Keys ManyClasses() {
  Keys keys;
  for (int i = 1000000; i <= 1070000; ++i) {
    keys.push_back(Key(kClass + u"{0000000A-0000-0000-0000-00000" + IntToStr(i) + u"}"));
  }
  keys.push_back(Key(keys.back().path + u"\\InprocServer32", {Text(u"", u"C:\\Gone\\last.dll")}));
  return keys;
}

std::vector<RegValue> ManyPaths() {
  std::vector<RegValue> values;
  for (int i = 0; i < 3000; ++i) {
    values.push_back(Text(IntToStr(i) + u"Path", u"C:\\Gone\\" + IntToStr(i) + u".ini"));
  }
  return values;
}

struct Row {
  const char* name;
  Keys keys;
  std::size_t problems;
  bool hasLink = false;
};

std::vector<Row> Rows() {
  const UnicodeString longName = u"{" + Many(253, u"n") + u"}";
  const UnicodeString nul(u"a\0b", 3);
  Bytes target = TextData(u"\\Registry\\Machine\\Software\\" + kSelf);
  target.resize(target.size() - 2);
  return {
      {"a key's name of 255 units",
       {Key(kClass + longName + u"\\InprocServer32", {Text(u"", u"C:\\Gone\\a.dll")})},
       1},
      {"a value's name of 16,000 units",
       {Key(kCurrent + u"SharedDLLs", {Text(u"C:\\Gone\\" + Many(16000, u"v") + u".dll", u"")})},
       1},
      {"512 levels",
       {Key(kUser + u"\\Software\\Mozilla" + Many(509, u"\\d"),
            {Text(u"Install Dir", u"C:\\Gone\\deep.exe,0")})},
       1},
      {"a megabyte in a value",
       {Key(kCurrent + u"SharedDLLs", {{u"C:\\Gone\\big.dll", REGT_BINARY, Bytes(1 << 20)}}),
        Key(kCurrent + u"Run", {Text(u"big", Many(1 << 19, u"x"))})},
       1},
      {"70,001 subkeys", ManyClasses(), 1},
      {"3,000 values", {Key(kUser + u"\\Software\\Mozilla\\x", ManyPaths())}, 3000},
      {"NUL and half a character in names",
       {Key(kCurrent + u"SharedDLLs", {Text(u"C:\\Gone\\\xD800.dll", u"")}),
        Key(kCurrent + u"Run", {Text(nul, u"C:\\Gone\\zero.exe")}),
        Key(kClass + u"{\xDC00}\\InprocServer32", {Text(u"", u"C:\\Gone\\half.dll")})},
       3},
      {"a link to itself",
       {Key(kSoftware + kSelf, {{u"SymbolicLinkValue", REGT_LINK, target}})},
       0,
       true},
      {"a path of 32,000 units",
       {Key(kCurrent + u"Run", {Text(u"long", u"C:\\Gone\\" + Many(32000, u"p") + u".exe")})},
       1},
      {"a path of 8,000 folders",
       {Key(kCurrent + u"Run", {Text(u"deep", u"C:\\Gone" + Many(8000, u"\\ab") + u"\\x.exe")})},
       1},
  };
}

const Keys kBase = {
    Key(kSoftware + u"Microsoft\\Windows NT\\CurrentVersion",
        {Text(u"CurrentVersion", u"6.3"), Text(u"CurrentBuild", u"19045"),
         Text(u"SystemRoot", u"C:\\Windows")}),
    Key(kSoftware + u"Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\" + UnicodeString(kSid),
        {Text(u"ProfileImagePath", u"C:\\Users\\tester")}),
    Key(u"HKEY_LOCAL_MACHINE\\SYSTEM\\Select", {{u"Current", REGT_DWORD, {1, 0, 0, 0}}}),
    Key(u"HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Control\\Session Manager\\Environment",
        {Text(u"PROCESSOR_ARCHITECTURE", u"AMD64")}),
    Key(kUser + u"\\Software"),
};

Findings ScanDisk(Disk& disk, const std::string& text) {
  for (const char* folder : {"Windows/SysWOW64/", "Users/tester/"}) disk.Add(folder);
  disk.Registry(text, kSid);
  disk.WriteHives("Windows", "Users/tester", UnicodeString(kSid));
  const OfflineOpenResult opened = OfflineBackend::Open({disk.Folder(), {}, {}});
  EXPECT_NE(opened.backend, nullptr) << opened.error;
  if (!opened.backend) return {};
  const Package package(opened.backend->Platform());
  return Package::Scan();
}

TEST(Whole, LongAndOddIsFoundAndCleaned) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.name);
    Keys keys = kBase;
    keys.insert(keys.end(), row.keys.begin(), row.keys.end());
    const std::string text = reg::EncodeUtf16(reg::Format(keys));
    Disk disk;
    if (row.hasLink) {
      regf::HiveBuilder& hive = disk.Hive(u"HKLM\\SOFTWARE");
      hive.SetLink(hive.CreatePath(hive.Root(), kSelf));
    }
    const Findings onDisk = ScanDisk(disk, text);
    EXPECT_EQ(onDisk.size(), row.problems) << Difference({}, onDisk).substr(0, 500);

    MemoryBackend backend;
    ASSERT_EQ(backend.AddRegistry(text), "");
    const Package package(backend.Platform());
    EXPECT_EQ(Difference(onDisk, Package::Scan()).substr(0, 500), "");
    CleanDriver({}).Run({.all = true, .ids = {}, .choice = {}}, true);
    EXPECT_EQ(Difference({}, Package::Scan()).substr(0, 500), "");
  }
}

}  // namespace
}  // namespace scrubwell::test
