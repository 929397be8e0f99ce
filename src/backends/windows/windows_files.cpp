#include "backends/windows/windows_files.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

using OwnedFile = Owned<HANDLE, &CloseHandle>;
using OwnedSearch = Owned<HANDLE, &FindClose>;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// Longer paths need the form that takes them literally. A folder must leave room for a name in it.
constexpr std::size_t kMaxPlainPath = 247;

/// No box that asks for a disk, whatever drive is looked at.
class QuietErrors {
 public:
  QuietErrors() { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before_); }
  ~QuietErrors() { SetThreadErrorMode(before_, nullptr); }
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;

 private:
  DWORD before_ = 0;
};

bool IsLetter(char16_t unit) {
  return UpCase(unit) >= u'A' && UpCase(unit) <= u'Z';
}

bool IsSlash(char16_t unit) {
  return unit == u'\\' || unit == u'/';
}

bool HasShortName(UnicodeView path) {
  for (std::size_t at = path.find(u'~'); at != UnicodeView::npos; at = path.find(u'~', at + 1)) {
    if (at + 1 < path.size() && path[at + 1] >= u'0' && path[at + 1] <= u'9') return true;
  }
  return false;
}

std::uint64_t SizeOf(DWORD high, DWORD low) {
  return std::uint64_t{high} << 32U | low;
}

bool IsFolder(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// What a folder's listing knows of a file that can't be opened, such as the one for swapping.
bool FindEntry(const UnicodeString& path, FileInfo& out, std::optional<std::uint64_t>& size) {
  if (path.find_first_of(u"*?") != UnicodeString::npos) return false;
  WIN32_FIND_DATAW data;
  const OwnedSearch search(FindFirstFileW(Wide(path), &data));
  if (search.Get() == INVALID_HANDLE_VALUE) return false;
  out = {IsFolder(data.dwFileAttributes)};
  size = SizeOf(data.nFileSizeHigh, data.nFileSizeLow);
  return true;
}

}  // namespace

DriveKind WindowsFiles::Drive(char16_t letter) {
  if (!IsLetter(letter)) return DriveKind::Unknown;
  const QuietErrors quiet;
  const UnicodeString root{letter, u':', u'\\'};
  switch (GetDriveTypeW(Wide(root))) {
    case DRIVE_FIXED:
      return DriveKind::Fixed;
    case DRIVE_REMOVABLE:
      return DriveKind::Removable;
    case DRIVE_CDROM:
      return DriveKind::CdRom;
    case DRIVE_REMOTE:
      return DriveKind::Network;
    case DRIVE_RAMDISK:
      return DriveKind::RamDisk;
    default:
      return DriveKind::Unknown;
  }
}

// Ok with the path in a form that the system's functions take.
Status WindowsFiles::Locate(UnicodeView path, FsView view, UnicodeString& full, bool looksOnly) {
  if (path.size() < 3 || !IsLetter(path[0]) || path[1] != u':' || !IsSlash(path[2]) ||
      HasNul(path)) {
    return Status::Unknown;
  }
  const DriveKind kind = Drive(path[0]);
  if (kind == DriveKind::Unknown || (kind == DriveKind::Network && !looksOnly))
    return Status::Unknown;
  full = PathInView(path, view);
  if (full.size() <= kMaxPlainPath) return Status::Ok;
  UnicodeString whole(full.size() + 2, u'\0');
  const DWORD length =
      GetFullPathNameW(Wide(full), static_cast<DWORD>(whole.size()), WideBuffer(whole), nullptr);
  if (length == 0 || length >= whole.size()) return Status::Unknown;
  full = u"\\\\?\\" + whole.substr(0, length);
  return Status::Ok;
}

Status WindowsFiles::AfterError(UnicodeView path, DWORD error) {
  const Status status = StatusOfError(error);
  if (status != Status::Absent) return status;
  const DriveKind kind = Drive(path[0]);
  const bool stays = kind == DriveKind::Fixed || kind == DriveKind::Network;
  return stays && !HasShortName(path) ? Status::Absent : Status::Unknown;
}

