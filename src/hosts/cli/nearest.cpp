#include "hosts/cli/nearest.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace scrubwell::hosts {

namespace {

// How many letters are to be put in, left out or changed to make one word of the other.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

std::string Folded(std::string_view word) {
  std::string folded(word);
  for (char& c : folded)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return folded;
}

}  // namespace

std::string Nearest(std::string_view word, const std::vector<std::string>& known) {
  const std::string wanted = Folded(word);
  std::string nearest;
  const std::size_t letters = word.size() - std::min(word.find_first_not_of('-'), word.size());
  std::size_t least = (letters + 1) / 2 + 1;
  for (const std::string& candidate : known) {
    const bool begun = word.size() > 1 && Folded(candidate).starts_with(wanted);
    const std::size_t distance = begun ? 1 : Distance(wanted, Folded(candidate));
    if (distance < least) least = distance, nearest = candidate;
  }
  return nearest;
}

}  // namespace scrubwell::hosts
