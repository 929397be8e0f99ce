// The command line program as a function.
#pragma once

namespace scrubwell::hosts {

/// Does what the arguments ask for and returns the exit status. Throws nothing. Catches the
/// signals that ask it to end while it scans.
int RunProgram(int argc, const char* const* argv);

}  // namespace scrubwell::hosts
