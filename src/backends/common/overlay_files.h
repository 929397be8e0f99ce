// Files whose changes are held back: every answer shows them as made, while the files beneath stay
// as they are.
#pragma once

#include <functional>
#include <map>

#include "backends/common/overlay_plan.h"
#include "registry/platform.h"

namespace scrubwell {

class OverlayFiles final : public IFiles {
 public:
  /// Gives the path under which a file that is looked up in a view lies on the disk.
  using PhysicalPath = std::function<UnicodeString(UnicodeView path, FsView view)>;
  OverlayFiles(IFiles& base, IPlan& plan, PhysicalPath physical)
      : base_(base), plan_(plan), physical_(std::move(physical)) {}

  DriveKind Drive(char16_t letter) override { return base_.Drive(letter); }
  Status Stat(UnicodeView path, FsView view, FileInfo& out) override;
  Status Size(UnicodeView path, FsView view, std::uint64_t& out) override;
  Status List(UnicodeView path, FsView view, std::vector<DirEntry>& out) override;
  Status Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) override;
  /// Denied for a file that is too large to be kept.
  Status Write(UnicodeView path, const Bytes& data) override;
  Status EraseFile(UnicodeView path) override;
  Status EraseFolder(UnicodeView path) override;
  Status Backup(UnicodeView path) override;

  /// True when something is planned for that file.
  [[nodiscard]] bool IsChanged(UnicodeView path) const {
    return Find(path, FsView::Physical) != nullptr;
  }

 private:
  struct Planned {
    UnicodeString name;
    bool isGone = false;
    Bytes data;
  };
  [[nodiscard]] UnicodeString Mark(UnicodeView path, FsView view) const;
  [[nodiscard]] const Planned* Find(UnicodeView path, FsView view) const;
  Status Take(JournalAction action, UnicodeView path, PlannedChange& out);

  IFiles& base_;
  IPlan& plan_;
  PhysicalPath physical_;
  std::map<UnicodeString, Planned> planned_;  ///< by normalised path
};

}  // namespace scrubwell
