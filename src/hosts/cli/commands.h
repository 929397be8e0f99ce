// The commands, one function each. They say what they have to say and return the exit status.
#pragma once

#include <string>
#include <string_view>

#include "hosts/cli/command_line.h"
#include "hosts/cli/exit_code.h"
#include "plugins/package.h"
#include "registry/platform.h"

namespace scrubwell::hosts {

int Run(const ScanCommand& command);
int Run(const CleanCommand& command);
int Run(const UndoCommand& command);
int Run(const RecoverCommand& command);
int Run(const IgnoreCommand& command);
int Run(const PluginsCommand& command);
int Run(const PrintCommand& command);

// ---- What they share ------------------------------------------------------------------------

/// One sentence on the standard error output, without its final full stop here.
int Fail(ExitCode code, std::string_view sentence);
ExitCode CodeOf(CleanFailure failure);

/// Columns that a report may fill; `toFile` when it goes into a file.
std::size_t ReportWidth(bool toFile);

/// The package, loaded for as long as this lives. The platform comes first and goes last.
class LoadedPackage {
 public:
  explicit LoadedPackage(TPlatform& platform) {
    SetPlatform(&platform);
    LoadPackage();
  }
  ~LoadedPackage() {
    UnloadPackage();
    SetPlatform(nullptr);
  }
  LoadedPackage(const LoadedPackage&) = delete;
  LoadedPackage& operator=(const LoadedPackage&) = delete;
};

}  // namespace scrubwell::hosts
