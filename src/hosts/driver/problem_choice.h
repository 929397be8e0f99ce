// Which of the problems found a user cares about.
#pragma once

#include <vector>

#include "framework/Rc_common.h"

namespace scrubwell {

/// Some kinds of one category.
struct KindChoice {
  UnicodeString plugin;
  std::vector<std::int32_t> kinds;
};

/// Empty: all problems.
struct ProblemChoice {
  /// A category that is named here is limited to these kinds; others are not.
  std::vector<KindChoice> kinds;
  /// A part of the caption, the short description or a data item, letter case ignored.
  UnicodeString text;

  [[nodiscard]] bool Takes(const TSweepError& problem) const;
};

/// Whether the text holds the part; both upper-cased unit by unit. True for an empty part.
bool ContainsText(UnicodeView text, UnicodeView part);

}  // namespace scrubwell
