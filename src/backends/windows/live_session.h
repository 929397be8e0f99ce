// Changing the running Windows: a clean that changes nothing before it is committed, and putting
// back what it changed.
#pragma once

#include "backends/common/session.h"
#include "backends/windows/windows_backend.h"

namespace scrubwell {

struct LiveOpenResult {
  std::unique_ptr<ICleanSession> session;  ///< null on failure
  CleanFailure failure = CleanFailure::None;
  std::string error;  ///< one sentence without a final full stop
};

/// Opens the running system to be cleaned. Other sessions are refused as long as this one lives,
/// which must end on the thread that it began on; a dry run stands in nobody's way.
///
/// Commit makes one change after the other. Each is first looked at again, and left out with a note
/// when its place is no longer what the plan has seen; then the journal gets all that undoing it
/// needs; then it is made. What was made stays, whatever becomes of the rest.
LiveOpenResult OpenLiveSession(const CleanOptions& options);
/// With COM objects of one's own in place of the system's.
LiveOpenResult OpenLiveSession(const CleanOptions& options, windows::ComFactories factories);

/// Puts back what a session changed, the newest change first, with a journal of its own. Items
/// whose place is taken are left out, the others are put back.
UndoResult UndoLive(const UndoOptions& options);
UndoResult UndoLive(const UndoOptions& options, windows::ComFactories factories);

/// Closes the journals in a backup folder (empty: the default one) that an interrupted clean or
/// undo has left open; nothing in the system changes.
RecoverResult RecoverLive(const std::string& backupFolder);

}  // namespace scrubwell
