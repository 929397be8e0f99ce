// The problems of the file types category.
#pragma once

#include <cstdint>

namespace scrubwell::filetypes {

enum Kind : std::int32_t {
  kMissingProgram = 1,
  kMissingType = 2,
  kMissingClass = 3,
  kMissingIcon = 4,
  kMissingCommand = 5,
  kMissingIdentifier = 6,
  kEmptyIcon = 7,
  kEmptyType = 8,
  kNoVerbs = 10,
  kUnknownType = 11,  // no scan reports it
  kEmptyEntry = 12,
};

}  // namespace scrubwell::filetypes
