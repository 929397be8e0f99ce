// A Windows that is looked at, whatever is behind it.
#pragma once

#include "backends/common/target_facts.h"
#include "registry/platform.h"

namespace scrubwell {

/// A folder that stands for a drive letter of a switched-off system.
struct DriveOption {
  char16_t letter = 0;
  std::string folder;
  DriveKind kind = DriveKind::Fixed;
};

/// Which Windows, and for which of its users. Texts are UTF-8.
struct TargetOptions {
  /// The folder that the Windows volume is mounted on: the one that holds the Windows folder.
  /// Empty: the running system, where there is one.
  std::string folder;
  /// Folder name, account name or SID of the user to scan for. Empty: the only user, else the one
  /// most recently used. The running system is scanned for the user that the program runs as.
  std::string user;
  /// Further drives. The installation's own letter needs none.
  std::vector<DriveOption> drives;
  /// Where the sessions of cleans are kept: after an interrupted one it takes its session to tell
  /// what the disk was to become. Empty: DefaultBackupFolder().
  std::string backupFolder = {};
};

enum class OpenFailure : std::uint8_t {
  None,
  WrongUse,    ///< an option names something that is not there (user, drive folder)
  Unreadable,  ///< the target is no Windows volume, or a hive that is needed can't be read
};

/// An opened target. Not safe for use from several threads at once.
class ITarget {
 public:
  virtual ~ITarget() = default;
  /// Good for as long as the target lives.
  virtual TPlatform& Platform() = 0;
  [[nodiscard]] virtual const TargetFacts& Target() const = 0;
  /// What could not be told, from opening on, in the order it came up and each once.
  [[nodiscard]] virtual const std::vector<UnicodeString>& Notes() const = 0;
};

}  // namespace scrubwell
