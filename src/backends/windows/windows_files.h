// The files of the running system.
#pragma once

#include <optional>

#include "backends/windows/win32.h"

namespace scrubwell::windows {

/// Only drives are asked: network paths without a letter are Unknown without a look. A drive of the
/// network tells what is there, but is not read or changed; of the others only a fixed one proves
/// an absence. A short name ("PROGRA~1") that is not there is Unknown,
/// for copying a system to a new disk loses such names without harm to what they named.
class WindowsFiles final : public IFiles {
 public:
  /// Without `mayChange` every change is Denied. Copies of files go below `backupFolder`, at the
  /// path that they come from; empty: none can be made.
  WindowsFiles(bool mayChange, UnicodeString backupFolder)
      : mayChange_(mayChange), backupFolder_(std::move(backupFolder)) {}

  DriveKind Drive(char16_t letter) override;
  Status Stat(UnicodeView path, FsView view, FileInfo& out) override;
  Status Size(UnicodeView path, FsView view, std::uint64_t& out) override;
  Status List(UnicodeView path, FsView view, std::vector<DirEntry>& out) override;
  Status Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) override;
  /// The old content stays whole until the new one takes its place.
  Status Write(UnicodeView path, const Bytes& data) override;
  Status EraseFile(UnicodeView path) override;
  Status EraseFolder(UnicodeView path) override;
  /// The first copy of a file stays: it is the file as it was before all changes.
  Status Backup(UnicodeView path) override;

 private:
  /// With `looksOnly` network drives count too.
  Status Locate(UnicodeView path, FsView view, UnicodeString& full, bool looksOnly = false);
  /// Stat and Size; what has no size leaves it empty.
  Status Look(UnicodeView path, FsView view, FileInfo& out, std::optional<std::uint64_t>& size);
  Status AfterError(UnicodeView path, DWORD error);

  bool mayChange_;
  UnicodeString backupFolder_;
};

}  // namespace scrubwell::windows
