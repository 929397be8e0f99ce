#include "formats/regf/cell_map.h"

#include <iterator>

namespace scrubwell::regf {

FreeSpace::Block FreeSpace::Add(Block block) {
  auto next = byPlace_.lower_bound(block.place);
  if (next != byPlace_.end() && next->first == block.place + block.size) {
    block.size += next->second;
    bySize_.erase({next->second, next->first});
    next = byPlace_.erase(next);
  }
  if (next != byPlace_.begin()) {
    const auto before = std::prev(next);
    if (before->first + before->second == block.place) {
      block = {before->first, before->second + block.size};
      bySize_.erase({before->second, before->first});
      byPlace_.erase(before);
    }
  }
  byPlace_.emplace(block.place, block.size);
  bySize_.emplace(block.size, block.place);
  return block;
}

FreeSpace::Block FreeSpace::Take(std::uint32_t size) {
  const auto best = bySize_.lower_bound({size, 0});
  if (best == bySize_.end()) return {};
  const Block block{best->second, best->first};
  bySize_.erase(best);
  byPlace_.erase(block.place);
  return block;
}

}  // namespace scrubwell::regf
