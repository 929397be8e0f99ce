// Which cells a key and its values are made of.
#pragma once

#include "formats/regf/hive.h"

namespace scrubwell::regf {

/// Is told each cell before it is looked into; answers false when it is not to be used, and then
/// nothing behind it is told.
using CellUse = FunctionRef<bool(CellOffset)>;

// Each of these tells all the cells that it can reach, and answers false when some could not be
// reached or were not to be used. Cells that several keys share (security) are not told.

/// The data of a value: nothing, one cell, or the head, the list and the segments.
bool VisitDataCells(const Hive& hive, CellOffset value, CellUse use);
/// The list of values, the values and their data. A key without values has none of it.
bool VisitValueCells(const Hive& hive, CellOffset key, CellUse use);
/// The lists of subkeys, not the subkeys. A key without subkeys has none of it.
bool VisitListCells(const Hive& hive, CellOffset key, CellUse use);
/// All of a key: its own cell, class, lists of subkeys, values.
bool VisitKeyCells(const Hive& hive, CellOffset key, CellUse use);

}  // namespace scrubwell::regf
