#include <algorithm>
#include <array>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "hosts/cli/clean_report.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/registry_text.h"
#include "hosts/report/system_sentence.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

// In the order of the enumerations.
constexpr std::array<TText, 11> Actions = {texts::ActionDeleteKey,
                                           texts::ActionDeleteValue,
                                           texts::ActionSetValue,
                                           texts::ActionCreateKey,
                                           texts::ActionWriteFile,
                                           texts::ActionEraseFile,
                                           texts::ActionEraseFolder,
                                           texts::ActionKeepFile,
                                           texts::ActionRemoveTask,
                                           texts::ActionRemoveUrl,
                                           texts::ActionRemoveFirewallApplication};
constexpr std::array<TText, 4> Outcomes = {texts::OutcomeFixed, texts::OutcomeFailed,
                                           texts::OutcomeStillFound, texts::OutcomeGone};
constexpr std::array<TText, 4> UndoOutcomes = {texts::UndoRestored, texts::UndoAlreadyThere,
                                               texts::UndoTaken, texts::UndoFailed};

template <class Enum, std::size_t N>
std::string Name(const std::array<TText, N>& names, Enum value) {
  const auto index = static_cast<std::size_t>(value);
  return index < N ? Say(names[index]) : std::string();
}

bool ChangesValue(const JournalItem& item) {
  return item.action == JournalAction::DeleteValue || item.action == JournalAction::SetValue;
}

// How much goes with it, and why, in brackets.
std::string Remark(const JournalItem& item, bool emptied) {
  std::string remark;
  const auto add = [&remark](const std::string& part) {
    remark += (remark.empty() ? " (" : ", ") + part;
  };
  if (emptied) add(Say(texts::LeftEmpty));
  if (item.action == JournalAction::DeleteKey) {
    if (item.subkeys > 0) add(Say(texts::Subkeys, {std::to_string(item.subkeys)}));
    if (item.values > 0) add(Say(texts::Values, {std::to_string(item.values)}));
  } else if (item.bytes > 0) {
    add(Say(texts::ByteCount, {std::to_string(item.bytes)}));
  }
  return remark.empty() ? remark : remark + ')';
}

std::string ItemLine(const JournalItem& item, bool emptied) {
  std::string line = Name(Actions, item.action) + ' ' + Printable(item.place);
  if (ChangesValue(item)) {
    line += "  ";
    line += item.name.empty() ? Say(texts::DefaultValueName) : '"' + Printable(item.name) + '"';
  }
  return line + Remark(item, emptied);
}

std::string Indented(std::size_t indent, const std::string& line) {
  return std::string(indent, ' ') + line + '\n';
}

// What is written in place of what, on lines of their own.
std::string WrittenLines(const JournalItem& item, std::size_t indent) {
  constexpr std::size_t mostBytes = 32;
  if (item.written == nullptr) return {};
  const WrittenContent& written = *item.written;
  if (written.after) {
    const std::string before =
        written.before ? DataText(*written.before, mostBytes) : Say(texts::NoValueBefore);
    return Indented(indent, before + " \u2192 " + DataText(*written.after, mostBytes));
  }
  std::string out;
  for (const UnicodeString& line : written.linesBefore)
    out += Indented(indent, "- " + Printable(line));
  for (const UnicodeString& line : written.linesAfter)
    out += Indented(indent, "+ " + Printable(line));
  return out;
}

