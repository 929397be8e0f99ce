// Deleting registry keys with their subtrees, if need be in spite of their rights.
#pragma once

#include "backends/windows/reg_key.h"

namespace scrubwell::windows {

/// Deletes root\path with everything below it; a symbolic link goes itself. What a deletion needs
/// is tested on the whole subtree before anything goes, so that a denied key below leaves all of it
/// there. Hive roots and what lies above them are Denied.
///
/// With `force` a key that denies its deletion is taken over first: owner and access list are
/// replaced, with privileges that are held during the call only. A key that then still can't be
/// deleted gets back what it had.
Status DeleteTree(HKEY root, UnicodeView path, REGSAM view, bool force);

/// What DeleteTree without force would answer.
Status MayDeleteTree(HKEY root, UnicodeView path, REGSAM view);

}  // namespace scrubwell::windows
