// Drive letters over folders of this machine, walked by the rules of Windows: letter case ignored,
// links followed by us and never by this machine, nothing outside the given folders touched.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>

#include "backends/offline/disk_place.h"
#include "backends/offline/win_path.h"
#include "registry/platform.h"

namespace scrubwell::offline {

struct Drive;

/// One folder with its entries, which are read at the first look-up.
class Folder {
 public:
  enum class Kind : std::uint8_t { File, Folder, Link };
  struct Entry {
    UnicodeString name;
    Kind kind = Kind::File;
    std::unique_ptr<Folder> child;
  };

  Folder(const Drive& drive, std::string relative)
      : drive_(drive), relative_(std::move(relative)) {}

  /// Indices of the entries of that name; several on a volume that tells letter case apart.
  /// Absent only when the whole folder was read. May read the folder.
  Status Find(UnicodeView name, std::vector<std::size_t>& out);
  /// Reads the folder when that has not been done yet; the Status tells whether it is whole.
  Status Load();
  [[nodiscard]] std::vector<Entry>& Entries() { return entries_; }
  Folder& Child(std::size_t index);
  /// Path below the drive's folder with this machine's separators; empty for the drive's own.
  [[nodiscard]] const std::string& Relative() const { return relative_; }
  [[nodiscard]] std::string RelativeOf(std::size_t index) const;
  [[nodiscard]] const Drive& Owner() const { return drive_; }
  [[nodiscard]] DiskPlace Place() const;
  [[nodiscard]] DiskPlace PlaceOf(std::size_t index) const;

 private:
  struct UpperHash {
    std::size_t operator()(UnicodeView name) const;
  };
  struct UpperEqual {
    bool operator()(UnicodeView a, UnicodeView b) const;
  };
  using Index = std::unordered_multimap<UnicodeView, std::uint32_t, UpperHash, UpperEqual>;

  Status ReadAll();
  void Add(std::string_view rawName, Kind kind);
  void BuildIndex();
  Status FindShortName(UnicodeView name, std::vector<std::size_t>& out);
  [[nodiscard]] bool HasDosName(std::size_t index, UnicodeView name) const;

  const Drive& drive_;
  std::string relative_;
  bool loaded_ = false;
  Status state_ = Status::Ok;
  bool foreignNames_ = false;  // names that this machine can't show as Windows wrote them
  std::vector<Entry> entries_;
  std::unordered_map<std::size_t, std::string> rawNames_;  // where they differ from the UTF-8 form
  Index index_;
  std::unordered_map<UnicodeString, std::optional<std::size_t>> shortNames_;  // none: not known
};

struct Drive {
  char16_t letter = 0;
  DriveKind kind = DriveKind::Unknown;
  std::string path;  // as given
  DiskRoot root;
  /// Named by the user. Others, which the disk itself names, are only read.
  bool isGiven = true;
  std::unique_ptr<Folder> tree;
};

/// A place that was found.
struct Found {
  Folder* folder = nullptr;  ///< the folder itself, or the one that holds the file
  bool isFolder = false;
  std::size_t entry = 0;  ///< index of the file; only when isFolder is false

  [[nodiscard]] DiskPlace Place() const {
    return isFolder ? folder->Place() : folder->PlaceOf(entry);
  }
};

/// The drives and the walk over them.
class DriveTree {
 public:
  /// False when the folder can't be opened or the letter is taken; `error` then says why.
  bool Add(char16_t letter, const std::string& folder, DriveKind kind, std::string& error,
           bool isGiven = true);
  /// Moves a drive to another letter. False when that letter is taken.
  bool Rename(char16_t from, char16_t to);
  [[nodiscard]] const Drive* Get(char16_t letter) const;
  /// Whether the user named the drive that this is the root of.
  [[nodiscard]] bool IsGiven(const DiskRoot& root) const;

  /// Absent only when it is proven: every folder on the way was read whole.
  Status Resolve(const WinPath& path, Found& out);
  /// Where an entry of a folder leads; a link that leads nowhere known is Unknown.
  Status ResolveEntry(Folder& folder, std::size_t entry, Found& out);

 private:
  using Parts = std::span<const UnicodeString>;
  struct Budget {
    int links = 40;
    int steps = 4096;
  };
  Status Walk(Folder& at, Parts parts, Budget& budget, Found& out);
  Status Enter(Folder& at, std::size_t entry, Parts rest, Budget& budget, Found& out);
  Status FollowLink(Folder& at, std::size_t entry, Parts rest, Budget& budget, Found& out);
  Folder* LinkStart(const Folder& at, const std::string& target, std::vector<UnicodeString>& parts);
  Folder* MappedFolder(const std::string& target, std::vector<UnicodeString>& parts);

  std::map<char16_t, Drive> drives_;
};

/// What a failed system call says about the thing it was asked for. Never Absent.
Status FromErrno(int error);

}  // namespace scrubwell::offline
