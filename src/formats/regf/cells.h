// The cells of a hive image: the format's layout and bounds-checked access to it. Shared by
// everything that reads or changes a hive.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

#include "registry/types.h"

namespace scrubwell::regf {

/// Place of a cell, in bytes from the first bin (not from the start of the file).
using CellOffset = std::uint32_t;
inline constexpr CellOffset NoCell = 0xFFFFFFFFU;

inline constexpr std::size_t BaseBlockSize = 4096;
inline constexpr std::size_t PageSize = 4096;
inline constexpr std::size_t SectorSize = 512;
inline constexpr std::size_t BinHeaderSize = 32;
/// Data longer than this is cut into segments of this size, from version 1.4 on.
inline constexpr std::uint32_t SegmentSize = 16344;
inline constexpr std::uint32_t SegmentedSince = 4;  ///< minor version
/// The system maps hives with 31-bit offsets.
inline constexpr std::size_t LargestBins = 0x7FFFF000;
/// Entries are counted in 16 bits.
inline constexpr std::size_t LargestList = 0xFFFF;

/// Fields of the base block.
namespace base {
inline constexpr std::size_t Primary = 4, Secondary = 8, Time = 12, Major = 20, Minor = 24,
                             Type = 28, Format = 32, Root = 36, BinsSize = 40, Clustering = 44,
                             FileName = 48, FileNameSize = 64, Flags = 144, GuidSignature = 164,
                             Checksum = 508;
inline constexpr std::uint32_t TransactionPending = 1;   ///< a flag
inline constexpr std::uint32_t RightGuids = 0x6D746D72;  ///< "rmtm": a writer that knows the flags
}  // namespace base
/// Fields of a key node (nk), behind the cell's size.
namespace nk {
inline constexpr std::size_t Flags = 2, Time = 4, Parent = 16, SubkeyCount = 20, SubkeyList = 28,
                             VolatileList = 32, ValueCount = 36, ValueList = 40, Security = 44,
                             Class = 48, MaxName = 52, MaxClass = 56, MaxValueName = 60,
                             MaxValueData = 64, NameSize = 72, ClassSize = 74, Name = 76;
}
/// Fields of a value (vk).
namespace vk {
inline constexpr std::size_t NameSize = 2, DataSize = 4, Data = 8, Type = 12, Flags = 16, Name = 20;
inline constexpr std::uint32_t Inline = 0x80000000U;  ///< the data stands in the Data field
inline constexpr std::uint16_t Latin1Name = 1;
}  // namespace vk
/// Fields of a security cell (sk).
namespace sk {
inline constexpr std::size_t Next = 4, Previous = 8, References = 12, Size = 16, Descriptor = 20;
}
/// Fields of the head of segmented data (db).
namespace db {
inline constexpr std::size_t Count = 2, List = 4, HeaderSize = 8;
}

enum KeyFlag : std::uint16_t {
  KeyFlagVolatile = 0x01,
  KeyFlagRoot = 0x04,
  KeyFlagNoDelete = 0x08,
  KeyFlagLink = 0x10,
  KeyFlagLatin1Name = 0x20,
  /// The value count holds a predefined handle instead; the key has no values.
  KeyFlagPredefined = 0x40,
};

using ByteView = std::span<const std::uint8_t>;

/// Little-endian numbers; the caller has checked the bounds.
inline std::uint16_t Get16(ByteView bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}
inline std::uint32_t Get32(ByteView bytes, std::size_t at) {
  return Get16(bytes, at) | static_cast<std::uint32_t>(Get16(bytes, at + 2)) << 16;
}
inline std::uint64_t Get64(ByteView bytes, std::size_t at) {
  return Get32(bytes, at) | static_cast<std::uint64_t>(Get32(bytes, at + 4)) << 32;
}
/// Whether a two-phase commit is under way. Where the signature is missing, the flags are whatever
/// an older writer left there.
inline bool IsTransactionPending(ByteView baseBlock) {
  return Get32(baseBlock, base::GuidSignature) == base::RightGuids &&
         (Get32(baseBlock, base::Flags) & base::TransactionPending) != 0;
}
inline void Put16(std::span<std::uint8_t> bytes, std::size_t at, std::uint32_t value) {
  bytes[at] = static_cast<std::uint8_t>(value);
  bytes[at + 1] = static_cast<std::uint8_t>(value >> 8);
}
inline void Put32(std::span<std::uint8_t> bytes, std::size_t at, std::uint32_t value) {
  Put16(bytes, at, value & 0xFFFFU);
  Put16(bytes, at + 2, value >> 16);
}
inline void Put64(std::span<std::uint8_t> bytes, std::size_t at, std::uint64_t value) {
  Put32(bytes, at, static_cast<std::uint32_t>(value));
  Put32(bytes, at + 4, static_cast<std::uint32_t>(value >> 32));
}

/// True when the cell's content begins with these two letters.
inline bool HasSignature(ByteView cell, const char (&letters)[3]) {
  return cell.size() >= 2 && cell[0] == static_cast<std::uint8_t>(letters[0]) &&
         cell[1] == static_cast<std::uint8_t>(letters[1]);
}

/// The checksum that the first 508 bytes of a base block ask for.
std::uint32_t BaseBlockChecksum(ByteView baseBlock);

/// A name where it is stored: one byte (Latin-1) or two bytes (UTF-16) a unit.
class NameRef {
 public:
  NameRef() = default;
  NameRef(ByteView bytes, bool latin1) : bytes_(bytes), latin1_(latin1) {}

