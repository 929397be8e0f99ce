#include "backends/offline/offline_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr std::size_t kMaxAnswers = 400'000;

// Folders below System32 that both kinds of process share.
struct SharedFolder {
  UnicodeView first;
  UnicodeView second;
};
constexpr std::array<SharedFolder, 5> kSharedFolders = {{
    {u"catroot", {}},
    {u"catroot2", {}},
    {u"drivers", u"etc"},
    {u"logfiles", {}},
    {u"spool", {}},
}};

bool PartIs(const std::vector<UnicodeString>& parts, std::size_t index, UnicodeView text) {
  return index < parts.size() && SameText(StripComponent(parts[index], true), text);
}

Status ReadAll(int fd, std::size_t size, Bytes& out) {
  out.resize(size);
  std::size_t done = 0;
  while (done < size) {
    const ssize_t got = ::read(fd, out.data() + done, size - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return Status::Unknown;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  out.resize(done);
  return Status::Ok;
}

bool IsThere(const FileChange& change) {
  return change.kind == FileChange::Kind::Written || change.kind == FileChange::Kind::FolderMade;
}

}  // namespace

void OfflineFiles::SetRedirection(RedirectionRules rules) {
  rules_ = std::move(rules);
  if (!ParsePath(rules_.systemRoot, systemRoot_)) rules_.is64Bit = false;
  for (Answers& answers : answers_) answers.Clear();
}

DriveKind OfflineFiles::Drive(char16_t letter) {
  const offline::Drive* const drive = drives_.Get(letter);
  return drive == nullptr ? DriveKind::Unknown : drive->kind;
}

bool OfflineFiles::IsShared(const std::vector<UnicodeString>& parts, std::size_t from) const {
  if (rules_.sharesDriverStore && PartIs(parts, from, u"driverstore")) return true;
  return std::any_of(kSharedFolders.begin(), kSharedFolders.end(), [&](const SharedFolder& shared) {
    return PartIs(parts, from, shared.first) &&
           (shared.second.empty() || PartIs(parts, from + 1, shared.second));
  });
}

void OfflineFiles::Redirect(WinPath& path) const {
  std::vector<UnicodeString>& parts = path.parts;
  const std::size_t depth = systemRoot_.parts.size();
  if (!rules_.is64Bit || path.letter != systemRoot_.letter || parts.size() <= depth) return;
  for (std::size_t i = 0; i < depth; ++i) {
    if (!PartIs(parts, i, systemRoot_.parts[i])) return;
  }
  if (PartIs(parts, depth, u"System32")) {
    if (!IsShared(parts, depth + 1)) parts[depth] = u"SysWOW64";
  } else if (PartIs(parts, depth, u"Sysnative")) {
    parts[depth] = u"System32";
  } else if (PartIs(parts, depth, u"lastgood") && PartIs(parts, depth + 1, u"system32")) {
    parts[depth + 1] = u"SysWOW64";
  } else if (PartIs(parts, depth, u"regedit.exe") && parts.size() == depth + 1) {
    parts.insert(parts.begin() + static_cast<std::ptrdiff_t>(depth), u"SysWOW64");
  }
}

Status OfflineFiles::Find(UnicodeView path, FsView view, Found& out) {
  WinPath cut;
  if (!ParsePath(path, cut)) return Status::Unknown;
  if (view == FsView::Redirected) Redirect(cut);
  return drives_.Resolve(cut, out);
}

OfflineFiles::Answer OfflineFiles::LookOnDisk(UnicodeView path, FsView view) {
  Answer answer;
  Found found;
  answer.status = Find(path, view, found);
  if (answer.status == Status::Ok) {
    answer.info = {found.isFolder};
  } else if (answer.status == Status::Absent) {
    // Devices have a name in every folder.
    WinPath cut;
    if (ParsePath(path, cut) && !cut.literal && !cut.parts.empty() &&
        IsDeviceName(cut.parts.back())) {
      answer.status = Status::Ok;
    }
  }
  return answer;
}

OfflineFiles::Answer OfflineFiles::Look(UnicodeView path, FsView view) {
  FileTarget target;
  if (!OverlayTarget(path, view, target)) return LookOnDisk(path, view);
  Answer answer;
  answer.status = target.exists ? Status::Ok : Status::Absent;
  answer.info = {target.isFolder};
  return answer;
}

Status OfflineFiles::Stat(UnicodeView path, FsView view, FileInfo& out) {
  UpperCaseInto(path, key_);
  Answers& answers = answers_[view == FsView::Redirected ? 1 : 0];
  const Answer* const known = answers.Find(key_);
  const Answer answer = known != nullptr ? *known : Look(path, view);
  if (known == nullptr) {
    if (answers.Size() >= kMaxAnswers) answers.Clear();
    answers.Add(key_, answer);
  }
  out = answer.info;
  return answer.status;
}

Status OfflineFiles::Size(UnicodeView path, FsView view, std::uint64_t& out) {
  out = 0;
  FileTarget target;
  if (OverlayTarget(path, view, target)) {
    out = ChangeOf(target.local)->data.size();
    return target.exists ? Status::Ok : Status::Absent;
  }
  FileInfo info;
  const Status status = Stat(path, view, info);
  if (status != Status::Ok || info.isFolder) return status;
  Found found;
  if (Find(path, view, found) != Status::Ok) return Status::Unknown;  // a device has no size
  const UniqueFd fd = found.Place().Open(O_PATH);
  struct stat facts {};
  if (!fd.Good() || ::fstat(fd.Get(), &facts) != 0) return FromErrno(errno);
  out = static_cast<std::uint64_t>(std::max<off_t>(facts.st_size, 0));
  return Status::Ok;
}

Status OfflineFiles::ListOnDisk(UnicodeView path, FsView view, std::vector<DirEntry>& out) {
  out.clear();
  Found found;
  const Status status = Find(path, view, found);
  if (status != Status::Ok) return status;
  if (!found.isFolder) return Status::Absent;
  Folder& folder = *found.folder;
  if (const Status loaded = folder.Load(); loaded != Status::Ok) return loaded;
  const UniqueFd fd = folder.Place().Open(O_PATH | O_DIRECTORY);
  out.reserve(folder.Entries().size());
  for (std::size_t i = 0; i < folder.Entries().size(); ++i) {
    const Folder::Entry& entry = folder.Entries()[i];
    DirEntry& item = out.emplace_back();
    item.name = entry.name;
    item.isFolder = entry.kind == Folder::Kind::Folder;
    Found target;
    if (entry.kind == Folder::Kind::Link) {
      // A link that can't be followed is most likely a junction.
      item.isFolder = drives_.ResolveEntry(folder, i, target) != Status::Ok || target.isFolder;
    }
    if (item.isFolder || !fd.Good()) continue;
    struct stat info {};
    const std::string relative = folder.RelativeOf(i);
    const std::size_t skip = folder.Relative().empty() ? 0 : folder.Relative().size() + 1;
    if (::fstatat(fd.Get(), relative.c_str() + skip, &info, AT_SYMLINK_NOFOLLOW) == 0) {
      item.size = static_cast<std::uint64_t>(std::max<off_t>(info.st_size, 0));
    }
  }
  return Status::Ok;
}

Status OfflineFiles::Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) {
  out.clear();
  FileTarget target;
  if (OverlayTarget(path, view, target)) {
    if (!target.exists) return Status::Absent;
    if (target.isFolder) return Status::Denied;
    const FileChange& change = *ChangeOf(target.local);
    if (change.data.size() > limit) return Status::Corrupt;
    out = change.data;
    return Status::Ok;
  }
  Found found;
  const Status status = Find(path, view, found);
  if (status != Status::Ok) return status;
  if (found.isFolder) return Status::Denied;
  const int error = ReadWholeFile(found.Place(), out, limit);
  return error == 0 ? Status::Ok : error == EFBIG ? Status::Corrupt : FromErrno(error);
}

