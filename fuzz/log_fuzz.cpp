// Transaction logs over a hive that was being written: what a log adds is a hive again.
#include <cstdlib>

#include "formats/regf/hive.h"
#include "formats/regf/hive_samples.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace scrubwell;
  using namespace scrubwell::regf;
  static const Bytes hive = DirtyPrimary();
  Bytes log(bytes, bytes + size);
  for (const bool sign : {false, true}) {
    if (sign) SignLog(log);
    (void)NewestLogSequence(log);
    const Replay replay = ReplayLogs(hive, {log, ByteView(log).subspan(size / 2)});
    if ((replay.entries == 0) != replay.image.empty()) std::abort();
    if (replay.entries != 0 && !ChecksumRight(replay.image)) std::abort();
  }
  return 0;
}
