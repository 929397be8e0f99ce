// A session's folder on the running system, and the journal in it that grows with the changes.
#pragma once

#include <set>

#include "backends/common/journal.h"
#include "backends/windows/win32.h"

namespace scrubwell::windows {

/// "20240501T120000Z" and the like, in UTC.
std::string TimeText(const char* format);

/// Writes a whole file and sees it on the disk; one sentence when that fails.
std::string WriteThrough(const std::string& file, std::span<const std::uint8_t> data);

/// Everything written is on the disk when a function returns. Each gives one sentence on failure;
/// nothing more is to be written then.
class LiveJournal {
 public:
  /// Makes the session's folder in the backup folder, with all that stands before the entries.
  std::string Open(const std::string& backupFolder, Journal& journal);
  /// With a copy of the file's content, for an entry that has one.
  std::string Add(const JournalEntry& entry);
  /// Takes the entry added last back.
  std::string Drop(const JournalEntry& entry);
  /// Ends the session. One without entries goes.
  std::string Close();

  [[nodiscard]] bool IsOpen() const { return file_.Good(); }
  [[nodiscard]] std::size_t Entries() const { return entries_; }
  [[nodiscard]] const std::string& Folder() const { return folder_; }
  [[nodiscard]] const std::string& Name() const { return name_; }

 private:
  std::string Append(const std::string& text);

  Owned<HANDLE, &CloseHandle> file_;
  JournalLines lines_;
  std::string folder_;
  std::string name_;
  std::size_t entries_ = 0;
};

/// Marks the items as put back in the session's folder.
std::string WriteUndone(const Journal& journal, const std::vector<std::string>& ids);

/// Says that a session's changes were made, and ends its journal if it lacks the end.
std::string CloseLeftOpen(const Journal& journal);

/// No two sessions on one system at once.
class LiveLock {
 public:
  /// False when another session is open.
  bool Take();

 private:
  OwnedHandle mutex_;
};

}  // namespace scrubwell::windows
