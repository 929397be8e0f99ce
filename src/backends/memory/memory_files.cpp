#include "backends/memory/memory_files.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell {

namespace {

struct Less {
  using is_transparent = void;
  bool operator()(UnicodeView a, UnicodeView b) const { return CompareUpCase(a, b) < 0; }
};

struct DriveName {
  UnicodeView name;
  DriveKind kind;
};
constexpr DriveName kDriveNames[] = {
    {u"fixed", DriveKind::Fixed},     {u"removable", DriveKind::Removable},
    {u"cdrom", DriveKind::CdRom},     {u"network", DriveKind::Network},
    {u"ramdisk", DriveKind::RamDisk},
};

constexpr UnicodeView kDevices[] = {u"NUL", u"CON", u"PRN", u"AUX"};

// What a 32-bit process sees in the place of what it names, below the Windows folder.
struct Redirection {
  UnicodeView from;
  UnicodeView to;  // empty: shown as it is
};
constexpr Redirection kRedirections[] = {
    {u"System32\\catroot", {}},
    {u"System32\\catroot2", {}},
    {u"System32\\drivers\\etc", {}},
    {u"System32\\logfiles", {}},
    {u"System32\\spool", {}},
    {u"System32\\driverstore", {}},
    {u"System32", u"SysWOW64"},
    {u"Sysnative", u"System32"},
    {u"regedit.exe", u"SysWOW64\\regedit.exe"},
    {u"lastgood\\system32", u"lastgood\\SysWOW64"},
};

char16_t DriveLetter(UnicodeView path) {
  if (path.size() < 2 || path[1] != u':') return 0;
  const char16_t letter = UpCase(path[0]);
  return letter >= u'A' && letter <= u'Z' ? letter : u'\0';
}

bool IsDevice(UnicodeView name) {
  name = name.substr(0, std::min(name.find(u'.'), name.size()));
  if (name.size() == 4 && name[3] >= u'1' && name[3] <= u'9')
    return SameText(name.substr(0, 3), u"COM") || SameText(name.substr(0, 3), u"LPT");
  return std::any_of(std::begin(kDevices), std::end(kDevices),
                     [&](UnicodeView device) { return SameText(device, name); });
}

bool IsShortName(UnicodeView name) {
  const std::size_t tilde = name.find(u'~');
  return tilde != UnicodeView::npos && tilde > 0 && tilde <= 6 && tilde + 1 < name.size() &&
         name[tilde + 1] >= u'0' && name[tilde + 1] <= u'9';
}

// The parts of a drive path, the drive first. False when it is none.
bool Split(UnicodeView path, TStringList& parts) {
  for (const UnicodeView prefix : {UnicodeView(u"\\\\?\\"), UnicodeView(u"\\??\\")})
    if (path.substr(0, prefix.size()) == prefix) path.remove_prefix(prefix.size());
  if (DriveLetter(path) == 0) return false;
  parts = {UnicodeString{DriveLetter(path), u':'}};
  for (std::size_t from = 2; from < path.size();) {
    const std::size_t to = std::min(path.find_first_of(u"\\/", from), path.size());
    UnicodeView part = path.substr(from, to - from);
    from = to + 1;
    if (part == u"..") {
      if (parts.size() > 1) parts.pop_back();
      continue;
    }
    while (!part.empty() && (part.back() == u'.' || part.back() == u' ')) part.remove_suffix(1);
    if (!part.empty()) parts.emplace_back(part);
  }
  return true;
}

UnicodeString Join(const TStringList& parts) {
  UnicodeString path;
  for (const UnicodeString& part : parts) {
    if (!path.empty()) path += u'\\';
    path += part;
  }
  return path;
}

// The bytes that a "text=" option stands for.
Bytes Unescape(UnicodeView text) {
  UnicodeString out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != u'\\' || i + 1 == text.size()) {
      out += text[i];
      continue;
    }
    const char16_t code = text[++i];
    if (code == u'n')
      out += u"\r\n";
    else
      out += code == u't' ? u'\t' : code;
  }
  const std::string bytes = ToUtf8(out);
  return {bytes.begin(), bytes.end()};
}

}  // namespace

struct MemoryFiles::Entry {
  UnicodeString name;
  bool isFolder = true;
  Bytes data;
  Entry* parent = nullptr;
  std::map<UnicodeString, std::unique_ptr<Entry>, Less> children;
};

MemoryFiles::MemoryFiles(MemoryJournal& journal, MemoryFaults& faults, bool is64Bit,
                         bool hasDriverStore)
    : journal_(journal),
      faults_(faults),
      is64Bit_(is64Bit),
      hasDriverStore_(hasDriverStore),
      root_(std::make_unique<Entry>()) {}

