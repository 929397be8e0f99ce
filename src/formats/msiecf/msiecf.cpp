#include "formats/msiecf/msiecf.h"

#include <libmsiecf/features.h>
// The distribution has the library's I/O layer inside and no header for it.
#undef LIBMSIECF_HAVE_BFIO
#include <libmsiecf.h>

#include <algorithm>
#include <memory>

#include "formats/libyal/memory_file.h"
#include "formats/msiecf/cache_file.h"

namespace scrubwell::msiecf {
namespace {

/// What a hash item holds that was in use and is free again. An item that was never used ends the
/// search in its group, so that mark must not come between two used ones.
constexpr std::uint32_t kFreedHashItem = 1;

struct FileCloser {
  void operator()(libmsiecf_file_t* file) const { libmsiecf_file_free(&file, nullptr); }
};
struct ItemCloser {
  void operator()(libmsiecf_item_t* item) const { libmsiecf_item_free(&item, nullptr); }
};
using File = std::unique_ptr<libmsiecf_file_t, FileCloser>;
using Item = std::unique_ptr<libmsiecf_item_t, ItemCloser>;

bool ReadRecord(libmsiecf_item_t* item, UrlRecord& out) {
  std::uint8_t type = 0;
  if (libmsiecf_item_get_type(item, &type, nullptr) != 1 || type != LIBMSIECF_ITEM_TYPE_URL) {
    return false;
  }
  off64_t offset = 0;
  size64_t size = 0;
  std::size_t length = 0;
  if (libmsiecf_item_get_offset_range(item, &offset, &size, nullptr) != 1 || offset < 0 ||
      libmsiecf_url_get_location_size(item, &length, nullptr) != 1 || length <= 1 ||
      length > kMaxFileSize) {
    return false;
  }
  std::string text(length, '\0');
  if (libmsiecf_url_get_location(item, text.data(), text.size(), nullptr) != 1) return false;
  text.resize(std::min(text.find('\0'), text.size()));
  out = {static_cast<std::uint64_t>(offset), size, std::move(text)};
  return !out.location.empty();
}

}  // namespace

Status ReadUrls(std::span<const std::uint8_t> bytes, std::vector<UrlRecord>& out) {
  out.clear();
  CacheFile checked;
  if (bytes.size() > kMaxFileSize) return Status::Corrupt;
  if (const Status status = checked.Open(bytes); status != Status::Ok) return status;
  // The library trusts lengths: damaged ones make it lose memory or never come back.
  const libyal::MemoryFile memory(checked.SoundCopy());
  if (memory.Name().empty()) return Status::Unknown;
  libmsiecf_file_t* raw = nullptr;
  if (libmsiecf_file_initialize(&raw, nullptr) != 1) return Status::Unknown;
  const File file(raw);
  int count = 0;
  if (libmsiecf_file_open(raw, memory.Name().c_str(), LIBMSIECF_OPEN_READ, nullptr) != 1 ||
      libmsiecf_file_get_number_of_items(raw, &count, nullptr) != 1) {
    return Status::Corrupt;
  }
  for (int i = 0; i < count; ++i) {
    libmsiecf_item_t* item = nullptr;
    UrlRecord record;
    if (libmsiecf_file_get_item_by_index(raw, i, &item, nullptr) != 1) continue;
    const Item owner(item);
    if (ReadRecord(item, record)) out.push_back(std::move(record));
  }
  return Status::Ok;
}

Status EraseRecord(Bytes& file, std::string_view location) {
  CacheFile cache;
  if (file.size() > kMaxFileSize) return Status::Corrupt;
  if (const Status status = cache.Open(file); status != Status::Ok) return status;
  CacheFile::Record record;
  if (const Status status = cache.Find(location, record); status != Status::Ok) return status;
  const std::uint64_t first = (record.offset - kFirstBlock) / kBlockSize;
  for (std::uint64_t block = first; block < first + record.blocks; ++block) {
    if (!cache.IsAllocated(block)) return Status::Corrupt;
  }
  const std::uint64_t allocated = cache.AllocatedBlocks();
  if (allocated < record.blocks) return Status::Corrupt;
  if (U32(file, record.offset + kFileNameOffsetAt) != 0) return Status::Denied;

  // Everything is known to fit: from here on nothing can fail.
  for (const std::uint64_t item : cache.HashItemsOf(record.offset)) {
    SetU32(file, item, kFreedHashItem);
    SetU32(file, item + 4, kFreedHashItem);
  }
  for (std::uint64_t block = first; block < first + record.blocks; ++block) {
    std::uint8_t& bits = file[BitmapByte(block)];
    bits = static_cast<std::uint8_t>(bits & ~BitmapBit(block));
  }
  SetU32(file, kAllocatedCountAt, static_cast<std::uint32_t>(allocated - record.blocks));
  const auto start = file.begin() + static_cast<std::ptrdiff_t>(record.offset);
  std::fill(start, start + static_cast<std::ptrdiff_t>(record.blocks * kBlockSize),
            std::uint8_t{0});
  return Status::Ok;
}

}  // namespace scrubwell::msiecf
