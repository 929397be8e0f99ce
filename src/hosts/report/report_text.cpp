#include <algorithm>
#include <unordered_map>

#include "hosts/driver/problem_id.h"
#include "hosts/report/columns.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/problem_parts.h"
#include "hosts/report/report.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

// Appends the words of a text from `column` on, where the line has come to so far; further lines
// begin at `indent`.
void AppendFlow(std::string& out, std::string_view text, std::size_t column, std::size_t indent,
                std::size_t width) {
  bool lineBegins = true;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (word.empty()) continue;
    const std::size_t columns = Columns(word);
    if (!lineBegins && column + 1 + columns > width) {
      out += '\n';
      out.append(indent, ' ');
      column = indent;
      lineBegins = true;
    }
    if (!lineBegins) {
      out += ' ';
      ++column;
    }
    out += word;
    column += columns;
    lineBegins = false;
  }
  out += '\n';
}

using ProblemGroups = std::unordered_map<UnicodeView, std::vector<std::int32_t>>;

// What is the same for all problems of a report.
class ProblemLister {
 public:
  ProblemLister(std::string& out, const ScanReport& report, const TextLook& look,
                const Drain& drain)
      : out_(out),
        drain_(drain),
        report_(report),
        look_(look),
        style_(look.colours),
        ids_(ProblemIds(*SweepErrors)),
        indent_(look.width < 60 ? 4 : 16),
        hiddenMark_(' ' + Say(texts::HiddenMark)),
        narrowMark_(" (" + Say(texts::Bits32) + ')') {}

  void AppendCategory(const TRCPlugin& plugin, const std::vector<std::int32_t>& problems) {
    out_ += '\n';
    style_.Heading(out_, Printable(plugin.Caption));
    out_ += " (" + std::to_string(problems.size()) + ")\n";
    AppendWrapped(out_, Printable(plugin.ShortDescription), 2, look_.width);
    if (look_.details) AppendWrapped(out_, Printable(plugin.Description), 2, look_.width);
    out_ += '\n';
    // One left over takes no more room than the line that says so.
    const bool cut = look_.limit > 0 && problems.size() > look_.limit + 1;
    const std::size_t count = cut ? look_.limit : problems.size();
    for (std::size_t i = 0; i < count; ++i) {
      if (look_.details && i > 0) out_ += '\n';
      AppendProblem(problems[i]);
      if (drain_) drain_(out_);
    }
    if (!cut) return;
    const std::string left = std::to_string(problems.size() - count);
    AppendWrapped(out_, Say(texts::MoreInCategory, {left, ToUtf8(plugin.FPluginID)}), 2,
                  look_.width);
  }

 private:
  void AppendProblem(std::int32_t index) {
    const TSweepError& problem = (*SweepErrors)[index];
    const std::string& id = ids_[static_cast<std::size_t>(index)];
    out_ += "  ";
    style_.Dim(out_, id);
    out_ += "  ";
    std::string caption = Printable(problem.Caption);
    if (report_.target.is64Bit && LiesInNarrowView(problem)) caption += narrowMark_;
    if (const UnicodeView owner = OwnerOf(report_, index); !owner.empty()) {
      caption += " [" + Printable(owner) + ']';
    }
    if (!problem.Visible) caption += hiddenMark_;
    AppendFlow(out_, caption, id.size() + 4, indent_, look_.width);
    AppendWrapped(out_, Printable(problem.ShortDescription), indent_, look_.width);
    if (look_.details) AppendDetails(problem);
  }

  void AppendDetails(const TSweepError& problem) {
    AppendWrapped(out_, Printable(PlainText(problem.Description)), indent_, look_.width);
    for (const UnicodeString& item : problem.Data) {
      const std::size_t colon = std::min(item.find(u':'), item.size());
      const std::string name = Printable(UnicodeView(item).substr(0, colon));
      const std::string value =
          Printable(UnicodeView(item).substr(std::min(colon + 1, item.size())));
      out_.append(indent_, ' ');
      style_.Dim(out_, name + ':');
      out_ += ' ';
      // Whole, so that it can be copied.
      out_ += value + '\n';
    }
  }

  static bool LiesInNarrowView(const TSweepError& problem) {
    return !problem.Data.empty() && problem.Data.front().find(u":32:") != UnicodeString::npos;
  }

  std::string& out_;
  const Drain& drain_;
  const ScanReport& report_;
  const TextLook& look_;
  TextStyle style_;
  std::vector<std::string> ids_;
  std::size_t indent_;
  std::string hiddenMark_;
  std::string narrowMark_;
};

// The categories once more with their counts: of a long list only the end is on the screen.
void AppendOverview(std::string& out, const ProblemGroups& groups, const TextLook& look) {
  constexpr std::size_t FewProblems = 12;
  std::size_t most = 0;
  std::size_t all = 0;
  for (const auto& [plugin, problems] : groups) {
    most = std::max(most, problems.size());
    all += problems.size();
  }
  if (groups.size() < 2 || all <= FewProblems) return;
  const std::size_t digits = std::to_string(most).size();
  out += '\n';
  TextStyle(look.colours).Heading(out, Say(texts::OverviewHeading));
  out += '\n';
  for (const TRCPlugin* plugin : *Plugins) {
    const auto group = groups.find(plugin->FPluginID);
    if (group == groups.end()) continue;
    const std::string count = std::to_string(group->second.size());
    out.append(2 + digits - count.size(), ' ');
    out += count + "  " + Printable(plugin->Caption) + '\n';
  }
}