MemoryFiles::~MemoryFiles() = default;

// ---- Furnishing ---------------------------------------------------------------------------

std::string MemoryFiles::Add(std::string_view text) {
  const UnicodeString all = FromUtf8(text);
  std::size_t number = 0;
  for (std::size_t from = 0; from < all.size();) {
    const std::size_t to = std::min(all.find(u'\n', from), all.size());
    const std::string wrong = AddLine(Trim(UnicodeView(all).substr(from, to - from)));
    ++number;
    if (!wrong.empty()) return "files, line " + std::to_string(number) + ": " + wrong;
    from = to + 1;
  }
  return {};
}

std::string MemoryFiles::AddLine(UnicodeView line) {
  constexpr UnicodeView driveWord = u"drive ";
  if (line.empty() || line.front() == u'#') return {};
  if (line.substr(0, driveWord.size()) == driveWord) {
    const UnicodeView rest = Trim(line.substr(driveWord.size()));
    const UnicodeView kind = rest.size() > 2 ? Trim(rest.substr(2)) : UnicodeView();
    for (const DriveName& name : kDriveNames)
      if (DriveLetter(rest) != 0 && name.name == kind) return SetDrive(rest[0], name.kind), "";
    return "no such drive or kind of drive";
  }
  const std::size_t bar = std::min(line.find(u'|'), line.size());
  const UnicodeView path = Trim(line.substr(0, bar));
  const UnicodeView option = bar < line.size() ? Trim(line.substr(bar + 1)) : UnicodeView();
  if (DriveLetter(path) == 0) return "a path begins with a drive";
  if (path.back() == u'\\') return AddFolder(path), "";
  if (option.empty()) return AddFile(path), "";
  if (option.substr(0, 5) == u"text=") return AddFile(path, Unescape(option.substr(5))), "";
  const std::int32_t size =
      option.substr(0, 5) == u"size=" ? StrToIntDef(option.substr(5), -1) : -1;
  if (size < 0) return "an option is size=N or text=...";
  return AddFile(path, Bytes(static_cast<std::size_t>(size))), "";
}

void MemoryFiles::SetDrive(char16_t letter, DriveKind kind) {
  const char16_t upper = UpCase(letter);
  if (upper < u'A' || upper > u'Z') return;
  drives_[static_cast<std::size_t>(upper - u'A')] = kind;
  Make({UnicodeString{upper, u':'}}, true);
}

MemoryFiles::Entry* MemoryFiles::Make(const TStringList& parts, bool isFolder) {
  Entry* entry = root_.get();
  for (const UnicodeString& part : parts) {
    auto& child = entry->children[part];
    if (!child) {
      child = std::make_unique<Entry>();
      child->name = part;
      child->parent = entry;
    }
    entry = child.get();
  }
  entry->isFolder = isFolder;
  return entry;
}

void MemoryFiles::AddFile(UnicodeView path, Bytes data) {
  TStringList parts;
  if (!Split(path, parts)) return;
  if (Drive(parts[0][0]) == DriveKind::Unknown) SetDrive(parts[0][0], DriveKind::Fixed);
  Make(parts, false)->data = std::move(data);
}

void MemoryFiles::AddFolder(UnicodeView path) {
  TStringList parts;
  if (!Split(path, parts)) return;
  if (Drive(parts[0][0]) == DriveKind::Unknown) SetDrive(parts[0][0], DriveKind::Fixed);
  Make(parts, true);
}

TStringList MemoryFiles::AllPaths() const {
  TStringList out;
  std::vector<std::pair<const Entry*, UnicodeString>> open{{root_.get(), {}}};
  while (!open.empty()) {
    const auto [entry, path] = std::move(open.back());
    open.pop_back();
    for (const auto& [name, child] : entry->children) {
      const UnicodeString full = path + child->name + (child->isFolder ? u"\\" : u"");
      out.push_back(full);
      if (child->isFolder) open.emplace_back(child.get(), full);
    }
  }
  std::sort(out.begin(), out.end(), Less());
  return out;
}

// ---- Looking ------------------------------------------------------------------------------

DriveKind MemoryFiles::Drive(char16_t letter) {
  const char16_t upper = UpCase(letter);
  if (upper < u'A' || upper > u'Z') return DriveKind::Unknown;
  return drives_[static_cast<std::size_t>(upper - u'A')];
}

