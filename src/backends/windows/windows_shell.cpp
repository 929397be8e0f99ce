#include "backends/windows/windows_shell.h"

#include <shlobj.h>

#include <algorithm>
#include <cstring>

#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

// Longer than any path of a link, which the shell cuts at 260.
constexpr std::size_t kPathUnits = 1024;

UnicodeString ExpandVariables(const UnicodeString& text) {
  const DWORD size = ExpandEnvironmentStringsW(Wide(text), nullptr, 0);
  UnicodeString out(size, u'\0');
  const DWORD length = ExpandEnvironmentStringsW(Wide(text), WideBuffer(out), size);
  if (length == 0 || length > size) return text;
  out.resize(length - 1);
  return out;
}

// The link names something that only the installer can find.
bool IsAdvertised(IShellLinkW& link) {
  ComPtr<IShellLinkDataList> data;
  DWORD flags = 0;
  return SUCCEEDED(link.QueryInterface(IID_IShellLinkDataList, data.OutVoid())) &&
         SUCCEEDED(data->GetFlags(&flags)) && (flags & SLDF_HAS_DARWINID) != 0;
}

// Every item within the bytes, and an end behind the last.
bool IsSoundList(const Bytes& list) {
  for (std::size_t at = 0; at + 2 <= list.size();) {
    const std::size_t size = list[at] | static_cast<std::size_t>(list[at + 1]) << 8U;
    if (size == 0) return true;
    if (size < 3) return false;
    at += size;
  }
  return false;
}

}  // namespace

Status WindowsShell::SpecialFolder(int csidl, UnicodeString& out) {
  UnicodeString path(MAX_PATH, u'\0');
  if (SHGetSpecialFolderPathW(nullptr, WideBuffer(path), csidl, FALSE) == FALSE)
    return Status::Unknown;
  out = ExcludeTrailingPathDelimiter(path.c_str());
  return out.empty() ? Status::Unknown : Status::Ok;
}

Status WindowsShell::LinkTarget(UnicodeView linkFile, UnicodeString& out) {
  ComPtr<IShellLinkW> link;
  ComPtr<IPersistFile> file;
  out.clear();
  if (HasNul(linkFile) ||
      FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                              link.OutVoid())) ||
      FAILED(link->QueryInterface(IID_IPersistFile, file.OutVoid())) ||
      FAILED(file->Load(Wide(UnicodeString(linkFile)), STGM_READ | STGM_SHARE_DENY_NONE))) {
    return Status::Unknown;
  }
  if (IsAdvertised(*link.Get())) return Status::Absent;
  UnicodeString path(kPathUnits, u'\0');
  WIN32_FIND_DATAW data{};
  if (FAILED(link->GetPath(WideBuffer(path), static_cast<int>(path.size()), &data, SLGP_RAWPATH)))
    return Status::Unknown;
  out = ExpandVariables(path.c_str());
  return out.empty() ? Status::Absent : Status::Ok;
}

Status WindowsShell::ItemListPath(const Bytes& list, UnicodeString& out) {
  if (!IsSoundList(list)) return Status::Corrupt;
  // In memory of the kind, and with the alignment, that the shell expects.
  const Owned<void*, &CoTaskMemFree> copy(CoTaskMemAlloc(list.size()));
  if (!copy.Good()) return Status::Unknown;
  std::memcpy(copy.Get(), list.data(), list.size());
  UnicodeString path(kPathUnits, u'\0');
  // False for what is no file, but also for what the shell can't tell.
  if (SHGetPathFromIDListW(static_cast<LPCITEMIDLIST>(copy.Get()), WideBuffer(path)) == FALSE)
    return Status::Unknown;
  out = path.c_str();
  return out.empty() ? Status::Unknown : Status::Ok;
}

namespace {

// Asks in the view of a 32-bit process first, for that is what such a process would load, and where
// that has no such file, on the disk as it is.
Status InEitherView(UnicodeView file, const std::function<Status(const UnicodeString&)>& ask) {
  Status status = Status::Unknown;
  for (const FsView view : {FsView::Redirected, FsView::Physical}) {
    const RedirectionScope scope(view);
    if (!HasNul(file)) status = ask(PathInView(file, view));
    if (status == Status::Ok || !Is64BitSystem()) break;
  }
  return status;
}

Status StringIn(const UnicodeString& file, std::uint32_t id, UnicodeString& out) {
  const OwnedModule module(LoadLibraryExW(
      Wide(file), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
  if (!module.Good()) return StatusOfError(GetLastError());
  // With no room given, the function answers with where the text lies and how long it is.
  const wchar_t* text = nullptr;
  const int length = LoadStringW(reinterpret_cast<HINSTANCE>(module.Get()), id,
                                 reinterpret_cast<wchar_t*>(&text), 0);
  if (length <= 0 || text == nullptr) return Status::Absent;
  out = FromWide(text, static_cast<std::size_t>(length));
  return Status::Ok;
}

Status VersionIn(const UnicodeString& file, FileVersion& out) {
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeW(Wide(file), &ignored);
  if (size == 0) {
    const DWORD error = GetLastError();
    const bool none = error == ERROR_RESOURCE_TYPE_NOT_FOUND ||
                      error == ERROR_RESOURCE_DATA_NOT_FOUND ||
                      error == ERROR_RESOURCE_NAME_NOT_FOUND;
    return none ? Status::Absent : StatusOfError(error);
  }
  Bytes block(size);
  if (GetFileVersionInfoW(Wide(file), 0, size, block.data()) == FALSE) return Status::Unknown;
  void* fixed = nullptr;
  UINT length = 0;
  if (VerQueryValueW(block.data(), L"\\", &fixed, &length) == FALSE ||
      length < sizeof(VS_FIXEDFILEINFO)) {
    return Status::Absent;
  }
  const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(fixed);
  out = {HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS), HIWORD(info.dwFileVersionLS),
         LOWORD(info.dwFileVersionLS)};
  return Status::Ok;
}

}  // namespace

Status WindowsResources::StringResource(UnicodeView file, std::uint32_t id, UnicodeString& out) {
  out.clear();
  return InEitherView(file, [&](const UnicodeString& path) { return StringIn(path, id, out); });
}

Status WindowsResources::Version(UnicodeView file, FileVersion& out) {
  out = {};
  return InEitherView(file, [&](const UnicodeString& path) { return VersionIn(path, out); });
}

}  // namespace scrubwell::windows
