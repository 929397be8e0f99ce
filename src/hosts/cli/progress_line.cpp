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
  if (!terminal_) return;
  const auto now = std::chrono::steady_clock::now();
  if (shown_ && !progress.mustDisplay && now - last_ < Interval) return;
  last_ = now;
  shown_ = true;
  UnicodeString label = progress.plugin->Caption;
  label += u"  ";
  label += progress.item;
  // Room for the percentage and a free last column, where terminals begin a new line.
  const std::size_t width = TerminalWidth(Stream::Error, UsualWidth);
  const std::string text = Printable(label);
  std::array<char, 16> percent{};
  std::snprintf(percent.data(), percent.size(), "%3d %%  ", progress.promille / 10);
  RewriteLine(Stream::Error,
              std::string(percent.data()).append(FirstColumns(text, width > 8 ? width - 8 : 0)));
}

}  // namespace scrubwell::hosts
