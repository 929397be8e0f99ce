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

Status SizeOf(const Found& found, FileInfo& out) {
  out = {found.isFolder, 0};
  if (found.isFolder) return Status::Ok;
  const UniqueFd fd =
      OpenBelow(found.folder->Owner(), found.folder->RelativeOf(found.entry), O_PATH);
  struct stat info {};
  // Its folder lists it, so it is there, whatever else can be learnt of it.
  if (fd.Good() && ::fstat(fd.Get(), &info) == 0) {
    out.size = static_cast<std::uint64_t>(std::max<off_t>(info.st_size, 0));
  }
  return Status::Ok;
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

}  // namespace

void OfflineFiles::SetRedirection(RedirectionRules rules) {
  rules_ = std::move(rules);
  if (!ParsePath(rules_.systemRoot, systemRoot_)) rules_.is64Bit = false;
  for (Answers& answers : answers_) answers.clear();
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

OfflineFiles::Answer OfflineFiles::Look(UnicodeView path, FsView view) {
  Answer answer;
  Found found;
  answer.status = Find(path, view, found);
  if (answer.status == Status::Ok) {
    answer.status = SizeOf(found, answer.info);
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

Status OfflineFiles::Stat(UnicodeView path, FsView view, FileInfo& out) {
  key_.resize(path.size());
  std::transform(path.begin(), path.end(), key_.begin(),
                 [](char16_t unit) { return UpCase(unit); });
  Answers& answers = answers_[view == FsView::Redirected ? 1 : 0];
  auto known = answers.find(key_);
  if (known == answers.end()) {
    if (answers.size() >= kMaxAnswers) answers.clear();
    known = answers.emplace(key_, Look(path, view)).first;
  }
  out = known->second.info;
  return known->second.status;
}

Status OfflineFiles::List(UnicodeView path, FsView view, std::vector<DirEntry>& out) {
  out.clear();
  Found found;
  const Status status = Find(path, view, found);
  if (status != Status::Ok) return status;
  if (!found.isFolder) return Status::Absent;
  Folder& folder = *found.folder;
  if (const Status loaded = folder.Load(); loaded != Status::Ok) return loaded;
  const UniqueFd fd = OpenBelow(folder.Owner(), folder.Relative(), O_PATH | O_DIRECTORY);
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
  Found found;
  const Status status = Find(path, view, found);
  if (status != Status::Ok) return status;
  if (found.isFolder) return Status::Denied;
  const UniqueFd fd = OpenBelow(found.folder->Owner(), found.folder->RelativeOf(found.entry),
                                O_RDONLY | O_NONBLOCK);
  if (!fd.Good()) return FromErrno(errno);
  struct stat info {};
  if (::fstat(fd.Get(), &info) != 0 || !S_ISREG(info.st_mode)) return Status::Unknown;
  const auto size = static_cast<std::uint64_t>(info.st_size);
  if (size > limit) return Status::Corrupt;
  return ReadAll(fd.Get(), static_cast<std::size_t>(size), out);
}

Status OfflineFiles::LocalPath(UnicodeView path, std::string& out, FsView view) {
  Found found;
  const Status status = Find(path, view, found);
  if (status != Status::Ok) return status;
  const std::string relative =
      found.isFolder ? found.folder->Relative() : found.folder->RelativeOf(found.entry);
  out = found.folder->Owner().canonical + (relative.empty() ? "" : "/" + relative);
  return Status::Ok;
}

// The disk of a switched-off system is not changed outside of a transaction, which this box does
// not begin by itself.
Status OfflineFiles::Write(UnicodeView, const Bytes&) {
  return Status::Denied;
}
Status OfflineFiles::EraseFile(UnicodeView) {
  return Status::Denied;
}
Status OfflineFiles::EraseFolder(UnicodeView) {
  return Status::Denied;
}
Status OfflineFiles::Backup(UnicodeView) {
  return Status::Denied;
}

}  // namespace scrubwell::offline
