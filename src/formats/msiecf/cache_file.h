// The block structure of an address file, as far as a record can be taken out of it.
#pragma once

#include <span>
#include <string_view>

#include "registry/types.h"

namespace scrubwell::msiecf {

inline constexpr std::uint64_t kBlockSize = 128;
inline constexpr std::uint64_t kFirstBlock = 0x4000;

/// Little-endian, the caller having checked the bounds.
std::uint32_t U32(std::span<const std::uint8_t> data, std::uint64_t at);
void SetU32(std::span<std::uint8_t> data, std::uint64_t at, std::uint32_t value);

/// A view of a file whose header and hash chain have been checked. Borrowed bytes.
class CacheFile {
 public:
  Status Open(std::span<const std::uint8_t> file);

  struct Record {
    std::uint64_t offset = 0;
    std::uint64_t blocks = 0;
  };
  /// The first address record in use with this location.
  [[nodiscard]] Status Find(std::string_view location, Record& out) const;
  /// The file without its free blocks and its damaged records, which hold zeros.
  [[nodiscard]] Bytes SoundCopy() const;
  /// Where the hash tables name the record: offsets of their 8-byte items.
  [[nodiscard]] std::vector<std::uint64_t> HashItemsOf(std::uint64_t recordOffset) const;
  [[nodiscard]] bool IsAllocated(std::uint64_t block) const;
  [[nodiscard]] std::uint64_t AllocatedBlocks() const;

 private:
  /// The record in use at the block or the next one behind it; false at the end of the file.
  [[nodiscard]] bool NextRecord(std::uint64_t& block, Record& out) const;
  [[nodiscard]] bool IsUrl(const Record& record) const;
  /// True when an address record keeps its texts and its data within itself.
  [[nodiscard]] bool IsSound(const Record& record) const;
  [[nodiscard]] bool Spans(std::uint64_t offset, std::uint64_t& blocks) const;
  [[nodiscard]] std::string_view LocationOf(const Record& record) const;

  std::span<const std::uint8_t> file_;
  std::uint64_t blockCount_ = 0;
  std::vector<Record> hashTables_;
};

/// Where the bit of a block lies.
std::uint64_t BitmapByte(std::uint64_t block);
std::uint8_t BitmapBit(std::uint64_t block);

inline constexpr std::uint64_t kAllocatedCountAt = 40;
inline constexpr std::uint64_t kFileNameOffsetAt = 60;

}  // namespace scrubwell::msiecf
