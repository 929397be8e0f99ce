// Puts a set of changed files in place: all of them or none, whenever it is interrupted.
//
// New contents are first written beside the files that they replace. A record of all steps lies in
// the folder of the machine's hives from before the first of them on; renaming it is the commit.
// With the record under its first name everything is taken back, under its second name finished.
// The session's folder has the same record: what is finished comes from there (see pending.h).
#pragma once

#include <string>
#include <vector>

#include "backends/offline/disk.h"
#include "backends/offline/drive_tree.h"

namespace scrubwell::offline {

inline constexpr std::string_view kPreparingName = "scrubwell.preparing";
inline constexpr std::string_view kPendingName = "scrubwell.pending";
inline constexpr std::string_view kSideEnding = ".scrubwell-new";
/// In the session's folder from before the first change on, until it gets its other name.
inline constexpr std::string_view kCarryingOutFile = "/carrying-out";

struct CommitStep {
  enum class Kind : std::uint8_t { MakeFolder, Replace, Erase, EraseFolder, Truncate };
  Kind kind = Kind::Replace;
  DiskPlace place;
  char16_t letter = 0;  ///< the drive that it lies on; 0: in the backup folder
  bool existed = false;
  std::string digestBefore;
  std::string digestAfter;
  FileAttributes attributes;  ///< of the record only for a folder that is made
  // Not part of the record:
  Bytes data;

  [[nodiscard]] DiskPlace Side() const { return place.WithEnding(kSideEnding); }
};

struct CommitPlan {
  DiskPlace session;  ///< the session's folder, which is there and holds backup and journal
  DiskPlace config;   ///< the folder that the record lies in
  std::vector<CommitStep> steps;
};

enum class CommitFailure : std::uint8_t { None, NotWritten, Unfinished };

struct CommitOutcome {
  CommitFailure failure = CommitFailure::None;
  std::string error;
  std::vector<std::string> notes;
};

/// Answers NotWritten with nothing changed, or Unfinished with the record in place.
CommitOutcome RunCommit(IDisk& disk, CommitPlan& plan);

/// Does the rest of a commit. What somebody else has changed since is left as it is, with a note.
CommitOutcome FinishCommit(IDisk& disk, CommitPlan& plan);
/// Takes a commit back that was only prepared.
CommitOutcome TakeBackCommit(IDisk& disk, CommitPlan& plan);

std::string FormatRecord(const CommitPlan& plan);
/// Reads the steps of a record whose session and folder are in `plan` already. False and one
/// sentence when it is damaged or names a drive that was not given.
bool ParseRecord(std::string_view text, const DriveTree& drives, const DiskRoot& backups,
                 CommitPlan& plan, std::string& error);

/// "path: reason"
std::string ErrnoSentence(const std::string& path, int error);

}  // namespace scrubwell::offline
