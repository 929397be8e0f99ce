// Small hives for the tests, and ways to change their bytes.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include "formats/regf/cells.h"
#include "formats/regf/hive.h"
#include "formats/regf/hive_builder.h"
#include "formats/regf/log.h"
#include "registry/Stringhelper.h"
#include "support/disk.h"
#include "support/witness.h"

namespace scrubwell::regf {

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
  std::string program;
  std::vector<const char*> key, value;  ///< what stands once for each in the output
};
inline const Witness Witnesses[] = {{"hivexml", {"<node "}, {"<value "}},
                                    {"reglookup", {",KEY,"}, {",SZ,", ",BINARY,"}},
                                    {"regfexport", {"\nKey path:"}, {"\nValue:"}}};

inline Bytes Pattern(std::size_t size, std::size_t salt = 0) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251 + salt);
  }
  return bytes;
}

inline const UnicodeString OddNames[] = {
    u"plain",        u"UPPER",      u"gr\u00F6\u00DFe",          u"\u041A\u043B\u044E\u0447",
    u"\u00FFumlaut", u"lone\xD800", UnicodeString(u"nul\0x", 5), UnicodeString(u"nul\0", 4)};

struct Shape {
  const char* what;
  BuildOptions options;
  std::size_t children;  ///< that make such lists
};
inline const Shape Shapes[] = {
    {"li", {.lists = ListKind::Index}, 40},
    {"lf, data in one piece", {.minorVersion = 3, .lists = ListKind::Fast}, 40},
    {"lh", {}, 40},
    {"ri of lh", {.leafEntries = 3}, 400},
    {"ri of li", {.lists = ListKind::Index, .leafEntries = 2}, 50},
    {"ri of lf, one each", {.lists = ListKind::Fast, .leafEntries = 1}, 50},
    {"many", {}, 75000}};

/// A few keys with names of all kinds, below each other, and data in segments.
inline Bytes SmallHive(const BuildOptions& options) {
  HiveBuilder builder(options);
  for (const UnicodeView name : {u"a", u"B", u"gr\u00FCn", u"\u041A", u"lone\xD800"}) {
    const auto key = builder.CreatePath(builder.Create(builder.Root(), name), u"x\\y");
    builder.SetText(key, name, name);
    builder.SetClass(key, name);
  }
  builder.SetValue(builder.Root(), {u"b", REGT_BINARY, Bytes(16345, 7)});
  return builder.Build();
}

/// A hive with one key "Box" to be damaged, and "Sound" beside it that must stay readable.
struct Patient {
  Bytes image;
  CellOffset root = NoCell, box = NoCell, alpha = NoCell, beta = NoCell, gamma = NoCell;
  CellOffset big = NoCell;  ///< the second value, with segmented data

  std::span<std::uint8_t> At(CellOffset cell) {
    return std::span(image).subspan(BaseBlockSize + cell + 4U);
  }
  std::uint32_t Field(CellOffset cell, std::size_t field) { return Get32(At(cell), field); }
  void Set(CellOffset cell, std::size_t field, std::uint32_t to) { Put32(At(cell), field, to); }
  void Set16(CellOffset cell, std::size_t field, std::uint16_t to) { Put16(At(cell), field, to); }
  void Resize(CellOffset cell, std::uint32_t to) { Put32(image, BaseBlockSize + cell, to); }
  std::span<std::uint8_t> List() { return At(Field(box, nk::SubkeyList)); }
  std::span<std::uint8_t> ValueList() { return At(Field(box, nk::ValueList)); }
};

inline Patient MakePatient() {
  HiveBuilder builder;
  const auto box = builder.Create(builder.Root(), u"Box");
  for (const UnicodeView name : {u"alpha", u"beta", u"gamma"}) builder.Create(box, name);
  builder.SetText(builder.CreatePath(box, u"beta\\deep"), u"", u"x");
  builder.SetText(box, u"", u"default");
  builder.SetValue(box, {u"big", REGT_BINARY, Pattern(20000)});
  builder.SetText(builder.Create(builder.Root(), u"Sound"), u"v", u"well");
  Patient patient{builder.Build()};
  const OpenedHive opened = Hive::FromBytes(patient.image, "patient");
  const Hive& hive = *opened.hive;
  ValueFacts big;
  patient.root = hive.Root();
  hive.Child(hive.Root(), u"Box", patient.box);
  hive.Child(patient.box, u"alpha", patient.alpha);
  hive.Child(patient.box, u"beta", patient.beta);
  hive.Child(patient.box, u"gamma", patient.gamma);
  hive.FindValue(patient.box, u"big", big);
  patient.big = big.cell;
  return patient;
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

/// With the field set, and the first block's sum right again.
inline Bytes With(Bytes image, std::size_t field, std::uint32_t value) {
  Put32(image, field, value);
  SignBase(image);
  return image;
}

/// The first state as it lies on the disk when the system stopped during a write.
inline Bytes DirtyPrimary() {
  return With(With(State(0), base::Primary, First + 1), base::Secondary, First);
}

inline Bytes LogHead(std::uint32_t type, Bytes hive, std::uint32_t sequence) {
  hive.resize(SectorSize);
  return With(With(With(hive, base::Type, type), base::Primary, sequence), base::Secondary,
              sequence);
}

inline void SignEntry(std::span<std::uint8_t> entry) {
  Put64(entry, 24, LogHash(ByteView(entry).subspan(40)));
  Put64(entry, 32, LogHash(ByteView(entry).first(32)));
}

/// Gives the log right checksums and hashes, so that mutations get past them.
inline void SignLog(Bytes& log) {
  if (log.size() < SectorSize) return;
  SignBase(log);
  for (std::size_t at = SectorSize; log.size() - at >= SectorSize;) {
    const std::span<std::uint8_t> rest = std::span(log).subspan(at);
    const std::size_t entry = Get32(rest, 4);
    if (entry < SectorSize || entry > rest.size()) return;
    SignEntry(rest.first(entry));
    at += entry;
  }
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
