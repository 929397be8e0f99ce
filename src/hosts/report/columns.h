// How much room a text takes on a terminal.
#pragma once

#include <string_view>

namespace scrubwell::hosts {

/// The columns that a text takes: combining marks none, characters of East Asian scripts and
/// pictures two, all others one. Broken UTF-8 counts one column a byte. Nothing is copied.
std::size_t Columns(std::string_view utf8);

/// The longest beginning of whole characters that fits `columns`; marks stay with their character.
std::string_view FirstColumns(std::string_view utf8, std::size_t columns);

}  // namespace scrubwell::hosts
