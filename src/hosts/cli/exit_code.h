// What the program's exit status says.
#pragma once

namespace scrubwell::hosts {

enum ExitCode : int {
  NoProblems = 0,     ///< also: the command did what it was asked for
  ProblemsFound = 1,  ///< at least one problem that is not hidden
  WrongUse = 2,       ///< the command line can't be followed, or the output can't be written
  Unreadable = 3,     ///< the target is no Windows, or can't be read
  Stopped = 130,      ///< ended early by the user
};

}  // namespace scrubwell::hosts