Status OfflineFiles::ReadHead(UnicodeView path, std::size_t most, Bytes& out) {
  out.clear();
  DiskPlace place;
  const Status status = Place(path, place);
  if (status != Status::Ok) return status;
  const UniqueFd fd = place.Open(O_RDONLY | O_NONBLOCK);
  if (!fd.Good()) return FromErrno(errno);
  struct stat info {};
  if (::fstat(fd.Get(), &info) != 0) return Status::Unknown;
  if (S_ISDIR(info.st_mode)) return Status::Denied;
  if (!S_ISREG(info.st_mode)) return Status::Unknown;
  return ReadAll(fd.Get(), most, out);
}

Status OfflineFiles::Place(UnicodeView path, DiskPlace& out, FsView view) {
  Found found;
  const Status status = Find(path, view, found);
  if (status != Status::Ok) return status;
  out = found.Place();
  const FileChange* const change = changes_.empty() ? nullptr : ChangeOf(out.Text());
  const bool gone = change != nullptr && (change->kind == FileChange::Kind::Erased ||
                                          change->kind == FileChange::Kind::FolderErased);
  return gone ? Status::Absent : Status::Ok;
}

const FileChange* OfflineFiles::ChangeOf(const std::string& local) const {
  const auto it = changes_.find(local);
  return it == changes_.end() ? nullptr : &it->second;
}

