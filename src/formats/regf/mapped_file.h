// A whole file as bytes in memory, without copying it where the system can map it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace scrubwell::regf {

/// Read-only content of a file. Not to be changed or cut by others while it is mapped.
class MappedFile {
 public:
  MappedFile() = default;
  MappedFile(MappedFile&& other) noexcept;
  MappedFile& operator=(MappedFile&& other) noexcept;
  ~MappedFile();

  /// False when it can't be read; `error` then says why in the system's words. Only regular files
  /// are read.
  bool Open(const std::filesystem::path& file, std::string& error);
  [[nodiscard]] std::span<const std::uint8_t> Content() const { return {data_, size_}; }

 private:
  const std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
  std::vector<std::uint8_t> copy_;  ///< the content where nothing is mapped
};

}  // namespace scrubwell::regf
