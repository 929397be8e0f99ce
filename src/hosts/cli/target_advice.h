// Why a folder is not what a scan can look at, said in a way that helps.
#pragma once

#include <string>

#include "backends/common/target.h"

namespace scrubwell::hosts {

/// A better sentence than the backend's `why` for a target that could not be opened, where there is
/// one: names a disk image as one, the nearest folder that would do, or the users that there are.
std::string ExplainTarget(const TargetOptions& options, const std::string& why);

}  // namespace scrubwell::hosts
