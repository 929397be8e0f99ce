#include "backends/common/content_digest.h"

#include <cstdio>

#include "formats/sha256/sha256.h"

namespace scrubwell {

std::uint64_t Fnv1a(std::span<const std::uint8_t> data, std::uint64_t seed) {
  for (const std::uint8_t byte : data) seed = (seed ^ byte) * 0x100000001B3U;
  return seed;
}

std::string FnvDigest(std::uint64_t sum) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(sum));
  return text;
}

std::string ContentDigest(std::span<const std::uint8_t> data) {
  return Sha256Hex(data);
}

bool HasDigest(std::span<const std::uint8_t> data, std::string_view digest) {
  constexpr std::size_t kFnvDigits = 16;
  return digest == (digest.size() == kFnvDigits ? FnvDigest(Fnv1a(data)) : ContentDigest(data));
}

}  // namespace scrubwell
