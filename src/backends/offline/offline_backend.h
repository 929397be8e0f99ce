// A switched-off Windows on a mounted volume, presented as the running system would show it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "backends/common/target_facts.h"
#include "registry/platform.h"

namespace scrubwell {

/// A folder that stands for a drive letter of the switched-off system.
struct DriveOption {
  char16_t letter = 0;
  std::string folder;
  DriveKind kind = DriveKind::Fixed;
};

struct OfflineOptions {
  /// The folder that the Windows volume is mounted on: the one that holds the Windows folder.
  std::string folder;
  /// Folder name, account name or SID of the user to scan for, in UTF-8. Empty: the only user, else
  /// the one most recently used.
  std::string user;
  /// Further drives. The installation's own letter needs none.
  std::vector<DriveOption> drives;
};

class OfflineBackend;
namespace offline {
struct BackendAccess;
}

enum class OpenFailure : std::uint8_t {
  None,
  WrongUse,    ///< an option names something that is not there (user, drive folder)
  Unreadable,  ///< the target is no Windows volume, or a hive that is needed can't be read
};

struct OfflineOpenResult {
  std::unique_ptr<OfflineBackend> backend;  ///< null on failure
  OpenFailure failure = OpenFailure::None;
  std::string error;  ///< one sentence, path and reason, without a final full stop
};

/// Everything is opened for reading only, and every request for a change is answered Denied; see
/// CleanSession for changes.
/// Not safe for use from several threads at once.
class OfflineBackend {
 public:
  /// Finds the installation and its users and opens the hives. A damaged hive that the scan can do
  /// without makes a note; its keys are then Unknown. After an interrupted clean its finished state
  /// is shown, with a note.
  static OfflineOpenResult Open(const OfflineOptions& options);

  ~OfflineBackend();
  OfflineBackend(const OfflineBackend&) = delete;
  OfflineBackend& operator=(const OfflineBackend&) = delete;

  /// Good for as long as the backend lives.
  TPlatform& Platform();
  [[nodiscard]] const TargetFacts& Target() const;
  /// What could not be told, from opening on, in the order it came up and each once.
  [[nodiscard]] const std::vector<UnicodeString>& Notes() const;

 private:
  friend struct offline::BackendAccess;
  struct Parts;
  struct FinishedState;
  static OfflineOpenResult Open(const OfflineOptions& options, const FinishedState* finished);
  explicit OfflineBackend(std::unique_ptr<Parts> parts);
  std::unique_ptr<Parts> parts_;
};

}  // namespace scrubwell
