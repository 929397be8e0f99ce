// Shortcuts for tests.
#pragma once

#include "formats/lnk/lnk.h"

namespace scrubwell::lnk {

inline void Put(Bytes& out, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i) out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}
inline void PutAnsi(Bytes& out, std::string_view text) {
  out.insert(out.end(), text.begin(), text.end());
  out.push_back(0);
}
inline void PutWide(Bytes& out, UnicodeView text) {
  for (const char16_t unit : text) Put(out, unit, 2);
}
inline void Append(Bytes& out, const Bytes& more) {
  out.insert(out.end(), more.begin(), more.end());
}

inline Bytes Item(const Bytes& content) {
  Bytes out;
  Put(out, content.size() + 2, 2);
  Append(out, content);
  return out;
}
inline const Bytes kComputer = Item({0x1F, 0x50, 0xE0, 0x4F, 0xD0, 0x20});
inline const Bytes kDriveC = Item({0x2F, 'C', ':', '\\', 0, 0});
inline const Bytes kControlPanel = Item({0x71, 0, 0, 0});

inline Bytes FileItem(std::string_view shortName, UnicodeView longName) {
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

inline Bytes LinkInfo(const Parts& parts) {
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

inline Bytes BuildLink(const Parts& parts) {
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

}  // namespace scrubwell::lnk
