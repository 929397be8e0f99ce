// SHA-256 (FIPS 180-4), for identifiers that must be the same in every run and on every machine.
#pragma once

#include <string>
#include <string_view>

namespace scrubwell {

/// The digest as 64 lower-case hexadecimal digits.
std::string Sha256Hex(std::string_view bytes);

}  // namespace scrubwell
