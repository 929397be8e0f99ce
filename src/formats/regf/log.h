// The transaction logs beside a hive: what was not yet written to it when the system stopped.
#pragma once

#include <vector>

#include "formats/regf/cells.h"

namespace scrubwell::regf {

/// 64-bit Marvin32 with the seed that hive logs use.
std::uint64_t LogHash(ByteView bytes);

struct Replay {
  Bytes image;  ///< the hive with the logs applied, clean and with a right checksum
  std::uint32_t entries = 0;
};

/// Applies the logs to a copy of a dirty hive: new logs by sequence number whatever their order,
/// up to the first gap, wrong hash or impossible entry; an old log as a whole or not at all. With
/// nothing to apply, `entries` is 0 and there is no image. `hive` is the whole file.
Replay ReplayLogs(ByteView hive, const std::vector<ByteView>& logs);

/// The highest sequence number of a log's base block and its readable entries.
std::uint32_t NewestLogSequence(ByteView log);

/// Whether the base block's checksum is the one its bytes ask for.
bool ChecksumRight(ByteView baseBlock);

}  // namespace scrubwell::regf