std::string Padded(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

// The changes of a report by problem, each in the order it is made.
class Changes {
 public:
  explicit Changes(const CleanReport& report) : items_(report.items) {
    const std::vector<bool> emptied = EmptiedParents(items_);
    for (std::size_t i = 0; i < items_.size(); ++i) {
      byProblem_[ProblemOf(items_[i], report.journal)] += Padded(items_[i].id, 8) + "  " +
                                                          ItemLine(items_[i], emptied[i]) + '\n' +
                                                          WrittenLines(items_[i], 14);
    }
  }
  [[nodiscard]] std::string Of(const std::string& problem) const {
    const auto found = byProblem_.find(problem);
    return found == byProblem_.end() ? std::string() : found->second;
  }

 private:
  const std::vector<JournalItem>& items_;
  std::unordered_map<std::string, std::string> byProblem_;
};

struct Show {
  bool outcomes = false;
  bool changes = false;
};

void AppendProblems(std::string& out, const CleanReport& report, Show show) {
  const Changes changes(report);
  int round = 0;
  std::vector<CleanedProblem> problems = report.result.problems;
  std::stable_sort(problems.begin(), problems.end(),
                   [](const auto& a, const auto& b) { return a.round < b.round; });
  for (const CleanedProblem& problem : problems) {
    if (report.result.rounds > 1 && problem.round != round) {
      round = problem.round;
      out += '\n' + Say(texts::RoundHeading, {std::to_string(round)}) + '\n';
    }
    if (show.changes) out += '\n';
    out += "  " + problem.id + "  " + Printable(problem.caption);
    // A plan says only what will not go as one would think.
    if (show.outcomes || problem.outcome != CleanOutcome::Fixed) {
      out += ": " + Name(Outcomes, problem.outcome);
    }
    out += '\n';
    if (show.changes) out += changes.Of(problem.id);
  }
  const std::string further = changes.Of({});
  if (show.changes && !further.empty()) {
    out += '\n' + Say(texts::FurtherChanges) + '\n' + further;
  }
}

std::size_t Count(const CleanResult& result, CleanOutcome outcome) {
  return static_cast<std::size_t>(
      std::count_if(result.problems.begin(), result.problems.end(),
                    [outcome](const auto& problem) { return problem.outcome == outcome; }));
}

void AppendCounts(std::string& out, const CleanResult& result) {
  const auto add = [&out](const TText& text, std::size_t count) {
    out += Say(text, {std::to_string(count)}) + ' ';
  };
  out += '\n';
  add(texts::FixedCount, Count(result, CleanOutcome::Fixed));
  add(texts::LeftCount, result.Left());
  if (const std::size_t gone = Count(result, CleanOutcome::Gone)) add(texts::GoneCount, gone);
  add(texts::HiddenCount, result.hidden);
  if (result.shouldReSearch) out += Say(texts::ScanAgain) + ' ';
  out.back() = '\n';
}

TextLook PlainLook(std::size_t width) {
  TextLook look;
  look.width = width;
  return look;
}

TStringList FromUtf8All(const std::vector<std::string>& lines) {
  TStringList result;
  for (const std::string& line : lines) result.push_back(FromUtf8(InReportLanguage(line)));
  return result;
}

}  // namespace

std::vector<bool> EmptiedParents(const std::vector<JournalItem>& items) {
  std::vector<bool> emptied(items.size(), false);
  // Problem and upper-cased path of the keys that have lost something.
  std::set<std::pair<std::size_t, UnicodeString>> lost;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const JournalItem& item = items[i];
    UnicodeString place = UpperCase(item.place);
    if (item.action == JournalAction::DeleteKey || item.action == JournalAction::EraseFolder ||
        item.action == JournalAction::EraseFile) {
      // An empty default value may be left in a key that counts as empty.
      emptied[i] = item.subkeys == 0 && item.values <= 1 && lost.contains({item.problem, place});
      place.resize(std::min(place.size(), place.rfind(u'\\')));
    } else if (item.action != JournalAction::DeleteValue) {
      continue;
    }
    lost.insert({item.problem, std::move(place)});
  }
  return emptied;
}

std::string ProblemOf(const JournalItem& item, const std::vector<JournalProblem>& problems) {
  return item.problem < problems.size() ? problems[item.problem].id : std::string();
}

std::string ChangesText(const std::vector<JournalItem>& items) {
  const std::vector<bool> emptied = EmptiedParents(items);
  std::string out;
  for (std::size_t i = 0; i < items.size(); ++i) {
    out += "  " + ItemLine(items[i], emptied[i]) + '\n' + WrittenLines(items[i], 6);
  }
  return out;
}

std::string PlanText(const CleanReport& report, std::size_t width) {
  std::string out = TargetLine(report.target) + "\n\n";
  if (report.result.problems.empty()) {
    out += Say(texts::NothingSelected) + ' ';
    out += Say(texts::HiddenCount, {std::to_string(report.result.hidden)}) + '\n';
  } else {
    out += Say(texts::PlanHeading, {std::to_string(report.items.size())}) + '\n';
    AppendProblems(out, report, {false, true});
  }
  AppendNotes(out, report.notes, PlainLook(width));
  if (report.dryRun) out += '\n' + Say(texts::DryRunEnd) + '\n';
  return out;
}

