#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <tuple>

#include "backends/common/local_file.h"
#include "hosts/cli/clean_report.h"
#include "hosts/cli/commands.h"
#include "hosts/cli/console.h"
#include "hosts/cli/output_file.h"
#include "hosts/cli/progress_line.h"
#include "hosts/cli/shell_words.h"
#include "hosts/cli/stop_signals.h"
#include "hosts/cli/targets.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/system_sentence.h"

namespace scrubwell::hosts {

namespace {

int SayStopped() {
  return Fail(Stopped, Say(texts::NothingChanged));
}

int RefuseSelection(const SelectResult& selection) {
  switch (selection.failure) {
    case SelectFailure::Hidden:
      return Fail(WrongUse, Say(texts::HiddenProblem, {selection.id}));
    case SelectFailure::LeftOut:
      return Fail(WrongUse, Say(texts::LeftOutProblem, {selection.id}));
    case SelectFailure::Ambiguous:
      return Fail(WrongUse, Say(texts::AmbiguousProblem, {selection.id}));
    default:
      return Fail(WrongUse, Say(texts::UnknownProblem, {selection.id}));
  }
}

std::string Absolute(const std::string& path) {
  std::error_code error;
  const auto whole = std::filesystem::absolute(LocalPath(path), error).lexically_normal();
  const std::u8string text = whole.u8string();
  return error ? path : std::string(text.begin(), text.end());
}

// "E=/mnt/e", with the kind where it is no fixed one.
std::string DriveText(const DriveOption& drive) {
  constexpr std::pair<DriveKind, std::string_view> kinds[] = {{DriveKind::Removable, ":removable"},
                                                              {DriveKind::CdRom, ":cdrom"},
                                                              {DriveKind::Network, ":network"}};
  std::string text{static_cast<char>(drive.letter), '='};
  text += Absolute(drive.folder);
  for (const auto& [kind, suffix] : kinds)
    if (kind == drive.kind) text += suffix;
  return text;
}

// What puts the session back, from whichever folder and however often backups went elsewhere.
std::string UndoCommandOf(const CleanCommand& command, const std::string& session) {
  std::vector<std::string> words = {"scrubwell", "undo", session};
  const auto add = [&words](const char* option, const std::string& value) {
    words.insert(words.end(), {option, value});
  };
  const TargetOptions& target = command.scan.target;
  if (!target.folder.empty()) add("--windows", Absolute(target.folder));
  for (const DriveOption& drive : target.drives) add("--drive", DriveText(drive));
  if (!command.backup.empty()) add("--backup", Absolute(command.backup));
  return TargetIsRunningSystem() ? CmdLine(words) : ShellLine(words);
}

// One pass of scan and clean over an installation. All changes stay in memory until Commit, and
// are forgotten when this goes without one.
class CleanPass {
 public:
  explicit CleanPass(const CleanCommand& command) : command_(command) {}

  // Nothing, or the exit status when it has failed and said why.
  std::optional<int> Run(const CleanSelection& selection, bool mayBeMissing) {
    if (const auto code = Open()) return code;
    ProgressLine line;
    CleanDriver driver(Events(), [&line](const RunProgress& progress) { line.Show(progress); });
    report_.result = driver.Run(selection, command_.untilClean, mayBeMissing);
    if (report_.result.selection.failure != SelectFailure::None) {
      return RefuseSelection(report_.result.selection);
    }
    if (report_.result.outcome == RunOutcome::Stopped || StopRequested()) return SayStopped();
    report_.target = session_->Backend().Target();
    report_.notes = InReportLanguage(session_->Backend().Notes());
    report_.journal = session_->Problems();
    report_.items = session_->Items();
    report_.dryRun = command_.dryRun;
    return std::nullopt;
  }

  std::optional<int> Commit() {
    if (report_.items.empty()) return std::nullopt;
    const UnstoppableSection section;
    // A request that came in up to here still counts.
    if (StopRequested()) return SayStopped();
    report_.commit = session_->Commit();
    report_.undoCommand = UndoCommandOf(command_, report_.commit.session);
    if (report_.commit.failure == CleanFailure::None) return std::nullopt;
    return Fail(CodeOf(report_.commit.failure), report_.commit.error);
  }

  [[nodiscard]] const CleanReport& Report() const { return report_; }

 private:
  std::optional<int> Open() {
    CleanOptions options;
    options.target = command_.scan.target;
    options.backupFolder = command_.backup;
    options.dryRun = command_.dryRun;
    OpenedSession opened = OpenSession(options);
    if (!opened.session) return Fail(CodeOf(opened.failure), opened.error);
    session_ = std::move(opened.session);
    package_ = std::make_unique<LoadedPackage>(session_->Backend().Platform());
    CatchStopSignals();
    if (const auto error = ApplyChoice(command_.scan)) return Fail(WrongUse, *error);
    return std::nullopt;
  }

