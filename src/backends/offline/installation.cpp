#include "backends/offline/installation.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "backends/offline/commit.h"
#include "backends/offline/registry_read.h"
#include "formats/pe/pe.h"
#include "formats/regf/file_image.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr UnicodeView kNtKey = u"Microsoft\\Windows NT\\CurrentVersion";
constexpr UnicodeView kWindowsKey = u"Microsoft\\Windows\\CurrentVersion";
constexpr UnicodeView kConfig = u"\\System32\\config\\";

// Absent, or why it can't be told; the first folder that holds a software hive wins, the usual
// names in front.
Status FindWindowsFolder(OfflineFiles& files, char16_t letter, INotes& notes, UnicodeString& out) {
  const UnicodeString root{letter, u':', u'\\'};
  std::vector<DirEntry> entries;
  const Status listed = files.List(root, FsView::Physical, entries);
  if (listed != Status::Ok) return listed;
  TStringList names = {u"Windows", u"WinNT"};
  for (const DirEntry& entry : entries) {
    if (entry.isFolder && !SameText(entry.name, names[0]) && !SameText(entry.name, names[1])) {
      names.push_back(entry.name);
    }
  }
  Status result = Status::Absent;
  for (const UnicodeString& name : names) {
    FileInfo info;
    const Status status =
        files.Stat(root + name + UnicodeString(kConfig) + u"SOFTWARE", FsView::Physical, info);
    if (status == Status::Ok && result == Status::Ok) {
      notes.Note(root + name + u": a further Windows, not scanned");
    } else if (status == Status::Ok) {
      out = root + name;
      result = Status::Ok;
    } else if (result == Status::Absent) {
      result = status;
    }
  }
  // The name as it is on the disk reads better than the one it was looked for by.
  for (const DirEntry& entry : entries) {
    if (result == Status::Ok && SameText(root + entry.name, out)) out = root + entry.name;
  }
  return result;
}

std::string NotFoundReason(Status status) {
  switch (status) {
    case Status::Denied:
      return "access to the Windows folder is denied";
    case Status::Absent:
      return "no Windows on this volume (no folder in it holds System32/config/SOFTWARE)";
    default:
      return "the volume can't be read";
  }
}

// The letter by which the system knows its volume, and its folder by that letter.
bool MoveToOwnLetter(DriveTree& drives, char16_t letter, INotes& notes, Installation& out) {
  const UnicodeString known = HiveText(out.software->Raw(), kNtKey, u"SystemRoot");
  WinPath path;
  if (!ParsePath(known, path)) return true;
  if (!drives.Rename(letter, path.letter)) return false;
  out.systemRoot[0] = path.letter;
  if (!SameText(PathText(path), out.systemRoot)) {
    notes.Note(out.systemRoot + u": this Windows knows its folder as " + known);
  }
  return true;
}

// Before Windows NT the version is kept elsewhere and in another form ("4.90.3000").
void ReadVersionBeforeNT(Installation& out) {
  static constexpr std::array<std::pair<UnicodeView, OsVersion>, 3> kVersions = {{
      {u"4.00", OsVersion::Win95},
      {u"4.10", OsVersion::Win98},
      {u"4.90", OsVersion::WinME},
  }};
  const UnicodeString number = HiveText(out.software->Raw(), kWindowsKey, u"VersionNumber");
  for (const auto& [version, os] : kVersions) {
    if (!number.starts_with(version)) continue;
    out.version = version;
    out.os = os;
  }
}

void ReadVersion(Installation& out) {
  const regf::Hive& software = out.software->Raw();
  UnicodeString build = HiveText(software, kNtKey, u"CurrentBuildNumber");
  if (build.empty()) build = HiveText(software, kNtKey, u"CurrentBuild");
  out.build = static_cast<std::uint32_t>(std::max(0, StrToIntDef(build, 0)));
  out.version = HiveText(software, kNtKey, u"CurrentVersion");
  // From 10 on the text says 6.3 for the sake of old programs.
  if (const auto major = HiveNumber(software, kNtKey, u"CurrentMajorVersionNumber")) {
    const auto minor = HiveNumber(software, kNtKey, u"CurrentMinorVersionNumber").value_or(0);
    out.version = IntToStr(*major) + u"." + IntToStr(minor);
  }
  out.productName = HiveText(software, kNtKey, u"ProductName");
  if (out.productName.empty()) out.productName = HiveText(software, kWindowsKey, u"ProductName");
  out.os = OsVersionOf(out.build, out.version);
  if (out.build == 0 && out.version.empty()) ReadVersionBeforeNT(out);
  // 11 still calls itself 10 there.
  if (out.os == OsVersion::Win11) {
    out.productName = Replace(out.productName, u"Windows 10", u"Windows 11");
  }
}

