// Commands of this program as the user can type them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace scrubwell::hosts {

/// The words as one line of a POSIX shell; those that mean something to it are quoted.
std::string ShellLine(const std::vector<std::string>& words);
/// The same for the command line of Windows.
std::string CmdLine(const std::vector<std::string>& words);

}  // namespace scrubwell::hosts
