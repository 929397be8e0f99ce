// SHA-256 (FIPS 180-4): for identifiers that must be the same in every run and on every machine,
// and for contents that nobody may have changed meanwhile.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace scrubwell {

using Sha256Digest = std::array<std::uint8_t, 32>;

/// A digest of what comes piece by piece.
class Sha256 {
 public:
  Sha256& Add(std::span<const std::uint8_t> bytes);
  Sha256& Add(std::string_view text);
  /// May be called once.
  Sha256Digest Finish();

 private:
  static constexpr std::size_t BlockSize = 64;

  // Fractional parts of the square roots of the first 8 primes.
  std::array<std::uint32_t, 8> state_ = {
      0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
      0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19,
  };
  std::array<std::uint8_t, BlockSize> block_{};
  std::uint64_t size_ = 0;
};

/// 64 lower-case hexadecimal digits.
std::string ToHex(const Sha256Digest& digest);
std::string Sha256Hex(std::string_view bytes);
std::string Sha256Hex(std::span<const std::uint8_t> bytes);

}  // namespace scrubwell
