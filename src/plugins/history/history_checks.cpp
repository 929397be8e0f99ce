#include "plugins/history/history_checks.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"

namespace scrubwell::history {
namespace {

constexpr UnicodeView kOpenWithList = u"openwithlist";
constexpr UnicodeView kOrder = u"MRUList";
constexpr std::size_t kDriveRoot = 3;  // "C:\"

// A percent sign in an address is a character of the name or an escape, never a variable. So the
// path must not be expanded, and what the drive says of it as it stands is the whole truth.
bool IsMissingAsItStands(UnicodeView path) {
  if (path.find(u'%') == UnicodeView::npos) return FileOrDirExists(path, true);
  FileInfo info;
  IFiles& files = Platform().files;
  if (files.Stat(path, FsView::Physical, info) != Status::Absent) return false;
  return !IsCurrentProcessWow64() || files.Stat(path, FsView::Redirected, info) == Status::Absent;
}

}  // namespace

bool IsOpenWithKeyEmpty(UnicodeView key) {
  if (HasValues(HKEY_CURRENT_USER, key, {})) return false;
  if (!HasSubKeysEx(HKEY_CURRENT_USER, key, {})) return true;
  TStringList names;
  EnumRegKeysEx(HKEY_CURRENT_USER, key, names, {});
  // No names of subkeys that are there: they can't be read.
  return !names.empty() && std::ranges::all_of(names, [key](const UnicodeString& name) {
    const UnicodeString subkey = UnicodeString(key) + u"\\" + name;
    return LowerCase(name) == kOpenWithList && !HasValues(HKEY_CURRENT_USER, subkey, {}) &&
           !HasSubKeysEx(HKEY_CURRENT_USER, subkey, {});
  });
}

bool IsAddressFileMissing(UnicodeView path) {
  const UnicodeView root = path.substr(0, kDriveRoot);
  if (!root.ends_with(u":\\") || !FileIsOnFixedDrive(root, false)) return false;
  if (!IsMissingAsItStands(path)) return false;
  const UnicodeString decoded = UrlDecode(path);
  return decoded == path || IsMissingAsItStands(decoded);
}

void RemoveFromOrder(RootKey root, UnicodeView key, UnicodeView valueName, TZmRegOptions opts) {
  UnicodeString order;
  if (GetRegStringValue(root, key, kOrder, order, opts) != ERRC_SUCCESS) return;
  SetRegStringValue(root, key, kOrder, Replace(order, valueName, {}), opts);
}

}  // namespace scrubwell::history