  [[nodiscard]] std::size_t Units() const { return latin1_ ? bytes_.size() : bytes_.size() / 2; }
  [[nodiscard]] bool Empty() const { return bytes_.empty(); }
  [[nodiscard]] char16_t operator[](std::size_t unit) const {
    return static_cast<char16_t>(latin1_ ? bytes_[unit] : Get16(bytes_, unit * 2));
  }
  /// Replaces `out`; keeps its memory, so that a loop over many names allocates once.
  void CopyTo(UnicodeString& out) const;
  [[nodiscard]] UnicodeString Text() const;
  /// Order of the upper-cased units against `other`: negative, zero, positive.
  [[nodiscard]] int Compare(const NameRef& other) const;
  /// The same against a text that has been upper-cased already.
  [[nodiscard]] int CompareUpper(UnicodeView upper) const;

 private:
  ByteView bytes_;
  bool latin1_ = true;
};

/// The hash that `lh` lists hold, over the upper-cased units.
std::uint32_t NameHash(UnicodeView name);

/// Whether every unit fits one byte, so that the name is stored with one byte a unit.
bool IsLatin1(UnicodeView text);
/// A name as it is stored, with one or two bytes a unit. Throws std::length_error where its size
/// does not fit 16 bits.
Bytes EncodeName(UnicodeView name, bool latin1);
/// What an `lf` list says of a name: its first four characters, nothing when one of them does not
/// fit a byte.
std::uint32_t NameHint(UnicodeView name);

/// A reference to a callable that outlives the call it is passed to.
template <class Signature>
class FunctionRef;
template <class Result, class... Args>
class FunctionRef<Result(Args...)> {
 public:
  template <class F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, FunctionRef>) explicit FunctionRef(F&& f)
      : object_(const_cast<void*>(static_cast<const void*>(std::addressof(f)))),
        call_([](void* object, Args... args) -> Result {
          return (*static_cast<std::remove_reference_t<F>*>(object))(std::forward<Args>(args)...);
        }) {}
  Result operator()(Args... args) const { return call_(object_, std::forward<Args>(args)...); }

 private:
  void* object_;
  Result (*call_)(void*, Args...);
};

