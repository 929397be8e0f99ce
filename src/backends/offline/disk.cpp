#include "backends/offline/disk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

namespace scrubwell::offline {
namespace {

constexpr mode_t kRights = 0777;

// What the NTFS drivers show of a file's security, its DOS attributes and its times. They are not
// always listed with the other extended attributes.
constexpr const char* kCreationTime = "system.ntfs_crtime_be";
constexpr const char* kAllTimes = "system.ntfs_times_be";
constexpr std::array<const char*, 5> kNtfsAttributes = {
    "system.ntfs_acl", "system.ntfs_security", "system.ntfs_attrib_be", kCreationTime, kAllTimes};

bool IsTime(std::string_view name) {
  return name == kCreationTime || name == kAllTimes;
}

// Labels that this machine gives by a policy of its own, whatever is asked for.
bool IsPolicy(std::string_view name) {
  return name.starts_with("security.") || name.starts_with("trusted.");
}

// Names that are listed have to be readable; of the others most file systems know nothing.
int ReadExtended(int fd, const char* name, bool isListed, FileAttributes& out) {
  ssize_t size = ::fgetxattr(fd, name, nullptr, 0);
  Bytes value(size > 0 ? static_cast<std::size_t>(size) : 0);
  if (size > 0) size = ::fgetxattr(fd, name, value.data(), value.size());
  if (size < 0) return !isListed || errno == ENODATA || IsPolicy(name) ? 0 : errno;
  value.resize(static_cast<std::size_t>(size));
  out.extended[name] = std::move(value);
  return 0;
}

int ListExtended(int fd, std::string& names) {
  const ssize_t needed = ::flistxattr(fd, nullptr, 0);
  if (needed < 0) return errno == ENOTSUP ? 0 : errno;
  names.resize(static_cast<std::size_t>(needed));
  const ssize_t size = ::flistxattr(fd, names.data(), names.size());
  if (size < 0) return errno;
  names.resize(static_cast<std::size_t>(size));
  return 0;
}

bool HasExtended(int fd, const std::string& name, const Bytes& value) {
  FileAttributes now;
  return ReadExtended(fd, name.c_str(), false, now) == 0 && now.extended.contains(name) &&
         now.extended[name] == value;
}

int SetOne(int fd, const std::string& name, const Bytes& value) {
  if (::fsetxattr(fd, name.c_str(), value.data(), value.size(), 0) == 0) return 0;
  const int error = errno;
  return IsPolicy(name) || HasExtended(fd, name, value) ? 0 : error;
}

int SetExtended(int fd, const FileAttributes& attributes) {
  for (const auto& [name, value] : attributes.extended) {
    if (IsTime(name)) continue;
    if (const int error = SetOne(fd, name, value); error != 0) return error;
  }
  return 0;
}

// Last of all. A driver that has no room for one of them has none for what it shows itself.
int SetTimes(int fd, const FileAttributes& attributes) {
  const bool all = attributes.modifiedSeconds != 0 || attributes.modifiedNanoseconds != 0;
  struct stat now {};
  if (::fstat(fd, &now) != 0) return errno;
  const bool hasAccess = attributes.accessedSeconds != 0 || attributes.accessedNanoseconds != 0;
  // Both at once: there are drivers that leave a lone one as it is.
  const timespec times[2] = {
      hasAccess ? timespec{attributes.accessedSeconds, attributes.accessedNanoseconds}
                : now.st_atim,
      {attributes.modifiedSeconds, attributes.modifiedNanoseconds}};
  if (all && ::futimens(fd, times) != 0) return errno;
  for (const char* const name : {kCreationTime, kAllTimes}) {
    const auto value = attributes.extended.find(name);
    if (value == attributes.extended.end() || (name == kAllTimes && !all)) continue;
    (void)::fsetxattr(fd, name, value->second.data(), value->second.size(), 0);
  }
  return 0;
}

int Result(int answer) {
  return answer == 0 ? 0 : errno;
}

// A file or folder itself, never what has taken its place as a link or a pipe.
UniqueFd OpenItself(const DiskPlace& place, int flags) {
  struct stat info {};
  UniqueFd fd = place.Open(flags | O_NONBLOCK);
  if (!fd.Good() || ::fstat(fd.Get(), &info) != 0) return UniqueFd();
  if (S_ISREG(info.st_mode) || S_ISDIR(info.st_mode)) return fd;
  errno = EINVAL;
  return UniqueFd();
}

// The folder that holds a place, opened anew: what was looked at before may have been swapped.
class Held {
 public:
  explicit Held(const DiskPlace& place)
      : folder_(place.Folder().Open(O_PATH | O_DIRECTORY)), name_(place.Name()) {}
  template <class Call>
  int Do(Call&& call) const {
    return folder_.Good() ? Result(call(folder_.Get(), name_.c_str())) : errno;
  }
  [[nodiscard]] const UniqueFd& Folder() const { return folder_; }
  [[nodiscard]] const char* Name() const { return name_.c_str(); }

