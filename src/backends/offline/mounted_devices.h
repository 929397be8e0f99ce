// Which folder of this machine shows the partition that a Windows calls by a drive letter.
#pragma once

#include <string>

#include "registry/types.h"

namespace scrubwell::offline {

/// The folder on which this machine has mounted the partition with this identity: the data of a
/// value of MountedDevices, a disk signature with an offset (12 bytes) or a partition's GUID (24).
/// Empty when it is not mounted, not as a whole, or can't be told. `machine` is put in front of
/// the system's own paths, for tests.
std::string MountFolderOf(const Bytes& identity, const std::string& machine = {});

}  // namespace scrubwell::offline
