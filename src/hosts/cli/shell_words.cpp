#include "hosts/cli/shell_words.h"

namespace scrubwell::hosts {

namespace {

constexpr std::string_view kHarmless =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@%+=:,./-";
constexpr std::string_view kHarmlessInCmd =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@+:./-\\";

bool IsPlain(std::string_view word, std::string_view harmless) {
  return !word.empty() && word.find_first_not_of(harmless) == std::string_view::npos;
}

std::string ShellWord(std::string_view word) {
  if (IsPlain(word, kHarmless)) return std::string(word);
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + '\'';
}

// No path holds a quotation mark. Backslashes in front of the closing one would take it for text.
std::string CmdWord(std::string_view word) {
  if (IsPlain(word, kHarmlessInCmd)) return std::string(word);
  const std::size_t last = word.find_last_not_of('\\');
  const std::size_t text = last == std::string_view::npos ? 0 : last + 1;
  return '"' + std::string(word) + std::string(word.size() - text, '\\') + '"';
}

template <class Quote>
std::string Joined(const std::vector<std::string>& words, const Quote& quote) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + quote(word);
  return line;
}

}  // namespace

std::string ShellLine(const std::vector<std::string>& words) {
  return Joined(words, ShellWord);
}

std::string CmdLine(const std::vector<std::string>& words) {
  return Joined(words, CmdWord);
}

}  // namespace scrubwell::hosts
