#include "hosts/report/columns.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <span>

namespace scrubwell::hosts {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Marks of the scripts that names are written in; a mark missed here costs a column, no more.
constexpr Range kNoWidth[] = {
    {0x0300, 0x036F},   {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x05BF, 0x05BF}, {0x05C1, 0x05C2},
    {0x05C4, 0x05C5},   {0x05C7, 0x05C7}, {0x0610, 0x061A}, {0x064B, 0x065F}, {0x0670, 0x0670},
    {0x06D6, 0x06DC},   {0x06DF, 0x06E4}, {0x06E7, 0x06E8}, {0x06EA, 0x06ED}, {0x0900, 0x0902},
    {0x093A, 0x093A},   {0x093C, 0x093C}, {0x0941, 0x0948}, {0x094D, 0x094D}, {0x0E31, 0x0E31},
    {0x0E34, 0x0E3A},   {0x0E47, 0x0E4E}, {0x1160, 0x11FF}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF},
    {0x200B, 0x200F},   {0x202A, 0x202E}, {0x2060, 0x206F}, {0x20D0, 0x20FF}, {0x302A, 0x302D},
    {0x3099, 0x309A},   {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0xE0001, 0xE007F},
    {0xE0100, 0xE01EF},
};

constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},
    {0x25FD, 0x25FE},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x26AA, 0x26AB},
    {0x26BD, 0x26BE},   {0x270A, 0x270B},   {0x2753, 0x2755},   {0x2795, 0x2797},
    {0x2B1B, 0x2B1C},   {0x2E80, 0x303E},   {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},
    {0xA960, 0xA97F},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE10, 0xFE19},
    {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},   {0x16FE0, 0x18DFF},
    {0x1B000, 0x1B2FF}, {0x1F18E, 0x1F19A}, {0x1F200, 0x1F64F}, {0x1F680, 0x1F6FF},
    {0x1F7E0, 0x1F7EB}, {0x1F900, 0x1F9FF}, {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD},
};

bool Holds(std::span<const Range> ranges, char32_t c) {
  const auto after =
      std::upper_bound(ranges.begin(), ranges.end(), c,
                       [](char32_t value, const Range& r) { return value < r.first; });
  return after != ranges.begin() && c <= std::prev(after)->last;
}

struct Character {
  std::size_t bytes;
  std::size_t columns;
};

bool Continues(char byte) {
  return (static_cast<std::uint8_t>(byte) & 0xC0) == 0x80;
}

// The character that the text, which is not empty, begins with.
Character First(std::string_view text) {
  const auto lead = static_cast<std::uint8_t>(text.front());
  if (lead < 0x80) return {1, 1};
  const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || bytes > text.size()) return {1, 1};
  char32_t c = lead & (0xFFU >> (bytes + 1));
  for (std::size_t i = 1; i < bytes; ++i) {
    if (!Continues(text[i])) return {1, 1};
    c = c << 6 | (static_cast<std::uint8_t>(text[i]) & 0x3FU);
  }
  if (c < kNoWidth[0].first) return {bytes, 1};
  return {bytes, Holds(kNoWidth, c) ? std::size_t{0} : Holds(kWide, c) ? 2 : 1};
}

}  // namespace

std::size_t Columns(std::string_view utf8) {
  std::size_t columns = 0;
  while (!utf8.empty()) {
    const Character c = First(utf8);
    columns += c.columns;
    utf8.remove_prefix(c.bytes);
  }
  return columns;
}

std::string_view FirstColumns(std::string_view utf8, std::size_t columns) {
  std::size_t used = 0;
  std::size_t at = 0;
  while (at < utf8.size()) {
    const Character c = First(utf8.substr(at));
    if (used + c.columns > columns) break;
    used += c.columns;
    at += c.bytes;
  }
  return utf8.substr(0, at);
}

}  // namespace scrubwell::hosts
