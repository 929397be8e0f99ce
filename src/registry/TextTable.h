// A cache's table by text, made for many entries that come and go together.
#pragma once

#include <cstring>
#include <vector>

#include "registry/Stringhelper.h"

namespace scrubwell::detail {

/// Letter case counts. All texts lie behind one another in one block and all entries in another, so
/// that an entry asks for no memory of its own and nothing has to be taken apart in the end. One
/// thread at a time.
template <class T>
class TextTable {
 public:
  /// Null when there is no entry; good until the next Add or Clear.
  [[nodiscard]] const T* Find(UnicodeView text) const {
    if (slots_.empty()) return nullptr;
    const Slot& slot = slots_[SlotFor(text, HashOf(text))];
    return slot.entry == kNone ? nullptr : &entries_[slot.entry].value;
  }
  /// The text must not be in the table.
  void Add(UnicodeView text, T value) {
    if (entries_.size() * 2 >= slots_.size()) Grow();
    const std::uint32_t hash = HashOf(text);
    slots_[SlotFor(text, hash)] = {hash, static_cast<std::uint32_t>(entries_.size())};
    entries_.push_back({texts_.size(), text.size(), std::move(value)});
    texts_ += text;
  }
  [[nodiscard]] std::size_t Size() const { return entries_.size(); }
  void Clear() {
    texts_.clear();
    entries_.clear();
    slots_.clear();
  }

 private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;
  struct Entry {
    std::size_t begin;
    std::size_t size;
    T value;
  };
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t entry = kNone;
  };

  static std::uint32_t HashOf(UnicodeView text) {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15U;
    constexpr std::size_t block = sizeof(std::uint64_t) / sizeof(char16_t);
    std::uint64_t hash = text.size();
    const auto mix = [&hash](std::uint64_t units) {
      hash = (hash ^ units) * factor;
      hash ^= hash >> 32U;
    };
    std::size_t at = 0;
    for (; text.size() - at >= block; at += block) {
      std::uint64_t units = 0;
      std::memcpy(&units, text.data() + at, sizeof units);
      mix(units);
    }
    for (; at < text.size(); ++at) mix(text[at]);
    return static_cast<std::uint32_t>(hash);
  }

  // The number of slots is a power of two, and at most half of them are taken.
  [[nodiscard]] std::size_t SlotFor(UnicodeView text, std::uint32_t hash) const {
    std::size_t at = hash & (slots_.size() - 1);
    while (slots_[at].entry != kNone && !(slots_[at].hash == hash && Is(slots_[at].entry, text))) {
      at = (at + 1) & (slots_.size() - 1);
    }
    return at;
  }
  [[nodiscard]] bool Is(std::uint32_t entry, UnicodeView text) const {
    const Entry& known = entries_[entry];
    return SameUnits(UnicodeView(texts_).substr(known.begin, known.size), text);
  }
  void Grow() {
    std::vector<Slot> old(slots_.empty() ? 64 : slots_.size() * 2);
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.entry == kNone) continue;
      std::size_t at = slot.hash & (slots_.size() - 1);
      while (slots_[at].entry != kNone) at = (at + 1) & (slots_.size() - 1);
      slots_[at] = slot;
    }
  }

  UnicodeString texts_;
  std::vector<Entry> entries_;
  std::vector<Slot> slots_;
};

}  // namespace scrubwell::detail
