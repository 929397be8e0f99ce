#include "hosts/cli/scan_target.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "hosts/cli/stop_signals.h"
#include "hosts/cli/targets.h"
#include "hosts/driver/problem_id.h"
#include "hosts/report/hive_places.h"
#include "hosts/report/problem_parts.h"
#include "hosts/report/system_sentence.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

bool BeginsWithText(UnicodeView text, UnicodeView prefix) {
  return SameText(text.substr(0, prefix.size()), prefix);
}

// Whether the entry lies in the hives of the user that was scanned for.
bool IsUsersOwn(const TSweepError& problem) {
  constexpr UnicodeView user = u"HKEY_CURRENT_USER\\";
  constexpr UnicodeView classes = u"HKEY_CLASSES_ROOT\\";
  const ProblemPlace place = PlaceOf(problem);
  if (BeginsWithText(place.key, user)) return true;
  if (!BeginsWithText(place.key, classes)) return false;
  // Of the merged classes a clean takes the user's where there are any.
  return UserHasClass(place.key.substr(classes.size()), place.view);
}

// The findings of several scans as one list.
class MergedProblems {
 public:
  // Takes over what the scan for this user has found.
  void Take(std::size_t user) {
    for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
      TSweepError& problem = (*SweepErrors)[i];
      if (!IsUsersOwn(problem)) {
        const auto [known, fresh] = shared_.try_emplace(ProblemDigest(problem), found_.size());
        if (!fresh) {
          Found& first = found_[known->second];
          first.users.push_back(user);
          first.problem.Visible = first.problem.Visible || problem.Visible;
          continue;
        }
        found_.push_back({std::move(problem), {user}, false});
      } else {
        found_.push_back({std::move(problem), {user}, true});
      }
    }
    SweepErrors->Clear();
    // Where several users look at the same entry, one may find what another does not.
    ++scans_;
  }

  // Puts everything into the package's list and counters, and the owners into the report.
  void Publish(ScanReport& report) {
    RealSweepErrorCount = CategoryErrors = 0;
    for (TRCPlugin* plugin : *Plugins) plugin->ErrorCount = 0;
    for (Found& found : found_) {
      if (!found.own && found.users.size() == scans_) {
        Publish(std::move(found.problem), {}, report);
        continue;
      }
      for (const std::size_t user : found.users) {
        Publish(TSweepError(found.problem), report.users[user].name, report);
      }
    }
  }

 private:
  struct Found {
    TSweepError problem;
    std::vector<std::size_t> users;
    bool own = false;
  };

  static void Publish(TSweepError problem, const UnicodeString& owner, ScanReport& report) {
    if (problem.Visible) {
      ++CategoryErrors;
      ++RealSweepErrorCount;
      if (TRCPlugin* plugin = FindPlugin(problem.PluginID)) ++plugin->ErrorCount;
    }
    SweepErrors->Add(std::make_unique<TSweepError>(std::move(problem)));
    report.owners.push_back(owner);
  }

  std::vector<Found> found_;
  std::unordered_map<std::string, std::size_t> shared_;
  std::size_t scans_ = 0;
};

}  // namespace

std::optional<int> ScannedTarget::Scan(const ScanOptions& options, ScanReport& report) {
  package_.reset();
  backend_.reset();
  OpenedTarget opened = OpenTarget(options.target);
  if (!opened.target) {
    return Fail(CodeOf(opened.failure), opened.error);
  }
  backend_ = std::move(opened.target);
  package_ = std::make_unique<LoadedPackage>(backend_->Platform());
  // Not before: loading the package clears the stop request. Until then there is nothing to show,
  // and a signal just ends the program.
  CatchStopSignals();
  if (const auto error = ApplyChoice(options)) return Fail(WrongUse, *error);
  report.outcome = ScanWithProgress();
  report.target = backend_->Target();
  report.notes = InReportLanguage(backend_->Notes());
  return std::nullopt;
}

std::optional<int> ScannedTarget::ScanAllUsers(const ScanOptions& options, ScanReport& report) {
  std::vector<TargetUser> users;
  {
    const OpenedTarget opened = OpenTarget(options.target);
    if (!opened.target) {
      return Fail(CodeOf(opened.failure), opened.error);
    }
    users = opened.target->Target().users;
  }
  if (users.empty()) return Scan(options, report);
  MergedProblems merged;
  TStringList notes;
  std::unordered_set<UnicodeString> seen;
  for (const TargetUser& user : users) {
    ScanOptions own = options;
    own.target.user = ToUtf8(user.sid);
    if (const auto failed = Scan(own, report)) return failed;
    merged.Take(report.users.size());
    report.users.push_back({user.name, report.target.userSid});
    for (const UnicodeString& note : report.notes) {
      if (seen.insert(note).second) notes.push_back(note);
    }
    if (report.outcome == RunOutcome::Stopped) break;
  }
  merged.Publish(report);
  report.notes = std::move(notes);
  report.target.userName.clear();
  report.target.userSid.clear();
  return std::nullopt;
}

}  // namespace scrubwell::hosts
