// What makes it unsafe to change a switched-off Windows. There is no way around any of it.
#pragma once

#include "backends/offline/disk.h"
#include "backends/offline/installation.h"

namespace scrubwell::offline {

/// Each answers one sentence, empty when there is nothing against it.
std::string WhyNotHibernated(OfflineFiles& files, UnicodeView systemDrive);
std::string WhyHiveUnfit(const RegfHive& hive);
/// The folder lies on something that can't be written, or on a volume that is marked dirty.
std::string WhyFolderUnfit(const DiskPlace& folder);
/// `needed` bytes plus some slack don't fit.
std::string WhyTooFull(IDisk& disk, const DiskPlace& folder, std::uint64_t needed);
/// Locks the folder against other processes, until the descriptor is closed or the process ends.
/// Nothing is written for it.
std::string LockFolder(const DiskPlace& folder, UniqueFd& lock);

}  // namespace scrubwell::offline
