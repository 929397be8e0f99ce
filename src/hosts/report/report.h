// What a scan found, in the forms that the program can show it in.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "backends/common/target_facts.h"
#include "hosts/driver/scan_driver.h"
#include "hosts/report/json_writer.h"

namespace scrubwell::hosts {

enum class ReportFormat : std::uint8_t { Text, Json, JsonLines, Csv, Html, Sarif };

/// One of the users that a scan over all of them was made for.
struct ScannedUser {
  UnicodeString name;
  UnicodeString sid;
};

/// What a report needs beside the package's own lists, which it reads.
struct ScanReport {
  TargetFacts target;
  RunOutcome outcome = RunOutcome::Complete;
  TStringList notes;
  /// The problems to show, as ascending indices into SweepErrors. Whoever makes the report has
  /// settled which those are (hidden ones, kinds, text, news): all forms show these and no others.
  std::vector<std::int32_t> shown;
  std::size_t hidden = 0;   ///< problems on the ignore list that would else be shown, shown or not
  std::size_t leftOut = 0;  ///< problems not hidden that the user's choice has left out
  bool compared = false;    ///< only what an earlier report did not name is shown
  std::size_t knownBefore = 0;     ///< of these, how many an earlier report has named already
  std::vector<ScannedUser> users;  ///< only when all users were scanned in one run
  /// Beside `users`: whose own each problem of SweepErrors is; empty for one of the machine.
  TStringList owners;
  std::chrono::milliseconds duration{0};  ///< of the scan
};

/// Every problem of SweepErrors, for `shown`; without `withHidden` those on the ignore list are
/// left out.
std::vector<std::int32_t> AllProblems(bool withHidden);
/// The user whose own the problem is; empty for the machine's, and when one user was scanned.
UnicodeView OwnerOf(const ScanReport& report, std::int32_t index);

/// How a text is laid out for whoever reads it.
struct TextLook {
  std::size_t width = 80;
  bool colours = false;  ///< the reader is a terminal that knows them
  bool details = false;  ///< explanations and data items too
  /// At most so many problems of a category, and so many notes; 0: all.
  std::size_t limit = 0;
};

/// Called between problems with what has been written so far, which it may take out of the text.
using Drain = std::function<void(std::string& text)>;

// ---- The forms. Each returns what the drain has left, without one the whole report. -----------

/// UTF-8 for people, wrapped at `look.width` columns; control characters from the registry are
/// replaced, so that no entry can steer a terminal.
std::string TextReport(const ScanReport& report, const TextLook& look, const Drain& drain = {});

/// UTF-8, docs/json.md describes it.
std::string JsonReport(const ScanReport& report, const Drain& drain = {});

/// One problem a line, docs/json.md describes it.
std::string JsonLinesReport(const ScanReport& report, const Drain& drain = {});
std::string CsvReport(const ScanReport& report, const Drain& drain = {});
/// One file that needs no other.
std::string HtmlReport(const ScanReport& report, const Drain& drain = {});
/// SARIF 2.1.0.
std::string SarifReport(const ScanReport& report, const Drain& drain = {});

/// A text from the registry made harmless for a terminal, as Harmless does it.
std::string Printable(UnicodeView text);

/// A duration for people: "0.4 s", "3 min 12 s".
std::string DurationText(std::chrono::milliseconds duration);

// ---- Parts that reports share ---------------------------------------------------------------

/// The target in one line, without a line end.
std::string TargetLine(const TargetFacts& target);

/// Appends lines of at most `width` columns, indented. Broken at blanks; a word that is wider than
/// the line (a path) stays whole, so that it can be copied.
void AppendWrapped(std::string& out, std::string_view text, std::size_t indent, std::size_t width);

/// Parts of a text set off for terminals that know how to.
class TextStyle {
 public:
  explicit TextStyle(bool colours) : colours_(colours) {}
  void Heading(std::string& out, std::string_view text) const { Set(out, "\033[1m", text); }
  void Dim(std::string& out, std::string_view text) const { Set(out, "\033[2m", text); }

 private:
  void Set(std::string& out, std::string_view code, std::string_view text) const {
    if (!colours_) {
      out += text;
      return;
    }
    out.append(code).append(text).append("\033[0m");
  }
  bool colours_;
};

/// The notes with their heading; nothing when there are none. At most `limit` of them unless it is
/// 0, and how many more there are.
void AppendNotes(std::string& out, const TStringList& notes, const TextLook& look);

/// The members of one problem's object, which the caller begins and ends.
void WriteProblemMembers(JsonWriter& json, const ScanReport& report, std::int32_t index,
                         const std::string& id);

/// The target as an object.
void WriteTarget(JsonWriter& json, const TargetFacts& target);

}  // namespace scrubwell::hosts
