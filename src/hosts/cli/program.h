// The command line program as a function.
#pragma once

#include <string>
#include <vector>

namespace scrubwell::hosts {

/// Does what the arguments ask for, the first of which is the program's own name, and returns the
/// exit status. Throws nothing. Catches the signals that ask it to end while it scans.
int RunProgram(const std::vector<std::string>& arguments);

}  // namespace scrubwell::hosts