/// The entries of one list cell, as many as the cell really holds. `li`, `lf` and `lh` are leaves
/// and list keys; an `ri` lists leaves.
class ListEntries {
 public:
  explicit ListEntries(ByteView list);
  [[nodiscard]] std::size_t Count() const { return count_; }
  /// The size of one entry in bytes: with 8 there is a hint or a hash behind each offset.
  [[nodiscard]] std::size_t Stride() const { return stride_; }
  [[nodiscard]] CellOffset operator[](std::size_t entry) const {
    return Get32(list_, 4 + entry * stride_);
  }
  /// What stands behind the offset; only where the stride is 8.
  [[nodiscard]] std::uint32_t Hint(std::size_t entry) const {
    return Get32(list_, 8 + entry * stride_);
  }
  /// The first entry from `from` on with this behind its offset, or their number; only where the
  /// stride is 8.
  [[nodiscard]] std::size_t FindHint(std::uint32_t hint, std::size_t from) const;
  /// False when this is no list or claims more entries than fit its cell.
  [[nodiscard]] bool Whole() const { return whole_; }

 private:
  ByteView list_;
  std::size_t stride_ = 4;
  std::size_t count_ = 0;
  bool whole_ = false;
};

/// Cells of an image, each reached through a bounds check. A view: the image must outlive it.
class Cells {
 public:
  /// `image` is the whole file, base block first, cut to the size of its bins.
  explicit Cells(ByteView image)
      : bins_(image.size() > BaseBlockSize ? image.subspan(BaseBlockSize) : ByteView()) {}

  [[nodiscard]] ByteView Bins() const { return bins_; }
  /// The content of a cell that is in use, without its size; empty when there is none at this
  /// offset. A cell that says it is free is none: nothing may point to it.
  [[nodiscard]] ByteView Content(CellOffset offset) const;
  /// The same, and it begins with the letters and holds at least `least` bytes.
  [[nodiscard]] ByteView Typed(CellOffset offset, const char (&letters)[3],
                               std::size_t least) const;

  /// The list at this offset, `ri` or leaf; empty when there is none.
  [[nodiscard]] ByteView List(CellOffset offset) const;
  /// The leaf at this offset; empty when there is none. An `ri` is none: they do not nest.
  [[nodiscard]] ByteView Leaf(CellOffset offset) const;
  /// Calls entry(CellOffset) for the keys of a list, leaf by leaf, until it answers false. False
  /// when a leaf can't be read or is cut; the others are still delivered.
  template <class Entry>
  bool ForEachEntry(ByteView list, Entry&& entry) const;

 private:
  ByteView bins_;
};

// Every step through a hive goes through these two: they are worth being inlined.
inline ByteView Cells::Content(CellOffset offset) const {
  if (offset % 8 != 0 || bins_.size() < 8 || offset > bins_.size() - 8) return {};
  const std::uint32_t size = 0U - Get32(bins_, offset);  // sizes of cells in use are negative
  if (size > 0x7FFFFFFFU || size < 8 || size % 8 != 0) return {};
  if (size > bins_.size() - offset) return {};
  return bins_.subspan(offset + 4U, size - 4U);
}

inline ByteView Cells::Typed(CellOffset offset, const char (&letters)[3], std::size_t least) const {
  const ByteView content = Content(offset);
  return content.size() >= least && HasSignature(content, letters) ? content : ByteView();
}

template <class Entry>
bool Cells::ForEachEntry(ByteView list, Entry&& entry) const {
  const auto leafEntries = [&entry](const ListEntries& leaf, bool& more) {
    for (std::size_t i = 0; more && i < leaf.Count(); ++i) more = entry(leaf[i]);
    return leaf.Whole();
  };
  bool more = true;
  const ListEntries head(list);
  if (!HasSignature(list, "ri")) return leafEntries(head, more);
  bool whole = head.Whole();
  for (std::size_t i = 0; more && i < head.Count(); ++i) {
    whole &= leafEntries(ListEntries(Leaf(head[i])), more);
  }
  return whole;
}

}  // namespace scrubwell::regf
