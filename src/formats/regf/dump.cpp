#include "formats/regf/dump.h"

#include <algorithm>
#include <cstdio>

#include "registry/Stringhelper.h"

namespace scrubwell::regf {
namespace {

constexpr std::size_t LongData = 256;

bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}
bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

class Dumper {
 public:
  Dumper(const Hive& hive, DumpOptions options, std::string& out)
      : hive_(hive), options_(options), out_(out) {}

  Status Run(CellOffset start) {
    KeyFacts facts;
    if (hive_.Key(start, facts) != Status::Ok) {
      Damaged("key");
    } else {
      DumpKey({start, facts}, 0);
    }
    return whole_ ? Status::Ok : Status::Corrupt;
  }

 private:
  void Damaged(const char* what) {
    whole_ = false;
    out_ += std::string("damaged ") + what + "\n";
  }

  /// Two different names never look alike: what could be taken for something else is escaped.
  void AppendName(const NameRef& name, std::string& to) {
    name.CopyTo(name_);
    const UnicodeView text = name_;
    std::size_t plain = 0;  // what stands from here on needs no escape
    for (std::size_t i = 0; i < text.size(); ++i) {
      const char16_t unit = text[i];
      if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
        ++i;
        continue;
      }
      const bool lone = IsHighSurrogate(unit) || IsLowSurrogate(unit);
      if (unit >= 0x20 && unit != u'\\' && unit != u'"' && unit != u']' && !lone) continue;
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(unit));
      to += ToUtf8(text.substr(plain, i - plain)) + escape;
      plain = i + 1;
    }
    to += ToUtf8(text.substr(plain));
  }

  void AppendHash(ByteView bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;  // FNV-1a
    for (const std::uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3U;
    char text[64];
    std::snprintf(text, sizeof text, "size %zu hash %016llx\n", bytes.size(),
                  static_cast<unsigned long long>(hash));
    out_ += text;
  }
  void AppendBytes(ByteView bytes) {
    if (bytes.size() > LongData) return AppendHash(bytes);
    constexpr char digits[] = "0123456789abcdef";
    for (const std::uint8_t byte : bytes) {
      out_ += digits[byte >> 4];
      out_ += digits[byte & 15];
    }
    out_ += '\n';
  }

  void DumpKey(const Subkey& key, int level) {
    out_ += "[" + path_ + "]\n";
    UnicodeString className;
    const Status classStatus = hive_.ClassName(key.key, className);
    if (classStatus == Status::Ok) {
      out_ += "class \"";
      Bytes units(className.size() * 2);
      for (std::size_t i = 0; i < className.size(); ++i) Put16(units, i * 2, className[i]);
      AppendName(NameRef(units, false), out_);
      out_ += "\"\n";
    } else if (classStatus == Status::Corrupt) {
      Damaged("class");
    }
    if (key.facts.IsLink()) out_ += "link\n";
    DumpSecurity(key.key);
    if (options_.times) out_ += "time " + std::to_string(key.facts.lastWritten) + "\n";
    DumpValues(key);
    DumpSubkeys(key, level);
  }

  void DumpSecurity(CellOffset key) {
    ByteView security;
    const Status status = hive_.Security(key, security);
    if (status == Status::Corrupt) Damaged("security");
    if (status != Status::Ok) return;
    out_ += "security ";
    AppendHash(security);
  }

  void DumpValues(const Subkey& key) {
    std::vector<ValueFacts> values;
    const Status status = hive_.ForEachValue(
        key.key, [&values](const ValueFacts& value) { values.push_back(value); });
    if (status != Status::Ok) Damaged("values");
    std::ranges::stable_sort(values, [](const ValueFacts& a, const ValueFacts& b) {
      return a.name.Compare(b.name) < 0;
    });
    for (const ValueFacts& value : values) {
      out_ += '"';
      AppendName(value.name, out_);
      out_ += "\"=" + std::to_string(value.type) + ":";
      ByteView inPlace;
      Status read = hive_.DataInPlace(value, inPlace);
      if (read == Status::Absent) {
        read = hive_.Data(value, data_);
        inPlace = data_;
      }
      if (read == Status::Ok) {
        AppendBytes(inPlace);
      } else {
        Damaged("data");
      }
    }
  }

  void DumpSubkeys(const Subkey& key, int level) {
    if (key.facts.subkeyCount == 0) return;
    if (level == Hive::MaxDepth) return Damaged("depth");
    std::vector<Subkey> children;
    if (hive_.Subkeys(key.key, children) != Status::Ok) Damaged("subkeys");
    std::ranges::stable_sort(children, [](const Subkey& a, const Subkey& b) {
      return a.facts.name.Compare(b.facts.name) < 0;
    });
    const std::size_t length = path_.size();
    for (const Subkey& child : children) {
      path_ += '\\';
      AppendName(child.facts.name, path_);
      DumpKey(child, level + 1);
      path_.resize(length);
    }
  }

  const Hive& hive_;
  DumpOptions options_;
  std::string& out_;
  std::string path_;
  UnicodeString name_;
  Bytes data_;
  bool whole_ = true;
};

}  // namespace

Status DumpTree(const Hive& hive, CellOffset start, DumpOptions options, std::string& out) {
  return Dumper(hive, options, out).Run(start);
}

std::string DumpTree(const Hive& hive, DumpOptions options) {
  std::string out;
  DumpTree(hive, hive.Root(), options, out);
  return out;
}

}  // namespace scrubwell::regf
