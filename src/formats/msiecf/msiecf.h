// The browser's address files ("index.dat", format 5.2).
#pragma once

#include <span>
#include <string>

#include "registry/types.h"

namespace scrubwell::msiecf {

inline constexpr std::size_t kMaxFileSize = std::size_t{128} << 20;

struct UrlRecord {
  std::uint64_t offset = 0;  ///< of the record in the file
  std::uint64_t size = 0;    ///< a whole number of 128-byte blocks
  /// As stored, in the system's ANSI page: "Visited: user@address" in a history file.
  std::string location;
};

/// The address records in use, in the library's order; freed ones are left out.
/// Unknown: another version of the format. Corrupt: the header or the chain of hash tables is
/// damaged, or the file is too large. A damaged record is left out and the rest is told.
Status ReadUrls(std::span<const std::uint8_t> file, std::vector<UrlRecord>& out);

/// Takes the first record with exactly this location out of the file: its places in the hash
/// tables are marked free (not empty, which would end the search for their neighbours), its blocks
/// are zeroed and given back. All of it is checked before the first byte is changed; with any other
/// outcome than Ok the file is as it was.
/// Absent: no such record. Denied: the record owns a cached file, which would be left without an
/// owner. Corrupt and Unknown as for ReadUrls, Corrupt also when the record's blocks are not its
/// own.
Status EraseRecord(Bytes& file, std::string_view location);

}  // namespace scrubwell::msiecf
