// Tells contents of files apart.
#pragma once

#include <span>
#include <string>

#include "registry/types.h"

namespace scrubwell {

/// The SHA-256 of a content, as hexadecimal digits.
std::string ContentDigest(std::span<const std::uint8_t> data);
/// Whether a content has this digest. The first journals had FNV-1a of 64 bits, told by its 16
/// digits, which is no proof against a content that was made to have it.
bool HasDigest(std::span<const std::uint8_t> data, std::string_view digest);

inline constexpr std::uint64_t FnvStart = 0xCBF29CE484222325U;
std::uint64_t Fnv1a(std::span<const std::uint8_t> data, std::uint64_t seed = FnvStart);
/// As a journal of the first format has it.
std::string FnvDigest(std::uint64_t sum);

}  // namespace scrubwell
