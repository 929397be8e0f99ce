#include "hosts/cli/program.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>

#include "hosts/cli/commands.h"
#include "hosts/cli/output_file.h"
#include "hosts/cli/progress_line.h"
#include "hosts/cli/stop_signals.h"
#include "hosts/driver/null_platform.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

// Lines longer than this are hard to read, however wide the terminal is.
constexpr std::size_t MaxWidth = 100;
constexpr std::size_t PlainWidth = 80;

RunOutcome Scan() {
  ProgressLine line;
  ScanDriver driver([&line](const RunProgress& progress) { line.Show(progress); });
  return driver.Scan();
}

std::string Render(const ScanReport& report, const ScanCommand& command) {
  if (command.scan.format == ReportFormat::Json) return JsonReport(report);
  return TextReport(report, ReportWidth(!command.scan.output.empty()), command.all);
}

}  // namespace

int Fail(ExitCode code, std::string_view sentence) {
  // Some sentences come complete from where they arose.
  if (sentence.ends_with('.')) sentence.remove_suffix(1);
  std::fprintf(stderr, "scrubwell: %.*s.\n", static_cast<int>(sentence.size()), sentence.data());
  return code;
}

ExitCode CodeOf(CleanFailure failure) {
  return failure == CleanFailure::WrongUse ? WrongUse : Unreadable;
}

std::size_t ReportWidth(bool toFile) {
  return std::min(toFile ? PlainWidth : TerminalWidth(STDOUT_FILENO, PlainWidth), MaxWidth);
}

int Run(const ScanCommand& command) {
  const ScanOptions& options = command.scan;
  if (const auto error = CheckOutput(options.output)) return Fail(WrongUse, *error);
  const OfflineOpenResult opened = OfflineBackend::Open(options.target);
  if (!opened.backend) {
    return Fail(opened.failure == OpenFailure::WrongUse ? WrongUse : Unreadable, opened.error);
  }
  OfflineBackend& backend = *opened.backend;
  const LoadedPackage package(backend.Platform());
  // Not before: loading the package clears the stop request. Until then there is nothing to show,
  // and a signal just ends the program.
  CatchStopSignals();
  UnicodeString unknown;
  if (!ChoosePlugins(options.plugins, unknown)) {
    return Fail(WrongUse, Say(texts::UnknownPlugin, {ToUtf8(unknown)}));
  }
  const RunOutcome outcome = Scan();
  const ScanReport report{backend.Target(), outcome, backend.Notes()};
  if (const auto error = WriteOutput(options.output, Render(report, command))) {
    return Fail(WrongUse, *error);
  }
  if (outcome == RunOutcome::Stopped) return Stopped;
  return RealSweepErrorCount > 0 ? ProblemsFound : NoProblems;
}

int Run(const PrintCommand& command) {
  const auto error = WriteOutput({}, command.text);
  return error ? Fail(WrongUse, *error) : NoProblems;
}

int Run(const PluginsCommand&) {
  NullPlatform nothing;
  const LoadedPackage package(nothing.Platform());
  std::size_t width = 0;
  for (const TRCPlugin* plugin : *Plugins) width = std::max(width, plugin->FPluginID.size());
  std::string list;
  for (const TRCPlugin* plugin : *Plugins) {
    UnicodeString line = plugin->FPluginID;
    line.resize(width + 2, u' ');
    list += ToUtf8(line + plugin->Caption) + '\n';
  }
  return Run(PrintCommand{list});
}

int RunProgram(int argc, const char* const* argv) {
  try {
    const ParsedCommand parsed = ParseCommandLine(argc, argv);
    if (!parsed.command) return Fail(WrongUse, parsed.error);
    return std::visit([](const auto& command) { return Run(command); }, *parsed.command);
  } catch (const std::exception& error) {
    return Fail(Unreadable, Say(texts::Unexpected, {error.what()}));
  }
}

}  // namespace scrubwell::hosts