UnicodeString ControlSetName(std::uint32_t number) {
  const UnicodeString digits = IntToStr(number);
  return u"ControlSet" + UnicodeString(digits.size() < 3 ? 3 - digits.size() : 0, u'0') + digits;
}

void ReadControlSet(Installation& out) {
  const regf::Hive& system = out.system->Raw();
  // Hives that other systems wrote may hold the set itself under the name of the link.
  out.controlSetKey = u"CurrentControlSet";
  regf::CellOffset own = regf::NoCell;
  if (system.Child(system.Root(), out.controlSetKey, own) == Status::Ok) return;
  for (const UnicodeView name : {UnicodeView(u"Current"), UnicodeView(u"Default")}) {
    const auto number = HiveNumber(system, u"Select", name);
    regf::CellOffset key = regf::NoCell;
    if (!number || *number == 0) continue;
    if (system.Descend(system.Root(), ControlSetName(*number), key) != Status::Ok) continue;
    out.controlSet = *number;
    out.controlSetKey = ControlSetName(*number);
    return;
  }
}

// What the kernel file says; nothing when it is no program of a known kind.
std::optional<bool> KernelIs64Bit(OfflineFiles& files, const Installation& at) {
  // The headers are all that is asked for.
  constexpr std::size_t kHeaders = 65'536;
  Bytes head;
  pe::Image image;
  const UnicodeString kernel = at.systemRoot + u"\\System32\\ntoskrnl.exe";
  if (files.ReadHead(kernel, kHeaders, head) != Status::Ok) return {};
  const Status status = image.Open(head);
  if (status != Status::Ok && image.MachineType() == 0) return {};
  switch (image.MachineType()) {
    case pe::MachineAmd64:
    case pe::MachineArm64:
    case pe::MachineIa64:
      return true;
    case pe::MachineI386:
      return false;
    default:
      return {};
  }
}

bool FactsSay64Bit(OfflineFiles& files, const Installation& at) {
  const UnicodeString processor = UpperCase(
      HiveText(at.system->Raw(), at.controlSetKey + u"\\Control\\Session Manager\\Environment",
               u"PROCESSOR_ARCHITECTURE"));
  if (processor == u"AMD64" || processor == u"ARM64" || processor == u"IA64") return true;
  if (processor == u"X86") return false;
  FileInfo info;
  regf::CellOffset key = regf::NoCell;
  const regf::Hive& software = at.software->Raw();
  return files.Stat(at.systemRoot + u"\\SysWOW64", FsView::Physical, info) == Status::Ok ||
         software.Child(software.Root(), u"Wow6432Node", key) == Status::Ok;
}

}  // namespace

bool HiveStore::ReadImage(const DiskPlace& place, regf::FileImage& out, std::string& error) {
  const UniqueFd fd = place.Open(O_RDONLY | O_NONBLOCK);
  if (!fd.Good()) {
    error = place.Text() + ": " + std::strerror(errno);
    return false;
  }
  std::string reason;
  if (out.Open(fd.Get(), reason)) return true;
  error = place.Text() + ": " + reason;
  return false;
}

std::vector<regf::FileImage> HiveStore::LogsOf(UnicodeView path) {
  std::vector<regf::FileImage> logs;
  for (const UnicodeView ending :
       {UnicodeView(u".LOG"), UnicodeView(u".LOG1"), UnicodeView(u".LOG2")}) {
    DiskPlace place;
    regf::FileImage log;
    std::string ignored;
    if (files_.Place(UnicodeString(path) + UnicodeString(ending), place) == Status::Ok &&
        ReadImage(place, log, ignored)) {
      logs.push_back(std::move(log));
    }
  }
  return logs;
}

void HiveStore::TellFaults(const RegfHive& hive) {
  const regf::HiveFacts& facts = hive.Original().Facts();
  if (facts.stale) {
    notes_.Note(hive.Path() +
                u": was not closed properly and has no usable log; what is read may be stale");
  }
  if (facts.unreadable != 0) {
    notes_.Note(hive.Path() + u": the disk does not give " +
                IntToStr(static_cast<std::int64_t>(facts.unreadable)) +
                u" bytes of it; what lies there is not checked");
  }
}

