#include "backends/offline/offline_shell.h"

#include <algorithm>

#include "backends/offline/registry_read.h"
#include "formats/lnk/item_list.h"
#include "formats/lnk/lnk.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr UnicodeView kShellFolders =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

struct SpecialFolderRow {
  int csidl;
  UnicodeView value;  ///< in the list of folders; empty when the folder is in none
  bool ofMachine;
  UnicodeView vista;  ///< default from Windows Vista on
  UnicodeView xp;     ///< default before; empty when it is the same
};

constexpr SpecialFolderRow kFolders[] = {
    {0, u"Desktop", false, u"%USERPROFILE%\\Desktop", {}},
    {2, u"Programs", false, u"%APPDATA%\\Microsoft\\Windows\\Start Menu\\Programs",
     u"%USERPROFILE%\\Start Menu\\Programs"},
    {5, u"Personal", false, u"%USERPROFILE%\\Documents", u"%USERPROFILE%\\My Documents"},
    {6, u"Favorites", false, u"%USERPROFILE%\\Favorites", {}},
    {7, u"Startup", false, u"%APPDATA%\\Microsoft\\Windows\\Start Menu\\Programs\\Startup",
     u"%USERPROFILE%\\Start Menu\\Programs\\Startup"},
    {8, u"Recent", false, u"%APPDATA%\\Microsoft\\Windows\\Recent", u"%USERPROFILE%\\Recent"},
    {9, u"SendTo", false, u"%APPDATA%\\Microsoft\\Windows\\SendTo", u"%USERPROFILE%\\SendTo"},
    {11, u"Start Menu", false, u"%APPDATA%\\Microsoft\\Windows\\Start Menu",
     u"%USERPROFILE%\\Start Menu"},
    {16, u"Desktop", false, u"%USERPROFILE%\\Desktop", {}},
    {20, u"Fonts", false, u"%windir%\\Fonts", {}},
    {22, u"Common Start Menu", true, u"%ProgramData%\\Microsoft\\Windows\\Start Menu",
     u"%ALLUSERSPROFILE%\\Start Menu"},
    {23, u"Common Programs", true, u"%ProgramData%\\Microsoft\\Windows\\Start Menu\\Programs",
     u"%ALLUSERSPROFILE%\\Start Menu\\Programs"},
    {24, u"Common Startup", true,
     u"%ProgramData%\\Microsoft\\Windows\\Start Menu\\Programs\\Startup",
     u"%ALLUSERSPROFILE%\\Start Menu\\Programs\\Startup"},
    {25, u"Common Desktop", true, u"%PUBLIC%\\Desktop", u"%ALLUSERSPROFILE%\\Desktop"},
    {26, u"AppData", false, u"%USERPROFILE%\\AppData\\Roaming", u"%USERPROFILE%\\Application Data"},
    {28, u"Local AppData", false, u"%USERPROFILE%\\AppData\\Local",
     u"%USERPROFILE%\\Local Settings\\Application Data"},
    {32, u"Cache", false, u"%USERPROFILE%\\AppData\\Local\\Microsoft\\Windows\\INetCache",
     u"%USERPROFILE%\\Local Settings\\Temporary Internet Files"},
    {34, u"History", false, u"%USERPROFILE%\\AppData\\Local\\Microsoft\\Windows\\History",
     u"%USERPROFILE%\\Local Settings\\History"},
    {35, u"Common AppData", true, u"%ProgramData%", u"%ALLUSERSPROFILE%\\Application Data"},
    {36, {}, true, u"%windir%", {}},
    {37, {}, true, u"%windir%\\System32", {}},
    {38, {}, true, u"%ProgramFiles%", {}},
    {40, {}, false, u"%USERPROFILE%", {}},
    {43, {}, true, u"%CommonProgramFiles%", {}},
};

}  // namespace

Status OfflineShell::SpecialFolder(int csidl, UnicodeString& out) {
  const auto* const row = std::find_if(std::begin(kFolders), std::end(kFolders),
                                       [csidl](const auto& each) { return each.csidl == csidl; });
  if (row == std::end(kFolders) || (!row->ofMachine && !hasUser_)) return Status::Unknown;
  UnicodeString text;
  if (!row->value.empty()) {
    const RootKey root = row->ofMachine ? RootKey::LocalMachine : RootKey::CurrentUser;
    RegValue value;
    const Status status = registry_.GetValue({root, kShellFolders}, row->value, value);
    if (status != Status::Ok && status != Status::Absent) return Status::Unknown;
    if (status == Status::Ok) text = TextOf(value);
  }
  if (text.empty()) {
    text = row->xp.empty() || system_.HasVistaFolders() ? row->vista : row->xp;
  }
  text = system_.All(View::Native).Expand(text);
  if (text.find(u'%') != UnicodeString::npos) return Status::Unknown;
  while (text.ends_with(u'\\')) text.pop_back();
  out = text;
  return Status::Ok;
}

Status OfflineShell::LinkTarget(UnicodeView linkFile, UnicodeString& out) {
  Bytes bytes;
  Status status = files_.Read(linkFile, FsView::Physical, lnk::kMaxFileSize, bytes);
  if (status != Status::Ok) return status;
  lnk::Link link;
  status = lnk::ReadLink(bytes, static_cast<int>(codePage_), link);
  if (status != Status::Ok) return status;
  out = link.target;
  if (link.source == lnk::Source::RelativePath) {
    WinPath path;
    const UnicodeString whole =
        UnicodeString(ExtractFilePath(linkFile)) + u"\\" + UnicodeString(link.target);
    if (!ParsePath(whole, path)) return Status::Unknown;
    out = PathText(path);
  } else if (link.source == lnk::Source::Environment) {
    out = ExpandedTarget(out);
  }
  return Status::Ok;
}

// A variable may mean two folders, one for 64-bit and one for 32-bit programs. The one that has the
// file is meant; with neither the text keeps its variables, for what looks at it to try them all.
UnicodeString OfflineShell::ExpandedTarget(const UnicodeString& text) {
  const UnicodeString native = system_.All(View::Native).Expand(text);
  const UnicodeString wide = system_.All(View::Bits64).Expand(text);
  FileInfo info;
  for (const UnicodeString& path : {native, wide}) {
    if (files_.Stat(path, FsView::Physical, info) == Status::Ok) return path;
  }
  return native == wide ? native : text;
}

Status OfflineShell::ItemListPath(const Bytes& list, UnicodeString& out) {
  return lnk::PathOfItemList(list, out);
}

}  // namespace scrubwell::offline
