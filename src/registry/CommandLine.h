// Command lines: which file one starts, and which file a launcher among them is told to use.
#pragma once

#include "registry/PathResolver.h"

namespace scrubwell::paths {

/// Resolves a command line whose variables are expanded. Quoted program, or the first growing
/// prefix of an unquoted one that is a file. For a known launcher (rundll32 and its kin) the file
/// its arguments name is looked up too; whatever can't be proven missing is Unknown.
Lookup ResolveCommand(UnicodeView command, Want want);

/// The part of a command that names its program, as it is written and without quotation marks. What
/// is there or not is not asked: for a command whose program is known to be missing.
UnicodeView ProgramOf(UnicodeView command);

}  // namespace scrubwell::paths
