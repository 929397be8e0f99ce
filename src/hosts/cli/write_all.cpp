#include "hosts/cli/write_all.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace scrubwell::hosts {

int WriteAll(int fd, std::string_view bytes) {
  // Not all systems take more in one go than an int can count.
  constexpr std::size_t step = std::size_t{1} << 24U;
  while (!bytes.empty()) {
    const auto count = static_cast<unsigned int>(std::min(bytes.size(), step));
    const auto written = ::write(fd, bytes.data(), count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

int WriteAll(int fd, const ContentSource& content) {
  int error = 0;
  content([fd, &error](std::string_view piece) {
    if (error == 0) error = WriteAll(fd, piece);
  });
  return error;
}

}  // namespace scrubwell::hosts
