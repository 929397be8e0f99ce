// What the user asked for on the command line.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "backends/offline/clean_session.h"
#include "hosts/driver/clean_driver.h"
#include "hosts/report/report.h"

namespace scrubwell::hosts {

/// What to look at, and where the result goes.
struct ScanOptions {
  OfflineOptions target;
  TStringList plugins;  ///< empty: all
  ReportFormat format = ReportFormat::Text;
  std::string output;  ///< empty: the standard output
};

/// Find problems and show them.
struct ScanCommand {
  ScanOptions scan;
  bool all = false;  ///< list the hidden ones too
};

/// Find problems and remove them.
struct CleanCommand {
  ScanOptions scan;
  CleanSelection selection;
  bool dryRun = false;
  bool yes = false;  ///< don't ask
  bool untilClean = false;
  std::string backup;  ///< folder; empty: the default one
};

/// Put back, list or export what a session has changed.
struct UndoCommand {
  OfflineOptions target;  ///< without a folder: the one that the session names
  std::string backup;
  std::string session;             ///< empty: the last clean
  std::vector<std::string> items;  ///< empty: everything
  bool list = false;
  std::string exportFile;  ///< empty: no export
  ReportFormat format = ReportFormat::Text;
};

/// Finish or take back what was interrupted.
struct RecoverCommand {
  OfflineOptions target;
};

enum class IgnoreAction : std::uint8_t { Add, List, Remove };

/// Change or show the ignore list.
struct IgnoreCommand {
  IgnoreAction action = IgnoreAction::List;
  std::string id;
  OfflineOptions target;
  TStringList plugins;
  bool machine = false;  ///< the list of all users
  std::string reason;
  std::string backup;
};

/// List the plugins.
struct PluginsCommand {};

/// Nothing left to do but to print a text (help, version).
struct PrintCommand {
  std::string text;
};

using Command = std::variant<ScanCommand, CleanCommand, UndoCommand, RecoverCommand, IgnoreCommand,
                             PluginsCommand, PrintCommand>;

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

}  // namespace scrubwell::hosts
