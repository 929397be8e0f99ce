// Another reader's tree of every real hive against ours: keys, values and data in their order.
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/regf/hive_samples.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"
#include "support/disk.h"

namespace scrubwell::test {
namespace {

namespace fs = std::filesystem;

std::string Unescape(std::string text) {
  constexpr std::pair<std::string_view, char> kNames[] = {
      {"&lt;", '<'},   {"&gt;", '>'},  {"&quot;", '"'}, {"&#13;", '\r'},
      {"&#10;", '\n'}, {"&#9;", '\t'}, {"&amp;", '&'}};
  for (const auto& [name, character] : kNames) {
    for (std::size_t at = 0; (at = text.find(name, at)) != text.npos; ++at) {
      text.replace(at, name.size(), 1, character);
    }
  }
  return text;
}

std::string Attribute(const std::string& tag, const std::string& name) {
  const std::size_t at = tag.find(" " + name + "=\"");
  if (at == tag.npos) return {};
  const std::size_t from = at + name.size() + 3;
  return Unescape(tag.substr(from, tag.find('"', from) - from));
}

std::string Base64(const Bytes& data) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < data.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j) {
      group = group << 8U | (i + j < data.size() ? data[i + j] : 0U);
    }
    for (std::size_t j = 0; j < 4; ++j) {
      text += i + j <= data.size() ? kDigits[group >> (18 - 6 * j) & 63U] : '=';
    }
  }
  return text;
}

/// Key by key a line with level and name, and below it its values.
std::vector<std::string> Theirs(const std::string& xml) {
  std::vector<std::string> lines;
  int level = 0;
  for (std::size_t at = 0; (at = xml.find('<', at)) != xml.npos;) {
    const std::size_t end = xml.find('>', at);
    const std::string tag = xml.substr(at, end - at);
    if (tag.starts_with("<node ")) {
      lines.push_back(std::to_string(level) + " " + Attribute(tag, "name"));
      if (!tag.ends_with('/')) ++level;
    } else if (tag == "</node") {
      --level;
    } else if (tag.starts_with("<value ")) {
      std::string data = Attribute(tag, "value");
      if (Attribute(tag, "encoding") == "base64") {
        std::erase_if(data, [](char c) { return c == '\n' || c == '\r'; });
      }
      lines.push_back("  " + Attribute(tag, "key") + " = " + data);
    } else if (tag == "<string") {
      lines.back() += Unescape(xml.substr(end + 1, xml.find('<', end) - end - 1)) + "|";
    }
    at = end;
  }
  return lines;
}

std::string Data(const RegValue& value) {
  const UnicodeString text = RegValueText(value);
  switch (value.type) {
    case REGT_SZ:
    case REGT_EXPAND_SZ:
      return ToUtf8(text);
    case REGT_DWORD:  // signed there, and no longer
      return value.data.size() >= 4
                 ? std::to_string(static_cast<std::int32_t>(regf::Get32(value.data, 0)))
                 : Base64(value.data);
    case REGT_QWORD:
      return std::to_string(static_cast<std::int64_t>(regf::Get64(value.data, 0)));
    case REGT_MULTI_SZ: {
      std::string list;
      for (std::size_t i = 0; i + 1 < value.data.size(); i += 2) {
        const auto unit = static_cast<char16_t>(value.data[i] | value.data[i + 1] << 8);
        list += unit == 0 ? "|" : ToUtf8(UnicodeView(&unit, 1));
      }
      // Only there the last text always ends.
      return list.empty() || list.ends_with('|') ? list : list + "|";
    }
    default:
      return Base64(value.data);
  }
}

std::vector<std::string> Ours(const regf::Hive& hive) {
  std::vector<std::string> lines;
  hive.Walk(hive.Root(), [&](const regf::Subkey& subkey, int level) {
    lines.push_back(std::to_string(level) + " " + ToUtf8(subkey.facts.name.Text()));
    std::vector<RegValue> values;
    EXPECT_EQ(hive.Values(subkey.key, values), Status::Ok);
    for (const RegValue& value : values) {
      lines.push_back("  " + ToUtf8(value.name) + " = " + Data(value));
    }
  });
  return lines;
}

TEST(Whole, AnotherReaderSeesTheSameHives) {
  const std::string data = SharedData();
  if (data.empty() || !HasWitness("hivexml")) return;
  const TempFolder folder;
  std::size_t hives = 0;
  for (const auto& entry : fs::directory_iterator(fs::path(data) / "hives")) {
    const std::string name = entry.path().stem().string();
    if (entry.path().extension() != ".xz" || name.find(".LOG") != name.npos) continue;
    SCOPED_TRACE(name);
    const fs::path file = folder.Path() / name;
    ASSERT_TRUE(SharedFile("hives/" + entry.path().filename().string(), file));
    const std::string xml = regf::OutputOf("hivexml '" + file.string() + "'");
    if (xml.find("</hive>") == xml.npos) continue;  // that reader gives up on a damaged hive
    const regf::OpenedHive opened = regf::Hive::FromBytes(ReadBytes(file), name);
    ASSERT_NE(opened.hive, nullptr) << opened.error;
    const std::vector<std::string> theirs = Theirs(xml);
    const std::vector<std::string> ours = Ours(*opened.hive);
    EXPECT_EQ(ours.size(), theirs.size());
    int differences = 0;
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()) && differences < 5; ++i) {
      if (ours[i] == theirs[i]) continue;
      ADD_FAILURE() << "ours:   " << ours[i] << "\ntheirs: " << theirs[i];
      ++differences;
    }
    ++hives;
  }
  EXPECT_GE(hives, 8U);
}

}  // namespace
}  // namespace scrubwell::test