namespace {

// The path as a 32-bit process means it.
UnicodeString Redirect(UnicodeView path, bool hasDriverStore) {
  constexpr UnicodeView windows = u"C:\\Windows\\";
  if (path.size() < windows.size() || !SameText(path.substr(0, windows.size()), windows))
    return UnicodeString(path);
  const UnicodeView below = path.substr(windows.size());
  for (const Redirection& rule : kRedirections) {
    if (below.size() < rule.from.size() || !SameText(below.substr(0, rule.from.size()), rule.from))
      continue;
    if (below.size() > rule.from.size() && below[rule.from.size()] != u'\\') continue;
    if (!hasDriverStore && rule.from.ends_with(u"driverstore")) continue;
    if (rule.to.empty()) break;
    return UnicodeString(windows) + UnicodeString(rule.to) +
           UnicodeString(below.substr(rule.from.size()));
  }
  return UnicodeString(path);
}

}  // namespace

Status MemoryFiles::Find(UnicodeView path, FsView view, Entry*& out) {
  const Status status = faults_.Pass(path);
  if (status != Status::Ok) return status;
  TStringList parts;
  if (!Split(path, parts) || Drive(parts[0][0]) == DriveKind::Unknown) return Status::Unknown;
  if (view == FsView::Redirected && is64Bit_) Split(Redirect(Join(parts), hasDriverStore_), parts);
  Entry* entry = root_.get();
  for (const UnicodeString& part : parts) {
    const auto it = entry->children.find(part);
    if (it == entry->children.end()) return IsShortName(part) ? Status::Unknown : Status::Absent;
    entry = it->second.get();
  }
  out = entry;
  return Status::Ok;
}

Status MemoryFiles::Stat(UnicodeView path, FsView view, FileInfo& out) {
  Entry* entry = nullptr;
  const Status status = Find(path, view, entry);
  out = {};
  if (status == Status::Absent && IsDevice(ExtractFileName(path))) return Status::Ok;
  if (status == Status::Ok) out = {entry->isFolder};
  return status;
}

Status MemoryFiles::Size(UnicodeView path, FsView view, std::uint64_t& out) {
  Entry* entry = nullptr;
  const Status status = Find(path, view, entry);
  out = status == Status::Ok ? entry->data.size() : 0;
  // A device is there, but has no size.
  return status == Status::Absent && IsDevice(ExtractFileName(path)) ? Status::Unknown : status;
}

Status MemoryFiles::List(UnicodeView path, FsView view, std::vector<DirEntry>& out) {
  Entry* entry = nullptr;
  const Status status = Find(path, view, entry);
  if (status != Status::Ok) return status;
  if (!entry->isFolder) return Status::Absent;
  out.clear();
  for (const auto& [name, child] : entry->children)
    out.push_back({child->name, child->isFolder, child->data.size()});
  return Status::Ok;
}

Status MemoryFiles::Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) {
  Entry* entry = nullptr;
  const Status status = Find(path, view, entry);
  if (status != Status::Ok) return status;
  if (entry->isFolder) return Status::Absent;
  if (entry->data.size() > limit) return Status::Corrupt;
  out = entry->data;
  return Status::Ok;
}

// ---- Changes ------------------------------------------------------------------------------

Status MemoryFiles::Write(UnicodeView path, const Bytes& data) {
  Entry* entry = nullptr;
  const Status status = Find(path, FsView::Physical, entry);
  if (status != Status::Ok && status != Status::Absent) return status;
  if (status == Status::Ok && entry->isFolder) return Status::Denied;
  journal_.Add(u"write file " + UnicodeString(path));
  AddFile(path, data);
  return Status::Ok;
}

Status MemoryFiles::Erase(UnicodeView path, bool folder) {
  Entry* entry = nullptr;
  const Status status = Find(path, FsView::Physical, entry);
  if (status != Status::Ok) return status;
  if (entry->isFolder != folder) return Status::Absent;
  if (!entry->children.empty() || entry->parent == root_.get()) return Status::Denied;
  journal_.Add((folder ? u"erase folder " : u"erase file ") + UnicodeString(path));
  entry->parent->children.erase(entry->parent->children.find(entry->name));
  return Status::Ok;
}

Status MemoryFiles::EraseFile(UnicodeView path) {
  return Erase(path, false);
}

Status MemoryFiles::EraseFolder(UnicodeView path) {
  return Erase(path, true);
}

Status MemoryFiles::Backup(UnicodeView path) {
  Entry* entry = nullptr;
  const Status status = Find(path, FsView::Physical, entry);
  if (status != Status::Ok) return status;
  journal_.Add(u"backup " + UnicodeString(path));
  return Status::Ok;
}

}  // namespace scrubwell
