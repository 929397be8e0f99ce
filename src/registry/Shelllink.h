// Shortcut files.
#pragma once

#include "registry/types.h"

namespace scrubwell {

/// The target path of a shortcut; empty when it names no file or can't be read. `flag` is accepted
/// and without effect.
UnicodeString GetShellLinkTarget(UnicodeView linkFile, bool flag = false);

}  // namespace scrubwell
