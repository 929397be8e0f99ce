// Changing a switched-off Windows: a clean that writes nothing before it is committed, and putting
// back what it changed.
#pragma once

#include "backends/common/session.h"
#include "backends/offline/offline_backend.h"

namespace scrubwell {

namespace offline {
class IDisk;
}

class CleanSession;

struct CleanOpenResult {
  std::unique_ptr<CleanSession> session;  ///< null on failure
  CleanFailure failure = CleanFailure::None;
  std::string error;
};

/// Other sessions on the same Windows are refused as long as this one lives. Commit makes all
/// changes or none.
class CleanSession final : public ICleanSession {
 public:
  /// Finishes or takes back what an earlier clean left half way (not in a dry run), checks that
  /// this Windows may be changed, and opens it. What is written goes through `disk`; null: the real
  /// one.
  static CleanOpenResult Open(const CleanOptions& options, offline::IDisk* disk = nullptr);

  ~CleanSession() override;
  CleanSession(const CleanSession&) = delete;
  CleanSession& operator=(const CleanSession&) = delete;

  OfflineBackend& Backend() override;
  void BeginRound() override;
  void BeginProblem(const JournalProblem& problem) override;
  void EndProblem(bool fixed) override;
  [[nodiscard]] const std::vector<JournalProblem>& Problems() const override;
  [[nodiscard]] const std::vector<JournalItem>& Items() const override;
  CommitResult Commit() override;

 private:
  friend struct UndoRun;
  friend RecoverResult Recover(const TargetOptions& target, const std::string& backupFolder,
                               offline::IDisk* disk);
  struct Parts;
  explicit CleanSession(std::unique_ptr<Parts> parts);
  std::unique_ptr<Parts> parts_;
};

/// Puts back what a session changed, in one transaction that has a journal of its own. Items whose
/// place is taken are left out, the others are put back.
UndoResult Undo(const UndoOptions& options, offline::IDisk* disk = nullptr);

/// Finishes a clean or undo that was interrupted after its commit, takes back one that was
/// interrupted before.
/// What is done is taken from the session in the backup folder (empty: the default one); a record
/// that none there knows is set aside.
RecoverResult Recover(const TargetOptions& target, const std::string& backupFolder,
                      offline::IDisk* disk = nullptr);

}  // namespace scrubwell
