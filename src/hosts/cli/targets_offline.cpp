#include "backends/offline/clean_session.h"
#include "hosts/cli/target_advice.h"
#include "hosts/cli/targets.h"

namespace scrubwell::hosts {

bool TargetIsRunningSystem() {
  return false;
}

OpenedTarget OpenTarget(const TargetOptions& options) {
  OfflineOpenResult opened = OfflineBackend::Open(options);
  if (!opened.backend) opened.error = ExplainTarget(options, opened.error);
  return {std::move(opened.backend), opened.failure, std::move(opened.error)};
}

OpenedSession OpenSession(const CleanOptions& options) {
  CleanOpenResult opened = CleanSession::Open(options);
  if (!opened.session && opened.failure <= CleanFailure::Unreadable)
    opened.error = ExplainTarget(options.target, opened.error);
  return {std::move(opened.session), opened.failure, std::move(opened.error)};
}

UndoResult UndoSession(const UndoOptions& options) {
  UndoResult result = Undo(options);
  if (result.failure == CleanFailure::Unreadable)
    result.error = ExplainTarget(options.target, result.error);
  return result;
}

RecoverResult RecoverTarget(const TargetOptions& options, const std::string& backupFolder) {
  RecoverResult result = Recover(options, backupFolder);
  if (result.failure == CleanFailure::Unreadable)
    result.error = ExplainTarget(options, result.error);
  return result;
}

}  // namespace scrubwell::hosts
