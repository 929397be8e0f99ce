// What an earlier scan has found, read back from its JSON report.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

#include "framework/Rc_common.h"

namespace scrubwell::hosts {

enum class PreviousFailure : std::uint8_t {
  None,
  NoReport,  ///< no JSON, cut off, or not the report of a scan
  TooLarge,
};

/// The problems of an earlier report. Its bytes may have been made by anybody: whatever they hold,
/// reading them ends with a result or a failure, and takes no more memory than a few times their
/// size.
class PreviousScan {
 public:
  /// Larger reports, of about a million problems, are not read.
  static constexpr std::size_t MaxBytes = std::size_t{1} << 30U;

  /// Replaces what was read before. On a failure nothing is known.
  PreviousFailure Read(std::string bytes);

  /// Whether the earlier report names the problem: same category, kind and data (by its id), or,
  /// where the earlier report has no id, the same identification. `owner` is the user whose own the
  /// problem is; when either side does not tell one, that fits every user.
  [[nodiscard]] bool Knows(const TSweepError& problem, UnicodeView owner) const;

  /// False when the earlier scan was stopped, or its report showed only a part.
  [[nodiscard]] bool IsComplete() const { return complete_; }
  /// How many problems the report holds.
  [[nodiscard]] std::size_t Count() const { return count_; }

 private:
  friend class PreviousReader;

  std::unordered_set<std::string> known_;
  std::size_t count_ = 0;
  bool complete_ = true;
  bool anyWithoutId_ = false;
};

}  // namespace scrubwell::hosts