Status WindowsFiles::Look(UnicodeView path, FsView view, FileInfo& out,
                          std::optional<std::uint64_t>& size) {
  UnicodeString full;
  if (const Status status = Locate(path, view, full, true); status != Status::Ok) return status;
  const RedirectionScope scope(view);
  const QuietErrors quiet;
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (GetFileAttributesExW(Wide(full), GetFileExInfoStandard, &data) != FALSE) {
    out = {IsFolder(data.dwFileAttributes)};
    size = SizeOf(data.nFileSizeHigh, data.nFileSizeLow);
    return Status::Ok;
  }
  const DWORD error = GetLastError();
  const Status status = AfterError(path, error);
  if (status == Status::Denied && FindEntry(full, out, size)) return Status::Ok;
  // Devices have no size to ask for, but are there in every folder.
  const bool isDevice = StatusOfError(error) == Status::Unknown &&
                        GetFileAttributesW(Wide(full)) != INVALID_FILE_ATTRIBUTES;
  if (!isDevice) return status;
  out = {};
  return Status::Ok;
}

Status WindowsFiles::Stat(UnicodeView path, FsView view, FileInfo& out) {
  std::optional<std::uint64_t> size;
  return Look(path, view, out, size);
}

Status WindowsFiles::Size(UnicodeView path, FsView view, std::uint64_t& out) {
  FileInfo info;
  std::optional<std::uint64_t> size;
  const Status status = Look(path, view, info, size);
  out = size.value_or(0);
  return status == Status::Ok && !size ? Status::Unknown : status;
}

Status WindowsFiles::List(UnicodeView path, FsView view, std::vector<DirEntry>& out) {
  out.clear();
  FileInfo info;
  const Status there = Stat(path, view, info);
  if (there != Status::Ok) return there;
  if (!info.isFolder) return Status::Absent;
  UnicodeString mask;
  if (const Status status = Locate(path, view, mask); status != Status::Ok) return status;
  mask = IncludeTrailingPathDelimiter(mask) + u"*";
  const RedirectionScope scope(view);
  const QuietErrors quiet;
  WIN32_FIND_DATAW data;
  const OwnedSearch search(FindFirstFileW(Wide(mask), &data));
  DWORD error = ERROR_SUCCESS;
  if (search.Get() == INVALID_HANDLE_VALUE) {
    error = GetLastError();
    // The root of an empty drive has not even the two dots.
    return error == ERROR_FILE_NOT_FOUND ? Status::Ok : AfterError(path, error);
  }
  do {
    UnicodeString name = FromWide(data.cFileName);
    if (name == u"." || name == u"..") continue;
    out.push_back({std::move(name), IsFolder(data.dwFileAttributes),
                   SizeOf(data.nFileSizeHigh, data.nFileSizeLow)});
  } while (FindNextFileW(search.Get(), &data) != FALSE);
  error = GetLastError();
  return error == ERROR_NO_MORE_FILES ? Status::Ok : StatusOfError(error);
}

