#include "backends/offline/drive_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsAscii(UnicodeView text) {
  return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

Folder::Kind KindOf(int folder, const dirent& entry) {
  if (entry.d_type == DT_DIR) return Folder::Kind::Folder;
  if (entry.d_type == DT_LNK) return Folder::Kind::Link;
  if (entry.d_type != DT_UNKNOWN) return Folder::Kind::File;
  struct stat info {};
  if (::fstatat(folder, entry.d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) return Folder::Kind::File;
  if (S_ISDIR(info.st_mode)) return Folder::Kind::Folder;
  return S_ISLNK(info.st_mode) ? Folder::Kind::Link : Folder::Kind::File;
}

// The more telling of two answers about candidates of one name.
Status Combine(Status a, Status b) {
  if (a == Status::Ok || b == Status::Ok) return Status::Ok;
  return a == Status::Absent ? b : a;
}

void SplitLinux(std::string_view text, std::vector<UnicodeString>& parts) {
  while (!text.empty()) {
    const std::size_t slash = std::min(text.find('/'), text.size());
    const std::string_view part = text.substr(0, slash);
    if (!part.empty() && part != ".") parts.push_back(FromUtf8(part));
    text.remove_prefix(std::min(text.size(), slash + 1));
  }
}

// Takes ".." out. False where it climbs above the start: that leads out of the drive.
bool Normalise(std::vector<UnicodeString>& parts) {
  std::vector<UnicodeString> kept;
  for (UnicodeString& part : parts) {
    if (part != u"..") {
      kept.push_back(std::move(part));
    } else if (kept.empty()) {
      return false;
    } else {
      kept.pop_back();
    }
  }
  parts = std::move(kept);
  return true;
}

}  // namespace

Status FromErrno(int error) {
  return error == EACCES || error == EPERM ? Status::Denied : Status::Unknown;
}

std::size_t Folder::UpperHash::operator()(UnicodeView name) const {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const char16_t unit : name) hash = (hash ^ UpCase(unit)) * 0x100000001B3U;
  return static_cast<std::size_t>(hash ^ (hash >> 32U));
}

bool Folder::UpperEqual::operator()(UnicodeView a, UnicodeView b) const {
  return SameText(a, b);
}

void Folder::Add(std::string_view rawName, Kind kind) {
  Entry entry;
  entry.kind = kind;
  entry.name = FromUtf8(rawName);
  if (!IsAscii(rawName) && ToUtf8(entry.name) != rawName) {
    rawNames_.emplace(entries_.size(), rawName);
    foreignNames_ = true;
  }
  // Windows names hold no "?": a file system driver puts it for what it can't show.
  if (rawName.find('?') != std::string_view::npos) foreignNames_ = true;
  entries_.push_back(std::move(entry));
}

Status Folder::ReadAll() {
  UniqueFd fd = Place().Open(O_RDONLY | O_DIRECTORY);
  if (!fd.Good()) return FromErrno(errno);
  DIR* const stream = ::fdopendir(fd.Get());
  if (stream == nullptr) return Status::Unknown;
  fd.Release();
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(stream);
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") Add(name, KindOf(::dirfd(stream), *entry));
  }
  const int error = errno;
  ::closedir(stream);
  return error == 0 ? Status::Ok : FromErrno(error);
}

void Folder::BuildIndex() {
  index_.reserve(entries_.size());
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    index_.emplace(entries_[i].name, static_cast<std::uint32_t>(i));
  }
}

Status Folder::Load() {
  if (!loaded_) {
    loaded_ = true;
    state_ = ReadAll();
    BuildIndex();
  }
  return state_;
}

Status Folder::Find(UnicodeView name, std::vector<std::size_t>& out) {
  out.clear();
  Load();
  const auto range = index_.equal_range(name);
  for (auto it = range.first; it != range.second; ++it) out.push_back(it->second);
  if (!out.empty()) return Status::Ok;
  if (state_ != Status::Ok) return state_;
  if (IsShortNameForm(name)) return FindShortName(name, out);
  return foreignNames_ && !IsAscii(name) ? Status::Unknown : Status::Absent;
}

