// What the editor changes inside a key: values, class, security, marks.
#include <algorithm>

#include "formats/regf/editor.h"
#include "formats/regf/key_cells.h"

namespace scrubwell::regf {

// ---- values

CellOffset Editor::StoreData(const Bytes& data) {
  const bool segmented = data.size() > SegmentSize && hive_->Facts().minorVersion >= SegmentedSince;
  if (!segmented) return Store(data);
  Bytes list;
  for (std::size_t at = 0; at < data.size(); at += SegmentSize) {
    const std::size_t size = std::min<std::size_t>(SegmentSize, data.size() - at);
    list.resize(list.size() + 4);
    Put32(list, list.size() - 4, Store(ByteView(data).subspan(at, size)));
  }
  Bytes head(db::HeaderSize);
  std::copy_n("db", 2, head.begin());
  Put16(head, db::Count, static_cast<std::uint32_t>(list.size() / 4));
  Put32(head, db::List, Store(list));
  return Store(head);
}

/// The cells of the data before are the caller's to free.
void Editor::WriteData(CellOffset value, const Bytes& data) {
  const bool inCell = data.size() <= 4;
  const CellOffset place = inCell ? 0 : StoreData(data);
  const std::span<std::uint8_t> cell = Writable(value);
  Put32(cell, vk::DataSize, static_cast<std::uint32_t>(data.size()) | (inCell ? vk::Inline : 0U));
  Put32(cell, vk::Data, place);
  if (inCell) std::ranges::copy(data, cell.begin() + vk::Data);
}

bool Editor::FitsKey(const KeyFacts& facts, const RegValue& value) const {
  return value.name.size() <= LongestValueName && (facts.flags & KeyFlagPredefined) == 0 &&
         value.data.size() / SegmentSize < LargestList;
}

Status Editor::Put(CellOffset key, const RegValue& value) {
  KeyFacts facts;
  if (Sound(key, facts) != Status::Ok) return Status::Corrupt;
  const std::size_t segments = value.data.size() / SegmentSize + 1;
  if (!FitsKey(facts, value) ||
      !HasRoom(value.data.size() + value.name.size() * 2 + facts.valueCount * 8U, segments + 4)) {
    return Status::Denied;
  }
  ValueFacts found;
  const Status there = hive_->FindValue(key, value.name, found);
  if (there == Status::Ok) return Replace(key, found.cell, value);
  return there == Status::Absent ? Append(key, facts, value) : there;
}

Status Editor::Replace(CellOffset key, CellOffset value, const RegValue& content) {
  std::vector<CellOffset> old;
  const auto use = [&](CellOffset cell) {
    old.push_back(cell);
    return owned_.Has(cell);
  };
  if (!owned_.Has(value) || !VisitDataCells(*hive_, value, CellUse(use))) return Status::Corrupt;
  Lower(key, nk::MaxValueData, Get32(Content(value), vk::DataSize) & ~vk::Inline);
  Free(old);
  WriteData(value, content.data);
  Set32(value, vk::Type, content.type);
  Raise(key, nk::MaxValueData, content.data.size());
  Touch(key);
  return Status::Ok;
}

Status Editor::Append(CellOffset key, const KeyFacts& facts, const RegValue& content) {
  const std::size_t used = facts.valueCount * 4U;
  CellOffset list = Get32(Content(key), nk::ValueList);
  if (used != 0 && !owned_.Has(list)) return Status::Corrupt;
  const CellOffset value = NewValue(key, content);
  if (used == 0 || Content(list).size() < used + 4) {
    const CellOffset larger = Allocate(used + facts.valueCount + 4);
    if (used != 0) {
      std::ranges::copy(Content(list).first(used), Writable(larger).begin());
      Free(list);
    }
    list = larger;
    Set32(key, nk::ValueList, list);
  }
  Set32(list, used, value);
  Set32(key, nk::ValueCount, facts.valueCount + 1);
  Touch(key);
  return Status::Ok;
}

/// A value that no list names yet.
CellOffset Editor::NewValue(CellOffset key, const RegValue& content) {
  const bool latin1 = IsLatin1(content.name);
  const Bytes name = EncodeName(content.name, latin1);
  const CellOffset value = Allocate(vk::Name + name.size());
  const std::span<std::uint8_t> cell = Writable(value);
  std::copy_n("vk", 2, cell.begin());
  Put16(cell, vk::NameSize, static_cast<std::uint32_t>(name.size()));
  Put16(cell, vk::Flags, latin1 && !name.empty() ? std::uint32_t{vk::Latin1Name} : 0U);
  Put32(cell, vk::Type, content.type);
  std::ranges::copy(name, cell.begin() + vk::Name);
  WriteData(value, content.data);
  Raise(key, nk::MaxValueName, content.name.size() * 2);
  Raise(key, nk::MaxValueData, content.data.size());
  return value;
}

namespace {

/// Slots of which the n-th that is still free is taken, each in logarithmic time: a tree of sums.
class FreeSlots {
 public:
  explicit FreeSlots(std::size_t count) : sums_(count + 1) {
    for (std::size_t i = 1; i <= count; ++i) sums_[i] = i & (~i + 1);
    while (top_ * 2 <= count) top_ *= 2;
  }
  std::size_t Take(std::size_t free) {
    std::size_t at = 0;
    for (std::size_t step = top_; step > 0; step /= 2) {
      if (at + step >= sums_.size() || sums_[at + step] > free) continue;
      at += step;
      free -= sums_[at];
    }
    for (std::size_t i = at + 1; i < sums_.size(); i += i & (~i + 1)) --sums_[i];
    return at;
  }

