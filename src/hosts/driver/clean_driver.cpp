#include "hosts/driver/clean_driver.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <unordered_set>
#include <utility>

#include "hosts/driver/problem_id.h"

namespace scrubwell {

namespace {

// A repair that brings a new problem with it must not go on for ever.
constexpr int MaxRounds = 100;
// Shorter beginnings of an id are guesses, not names.
constexpr std::size_t LeastDigits = 12;

using Digests = std::unordered_set<std::string>;

// Lets a plugin scan into an empty list of its own, and puts the run's list and counters back.
class ScanAside {
 public:
  explicit ScanAside(TRCPlugin& plugin)
      : plugin_(plugin),
        list_(SweepErrors),
        real_(RealSweepErrorCount),
        category_(CategoryErrors),
        errors_(plugin.ErrorCount),
        onScan_(std::exchange(plugin.OnScanProgress, {})) {
    SweepErrors = &aside_;
  }
  ~ScanAside() {
    SweepErrors = list_;
    RealSweepErrorCount = real_;
    CategoryErrors = category_;
    plugin_.ErrorCount = errors_;
    plugin_.OnScanProgress = std::move(onScan_);
  }
  ScanAside(const ScanAside&) = delete;
  ScanAside& operator=(const ScanAside&) = delete;

  // False when it was stopped.
  bool Scan(Digests& found) {
    ForgetLookups();
    plugin_.Init();
    if (!StopSearch) plugin_.Scan();
    if (plugin_.FState != rcpScanned) return false;
    for (std::int32_t i = 0; i < aside_.Count(); ++i) found.insert(ProblemDigest(aside_[i]));
    return true;
  }

 private:
  TRCPlugin& plugin_;
  TSweepErrorList* list_;
  std::int32_t real_;
  std::int32_t category_;
  std::int32_t errors_;
  TScanProgressEvent onScan_;
  TSweepErrorList aside_;
};

// Takes the callbacks off again, also when a plugin throws: they refer to the driver.
class CallbackGuard {
 public:
  explicit CallbackGuard(TRCPlugin& plugin) : plugin_(plugin) {}
  ~CallbackGuard() {
    plugin_.OnCleanProgress = {};
    plugin_.OnBeforeRepair = {};
    plugin_.OnAfterRepair = {};
  }
  CallbackGuard(const CallbackGuard&) = delete;
  CallbackGuard& operator=(const CallbackGuard&) = delete;

 private:
  TRCPlugin& plugin_;
};

// The problems of a list by their digests, so that an id or its beginning is found at once.
class DigestIndex {
 public:
  DigestIndex() {
    for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
      byDigest_.try_emplace(ProblemDigest((*SweepErrors)[i]), i);
    }
  }
  SelectFailure Find(const std::string& id, std::int32_t& index) const {
    const auto begin = byDigest_.lower_bound(id);
    const auto matches = [&](auto at) {
      return at != byDigest_.end() && at->first.starts_with(id);
    };
    if (id.size() < LeastDigits || !matches(begin)) return SelectFailure::Unknown;
    if (matches(std::next(begin))) return SelectFailure::Ambiguous;
    index = begin->second;
    return (*SweepErrors)[index].Visible ? SelectFailure::None : SelectFailure::Hidden;
  }

 private:
  std::map<std::string, std::int32_t> byDigest_;
};

}  // namespace

SelectFailure FindProblem(const std::string& id, std::int32_t& index) {
  return DigestIndex().Find(id, index);
}

std::size_t CleanResult::Left() const {
  return static_cast<std::size_t>(
      std::count_if(problems.begin(), problems.end(), [](const CleanedProblem& problem) {
        return problem.outcome == CleanOutcome::Failed ||
               problem.outcome == CleanOutcome::StillFound;
      }));
}

// What one round took up, by index in SweepErrors.
struct CleanDriver::Round {
  int number = 1;
  std::vector<std::int32_t> selected;  // ascending
  std::unordered_map<std::int32_t, CleanedProblem> problems;

