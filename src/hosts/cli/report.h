// What a scan found, in the forms that the program can show it in.
#pragma once

#include <string>
#include <vector>

#include "backends/offline/offline_backend.h"
#include "hosts/driver/scan_driver.h"

namespace scrubwell::cli {

enum class ReportFormat : std::uint8_t { Text, Json };

/// What a report needs beside the package's own lists, which it reads.
struct ScanReport {
  TargetFacts target;
  RunOutcome outcome = RunOutcome::Complete;
  TStringList notes;
};

/// UTF-8 for people, wrapped at `width` columns; control characters from the registry are replaced,
/// so that no entry can steer a terminal.
std::string TextReport(const ScanReport& report, std::size_t width);

/// UTF-8, docs/json.md describes it.
std::string JsonReport(const ScanReport& report);

/// A text from the registry made harmless for a terminal: control characters, lone surrogates
/// and marks that turn the writing direction become U+FFFD.
std::string Printable(UnicodeView text);

}  // namespace scrubwell::cli
