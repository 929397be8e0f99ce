#include "formats/regf/cells.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

#include "registry/Stringhelper.h"

namespace scrubwell::regf {
namespace {

// Nearly all units are ASCII: those are folded here, without a call.
inline char16_t Fold(char16_t unit) {
  if (unit < 0x80) return static_cast<char16_t>(unit >= u'a' && unit <= u'z' ? unit - 32 : unit);
  return UpCase(unit);
}

template <class Other>
int CompareUnits(const NameRef& name, const Other& upperUnit, std::size_t otherUnits) {
  const std::size_t units = name.Units();
  const std::size_t shared = std::min(units, otherUnits);
  for (std::size_t i = 0; i < shared; ++i) {
    const int difference = Fold(name[i]) - upperUnit(i);
    if (difference != 0) return difference;
  }
  return units == otherUnits ? 0 : (units < otherUnits ? -1 : 1);
}

}  // namespace

std::uint32_t BaseBlockChecksum(ByteView baseBlock) {
  std::uint32_t sum = 0;
  for (std::size_t at = 0; at < base::Checksum; at += 4) sum ^= Get32(baseBlock, at);
  // The two extreme sums are never stored.
  if (sum == 0) return 1;
  return sum == 0xFFFFFFFFU ? 0xFFFFFFFEU : sum;
}

void NameRef::CopyTo(UnicodeString& out) const {
  out.resize(Units());
  if (latin1_) {
    std::copy(bytes_.begin(), bytes_.end(), out.begin());
  } else {
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = (*this)[i];
  }
}

UnicodeString NameRef::Text() const {
  UnicodeString text;
  CopyTo(text);
  return text;
}

int NameRef::Compare(const NameRef& other) const {
  return CompareUnits(
      *this, [&other](std::size_t i) { return Fold(other[i]); }, other.Units());
}

int NameRef::CompareUpper(UnicodeView upper) const {
  return CompareUnits(
      *this, [upper](std::size_t i) { return upper[i]; }, upper.size());
}

std::uint32_t NameHash(UnicodeView name) {
  std::uint32_t hash = 0;
  for (const char16_t unit : name) hash = hash * 37 + Fold(unit);
  return hash;
}

bool IsLatin1(UnicodeView text) {
  return std::ranges::all_of(text, [](char16_t unit) { return unit <= 0xFF; });
}

Bytes EncodeName(UnicodeView name, bool latin1) {
  Bytes bytes(name.size() * (latin1 ? 1 : 2));
  if (bytes.size() > 0xFFFF) throw std::length_error("registry name too long for a hive");
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (latin1) {
      bytes[i] = static_cast<std::uint8_t>(name[i]);
    } else {
      Put16(bytes, i * 2, name[i]);
    }
  }
  return bytes;
}

std::uint32_t NameHint(UnicodeView name) {
  const UnicodeView start = name.substr(0, 4);
  if (!IsLatin1(start)) return 0;
  std::uint32_t hint = 0;
  for (std::size_t i = start.size(); i > 0; --i) hint = hint << 8 | start[i - 1];
  return hint;
}

ListEntries::ListEntries(ByteView list) : list_(list) {
  if (list.size() < 4) return;
  if (HasSignature(list, "lf") || HasSignature(list, "lh")) stride_ = 8;
  const std::size_t claimed = Get16(list, 2);
  count_ = std::min(claimed, (list.size() - 4) / stride_);
  whole_ = count_ == claimed;
}

std::size_t ListEntries::FindHint(std::uint32_t hint, std::size_t from) const {
  // As it stands in memory: nothing needs to be put together of bytes to be compared.
  std::array<std::uint8_t, 4> bytes;
  Put32(bytes, 0, hint);
  std::uint32_t wanted = 0;
  std::memcpy(&wanted, bytes.data(), sizeof wanted);
  // A block is looked at whole: without a decision at each entry it takes a few instructions.
  std::array<std::uint32_t, 32> block;
  for (; count_ - from >= block.size() / 2; from += block.size() / 2) {
    std::memcpy(block.data(), list_.data() + 4 + from * 8, sizeof block);
    std::uint32_t hits = 0;
    for (std::size_t i = 1; i < block.size(); i += 2) hits |= block[i] == wanted ? 1U : 0U;
    if (hits != 0) break;
  }
  while (from < count_ && Hint(from) != hint) ++from;
  return from;
}

ByteView Cells::List(CellOffset offset) const {
  const ByteView index = Typed(offset, "ri", 4);
  return index.empty() ? Leaf(offset) : index;
}

ByteView Cells::Leaf(CellOffset offset) const {
  const ByteView content = Content(offset);
  const bool leaf =
      HasSignature(content, "lh") || HasSignature(content, "lf") || HasSignature(content, "li");
  return leaf ? content : ByteView();
}

}  // namespace scrubwell::regf
