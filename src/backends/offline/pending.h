// What an interrupted commit left on the disk. Anybody may have written that disk, so its record is
// a pointer and nothing more: what is done is what our own session says, which lies in the user's
// backup folder, names this Windows and holds the same record.
#pragma once

#include <optional>
#include <set>

#include "backends/offline/commit.h"
#include "backends/offline/offline_files.h"

namespace scrubwell::offline {

struct PendingCommit {
  enum class State : std::uint8_t {
    None,
    Preparing,   ///< nothing has been changed yet; the plan is there to be taken back
    Committed,   ///< to be finished by the plan
    Foreign,     ///< a record that no session of ours has: to be set aside
    Elsewhere,   ///< it is of a session in another folder of the user's, see `error`
    Unreadable,  ///< ours, but it can't be carried out, see `error`
  };
  State state = State::None;
  DiskPlace record;
  CommitPlan plan;
  std::string error;  ///< one sentence
};

/// Where to look. The backups are null where there is no such folder yet.
struct PendingQuestion {
  DiskPlace config;
  const DriveTree* drives = nullptr;
  const DiskRoot* backups = nullptr;
  UnicodeString identity;
};

PendingCommit FindPending(const PendingQuestion& question);

/// What keeps a folder from being trusted with sessions: it belongs to somebody else, or others may
/// write into it. Empty when nothing does.
std::string WhyNotOurs(const DiskPlace& folder);

/// The files as they will be once the commit is finished: the hives whose new content lies beside
/// them, and the changes of the other files, both by the text of their place. False when that can't
/// be told.
bool FinishedView(const PendingCommit& pending, std::set<std::string>& hives, FileChanges& changes);

/// Finishes, takes back or sets aside; a record set aside gets a name beside its own, which a note
/// tells.
CommitOutcome SettlePending(IDisk& disk, PendingCommit& pending);

}  // namespace scrubwell::offline
