// Puts a set of changed files in place: all of them or none, whenever it is interrupted.
//
// New contents are first written beside the files that they replace. A record of all steps lies in
// the folder of the machine's hives from before the first of them on; renaming it is the commit.
// With the record under its first name everything is taken back, under its second name finished.
#pragma once

#include <string>
#include <vector>

#include "backends/offline/clean_session.h"
#include "backends/offline/disk.h"
#include "backends/offline/drive_tree.h"
#include "backends/offline/offline_files.h"

namespace scrubwell::offline {

inline constexpr std::string_view kPreparingName = "/scrubwell.preparing";
inline constexpr std::string_view kPendingName = "/scrubwell.pending";
inline constexpr std::string_view kSideEnding = ".scrubwell-new";

struct CommitStep {
  enum class Kind : std::uint8_t { MakeFolder, Replace, Erase, EraseFolder, Truncate };
  Kind kind = Kind::Replace;
  std::string local;     ///< this machine's path
  char16_t letter = 0;   ///< the drive that it lies on; 0: on none of them
  std::string relative;  ///< below the drive's folder
  bool existed = false;
  std::uint64_t hashBefore = 0;
  std::uint64_t hashAfter = 0;
  // Not part of the record:
  Bytes data;
  FileAttributes attributes;

  [[nodiscard]] std::string Side() const { return local + std::string(kSideEnding); }
};

struct CommitPlan {
  std::string session;  ///< the session's folder, which is there and holds backup and journal
  std::string config;   ///< the folder that the record lies in
  std::vector<CommitStep> steps;
};

struct CommitOutcome {
  CleanFailure failure = CleanFailure::None;
  std::string error;
  std::vector<std::string> notes;
};

/// Answers NotWritten with nothing changed, or Unfinished with the record in place.
CommitOutcome RunCommit(IDisk& disk, CommitPlan& plan);

/// What an interrupted commit left.
struct PendingCommit {
  enum class State : std::uint8_t { None, Preparing, Committed, Unreadable };
  State state = State::None;
  CommitPlan plan;
  std::string error;  ///< for Unreadable, one sentence
};

/// Looks into the folder of the machine's hives. A record whose drives are not all given is
/// Unreadable.
PendingCommit FindPending(const std::string& config, const DriveTree& drives);
/// The files as they will be once the commit is finished: hives to read in place of others by
/// their paths, and the changes of the other files. False when that can't be told.
bool FinishedView(const PendingCommit& pending, std::map<std::string, std::string>& replacements,
                  FileChanges& changes);
/// Finishes or takes back. What somebody else has changed since is left as it is, with a note.
CommitOutcome SettlePending(IDisk& disk, PendingCommit& pending);

}  // namespace scrubwell::offline
