#include "plugins/history/history_checks.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"

namespace scrubwell::history {
namespace {

constexpr UnicodeView kOpenWithList = u"openwithlist";
constexpr UnicodeView kOrder = u"MRUList";
constexpr std::size_t kDriveRoot = 3;  // "C:\"

constexpr int kDeepestFolder = 64;

// A percent sign in an address is a character of the name or an escape, never a variable. So the
// path must not be expanded, and what the drive says of it as it stands is the whole truth.
bool IsMissingAsItStands(UnicodeView path) {
  if (path.find(u'%') == UnicodeView::npos) return FileOrDirExists(path, true);
  FileInfo info;
  IFiles& files = Platform().files;
  if (files.Stat(path, FsView::Physical, info) != Status::Absent) return false;
  return !IsCurrentProcessWow64() || files.Stat(path, FsView::Redirected, info) == Status::Absent;
}

bool IsFile(UnicodeView path) {
  FileInfo info;
  IFiles& files = Platform().files;
  return (files.Stat(path, FsView::Physical, info) == Status::Ok && !info.isFolder) ||
         (files.Stat(path, FsView::Redirected, info) == Status::Ok && !info.isFolder);
}

}  // namespace

bool LeadsIntoFile(UnicodeView path) {
  UnicodeString above = StripLastKey(RemoveQuotationMarks(Trim(path)));
  for (int level = 0; above.size() > kDriveRoot; ++level) {
    // Nobody looks further up: what is nested as deep as this is left alone.
    if (level == kDeepestFolder || IsFile(above)) return true;
    UnicodeString next = StripLastKey(above);
    if (next.size() == above.size()) break;
    above = std::move(next);
  }
  return false;
}

bool IsTargetMissing(UnicodeView path) {
  return FileOrDirExists(path, true) && !LeadsIntoFile(path);
}

UnicodeString PathAsWritten(UnicodeView rest) {
  UnicodeString path = Replace(rest, u"/", u"\\");
  if (path.size() >= 2 && path[1] == u'|') path[1] = u':';
  return path;
}

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
  if (!IsMissingAsItStands(path) || LeadsIntoFile(path)) return false;
  const UnicodeString decoded = UrlDecode(path);
  return decoded == path || (IsMissingAsItStands(decoded) && !LeadsIntoFile(decoded));
}

void RemoveFromOrder(RootKey root, UnicodeView key, UnicodeView valueName, TZmRegOptions opts) {
  UnicodeString order;
  if (GetRegStringValue(root, key, kOrder, order, opts) != ERRC_SUCCESS) return;
  SetRegStringValue(root, key, kOrder, Replace(order, valueName, {}), opts);
}

}  // namespace scrubwell::history
