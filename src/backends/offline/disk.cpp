#include "backends/offline/disk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "backends/offline/drive_tree.h"

namespace scrubwell::offline {
namespace {

// What the NTFS drivers show of a file's security, its DOS attributes and its times. They are not
// always listed with the other extended attributes.
constexpr std::array<const char*, 4> kNtfsAttributes = {
    "system.ntfs_acl", "system.ntfs_security", "system.ntfs_attrib_be", "system.ntfs_crtime_be"};

bool IsNtfs(const std::string& path) {
  constexpr std::uint64_t kNtfs3 = 0x7366746EU;
  constexpr std::uint64_t kFuseBlock = 0x65735546U;
  struct statfs info {};
  if (::statfs(path.c_str(), &info) != 0) return false;
  const auto type = static_cast<std::uint64_t>(info.f_type);
  return type == kNtfs3 || type == kFuseBlock;
}

void ReadExtended(const std::string& path, const char* name, FileAttributes& out) {
  const ssize_t size = ::lgetxattr(path.c_str(), name, nullptr, 0);
  if (size < 0) return;
  Bytes value(static_cast<std::size_t>(size));
  const ssize_t got = ::lgetxattr(path.c_str(), name, value.data(), value.size());
  if (got < 0) return;
  value.resize(static_cast<std::size_t>(got));
  out.extended[name] = std::move(value);
}

int SetExtended(const std::string& path, const FileAttributes& attributes) {
  for (const auto& [name, value] : attributes.extended) {
    if (::lsetxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) == 0) continue;
    const int error = errno;
    const bool isSecurity = name == kNtfsAttributes[0] || name == kNtfsAttributes[1];
    if (isSecurity && IsNtfs(path)) return error;
  }
  return 0;
}

int Result(int answer) {
  return answer == 0 ? 0 : errno;
}

class Disk final : public IDisk {
 public:
  int Create(const std::string& file) override {
    const UniqueFd fd(
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    return fd.Good() ? 0 : errno;
  }
  int Append(const std::string& file, std::span<const std::uint8_t> data) override {
    const UniqueFd fd(::open(file.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC));
    if (!fd.Good()) return errno;
    while (!data.empty()) {
      const ssize_t done = ::write(fd.Get(), data.data(), data.size());
      if (done < 0 && errno == EINTR) continue;
      if (done < 0) return errno;
      data = data.subspan(static_cast<std::size_t>(done));
    }
    return 0;
  }
  int Sync(const std::string& path) override {
    const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd.Good()) return errno;
    if (::fsync(fd.Get()) == 0) return 0;
    // Some file systems have no such call for folders.
    return errno == EINVAL ? 0 : errno;
  }
  int SetAttributes(const std::string& path, const FileAttributes& attributes) override {
    struct stat now {};
    if (::lstat(path.c_str(), &now) != 0) return errno;
    if ((now.st_uid != attributes.owner || now.st_gid != attributes.group) &&
        ::lchown(path.c_str(), attributes.owner, attributes.group) != 0) {
      return errno;
    }
    if (::chmod(path.c_str(), attributes.mode & 07777U) != 0) return errno;
    if (const int error = SetExtended(path, attributes); error != 0) return error;
    if (attributes.modifiedSeconds == 0 && attributes.modifiedNanoseconds == 0) return 0;
    const timespec times[2] = {{0, UTIME_OMIT},
                               {attributes.modifiedSeconds, attributes.modifiedNanoseconds}};
    return Result(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW));
  }
  int Rename(const std::string& from, const std::string& to) override {
    return Result(std::rename(from.c_str(), to.c_str()));
  }
  int Truncate(const std::string& file) override { return Result(::truncate(file.c_str(), 0)); }
  int EraseFile(const std::string& file) override { return Result(::unlink(file.c_str())); }
  int EraseFolder(const std::string& folder) override { return Result(::rmdir(folder.c_str())); }
  int MakeFolder(const std::string& folder) override {
    return Result(::mkdir(folder.c_str(), 0700));
  }
  int FreeSpace(const std::string& folder, std::uint64_t& out) override {
    struct statvfs info {};
    if (::statvfs(folder.c_str(), &info) != 0) return errno;
    out = std::uint64_t{info.f_bavail} * info.f_frsize;
    return 0;
  }
};

}  // namespace

IDisk& RealDisk() {
  static Disk disk;
  return disk;
}

int WriteNewFile(IDisk& disk, const std::string& file, std::span<const std::uint8_t> data) {
  int error = disk.Create(file);
  if (error == 0 && !data.empty()) error = disk.Append(file, data);
  return error == 0 ? disk.Sync(file) : error;
}

int ReadWholeFile(const std::string& file, Bytes& out) {
  out.clear();
  const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
  if (!fd.Good()) return errno;
  struct stat info {};
  if (::fstat(fd.Get(), &info) != 0) return errno;
  if (!S_ISREG(info.st_mode)) return EINVAL;
  out.resize(static_cast<std::size_t>(info.st_size));
  std::size_t done = 0;
  while (done < out.size()) {
    const ssize_t got = ::read(fd.Get(), out.data() + done, out.size() - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  out.resize(done);
  return 0;
}

int ReadAttributes(const std::string& path, FileAttributes& out) {
  out = {};
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) return errno;
  out.mode = info.st_mode & 07777U;
  out.owner = info.st_uid;
  out.group = info.st_gid;
  out.modifiedSeconds = info.st_mtim.tv_sec;
  out.modifiedNanoseconds = info.st_mtim.tv_nsec;
  std::string names(4096, '\0');
  const ssize_t size = ::llistxattr(path.c_str(), names.data(), names.size());
  for (std::size_t at = 0; size > 0 && at < static_cast<std::size_t>(size);) {
    const std::string name = names.c_str() + at;
    ReadExtended(path, name.c_str(), out);
    at += name.size() + 1;
  }
  for (const char* name : kNtfsAttributes) ReadExtended(path, name, out);
  return 0;
}

bool PathExists(const std::string& path) {
  struct stat info {};
  return ::lstat(path.c_str(), &info) == 0;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace scrubwell::offline
