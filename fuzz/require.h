// What must hold for every input.
#pragma once

#include <cstdlib>

inline void Require(bool holds) {
  if (!holds) std::abort();
}
