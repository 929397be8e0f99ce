#include "formats/lnk/item_list.h"

namespace scrubwell::lnk {
namespace {

using Span = std::span<const std::uint8_t>;

constexpr std::size_t kTypeAt = 2;
constexpr std::uint8_t kGroupMask = 0x70;
constexpr std::uint8_t kRootGroup = 0x10;
constexpr std::uint8_t kVolumeGroup = 0x20;
constexpr std::uint8_t kNetworkGroup = 0x40;
constexpr std::uint8_t kFileGroup = 0x30;
constexpr std::uint8_t kUnicodeName = 0x04;
constexpr std::size_t kVolumeNameAt = 3;
constexpr std::size_t kFileNameAt = 14;
constexpr std::uint32_t kLongNameSignature = 0xBEEF0004;
constexpr std::size_t kLongNameOffsetAt = 16;
constexpr std::size_t kLongNameFirst = 18;

/// Little-endian; 0 outside of the bytes.
std::uint16_t U16(Span data, std::size_t at) {
  if (at > data.size() || data.size() - at < 2) return 0;
  return static_cast<std::uint16_t>(data[at] | data[at + 1] << 8);
}

UnicodeString WideText(Span data, std::size_t at) {
  UnicodeString out;
  for (char16_t unit = U16(data, at); unit != 0; unit = U16(data, at += 2)) out.push_back(unit);
  return out;
}

/// Empty when a byte needs a code page to be understood.
UnicodeString AsciiText(Span data, std::size_t at) {
  UnicodeString out;
  for (; at < data.size() && data[at] != 0; ++at) {
    if (data[at] >= 0x80) return {};
    out.push_back(data[at]);
  }
  return out;
}

/// The name in the extension block whose place the item's last two bytes give; empty without one.
UnicodeString LongName(Span item) {
  const std::size_t block = U16(item, item.size() - 2);
  if (block < kFileNameAt || block >= item.size()) return {};
  const Span extension = item.subspan(block);
  const std::uint32_t signature = U16(extension, 4) | static_cast<std::uint32_t>(U16(extension, 6))
                                                          << 16;
  const std::size_t name = U16(extension, kLongNameOffsetAt);
  if (signature != kLongNameSignature || name < kLongNameFirst) return {};
  return WideText(extension, name);
}

UnicodeString FileName(Span item) {
  UnicodeString name = LongName(item);
  if (!name.empty()) return name;
  return (item[kTypeAt] & kUnicodeName) != 0 ? WideText(item, kFileNameAt)
                                             : AsciiText(item, kFileNameAt);
}

bool IsDriveRoot(UnicodeView name) {
  const auto letter = name.empty() ? 0 : name[0] | 0x20;
  return name.size() == 3 && letter >= 'a' && letter <= 'z' && name.substr(1) == u":\\";
}

/// Adds one item to the path.
Status Append(Span item, UnicodeString& path) {
  const std::uint8_t group = item[kTypeAt] & kGroupMask;
  if (group == kRootGroup && path.empty()) return Status::Ok;
  if (group == kVolumeGroup && path.empty()) {
    UnicodeString name = AsciiText(item, kVolumeNameAt);
    // A folder of the computer that is no drive has a class where the drive has its letter.
    if (!IsDriveRoot(name)) return Status::Absent;
    path = std::move(name);
    return Status::Ok;
  }
  if (group == kNetworkGroup) return Status::Unknown;
  if (group != kFileGroup) return path.empty() ? Status::Absent : Status::Unknown;
  const UnicodeString name = FileName(item);
  if (path.empty() || name.empty()) return Status::Unknown;
  if (path.back() != u'\\') path.push_back(u'\\');
  path += name;
  return Status::Ok;
}

}  // namespace

Status PathOfItemList(Span list, UnicodeString& out) {
  out.clear();
  UnicodeString path;
  while (list.size() >= 2) {
    const std::size_t size = U16(list, 0);
    if (size == 0) break;
    if (size <= kTypeAt || size > list.size()) return Status::Corrupt;
    const Status status = Append(list.first(size), path);
    if (status != Status::Ok) return status;
    list = list.subspan(size);
  }
  if (path.empty()) return Status::Absent;
  out = std::move(path);
  return Status::Ok;
}

}  // namespace scrubwell::lnk
