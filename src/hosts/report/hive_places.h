// Which file of the target an entry lies in.
#pragma once

#include <string>

#include "hosts/report/problem_parts.h"
#include "hosts/report/report.h"

namespace scrubwell::hosts {

/// The hive or other file that holds the problem's entry, as HiveFile tells it: below the target's
/// folder with '/' between names, or absolute. Empty when it can't be told.
std::string FileOfProblem(const ScanReport& report, std::int32_t index);

/// Whether the user that is scanned for has a class key of his own at this path below the classes
/// root: there it stands in front of the machine's. `view` is "32", "64" or empty.
bool UserHasClass(UnicodeView path, UnicodeView view);

/// A relative reference, or for an absolute path a "file:" address.
std::string UriOf(const std::string& path);

}  // namespace scrubwell::hosts
