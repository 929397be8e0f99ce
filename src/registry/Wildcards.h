// Wildcard masks.
#pragma once

#include "registry/types.h"

namespace scrubwell {

/// Whether the whole text matches the mask: "*" stands for any run of units, also an empty one,
/// "?" for exactly one; letter case is ignored. Linear in the text for each star.
bool MatchesMask(UnicodeView text, UnicodeView mask);

class TWildcardMatcher {
 public:
  /// `type` is kept for the caller's own use; matching treats all masks alike.
  void AddSearchMask(UnicodeView mask, int type = 0);
  /// True when the text matches any added mask.
  [[nodiscard]] bool Match(UnicodeView text) const;

 private:
  struct Mask {
    UnicodeString text;
    int type;
  };
  std::vector<Mask> masks_;
};

}  // namespace scrubwell
