// The system's header, and its texts as this program has them.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

// Both are UTF-16 units of two bytes; the compiler alone holds them apart.
static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline std::string Utf8OfWide(std::wstring_view text) {
  return ToUtf8({reinterpret_cast<const char16_t*>(text.data()), text.size()});
}
inline std::wstring WideOf(std::string_view text) {
  const UnicodeString wide = FromUtf8(text);
  return {wide.begin(), wide.end()};
}

}  // namespace scrubwell::hosts
