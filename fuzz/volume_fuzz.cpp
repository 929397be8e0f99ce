// What Windows noted of a partition, compared with the mounts of this machine.
#include <cstdlib>

#include "backends/offline/mounted_devices.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  // Nothing is mounted in a folder that is not there, whatever was noted.
  if (!scrubwell::offline::MountFolderOf({bytes, bytes + size}, "/nonexistent").empty())
    std::abort();
  return 0;
}
