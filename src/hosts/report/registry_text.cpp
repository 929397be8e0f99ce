#include "hosts/report/registry_text.h"

#include <algorithm>
#include <array>

#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/report.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell::hosts {

namespace {

constexpr std::array<std::string_view, 12> kTypeNames = {
    "REG_NONE",
    "REG_SZ",
    "REG_EXPAND_SZ",
    "REG_BINARY",
    "REG_DWORD",
    "REG_DWORD_BIG_ENDIAN",
    "REG_LINK",
    "REG_MULTI_SZ",
    "REG_RESOURCE_LIST",
    "REG_FULL_RESOURCE_DESCRIPTOR",
    "REG_RESOURCE_REQUIREMENTS_LIST",
    "REG_QWORD",
};
// Of larger data JSON holds only the beginning; its size is told.
constexpr std::size_t kMostJsonBytes = 65536;

void AppendHex(std::string& out, std::uint64_t number, int digits) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) {
    out += kDigits[static_cast<std::size_t>(number >> shift & 0xF)];
  }
}

std::string HexBytes(const Bytes& data, std::size_t most, std::string_view separator) {
  std::string out;
  const std::size_t count = std::min(data.size(), most);
  out.reserve(count * (2 + separator.size()));
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) out += separator;
    AppendHex(out, data[i], 2);
  }
  return out;
}

bool IsNumber(const RegValue& value) {
  return ((value.type == REGT_DWORD || value.type == REGT_DWORD_BE) && value.data.size() == 4) ||
         (value.type == REGT_QWORD && value.data.size() == 8);
}

std::string NumberText(const RegValue& value) {
  std::uint64_t number = 0;
  const std::size_t size = value.data.size();
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t at = value.type == REGT_DWORD_BE ? i : size - 1 - i;
    number = number << 8 | value.data[at];
  }
  std::string out = "0x";
  AppendHex(out, number, static_cast<int>(size * 2));
  return out + " (" + std::to_string(number) + ')';
}

std::string Quoted(UnicodeView text) {
  return '"' + Printable(text) + '"';
}

}  // namespace

std::string TypeName(std::uint32_t type) {
  if (type < kTypeNames.size()) return std::string(kTypeNames[type]);
  std::string name = "type 0x";
  AppendHex(name, type, 8);
  return name;
}

std::string DataText(const RegValue& value, std::size_t mostBytes) {
  if (IsTextType(value.type) || value.type == REGT_LINK) return Quoted(RegValueText(value));
  if (value.type == REGT_MULTI_SZ) {
    std::string out;
    for (const UnicodeString& text : ParamXAll(RegValueText(value), u'\n')) {
      out += (out.empty() ? "" : ", ") + Quoted(text);
    }
    return out;
  }
  if (IsNumber(value)) return NumberText(value);
  std::string out = HexBytes(value.data, mostBytes, " ");
  if (value.data.size() > mostBytes) {
    out += " ... (" + Say(texts::ByteCount, {std::to_string(value.data.size())}) + ')';
  }
  return out;
}

std::string ValueLine(const RegValue& value, std::size_t mostBytes) {
  const std::string name = value.name.empty() ? Say(texts::DefaultValueName) : Quoted(value.name);
  return name + "  " + TypeName(value.type) + "  " + DataText(value, mostBytes);
}

void WriteValue(JsonWriter& json, const RegValue& value) {
  json.BeginObject();
  json.Key("name").Text(value.name);
  json.Key("type").Number(value.type);
  json.Key("type_name").Text(TypeName(value.type));
  json.Key("text").Text(RegValueText(value));
  json.Key("bytes").Number(static_cast<std::int64_t>(value.data.size()));
  json.Key("hex").Text(HexBytes(value.data, kMostJsonBytes, {}));
  json.EndObject();
}

std::string KeyText(const KeyRef& key) {
  return Printable(RegKeyToStr(key.root, key.path, false));
}

int ViewBits(View view) {
  return view == View::Bits32 ? 32 : view == View::Bits64 ? 64 : 0;
}

}  // namespace scrubwell::hosts
