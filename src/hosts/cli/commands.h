// The commands, one function each. They say what they have to say and return the exit status.
#pragma once

#include <string>
#include <string_view>

#include "hosts/cli/command_line.h"
#include "hosts/cli/exit_code.h"
#include "hosts/report/image_catalogue.h"
#include "plugins/package.h"
#include "registry/platform.h"

namespace scrubwell::hosts {

int Run(const ScanCommand& command);
int Run(const CleanCommand& command);
int Run(const UndoCommand& command);
int Run(const SessionsCommand& command);
int Run(const RecoverCommand& command);
int Run(const IgnoreCommand& command);
int Run(const PluginsCommand& command);
int Run(const ExplainCommand& command);
int Run(const RegCommand& command);
int Run(const PrintCommand& command);

// ---- What they share ------------------------------------------------------------------------

/// One sentence on the standard error output, without its final full stop here.
int Fail(ExitCode code, std::string_view sentence);
ExitCode CodeOf(CleanFailure failure);
ExitCode CodeOf(OpenFailure failure);

/// Makes the chosen categories of the loaded package the active ones. Nothing, or the sentence that
/// says what of the choice is not known.
std::optional<std::string> ApplyChoice(const ScanOptions& options);

/// Scans with the progress on the terminal.
RunOutcome ScanWithProgress();

/// Columns that a report may fill; `toFile` when it goes into a file.
std::size_t ReportWidth(bool toFile);

/// How a text looks that goes into the file, or with an empty name to the standard output: colours
/// only on a terminal that knows them, and unless NO_COLOR is set.
TextLook LookFor(const std::string& output);

/// The package, loaded for as long as this lives. The platform comes first and goes last.
class LoadedPackage {
 public:
  explicit LoadedPackage(TPlatform& platform) : platform_(WithImages(platform, images_)) {
    SetPlatform(&platform_);
    LoadPackage();
  }
  ~LoadedPackage() {
    UnloadPackage();
    SetPlatform(nullptr);
  }
  LoadedPackage(const LoadedPackage&) = delete;
  LoadedPackage& operator=(const LoadedPackage&) = delete;

 private:
  ImageCatalogue images_;
  TPlatform platform_;  // the given one, with the program's own icons
};

}  // namespace scrubwell::hosts