  [[nodiscard]] std::vector<std::int32_t> Of(const TRCPlugin& plugin) const {
    std::vector<std::int32_t> own;
    std::copy_if(selected.begin(), selected.end(), std::back_inserter(own),
                 [&](std::int32_t i) { return (*SweepErrors)[i].PluginID == plugin.FPluginID; });
    return own;
  }
  [[nodiscard]] bool Any(std::initializer_list<CleanOutcome> outcomes) const {
    return std::any_of(problems.begin(), problems.end(), [&](const auto& entry) {
      return std::find(outcomes.begin(), outcomes.end(), entry.second.outcome) != outcomes.end();
    });
  }
};

CleanDriver::CleanDriver(CleanEvents events, RunProgressEvent onProgress)
    : events_(std::move(events)), onProgress_(std::move(onProgress)) {}

CleanResult CleanDriver::Run(const CleanSelection& selection, bool untilClean, bool mayBeMissing) {
  result_ = {};
  byDigest_.clear();
  for (int number = 1; number <= MaxRounds; ++number) {
    result_.outcome = ScanDriver(onProgress_).Scan();
    if (result_.outcome == RunOutcome::Stopped) return result_;
    TakeStock();
    Round round;
    round.number = number;
    result_.selection = Select(selection, mayBeMissing || number > 1, round);
    if (result_.selection.failure != SelectFailure::None || round.selected.empty()) break;
    result_.rounds = number;
    const bool complete = Repair(round);
    Collect(round);
    result_.shouldReSearch = ShouldReSearch;
    if (!complete) {
      result_.outcome = RunOutcome::Stopped;
      return result_;
    }
    if (!untilClean || !round.Any({CleanOutcome::Fixed})) return result_;
  }
  // Reached when a scan found nothing to do: it was the new scan that might have been advised.
  result_.shouldReSearch = false;
  return result_;
}

SelectResult CleanDriver::Select(const CleanSelection& selection, bool mayBeMissing,
                                 Round& round) const {
  const std::vector<std::string> ids = ProblemIds(*SweepErrors);
  const auto take = [&](std::int32_t index, bool selected) {
    TSweepError& problem = (*SweepErrors)[index];
    problem.Selected = selected;
    if (!selected) return;
    round.selected.push_back(index);
    round.problems[index] = {ids[static_cast<std::size_t>(index)],
                             problem.PluginID,
                             problem.ErrorType,
                             problem.Caption,
                             problem.ShortDescription,
                             CleanOutcome::Gone,
                             round.number};
  };
  std::unordered_set<std::int32_t> chosen;
  if (!selection.all) {
    const DigestIndex index;
    for (const std::string& id : selection.ids) {
      std::int32_t at = -1;
      SelectFailure failure = index.Find(id, at);
      if (failure == SelectFailure::None && !selection.choice.Takes((*SweepErrors)[at])) {
        failure = SelectFailure::LeftOut;
      }
      if (failure == SelectFailure::None) chosen.insert(at);
      if (failure != SelectFailure::None && !mayBeMissing) return {failure, id};
    }
  }
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    const bool wanted =
        selection.all ? selection.choice.Takes((*SweepErrors)[i]) : chosen.contains(i);
    take(i, wanted && (*SweepErrors)[i].Visible);
  }
  return {};
}

// False when it was stopped.
bool CleanDriver::Repair(Round& round) {
  RCStatus = RCS_Cleaning;
  if (events_.roundBegins) events_.roundBegins();
  progress_.Clear();
  for (const TRCPlugin* plugin : *Plugins) {
    const auto count = static_cast<std::int32_t>(round.Of(*plugin).size());
    if (count > 0) progress_.AddItem(plugin->FPluginID, count, count);
  }
  bool complete = true;
  for (TRCPlugin* plugin : *Plugins) {
    if (complete && !round.Of(*plugin).empty()) complete = CleanPlugin(*plugin, round);
  }
  complete = complete && Verify(round);
  const bool left = round.Any({CleanOutcome::Failed, CleanOutcome::StillFound});
  RCStatus = complete && !left ? RCS_Cleaned : RCS_NotAllCleaned;
  return complete;
}