  CleanEvents Events() {
    ICleanSession& session = *session_;
    return {
        [&session] { session.BeginRound(); },
        [&session](const CleanedProblem& problem) {
          session.BeginProblem({problem.id, problem.plugin, problem.kind, problem.caption, false});
        },
        [&session](const CleanedProblem&, bool repaired) { session.EndProblem(repaired); }};
  }

  const CleanCommand& command_;
  CleanReport report_;
  std::unique_ptr<ICleanSession> session_;
  std::unique_ptr<LoadedPackage> package_;  // stands on the session's platform
};

using Change = std::tuple<JournalAction, UnicodeString, UnicodeString, std::uint64_t, std::uint64_t,
                          std::uint64_t, Bytes, TStringList>;

Change Key(const JournalItem& item) {
  const WrittenContent none;
  const WrittenContent& written = item.written != nullptr ? *item.written : none;
  return {item.action,
          item.place,
          item.name,
          item.subkeys,
          item.values,
          item.bytes,
          written.after ? written.after->data : Bytes(),
          written.linesAfter};
}

// Whether nothing goes that the user has not agreed to.
bool KeepsTo(const CleanReport& plan, const CleanReport& report) {
  std::set<Change> agreed;
  for (const JournalItem& item : plan.items) agreed.insert(Key(item));
  return std::all_of(report.items.begin(), report.items.end(),
                     [&](const JournalItem& item) { return agreed.contains(Key(item)); });
}

// Plan and question go where the user looks, and not between the lines of a report.
bool UserAgrees(const CleanReport& plan, const CleanCommand& command) {
  const bool plain = command.scan.format == ReportFormat::Text && command.scan.output.empty();
  WriteTo(plain ? Stream::Output : Stream::Error, PlanText(plan, ReportWidth(!plain)));
  WriteTo(Stream::Error, '\n' + Say(texts::Ask));
  return ReadsYes();
}

int Finish(const CleanReport& report, const CleanCommand& command, bool planShown) {
  const bool json = command.scan.format == ReportFormat::Json;
  const std::size_t width = ReportWidth(!command.scan.output.empty());
  std::string text;
  if (json) {
    text = CleanJson(report);
  } else if (report.dryRun) {
    text = PlanText(report, width);
  } else {
    text = ResultText(report, width, !planShown);
  }
  if (const auto error = WriteOutput(command.scan.output, text)) return Fail(WrongUse, *error);
  return report.result.Left() > 0 ? ProblemsFound : NoProblems;
}

// The user is shown what a pass over the installation has come to, and it is forgotten. Then a new
// pass takes up the same problems, however long the answer took: what is no longer broken is left
// alone, and nothing may go that was not in the plan.
int CleanAfterAsking(const CleanCommand& command) {
  CleanReport plan;
  {
    CleanPass pass(command);
    if (const auto code = pass.Run(command.selection, false)) return *code;
    plan = pass.Report();
  }
  if (plan.items.empty()) return Finish(plan, command, false);
  const bool agreed = UserAgrees(plan, command);
  if (StopRequested()) return SayStopped();
  if (!agreed) return Fail(ProblemsFound, Say(texts::NothingChanged));
  CleanSelection selection;
  selection.choice = command.selection.choice;
  for (const CleanedProblem& problem : plan.result.problems) selection.ids.push_back(problem.id);
  CleanPass pass(command);
  if (const auto code = pass.Run(selection, true)) return *code;
  if (!KeepsTo(plan, pass.Report())) return Fail(ProblemsFound, Say(texts::PlanOutdated));
  if (const auto code = pass.Commit()) return *code;
  const bool plain = command.scan.format == ReportFormat::Text && command.scan.output.empty();
  return Finish(pass.Report(), command, plain);
}

}  // namespace

int Run(const CleanCommand& command) {
  const bool ask = !command.yes && !command.dryRun;
  if (ask && !IsTerminal(Stream::Input)) return Fail(WrongUse, Say(texts::NeedsYes));
  if (const auto error = CheckOutput(command.scan.output)) return Fail(WrongUse, *error);
  if (ask) return CleanAfterAsking(command);
  CleanPass pass(command);
  if (const auto code = pass.Run(command.selection, false)) return *code;
  if (!command.dryRun) {
    if (const auto code = pass.Commit()) return *code;
  }
  return Finish(pass.Report(), command, false);
}

}  // namespace scrubwell::hosts
