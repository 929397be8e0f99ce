#include "formats/sha256/sha256.h"

#include <algorithm>
#include <bit>

#if defined(__x86_64__) && defined(__GNUC__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace scrubwell {

namespace {

using State = std::array<std::uint32_t, 8>;
constexpr std::size_t kBlock = 64;

// Fractional parts of the cube roots of the first 64 primes.
alignas(16) constexpr std::array<std::uint32_t, 64> kRounds = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2,
};

std::array<std::uint32_t, 64> Schedule(const std::uint8_t* block) {
  std::array<std::uint32_t, 64> w{};
  for (std::size_t i = 0; i < kBlock; ++i) w[i / 4] = w[i / 4] << 8 | block[i];
  for (std::size_t i = 16; i < w.size(); ++i) {
    const std::uint32_t a = w[i - 15];
    const std::uint32_t b = w[i - 2];
    w[i] = w[i - 16] + w[i - 7] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) +
           (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
  }
  return w;
}

void CompressOne(State& state, const std::uint8_t* block) {
  const auto w = Schedule(block);
  auto [a, b, c, d, e, f, g, h] = state;
  for (std::size_t i = 0; i < w.size(); ++i) {
    const std::uint32_t sum1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const std::uint32_t t1 = h + sum1 + ((e & f) ^ (~e & g)) + kRounds[i] + w[i];
    const std::uint32_t sum0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    const std::uint32_t t2 = sum0 + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + t1;
    d = c;
    c = b;
    b = a;
    a = t1 + t2;
  }
  const State worked = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state.size(); ++i) state[i] += worked[i];
}

#if defined(__x86_64__) && defined(__GNUC__)

bool HasShaInstructions() {
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_SSE4_1) == 0 || (c & bit_SSSE3) == 0)
    return false;
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bit_SHA) != 0;
}

// Four rounds an instruction pair. The processor wants the state as ABEF and CDGH; the message is
// kept as the last 16 words, four in a register.
__attribute__((target("sha,sse4.1,ssse3"))) void CompressFast(State& state,
                                                              const std::uint8_t* data,
                                                              std::size_t blocks) {
  const __m128i swap = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
  auto* const words = reinterpret_cast<__m128i*>(state.data());
  __m128i cdab = _mm_shuffle_epi32(_mm_loadu_si128(words), 0xB1);
  __m128i efgh = _mm_shuffle_epi32(_mm_loadu_si128(words + 1), 0x1B);
  __m128i abef = _mm_alignr_epi8(cdab, efgh, 8);
  __m128i cdgh = _mm_blend_epi16(efgh, cdab, 0xF0);
  for (; blocks > 0; --blocks, data += kBlock) {
    const __m128i abefBefore = abef;
    const __m128i cdghBefore = cdgh;
    __m128i w[4];
    for (std::size_t four = 0; four < 16; ++four) {
      __m128i& now = w[four % 4];
      if (four < 4) {
        const auto* const place = reinterpret_cast<const __m128i*>(data) + four;
        now = _mm_shuffle_epi8(_mm_loadu_si128(place), swap);
      } else {
        const __m128i last = w[(four + 3) % 4];
        const __m128i middle = _mm_alignr_epi8(last, w[(four + 2) % 4], 4);
        now = _mm_add_epi32(_mm_sha256msg1_epu32(now, w[(four + 1) % 4]), middle);
        now = _mm_sha256msg2_epu32(now, last);
      }
      const auto* const rounds = reinterpret_cast<const __m128i*>(kRounds.data()) + four;
      const __m128i sum = _mm_add_epi32(now, _mm_load_si128(rounds));
      cdgh = _mm_sha256rnds2_epu32(cdgh, abef, sum);
      abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(sum, 0x0E));
    }
    abef = _mm_add_epi32(abef, abefBefore);
    cdgh = _mm_add_epi32(cdgh, cdghBefore);
  }
  const __m128i feba = _mm_shuffle_epi32(abef, 0x1B);
  const __m128i dchg = _mm_shuffle_epi32(cdgh, 0xB1);
  _mm_storeu_si128(words, _mm_blend_epi16(feba, dchg, 0xF0));
  _mm_storeu_si128(words + 1, _mm_alignr_epi8(dchg, feba, 8));
}

void Compress(State& state, const std::uint8_t* data, std::size_t blocks) {
  static const bool fast = HasShaInstructions();
  if (fast) return CompressFast(state, data, blocks);
  for (; blocks > 0; --blocks, data += kBlock) CompressOne(state, data);
}

#else

void Compress(State& state, const std::uint8_t* data, std::size_t blocks) {
  for (; blocks > 0; --blocks, data += kBlock) CompressOne(state, data);
}

#endif

}  // namespace

Sha256& Sha256::Add(std::span<const std::uint8_t> bytes) {
  const std::size_t used = size_ % BlockSize;
  size_ += bytes.size();
  if (used != 0) {
    const auto part = bytes.first(std::min(bytes.size(), BlockSize - used));
    std::copy(part.begin(), part.end(), block_.begin() + static_cast<std::ptrdiff_t>(used));
    bytes = bytes.subspan(part.size());
    if (used + part.size() < BlockSize) return *this;
    Compress(state_, block_.data(), 1);
  }
  const std::size_t whole = bytes.size() / BlockSize;
  Compress(state_, bytes.data(), whole);
  bytes = bytes.subspan(whole * BlockSize);
  std::copy(bytes.begin(), bytes.end(), block_.begin());
  return *this;
}

Sha256& Sha256::Add(std::string_view text) {
  return Add({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

Sha256Digest Sha256::Finish() {
  // A one bit, zeros, the length in bits as 64-bit big-endian number.
  const std::uint64_t bits = size_ * 8;
  static constexpr std::array<std::uint8_t, BlockSize + 1> kPadding = {0x80};
  const std::size_t used = size_ % BlockSize;
  const std::size_t zeros = (used < BlockSize - 8 ? BlockSize : 2 * BlockSize) - 8 - used;
  Add(std::span(kPadding).first(std::min(zeros, kPadding.size())));
  if (zeros > kPadding.size()) Add(std::span(kPadding).subspan(1, zeros - kPadding.size()));
  std::array<std::uint8_t, 8> length{};
  for (std::size_t i = 0; i < 8; ++i) length[i] = static_cast<std::uint8_t>(bits >> (56 - 8 * i));
  Add(length);
  Sha256Digest digest{};
  for (std::size_t i = 0; i < digest.size(); ++i) {
    digest[i] = static_cast<std::uint8_t>(state_[i / 4] >> (24 - 8 * (i % 4)));
  }
  return digest;
}

std::string ToHex(const Sha256Digest& digest) {
  std::string hex;
  for (const std::uint8_t byte : digest) {
    hex += "0123456789abcdef"[byte >> 4U];
    hex += "0123456789abcdef"[byte & 15U];
  }
  return hex;
}

std::string Sha256Hex(std::string_view bytes) {
  return ToHex(Sha256().Add(bytes).Finish());
}

std::string Sha256Hex(std::span<const std::uint8_t> bytes) {
  return ToHex(Sha256().Add(bytes).Finish());
}

}  // namespace scrubwell
