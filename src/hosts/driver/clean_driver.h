// Drives the package through a clean: scan, select, test again, repair, and over again if asked to.
// Like the scan it knows no backend; who wants the changes written, journalled or thrown away sees
// to that through the events.
#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "hosts/driver/problem_choice.h"
#include "hosts/driver/scan_driver.h"

namespace scrubwell {

/// Which problems to take. Hidden ones are never among them.
struct CleanSelection {
  bool all = false;
  /// Ids as ProblemIds gives them, or longer beginnings of the digest; unless `all`.
  std::vector<std::string> ids;
  /// Problems outside of it are never taken.
  ProblemChoice choice{};
};

enum class SelectFailure : std::uint8_t {
  None,
  Unknown,    ///< no problem of that id
  Hidden,     ///< it is on the ignore list
  Ambiguous,  ///< the beginning of more than one id
  LeftOut,    ///< the choice of kinds or text leaves it out
};

struct SelectResult {
  SelectFailure failure = SelectFailure::None;
  std::string id;  ///< the one that can't be selected
};

/// The problem of that id. Unknown and Ambiguous leave `index` alone, Hidden does not.
SelectFailure FindProblem(const std::string& id, std::int32_t& index);

enum class CleanOutcome : std::uint8_t {
  Fixed,
  Failed,      ///< the repair said so
  StillFound,  ///< the repair claimed success, but a fresh check finds the problem as before
  Gone,        ///< the check just before the repair no longer found it; nothing was done
};

/// What became of one selected problem.
struct CleanedProblem {
  std::string id;
  UnicodeString plugin;
  std::int32_t kind = 0;
  UnicodeString caption;
  UnicodeString shortDescription;
  CleanOutcome outcome = CleanOutcome::Gone;
  int round = 1;  ///< the last one that it was taken up in, counted from 1
};

/// Called on the cleaning thread. All may be empty.
struct CleanEvents {
  std::function<void()> roundBegins;
  /// The changes between these two belong to the problem.
  std::function<void(const CleanedProblem&)> problemBegins;
  std::function<void(const CleanedProblem&, bool repaired)> problemEnds;
};

struct CleanResult {
  SelectResult selection;  ///< on failure nothing has been repaired
  RunOutcome outcome = RunOutcome::Complete;
  std::vector<CleanedProblem> problems;  ///< each once, in the order they were first taken up
  int rounds = 0;
  bool shouldReSearch = false;
  std::size_t hidden = 0;  ///< problems on the ignore list, in the last scan

  /// How many were not repaired. What was gone by itself is not among them.
  [[nodiscard]] std::size_t Left() const;
};

/// Cleans with the active plugins of the loaded package, one after another in list order.
///
/// A run ends early when StopSearch is set. What was repaired by then stays so: a host that wants
/// all or nothing must not write it.
class CleanDriver {
 public:
  explicit CleanDriver(CleanEvents events, RunProgressEvent onProgress = {});

  /// One round: scan, select, repair. With `untilClean` rounds go on until nothing selected is
  /// found or a round repairs nothing. Ids must name problems of the first scan unless
  /// `mayBeMissing`.
  CleanResult Run(const CleanSelection& selection, bool untilClean, bool mayBeMissing = false);

 private:
  struct Round;
  SelectResult Select(const CleanSelection& selection, bool mayBeMissing, Round& round) const;
  bool Repair(Round& round);
  bool CleanPlugin(TRCPlugin& plugin, Round& round);
  bool TestAgain(TRCPlugin& plugin, Round& round);
  bool Verify(Round& round);
  void Attach(TRCPlugin& plugin, Round& round);
  void TakeStock();
  void Collect(const Round& round);

  CleanEvents events_;
  RunProgressEvent onProgress_;
  TProgressManager progress_;
  CleanResult result_;
  std::unordered_map<std::string, std::size_t> byDigest_;  // into result_.problems
};

}  // namespace scrubwell
