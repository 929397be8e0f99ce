// How the values of usage histories hold their targets. Used by Zmtracecleaner alone.
#pragma once

#include <span>

#include "registry/Zmtracecleaner.h"

namespace scrubwell::traces {

struct Target {
  UnicodeString name;
  bool inStartMenu = false;  ///< the name is seen from the Start menu's folders
};

/// True when a value of this form holds several targets.
bool HoldsParts(TraceForm form);

/// Appends what the value names. Nothing for a value that is damaged or of another type.
void ReadTargets(const TTraceSource& source, UnicodeView key, const RegValue& value,
                 std::vector<Target>& out);

/// Takes targets, sorted, out of a value that holds several. False when none of them is in it, or
/// when the value can't be understood as a whole; the data is then untouched.
bool RemoveParts(const TTraceSource& source, UnicodeView key, std::span<const UnicodeString> gone,
                 Bytes& data);

/// Little-endian number; 0 outside of the bytes.
std::uint32_t U32(std::span<const std::uint8_t> data, std::size_t at);

}  // namespace scrubwell::traces
