// Bytes under a file name, for libraries that open files by name only.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <span>
#include <string>

namespace scrubwell::libyal {

/// A file without a place in any folder that holds a copy of the bytes and ends with this object.
class MemoryFile {
 public:
  explicit MemoryFile(std::span<const std::uint8_t> data)
      : descriptor_(memfd_create("scrubwell", MFD_CLOEXEC)) {
    while (descriptor_ >= 0 && !data.empty()) {
      const ssize_t written = write(descriptor_, data.data(), data.size());
      if (written <= 0) {
        close(descriptor_);
        descriptor_ = -1;
        return;
      }
      data = data.subspan(static_cast<std::size_t>(written));
    }
  }
  ~MemoryFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  /// Empty when the system had no room for it.
  [[nodiscard]] std::string Name() const {
    return descriptor_ < 0 ? std::string() : "/proc/self/fd/" + std::to_string(descriptor_);
  }

 private:
  int descriptor_;
};

}  // namespace scrubwell::libyal
