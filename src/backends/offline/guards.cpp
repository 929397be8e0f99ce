#include "backends/offline/guards.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr std::uint32_t kNewestVersion = 5;
constexpr std::size_t kPage = 4096;
constexpr std::uint64_t kSlack = std::uint64_t{1} << 20U;

bool BeginsWith(const Bytes& page, std::string_view text) {
  return std::equal(text.begin(), text.end(), page.begin(),
                    [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

// The kernel's NTFS driver tells in its own file of the volume; the user space driver refuses to
// mount such a volume for writing by itself.
bool IsMarkedDirty(int folder) {
  struct stat info {};
  if (::fstat(folder, &info) != 0) return false;
  std::error_code ignored;
  const std::string device = "/sys/dev/block/" + std::to_string(major(info.st_dev)) + ":" +
                             std::to_string(minor(info.st_dev));
  const std::string name = std::filesystem::canonical(device, ignored).filename().string();
  if (ignored || name.empty()) return false;
  std::ifstream volume("/proc/fs/ntfs3/" + name + "/volinfo");
  for (std::string line; std::getline(volume, line);) {
    if (line == "dirty") return true;
  }
  return false;
}

}  // namespace

std::string WhyNotHibernated(OfflineFiles& files, UnicodeView systemDrive) {
  const UnicodeString path = UnicodeString(systemDrive) + u"\\hiberfil.sys";
  Bytes page;
  const Status status = files.ReadHead(path, kPage, page);
  if (status == Status::Absent) return {};
  const std::string name = ToUtf8(path);
  if (status != Status::Ok || page.empty()) {
    return name + ": can't be read, so it can't be told whether this Windows is hibernated";
  }
  if (page.size() < kPage) {
    return name +
           ": this Windows is hibernated together with another volume; start it and shut "
           "it down fully first";
  }
  const bool isSpent = BeginsWith(page, "wake") || BeginsWith(page, "WAKE") ||
                       std::all_of(page.begin(), page.end(), [](auto byte) { return byte == 0; });
  if (isSpent) return {};
  return name +
         ": this Windows is hibernated or was shut down for a fast start; start it and "
         "shut it down fully first";
}

std::string WhyHiveUnfit(const RegfHive& hive) {
  const regf::HiveFacts& facts = hive.Original().Facts();
  const std::string name = ToUtf8(hive.Path());
  if (facts.stale) {
    return name + ": was not closed properly and has no usable log; start this Windows once first";
  }
  if (facts.minorVersion > kNewestVersion) {
    return name + ": has a newer format (1." + std::to_string(facts.minorVersion) +
           ") than can be written";
  }
  if (facts.transactionPending) {
    return name + ": an update of the registry is under way; start this Windows once first";
  }
  return {};
}

std::string WhyFolderUnfit(const DiskPlace& folder) {
  const std::string name = folder.Text();
  const UniqueFd fd = folder.Open(O_PATH | O_DIRECTORY);
  struct statvfs info {};
  if (!fd.Good() || ::fstatvfs(fd.Get(), &info) != 0) return name + ": " + std::strerror(errno);
  if ((info.f_flag & ST_RDONLY) != 0) return name + ": the volume is mounted read-only";
  if (::faccessat(fd.Get(), ".", W_OK, AT_EACCESS) != 0) {
    return name + ": the folder can't be written to";
  }
  if (IsMarkedDirty(fd.Get())) {
    return name + ": the volume is marked as damaged; let Windows check it first";
  }
  return {};
}

std::string WhyTooFull(IDisk& disk, const DiskPlace& folder, std::uint64_t needed) {
  std::uint64_t there = 0;
  const int error = disk.FreeSpace(folder, there);
  if (error != 0) return folder.Text() + ": " + std::strerror(error);
  if (there >= needed + kSlack) return {};
  return folder.Text() + ": there is not enough room, " + std::to_string((needed + kSlack) >> 10U) +
         " KiB are needed";
}

std::string LockFolder(const DiskPlace& folder, UniqueFd& lock) {
  const std::string name = folder.Text();
  lock = folder.Open(O_RDONLY | O_DIRECTORY);
  if (!lock.Good()) return name + ": " + std::strerror(errno);
  if (::flock(lock.Get(), LOCK_EX | LOCK_NB) == 0) return {};
  return errno == EWOULDBLOCK ? name + ": another Scrubwell is at work on this Windows"
                              : name + ": " + std::strerror(errno);
}

}  // namespace scrubwell::offline
