// The problems of the COM category.
#pragma once

#include <cstdint>

namespace scrubwell::activexcom {

enum Kind : std::int32_t {
  kMissingServer = 1,
  kMissingProgram = 2,
  kMissingClass = 3,
  kMissingIcon = 4,
  kMissingTypeLib = 5,
  kMissingBitmap = 6,
  kMissingHandler = 8,
  kMissingAppID = 9,
  kInterfaceMissingClass = 10,
  kInterfaceMissingInterface = 11,
  kInterfaceMissingTypeLib = 12,
  kTypeLibMissingFile = 13,
  kTypeLibEmpty = 14,
  kTypeLibMissingFolder = 15,
  kTypeLibEmptyHelp = 16,
  kEmptyProgID = 18,
  kInvalidProgram = 19,  // no check reports it
  kMissingIdentifier = 20,
  kEmptyIcon = 21,
  kMissingCommand = 22,
  kEmptyKey = 23,
};

}  // namespace scrubwell::activexcom
