// The program's result on its way out: whole or not at all.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "hosts/cli/write_all.h"

namespace scrubwell::hosts {

/// Tests whether WriteOutput could write to the path, and leaves everything as it was. Empty means
/// the standard output. The result is one sentence saying why not, nothing when it could.
std::optional<std::string> CheckOutput(const std::string& path);

/// Replaces the file by the bytes in one step: until the new file is complete the old one stays,
/// and after a failure nothing is left behind. A device or pipe is written to directly.
std::optional<std::string> WriteOutput(const std::string& path, std::string_view bytes);
/// The same for a text that comes piece by piece, each of whole characters.
std::optional<std::string> WriteOutput(const std::string& path, const ContentSource& content);

}  // namespace scrubwell::hosts
