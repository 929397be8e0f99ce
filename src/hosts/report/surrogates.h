// The two halves of characters beyond 16 bits.
#pragma once

namespace scrubwell::hosts {

constexpr bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace scrubwell::hosts
