// Compares a changed hive with what was meant to change, without trust in whatever changed it.
#pragma once

#include "backends/common/journal.h"
#include "formats/regf/hive.h"

namespace scrubwell::offline {

/// Walks both hives side by side: every key and value that differs must belong to an entry of the
/// hive of that path. One sentence about the first that does not; empty when all is as intended.
std::string WhyNotAsIntended(const regf::Hive& before, const regf::Hive& after,
                             const std::vector<JournalEntry>& entries, UnicodeView hive);

}  // namespace scrubwell::offline
