#include "formats/msiecf/cache_file.h"

#include <algorithm>

namespace scrubwell::msiecf {
namespace {

constexpr std::string_view kSignaturePrefix = "Client UrlCache MMF Ver ";
constexpr std::string_view kVersion = "5.2";
constexpr std::uint64_t kFileSizeAt = 28;
constexpr std::uint64_t kFirstHashAt = 32;
constexpr std::uint64_t kBlockCountAt = 36;
constexpr std::uint64_t kFolderCountAt = 72;
constexpr std::uint64_t kFoldersAt = 76;
constexpr std::uint64_t kFolderSize = 12;
constexpr std::uint64_t kBitmapAt = 0x250;
constexpr std::uint64_t kBitmapBlocks = (kFirstBlock - kBitmapAt) * 8;

constexpr std::string_view kUrlSignature = "URL ";
constexpr std::string_view kSignatures[] = {kUrlSignature, "HASH", "REDR", "LEAK"};
constexpr std::uint64_t kRecordBlocksAt = 4;
constexpr std::uint64_t kNextHashAt = 8;
constexpr std::uint64_t kHashItemsAt = 16;
constexpr std::uint64_t kHashItemSize = 8;
constexpr std::uint32_t kHashItemUnused = 1;
constexpr std::uint64_t kLocationOffsetAt = 52;
constexpr std::uint64_t kDataOffsetAt = 68;
constexpr std::uint64_t kDataSizeAt = 72;
constexpr std::uint64_t kSmallestUrlRecord = 104;

using Span = std::span<const std::uint8_t>;

std::string_view Chars(Span file, std::uint64_t at, std::uint64_t size) {
  const Span part = file.subspan(at, size);
  return {reinterpret_cast<const char*>(part.data()), part.size()};
}

bool IsRecord(Span file, std::uint64_t at) {
  const std::string_view signature = Chars(file, at, kUrlSignature.size());
  return std::find(std::begin(kSignatures), std::end(kSignatures), signature) !=
         std::end(kSignatures);
}

// The library looks for records from the start of the file on. One in front of the first block,
// which there can't be, would not be among those whose lengths are checked here.
bool HasRecordInHeader(Span file) {
  for (std::uint64_t at = 0; at < kFirstBlock; at += kBlockSize) {
    if (IsRecord(file, at)) return true;
  }
  return false;
}

}  // namespace

std::uint32_t U32(Span data, std::uint64_t at) {
  std::uint32_t value = 0;
  for (std::uint64_t i = 4; i-- > 0;) value = value << 8 | data[at + i];
  return value;
}

void SetU32(std::span<std::uint8_t> data, std::uint64_t at, std::uint32_t value) {
  for (std::uint64_t i = 0; i < 4; ++i) data[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

std::uint64_t BitmapByte(std::uint64_t block) {
  return kBitmapAt + block / 8;
}
std::uint8_t BitmapBit(std::uint64_t block) {
  return static_cast<std::uint8_t>(1U << block % 8);
}

Status CacheFile::Open(Span file) {
  *this = {};
  if (file.size() < kFirstBlock) return Status::Corrupt;
  if (Chars(file, 0, kSignaturePrefix.size()) != kSignaturePrefix) return Status::Corrupt;
  if (Chars(file, kSignaturePrefix.size(), kVersion.size()) != kVersion) return Status::Unknown;
  const std::uint64_t size = U32(file, kFileSizeAt);
  if (size < kFirstBlock || size > file.size()) return Status::Corrupt;
  // The library takes room for as many cache folders as the header says.
  if (U32(file, kFolderCountAt) > (kBitmapAt - kFoldersAt) / kFolderSize) return Status::Corrupt;
  if (HasRecordInHeader(file)) return Status::Corrupt;
  file_ = file.first(size);
  blockCount_ = std::min(
      {std::uint64_t{U32(file, kBlockCountAt)}, (size - kFirstBlock) / kBlockSize, kBitmapBlocks});
  std::vector<bool> seen(blockCount_);
  for (std::uint64_t at = U32(file, kFirstHashAt); at != 0; at = U32(file_, at + kNextHashAt)) {
    Record table{at, 0};
    if (!Spans(at, table.blocks) || Chars(file_, at, 4) != "HASH") return Status::Corrupt;
    // Tables neither meet again nor overlap, so that a walk over all of them ends soon.
    for (std::uint64_t i = 0, block = (at - kFirstBlock) / kBlockSize; i < table.blocks; ++i) {
      if (seen[block + i]) return Status::Corrupt;
      seen[block + i] = true;
    }
    hashTables_.push_back(table);
  }
  return Status::Ok;
}

/// True when a record that says its own length lies within the file at this offset.
bool CacheFile::Spans(std::uint64_t offset, std::uint64_t& blocks) const {
  if (offset < kFirstBlock || (offset - kFirstBlock) % kBlockSize != 0) return false;
  const std::uint64_t first = (offset - kFirstBlock) / kBlockSize;
  if (first >= blockCount_) return false;
  blocks = U32(file_, offset + kRecordBlocksAt);
  return blocks > 0 && blocks <= blockCount_ - first;
}

bool CacheFile::IsAllocated(std::uint64_t block) const {
  return (file_[BitmapByte(block)] & BitmapBit(block)) != 0;
}

std::uint64_t CacheFile::AllocatedBlocks() const {
  return U32(file_, kAllocatedCountAt);
}

std::string_view CacheFile::LocationOf(const Record& record) const {
  const std::uint64_t size = record.blocks * kBlockSize;
  const std::uint64_t at = U32(file_, record.offset + kLocationOffsetAt);
  if (at < kSmallestUrlRecord || at >= size) return {};
  const std::string_view text = Chars(file_, record.offset + at, size - at);
  return text.substr(0, text.find('\0'));
}

bool CacheFile::IsUrl(const Record& record) const {
  return Chars(file_, record.offset, kUrlSignature.size()) == kUrlSignature;
}

bool CacheFile::IsSound(const Record& record) const {
  const std::uint64_t size = record.blocks * kBlockSize;
  const std::uint64_t data = U32(file_, record.offset + kDataOffsetAt);
  return !LocationOf(record).empty() && U32(file_, record.offset + kFileNameOffsetAt) < size &&
         data < size && U32(file_, record.offset + kDataSizeAt) <= size - data;
}

/// From record to record, so that data inside a record is never taken for one.
bool CacheFile::NextRecord(std::uint64_t& block, Record& out) const {
  for (; block < blockCount_; ++block) {
    out = {kFirstBlock + block * kBlockSize, 0};
    if (IsRecord(file_, out.offset) && IsAllocated(block) && Spans(out.offset, out.blocks)) {
      block += out.blocks;
      return true;
    }
  }
  return false;
}

Status CacheFile::Find(std::string_view location, Record& out) const {
  std::uint64_t block = 0;
  while (NextRecord(block, out)) {
    if (!location.empty() && IsUrl(out) && LocationOf(out) == location) return Status::Ok;
  }
  return Status::Absent;
}

Bytes CacheFile::SoundCopy() const {
  Bytes copy(file_.begin(), file_.begin() + static_cast<std::ptrdiff_t>(kFirstBlock));
  copy.resize(file_.size());
  const auto keep = [&](const Record& record) {
    const Span bytes = file_.subspan(record.offset, record.blocks * kBlockSize);
    std::copy(bytes.begin(), bytes.end(),
              copy.begin() + static_cast<std::ptrdiff_t>(record.offset));
  };
  std::uint64_t block = 0;
  Record record;
  while (NextRecord(block, record)) {
    if (!IsUrl(record) || IsSound(record)) keep(record);
  }
  for (const Record& table : hashTables_) keep(table);
  return copy;
}

std::vector<std::uint64_t> CacheFile::HashItemsOf(std::uint64_t recordOffset) const {
  std::vector<std::uint64_t> items;
  for (const Record& table : hashTables_) {
    const std::uint64_t end = table.offset + table.blocks * kBlockSize;
    for (std::uint64_t at = table.offset + kHashItemsAt; at < end; at += kHashItemSize) {
      const bool unused = (U32(file_, at) & kHashItemUnused) != 0;
      if (!unused && U32(file_, at + 4) == recordOffset) items.push_back(at);
    }
  }
  return items;
}

}  // namespace scrubwell::msiecf