void OfflineFiles::SetChanges(FileChanges changes) {
  changes_ = std::move(changes);
  for (Answers& answers : answers_) answers.Clear();
}

// Where a folder lies that is there, on the disk or among the changes.
Status OfflineFiles::FolderPlace(const WinPath& path, DiskPlace& out) {
  Found found;
  Status status = drives_.Resolve(path, found);
  if (status == Status::Ok) {
    if (!found.isFolder) return Status::Absent;
    out = found.Place();
  } else if (status == Status::Absent && !path.parts.empty()) {
    FileTarget target;
    status = TargetOf(path, target);
    if (status == Status::Ok && !target.isFolder) status = Status::Absent;
    out = target.place;
  }
  if (status != Status::Ok) return status;
  const FileChange* const change = ChangeOf(out.Text());
  return change != nullptr && !IsThere(*change) ? Status::Absent : Status::Ok;
}

Status OfflineFiles::TargetOf(const WinPath& path, FileTarget& out) {
  const offline::Drive* const drive = drives_.Get(path.letter);
  if (path.parts.empty() || (drive != nullptr && !drive->isGiven)) return Status::Denied;
  out = {};
  out.path = PathText(path);
  WinPath parent = path;
  parent.parts.pop_back();
  DiskPlace folder;
  Status status = FolderPlace(parent, folder);
  if (status != Status::Ok) return status;
  Found found;
  Found holder;
  status = drives_.Resolve(path, found);
  if (status == Status::Ok) {
    std::vector<std::size_t> entries;
    const UnicodeView name = StripComponent(path.parts.back(), true);
    if (drives_.Resolve(parent, holder) != Status::Ok) return Status::Unknown;
    if (holder.folder->Find(path.parts.back(), entries) != Status::Ok) {
      holder.folder->Find(name, entries);
    }
    if (entries.size() != 1) return Status::Unknown;
    if (holder.folder->Entries()[entries[0]].kind == Folder::Kind::Link) return Status::Denied;
    out.place = found.Place();
    out.exists = true;
    out.isFolder = found.isFolder;
  } else if (status == Status::Absent) {
    out.place = folder / ToUtf8(path.parts.back());
  } else {
    return status;
  }
  // A link on the way may have led to a drive that the user did not name.
  if (!IsGiven(out.place)) return Status::Denied;
  out.local = out.place.Text();
  if (const FileChange* const change = ChangeOf(out.local)) {
    out.exists = IsThere(*change);
    out.isFolder = change->kind == FileChange::Kind::FolderMade;
  }
  return Status::Ok;
}

bool OfflineFiles::IsGiven(const DiskPlace& place) const {
  return drives_.IsGiven(place.Root());
}

Status OfflineFiles::Target(UnicodeView path, FileTarget& out) {
  WinPath cut;
  return ParsePath(path, cut) ? TargetOf(cut, out) : Status::Unknown;
}

// True when the path names something that was changed.
bool OfflineFiles::OverlayTarget(UnicodeView path, FsView view, FileTarget& out) {
  WinPath cut;
  if (changes_.empty() || !ParsePath(path, cut)) return false;
  if (view == FsView::Redirected) Redirect(cut);
  return TargetOf(cut, out) == Status::Ok && ChangeOf(out.local) != nullptr;
}

