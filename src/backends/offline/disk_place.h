// Places on this machine's disks, named from a folder that is held open. Whatever is changed on a
// disk goes through such a place: the folders on the way are opened below the held one, and no link
// is followed, so that nobody who changes the disk meanwhile leads us elsewhere.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "registry/types.h"

struct stat;

namespace scrubwell::offline {

/// An open file descriptor, closed with its owner.
class UniqueFd {
 public:
  explicit UniqueFd(int fd = -1) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(other.Release()) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept;
  ~UniqueFd();
  [[nodiscard]] int Get() const { return fd_; }
  [[nodiscard]] bool Good() const { return fd_ >= 0; }
  int Release();

 private:
  int fd_;
};

/// A folder that is held open.
struct DiskRoot {
  std::string path;  ///< absolute and without links when it was opened; for sentences only
  UniqueFd folder;
};

/// Opens a folder by its path, whose links are followed: it is the user's word. 0 or the system's
/// error number.
int OpenRoot(const std::string& folder, DiskRoot& out);

/// Opens a path below a root. No link is followed on the way or at the end, ".." leads nowhere.
/// Not good on failure; errno then says why.
UniqueFd OpenBelow(const DiskRoot& root, const std::string& relative, int flags);

/// A file or folder below a root, or the root itself. Borrows the root.
class DiskPlace {
 public:
  DiskPlace() = default;
  explicit DiskPlace(const DiskRoot& root, std::string relative = {})
      : root_(&root), relative_(std::move(relative)) {}

  /// False for a place that was never set.
  [[nodiscard]] bool Known() const { return root_ != nullptr; }
  [[nodiscard]] const DiskRoot& Root() const { return *root_; }
  /// Below the root, with this machine's separators; empty for the root.
  [[nodiscard]] const std::string& Relative() const { return relative_; }
  /// The folder that holds it; the root holds itself.
  [[nodiscard]] DiskPlace Folder() const;
  /// The last part; "." for the root.
  [[nodiscard]] std::string Name() const;
  [[nodiscard]] DiskPlace operator/(std::string_view name) const;
  /// The same place with something behind its name.
  [[nodiscard]] DiskPlace WithEnding(std::string_view ending) const;
  /// The path as people read it. Never to be opened.
  [[nodiscard]] std::string Text() const;

  /// See OpenBelow.
  [[nodiscard]] UniqueFd Open(int flags) const { return OpenBelow(*root_, relative_, flags); }
  /// 0 or the system's error number. A link is told as such.
  int Stat(struct stat& out) const;
  /// Whether anything has this name.
  [[nodiscard]] bool Exists() const;

 private:
  const DiskRoot* root_ = nullptr;
  std::string relative_;
};

/// Reads a regular file of at most `most` bytes; EFBIG for a larger one, EINVAL for anything else.
/// 0 or the system's error number.
int ReadWholeFile(const DiskPlace& file, Bytes& out, std::uint64_t most = std::uint64_t{1} << 32U);
/// The names in a folder without "." and ".."; 0 or the system's error number.
int ListNames(const DiskPlace& folder, std::vector<std::string>& out);

}  // namespace scrubwell::offline
