// Giving a file new content in one step.
#pragma once

#include <string>

#include "hosts/cli/write_all.h"

namespace scrubwell::hosts {

/// Tests whether ReplaceContent could do its work and leaves everything as it was. 0 or errno's
/// number.
int TryReplacing(const std::string& path);

/// Until the new file is complete the old one stays, with its rights, and after a failure nothing
/// is left behind. Behind a symbolic link it is the file that is replaced. A device or pipe is
/// written to directly. 0 or errno's number.
int ReplaceContent(const std::string& path, const ContentSource& content);

}  // namespace scrubwell::hosts
