// What each fuzz target starts from.
#pragma once

#include <string_view>
#include <vector>

#include "registry/types.h"

namespace scrubwell::fuzz {

/// The names of all targets: X for fuzz/X_fuzz.cpp.
std::vector<std::string_view> Targets();

/// Well-formed inputs of a target, at least one; `samples` is the folder of the sample
/// installation's texts.
std::vector<Bytes> SeedsOf(std::string_view target, std::string_view samples);

}  // namespace scrubwell::fuzz
