#include "hosts/driver/problem_id.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <numeric>

#include "formats/sha256/sha256.h"
#include "registry/Stringhelper.h"

namespace scrubwell {

namespace {

constexpr std::size_t UsualDigits = 12;

// Each field with its length in front, so that no two problems run together to the same bytes.
void AppendField(std::string& bytes, std::string_view field) {
  std::array<char, 20> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), field.size()).ptr;
  bytes.append(digits.data(), end).append(1, ':').append(field);
}

std::size_t CommonPrefix(const std::string& a, const std::string& b) {
  return static_cast<std::size_t>(
      std::distance(a.begin(), std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first));
}

}  // namespace

std::string ProblemDigest(const TSweepError& problem) {
  std::string bytes;
  bytes.reserve(512);
  AppendField(bytes, ToUtf8(problem.PluginID));
  AppendField(bytes, std::to_string(problem.ErrorType));
  for (const UnicodeString& item : problem.Data) AppendField(bytes, ToUtf8(item));
  return Sha256Hex(bytes);
}

std::vector<std::string> ShortenDigests(const std::vector<std::string>& digests,
                                        std::size_t digits) {
  std::vector<std::size_t> order(digests.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return digests[a] < digests[b]; });
  std::vector<std::size_t> lengths(digests.size(), digits);
  const auto lengthen = [&](std::size_t index, std::size_t common) {
    while (lengths[index] <= common) lengths[index] += 4;
  };
  // Sorted, a digest shares its longest beginning with a neighbour; equal ones form one block.
  for (std::size_t i = 1; i < order.size(); ++i) {
    const std::string& left = digests[order[i - 1]];
    const std::string& right = digests[order[i]];
    if (left == right) continue;
    const std::size_t common = CommonPrefix(left, right);
    for (std::size_t k = i; k-- > 0 && digests[order[k]] == left;) lengthen(order[k], common);
    for (std::size_t k = i; k < order.size() && digests[order[k]] == right; ++k) {
      lengthen(order[k], common);
    }
  }
  std::vector<std::string> result(digests.size());
  for (std::size_t i = 0; i < digests.size(); ++i) result[i] = digests[i].substr(0, lengths[i]);
  return result;
}

std::vector<std::string> ProblemDigests(const TSweepErrorList& problems) {
  std::vector<std::string> digests;
  digests.reserve(static_cast<std::size_t>(problems.Count()));
  for (std::int32_t i = 0; i < problems.Count(); ++i) digests.push_back(ProblemDigest(problems[i]));
  return digests;
}

std::vector<std::string> ProblemIds(const std::vector<std::string>& digests) {
  return ShortenDigests(digests, UsualDigits);
}

std::vector<std::string> ProblemIds(const TSweepErrorList& problems) {
  return ProblemIds(ProblemDigests(problems));
}

}  // namespace scrubwell
