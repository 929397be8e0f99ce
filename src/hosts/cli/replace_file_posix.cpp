#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "hosts/cli/replace_file.h"
#include "hosts/cli/write_all.h"

namespace scrubwell::hosts {

namespace {

// The place that the bytes go to: behind symbolic links, so that a link stays one.
struct Place {
  std::string path;
  bool exists = false;
  bool direct = false;  ///< a device or pipe, which can't be replaced by a file
  mode_t mode = 0;
  int error = 0;
};

Place Locate(const std::string& path) {
  Place place;
  place.path = path;
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) {
    if (errno != ENOENT) place.error = errno;
    return place;
  }
  place.exists = true;
  place.mode = info.st_mode & 07777U;
  if (S_ISDIR(info.st_mode)) {
    place.error = EISDIR;
  } else if (!S_ISREG(info.st_mode)) {
    place.direct = true;
  } else if (::access(path.c_str(), W_OK) != 0) {
    place.error = errno;
  } else if (const std::unique_ptr<char, decltype(&std::free)> real(
                 ::realpath(path.c_str(), nullptr), &std::free);
             real != nullptr) {
    place.path = real.get();
  }
  return place;
}

std::string TemporaryName(const Place& place) {
  return place.path + ".scrubwell-" + std::to_string(::getpid());
}

int CreateTemporary(const std::string& name) {
  return ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

int WriteDirect(const std::string& path, const ContentSource& content) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) return errno;
  const int error = WriteAll(fd, content);
  return ::close(fd) != 0 && error == 0 ? errno : error;
}

int Replace(const Place& place, const ContentSource& content) {
  const std::string temporary = TemporaryName(place);
  const int fd = CreateTemporary(temporary);
  if (fd < 0) return errno;
  int error = WriteAll(fd, content);
  if (error == 0 && place.exists && ::fchmod(fd, place.mode) != 0) error = errno;
  if (error == 0 && ::fsync(fd) != 0) error = errno;
  if (::close(fd) != 0 && error == 0) error = errno;
  if (error == 0 && ::rename(temporary.c_str(), place.path.c_str()) != 0) error = errno;
  if (error != 0) ::unlink(temporary.c_str());
  return error;
}

}  // namespace

int TryReplacing(const std::string& path) {
  const Place place = Locate(path);
  if (place.error != 0 || place.direct) return place.error;
  const std::string temporary = TemporaryName(place);
  const int fd = CreateTemporary(temporary);
  if (fd < 0) return errno;
  ::close(fd);
  ::unlink(temporary.c_str());
  return 0;
}

int ReplaceContent(const std::string& path, const ContentSource& content) {
  const Place place = Locate(path);
  if (place.error != 0) return place.error;
  return place.direct ? WriteDirect(path, content) : Replace(place, content);
}

}  // namespace scrubwell::hosts
