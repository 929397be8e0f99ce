// A scan of a switched-off Windows, for one of its users or for all of them.
#pragma once

#include <memory>
#include <optional>

#include "hosts/cli/commands.h"

namespace scrubwell::hosts {

/// Holds what a report needs for as long as it lives: the backend and the package with its lists.
class ScannedTarget {
 public:
  /// Scans for the user of the options and fills in target, outcome and notes of the report.
  /// Nothing, or the exit status when it has failed and said why.
  std::optional<int> Scan(const ScanOptions& options, ScanReport& report);

  /// Scans for every user, one after the other. Afterwards SweepErrors holds all findings: those of
  /// the machine once, those of a user with their owner in the report.
  std::optional<int> ScanAllUsers(const ScanOptions& options, ScanReport& report);

 private:
  std::unique_ptr<ITarget> backend_;
  std::unique_ptr<LoadedPackage> package_;  // stands on the backend's platform
};

}  // namespace scrubwell::hosts
