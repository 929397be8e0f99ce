// What belongs to a file of the running system beside its content, saved and put back.
#pragma once

#include "backends/common/journal.h"
#include "backends/windows/win32.h"

namespace scrubwell::windows {

/// Content of a file beside the one that is read by its name alone.
struct FurtherStream {
  UnicodeString name;  ///< ":x:$DATA"
  std::int64_t size = 0;
};
using StreamFinder = Status(const UnicodeString& path, std::vector<FurtherStream>& out);
/// The system's own answer. Denied when it has none, for then nobody knows what would be lost.
StreamFinder FindStreams;

/// Saves security, attributes, times and further streams. Denied for what would not come back as it
/// was: links, encrypted files, streams that are too long.
Status SaveMarks(UnicodeView path, FileAttributes& out, StreamFinder* find = &FindStreams);
/// Parts of the security that the program has no right to set are left as they are.
Status RestoreMarks(UnicodeView path, const FileAttributes& marks);

Status MakeFolder(UnicodeView path);

/// Ok when the file or folder may be deleted now: rights, and nobody who holds it.
Status MayErase(UnicodeView path);

/// The path with short names spelled out, where that can be told.
UnicodeString LongPath(UnicodeView path);

}  // namespace scrubwell::windows