bool Folder::HasDosName(std::size_t index, UnicodeView name) const {
  const UniqueFd fd = Place().Open(O_PATH | O_DIRECTORY);
  if (!fd.Good()) return false;
  const std::string path = RelativeOf(index);
  const std::string file = path.substr(relative_.empty() ? 0 : relative_.size() + 1);
  const std::string place = "/proc/self/fd/" + std::to_string(fd.Get()) + "/" + file;
  std::array<char, 64> text{};
  const ssize_t size = ::lgetxattr(place.c_str(), "system.ntfs_dos_name", text.data(), text.size());
  return size > 0 && SameText(FromUtf8({text.data(), static_cast<std::size_t>(size)}), name);
}

Status Folder::FindShortName(UnicodeView name, std::vector<std::size_t>& out) {
  const UnicodeString upper = UpperCase(name);
  if (const auto earlier = shortNames_.find(upper); earlier != shortNames_.end()) {
    if (!earlier->second) return Status::Unknown;
    out.push_back(*earlier->second);
    return Status::Ok;
  }
  std::vector<std::size_t> candidates;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (!MayBeShortNameOf(name, entries_[i].name)) continue;
    candidates.push_back(i);
    if (!HasDosName(i, name)) continue;
    candidates.assign(1, i);
    break;
  }
  // No candidate proves nothing either: the short name of a renamed file stays as it was.
  const bool known = candidates.size() == 1;
  shortNames_.emplace(upper, known ? std::optional(candidates.front()) : std::nullopt);
  if (!known) return Status::Unknown;
  out = candidates;
  return Status::Ok;
}

std::string Folder::RelativeOf(std::size_t index) const {
  const auto raw = rawNames_.find(index);
  const std::string name = raw != rawNames_.end() ? raw->second : ToUtf8(entries_[index].name);
  return relative_.empty() ? name : relative_ + "/" + name;
}

DiskPlace Folder::Place() const {
  return DiskPlace(drive_.root, relative_);
}

DiskPlace Folder::PlaceOf(std::size_t index) const {
  return DiskPlace(drive_.root, RelativeOf(index));
}

Folder& Folder::Child(std::size_t index) {
  std::unique_ptr<Folder>& child = entries_[index].child;
  if (child == nullptr) child = std::make_unique<Folder>(drive_, RelativeOf(index));
  return *child;
}

bool DriveTree::Add(char16_t letter, const std::string& folder, DriveKind kind, std::string& error,
                    bool isGiven) {
  letter = UpCase(letter);
  if (drives_.contains(letter)) {
    error = folder + ": the drive letter is taken already";
    return false;
  }
  DiskRoot root;
  if (const int wrong = OpenRoot(folder, root); wrong != 0) {
    error = folder + ": " + std::strerror(wrong);
    return false;
  }
  Drive& drive = drives_[letter];
  drive.letter = letter;
  drive.kind = kind;
  drive.path = folder;
  drive.root = std::move(root);
  drive.isGiven = isGiven;
  drive.tree = std::make_unique<Folder>(drive, std::string());
  return true;
}

bool DriveTree::Rename(char16_t from, char16_t to) {
  if (from == to) return true;
  if (drives_.contains(to)) return false;
  // The node moves, so folders keep their reference to the drive.
  auto node = drives_.extract(from);
  if (node.empty()) return false;
  node.key() = to;
  node.mapped().letter = to;
  drives_.insert(std::move(node));
  return true;
}

const Drive* DriveTree::Get(char16_t letter) const {
  const auto it = drives_.find(UpCase(letter));
  return it == drives_.end() ? nullptr : &it->second;
}

bool DriveTree::IsGiven(const DiskRoot& root) const {
  return std::any_of(drives_.begin(), drives_.end(), [&root](const auto& drive) {
    return &drive.second.root == &root && drive.second.isGiven;
  });
}

Status DriveTree::Resolve(const WinPath& path, Found& out) {
  const Drive* const drive = Get(path.letter);
  if (drive == nullptr) return Status::Unknown;
  Budget budget;
  return Walk(*drive->tree, path.parts, budget, out);
}

Status DriveTree::ResolveEntry(Folder& folder, std::size_t entry, Found& out) {
  Budget budget;
  return Enter(folder, entry, {}, budget, out);
}