 private:
  std::vector<std::size_t> sums_;
  std::size_t top_ = 1;
};

/// The list as it is when all have been put in. What came last stands where it was put; of what
/// came before, the places that are left are counted.
std::vector<CellOffset> Merge(ByteView before, const std::vector<Editor::PlacedValue>& values,
                              const std::vector<CellOffset>& cells) {
  const std::size_t count = before.size() / 4;
  std::vector<CellOffset> merged(count + cells.size(), NoCell);
  FreeSlots slots(merged.size());
  for (std::size_t i = cells.size(); i-- > 0;) {
    merged[slots.Take(std::min<std::size_t>(values[i].place, count + i))] = cells[i];
  }
  std::size_t next = 0;
  for (CellOffset& cell : merged) {
    if (cell == NoCell) cell = Get32(before, 4 * next++);
  }
  return merged;
}

}  // namespace

Status Editor::InsertValues(CellOffset key, const std::vector<PlacedValue>& values) {
  KeyFacts facts;
  if (Sound(key, facts) != Status::Ok) return Status::Corrupt;
  if (values.empty()) return Status::Ok;
  const CellOffset list = Get32(Content(key), nk::ValueList);
  const std::size_t used = facts.valueCount * 4U;
  if (used != 0 && (!owned_.Has(list) || Content(list).size() < used)) return Status::Corrupt;
  std::size_t bytes = used + values.size() * 4;
  std::size_t parts = 4;
  for (const PlacedValue& placed : values) {
    if (!FitsKey(facts, *placed.value)) return Status::Denied;
    bytes += placed.value->data.size() + placed.value->name.size() * 2 + vk::Name;
    parts += placed.value->data.size() / SegmentSize + 4;
  }
  // Small cells share pages, so that the careful count of a single change would be far too high.
  if (hive_->Image().size() + std::uint64_t{bytes} * 2 + std::uint64_t{parts} * 64 > LargestBins) {
    return Status::Denied;
  }
  std::vector<CellOffset> cells;
  for (const PlacedValue& placed : values) cells.push_back(NewValue(key, *placed.value));
  const Bytes before(Content(list).begin(),
                     Content(list).begin() + static_cast<std::ptrdiff_t>(used));
  const std::vector<CellOffset> merged = Merge(before, values, cells);
  const CellOffset fresh = Allocate(merged.size() * 4);
  const std::span<std::uint8_t> cell = Writable(fresh);
  for (std::size_t i = 0; i < merged.size(); ++i) Put32(cell, i * 4, merged[i]);
  if (used != 0) Free(list);
  Set32(key, nk::ValueList, fresh);
  Set32(key, nk::ValueCount, static_cast<std::uint32_t>(merged.size()));
  Touch(key);
  return Status::Ok;
}

Status Editor::Overwrite(CellOffset key, CellOffset value, const RegValue& content) {
  KeyFacts facts;
  if (Sound(key, facts) != Status::Ok) return Status::Corrupt;
  const std::size_t segments = content.data.size() / SegmentSize + 1;
  if (!FitsKey(facts, content) || !HasRoom(content.data.size(), segments + 4)) {
    return Status::Denied;
  }
  return Replace(key, value, content);
}

Status Editor::EraseValue(CellOffset key, UnicodeView name) {
  KeyFacts facts;
  ValueFacts found;
  if (Sound(key, facts) != Status::Ok) return Status::Corrupt;
  const Status there = hive_->FindValue(key, name, found);
  if (there != Status::Ok) return there;
  const CellOffset list = Get32(Content(key), nk::ValueList);
  std::vector<CellOffset> doomed{found.cell};
  const auto use = [&](CellOffset cell) {
    doomed.push_back(cell);
    return owned_.Has(cell);
  };
  const bool sound = owned_.Has(list) && owned_.Has(found.cell) &&
                     Content(list).size() / 4 >= facts.valueCount &&
                     VisitDataCells(*hive_, found.cell, CellUse(use));
  if (!sound) return Status::Corrupt;
  Lower(key, nk::MaxValueName, found.name.Units() * 2);
  Lower(key, nk::MaxValueData, found.size);
  const std::span<std::uint8_t> cell = Writable(list);
  std::size_t at = 0;
  while (Get32(cell, at) != found.cell) at += 4;
  const auto end = cell.begin() + static_cast<std::ptrdiff_t>(facts.valueCount * 4U);
  std::copy(cell.begin() + static_cast<std::ptrdiff_t>(at) + 4, end,
            cell.begin() + static_cast<std::ptrdiff_t>(at));
  Set32(key, nk::ValueCount, facts.valueCount - 1);
  if (facts.valueCount == 1) {
    Set32(key, nk::ValueList, NoCell);
    doomed.push_back(list);
  }
  Free(doomed);
  Touch(key);
  return Status::Ok;
}

// ---- security

/// Gives a key that has no security yet the one of a cell in the ring.
void Editor::Reference(CellOffset key, CellOffset security) {
  Set32(key, nk::Security, security);
  if (security == NoCell) return;
  Set32(security, sk::References, ++securities_.at(security));
}

void Editor::Dereference(CellOffset security) {
  if (security == NoCell) return;
  const std::uint32_t left = --securities_.at(security);
  Set32(security, sk::References, left);
  if (left != 0 || !owned_.Has(security)) return;
  const ByteView cell = Content(security);
  const CellOffset next = Get32(cell, sk::Next);
  const CellOffset previous = Get32(cell, sk::Previous);
  Set32(previous, sk::Next, next);
  Set32(next, sk::Previous, previous);
  securities_.erase(security);
  Free(security);
}

CellOffset Editor::EqualSecurity(ByteView descriptor) const {
  for (const auto& [security, keys] : securities_) {
    const ByteView cell = Content(security);
    const std::size_t size = Get32(cell, sk::Size);
    if (size == descriptor.size() && size <= cell.size() - sk::Descriptor &&
        std::ranges::equal(cell.subspan(sk::Descriptor, size), descriptor)) {
      return security;
    }
  }
  return NoCell;
}

/// A cell in the ring that no key has yet.
CellOffset Editor::NewSecurity(ByteView descriptor) {
  const CellOffset fresh = Allocate(sk::Descriptor + descriptor.size());
  const CellOffset previous = securities_.empty() ? fresh : securities_.begin()->first;
  const CellOffset next = securities_.empty() ? fresh : Get32(Content(previous), sk::Next);
  const std::span<std::uint8_t> cell = Writable(fresh);
  std::copy_n("sk", 2, cell.begin());
  Put32(cell, sk::Size, static_cast<std::uint32_t>(descriptor.size()));
  std::ranges::copy(descriptor, cell.begin() + sk::Descriptor);
  Set32(fresh, sk::Next, next);
  Set32(fresh, sk::Previous, previous);
  Set32(previous, sk::Next, fresh);
  Set32(next, sk::Previous, fresh);
  securities_.emplace(fresh, 0);
  return fresh;
}

Status Editor::SetSecurity(CellOffset key, ByteView descriptor) {
  KeyFacts facts;
  if (Sound(key, facts) != Status::Ok) return Status::Corrupt;
  const CellOffset old = Get32(Content(key), nk::Security);
  if (old != NoCell && !securities_.contains(old)) return Status::Corrupt;
  if (descriptor.empty() || !HasRoom(descriptor.size(), 1)) return Status::Denied;
  CellOffset security = EqualSecurity(descriptor);
  if (security == NoCell) {
    // The bytes may lie in this very image, which an allocation moves.
    const Bytes copy(descriptor.begin(), descriptor.end());
    security = NewSecurity(copy);
  }
  // In this order: one that is set again must not go in between.
  Reference(key, security);
  Dereference(old);
  Touch(key);
  return Status::Ok;
}

// ---- class, marks, time

Status Editor::SetClass(CellOffset key, UnicodeView className) {
  KeyFacts facts;
  if (Sound(key, facts) != Status::Ok) return Status::Corrupt;
  const std::size_t oldSize = Get16(Content(key), nk::ClassSize);
  const CellOffset old = Get32(Content(key), nk::Class);
  if (oldSize != 0 && !owned_.Has(old)) return Status::Corrupt;
  const std::size_t size = className.size() * 2;
  if (size > 0xFFFF || !HasRoom(size, 1)) return Status::Denied;
  const bool root = key == hive_->Root();
  if (!root) Lower(facts.parent, nk::MaxClass, oldSize);
  if (oldSize != 0) Free(old);
  const CellOffset fresh = size == 0 ? NoCell : Store(EncodeName(className, false));
  Set32(key, nk::Class, fresh);
  Put16(Writable(key), nk::ClassSize, static_cast<std::uint32_t>(size));
  if (!root) Raise(facts.parent, nk::MaxClass, size);
  Touch(key);
  return Status::Ok;
}

Status Editor::SetLink(CellOffset key, bool link) {
  KeyFacts facts;
  if (Sound(key, facts) != Status::Ok) return Status::Corrupt;
  const std::uint32_t others = facts.flags & ~std::uint32_t{KeyFlagLink};
  Put16(Writable(key), nk::Flags, others | (link ? std::uint32_t{KeyFlagLink} : 0U));
  Touch(key);
  return Status::Ok;
}

Status Editor::SetTime(CellOffset key, std::uint64_t fileTime) {
  KeyFacts facts;
  if (Sound(key, facts) != Status::Ok) return Status::Corrupt;
  Put64(Writable(key), nk::Time, fileTime);
  changed_ = true;
  return Status::Ok;
}

}  // namespace scrubwell::regf
