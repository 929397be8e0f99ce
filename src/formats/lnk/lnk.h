// Targets of shortcuts.
#pragma once

#include <span>

#include "registry/types.h"

namespace scrubwell::lnk {

/// A larger file is no shortcut.
inline constexpr std::size_t kMaxFileSize = std::size_t{1} << 20;

/// Which part of the shortcut the target is from, the best first.
enum class Source : std::uint8_t {
  Environment,  ///< a path with variables, still to be expanded
  LocalPath,
  NetworkPath,
  ItemList,
  RelativePath,  ///< seen from the folder that the shortcut lies in
};

struct Link {
  UnicodeString target;
  Source source = Source::LocalPath;
  UnicodeString relativePath;
  UnicodeString workingDirectory;
  UnicodeString arguments;
};

/// Reads a shortcut. ANSI texts are decoded with the code page; one that the page can't decode is
/// passed over for the next best source. Where the shortcut says that its link information (local
/// and network path) is not to be used, that is left out.
/// Ok: it names a file or folder. Absent: it names none (an advertised program, a virtual folder,
/// a store application, an address). Unknown: it names one, but not where, or not readably.
/// Corrupt: damaged, empty or too large. Safe on any thread.
Status ReadLink(std::span<const std::uint8_t> file, int ansiCodePage, Link& out);

}  // namespace scrubwell::lnk