std::string ResultText(const CleanReport& report, std::size_t width, bool withChanges) {
  std::string out;
  if (withChanges) out += TargetLine(report.target) + '\n';
  if (!withChanges) out += '\n';
  if (report.result.problems.empty()) out += Say(texts::NothingSelected) + '\n';
  AppendProblems(out, report, {true, withChanges});
  TStringList notes = withChanges ? report.notes : TStringList();
  for (UnicodeString& note : FromUtf8All(report.commit.notes)) notes.push_back(std::move(note));
  AppendNotes(out, notes, PlainLook(width));
  AppendCounts(out, report.result);
  if (!report.commit.session.empty()) {
    out += Say(texts::BackupLine, {report.commit.folder}) + '\n';
    out += Say(texts::UndoHint, {report.undoCommand}) + '\n';
  }
  return out;
}

// ---- Sessions ------------------------------------------------------------------------------

std::string SizeText(std::uint64_t bytes) {
  constexpr std::string_view units[] = {"B", "KB", "MB", "GB", "TB"};
  std::size_t unit = 0;
  std::uint64_t tenths = bytes * 10;
  for (; tenths >= 10240 && unit + 1 < std::size(units); ++unit) tenths = (tenths + 512) / 1024;
  std::string text = std::to_string(tenths / 10);
  // Below ten, the first decimal still tells something.
  if (unit > 0 && tenths < 100) text += '.' + std::to_string(tenths % 10);
  return text + ' ' + std::string(units[unit]);
}

std::string SessionsText(const std::vector<SessionInfo>& sessions) {
  if (sessions.empty()) return Say(texts::NoSessions) + '\n';
  std::string out;
  for (const SessionInfo& session : sessions) {
    out += Say(texts::SessionLine, {session.name, session.time, std::to_string(session.items),
                                    std::to_string(session.undone)});
    out += ", " + Say(texts::SessionSizeWord, {SizeText(SessionSize(session))});
    if (!session.undoes.empty()) out += ", " + Say(texts::SessionUndoes, {session.undoes});
    if (!session.carriedOut) out += ", " + Say(texts::SessionPending);
    out += "\n    " + session.target;
    if (!session.product.empty()) out += " (" + Printable(session.product) + ')';
    if (!session.error.empty()) out += "\n    " + InReportLanguage(session.error);
    out += '\n';
  }
  return out;
}

std::string SessionText(const SessionContent& session) {
  std::string out = SessionsText({session.info});
  const std::vector<bool> emptied = EmptiedParents(session.items);
  std::size_t shown = JournalItem::NoProblem;
  for (std::size_t i = 0; i < session.items.size(); ++i) {
    const JournalItem& item = session.items[i];
    if (item.problem < session.problems.size() && item.problem != shown) {
      const JournalProblem& problem = session.problems[item.problem];
      out += "\n  " + problem.id + "  " + Printable(problem.caption) + '\n';
    }
    shown = item.problem;
    out += Padded(item.id, 8) + "  " + ItemLine(item, emptied[i]);
    if (item.undone) out += ": " + Say(texts::ItemUndone);
    out += '\n' + WrittenLines(item, 14);
  }
  return out;
}

std::string UndoText(const UndoResult& result, std::size_t width) {
  std::string out;
  std::array<std::size_t, 4> counts{};
  for (const UndoItem& entry : result.items) {
    ++counts.at(static_cast<std::size_t>(entry.outcome));
    out += Padded(entry.item.id, 8) + "  " + ItemLine(entry.item, false) + ": " +
           Name(UndoOutcomes, entry.outcome) + '\n';
    if (!entry.why.empty())
      AppendWrapped(out, Printable(FromUtf8(InReportLanguage(entry.why))), 10, width);
  }
  AppendNotes(out, FromUtf8All(result.notes), PlainLook(width));
  if (!out.empty()) out += '\n';
  out += Say(texts::UndoSummary, {std::to_string(counts[0]), std::to_string(counts[1]),
                                  std::to_string(counts[2] + counts[3])}) +
         '\n';
  return out;
}

}  // namespace scrubwell::hosts
