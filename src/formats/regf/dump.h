// A hive's content as text, to compare trees by.
#pragma once

#include <string>

#include "formats/regf/hive.h"

namespace scrubwell::regf {

struct DumpOptions {
  bool times = false;  ///< when each key was last written
};

/// Appends to `out` the tree from a key on as text (UTF-8), the same for all hives with equal
/// content, however they are laid out: a block for each key with its path below `start`, class,
/// link mark, security, times when asked for, then its values by name with type and bytes. Long
/// data and security stand as size and 64-bit hash. Corrupt when some place could not be read; the
/// text then has all the rest and says where.
Status DumpTree(const Hive& hive, CellOffset start, DumpOptions options, std::string& out);
/// The whole hive; what could not be read is said in the text.
std::string DumpTree(const Hive& hive, DumpOptions options = {});

}  // namespace scrubwell::regf
