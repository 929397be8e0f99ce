// The Windows that a command works on. What is behind it is settled when the program is built: a
// switched-off one on a mounted volume, or the running system.
#pragma once

#include "backends/common/session.h"

namespace scrubwell::hosts {

struct OpenedTarget {
  std::unique_ptr<ITarget> target;  ///< null on failure
  OpenFailure failure = OpenFailure::None;
  std::string error;  ///< one sentence without a final full stop
};

struct OpenedSession {
  std::unique_ptr<ICleanSession> session;  ///< null on failure
  CleanFailure failure = CleanFailure::None;
  std::string error;  ///< one sentence without a final full stop
};

/// Whether commands work on the system that the program runs on, and need no target to be named.
bool TargetIsRunningSystem();
/// For reading only.
OpenedTarget OpenTarget(const TargetOptions& options);
/// For changes. What an earlier clean left half way is settled first.
OpenedSession OpenSession(const CleanOptions& options);
/// Puts back what a session changed.
UndoResult UndoSession(const UndoOptions& options);
/// Settles what an earlier clean or undo left half way. Of the running system that is known by its
/// sessions in the backup folder (empty: the default one); a switched-off one bears a mark itself.
RecoverResult RecoverTarget(const TargetOptions& options, const std::string& backupFolder);

}  // namespace scrubwell::hosts
