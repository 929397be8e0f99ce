#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "hosts/cli/replace_file.h"
#include "hosts/cli/windows_text.h"
#include "hosts/cli/write_all.h"

namespace scrubwell::hosts {

namespace {

int LastError() {
  const std::error_code error(static_cast<int>(GetLastError()), std::system_category());
  const std::error_condition condition = error.default_error_condition();
  return condition.category() == std::generic_category() ? condition.value() : EIO;
}

// The place that the bytes go to: behind symbolic links, so that a link stays one.
struct Place {
  std::wstring path;
  bool exists = false;
  bool direct = false;  ///< a device or pipe, which can't be replaced by a file
  int error = 0;
};

// The file itself, past all links to it.
std::wstring RealPath(HANDLE file, const std::wstring& path) {
  std::wstring real(GetFinalPathNameByHandleW(file, nullptr, 0, 0), L'\0');
  const DWORD length =
      GetFinalPathNameByHandleW(file, real.data(), static_cast<DWORD>(real.size()), 0);
  if (length == 0 || length >= real.size()) return path;
  real.resize(length);
  return real;
}

Place Locate(const std::string& path) {
  Place place;
  place.path = WideOf(path);
  // To open a pipe is to be heard at its other end.
  place.direct = place.path.starts_with(L"\\\\.\\");
  if (place.direct) return place;
  constexpr DWORD everyone = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file = CreateFileW(place.path.c_str(), 0, everyone, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    if (GetLastError() != ERROR_FILE_NOT_FOUND) place.error = LastError();
    return place;
  }
  place.exists = true;
  place.direct = GetFileType(file) != FILE_TYPE_DISK;
  BY_HANDLE_FILE_INFORMATION info{};
  if (!place.direct && GetFileInformationByHandle(file, &info) == FALSE) {
    place.error = LastError();
  } else if ((info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    place.error = EISDIR;
  } else if ((info.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
    place.error = EACCES;
  } else if (!place.direct) {
    place.path = RealPath(file, place.path);
  }
  CloseHandle(file);
  return place;
}

std::wstring TemporaryName(const Place& place) {
  return place.path + L".scrubwell-" + std::to_wstring(GetCurrentProcessId());
}

int Open(const std::wstring& path, int flags) {
  return ::_wopen(path.c_str(), flags | _O_WRONLY | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
}

int WriteDirect(const Place& place, const ContentSource& content) {
  const int fd = Open(place.path, 0);
  if (fd < 0) return errno;
  const int error = WriteAll(fd, content);
  return ::_close(fd) != 0 && error == 0 ? errno : error;
}

// The first way hands the old file's rights on; not every file system knows it.
int PutInPlace(const std::wstring& temporary, const Place& place) {
  if (place.exists &&
      ReplaceFileW(place.path.c_str(), temporary.c_str(), nullptr, 0, nullptr, nullptr) != FALSE) {
    return 0;
  }
  constexpr DWORD how = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  return MoveFileExW(temporary.c_str(), place.path.c_str(), how) != FALSE ? 0 : LastError();
}

int Replace(const Place& place, const ContentSource& content) {
  const std::wstring temporary = TemporaryName(place);
  const int fd = Open(temporary, _O_CREAT | _O_EXCL);
  if (fd < 0) return errno;
  int error = WriteAll(fd, content);
  if (error == 0 && ::_commit(fd) != 0) error = errno;
  if (::_close(fd) != 0 && error == 0) error = errno;
  if (error == 0) error = PutInPlace(temporary, place);
  if (error != 0) DeleteFileW(temporary.c_str());
  return error;
}

}  // namespace

int TryReplacing(const std::string& path) {
  const Place place = Locate(path);
  if (place.error != 0 || place.direct) return place.error;
  const std::wstring temporary = TemporaryName(place);
  const int fd = Open(temporary, _O_CREAT | _O_EXCL);
  if (fd < 0) return errno;
  ::_close(fd);
  DeleteFileW(temporary.c_str());
  return 0;
}

int ReplaceContent(const std::string& path, const ContentSource& content) {
  const Place place = Locate(path);
  if (place.error != 0) return place.error;
  return place.direct ? WriteDirect(place, content) : Replace(place, content);
}

}  // namespace scrubwell::hosts
