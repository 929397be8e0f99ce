// What the user asked for on the command line.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "backends/common/session.h"
#include "hosts/driver/clean_driver.h"
#include "hosts/report/report.h"

namespace scrubwell::hosts {

/// What to look at, what of it is wanted, and where the result goes.
struct ScanOptions {
  TargetOptions target;
  TStringList plugins;  ///< empty: all
  TStringList exclude;
  ProblemChoice choice;
  ReportFormat format = ReportFormat::Text;
  std::string output;  ///< empty: the standard output
};

/// Which findings make the exit status say so.
enum class FailOn : std::uint8_t { Any, New, None };

/// Find problems and show them.
struct ScanCommand {
  ScanOptions scan;
  bool allUsers = false;
  bool all = false;  ///< list the hidden ones too
  bool details = false;
  std::optional<std::size_t> limit;  ///< problems shown of each category, 0: all
  std::string since;                 ///< an earlier report; empty: none
  FailOn failOn = FailOn::Any;
};

/// Show what one problem was concluded from.
struct ExplainCommand {
  std::string id;
  ScanOptions scan;
};

/// Show a registry key as the scanners see it.
struct RegCommand {
  TargetOptions target;
  std::string key;                  ///< empty for a search: everywhere
  std::optional<std::string> find;  ///< search for this text below the key
  View view = View::Native;         ///< native: the 64-bit one where there are two
  ReportFormat format = ReportFormat::Text;
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
  TargetOptions target;  ///< without a folder: the one that the session names
  std::string backup;
  std::string session;             ///< empty: the last clean
  std::vector<std::string> items;  ///< empty: everything
  bool list = false;
  std::string exportFile;  ///< empty: no export, "-": to the standard output
  ReportFormat format = ReportFormat::Text;
};

/// List what the backup folder holds, or remove what is old of it.
struct SessionsCommand {
  bool prune = false;
  PruneLimits limits;
  bool dryRun = false;
  bool yes = false;  ///< don't ask
  std::string backup;
  ReportFormat format = ReportFormat::Text;
};

/// Finish or take back what was interrupted.
struct RecoverCommand {
  TargetOptions target;
  std::string backup;  ///< of the running system; empty: the default folder
  ReportFormat format = ReportFormat::Text;
};

enum class IgnoreAction : std::uint8_t { Add, List, Remove };

/// Change or show the ignore list.
struct IgnoreCommand {
  IgnoreAction action = IgnoreAction::List;
  std::string id;
  TargetOptions target;
  TStringList plugins;
  bool machine = false;  ///< the list of all users
  std::string reason;
  std::string backup;
  ReportFormat format = ReportFormat::Text;
};

/// List the plugins.
struct PluginsCommand {
  bool kinds = false;
};

/// Nothing left to do but to print a text (help, version).
struct PrintCommand {
  std::string text;
};

using Command =
    std::variant<ScanCommand, CleanCommand, UndoCommand, RecoverCommand, IgnoreCommand,
                 PluginsCommand, ExplainCommand, RegCommand, SessionsCommand, PrintCommand>;

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