 private:
  UniqueFd folder_;
  std::string name_;
};

class Disk final : public IDisk {
 public:
  int Create(const DiskPlace& file) override {
    return Held(file).Do([](int folder, const char* name) {
      const UniqueFd fd(
          ::openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
      return fd.Good() ? 0 : -1;
    });
  }
  int Append(const DiskPlace& file, std::span<const std::uint8_t> data) override {
    const UniqueFd fd = OpenItself(file, O_WRONLY | O_APPEND);
    if (!fd.Good()) return errno;
    while (!data.empty()) {
      const ssize_t done = ::write(fd.Get(), data.data(), data.size());
      if (done < 0 && errno == EINTR) continue;
      if (done < 0) return errno;
      data = data.subspan(static_cast<std::size_t>(done));
    }
    return 0;
  }
  int Sync(const DiskPlace& place) override {
    const UniqueFd fd = OpenItself(place, O_RDONLY);
    if (!fd.Good()) return errno;
    if (::fsync(fd.Get()) == 0) return 0;
    // Some file systems have no such call for folders.
    return errno == EINVAL ? 0 : errno;
  }
  int SetAttributes(const DiskPlace& place, const FileAttributes& attributes) override {
    const UniqueFd fd = OpenItself(place, O_RDONLY);
    struct stat now {};
    if (!fd.Good() || ::fstat(fd.Get(), &now) != 0) return errno;
    if ((now.st_uid != attributes.owner || now.st_gid != attributes.group) &&
        ::fchown(fd.Get(), attributes.owner, attributes.group) != 0) {
      return errno;
    }
    if (::fchmod(fd.Get(), attributes.mode & kRights) != 0) return errno;
    const int error = SetExtended(fd.Get(), attributes);
    return error != 0 ? error : SetTimes(fd.Get(), attributes);
  }
  int Rename(const DiskPlace& from, const DiskPlace& to) override {
    const Held target(to);
    if (!target.Folder().Good()) return errno;
    return Held(from).Do([&target](int folder, const char* name) {
      return ::renameat(folder, name, target.Folder().Get(), target.Name());
    });
  }
  int Truncate(const DiskPlace& file) override {
    const UniqueFd fd = OpenItself(file, O_WRONLY);
    if (!fd.Good()) return errno;
    return ::ftruncate(fd.Get(), 0) == 0 ? Result(::fsync(fd.Get())) : errno;
  }
  int EraseFile(const DiskPlace& file) override {
    return Held(file).Do([](int folder, const char* name) { return ::unlinkat(folder, name, 0); });
  }
  int EraseFolder(const DiskPlace& place) override {
    return Held(place).Do(
        [](int folder, const char* name) { return ::unlinkat(folder, name, AT_REMOVEDIR); });
  }
  int MakeFolder(const DiskPlace& place) override {
    return Held(place).Do(
        [](int folder, const char* name) { return ::mkdirat(folder, name, 0700); });
  }
  int FreeSpace(const DiskPlace& folder, std::uint64_t& out) override {
    const UniqueFd fd = folder.Open(O_PATH | O_DIRECTORY);
    struct statvfs info {};
    if (!fd.Good() || ::fstatvfs(fd.Get(), &info) != 0) return errno;
    out = std::uint64_t{info.f_bavail} * info.f_frsize;
    return 0;
  }
};

}  // namespace

IDisk& RealDisk() {
  static Disk disk;
  return disk;
}

int WriteNewFile(IDisk& disk, const DiskPlace& file, std::span<const std::uint8_t> data) {
  int error = disk.Create(file);
  if (error == 0 && !data.empty()) error = disk.Append(file, data);
  return error == 0 ? disk.Sync(file) : error;
}

int ReadAttributes(const DiskPlace& place, FileAttributes& out) {
  out = {};
  const UniqueFd fd = OpenItself(place, O_RDONLY);
  struct stat info {};
  if (!fd.Good() || ::fstat(fd.Get(), &info) != 0) return errno;
  out.mode = info.st_mode & kRights;
  out.owner = info.st_uid;
  out.group = info.st_gid;
  out.modifiedSeconds = info.st_mtim.tv_sec;
  out.modifiedNanoseconds = info.st_mtim.tv_nsec;
  out.accessedSeconds = info.st_atim.tv_sec;
  out.accessedNanoseconds = info.st_atim.tv_nsec;
  std::string names;
  int error = ListExtended(fd.Get(), names);
  for (std::size_t at = 0; error == 0 && at < names.size();) {
    const std::string name = names.c_str() + at;
    error = ReadExtended(fd.Get(), name.c_str(), true, out);
    at += name.size() + 1;
  }
  for (const char* const name : kNtfsAttributes) {
    if (error == 0) error = ReadExtended(fd.Get(), name, false, out);
  }
  return error;
}

FileAttributes WithinBounds(FileAttributes attributes) {
  attributes.mode &= kRights;
  std::erase_if(attributes.extended, [](const auto& item) {
    return !item.first.starts_with("user.") && !item.first.starts_with("system.ntfs_");
  });
  return attributes;
}

}  // namespace scrubwell::offline
