#include "hosts/cli/progress_line.h"

#include <array>
#include <cstdio>

#include "hosts/cli/console.h"
#include "hosts/report/columns.h"
#include "hosts/report/report.h"

namespace scrubwell::hosts {

namespace {

constexpr auto Interval = std::chrono::milliseconds(80);
constexpr std::size_t UsualWidth = 80;

}  // namespace

ProgressLine::ProgressLine() : terminal_(RewritesLines(Stream::Error)) {}

ProgressLine::~ProgressLine() {
  if (shown_) RewriteLine(Stream::Error, {});
}

void ProgressLine::Show(const RunProgress& progress) {
  if (!IsDue(progress.mustDisplay)) return;
  UnicodeString label = progress.plugin->Caption;
  label += u"  ";
  label += progress.item;
  Write(progress.promille / 10, Printable(label));
}

void ProgressLine::Show(std::string_view what, std::size_t done, std::size_t all) {
  if (all != 0 && IsDue(false)) Write(static_cast<int>(done * 100 / all), what);
}

bool ProgressLine::IsDue(bool must) {
  if (!terminal_) return false;
  const auto now = std::chrono::steady_clock::now();
  if (shown_ && !must && now - last_ < Interval) return false;
  last_ = now;
  shown_ = true;
  return true;
}

void ProgressLine::Write(int percent, std::string_view text) {
  // Room for the percentage and a free last column, where terminals begin a new line.
  const std::size_t width = TerminalWidth(Stream::Error, UsualWidth);
  std::array<char, 16> share{};
  std::snprintf(share.data(), share.size(), "%3d %%  ", percent);
  RewriteLine(
      Stream::Error,
      std::string(share.data()).append(FirstColumns(std::string(text), width > 8 ? width - 8 : 0)));
}

}  // namespace scrubwell::hosts
