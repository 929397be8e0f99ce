// What a scan found, in the forms that the program can show it in.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "backends/common/target_facts.h"
#include "hosts/driver/scan_driver.h"
#include "hosts/report/json_writer.h"

namespace scrubwell::hosts {

enum class ReportFormat : std::uint8_t { Text, Json };

/// What a report needs beside the package's own lists, which it reads.
struct ScanReport {
  TargetFacts target;
  RunOutcome outcome = RunOutcome::Complete;
  TStringList notes;
};

/// UTF-8 for people, wrapped at `width` columns; control characters from the registry are replaced,
/// so that no entry can steer a terminal.
/// With `showHidden` the problems on the ignore list are listed too; their number always is told.
std::string TextReport(const ScanReport& report, std::size_t width, bool showHidden);

/// UTF-8, docs/json.md describes it.
std::string JsonReport(const ScanReport& report);

/// A text from the registry made harmless for a terminal: control characters, lone surrogates
/// and marks that turn the writing direction become U+FFFD.
std::string Printable(UnicodeView text);

// ---- Parts that reports share ---------------------------------------------------------------

/// The target in one line, without a line end.
std::string TargetLine(const TargetFacts& target);

/// Appends lines of at most `width` columns, indented. Broken at blanks; a word that is wider than
/// the line (a path) stays whole, so that it can be copied.
void AppendWrapped(std::string& out, std::string_view text, std::size_t indent, std::size_t width);

/// The notes with their heading; nothing when there are none.
void AppendNotes(std::string& out, const TStringList& notes, std::size_t width);

/// The target as an object.
void WriteTarget(JsonWriter& json, const TargetFacts& target);

}  // namespace scrubwell::hosts
