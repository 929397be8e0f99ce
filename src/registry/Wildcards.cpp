#include "registry/Wildcards.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell {

bool MatchesMask(UnicodeView text, UnicodeView mask) {
  std::size_t t = 0;
  std::size_t m = 0;
  std::size_t star = UnicodeView::npos;  // where to resume after the last star
  std::size_t mark = 0;                  // how far the last star has reached in the text
  while (t < text.size()) {
    if (m < mask.size() && mask[m] == u'*') {
      star = ++m;
      mark = t;
    } else if (m < mask.size() && (mask[m] == u'?' || UpCase(mask[m]) == UpCase(text[t]))) {
      ++m;
      ++t;
    } else if (star != UnicodeView::npos) {
      m = star;
      t = ++mark;
    } else {
      return false;
    }
  }
  return mask.find_first_not_of(u'*', m) == UnicodeView::npos;
}

void TWildcardMatcher::AddSearchMask(UnicodeView mask, int type) {
  masks_.push_back({UnicodeString(mask), type});
}

bool TWildcardMatcher::Match(UnicodeView text) const {
  return std::any_of(masks_.begin(), masks_.end(),
                     [text](const Mask& mask) { return MatchesMask(text, mask.text); });
}

}  // namespace scrubwell
