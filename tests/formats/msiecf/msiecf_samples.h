// An address file for tests.
#pragma once

#include <algorithm>

#include "formats/msiecf/msiecf.h"

namespace scrubwell::msiecf {

inline constexpr std::size_t kTable = 0x4000;
inline constexpr std::size_t kTableBlocks = 32;
inline constexpr std::size_t kRecords = kTable + kTableBlocks * 128;
inline constexpr std::size_t kBlocks = 64;

inline void Set(Bytes& file, std::size_t at, std::size_t value, std::size_t size = 4) {
  for (std::size_t i = 0; i < size; ++i) file[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
}
inline std::size_t Get(const Bytes& file, std::size_t at) {
  return file[at] | std::size_t{file[at + 1]} << 8 | std::size_t{file[at + 2]} << 16;
}
inline void SetText(Bytes& file, std::size_t at, std::string_view text) {
  std::copy(text.begin(), text.end(), file.begin() + static_cast<std::ptrdiff_t>(at));
}
inline std::size_t HashItem(std::size_t index) {
  return kTable + 16 + index * 8;
}
inline std::size_t Record(std::size_t index) {
  return kRecords + index * 256;
}

/// A file with these locations, two blocks each, side by side in one group of the hash table.
inline Bytes BuildFile(std::initializer_list<std::string_view> locations) {
  Bytes file(0x4000 + kBlocks * 128);
  SetText(file, 0, "Client UrlCache MMF Ver 5.2");
  Set(file, 28, file.size());
  Set(file, 32, kTable);
  Set(file, 36, kBlocks);
  const std::size_t used = kTableBlocks + locations.size() * 2;
  Set(file, 40, used);
  for (std::size_t i = 0; i < used; ++i) {
    file[0x250 + i / 8] = static_cast<std::uint8_t>(file[0x250 + i / 8] | 1U << i % 8);
  }
  SetText(file, kTable, "HASH");
  Set(file, kTable + 4, kTableBlocks);
  for (std::size_t i = 0; i < 510; ++i) Set(file, HashItem(i), 3), Set(file, HashItem(i) + 4, 3);
  std::size_t index = 0;
  for (const std::string_view location : locations) {
    const std::size_t at = Record(index);
    SetText(file, at, "URL ");
    Set(file, at + 4, 2);
    Set(file, at + 52, 104);
    file[at + 56] = 0xFE;
    SetText(file, at + 104, location);
    Set(file, HashItem(index), 0x1240 + index * 0x40);
    Set(file, HashItem(index++) + 4, at);
  }
  return file;
}

}  // namespace scrubwell::msiecf