Status OfflineFiles::List(UnicodeView path, FsView view, std::vector<DirEntry>& out) {
  if (changes_.empty()) return ListOnDisk(path, view, out);
  out.clear();
  WinPath cut;
  if (!ParsePath(path, cut)) return Status::Unknown;
  if (view == FsView::Redirected) Redirect(cut);
  DiskPlace folder;
  Status status = FolderPlace(cut, folder);
  if (status != Status::Ok) return status;
  status = ListOnDisk(path, view, out);
  if (status != Status::Ok && status != Status::Absent) return status;
  std::string below = folder.Text();
  if (!below.ends_with('/')) below += '/';
  for (auto it = changes_.lower_bound(below); it != changes_.end() && it->first.starts_with(below);
       ++it) {
    const std::string name = it->first.substr(below.size());
    if (name.find('/') != std::string::npos) continue;
    const UnicodeString entryName = FromUtf8(name);
    std::erase_if(out, [&](const DirEntry& entry) { return SameText(entry.name, entryName); });
    const bool isFolder = it->second.kind == FileChange::Kind::FolderMade;
    if (IsThere(it->second)) out.push_back({entryName, isFolder, it->second.data.size()});
  }
  return Status::Ok;
}

Status OfflineFiles::Change(JournalAction action, const FileTarget& target, FileChange change) {
  const Bytes* const data = change.kind == FileChange::Kind::Written ? &change.data : nullptr;
  if (!observer_->BeforeFileChange(action, target, data)) return Status::Denied;
  change.path = target.path;
  change.place = target.place;
  // A folder that is made again where one was to go just stays.
  const FileChange* const before = ChangeOf(target.local);
  if (change.kind == FileChange::Kind::FolderMade && before != nullptr) {
    changes_.erase(target.local);
  } else {
    changes_[target.local] = std::move(change);
  }
  for (Answers& answers : answers_) answers.Clear();
  return Status::Ok;
}

void OfflineFiles::SetAttributes(const FileTarget& target, const FileAttributes& attributes) {
  if (const auto it = changes_.find(target.local); it != changes_.end()) {
    it->second.attributes = attributes;
  }
}

Status OfflineFiles::Write(UnicodeView path, const Bytes& data) {
  if (observer_ == nullptr) return Status::Denied;
  FileTarget target;
  const Status status = Target(path, target);
  if (status != Status::Ok) return status;
  if (target.exists && target.isFolder) return Status::Denied;
  return Change(JournalAction::WriteFile, target, {FileChange::Kind::Written, {}, {}, data, {}});
}

Status OfflineFiles::EraseFile(UnicodeView path) {
  if (observer_ == nullptr) return Status::Denied;
  FileTarget target;
  const Status status = Target(path, target);
  if (status != Status::Ok) return status;
  if (!target.exists) return Status::Absent;
  if (target.isFolder) return Status::Denied;
  return Change(JournalAction::EraseFile, target, {FileChange::Kind::Erased, {}, {}, {}, {}});
}

Status OfflineFiles::EraseFolder(UnicodeView path) {
  if (observer_ == nullptr) return Status::Denied;
  FileTarget target;
  std::vector<DirEntry> entries;
  Status status = Target(path, target);
  if (status == Status::Ok && !target.exists) status = Status::Absent;
  if (status == Status::Ok) status = List(path, FsView::Physical, entries);
  if (status != Status::Ok) return status;
  if (!target.isFolder || !entries.empty()) return Status::Denied;
  return Change(JournalAction::EraseFolder, target,
                {FileChange::Kind::FolderErased, {}, {}, {}, {}});
}

Status OfflineFiles::MakeFolder(UnicodeView path) {
  if (observer_ == nullptr) return Status::Denied;
  FileTarget target;
  const Status status = Target(path, target);
  if (status != Status::Ok || (target.exists && target.isFolder)) return status;
  if (target.exists) return Status::Denied;
  return Change(JournalAction::WriteFile, target, {FileChange::Kind::FolderMade, {}, {}, {}, {}});
}

Status OfflineFiles::Backup(UnicodeView path) {
  if (observer_ == nullptr) return Status::Denied;
  FileTarget target;
  const Status status = Target(path, target);
  if (status != Status::Ok) return status;
  if (!target.exists) return Status::Absent;
  if (target.isFolder) return Status::Denied;
  return observer_->BeforeFileChange(JournalAction::KeepFile, target, nullptr) ? Status::Ok
                                                                               : Status::Denied;
}

}  // namespace scrubwell::offline