const TText& ByCount(std::size_t count, const TText& none, const TText& one, const TText& many) {
  return count == 0 ? none : count == 1 ? one : many;
}

void AppendSummary(std::string& out, const ScanReport& report, std::size_t found,
                   const TextLook& look) {
  std::string summary;
  const auto add = [&summary](const std::string& sentence) {
    summary += (summary.empty() ? "" : " ") + sentence;
  };
  const auto counted = [&add](std::size_t count, const TText& none, const TText& one,
                              const TText& many) {
    add(Say(ByCount(count, none, one, many), {std::to_string(count)}));
  };
  if (report.compared) {
    counted(found, texts::NewNone, texts::NewOne, texts::NewMany);
    counted(report.knownBefore, texts::KnownNone, texts::KnownOne, texts::KnownMany);
  } else {
    counted(found, texts::FoundNone, texts::FoundOne, texts::FoundMany);
  }
  counted(report.hidden, texts::HiddenNone, texts::HiddenOne, texts::HiddenMany);
  if (const std::size_t others = report.leftOut - report.knownBefore; others > 0) {
    counted(others, texts::LeftOutMany, texts::LeftOutOne, texts::LeftOutMany);
  }
  if (report.outcome == RunOutcome::Stopped) add(Say(texts::ScanStopped));
  if (ShouldReSearch) add(Say(texts::ScanAgain));
  if (!report.notes.empty()) {
    counted(report.notes.size(), texts::NotesMany, texts::NotesOne, texts::NotesMany);
  }
  if (report.duration.count() > 0) add(Say(texts::ScanTook, {DurationText(report.duration)}));
  out += '\n';
  AppendWrapped(out, summary, 0, look.width);
}

}  // namespace

std::string Printable(UnicodeView text) {
  return ToUtf8(Harmless(text, false));
}

std::string DurationText(std::chrono::milliseconds duration) {
  const auto tenths = (duration.count() + 50) / 100;
  if (tenths < 600) {
    const char point = PackageLanguage() == TLanguage::German ? ',' : '.';
    return std::to_string(tenths / 10) + point + std::to_string(tenths % 10) + " s";
  }
  const auto seconds = (duration.count() + 500) / 1000;
  return std::to_string(seconds / 60) + " min " + std::to_string(seconds % 60) + " s";
}

void AppendWrapped(std::string& out, std::string_view text, std::size_t indent, std::size_t width) {
  if (text.find_first_not_of(' ') != std::string_view::npos) out.append(indent, ' ');
  AppendFlow(out, text, indent, indent, width);
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
  std::string line = product + " (" + details + ")";
  // The running system lies nowhere in particular.
  if (!target.folder.empty()) line = Say(texts::TargetLine, {line, target.folder});
  if (!target.userName.empty()) line += ", " + Say(texts::UserWord, {Printable(target.userName)});
  return line;
}

void AppendNotes(std::string& out, const TStringList& notes, const TextLook& look) {
  if (notes.empty()) return;
  out += '\n';
  TextStyle(look.colours).Heading(out, Say(texts::NotesHeading));
  out += '\n';
  const bool cut = look.limit > 0 && notes.size() > look.limit + 1;
  const std::size_t count = cut ? look.limit : notes.size();
  for (std::size_t i = 0; i < count; ++i) {
    out += "  ";
    AppendFlow(out, Printable(notes[i]), 2, 4, look.width);
  }
  if (cut) {
    AppendWrapped(out, Say(texts::MoreNotes, {std::to_string(notes.size() - count)}), 2,
                  look.width);
  }
}

std::vector<std::int32_t> AllProblems(bool withHidden) {
  std::vector<std::int32_t> all;
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    if (withHidden || (*SweepErrors)[i].Visible) all.push_back(i);
  }
  return all;
}

UnicodeView OwnerOf(const ScanReport& report, std::int32_t index) {
  const auto at = static_cast<std::size_t>(index);
  return at < report.owners.size() ? UnicodeView(report.owners[at]) : UnicodeView();
}

std::string TextReport(const ScanReport& report, const TextLook& look, const Drain& drain) {
  ProblemGroups groups;
  std::size_t found = 0;
  for (const std::int32_t i : report.shown) {
    const TSweepError& problem = (*SweepErrors)[i];
    found += problem.Visible;
    groups[problem.PluginID].push_back(i);
  }
  std::string out;
  std::string target = TargetLine(report.target);
  for (std::size_t i = 0; i < report.users.size(); ++i) {
    target +=
        (i == 0 ? ", " + Say(texts::UsersWord) + ' ' : ", ") + Printable(report.users[i].name);
  }
  AppendFlow(out, target, 0, 4, look.width);
  if (!report.shown.empty()) {
    ProblemLister lister(out, report, look, drain);
    for (const TRCPlugin* plugin : *Plugins) {
      const auto group = groups.find(plugin->FPluginID);
      if (group != groups.end()) lister.AppendCategory(*plugin, group->second);
    }
  }
  AppendNotes(out, report.notes, look);
  AppendOverview(out, groups, look);
  AppendSummary(out, report, found, look);
  return out;
}

}  // namespace scrubwell::hosts
