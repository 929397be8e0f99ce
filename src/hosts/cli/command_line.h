// What the user asked for on the command line.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "backends/offline/offline_backend.h"
#include "hosts/cli/report.h"

namespace scrubwell::cli {

/// Find problems and show them.
struct ScanCommand {
  OfflineOptions target;
  TStringList plugins;  ///< empty: all
  ReportFormat format = ReportFormat::Text;
  std::string output;  ///< empty: the standard output
};

/// List the plugins.
struct PluginsCommand {};

/// Nothing left to do but to print a text (help, version).
struct PrintCommand {
  std::string text;
};

using Command = std::variant<ScanCommand, PluginsCommand, PrintCommand>;

struct ParsedCommand {
  std::optional<Command> command;
  std::string error;  ///< one sentence without a final full stop, when there is no command
};

/// Sets the package's language too, before anything is said: --lang wins, wherever it stands, then
/// the environment.
ParsedCommand ParseCommandLine(int argc, const char* const* argv);

/// "E=/mnt/e:removable"; nothing when it has another form. Only a known kind is taken off the end,
/// for folders may hold colons.
std::optional<DriveOption> ParseDrive(std::string_view text);

}  // namespace scrubwell::cli
