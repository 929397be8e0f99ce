// A file's bytes in memory of our own, so that nothing that happens to the disk meanwhile is seen,
// and a block that can't be read is known instead of ending the program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace scrubwell::regf {

/// Parts of a file, from and up to, ascending, in bytes.
using FileRanges = std::vector<std::pair<std::size_t, std::size_t>>;

/// A copy of a regular file.
class FileImage {
 public:
  FileImage() = default;
  FileImage(FileImage&& other) noexcept;
  FileImage& operator=(FileImage&& other) noexcept;
  ~FileImage();

  /// False when nothing of it can be read; `error` then says why in the system's words. Blocks that
  /// the medium does not give stay zeros and are named by Unreadable.
  bool Open(const std::filesystem::path& file, std::string& error);
  /// The same of an open file, which stays open.
  bool Open(int descriptor, std::string& error);
  /// Room for a file of at most `most` bytes, without its content: zeros until Load.
  bool Reserve(int descriptor, std::size_t most, std::string& error);
  /// Reads a part. False when it reaches out of the file or some of it can't be read.
  bool Load(int descriptor, std::size_t from, std::size_t size);

  [[nodiscard]] std::span<const std::uint8_t> Content() const { return {data_, size_}; }
  [[nodiscard]] std::span<std::uint8_t> Changeable() { return {data_, size_}; }
  [[nodiscard]] const FileRanges& Unreadable() const { return unreadable_; }

 private:
  std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
  FileRanges unreadable_;
  std::vector<std::uint8_t> copy_;  ///< the content where the system gives no pages
};

}  // namespace scrubwell::regf
