// Small hives for the tests, and ways to change their bytes.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

#include "formats/regf/cells.h"
#include "formats/regf/hive.h"
#include "formats/regf/hive_builder.h"
#include "formats/regf/log.h"
#include "registry/Stringhelper.h"
#include "support/witness.h"

namespace scrubwell::regf {

/// A folder that goes with the test.
class TempFolder {
 public:
  TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "regfXXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  [[nodiscard]] std::filesystem::path Store(const std::string& name, const Bytes& bytes) const {
    std::ofstream(path_ / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path_ / name;
  }
  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

using test::OutputOf;

inline std::size_t CountOf(const std::string& text, const std::vector<const char*>& marks) {
  std::size_t count = 0;
  for (const char* mark : marks) {
    for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) ++count;
  }
  return count;
}

/// Readers of others, where they are installed.
struct Witness {
  const char* program;
  std::vector<const char*> key, value;  ///< what stands once for each in the output
};
inline const Witness Witnesses[] = {{"hivexml", {"<node "}, {"<value "}},
                                    {"reglookup", {",KEY,"}, {",SZ,", ",BINARY,"}},
                                    {"regfexport", {"\nKey path:"}, {"\nValue:"}}};

/// The tree as lines, so that two trees can be compared as a whole.
inline std::string Dump(const Hive& hive) {
  std::string text;
  hive.Walk(hive.Root(), [&](const Subkey& subkey, int level) {
    text += std::string(static_cast<std::size_t>(level), ' ') + ToUtf8(subkey.facts.name.Text());
    UnicodeString className;
    if (hive.ClassName(subkey.key, className) == Status::Ok) text += " class " + ToUtf8(className);
    text += subkey.facts.IsLink() ? " link\n" : "\n";
    std::vector<RegValue> values;
    if (hive.Values(subkey.key, values) != Status::Ok) text += "damaged values\n";
    for (const RegValue& value : values) {
      text += "  " + ToUtf8(value.name) + "=" + std::to_string(value.type) + ":" +
              std::string(value.data.begin(), value.data.end()) + "\n";
    }
  });
  return text;
}

// Three transactions on a small hive, as hives and as logs.

inline constexpr std::uint32_t First = 40;  // sequence of the first entry

/// The hive after `state` transactions. The last one adds bins.
inline Bytes State(std::uint32_t state) {
  HiveBuilder builder;
  const auto key = builder.Create(builder.Root(), u"Key");
  builder.SetNumber(key, u"state", state);
  if (state == 3) builder.SetValue(key, {u"more", REGT_BINARY, Bytes(9000, 0x5A)});
  return builder.Build();
}

inline std::uint32_t BinsSize(const Bytes& hive) {
  return static_cast<std::uint32_t>(hive.size() - BaseBlockSize);
}

inline void SignBase(Bytes& image) {
  Put32(image, base::Checksum, BaseBlockChecksum(image));
}

/// The first state as it lies on the disk when the system stopped during a write.
inline Bytes DirtyPrimary() {
  Bytes hive = State(0);
  Put32(hive, base::Primary, First + 1);
  Put32(hive, base::Secondary, First);
  SignBase(hive);
  return hive;
}

inline Bytes LogHead(std::uint32_t type, const Bytes& hive, std::uint32_t sequence) {
  Bytes head(hive.begin(), hive.begin() + SectorSize);
  Put32(head, base::Type, type);
  Put32(head, base::Primary, sequence);
  Put32(head, base::Secondary, sequence);
  SignBase(head);
  return head;
}

inline void SignEntry(std::span<std::uint8_t> entry) {
  Put64(entry, 24, LogHash(ByteView(entry).subspan(40)));
  Put64(entry, 32, LogHash(ByteView(entry).first(32)));
}

/// The entry that leads from one state to the next, all pages of it.
inline Bytes MakeEntry(std::uint32_t from) {
  const Bytes next = State(from + 1);
  const std::uint32_t pages = BinsSize(next) / 4096;
  const std::size_t used = 40 + pages * 8 + BinsSize(next);
  Bytes entry((used + 511) / 512 * 512);
  std::copy_n("HvLE", 4, entry.begin());
  Put32(entry, 4, static_cast<std::uint32_t>(entry.size()));
  Put32(entry, 12, First + from);
  Put32(entry, 16, BinsSize(next));
  Put32(entry, 20, pages);
  for (std::uint32_t page = 0; page < pages; ++page) {
    Put32(entry, 40 + page * 8, page * 4096);
    Put32(entry, 44 + page * 8, 4096);
  }
  std::copy(next.begin() + BaseBlockSize, next.end(),
            entry.begin() + static_cast<std::ptrdiff_t>(40 + pages * 8));
  SignEntry(entry);
  return entry;
}

inline Bytes NewLog(std::initializer_list<std::uint32_t> steps) {
  Bytes log = LogHead(6, DirtyPrimary(), First + *steps.begin());
  for (const std::uint32_t step : steps) {
    const Bytes entry = MakeEntry(step);
    log.insert(log.end(), entry.begin(), entry.end());
  }
  return log;
}

/// An old log with the last state: every page dirty.
inline Bytes OldLog() {
  const Bytes next = State(3);
  Bytes log = LogHead(1, next, First + 1);
  log.resize(2 * SectorSize);  // the bitmap of these few pages fits its first sector
  std::copy_n("DIRT", 4, log.begin() + SectorSize);
  std::fill_n(log.begin() + SectorSize + 4, BinsSize(next) / 4096, std::uint8_t{0xFF});
  log.insert(log.end(), next.begin() + BaseBlockSize, next.end());
  return log;
}

}  // namespace scrubwell::regf