Status DriveTree::Walk(Folder& at, Parts parts, Budget& budget, Found& out) {
  if (parts.empty()) {
    out = {&at, true, 0};
    return Status::Ok;
  }
  if (--budget.steps < 0) return Status::Unknown;
  // The name as it is written comes first: files whose names really end in a dot exist.
  std::vector<std::size_t> matches;
  Status result = at.Find(parts.front(), matches);
  if (result == Status::Absent) {
    const UnicodeView stripped = StripComponent(parts.front(), parts.size() == 1);
    if (stripped.empty()) return Walk(at, parts.subspan(1), budget, out);
    if (stripped != parts.front()) result = at.Find(stripped, matches);
  }
  if (result != Status::Ok) return result;
  result = Status::Absent;
  for (const std::size_t match : matches) {
    result = Combine(result, Enter(at, match, parts.subspan(1), budget, out));
    if (result == Status::Ok) break;
  }
  return result;
}

Status DriveTree::Enter(Folder& at, std::size_t entry, Parts rest, Budget& budget, Found& out) {
  switch (at.Entries()[entry].kind) {
    case Folder::Kind::Link:
      return FollowLink(at, entry, rest, budget, out);
    case Folder::Kind::Folder:
      return Walk(at.Child(entry), rest, budget, out);
    case Folder::Kind::File:
      break;
  }
  if (!rest.empty()) return Status::Absent;
  out = {&at, false, entry};
  return Status::Ok;
}

Status DriveTree::FollowLink(Folder& at, std::size_t entry, Parts rest, Budget& budget,
                             Found& out) {
  if (--budget.links < 0) return Status::Unknown;
  const UniqueFd link = at.PlaceOf(entry).Open(O_PATH);
  std::array<char, PATH_MAX> text{};
  const ssize_t size = link.Good() ? ::readlinkat(link.Get(), "", text.data(), text.size()) : -1;
  if (size <= 0 || static_cast<std::size_t>(size) >= text.size()) return Status::Unknown;
  std::vector<UnicodeString> parts;
  Folder* const start = LinkStart(at, {text.data(), static_cast<std::size_t>(size)}, parts);
  if (start == nullptr || !Normalise(parts)) return Status::Unknown;
  parts.insert(parts.end(), rest.begin(), rest.end());
  return Walk(*start, parts, budget, out);
}

// Where the walk over a link's target begins, and its parts from there; null when it can't be told
// or lies outside the drives.
Folder* DriveTree::LinkStart(const Folder& at, const std::string& target,
                             std::vector<UnicodeString>& parts) {
  // What the file system driver puts for reparse points that it doesn't understand.
  if (target.starts_with("unsupported reparse")) return nullptr;
  UnicodeString text = FromUtf8(target);
  // The question marks are escaped for the sake of compilers that know trigraphs.
  const bool isRaw =
      text.starts_with(u"/\?\?/") || text.starts_with(u"\\\?\?\\") || text.starts_with(u"\\\\?\\");
  if (isRaw) text.erase(0, 4);
  if (text.size() >= 2 && text[1] == u':') {
    WinPath path;
    const Drive* const drive = ParsePath(text, path) ? Get(path.letter) : nullptr;
    if (drive == nullptr) return nullptr;
    parts = std::move(path.parts);
    return drive->tree.get();
  }
  // A volume without a letter.
  if (isRaw) return nullptr;
  if (target.front() == '/') return MappedFolder(target, parts);
  // A raw relative target still has the separators of Windows; one of them in front means the
  // root of the same drive.
  const bool fromRoot = text.front() == u'\\';
  if (text.find(u'/') == UnicodeString::npos) std::replace(text.begin(), text.end(), u'\\', u'/');
  if (!fromRoot) SplitLinux(at.Relative(), parts);
  SplitLinux(ToUtf8(text), parts);
  return at.Owner().tree.get();
}

Folder* DriveTree::MappedFolder(const std::string& target, std::vector<UnicodeString>& parts) {
  for (auto& [letter, drive] : drives_) {
    for (const std::string& root : {drive.root.path, drive.path}) {
      if (root.empty() || root.front() != '/' || !target.starts_with(root)) continue;
      const std::string_view rest = std::string_view(target).substr(root.size());
      if (!rest.empty() && rest.front() != '/' && root.back() != '/') continue;
      SplitLinux(rest, parts);
      return drive.tree.get();
    }
  }
  return nullptr;
}

}  // namespace scrubwell::offline
