// Which parts of a hive's bins are in use, and by how many.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "formats/regf/cells.h"

namespace scrubwell::regf {

/// A set of cells, one bit for each place where one can begin.
class CellSet {
 public:
  /// Room for bins of this size; what is in the set stays.
  void Resize(std::size_t binsSize) { bits_.resize(binsSize / 8); }
  [[nodiscard]] bool Has(CellOffset cell) const {
    return cell % 8 == 0 && cell / 8 < bits_.size() && bits_[cell / 8];
  }
  void Add(CellOffset cell) { bits_[cell / 8] = true; }
  void Remove(CellOffset cell) { bits_[cell / 8] = false; }

 private:
  std::vector<bool> bits_;
};

/// The free cells. Neighbours are one; cells of two bins never are neighbours, a bin's header
/// stands between them. Sizes are whole cells' sizes in bytes.
class FreeSpace {
 public:
  struct Block {
    CellOffset place = NoCell;
    std::uint32_t size = 0;
  };

  /// Gives back the block that this one is now a part of.
  Block Add(Block block);
  /// Takes out the smallest block that is large enough, the first of those; size 0 when there is
  /// none. What is not needed of it is to be added again.
  Block Take(std::uint32_t size);

 private:
  std::map<CellOffset, std::uint32_t> byPlace_;
  std::set<std::pair<std::uint32_t, CellOffset>> bySize_;
};

}  // namespace scrubwell::regf