Status WindowsFiles::Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) {
  out.clear();
  UnicodeString full;
  if (const Status status = Locate(path, view, full); status != Status::Ok) return status;
  const RedirectionScope scope(view);
  const QuietErrors quiet;
  const HANDLE opened = CreateFileW(Wide(full), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (opened == INVALID_HANDLE_VALUE) return AfterError(path, GetLastError());
  const OwnedFile file(opened);
  LARGE_INTEGER size;
  if (GetFileType(file.Get()) != FILE_TYPE_DISK || GetFileSizeEx(file.Get(), &size) == FALSE)
    return Status::Unknown;
  if (static_cast<std::uint64_t>(size.QuadPart) > limit) return Status::Corrupt;
  out.resize(static_cast<std::size_t>(size.QuadPart));
  for (std::size_t done = 0; done < out.size();) {
    DWORD read = 0;
    const auto wanted = static_cast<DWORD>(std::min<std::size_t>(out.size() - done, 1U << 24U));
    if (ReadFile(file.Get(), out.data() + done, wanted, &read, nullptr) == FALSE)
      return StatusOfError(GetLastError());
    if (read == 0) out.resize(done);  // somebody has cut it meanwhile
    done += read;
  }
  return Status::Ok;
}

namespace {

Status WriteAll(const UnicodeString& path, const Bytes& data) {
  const HANDLE opened = CreateFileW(Wide(path), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (opened == INVALID_HANDLE_VALUE) return StatusOfError(GetLastError());
  const OwnedFile file(opened);
  DWORD written = 0;
  const auto size = static_cast<DWORD>(data.size());
  if (WriteFile(file.Get(), data.data(), size, &written, nullptr) == FALSE || written != size ||
      FlushFileBuffers(file.Get()) == FALSE) {
    return Status::Denied;
  }
  return Status::Ok;
}

}  // namespace

Status WindowsFiles::Write(UnicodeView path, const Bytes& data) {
  if (!mayChange_ || data.size() > MAXDWORD) return Status::Denied;
  UnicodeString full;
  if (const Status status = Locate(path, FsView::Physical, full); status != Status::Ok)
    return status;
  const RedirectionScope scope(FsView::Physical);
  const QuietErrors quiet;
  const UnicodeString fresh = full + u".scrubwell-new";
  Status status = WriteAll(fresh, data);
  if (status == Status::Ok) {
    // Replacing keeps rights and attributes of what was there.
    const bool isThere = GetFileAttributesW(Wide(full)) != INVALID_FILE_ATTRIBUTES;
    const BOOL done = isThere ? ReplaceFileW(Wide(full), Wide(fresh), nullptr, 0, nullptr, nullptr)
                              : MoveFileExW(Wide(fresh), Wide(full), MOVEFILE_WRITE_THROUGH);
    if (done == FALSE) status = StatusOfError(GetLastError());
  }
  if (status != Status::Ok) DeleteFileW(Wide(fresh));
  return status;
}

Status WindowsFiles::EraseFile(UnicodeView path) {
  if (!mayChange_) return Status::Denied;
  UnicodeString full;
  if (const Status status = Locate(path, FsView::Physical, full); status != Status::Ok)
    return status;
  const RedirectionScope scope(FsView::Physical);
  const QuietErrors quiet;
  return DeleteFileW(Wide(full)) != FALSE ? Status::Ok : AfterError(path, GetLastError());
}

Status WindowsFiles::EraseFolder(UnicodeView path) {
  if (!mayChange_) return Status::Denied;
  UnicodeString full;
  if (const Status status = Locate(path, FsView::Physical, full); status != Status::Ok)
    return status;
  const RedirectionScope scope(FsView::Physical);
  const QuietErrors quiet;
  return RemoveDirectoryW(Wide(full)) != FALSE ? Status::Ok : AfterError(path, GetLastError());
}

Status WindowsFiles::Backup(UnicodeView path) {
  if (!mayChange_ || backupFolder_.empty()) return Status::Denied;
  UnicodeString full;
  if (const Status status = Locate(path, FsView::Physical, full); status != Status::Ok)
    return status;
  const RedirectionScope scope(FsView::Physical);
  const QuietErrors quiet;
  // "C:\a\b" goes to "<backup>\C\a\b".
  const UnicodeString target =
      backupFolder_ + u"\\" + UnicodeString(1, UpCase(path[0])) + UnicodeString(path.substr(2));
  for (std::size_t at = target.find(u'\\', 3); at != UnicodeString::npos;
       at = target.find(u'\\', at + 1)) {
    CreateDirectoryW(Wide(target.substr(0, at)), nullptr);  // most of them are there
  }
  if (CopyFileW(Wide(full), Wide(target), TRUE) != FALSE) return Status::Ok;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_EXISTS ? Status::Ok : AfterError(path, error);
}

}  // namespace scrubwell::windows
