#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>

#include "backends/common/local_file.h"
#include "hosts/cli/commands.h"
#include "hosts/cli/console.h"
#include "hosts/cli/output_file.h"
#include "hosts/cli/progress_line.h"
#include "hosts/cli/scan_target.h"
#include "hosts/cli/stop_signals.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/previous_scan.h"
#include "hosts/report/system_sentence.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

// On a terminal, lists that would scroll everything else away are cut to this many of a category.
constexpr std::size_t ManyProblems = 300;
constexpr std::size_t ShownOfMany = 25;

TextLook ScanLook(const ScanReport& report, const ScanCommand& command) {
  TextLook look = LookFor(command.scan.output);
  look.details = command.details;
  const bool cut = command.scan.output.empty() && IsTerminal(Stream::Output) && !command.details &&
                   command.scan.plugins.size() != 1 && report.shown.size() > ManyProblems;
  look.limit = command.limit.value_or(cut ? ShownOfMany : 0);
  return look;
}

std::string Render(const ScanReport& report, const ScanCommand& command, const Drain& drain) {
  switch (command.scan.format) {
    case ReportFormat::Json:
      return JsonReport(report, drain);
    case ReportFormat::JsonLines:
      return JsonLinesReport(report, drain);
    case ReportFormat::Csv:
      return CsvReport(report, drain);
    case ReportFormat::Html:
      return HtmlReport(report, drain);
    case ReportFormat::Sarif:
      return SarifReport(report, drain);
    case ReportFormat::Text:
      break;
  }
  return TextReport(report, ScanLook(report, command), drain);
}

// In pieces that the processor still holds when they are written.
std::optional<std::string> WriteReport(const ScanReport& report, const ScanCommand& command) {
  constexpr std::size_t piece = std::size_t{1} << 17U;
  return WriteOutput(command.scan.output, ContentSource([&](const auto& put) {
                       const std::string rest = Render(report, command, [&put](std::string& text) {
                         if (text.size() < piece) return;
                         put(text);
                         text.clear();
                       });
                       put(rest);
                     }));
}

// Nothing, or one sentence that says why the earlier report can't be used.
std::optional<std::string> ReadPrevious(const std::string& path, PreviousScan& previous) {
  std::error_code error;
  const auto kind = std::filesystem::status(LocalPath(path), error).type();
  // Opening a pipe would wait for somebody to write into it.
  if (kind != std::filesystem::file_type::regular &&
      std::filesystem::exists(LocalPath(path), error))
    return Say(texts::NotAReport, {path});
  std::ifstream file(LocalPath(path), std::ios::binary);
  const auto unreadable = [&path] { return Say(texts::CantRead, {path, SystemSentence(errno)}); };
  if (!file) return unreadable();
  std::string bytes;
  std::string block(std::size_t{1} << 20U, '\0');
  while (file && bytes.size() <= PreviousScan::MaxBytes) {
    errno = 0;
    file.read(block.data(), static_cast<std::streamsize>(block.size()));
    if (file.bad() || errno != 0) return unreadable();
    bytes.append(block, 0, static_cast<std::size_t>(file.gcount()));
  }
  switch (previous.Read(std::move(bytes))) {
    case PreviousFailure::TooLarge:
      return Say(texts::ReportTooLarge, {path});
    case PreviousFailure::NoReport:
      return Say(texts::NotAReport, {path});
    case PreviousFailure::None:
      break;
  }
  return std::nullopt;
}

// Forms that have a place for it say of each problem whether it is hidden.
bool ShowsHidden(const ScanCommand& command) {
  const ReportFormat format = command.scan.format;
  return command.all || (format != ReportFormat::Text && format != ReportFormat::Html);
}

void SettleShown(ScanReport& report, const ScanCommand& command, const PreviousScan& previous) {
  report.compared = !command.since.empty();
  const bool withHidden = ShowsHidden(command);
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    const TSweepError& problem = (*SweepErrors)[i];
    if (!command.scan.choice.Takes(problem)) {
      report.leftOut += problem.Visible ? 1 : 0;
      continue;
    }
    if (report.compared && previous.Knows(problem, OwnerOf(report, i))) {
      report.knownBefore += problem.Visible ? 1 : 0;
      report.leftOut += problem.Visible ? 1 : 0;
      continue;
    }
    report.hidden += problem.Visible ? 0 : 1;
    if (problem.Visible || withHidden) report.shown.push_back(i);
  }
  if (report.compared && !previous.IsComplete()) {
    report.notes.push_back(LoadText(texts::EarlierIncomplete));
  }
}

ExitCode StatusOf(const ScanReport& report, FailOn failOn) {
  if (report.outcome == RunOutcome::Stopped) return Stopped;
  if (failOn == FailOn::None) return NoProblems;
  if (failOn == FailOn::Any && report.knownBefore > 0) return ProblemsFound;
  for (const std::int32_t index : report.shown) {
    if ((*SweepErrors)[index].Visible) return ProblemsFound;
  }
  return NoProblems;
}

}  // namespace

RunOutcome ScanWithProgress() {
  ProgressLine line;
  ScanDriver driver([&line](const RunProgress& progress) { line.Show(progress); });
  return driver.Scan();
}

int Run(const ScanCommand& command) {
  const ScanOptions& options = command.scan;
  if (const auto error = CheckOutput(options.output)) return Fail(WrongUse, *error);
  PreviousScan previous;
  if (!command.since.empty()) {
    if (const auto error = ReadPrevious(command.since, previous)) return Fail(WrongUse, *error);
  }
  ScanReport report;
  ScannedTarget target;
  const auto begin = std::chrono::steady_clock::now();
  const std::optional<int> failed =
      command.allUsers ? target.ScanAllUsers(options, report) : target.Scan(options, report);
  if (failed) return *failed;
  report.duration = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - begin);
  SettleShown(report, command, previous);
  if (const auto error = WriteReport(report, command)) return Fail(WrongUse, *error);
  return StatusOf(report, command.failOn);
}

}  // namespace scrubwell::hosts
