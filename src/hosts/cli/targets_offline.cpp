#include "backends/offline/clean_session.h"
#include "hosts/cli/targets.h"

namespace scrubwell::hosts {

bool TargetIsRunningSystem() {
  return false;
}

OpenedTarget OpenTarget(const TargetOptions& options) {
  OfflineOpenResult opened = OfflineBackend::Open(options);
  return {std::move(opened.backend), opened.failure, std::move(opened.error)};
}

OpenedSession OpenSession(const CleanOptions& options) {
  CleanOpenResult opened = CleanSession::Open(options);
  return {std::move(opened.session), opened.failure, std::move(opened.error)};
}

UndoResult UndoSession(const UndoOptions& options) {
  return Undo(options);
}

RecoverResult RecoverTarget(const TargetOptions& options, const std::string& backupFolder) {
  return Recover(options, backupFolder);
}

}  // namespace scrubwell::hosts
