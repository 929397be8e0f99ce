// A switched-off Windows on a mounted volume, presented as the running system would show it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "backends/common/target.h"

namespace scrubwell {

class OfflineBackend;
namespace offline {
struct BackendAccess;
}

struct OfflineOpenResult {
  std::unique_ptr<OfflineBackend> backend;  ///< null on failure
  OpenFailure failure = OpenFailure::None;
  std::string error;  ///< one sentence, path and reason, without a final full stop
};

/// Everything is opened for reading only, and every request for a change is answered Denied; see
/// CleanSession for changes.
/// Not safe for use from several threads at once.
class OfflineBackend final : public ITarget {
 public:
  /// Finds the installation and its users and opens the hives. A damaged hive that the scan can do
  /// without makes a note; its keys are then Unknown. After an interrupted clean its finished state
  /// is shown, with a note.
  static OfflineOpenResult Open(const TargetOptions& options);

  ~OfflineBackend() override;
  OfflineBackend(const OfflineBackend&) = delete;
  OfflineBackend& operator=(const OfflineBackend&) = delete;

  TPlatform& Platform() override;
  [[nodiscard]] const TargetFacts& Target() const override;
  [[nodiscard]] const std::vector<UnicodeString>& Notes() const override;

 private:
  friend struct offline::BackendAccess;
  struct Parts;
  struct FinishedState;
  static OfflineOpenResult Open(const TargetOptions& options, const FinishedState* finished);
  explicit OfflineBackend(std::unique_ptr<Parts> parts);
  std::unique_ptr<Parts> parts_;
};

}  // namespace scrubwell
