#include "formats/lnk/lnk.h"

#include <liblnk/features.h>
// The distribution has the library's I/O layer inside and no header for it.
#undef LIBLNK_HAVE_BFIO
#include <liblnk.h>

#include <algorithm>
#include <memory>

#include "formats/libyal/memory_file.h"
#include "formats/lnk/item_list.h"

namespace scrubwell::lnk {
namespace {

constexpr std::size_t kHeaderSize = 0x4C;
constexpr std::size_t kFlagsAt = 0x14;
constexpr std::uint32_t kHasItemList = 0x1;
constexpr std::uint32_t kHasLinkInfo = 0x2;
constexpr std::uint32_t kHasRelativePath = 0x8;
constexpr std::uint32_t kStringFlags[] = {0x4, kHasRelativePath, 0x10, 0x20, 0x40};
constexpr std::uint32_t kIsUnicode = 0x80;
constexpr std::uint32_t kIgnoresLinkInfo = 0x100;
constexpr std::uint32_t kAdvertised = 0x1000;
constexpr int kDefaultCodePage = 1252;
constexpr char16_t kReplacement = 0xFFFD;

using Span = std::span<const std::uint8_t>;

/// Little-endian, the caller having checked the bounds.
std::uint32_t Number(Span data, std::size_t at, std::size_t size) {
  std::uint32_t value = 0;
  while (size-- > 0) value = value << 8 | data[at + size];
  return value;
}

/// Takes a part off the front that says its own length: `field` bytes hold the count of things of
/// `unit` bytes, which come behind the field or, with `inclusive`, begin with it.
bool Skip(Span& rest, std::size_t field, std::size_t unit, bool inclusive) {
  if (rest.size() < field) return false;
  const std::size_t size = Number(rest, 0, field) * unit + (inclusive ? 0 : field);
  if (size < field || size > rest.size()) return false;
  rest = rest.subspan(size);
  return true;
}

/// True when every part ends within the file. The library trusts these lengths and would reserve
/// gigabytes for a damaged one.
bool LengthsHold(Span file) {
  if (file.size() < kHeaderSize) return false;
  const std::uint32_t flags = Number(file, kFlagsAt, 4);
  Span rest = file.subspan(kHeaderSize);
  if ((flags & kHasItemList) != 0 && !Skip(rest, 2, 1, false)) return false;
  if ((flags & kHasLinkInfo) != 0 && !Skip(rest, 4, 1, true)) return false;
  for (const std::uint32_t flag : kStringFlags) {
    const std::size_t unit = (flags & kIsUnicode) != 0 ? 2 : 1;
    if ((flags & flag) != 0 && !Skip(rest, 2, unit, false)) return false;
  }
  while (rest.size() >= 4 && Number(rest, 0, 4) >= 4) {
    if (!Skip(rest, 4, 1, true)) return false;
  }
  return true;
}

struct FileCloser {
  void operator()(liblnk_file_t* file) const { liblnk_file_free(&file, nullptr); }
};
using File = std::unique_ptr<liblnk_file_t, FileCloser>;

using SizeGetter = int (*)(liblnk_file_t*, std::size_t*, liblnk_error_t**);
using TextGetter = int (*)(liblnk_file_t*, std::uint16_t*, std::size_t, liblnk_error_t**);

/// A text of the shortcut. Absent when it has none; Unknown when it has one that did not survive
/// decoding, lone surrogates among them, which are legal in file names but lost by the library.
Status Text(const File& file, SizeGetter sizeOf, TextGetter textOf, UnicodeString& out) {
  out.clear();
  std::size_t size = 0;
  const int found = sizeOf(file.get(), &size, nullptr);
  if (found < 0 || size > kMaxFileSize) return Status::Unknown;
  if (found == 0 || size <= 1) return Status::Absent;
  std::vector<std::uint16_t> units(size);
  if (textOf(file.get(), units.data(), units.size(), nullptr) != 1) return Status::Unknown;
  UnicodeString text(units.begin(), std::find(units.begin(), units.end(), 0));
  if (text.find(kReplacement) != UnicodeString::npos) return Status::Unknown;
  out = std::move(text);
  return out.empty() ? Status::Absent : Status::Ok;
}

bool IsAscii(UnicodeView text) {
  return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

Status ItemListPath(const File& file, UnicodeString& out) {
  std::size_t size = 0;
  const int found = liblnk_file_get_link_target_identifier_data_size(file.get(), &size, nullptr);
  if (found == 0 || (found > 0 && size == 0)) return Status::Absent;
  if (found < 0 || size > kMaxFileSize) return Status::Corrupt;
  Bytes data(size);
  if (liblnk_file_copy_link_target_identifier_data(file.get(), data.data(), size, nullptr) != 1) {
    return Status::Corrupt;
  }
  return PathOfItemList(data, out);
}

struct PathSource {
  Source source;
  SizeGetter sizeOf;
  TextGetter textOf;
};

constexpr PathSource kPathSources[] = {
    {Source::Environment, liblnk_file_get_utf16_environment_variables_location_size,
     liblnk_file_get_utf16_environment_variables_location},
    {Source::LocalPath, liblnk_file_get_utf16_local_path_size, liblnk_file_get_utf16_local_path},
    {Source::NetworkPath, liblnk_file_get_utf16_network_path_size,
     liblnk_file_get_utf16_network_path},
};

/// `knownPage` false: texts may have been decoded with the wrong page.
Status FindTarget(const File& file, std::uint32_t flags, bool knownPage, Link& out) {
  if ((flags & kAdvertised) != 0) return Status::Absent;
  Status outcome = Status::Absent;
  for (const PathSource& path : kPathSources) {
    // Only the environment's path is no part of the link information.
    if ((flags & kIgnoresLinkInfo) != 0 && path.source != Source::Environment) continue;
    Status status = Text(file, path.sizeOf, path.textOf, out.target);
    if (status == Status::Ok && !knownPage && !IsAscii(out.target)) status = Status::Unknown;
    out.source = path.source;
    if (status == Status::Ok) return status;
    if (status != Status::Absent) outcome = status;
  }
  if ((flags & kHasItemList) != 0) {
    const Status status = ItemListPath(file, out.target);
    out.source = Source::ItemList;
    if (status == Status::Ok) return status;
    if (status != Status::Absent) outcome = status;
    // A list without a file speaks for a virtual target, whatever a relative path says.
    if (outcome == Status::Absent) return outcome;
  }
  out.target.clear();
  if ((flags & kHasRelativePath) == 0 || out.relativePath.empty()) return outcome;
  out.target = out.relativePath;
  out.source = Source::RelativePath;
  return Status::Ok;
}

}  // namespace

Status ReadLink(Span bytes, int ansiCodePage, Link& out) {
  out = {};
  if (bytes.size() > kMaxFileSize || !LengthsHold(bytes)) return Status::Corrupt;
  const libyal::MemoryFile memory(bytes);
  if (memory.Name().empty()) return Status::Unknown;
  liblnk_file_t* raw = nullptr;
  if (liblnk_file_initialize(&raw, nullptr) != 1) return Status::Unknown;
  const File file(raw);
  const bool knownPage = liblnk_file_set_ascii_codepage(raw, ansiCodePage, nullptr) == 1;
  if (!knownPage) liblnk_file_set_ascii_codepage(raw, kDefaultCodePage, nullptr);
  std::uint32_t flags = 0;
  if (liblnk_file_open(raw, memory.Name().c_str(), LIBLNK_OPEN_READ, nullptr) != 1 ||
      liblnk_file_get_data_flags(raw, &flags, nullptr) != 1) {
    return Status::Corrupt;
  }
  (void)Text(file, liblnk_file_get_utf16_relative_path_size, liblnk_file_get_utf16_relative_path,
             out.relativePath);
  (void)Text(file, liblnk_file_get_utf16_working_directory_size,
             liblnk_file_get_utf16_working_directory, out.workingDirectory);
  (void)Text(file, liblnk_file_get_utf16_command_line_arguments_size,
             liblnk_file_get_utf16_command_line_arguments, out.arguments);
  const Status status = FindTarget(file, flags, knownPage, out);
  if (status != Status::Ok) out.target.clear();
  return status;
}

}  // namespace scrubwell::lnk
