// Identifiers as programs make them, the same at every run.
#pragma once

#include <random>

#include "registry/types.h"

namespace scrubwell {

class Identifiers {
 public:
  UnicodeString Hex(int digits) {
    UnicodeString text;
    for (int i = 0; i < digits; ++i) text += u"0123456789ABCDEF"[random_() % 16];
    return text;
  }
  UnicodeString Guid() {
    UnicodeString text = u"{";
    for (const int digits : {8, 4, 4, 4, 12}) text.append(Hex(digits)).append(u"-");
    text.back() = u'}';
    return text;
  }
  /// In so many of a hundred cases.
  bool Chance(unsigned percent) { return random_() % 100 < percent; }

 private:
  std::mt19937 random_{42};
};

}  // namespace scrubwell
