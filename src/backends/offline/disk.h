// What changes the real disk: one small interface, so that every step can be made to fail.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "backends/common/journal.h"
#include "backends/offline/disk_place.h"

namespace scrubwell::offline {

/// Every call that writes. All answer 0 or the system's error number.
class IDisk {
 public:
  virtual ~IDisk() = default;
  /// A new empty file; EEXIST when there is something of that name.
  virtual int Create(const DiskPlace& file) = 0;
  virtual int Append(const DiskPlace& file, std::span<const std::uint8_t> data) = 0;
  /// Makes the content of a file, or the names in a folder, survive a loss of power.
  virtual int Sync(const DiskPlace& place) = 0;
  /// All of it or an error, but for what this machine's own policy decides of (its security
  /// labels). Rights beyond reading, writing and running are never given.
  virtual int SetAttributes(const DiskPlace& place, const FileAttributes& attributes) = 0;
  /// Takes the place of a file of the new name, at once.
  virtual int Rename(const DiskPlace& from, const DiskPlace& to) = 0;
  /// Empties a file and makes that survive a loss of power.
  virtual int Truncate(const DiskPlace& file) = 0;
  virtual int EraseFile(const DiskPlace& file) = 0;
  virtual int EraseFolder(const DiskPlace& folder) = 0;
  virtual int MakeFolder(const DiskPlace& folder) = 0;
  /// Bytes that can still be written below the folder.
  virtual int FreeSpace(const DiskPlace& folder, std::uint64_t& out) = 0;
};

/// The disk of this machine. One object without state.
IDisk& RealDisk();

/// Create, Append and Sync.
int WriteNewFile(IDisk& disk, const DiskPlace& file, std::span<const std::uint8_t> data);
/// Everything that belongs to a file or folder beside its content; an error where some of it can't
/// be read, and so would be lost.
int ReadAttributes(const DiskPlace& place, FileAttributes& out);
/// What of attributes that somebody else may have written down may be set with our rights.
FileAttributes WithinBounds(FileAttributes attributes);

}  // namespace scrubwell::offline
