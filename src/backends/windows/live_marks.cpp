#include "backends/windows/live_marks.h"

#include <array>
#include <cstring>

#include "backends/windows/privileges.h"
#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

constexpr std::size_t kMaxPlainPath = 247;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::int64_t kLongestStream = 1 << 20;
constexpr const wchar_t* kToRestore[] = {SE_RESTORE_NAME, SE_TAKE_OWNERSHIP_NAME};
constexpr SECURITY_INFORMATION kAccess =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
constexpr DWORD kNotToBeKept =
    FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_ENCRYPTED | FILE_ATTRIBUTE_OFFLINE;
constexpr DWORD kToBeSet = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                           FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

constexpr const char* kAttributes = "attributes";
constexpr const char* kTimes = "times";
constexpr const char* kSecurity = "security";
constexpr std::string_view kStream = "stream:";

using Times = std::array<FILETIME, 3>;  // made, read, written
using FileHandle = Owned<HANDLE, &CloseHandle>;

// In the form that takes any length.
UnicodeString Literal(UnicodeView path) {
  return path.size() <= kMaxPlainPath ? UnicodeString(path) : u"\\\\?\\" + UnicodeString(path);
}

FileHandle OpenFile(const UnicodeString& path, DWORD access, DWORD creation = OPEN_EXISTING) {
  const HANDLE opened = CreateFileW(Wide(path), access, kShareAll, nullptr, creation,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  return opened == INVALID_HANDLE_VALUE ? FileHandle() : FileHandle(opened);
}

bool ReadStream(const UnicodeString& path, std::int64_t size, Bytes& out) {
  const FileHandle file = OpenFile(path, GENERIC_READ);
  out.resize(static_cast<std::size_t>(size));
  DWORD read = 0;
  return file.Good() &&
         ReadFile(file.Get(), out.data(), static_cast<DWORD>(size), &read, nullptr) != FALSE &&
         read == out.size();
}

bool WriteStream(const UnicodeString& path, const Bytes& data) {
  const FileHandle file = OpenFile(path, GENERIC_WRITE, CREATE_ALWAYS);
  DWORD written = 0;
  return file.Good() &&
         WriteFile(file.Get(), data.data(), static_cast<DWORD>(data.size()), &written, nullptr) !=
             FALSE &&
         written == data.size();
}

// Since Vista.
using FindFirst = HANDLE WINAPI(LPCWSTR, STREAM_INFO_LEVELS, LPVOID, DWORD);
using FindNext = BOOL WINAPI(HANDLE, LPVOID);

Status SaveStreams(const UnicodeString& path, StreamFinder* find, FileAttributes& out) {
  std::vector<FurtherStream> streams;
  if (const Status status = find(path, streams); status != Status::Ok) return status;
  for (const FurtherStream& stream : streams) {
    Bytes& bytes = out.extended[std::string(kStream) + ToUtf8(stream.name)];
    if (stream.size > kLongestStream || !ReadStream(path + stream.name, stream.size, bytes))
      return Status::Denied;
  }
  return Status::Ok;
}

Bytes SecurityOf(const UnicodeString& path) {
  DWORD size = 0;
  GetFileSecurityW(Wide(path), kAccess, nullptr, 0, &size);
  Bytes descriptor(size);
  if (GetFileSecurityW(Wide(path), kAccess, descriptor.data(), size, &size) == FALSE) return {};
  return descriptor;
}

template <class Value>
bool Take(const FileAttributes& marks, const char* name, Value& out) {
  const auto it = marks.extended.find(name);
  if (it == marks.extended.end() || it->second.size() != sizeof out) return false;
  std::memcpy(&out, it->second.data(), sizeof out);
  return true;
}

template <class Value>
Bytes AsBytes(const Value& value) {
  Bytes bytes(sizeof value);
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

void RestoreSecurity(const UnicodeString& path, const FileAttributes& marks) {
  const auto it = marks.extended.find(kSecurity);
  if (it == marks.extended.end() || it->second.size() < sizeof(SECURITY_DESCRIPTOR_RELATIVE))
    return;
  Bytes descriptor = it->second;
  // What was inherited stays marked so only when it is said that this is wanted.
  auto* const header = reinterpret_cast<SECURITY_DESCRIPTOR_RELATIVE*>(descriptor.data());
  if ((header->Control & SE_DACL_AUTO_INHERITED) != 0) header->Control |= SE_DACL_AUTO_INHERIT_REQ;
  if (IsValidSecurityDescriptor(descriptor.data()) == FALSE) return;
  const Privileges privileges(kToRestore);
  if (SetFileSecurityW(Wide(path), kAccess, descriptor.data()) == FALSE)
    SetFileSecurityW(Wide(path), DACL_SECURITY_INFORMATION, descriptor.data());
}

}  // namespace

UnicodeString LongPath(UnicodeView path) {
  UnicodeString plain(path);
  if (plain.find(u'~') == UnicodeString::npos || HasNul(path)) return plain;
  UnicodeString whole(32768, u'\0');
  const DWORD length =
      GetLongPathNameW(Wide(plain), WideBuffer(whole), static_cast<DWORD>(whole.size()));
  if (length == 0 || length >= whole.size()) return plain;
  whole.resize(length);
  return whole;
}

Status FindStreams(const UnicodeString& path, std::vector<FurtherStream>& out) {
  static auto* const first = SystemFunction<FindFirst>(L"kernel32", "FindFirstStreamW");
  static auto* const next = SystemFunction<FindNext>(L"kernel32", "FindNextStreamW");
  if (first == nullptr || next == nullptr) return Status::Denied;
  WIN32_FIND_STREAM_DATA data{};
  const HANDLE found = first(Wide(path), FindStreamInfoStandard, &data, 0);
  if (found == INVALID_HANDLE_VALUE) {
    // Without any, as folders are, or on a file system that has none.
    const DWORD error = GetLastError();
    return error == ERROR_HANDLE_EOF || error == ERROR_INVALID_PARAMETER ? Status::Ok
                                                                         : Status::Denied;
  }
  const Owned<HANDLE, &FindClose> search(found);
  do {
    UnicodeString name = FromWide(data.cStreamName);
    if (name != u"::$DATA" && !name.empty())
      out.push_back({std::move(name), data.StreamSize.QuadPart});
  } while (next(search.Get(), &data) != FALSE);
  return GetLastError() == ERROR_HANDLE_EOF ? Status::Ok : Status::Denied;
}

Status SaveMarks(UnicodeView path, FileAttributes& out, StreamFinder* find) {
  const RedirectionScope scope(FsView::Physical);
  const UnicodeString full = Literal(path);
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (GetFileAttributesExW(Wide(full), GetFileExInfoStandard, &data) == FALSE)
    return StatusOfError(GetLastError());
  if ((data.dwFileAttributes & kNotToBeKept) != 0) return Status::Denied;
  out.extended[kAttributes] = AsBytes(data.dwFileAttributes);
  out.extended[kTimes] =
      AsBytes(Times{data.ftCreationTime, data.ftLastAccessTime, data.ftLastWriteTime});
  Bytes security = SecurityOf(full);
  if (!security.empty()) out.extended[kSecurity] = std::move(security);
  return SaveStreams(full, find, out);
}

Status RestoreMarks(UnicodeView path, const FileAttributes& marks) {
  const RedirectionScope scope(FsView::Physical);
  const UnicodeString full = Literal(path);
  Status status = Status::Ok;
  for (const auto& [name, data] : marks.extended) {
    if (!name.starts_with(kStream)) continue;
    // Such a name begins with a colon and can't lead to another file.
    const UnicodeString stream = FromUtf8(std::string_view(name).substr(kStream.size()));
    if (stream.find_first_of(u"\\/") == UnicodeString::npos && stream.starts_with(u':') &&
        !WriteStream(full + stream, data))
      status = Status::Denied;
  }
  DWORD attributes = 0;
  const bool knowsAttributes = Take(marks, kAttributes, attributes);
  Times times{};
  const FileHandle file = OpenFile(full, FILE_WRITE_ATTRIBUTES);
  RestoreSecurity(full, marks);
  if (knowsAttributes)
    SetFileAttributesW(
        Wide(full), (attributes & kToBeSet) != 0 ? attributes & kToBeSet : FILE_ATTRIBUTE_NORMAL);
  if (file.Good() && Take(marks, kTimes, times) &&
      SetFileTime(file.Get(), &times[0], &times[1], &times[2]) == FALSE)
    status = Status::Denied;
  return status;
}

Status MakeFolder(UnicodeView path) {
  const RedirectionScope scope(FsView::Physical);
  const BOOL made = CreateDirectoryW(Wide(Literal(path)), nullptr);
  return made != FALSE ? Status::Ok : StatusOfError(GetLastError());
}

Status MayErase(UnicodeView path) {
  const RedirectionScope scope(FsView::Physical);
  const UnicodeString full = Literal(path);
  const DWORD attributes = GetFileAttributesW(Wide(full));
  if (attributes == INVALID_FILE_ATTRIBUTES) return StatusOfError(GetLastError());
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0 && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
    return Status::Denied;
  return OpenFile(full, DELETE).Good() ? Status::Ok : StatusOfError(GetLastError());
}

}  // namespace scrubwell::windows
