// One pass over a whole hive: what each cell belongs to, and what is wrong.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "formats/regf/cell_map.h"
#include "formats/regf/hive.h"

namespace scrubwell::regf {

struct Survey {
  static constexpr std::size_t MostProblems = 100;

  CellSet used;   ///< real cells that are in use
  CellSet owned;  ///< those that hang on exactly one thing
  CellSet keys;   ///< keys that hang on the root
  FreeSpace free;
  /// Security cells in the ring, and how many keys have them.
  std::unordered_map<CellOffset, std::uint32_t> securities;
  bool binsWhole = true;
  bool ringWhole = true;  ///< each key's security is in one ring that is linked both ways
  bool dangling = false;  ///< something points to what is no cell in use
  std::vector<std::string> problems;  ///< one sentence (UTF-8) each, the first MostProblems
};

Survey SurveyHive(const Hive& hive);

}  // namespace scrubwell::regf
