// The file and system half of Zmregistry.h, and the small units that stand beside it.
#include <algorithm>

#include "registry/PathResolver.h"
#include "registry/Shelllink.h"
#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"
#include "registry/Zmgraphics.h"
#include "registry/Zmverinfo.h"

namespace scrubwell {
namespace {

TPlatform* g_platform = nullptr;

using paths::Lookup;
using paths::Want;

bool IsMissing(const Lookup& lookup) {
  return lookup.program == Status::Absent || lookup.argument == Status::Absent;
}

bool Find(UnicodeView text, Want want, UnicodeString& found, UnicodeString& arguments) {
  Lookup lookup = paths::Resolve(text, want);
  const bool missing = IsMissing(lookup);
  found = std::move(lookup.found);
  arguments = std::move(lookup.arguments);
  return !missing;
}

// One path as it stands: no arguments, no search.
Status StatusOf(UnicodeView path, Want want, UnicodeString& found) {
  paths::Verdict verdict;
  for (const UnicodeString& text : paths::Expansions(RemoveQuotationMarks(Trim(path)))) {
    if (verdict.Add(paths::Probe(paths::WithoutNtPrefix(text), want, found))) break;
  }
  return verdict.Get();
}

Status StatusOf(UnicodeView path, Want want) {
  UnicodeString found;
  return StatusOf(path, want, found);
}

// The one drive-lettered spelling of a path that is to be changed or listed.
UnicodeString PlainPath(UnicodeView path) {
  const TStringList texts = paths::Expansions(RemoveQuotationMarks(Trim(path)));
  return texts.empty() ? UnicodeString() : paths::WithoutNtPrefix(texts.front());
}

// The file an INI operation means: a bare name lies in the Windows folder.
UnicodeString ProfilePath(UnicodeView file) {
  const bool bare = file.find_first_of(u"\\/:") == UnicodeView::npos;
  return bare ? GetWinDir().append(file) : PlainPath(file);
}

// What is left of a text once the part that names a file on a drive is taken out of its marks.
UnicodeView QuotedPart(UnicodeView text) {
  text = Trim(text);
  if (text.empty() || text.front() != u'"') return text;
  return Trim(text.substr(1, text.find(u'"', 1) - 1));
}

bool OnFixedDrive(UnicodeView text, bool needsDrive) {
  const UnicodeString path = paths::WithoutNtPrefix(QuotedPart(text));
  if (path.empty() || path.front() == u'@' || path.front() == u'%') return false;
  if (path.size() >= 2 && path[1] == u':') {
    const bool wholeDrive = path.size() == 2 || path[2] == u'\\' || path[2] == u'/';
    return wholeDrive && Platform().files.Drive(UpCase(path[0])) == DriveKind::Fixed;
  }
  // A colon in the name itself makes it an address; in its arguments it may be any drive.
  const UnicodeView name = UnicodeView(path).substr(0, path.find_first_of(u" \t"));
  if (needsDrive || path.starts_with(u"\\\\") || path.starts_with(u"//") ||
      name.find(u':') != UnicodeView::npos || path.starts_with(u"\\Device\\")) {
    return false;
  }
  const UnicodeString windows = Platform().system.WindowsDir();
  return !windows.empty() && Platform().files.Drive(UpCase(windows[0])) == DriveKind::Fixed;
}

}  // namespace

void SetPlatform(TPlatform* platform) {
  g_platform = platform;
  paths::ForgetLookups();
}
TPlatform& Platform() {
  return *g_platform;
}
bool HasPlatform() {
  return g_platform != nullptr;
}

bool FindFile(UnicodeView text, UnicodeString& found, UnicodeString& arguments) {
  return Find(text, Want::File, found, arguments);
}
bool FindFile(UnicodeView text) {
  return !IsMissing(paths::Resolve(text, Want::File));
}
bool FindFileOnAnyDrive(UnicodeView text) {
  return !IsMissing(paths::Resolve(text, Want::FileOnAnyDrive));
}

bool FindFileOrDir(UnicodeView text, UnicodeString& found, UnicodeString& arguments) {
  return Find(text, Want::FileOrFolder, found, arguments);
}
bool FindFileOrDir(UnicodeView text) {
  return !IsMissing(paths::Resolve(text, Want::FileOrFolder));
}

int FindFileAndVerifyArguments(UnicodeView commandLine, UnicodeString& file,
                               UnicodeString& arguments) {
  Lookup lookup = paths::Resolve(commandLine, Want::File);
  file = std::move(lookup.found);
  arguments = std::move(lookup.arguments);
  if (lookup.program == Status::Absent) return 1;
  return lookup.argument == Status::Absent || lookup.log == Status::Absent ? 2 : 0;
}

bool FileOrDirExists(UnicodeView path, bool missing) {
  return (StatusOf(path, Want::FileOrFolder) == Status::Absent) == missing;
}

bool FileOrDirExistsEx(UnicodeView path) {
  return FileOrDirExists(path, false);
}

bool ZMFileExists(UnicodeView path) {
  return StatusOf(path, Want::File) != Status::Absent;
}

bool DirectoryExists(UnicodeView path) {
  const UnicodeString plain = PlainPath(path);
  FileInfo info;
  for (const FsView view : {FsView::Physical, FsView::Redirected}) {
    if (!paths::IsDrivePath(plain)) return false;
    if (Platform().files.Stat(plain, view, info) == Status::Ok && info.isFolder) return true;
  }
  return false;
}

bool PathFileExistsWrapper(UnicodeView path) {
  paths::Verdict verdict;
  UnicodeString found;
  for (const UnicodeString& text : paths::Expansions(RemoveQuotationMarks(Trim(path)))) {
    if (verdict.Add(paths::ProbeName(text, Want::FileOrFolder, found))) break;
  }
  return verdict.Get() != Status::Absent;
}

bool FileIsOnFixedDrive(UnicodeView path, bool needsDrive) {
  const TStringList texts = paths::Expansions(Trim(path));
  return std::any_of(texts.begin(), texts.end(), [needsDrive](const UnicodeString& text) {
    return OnFixedDrive(text, needsDrive);
  });
}

std::int64_t ZMGetFileSize(UnicodeView path) {
  UnicodeString found;
  const Status status = StatusOf(path, Want::File, found);
  if (status == Status::Absent) return -1;
  std::uint64_t size = 0;
  for (const FsView view : {FsView::Physical, FsView::Redirected}) {
    if (status == Status::Ok && Platform().files.Size(found, view, size) == Status::Ok) {
      return static_cast<std::int64_t>(size);
    }
  }
  return -2;
}

bool IsDirectoryEmpty(UnicodeView path) {
  std::vector<DirEntry> entries;
  return Platform().files.List(PlainPath(path), FsView::Physical, entries) == Status::Ok &&
         entries.empty();
}

void BackupFile(UnicodeView path) {
  Platform().files.Backup(PlainPath(path));
}

bool ZMDeleteFile(UnicodeView path) {
  paths::ForgetLookups();
  return Platform().files.EraseFile(PlainPath(path)) == Status::Ok;
}

bool ZMRemoveDir(UnicodeView path) {
  paths::ForgetLookups();
  return Platform().files.EraseFolder(PlainPath(path)) == Status::Ok;
}

void ListFolder(UnicodeView path, std::vector<DirEntry>& entries) {
  entries.clear();
  if (Platform().files.List(PlainPath(path), FsView::Physical, entries) != Status::Ok) {
    entries.clear();
  }
}

bool FindTypeLib(UnicodeView text) {
  paths::Verdict verdict;
  UnicodeString found;
  for (const UnicodeString& name : paths::Expansions(RemoveQuotationMarks(Trim(text)))) {
    const UnicodeString whole = paths::WithoutNtPrefix(name);
    if (!paths::IsDrivePath(whole)) return true;
    if (verdict.Add(paths::ProbeName(whole, Want::File, found))) break;
    // "x.dll\2" is the second library inside x.dll.
    const std::size_t slash = whole.rfind(u'\\');
    if (slash == UnicodeString::npos || StrToIntDef(whole.substr(slash + 1), -1) < 0) continue;
    if (verdict.Add(paths::ProbeName(whole.substr(0, slash), Want::File, found))) break;
  }
  return verdict.Get() != Status::Absent;
}

UnicodeString GetWinDir() {
  return IncludeTrailingPathDelimiter(Platform().system.WindowsDir());
}

UnicodeString GetFolderLocStr(int csidl) {
  UnicodeString path;
  if (Platform().shell.SpecialFolder(csidl, path) != Status::Ok) path.clear();
  return path;
}

UnicodeString RemoveQuotationMarks(UnicodeView text) {
  const bool quoted = text.size() >= 2 && text.front() == u'"';
  if (quoted && text.find(u'"', 1) == text.size() - 1) text = text.substr(1, text.size() - 2);
  return UnicodeString(text);
}

bool IsAdmin() {
  return Platform().system.IsAdmin();
}
OsVersion CurrentOS() {
  return Platform().system.Version();
}

std::int32_t GetServiceState(UnicodeView service, ServiceInfo& info, UnicodeString& text) {
  info = {};
  const Status status = Platform().services.Query(service, info);
  text = info.displayName;
  return ErrorCode(status);
}

UnicodeString GetPPString(UnicodeView file, UnicodeView section, UnicodeView key,
                          UnicodeView fallback, bool /*flag*/) {
  UnicodeString text;
  const Status status = Platform().profiles.Get(ProfilePath(file), section, key, text);
  return status == Status::Ok ? text : UnicodeString(fallback);
}

void WritePPString(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeView value,
                   bool /*flag*/) {
  Platform().profiles.Put(ProfilePath(file), section, key, value);
}

void DeletePPString(UnicodeView file, UnicodeView section, UnicodeView key, bool /*flag*/) {
  Platform().profiles.Remove(ProfilePath(file), section, key);
}

UnicodeString EnumPPEntries(UnicodeView file, UnicodeView section, bool /*flag*/) {
  TStringList names;
  UnicodeString out;
  if (Platform().profiles.Entries(ProfilePath(file), section, names) != Status::Ok) return out;
  for (const UnicodeString& name : names) out.append(name).push_back(u'\0');
  return out;
}

std::int32_t TUrlHistory::Enumerate(TStringList& urls) {
  urls.clear();
  if (Platform().browser.Urls(urls) != Status::Ok) urls.clear();
  return static_cast<std::int32_t>(urls.size());
}

std::int32_t TUrlHistory::QueryUrl(UnicodeView url) {
  return ErrorCode(Platform().browser.QueryUrl(url));
}

TUrlHistory& IEUrlHistory() {
  static TUrlHistory history;
  return history;
}

bool DeleteUrlHistoryEntry(UnicodeView url) {
  return Platform().browser.RemoveUrl(url) == Status::Ok;
}

int GetIEVersion() {
  return Platform().browser.BrowserVersion();
}

UnicodeString GetResourceString(UnicodeView file, std::uint32_t id) {
  UnicodeString found;
  UnicodeString text;
  for (const UnicodeString& name : paths::Expansions(RemoveQuotationMarks(Trim(file)))) {
    if (paths::ProbeName(name, Want::File, found) != Status::Ok) continue;
    if (Platform().resources.StringResource(found, id, text) == Status::Ok) return text;
  }
  return {};
}

UnicodeString FileNameByID(int id, TZMGraphicsCategory category) {
  return Platform().images.FileName(id, category);
}

UnicodeString GetShellLinkTarget(UnicodeView linkFile, bool /*flag*/) {
  UnicodeString target;
  const Status status = Platform().shell.LinkTarget(PlainPath(linkFile), target);
  if (status == Status::Corrupt) {
    Platform().notes.Note(UnicodeString(linkFile) + u": the shortcut can't be read");
  }
  if (status != Status::Ok) target.clear();
  return target;
}

bool IsCurrentProcessWow64() {
  return Platform().system.IsWow64();
}

TZMFsRedirection& TZMFsRedirection::GetInstance() {
  static TZMFsRedirection instance;
  return instance;
}
bool TZMFsRedirection::GetEnabled() const {
  return Platform().system.FsRedirection();
}
void TZMFsRedirection::SetEnabled(bool enabled) {
  Platform().system.SetFsRedirection(enabled);
}

UnicodeString GetFileNameWithAbsolutePath(UnicodeView name) {
  const Lookup lookup = paths::Resolve(name, Want::File);
  return lookup.found.empty() ? UnicodeString(name) : lookup.found;
}

UnicodeString GetFileVersionIdentificationFromFile(UnicodeView file) {
  FileVersion version;
  if (Platform().resources.Version(PlainPath(file), version) != Status::Ok) return {};
  return IntToStr(version.major) + u"." + IntToStr(version.minor);
}

}  // namespace scrubwell
