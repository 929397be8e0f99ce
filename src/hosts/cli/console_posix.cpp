#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "hosts/cli/console.h"
#include "hosts/cli/write_all.h"

namespace scrubwell::hosts {

bool IsTerminal(Stream stream) {
  return ::isatty(static_cast<int>(stream)) == 1;
}

std::size_t TerminalWidth(Stream stream, std::size_t fallback) {
  winsize size{};
  if (::ioctl(static_cast<int>(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
    return fallback;
  }
  return size.ws_col;
}

bool ShowsColours(Stream stream) {
  const char* term = std::getenv("TERM");
  return IsTerminal(stream) && term != nullptr && *term != '\0' && std::string_view(term) != "dumb";
}

bool RewritesLines(Stream stream) {
  const char* term = std::getenv("TERM");
  return IsTerminal(stream) && (term == nullptr || std::string_view(term) != "dumb");
}

void RewriteLine(Stream stream, std::string_view text) {
  WriteTo(stream, std::string("\r\033[K").append(text));
}

int WriteTo(Stream stream, std::string_view text) {
  return WriteAll(static_cast<int>(stream), text);
}

bool HasOwnConsole() {
  return false;
}

bool ReadsYes() {
  char answer[64] = "";
  return std::fgets(answer, sizeof answer, stdin) != nullptr && MeansYes(answer);
}

}  // namespace scrubwell::hosts
