// What changes the real disk: one small interface, so that every step can be made to fail.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "backends/common/journal.h"

namespace scrubwell::offline {

/// Every call that writes. Paths are this machine's. All answer 0 or the system's error number.
class IDisk {
 public:
  virtual ~IDisk() = default;
  /// A new empty file; EEXIST when there is something of that name.
  virtual int Create(const std::string& file) = 0;
  virtual int Append(const std::string& file, std::span<const std::uint8_t> data) = 0;
  /// Makes the content of a file, or the names in a folder, survive a loss of power.
  virtual int Sync(const std::string& path) = 0;
  /// Security that a file system has no place for is an error only where the path lies on NTFS.
  virtual int SetAttributes(const std::string& path, const FileAttributes& attributes) = 0;
  /// Takes the place of a file of the new name, at once.
  virtual int Rename(const std::string& from, const std::string& to) = 0;
  virtual int Truncate(const std::string& file) = 0;
  virtual int EraseFile(const std::string& file) = 0;
  virtual int EraseFolder(const std::string& folder) = 0;
  virtual int MakeFolder(const std::string& folder) = 0;
  /// Bytes that can still be written below the folder.
  virtual int FreeSpace(const std::string& folder, std::uint64_t& out) = 0;
};

/// The disk of this machine. One object without state.
IDisk& RealDisk();

/// Create, Append and Sync.
int WriteNewFile(IDisk& disk, const std::string& file, std::span<const std::uint8_t> data);
/// 0 or the system's error number.
int ReadWholeFile(const std::string& file, Bytes& out);
int ReadAttributes(const std::string& path, FileAttributes& out);
bool PathExists(const std::string& path);
/// The part before the last slash.
std::string FolderOf(const std::string& path);

}  // namespace scrubwell::offline
