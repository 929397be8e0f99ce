#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cerrno>

#include "hosts/cli/console.h"
#include "hosts/cli/stop_signals.h"
#include "hosts/cli/windows_text.h"
#include "hosts/cli/write_all.h"

namespace scrubwell::hosts {

namespace {

HANDLE HandleOf(Stream stream) {
  switch (stream) {
    case Stream::Input:
      return GetStdHandle(STD_INPUT_HANDLE);
    case Stream::Output:
      return GetStdHandle(STD_OUTPUT_HANDLE);
    case Stream::Error:
      break;
  }
  return GetStdHandle(STD_ERROR_HANDLE);
}

// Control sequences for as long as this lives; the console outlives the program.
class ControlSequences {
 public:
  explicit ControlSequences(HANDLE console) : console_(console) {
    understood_ = GetConsoleMode(console, &before_) != FALSE &&
                  SetConsoleMode(console, before_ | ENABLE_PROCESSED_OUTPUT |
                                              ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
  }
  ~ControlSequences() {
    if (understood_) SetConsoleMode(console_, before_);
  }
  ControlSequences(const ControlSequences&) = delete;
  ControlSequences& operator=(const ControlSequences&) = delete;

  [[nodiscard]] bool Understood() const { return understood_; }

 private:
  HANDLE console_;
  DWORD before_ = 0;
  bool understood_ = false;
};

// Consoles refuse what is too long for them.
int WriteToConsole(HANDLE console, std::wstring_view text) {
  constexpr std::size_t step = 8000;
  while (!text.empty()) {
    std::size_t count = std::min(text.size(), step);
    // Both halves of a letter go together.
    if (count < text.size() && IS_HIGH_SURROGATE(text[count - 1])) --count;
    DWORD written = 0;
    const BOOL done =
        WriteConsoleW(console, text.data(), static_cast<DWORD>(count), &written, nullptr);
    if (done == FALSE || written == 0) return EIO;
    text.remove_prefix(std::min<std::size_t>(written, text.size()));
  }
  return 0;
}

}  // namespace

bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  return GetConsoleMode(HandleOf(stream), &mode) != FALSE;
}

std::size_t TerminalWidth(Stream stream, std::size_t fallback) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (GetConsoleScreenBufferInfo(HandleOf(stream), &info) == FALSE) return fallback;
  const int width = info.srWindow.Right - info.srWindow.Left + 1;
  return width > 0 ? static_cast<std::size_t>(width) : fallback;
}

bool ShowsColours(Stream stream) {
  if (!IsTerminal(stream)) return false;
  static const ControlSequences sequences(HandleOf(stream));
  return sequences.Understood();
}

bool RewritesLines(Stream stream) {
  return IsTerminal(stream);
}

// Without control sequences, which older consoles would print.
void RewriteLine(Stream stream, std::string_view text) {
  const HANDLE console = HandleOf(stream);
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (GetConsoleScreenBufferInfo(console, &info) == FALSE) return;
  const COORD begin{0, info.dwCursorPosition.Y};
  DWORD written = 0;
  FillConsoleOutputCharacterW(console, L' ', static_cast<DWORD>(info.dwSize.X), begin, &written);
  SetConsoleCursorPosition(console, begin);
  WriteTo(stream, text);
}

int WriteTo(Stream stream, std::string_view text) {
  if (IsTerminal(stream)) return WriteToConsole(HandleOf(stream), WideOf(text));
  const int fd = static_cast<int>(stream);
  // Lines end alike on every system, in files and pipes.
  ::_setmode(fd, _O_BINARY);
  return WriteAll(fd, text);
}

bool HasOwnConsole() {
  DWORD processes[2];
  return IsTerminal(Stream::Input) && IsTerminal(Stream::Output) &&
         GetConsoleProcessList(processes, 2) == 1;
}

bool ReadsYes() {
  wchar_t answer[64];
  DWORD length = 0;
  SetLastError(ERROR_SUCCESS);
  const BOOL read =
      ReadConsoleW(HandleOf(Stream::Input), answer, std::size(answer), &length, nullptr);
  if (read != FALSE && length > 0) return MeansYes(Utf8OfWide({answer, length}));
  // A request to stop ends the wait here, and is brought by another thread.
  constexpr int tries = 100;
  const bool stopped = GetLastError() == ERROR_OPERATION_ABORTED;
  for (int i = 0; stopped && !StopRequested() && i < tries; ++i) Sleep(10);
  return false;
}

}  // namespace scrubwell::hosts