RegfHive* HiveStore::Open(UnicodeView path, Status& why, std::string& error) {
  DiskPlace place;
  why = files_.Place(path, place);
  if (why != Status::Ok) {
    error = ToUtf8(path) +
            (why == Status::Absent ? ": there is no such file" : ": the file can't be reached");
    return nullptr;
  }
  const std::string text = place.Text();
  for (const auto& hive : hives_) {
    if (hive->Place().Text() == text) return hive.get();
  }
  regf::FileImage image;
  why = Status::Corrupt;
  const DiskPlace source = replaced_.contains(text) ? place.WithEnding(kSideEnding) : place;
  if (!ReadImage(source, image, error)) return nullptr;
  std::vector<regf::FileImage> logs;
  if (regf::Hive::IsDirty(image.Content())) logs = LogsOf(path);
  regf::OpenedHive opened = regf::Hive::FromFile(std::move(image), text, logs);
  if (opened.hive == nullptr) {
    error = opened.error;
    return nullptr;
  }
  why = Status::Ok;
  hives_.push_back(std::make_unique<RegfHive>(std::move(opened.hive), UnicodeString(path), place));
  TellFaults(*hives_.back());
  if (done_) hives_.back()->AllowChanges(done_);
  return hives_.back().get();
}

void HiveStore::AllowChanges(std::function<void(Status)> done) {
  done_ = std::move(done);
  for (const auto& hive : hives_) hive->AllowChanges(done_);
}

UnicodeString Installation::Config(UnicodeView hive) const {
  return systemRoot + UnicodeString(kConfig) + UnicodeString(hive);
}

UnicodeString Installation::Expand(UnicodeView text) const {
  struct Variable {
    UnicodeView name;
    UnicodeView value;
  };
  const std::array<Variable, 3> variables = {
      {{u"%SystemRoot%", systemRoot},
       {u"%windir%", systemRoot},
       {u"%SystemDrive%", UnicodeView(systemRoot).substr(0, 2)}}};
  UnicodeString result;
  while (!text.empty()) {
    std::size_t taken = 0;
    for (const Variable& variable : variables) {
      if (!SameText(text.substr(0, variable.name.size()), variable.name)) continue;
      result += variable.value;
      taken = variable.name.size();
    }
    if (taken == 0) result.push_back(text.front());
    text.remove_prefix(std::max<std::size_t>(taken, 1));
  }
  return result;
}

bool FindInstallation(DriveTree& drives, char16_t letter, OfflineFiles& files, HiveStore& hives,
                      INotes& notes, Installation& out, std::string& error) {
  const Status found = FindWindowsFolder(files, letter, notes, out.systemRoot);
  if (found != Status::Ok) {
    error = drives.Get(letter)->path + ": " + NotFoundReason(found);
    return false;
  }
  Status why = Status::Ok;
  out.software = hives.Open(out.Config(u"SOFTWARE"), why, error);
  if (out.software == nullptr) return false;
  out.system = hives.Open(out.Config(u"SYSTEM"), why, error);
  if (out.system == nullptr) return false;
  if (!MoveToOwnLetter(drives, letter, notes, out)) {
    error = "the drive letter of the installation is taken by another folder";
    return false;
  }
  hives.SetLetter(out.Letter());
  files.SetRedirection({});  // forgets the answers under the former letter
  ReadVersion(out);
  ReadControlSet(out);
  const std::optional<bool> kernel = KernelIs64Bit(files, out);
  out.is64Bit = kernel ? *kernel : FactsSay64Bit(files, out);
  files.SetRedirection({out.is64Bit, out.IsWindows7OrLater(), out.systemRoot});
  return true;
}

UnicodeString IdentityOf(const Installation& installation) {
  const regf::Hive& software = installation.software->Raw();
  UnicodeString text = HiveText(software, u"Microsoft\\Cryptography", u"MachineGuid");
  text += u'|' + HiveText(software, kNtKey, u"ProductId");
  text += u'|' + HiveText(software, kNtKey, u"SystemRoot");
  return text + u'|' + IntToStr(HiveNumber(software, kNtKey, u"InstallDate").value_or(0));
}

OsVersion OsVersionOf(std::uint32_t build, UnicodeView version) {
  struct Row {
    std::uint32_t build;
    UnicodeView version;
    OsVersion os;
  };
  // Newest first. The text alone can't tell 10 from 8.1, which call themselves alike.
  static constexpr std::array<Row, 11> kVersions = {{
      {22000, {}, OsVersion::Win11},
      {9841, u"10.0", OsVersion::Win10},
      {9600, u"6.3", OsVersion::Win81},
      {9200, u"6.2", OsVersion::Win8},
      {7600, u"6.1", OsVersion::Win7},
      {6000, u"6.0", OsVersion::Vista},
      {3790, u"5.2", OsVersion::WinXP},
      {2600, u"5.1", OsVersion::WinXP},
      {2195, u"5.0", OsVersion::Win2000},
      {1381, u"4.0", OsVersion::WinNT4},
      {0, {}, OsVersion::Unknown},
  }};
  for (const Row& row : kVersions) {
    if (build != 0 ? build >= row.build : !row.version.empty() && version == row.version) {
      return row.os;
    }
  }
  return OsVersion::Unknown;
}

}  // namespace scrubwell::offline
