// The standard streams, as a person or another program has them at the other end. Texts are UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace scrubwell::hosts {

enum class Stream : int { Input = 0, Output = 1, Error = 2 };

/// Whether a person is at the other end.
bool IsTerminal(Stream stream);
/// Columns of the terminal, `fallback` where there is none.
std::size_t TerminalWidth(Stream stream, std::size_t fallback);
/// Whether it is a terminal that knows colours; it is readied for them.
bool ShowsColours(Stream stream);
/// Whether it is a terminal that can take back what it shows.
bool RewritesLines(Stream stream);
/// On such a terminal: the text alone in place of the line that the cursor is in.
void RewriteLine(Stream stream, std::string_view text);

/// 0, or the error number (errno's) of what failed. Nothing is kept back.
int WriteTo(Stream stream, std::string_view text);
/// Waits for a line on the standard input and tells whether it says yes. End of the input, a
/// request to stop and anything else are no.
bool ReadsYes();

/// Whether the program has a console that nobody else uses and that goes when it ends, as when it
/// is started by a double click.
bool HasOwnConsole();

/// What counts as yes, whichever language is spoken.
bool MeansYes(std::string_view answer);

}  // namespace scrubwell::hosts
