// The files of the switched-off system.
#pragma once

#include <map>
#include <optional>

#include "backends/common/journal.h"
#include "backends/offline/drive_tree.h"
#include "registry/TextTable.h"

namespace scrubwell::offline {

/// Which folders a 32-bit process is shown in place of others.
struct RedirectionRules {
  bool is64Bit = false;
  /// Windows 7 and later keep the driver store out of it.
  bool sharesDriverStore = true;
  UnicodeString systemRoot;  ///< "C:\Windows"
};

/// A file or folder as it will be.
struct FileChange {
  enum class Kind : std::uint8_t { Written, Erased, FolderErased, FolderMade };
  Kind kind = Kind::Written;
  UnicodeString path;  ///< as Windows names it
  DiskPlace place;
  Bytes data;
  /// Attributes to give it; none: those of the file in its place.
  std::optional<FileAttributes> attributes;
};
/// By the place's text, which is not to be opened.
using FileChanges = std::map<std::string, FileChange>;

/// Where a change goes.
struct FileTarget {
  UnicodeString path;  ///< as Windows names it, all redirection done
  DiskPlace place;
  std::string local;  ///< the place's text
  bool exists = false;
  bool isFolder = false;
};

/// Is told of each change before it is made.
class IFileObserver {
 public:
  virtual ~IFileObserver() = default;
  /// `data` is the new content where there is one. False makes the change Denied.
  virtual bool BeforeFileChange(JournalAction action, const FileTarget& target,
                                const Bytes* data) = 0;
};

/// Answers are remembered: the disk does not change under a scan. Changes are Denied until
/// AllowChanges; from then on they are kept in memory, where all reading sees them.
class OfflineFiles final : public IFiles {
 public:
  explicit OfflineFiles(DriveTree& drives) : drives_(drives) {}
  void SetRedirection(RedirectionRules rules);

  DriveKind Drive(char16_t letter) override;
  Status Stat(UnicodeView path, FsView view, FileInfo& out) override;
  Status Size(UnicodeView path, FsView view, std::uint64_t& out) override;
  Status List(UnicodeView path, FsView view, std::vector<DirEntry>& out) override;
  Status Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) override;
  Status Write(UnicodeView path, const Bytes& data) override;
  Status EraseFile(UnicodeView path) override;
  Status EraseFolder(UnicodeView path) override;
  Status Backup(UnicodeView path) override;

  void AllowChanges(IFileObserver& observer) { observer_ = &observer; }
  [[nodiscard]] const FileChanges& Changes() const { return changes_; }
  /// Takes changes over as if they had been made here; they can't be committed.
  void SetChanges(FileChanges changes);
  /// The attributes that a written file gets in place of its own.
  void SetAttributes(const FileTarget& target, const FileAttributes& attributes);
  Status MakeFolder(UnicodeView path);
  /// Absent when the folder that would hold it is; Denied for what must not be changed: a drive's
  /// root, a drive that the user did not name, and links, which this machine shows where Windows
  /// has something else.
  Status Target(UnicodeView path, FileTarget& out);

  /// Where a file or folder lies on this machine.
  Status Place(UnicodeView path, DiskPlace& out, FsView view = FsView::Physical);
  /// At most `most` bytes from the start of a regular file. Denied for a folder, Unknown for what
  /// is no file or can't be read; opening it waits for nobody.
  Status ReadHead(UnicodeView path, std::size_t most, Bytes& out);

 private:
  struct Answer {
    Status status = Status::Unknown;
    FileInfo info;
  };
  using Answers = detail::TextTable<Answer>;

  Answer Look(UnicodeView path, FsView view);
  Answer LookOnDisk(UnicodeView path, FsView view);
  [[nodiscard]] const FileChange* ChangeOf(const std::string& local) const;
  Status FolderPlace(const WinPath& path, DiskPlace& out);
  [[nodiscard]] bool IsGiven(const DiskPlace& place) const;
  Status TargetOf(const WinPath& path, FileTarget& out);
  bool OverlayTarget(UnicodeView path, FsView view, FileTarget& out);
  Status Change(JournalAction action, const FileTarget& target, FileChange change);
  Status ListOnDisk(UnicodeView path, FsView view, std::vector<DirEntry>& out);
  Status Find(UnicodeView path, FsView view, Found& out);
  void Redirect(WinPath& path) const;
  [[nodiscard]] bool IsShared(const std::vector<UnicodeString>& parts, std::size_t from) const;

  DriveTree& drives_;
  RedirectionRules rules_;
  WinPath systemRoot_;
  IFileObserver* observer_ = nullptr;
  FileChanges changes_;
  Answers answers_[2];
  UnicodeString key_;  // kept so that a look-up that hits allocates nothing
};

}  // namespace scrubwell::offline
