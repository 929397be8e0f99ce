// Integrity check of a whole hive file.
#pragma once

#include <string>
#include <vector>

#include "formats/regf/cells.h"

namespace scrubwell::regf {

/// Everything that is wrong with a hive file, one sentence (UTF-8) each, the first 100: base block
/// and checksum, bins, cells that are in use but hang on nothing or on two things, lists out of
/// order or with wrong hashes, wrong counts, parents, maxima and reference counts. Empty for a hive
/// as the system writes it; bytes behind the bins are nobody's and no problem.
std::vector<std::string> CheckImage(ByteView image);

}  // namespace scrubwell::regf
