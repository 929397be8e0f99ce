// The editor's work on lists of subkeys.
#include <algorithm>

#include "formats/regf/editor.h"
#include "registry/Stringhelper.h"

namespace scrubwell::regf {
namespace {

/// A leaf of this many is split before one more is put in.
constexpr std::size_t FullLeaf = 500;
/// The first version with hashes in its lists.
constexpr std::uint32_t HashedSince = 5;

/// The first entry whose key's name is not before the given one.
std::size_t LowerBound(const Hive& hive, const ListEntries& leaf, UnicodeView upper) {
  std::size_t low = 0;
  std::size_t high = leaf.Count();
  KeyFacts facts;
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    const bool before =
        hive.Key(leaf[middle], facts) == Status::Ok && facts.name.CompareUpper(upper) < 0;
    (before ? low : high) = before ? middle + 1 : middle;
  }
  return low;
}

bool Begins(const Hive& hive, const ListEntries& leaf, UnicodeView upper) {
  KeyFacts facts;
  return hive.Key(leaf[0], facts) == Status::Ok && facts.name.CompareUpper(upper) <= 0;
}

}  // namespace

/// By the order of names; in a list that is out of order this is some place.
Editor::Place Editor::Locate(CellOffset parent, UnicodeView upper) const {
  const Cells cells = AllCells();
  const CellOffset listCell = Get32(Content(parent), nk::SubkeyList);
  const ByteView list = cells.List(listCell);
  Place place;
  if (HasSignature(list, "ri")) {
    place.index = listCell;
    const ListEntries leaves(list);
    for (std::size_t i = 0; i < leaves.Count(); ++i) {
      const ListEntries leaf(cells.Leaf(leaves[i]));
      if (leaf.Count() == 0) continue;
      if (place.leaf != NoCell && !Begins(*hive_, leaf, upper)) break;
      place.leafEntry = i;
      place.leaf = leaves[i];
    }
  } else {
    place.leaf = listCell;
  }
  place.entry = LowerBound(*hive_, ListEntries(cells.Leaf(place.leaf)), upper);
  return place;
}

/// Without a leaf when the parent does not list the key.
Editor::Place Editor::Find(CellOffset parent, CellOffset key) const {
  const Cells cells = AllCells();
  UnicodeString name;
  hive_->Name(key, name);
  Place place = Locate(parent, UpperCase(name));
  const ListEntries likely(cells.Leaf(place.leaf));
  if (place.entry < likely.Count() && likely[place.entry] == key) return place;
  const auto search = [&](CellOffset leafCell) {
    const ListEntries leaf(cells.Leaf(leafCell));
    for (std::size_t i = 0; i < leaf.Count(); ++i) {
      if (leaf[i] != key) continue;
      place.leaf = leafCell;
      place.entry = i;
      return true;
    }
    return false;
  };
  if (place.index == NoCell) {
    if (search(place.leaf)) return place;
  } else {
    const ListEntries leaves(Content(place.index));
    for (place.leafEntry = 0; place.leafEntry < leaves.Count(); ++place.leafEntry) {
      if (search(leaves[place.leafEntry])) return place;
    }
  }
  return {};
}

/// The list's place, which is another when the list had to grow.
CellOffset Editor::InsertEntry(CellOffset list, std::size_t at, CellOffset target,
                               std::uint32_t hint) {
  const ListEntries old(Content(list));
  const std::size_t count = old.Count();
  const std::size_t stride = old.Stride();
  const std::size_t used = 4 + count * stride;
  CellOffset place = list;
  if (used + stride > Content(list).size()) {
    place = Allocate(used + (count / 4 + 1) * stride);
    std::ranges::copy(Content(list).first(used), Writable(place).begin());
    Free(list);
  }
  const std::span<std::uint8_t> cell = Writable(place);
  const auto begin = cell.begin() + static_cast<std::ptrdiff_t>(4 + at * stride);
  std::copy_backward(begin, cell.begin() + static_cast<std::ptrdiff_t>(used),
                     cell.begin() + static_cast<std::ptrdiff_t>(used + stride));
  Put32(cell, 4 + at * stride, target);
  if (stride == 8) Put32(cell, 8 + at * stride, hint);
  Put16(cell, 2, static_cast<std::uint32_t>(count + 1));
  return place;
}

