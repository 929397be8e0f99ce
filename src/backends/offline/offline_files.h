// The files of the switched-off system.
#pragma once

#include <unordered_map>

#include "backends/offline/drive_tree.h"

namespace scrubwell::offline {

/// Which folders a 32-bit process is shown in place of others.
struct RedirectionRules {
  bool is64Bit = false;
  /// Windows 7 and later keep the driver store out of it.
  bool sharesDriverStore = true;
  UnicodeString systemRoot;  ///< "C:\Windows"
};

/// Answers are remembered: the disk does not change under a scan.
class OfflineFiles final : public IFiles {
 public:
  explicit OfflineFiles(DriveTree& drives) : drives_(drives) {}
  void SetRedirection(RedirectionRules rules);

  DriveKind Drive(char16_t letter) override;
  Status Stat(UnicodeView path, FsView view, FileInfo& out) override;
  Status List(UnicodeView path, FsView view, std::vector<DirEntry>& out) override;
  Status Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) override;
  Status Write(UnicodeView path, const Bytes& data) override;
  Status EraseFile(UnicodeView path) override;
  Status EraseFolder(UnicodeView path) override;
  Status Backup(UnicodeView path) override;

  /// This machine's path of a file or folder, free of links, for libraries that open by path.
  Status LocalPath(UnicodeView path, std::string& out, FsView view = FsView::Physical);

 private:
  struct Answer {
    Status status = Status::Unknown;
    FileInfo info;
  };
  using Answers = std::unordered_map<UnicodeString, Answer>;

  Answer Look(UnicodeView path, FsView view);
  Status Find(UnicodeView path, FsView view, Found& out);
  void Redirect(WinPath& path) const;
  [[nodiscard]] bool IsShared(const std::vector<UnicodeString>& parts, std::size_t from) const;

  DriveTree& drives_;
  RedirectionRules rules_;
  WinPath systemRoot_;
  Answers answers_[2];
  UnicodeString key_;  // kept so that a look-up that hits allocates nothing
};

}  // namespace scrubwell::offline
