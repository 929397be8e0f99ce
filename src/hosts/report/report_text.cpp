#include <algorithm>
#include <unordered_map>

#include "hosts/driver/problem_id.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/report.h"
#include "hosts/report/surrogates.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

bool SteersTerminal(char16_t unit) {
  return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || unit == 0x200E || unit == 0x200F ||
         (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

// Columns, taking every character for one wide.
std::size_t Columns(std::string_view utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

using ProblemGroups = std::unordered_map<UnicodeView, std::vector<std::int32_t>>;

void AppendCategory(std::string& out, const TRCPlugin& plugin,
                    const std::vector<std::int32_t>& problems, const std::vector<std::string>& ids,
                    std::size_t width) {
  out += '\n';
  out += Printable(plugin.Caption) + " (" + std::to_string(problems.size()) + ")\n";
  AppendWrapped(out, Printable(plugin.ShortDescription), 2, width);
  for (const std::int32_t index : problems) {
    const TSweepError& problem = (*SweepErrors)[index];
    out += '\n';
    out += "  " + ids[static_cast<std::size_t>(index)] + "  " + Printable(problem.Caption);
    if (!problem.Visible) out += ' ' + Say(texts::HiddenMark);
    out += '\n';
    AppendWrapped(out, Printable(problem.ShortDescription), 16, width);
  }
}

void AppendSummary(std::string& out, const ScanReport& report, std::size_t found,
                   std::size_t hidden) {
  out += '\n';
  if (found == 0) out += Say(texts::FoundNone);
  if (found == 1) out += Say(texts::FoundOne);
  if (found > 1) out += Say(texts::FoundMany, {std::to_string(found)});
  if (hidden == 0) out += ' ' + Say(texts::HiddenNone);
  if (hidden == 1) out += ' ' + Say(texts::HiddenOne);
  if (hidden > 1) out += ' ' + Say(texts::HiddenMany, {std::to_string(hidden)});
  if (report.outcome == RunOutcome::Stopped) out += ' ' + Say(texts::ScanStopped);
  if (ShouldReSearch) out += ' ' + Say(texts::ScanAgain);
  out += '\n';
}

}  // namespace

std::string Printable(UnicodeView text) {
  UnicodeString clean(text);
  for (std::size_t i = 0; i < clean.size(); ++i) {
    const bool pair =
        IsHighSurrogate(clean[i]) && i + 1 < clean.size() && IsLowSurrogate(clean[i + 1]);
    if (pair) {
      ++i;
    } else if (SteersTerminal(clean[i]) || IsHighSurrogate(clean[i]) || IsLowSurrogate(clean[i])) {
      clean[i] = char16_t{0xFFFD};
    }
  }
  return ToUtf8(clean);
}

void AppendWrapped(std::string& out, std::string_view text, std::size_t indent, std::size_t width) {
  std::size_t column = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (word.empty()) continue;
    const std::size_t columns = Columns(word);
    if (column > 0 && column + 1 + columns > width) {
      out += '\n';
      column = 0;
    }
    if (column == 0) {
      out.append(indent, ' ');
      column = indent;
    } else {
      out += ' ';
      ++column;
    }
    out += word;
    column += columns;
  }
  out += '\n';
}

std::string TargetLine(const TargetFacts& target) {
  std::string details;
  const auto add = [&details](const std::string& part) {
    details += (details.empty() ? "" : ", ") + part;
  };
  if (target.build != 0) add(Say(texts::BuildWord, {std::to_string(target.build)}));
  add(Say(target.is64Bit ? texts::Bits64 : texts::Bits32));
  const std::string product =
      target.productName.empty() ? Say(texts::UnnamedWindows) : Printable(target.productName);
  std::string line = Say(texts::TargetLine, {product + " (" + details + ")", target.folder});
  if (!target.userName.empty()) line += ", " + Say(texts::UserWord, {Printable(target.userName)});
  return line;
}

void AppendNotes(std::string& out, const TStringList& notes, std::size_t width) {
  if (notes.empty()) return;
  out += '\n' + Say(texts::NotesHeading) + '\n';
  for (const UnicodeString& note : notes) AppendWrapped(out, Printable(note), 2, width);
}

std::string TextReport(const ScanReport& report, std::size_t width, bool showHidden) {
  ProblemGroups groups;
  std::size_t found = 0;
  std::size_t hidden = 0;
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    const TSweepError& problem = (*SweepErrors)[i];
    ++(problem.Visible ? found : hidden);
    if (problem.Visible || showHidden) groups[problem.PluginID].push_back(i);
  }
  const std::vector<std::string> ids = ProblemIds(*SweepErrors);
  std::string out = TargetLine(report.target) + '\n';
  for (const TRCPlugin* plugin : *Plugins) {
    const auto group = groups.find(plugin->FPluginID);
    if (group != groups.end()) AppendCategory(out, *plugin, group->second, ids, width);
  }
  AppendNotes(out, report.notes, width);
  AppendSummary(out, report, found, hidden);
  return out;
}

}  // namespace scrubwell::hosts