void Editor::RemoveEntry(CellOffset list, std::size_t at) {
  const ListEntries entries(Content(list));
  const std::size_t stride = entries.Stride();
  const std::size_t used = 4 + entries.Count() * stride;
  const std::span<std::uint8_t> cell = Writable(list);
  std::copy(cell.begin() + static_cast<std::ptrdiff_t>(4 + (at + 1) * stride),
            cell.begin() + static_cast<std::ptrdiff_t>(used),
            cell.begin() + static_cast<std::ptrdiff_t>(4 + at * stride));
  Put16(cell, 2, static_cast<std::uint32_t>(entries.Count() - 1));
}

CellOffset Editor::NewLeaf() {
  const CellOffset leaf = Allocate(12);
  const bool hashed = hive_->Facts().minorVersion >= HashedSince;
  std::copy_n(hashed ? "lh" : "lf", 2, Writable(leaf).begin());
  return leaf;
}

/// Cuts a leaf in two and moves `place` to the part that it is now in. Behind the last entry a new
/// leaf begins, so that keys that come in order don't leave a trail of half-full leaves.
void Editor::SplitLeaf(CellOffset parent, Place& place) {
  const ByteView old = Content(place.leaf);
  const ListEntries entries(old);
  const std::size_t count = entries.Count();
  const std::size_t at = place.entry == count ? count : count / 2;
  Bytes part(old.begin(), old.begin() + 4);
  part.insert(part.end(), old.begin() + static_cast<std::ptrdiff_t>(4 + at * entries.Stride()),
              old.begin() + static_cast<std::ptrdiff_t>(4 + count * entries.Stride()));
  Put16(part, 2, static_cast<std::uint32_t>(count - at));
  const CellOffset fresh = Store(part);
  Put16(Writable(place.leaf), 2, static_cast<std::uint32_t>(at));
  if (place.index == NoCell) {
    Bytes index(12);
    std::copy_n("ri", 2, index.begin());
    Put16(index, 2, 2);
    Put32(index, 4, place.leaf);
    Put32(index, 8, fresh);
    place.index = Store(index);
  } else {
    place.index = InsertEntry(place.index, place.leafEntry + 1, fresh, 0);
  }
  Set32(parent, nk::SubkeyList, place.index);
  if (place.entry < at) return;
  place.leaf = fresh;
  place.entry -= at;
  ++place.leafEntry;
}

void Editor::InsertChild(CellOffset parent, CellOffset key, UnicodeView name) {
  const std::uint32_t count = Get32(Content(parent), nk::SubkeyCount);
  Place place;
  if (count == 0) {
    place.leaf = NewLeaf();
    Set32(parent, nk::SubkeyList, place.leaf);
  } else {
    place = Locate(parent, UpperCase(name));
    if (ListEntries(Content(place.leaf)).Count() >= FullLeaf) SplitLeaf(parent, place);
  }
  InsertIntoLeaf(parent, place, key, name);
  Set32(parent, nk::SubkeyCount, count + 1);
}

void Editor::InsertIntoLeaf(CellOffset parent, const Place& place, CellOffset key,
                            UnicodeView name) {
  const bool hashed = HasSignature(Content(place.leaf), "lh");
  const std::uint32_t hint = hashed ? NameHash(name) : NameHint(name);
  const CellOffset leaf = InsertEntry(place.leaf, place.entry, key, hint);
  if (place.index == NoCell) {
    Set32(parent, nk::SubkeyList, leaf);
  } else {
    Set32(place.index, 4 + place.leafEntry * 4, leaf);
  }
}

/// Other keys must be left in the parent's lists. A leaf that becomes empty goes, and so does an
/// index of one leaf.
void Editor::RemoveChild(CellOffset parent, const Place& place) {
  RemoveEntry(place.leaf, place.entry);
  if (place.index == NoCell || ListEntries(Content(place.leaf)).Count() > 0) return;
  Free(place.leaf);
  RemoveEntry(place.index, place.leafEntry);
  const ListEntries leaves(Content(place.index));
  if (leaves.Count() != 1) return;
  Set32(parent, nk::SubkeyList, leaves[0]);
  Free(place.index);
}

}  // namespace scrubwell::regf
