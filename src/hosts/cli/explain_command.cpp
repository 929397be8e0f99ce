#include "hosts/cli/commands.h"
#include "hosts/cli/explanation.h"
#include "hosts/cli/output_file.h"
#include "hosts/cli/stop_signals.h"
#include "hosts/cli/targets.h"
#include "hosts/driver/problem_id.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/system_sentence.h"

namespace scrubwell::hosts {

namespace {

int SayStopped() {
  return Fail(Stopped, Say(texts::NothingChanged));
}

// A clean that is never committed tells what it would change.
CleanDriver PlannedClean(ICleanSession& session) {
  return CleanDriver(
      {[&session] { session.BeginRound(); },
       [&session](const CleanedProblem& problem) {
         session.BeginProblem({problem.id, problem.plugin, problem.kind, problem.caption, false});
       },
       [&session](const CleanedProblem&, bool repaired) { session.EndProblem(repaired); }});
}

// The problem that a scan of all categories has found is taken up once more by its own category
// alone: first to listen to what it asks, then to see what a clean would do.
std::optional<int> Explain(const std::string& wanted, ICleanSession& session,
                           EvidenceRecorder& recorder, Explanation& explanation) {
  if (ScanWithProgress() == RunOutcome::Stopped) return SayStopped();
  std::int32_t index = -1;
  if (FindProblem(wanted, index) == SelectFailure::Ambiguous) {
    return Fail(WrongUse, Say(texts::AmbiguousProblem, {wanted}));
  }
  if (index < 0) return Fail(WrongUse, Say(texts::UnknownProblem, {wanted}));
  const TSweepError problem = (*SweepErrors)[index];
  const std::string digest = ProblemDigest(problem);
  explanation.id = ProblemIds(*SweepErrors)[static_cast<std::size_t>(index)];
  SetAllPluginStatus(false);
  FindPlugin(problem.PluginID)->Active = true;
  explanation.evidence = recorder.Record(problem);
  if (StopRequested()) return SayStopped();
  if (problem.Visible) {
    PlannedClean(session).Run({false, {digest}, {}}, false, true);
    if (StopRequested()) return SayStopped();
    explanation.changes = session.Items();
    explanation.journal = session.Problems();
  }
  SweepErrors->Clear();
  explanation.index = SweepErrors->Add(std::make_unique<TSweepError>(problem));
  explanation.report.target = session.Backend().Target();
  explanation.report.notes = InReportLanguage(session.Backend().Notes());
  return std::nullopt;
}

}  // namespace

int Run(const ExplainCommand& command) {
  const ScanOptions& scan = command.scan;
  if (const auto error = CheckOutput(scan.output)) return Fail(WrongUse, *error);
  CleanOptions options;
  options.target = scan.target;
  options.dryRun = true;
  const OpenedSession opened = OpenSession(options);
  if (!opened.session) return Fail(CodeOf(opened.failure), opened.error);
  EvidenceRecorder recorder(opened.session->Backend().Platform());
  const LoadedPackage package(recorder.Platform());
  CatchStopSignals();
  if (const auto error = ApplyChoice(scan)) return Fail(WrongUse, *error);
  Explanation explanation;
  if (const auto code = Explain(command.id, *opened.session, recorder, explanation)) return *code;
  const std::string text = scan.format == ReportFormat::Json
                               ? ExplanationJson(explanation)
                               : ExplanationText(explanation, LookFor(scan.output));
  if (const auto error = WriteOutput(scan.output, text)) return Fail(WrongUse, *error);
  return NoProblems;
}

}  // namespace scrubwell::hosts
