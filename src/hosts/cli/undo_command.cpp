#include <algorithm>
#include <optional>

#include "hosts/cli/clean_report.h"
#include "hosts/cli/commands.h"
#include "hosts/cli/output_file.h"
#include "hosts/cli/progress_line.h"
#include "hosts/cli/stop_signals.h"
#include "hosts/cli/targets.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/json_writer.h"
#include "hosts/report/language.h"
#include "hosts/report/system_sentence.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

int Print(const std::string& text) {
  return Run(PrintCommand{text});
}

int ListSessionsOf(const UndoCommand& command) {
  const bool json = command.format == ReportFormat::Json;
  if (command.session.empty()) {
    const std::vector<SessionInfo> sessions = ListSessions(command.backup);
    return Print(json ? SessionsJson(sessions) : SessionsText(sessions));
  }
  const SessionContent content = ReadSession(command.backup, command.session);
  if (content.failure != CleanFailure::None) return Fail(CodeOf(content.failure), content.error);
  return Print(json ? SessionJson(content) : SessionText(content));
}

// Which session is meant, and which Windows: an installation is known by what it is, for another
// one may stand in the same folder now. Nothing, or the exit status.
std::optional<int> SettleSession(UndoOptions& options) {
  const bool isNamed = !options.session.empty();
  std::string newest;
  if (options.target.folder.empty() && !TargetIsRunningSystem()) {
    const SessionInfo info = SessionHead(options.backupFolder, options.session);
    if (!info.error.empty()) return Fail(info.name.empty() ? WrongUse : Unreadable, info.error);
    options.target.folder = info.target;
    newest = info.name;
  }
  if (isNamed) return std::nullopt;
  TargetOptions target = options.target;
  target.user.clear();
  const OpenedTarget opened = OpenTarget(target);
  if (!opened.target) return Fail(CodeOf(opened.failure), opened.error);
  options.session = NewestSession(options.backupFolder, opened.target->Target().identity);
  if (options.session.empty()) return Fail(WrongUse, Say(texts::NoSessionOfIt, {target.folder}));
  if (!newest.empty() && newest != options.session) {
    return Fail(WrongUse, Say(texts::OtherWindowsNow, {newest, target.folder}));
  }
  return std::nullopt;
}

int Export(const UndoCommand& command) {
  const std::string file = command.exportFile == "-" ? std::string() : command.exportFile;
  if (const auto error = CheckOutput(file)) return Fail(WrongUse, *error);
  UndoOptions options;
  options.target = command.target;
  options.backupFolder = command.backup;
  options.session = command.session;
  // Without a folder the disk need not be at hand.
  if (!options.target.folder.empty() || TargetIsRunningSystem()) {
    if (const auto code = SettleSession(options)) return *code;
  }
  const ExportResult result = ExportSession(command.backup, options.session);
  if (result.failure != CleanFailure::None) return Fail(CodeOf(result.failure), result.error);
  if (const auto error = WriteOutput(file, result.bytes)) {
    return Fail(WrongUse, *error);
  }
  return NoProblems;
}

std::string RecoverText(const RecoverResult& result) {
  using Outcome = RecoverResult::Outcome;
  std::string text = Say(texts::RecoverNothing);
  if (result.outcome == Outcome::Completed) text = Say(texts::RecoverCompleted);
  if (result.outcome == Outcome::RolledBack) text = Say(texts::RecoverRolledBack);
  if (result.outcome == Outcome::SetAside) text = Say(texts::RecoverSetAside);
  text += '\n';
  // Their paths come from the disk.
  for (const std::string& note : result.notes) {
    text += Printable(FromUtf8(InReportLanguage(note))) + '\n';
  }
  return text;
}

std::string RecoverJson(const RecoverResult& result) {
  using Outcome = RecoverResult::Outcome;
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  json.Key("outcome").Text(result.outcome == Outcome::Completed    ? "completed"
                           : result.outcome == Outcome::RolledBack ? "rolled_back"
                           : result.outcome == Outcome::SetAside   ? "set_aside"
                                                                   : "nothing_to_do");
  json.Key("notes").BeginArray();
  for (const std::string& note : result.notes) json.Text(InReportLanguage(note));
  json.EndArray();
  json.EndObject();
  return out += '\n';
}

}  // namespace

int Run(const UndoCommand& command) {
  if (command.list) return ListSessionsOf(command);
  if (!command.exportFile.empty()) return Export(command);
  UndoOptions options;
  options.target = command.target;
  options.backupFolder = command.backup;
  options.session = command.session;
  options.items = command.items;
  if (const auto code = SettleSession(options)) return *code;
  ProgressLine line;
  std::optional<UnstoppableSection> writing;
  CatchStopSignals();
  options.progress = [&](std::size_t done, std::size_t all) {
    // A request that came in up to here still counts; what is then written is to be whole.
    if (StopRequested()) return false;
    if (done == all) writing.emplace();
    line.Show(Say(texts::UndoProgress), done, all);
    return true;
  };
  const UndoResult result = UndoSession(options);
  if (result.failure != CleanFailure::None) return Fail(CodeOf(result.failure), result.error);
  const bool json = command.format == ReportFormat::Json;
  const int code = Print(json ? UndoJson(result) : UndoText(result, ReportWidth(false)));
  const bool whole = std::all_of(result.items.begin(), result.items.end(), [](const auto& entry) {
    return entry.outcome == UndoOutcome::Restored || entry.outcome == UndoOutcome::AlreadyThere;
  });
  return code == NoProblems && !whole ? ProblemsFound : code;
}

int Run(const RecoverCommand& command) {
  const UnstoppableSection section;
  const RecoverResult result = RecoverTarget(command.target, command.backup);
  if (result.failure != CleanFailure::None) return Fail(CodeOf(result.failure), result.error);
  return Print(command.format == ReportFormat::Json ? RecoverJson(result) : RecoverText(result));
}

}  // namespace scrubwell::hosts
