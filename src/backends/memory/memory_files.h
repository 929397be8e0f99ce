// Files in memory.
#pragma once

#include <array>
#include <map>
#include <memory>

#include "backends/memory/memory_faults.h"
#include "registry/platform.h"

namespace scrubwell {

/// A file system with Windows' rules: letter case ignored, slashes and trailing dots and blanks
/// normalised, System32 shown as SysWOW64 in the redirected view of a 64-bit Windows. Paths that
/// are no drive path, or whose drive was never named, are Unknown, and so is a short name
/// ("PROGRA~1") that was not listed itself. Device names exist.
class MemoryFiles final : public IFiles {
 public:
  MemoryFiles(MemoryJournal& journal, MemoryFaults& faults, bool is64Bit, bool hasDriverStore);
  ~MemoryFiles() override;

  /// One entry a line, "#" begins a comment line:
  ///   C:\Windows\a.dll               a file of one byte
  ///   C:\Users\anna\                 a folder
  ///   C:\x.dat | size=1200           a file of that size, zeroes inside
  ///   C:\x.ini | text=[a]\nb=c       \n is CR LF, \t a tabulator, \\ a backslash
  ///   drive D: removable             fixed, removable, cdrom, network, ramdisk
  /// Folders above an entry come by themselves; a drive that is not told is a fixed one.
  /// Empty, or what is wrong with which line.
  [[nodiscard]] std::string Add(std::string_view text);
  void AddFile(UnicodeView path, Bytes data = Bytes(1));
  void AddFolder(UnicodeView path);
  void SetDrive(char16_t letter, DriveKind kind);
  /// Every path of the tree, sorted, folders with a trailing backslash.
  [[nodiscard]] TStringList AllPaths() const;

  DriveKind Drive(char16_t letter) override;
  Status Stat(UnicodeView path, FsView view, FileInfo& out) override;
  Status Size(UnicodeView path, FsView view, std::uint64_t& out) override;
  Status List(UnicodeView path, FsView view, std::vector<DirEntry>& out) override;
  Status Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) override;
  Status Write(UnicodeView path, const Bytes& data) override;
  Status EraseFile(UnicodeView path) override;
  Status EraseFolder(UnicodeView path) override;
  Status Backup(UnicodeView path) override;

 private:
  struct Entry;
  Entry* Make(const TStringList& parts, bool isFolder);
  Status Find(UnicodeView path, FsView view, Entry*& out);
  Status Erase(UnicodeView path, bool folder);
  std::string AddLine(UnicodeView line);

  MemoryJournal& journal_;
  MemoryFaults& faults_;
  bool is64Bit_;
  bool hasDriverStore_;
  std::array<DriveKind, 26> drives_{};
  std::unique_ptr<Entry> root_;
};

}  // namespace scrubwell