bool CleanDriver::CleanPlugin(TRCPlugin& plugin, Round& round) {
  // A plugin left out of the scan has found nothing, so that this one is active.
  if (!TestAgain(plugin, round) || StopSearch) return false;
  const CallbackGuard guard(plugin);
  Attach(plugin, round);
  progress_.BeginItem(plugin.FPluginID);
  plugin.InitClean();
  plugin.Clean();
  progress_.EndItem(plugin.FPluginID);
  progress_.SetProgress(plugin.FPluginID, 1000);
  return plugin.FCleanItemsDone == plugin.FCleanItemCount;
}

// Repairs of other plugins, and whoever else has the disk, may have settled a finding by now.
bool CleanDriver::TestAgain(TRCPlugin& plugin, Round& round) {
  Digests found;
  if (!ScanAside(plugin).Scan(found)) return false;
  for (const std::int32_t index : round.Of(plugin)) {
    TSweepError& problem = (*SweepErrors)[index];
    problem.Selected = found.contains(ProblemDigest(problem));
  }
  return true;
}

// Most plugins call a repair done whether or not the deletion went through, so that only a look at
// what is there now tells.
bool CleanDriver::Verify(Round& round) {
  for (TRCPlugin* plugin : *Plugins) {
    std::vector<std::int32_t> own = round.Of(*plugin);
    std::erase_if(own, [&](std::int32_t index) {
      return round.problems[index].outcome != CleanOutcome::Fixed;
    });
    if (own.empty()) continue;
    Digests found;
    if (!ScanAside(*plugin).Scan(found)) return false;
    for (const std::int32_t index : own) {
      if (!found.contains(ProblemDigest((*SweepErrors)[index]))) continue;
      round.problems[index].outcome = CleanOutcome::StillFound;
      SetFixedState(index, false);
    }
  }
  return true;
}

void CleanDriver::Attach(TRCPlugin& plugin, Round& round) {
  plugin.OnBeforeRepair = [this, &round](TRCPlugin&, std::int32_t index, bool) {
    if (events_.problemBegins) events_.problemBegins(round.problems.at(index));
  };
  plugin.OnAfterRepair = [this, &round](TRCPlugin&, std::int32_t index, bool repaired) {
    CleanedProblem& problem = round.problems.at(index);
    problem.outcome = repaired ? CleanOutcome::Fixed : CleanOutcome::Failed;
    if (events_.problemEnds) events_.problemEnds(problem, repaired);
  };
  if (!onProgress_) return;
  plugin.OnCleanProgress = [this](TRCPlugin& sender, std::int32_t promille, UnicodeView,
                                  UnicodeView item, bool mustDisplay) {
    progress_.SetProgress(sender.FPluginID, promille);
    onProgress_({progress_.GetTotalProgress(), &sender, item, mustDisplay});
  };
}

// After each scan. What an earlier round could not repair may have gone with something else.
void CleanDriver::TakeStock() {
  Digests found;
  result_.hidden = 0;
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    const TSweepError& problem = (*SweepErrors)[i];
    if (!problem.Visible) ++result_.hidden;
    if (!byDigest_.empty()) found.insert(ProblemDigest(problem));
  }
  for (const auto& [digest, at] : byDigest_) {
    CleanedProblem& problem = result_.problems[at];
    if (problem.outcome != CleanOutcome::Fixed && !found.contains(digest)) {
      problem.outcome = CleanOutcome::Gone;
    }
  }
}

void CleanDriver::Collect(const Round& round) {
  for (const std::int32_t index : round.selected) {
    const CleanedProblem& problem = round.problems.at(index);
    const auto [entry, fresh] =
        byDigest_.try_emplace(ProblemDigest((*SweepErrors)[index]), result_.problems.size());
    if (fresh) {
      result_.problems.push_back(problem);
    } else {
      result_.problems[entry->second] = problem;
    }
  }
}

}  // namespace scrubwell
