#include "backends/offline/disk_place.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

namespace scrubwell::offline {
namespace {

// For kernels without openat2: one component after the other, none of them a link.
UniqueFd OpenStepwise(int root, std::string_view relative, int flags) {
  UniqueFd at(::openat(root, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  while (at.Good()) {
    const std::size_t slash = relative.find('/');
    const std::string part(relative.substr(0, slash));
    if (part == ".." || relative.front() == '/') return errno = EXDEV, UniqueFd();
    if (slash == std::string_view::npos) return UniqueFd(::openat(at.Get(), part.c_str(), flags));
    at = UniqueFd(::openat(at.Get(), part.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    relative.remove_prefix(slash + 1);
  }
  return at;
}

}  // namespace

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
  if (this != &other) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = other.Release();
  }
  return *this;
}

UniqueFd::~UniqueFd() {
  // Who asks for errno has just let go of what failed.
  const int error = errno;
  if (fd_ >= 0) ::close(fd_);
  errno = error;
}

int UniqueFd::Release() {
  return std::exchange(fd_, -1);
}

int OpenRoot(const std::string& folder, DiskRoot& out) {
  UniqueFd opened(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!opened.Good()) return errno;
  char* const path = ::realpath(folder.c_str(), nullptr);
  if (path == nullptr) return errno;
  out.path = path;
  std::free(path);
  out.folder = std::move(opened);
  return 0;
}

UniqueFd OpenBelow(const DiskRoot& root, const std::string& relative, int flags) {
  const std::string path = relative.empty() ? "." : relative;
  // What a NUL cuts off would be another name than the one that was looked at.
  if (path.find('\0') != std::string::npos) return errno = EINVAL, UniqueFd();
  flags |= O_NOFOLLOW | O_CLOEXEC;
  open_how how{};
  how.flags = static_cast<std::uint64_t>(flags);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  const long fd = ::syscall(SYS_openat2, root.folder.Get(), path.c_str(), &how, sizeof how);
  if (fd >= 0) return UniqueFd(static_cast<int>(fd));
  // Sandboxes answer EPERM for calls they don't know.
  if (errno != ENOSYS && errno != EPERM) return UniqueFd();
  return OpenStepwise(root.folder.Get(), path, flags);
}

DiskPlace DiskPlace::Folder() const {
  const std::size_t slash = relative_.rfind('/');
  return DiskPlace(*root_, slash == std::string::npos ? std::string() : relative_.substr(0, slash));
}

std::string DiskPlace::Name() const {
  return relative_.empty() ? "." : relative_.substr(relative_.rfind('/') + 1);
}

DiskPlace DiskPlace::operator/(std::string_view name) const {
  std::string below = relative_.empty() ? std::string() : relative_ + "/";
  return DiskPlace(*root_, below.append(name));
}

DiskPlace DiskPlace::WithEnding(std::string_view ending) const {
  return DiskPlace(*root_, relative_ + std::string(ending));
}

std::string DiskPlace::Text() const {
  if (relative_.empty()) return root_->path;
  return (root_->path == "/" ? std::string() : root_->path) + "/" + relative_;
}

int DiskPlace::Stat(struct stat& out) const {
  const UniqueFd folder = Folder().Open(O_PATH | O_DIRECTORY);
  if (!folder.Good()) return errno;
  return ::fstatat(folder.Get(), Name().c_str(), &out, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
}

bool DiskPlace::Exists() const {
  struct stat info {};
  return Stat(info) == 0;
}

int ReadWholeFile(const DiskPlace& file, Bytes& out, std::uint64_t most) {
  out.clear();
  // Opening a pipe would wait for somebody to write into it.
  const UniqueFd fd = file.Open(O_RDONLY | O_NONBLOCK);
  if (!fd.Good()) return errno;
  struct stat info {};
  if (::fstat(fd.Get(), &info) != 0) return errno;
  if (!S_ISREG(info.st_mode)) return EINVAL;
  if (static_cast<std::uint64_t>(info.st_size) > most) return EFBIG;
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

int ListNames(const DiskPlace& folder, std::vector<std::string>& out) {
  out.clear();
  UniqueFd fd = folder.Open(O_RDONLY | O_DIRECTORY);
  if (!fd.Good()) return errno;
  DIR* const stream = ::fdopendir(fd.Get());
  if (stream == nullptr) return errno;
  fd.Release();
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(stream);
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") out.emplace_back(name);
  }
  const int error = errno;
  ::closedir(stream);
  return error;
}

}  // namespace scrubwell::offline
