#include "backends/windows/windows_profiles.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

constexpr std::size_t kFirstSize = 512;
constexpr std::size_t kMaxSize = std::size_t{1} << 22U;

// The text of an entry or, without a key, the names of all entries with a NUL behind each.
UnicodeString ReadProfile(const UnicodeString& file, const UnicodeString& section,
                          const wchar_t* key, const wchar_t* fallback) {
  UnicodeString out;
  for (std::size_t size = kFirstSize; size <= kMaxSize; size *= 4) {
    out.resize(size);
    const DWORD length = GetPrivateProfileStringW(Wide(section), key, fallback, WideBuffer(out),
                                                  static_cast<DWORD>(size), Wide(file));
    // What was cut ends one unit before the buffer does, a list two.
    if (length + 2 < size) {
      out.resize(length);
      return out;
    }
  }
  return {};
}

bool CanAsk(UnicodeView file, UnicodeView section, UnicodeView key) {
  return !file.empty() && !HasNul(file) && !section.empty() && !HasNul(section) && !HasNul(key);
}

}  // namespace

Status WindowsProfiles::Get(UnicodeView file, UnicodeView section, UnicodeView key,
                            UnicodeString& out) {
  out.clear();
  if (!CanAsk(file, section, key) || key.empty()) return Status::Unknown;
  const UnicodeString path(file);
  const UnicodeString in(section);
  const UnicodeString name(key);
  // The function has no other word for "not there" than its fallback: two that differ tell.
  out = ReadProfile(path, in, Wide(name), L"\x01");
  if (out == u"\x01" && ReadProfile(path, in, Wide(name), L"\x02") == u"\x02") {
    out.clear();
    return Status::Absent;
  }
  return Status::Ok;
}

Status WindowsProfiles::Entries(UnicodeView file, UnicodeView section, TStringList& out) {
  out.clear();
  if (!CanAsk(file, section, {})) return Status::Unknown;
  const UnicodeString list = ReadProfile(UnicodeString(file), UnicodeString(section), nullptr, L"");
  for (std::size_t from = 0; from < list.size();) {
    const std::size_t to = std::min(list.find(u'\0', from), list.size());
    if (to > from) out.emplace_back(list, from, to - from);
    from = to + 1;
  }
  return Status::Ok;
}

Status WindowsProfiles::Change(UnicodeView file, UnicodeView section, UnicodeView key,
                               const wchar_t* value) {
  if (!mayChange_) return Status::Denied;
  UnicodeString old;
  const Status there = Get(file, section, key, old);
  if (there != Status::Ok) return there;
  const bool bare = file.find_first_of(u"\\/:") == UnicodeView::npos;
  const UnicodeString path =
      bare ? IncludeTrailingPathDelimiter(system_.WindowsDir()).append(file) : UnicodeString(file);
  // An entry that the registry holds needs no file.
  const Status saved = files_.Backup(path);
  if (saved != Status::Ok && saved != Status::Absent) return saved;
  const RedirectionScope scope(FsView::Physical);
  const UnicodeString in(section);
  const UnicodeString name(key);
  if (WritePrivateProfileStringW(Wide(in), Wide(name), value, Wide(path)) == FALSE)
    return StatusOfError(GetLastError());
  WritePrivateProfileStringW(nullptr, nullptr, nullptr, Wide(path));  // writes what is kept back
  return Status::Ok;
}

Status WindowsProfiles::Put(UnicodeView file, UnicodeView section, UnicodeView key,
                            UnicodeView value) {
  if (HasNul(value)) return Status::Denied;
  const UnicodeString text(value);
  return Change(file, section, key, Wide(text));
}

Status WindowsProfiles::Remove(UnicodeView file, UnicodeView section, UnicodeView key) {
  return Change(file, section, key, nullptr);
}

}  // namespace scrubwell::windows
