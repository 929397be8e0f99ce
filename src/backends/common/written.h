// What a change writes, for the user to see before and after.
#pragma once

#include "backends/common/journal.h"
#include "registry/platform.h"

namespace scrubwell {

/// Notes in the entry's item what it writes: the data of a value that is set, and, with the new
/// content in `data`, the changed lines of an INI file. `text` says how bytes of such a file read.
void NoteWritten(JournalEntry& entry, const Bytes* data, ITextServices* text);

}  // namespace scrubwell
