#include "formats/regf/key_cells.h"

#include <algorithm>

namespace scrubwell::regf {
namespace {

/// The segments of data whose head is known to be used.
bool VisitSegments(const Cells& cells, ByteView head, std::uint32_t size, CellUse use) {
  const CellOffset listCell = Get32(head, db::List);
  if (!use(listCell)) return false;
  const ByteView list = cells.Content(listCell);
  const std::size_t count = Get16(head, db::Count);
  if (list.size() / 4 < count || std::uint64_t{count} * SegmentSize < size) return false;
  bool whole = true;
  std::uint32_t left = size;
  for (std::size_t i = 0; i < count; ++i) {
    const CellOffset segment = Get32(list, i * 4);
    const std::uint32_t part = std::min(left, SegmentSize);
    whole &= use(segment) && cells.Content(segment).size() >= part;
    left -= part;
  }
  return whole;
}

}  // namespace

bool VisitDataCells(const Hive& hive, CellOffset value, CellUse use) {
  const Cells cells(hive.Image());
  const ByteView cell = cells.Typed(value, "vk", vk::Name);
  if (cell.empty()) return false;
  const std::uint32_t stored = Get32(cell, vk::DataSize);
  const std::uint32_t size = stored & ~vk::Inline;
  if ((stored & vk::Inline) != 0) return size <= 4;
  if (size == 0) return true;
  const CellOffset dataCell = Get32(cell, vk::Data);
  if (!use(dataCell)) return false;
  const ByteView data = cells.Content(dataCell);
  if (data.size() >= size) return true;
  const bool segmented = hive.Facts().minorVersion >= SegmentedSince && size > SegmentSize &&
                         HasSignature(data, "db") && data.size() >= db::HeaderSize;
  return segmented && VisitSegments(cells, data, size, use);
}

bool VisitValueCells(const Hive& hive, CellOffset key, CellUse use) {
  KeyFacts facts;
  if (hive.Key(key, facts) != Status::Ok) return false;
  if (facts.valueCount == 0) return true;
  const Cells cells(hive.Image());
  const CellOffset listCell = Get32(cells.Content(key), nk::ValueList);
  if (!use(listCell)) return false;
  const ByteView list = cells.Content(listCell);
  const std::size_t readable = std::min<std::size_t>(facts.valueCount, list.size() / 4);
  bool whole = readable == facts.valueCount;
  for (std::size_t i = 0; i < readable; ++i) {
    const CellOffset value = Get32(list, i * 4);
    whole &= use(value) && VisitDataCells(hive, value, use);
  }
  return whole;
}

bool VisitListCells(const Hive& hive, CellOffset key, CellUse use) {
  KeyFacts facts;
  if (hive.Key(key, facts) != Status::Ok) return false;
  if (facts.subkeyCount == 0) return true;
  const Cells cells(hive.Image());
  const CellOffset listCell = Get32(cells.Content(key), nk::SubkeyList);
  if (!use(listCell)) return false;
  const ByteView list = cells.List(listCell);
  const ListEntries entries(list);
  if (!HasSignature(list, "ri")) return entries.Whole();
  bool whole = entries.Whole();
  for (std::size_t i = 0; i < entries.Count(); ++i) {
    whole &= use(entries[i]) && ListEntries(cells.Leaf(entries[i])).Whole();
  }
  return whole;
}

bool VisitKeyCells(const Hive& hive, CellOffset key, CellUse use) {
  KeyFacts facts;
  if (hive.Key(key, facts) != Status::Ok || !use(key)) return false;
  const Cells cells(hive.Image());
  const ByteView cell = cells.Content(key);
  bool whole = true;
  if (const std::size_t size = Get16(cell, nk::ClassSize); size != 0) {
    const CellOffset text = Get32(cell, nk::Class);
    whole = use(text) && cells.Content(text).size() >= size;
  }
  const bool lists = VisitListCells(hive, key, use);
  return VisitValueCells(hive, key, use) && lists && whole;
}

}  // namespace scrubwell::regf
