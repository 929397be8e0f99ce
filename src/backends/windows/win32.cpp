#include "backends/windows/win32.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell::windows {

Status StatusOfError(DWORD error) {
  switch (error) {
    case ERROR_SUCCESS:
      return Status::Ok;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_KEY_DELETED:
      return Status::Absent;
    case ERROR_ACCESS_DENIED:
    case ERROR_PRIVILEGE_NOT_HELD:
    case ERROR_SHARING_VIOLATION:
    case ERROR_WRITE_PROTECT:
    case ERROR_DIR_NOT_EMPTY:
      return Status::Denied;
    case ERROR_BADDB:
    case ERROR_BADKEY:
    case ERROR_CANTREAD:
    case ERROR_REGISTRY_CORRUPT:
    case ERROR_REGISTRY_IO_FAILED:
    case ERROR_FILE_CORRUPT:
    case ERROR_DISK_CORRUPT:
    case ERROR_CRC:
      return Status::Corrupt;
    default:
      return Status::Unknown;
  }
}

bool IsWow64() {
  static const bool wow64 = [] {
    BOOL answer = FALSE;
    return IsWow64Process(GetCurrentProcess(), &answer) != FALSE && answer != FALSE;
  }();
  return wow64;
}

bool Is64BitSystem() {
  return sizeof(void*) == 8 || IsWow64();
}

namespace {

// Folders below System32 that the two views share.
constexpr UnicodeView kSharedFolders[] = {u"catroot",  u"catroot2",     u"DriverStore",
                                          u"LogFiles", u"drivers\\etc", u"spool"};

// Whether the path begins with that folder; `rest` is what follows, from the backslash on.
bool BeginsWith(UnicodeView path, UnicodeView folder, UnicodeView& rest) {
  if (path.size() < folder.size() || !SameText(path.substr(0, folder.size()), folder)) return false;
  rest = path.substr(folder.size());
  return rest.empty() || rest.front() == u'\\';
}

UnicodeString SystemWindowsFolder() {
  UnicodeString path(MAX_PATH, u'\0');
  // The other function of this kind answers with a user's own folder on a terminal server.
  path.resize(GetSystemWindowsDirectoryW(WideBuffer(path), MAX_PATH) % MAX_PATH);
  return UnicodeString(ExcludeTrailingPathDelimiter(path));
}

}  // namespace

UnicodeString WindowsFolder() {
  static const UnicodeString folder = SystemWindowsFolder();
  return folder;
}

UnicodeString PathInView(UnicodeView path, FsView view) {
  const bool isAsIs = sizeof(void*) == 4 || view == FsView::Physical;
  return isAsIs ? UnicodeString(path) : RedirectedPath(path);
}

UnicodeString RedirectedPath(UnicodeView path) {
  UnicodeString plain(path);
  if (!Is64BitSystem()) return plain;
  std::replace(plain.begin(), plain.end(), u'/', u'\\');
  UnicodeView rest;
  const UnicodeString windows = WindowsFolder();
  if (BeginsWith(plain, windows + u"\\Sysnative", rest))
    return windows + u"\\System32" + UnicodeString(rest);
  if (!BeginsWith(plain, windows + u"\\System32", rest)) return plain;
  UnicodeView ignored;
  for (const UnicodeView shared : kSharedFolders)
    if (!rest.empty() && BeginsWith(rest.substr(1), shared, ignored)) return plain;
  return windows + u"\\SysWOW64" + UnicodeString(rest);
}

namespace {

// What the thread's redirection was before. The system's function swaps: it stores the old state
// and sets the new one, where null is "redirect" and anything else "don't".
using DisableRedirection = BOOL WINAPI(void**);
using RevertRedirection = BOOL WINAPI(void*);

}  // namespace

RedirectionScope::RedirectionScope(FsView view) {
  if (!IsWow64()) return;
  static auto* const disable =
      SystemFunction<DisableRedirection>(L"kernel32", "Wow64DisableWow64FsRedirection");
  static auto* const revert =
      SystemFunction<RevertRedirection>(L"kernel32", "Wow64RevertWow64FsRedirection");
  if (disable == nullptr || revert == nullptr || disable(&before_) == FALSE) return;
  changed_ = true;
  if (view == FsView::Redirected) revert(nullptr);
}

RedirectionScope::~RedirectionScope() {
  if (!changed_) return;
  static auto* const revert =
      SystemFunction<RevertRedirection>(L"kernel32", "Wow64RevertWow64FsRedirection");
  revert(before_);
}

}  // namespace scrubwell::windows
