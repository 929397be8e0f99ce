#include "hosts/cli/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "hosts/report/columns.h"
#include "hosts/report/report.h"

namespace scrubwell::hosts {

namespace {

constexpr auto Interval = std::chrono::milliseconds(80);
constexpr std::size_t UsualWidth = 80;

}  // namespace

std::size_t TerminalWidth(int fd, std::size_t fallback) {
  winsize size{};
  if (::ioctl(fd, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return fallback;
  return size.ws_col;
}

// The line needs a terminal that can take back what it shows.
ProgressLine::ProgressLine() {
  const char* term = std::getenv("TERM");
  terminal_ = ::isatty(STDERR_FILENO) == 1 && (term == nullptr || std::string_view(term) != "dumb");
}

ProgressLine::~ProgressLine() {
  if (shown_) std::fputs("\r\033[K", stderr);
}

void ProgressLine::Show(const RunProgress& progress) {
  if (!terminal_) return;
  const auto now = std::chrono::steady_clock::now();
  if (shown_ && !progress.mustDisplay && now - last_ < Interval) return;
  last_ = now;
  shown_ = true;
  UnicodeString label = progress.plugin->Caption;
  label += u"  ";
  label += progress.item;
  // Room for the percentage and a free last column, where terminals begin a new line.
  const std::size_t width = TerminalWidth(STDERR_FILENO, UsualWidth);
  const std::string text = Printable(label);
  const std::string_view shown = FirstColumns(text, width > 8 ? width - 8 : 0);
  std::fprintf(stderr, "\r\033[K%3d %%  %.*s", progress.promille / 10,
               static_cast<int>(shown.size()), shown.data());
}

}  // namespace scrubwell::hosts
