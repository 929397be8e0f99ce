#include "backends/windows/live_session.h"
#include "hosts/cli/targets.h"

namespace scrubwell::hosts {

bool TargetIsRunningSystem() {
  return true;
}

OpenedTarget OpenTarget(const TargetOptions&) {
  return {std::make_unique<WindowsBackend>(WindowsOptions{}), OpenFailure::None, {}};
}

OpenedSession OpenSession(const CleanOptions& options) {
  LiveOpenResult opened = OpenLiveSession(options);
  return {std::move(opened.session), opened.failure, std::move(opened.error)};
}

UndoResult UndoSession(const UndoOptions& options) {
  return UndoLive(options);
}

RecoverResult RecoverTarget(const TargetOptions&, const std::string& backupFolder) {
  return RecoverLive(backupFolder);
}

}  // namespace scrubwell::hosts
