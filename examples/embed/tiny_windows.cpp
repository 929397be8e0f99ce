#include "tiny_windows.h"

#include <algorithm>

namespace embed {

using namespace scrubwell;

namespace {

char16_t Upper(char16_t unit) {
  return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
}

UnicodeString Upper(UnicodeView text) {
  UnicodeString upper(text);
  for (char16_t& unit : upper) unit = Upper(unit);
  return upper;
}

// "HKLM\Software" of a root and a path.
UnicodeString FullPath(const KeyRef& key) {
  UnicodeString path;
  switch (key.root) {
    case RootKey::ClassesRoot:
      path = u"HKCR";
      break;
    case RootKey::CurrentUser:
      path = u"HKCU";
      break;
    case RootKey::LocalMachine:
      path = u"HKLM";
      break;
    case RootKey::Users:
      path = u"HKU";
      break;
    default:
      path = u"?";
      break;
  }
  return key.path.empty() ? path : path.append(u"\\").append(key.path);
}

// The part of `path` right below `parent`; empty when it lies elsewhere or deeper.
UnicodeView NameBelow(UnicodeView path, UnicodeView parent) {
  if (path.size() <= parent.size() + 1 || path[parent.size()] != u'\\') return {};
  if (Upper(path.substr(0, parent.size())) != Upper(parent)) return {};
  const UnicodeView name = path.substr(parent.size() + 1);
  return name.find(u'\\') == UnicodeView::npos ? name : UnicodeView{};
}

}  // namespace

bool NoCase::operator()(const UnicodeString& a, const UnicodeString& b) const {
  return Upper(a) < Upper(b);
}

// ---- Registry -----------------------------------------------------------------------------

void TinyRegistry::AddText(UnicodeView key, UnicodeView name, UnicodeView text) {
  RegValue value{UnicodeString(name), REGT_SZ, {}};
  for (const char16_t unit : UnicodeString(text) + u'\0') {
    value.data.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    value.data.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  Put(UnicodeString(key), value);
}

void TinyRegistry::Put(const UnicodeString& path, const RegValue& value) {
  for (std::size_t end = path.find(u'\\'); end != path.npos; end = path.find(u'\\', end + 1))
    keys_[path.substr(0, end)];
  keys_[path].insert_or_assign(value.name, value);
}

Status TinyRegistry::OpenKey(const KeyRef& key, KeyInfo& out) {
  const auto found = keys_.find(FullPath(key));
  if (found == keys_.end()) return Status::Absent;
  TStringList subkeys;
  EnumKeys(key, subkeys);
  out = {static_cast<std::uint32_t>(subkeys.size()),
         static_cast<std::uint32_t>(found->second.size())};
  return Status::Ok;
}

Status TinyRegistry::EnumKeys(const KeyRef& key, TStringList& out) {
  const UnicodeString parent = FullPath(key);
  if (!keys_.contains(parent)) return Status::Absent;
  out.clear();
  for (const auto& [path, values] : keys_) {
    if (const UnicodeView name = NameBelow(path, parent); !name.empty()) out.emplace_back(name);
  }
  return Status::Ok;
}

Status TinyRegistry::EnumValues(const KeyRef& key, std::vector<RegValue>& out) {
  const auto found = keys_.find(FullPath(key));
  if (found == keys_.end()) return Status::Absent;
  out.clear();
  for (const auto& [name, value] : found->second) out.push_back(value);
  return Status::Ok;
}

Status TinyRegistry::GetValue(const KeyRef& key, UnicodeView name, RegValue& out) {
  const auto found = keys_.find(FullPath(key));
  if (found == keys_.end()) return Status::Absent;
  const auto value = found->second.find(UnicodeString(name));
  if (value == found->second.end()) return Status::Absent;
  out = value->second;
  return Status::Ok;
}

Status TinyRegistry::SetValue(const KeyRef& key, const RegValue& value) {
  return Put(FullPath(key), value), Status::Ok;
}
// No key needs to be made without a value; a request for it is an ordinary refusal.
Status TinyRegistry::CreateKey(const KeyRef&) {
  return Status::Denied;
}

Status TinyRegistry::DeleteKey(const KeyRef& key, bool) {
  const UnicodeString top = Upper(FullPath(key));
  if (key.path.empty() || !keys_.contains(top)) return Status::Absent;
  std::erase_if(keys_, [&](const auto& entry) {
    const UnicodeString path = Upper(entry.first);
    return path == top || path.starts_with(top + u"\\");
  });
  return Status::Ok;
}

Status TinyRegistry::DeleteValue(const KeyRef& key, UnicodeView name) {
  const auto found = keys_.find(FullPath(key));
  if (found == keys_.end()) return Status::Absent;
  return found->second.erase(UnicodeString(name)) == 1 ? Status::Ok : Status::Absent;
}

Status TinyRegistry::CheckAccess(const KeyRef& key, Access) {
  return keys_.contains(FullPath(key)) ? Status::Ok : Status::Absent;
}

// ---- Files --------------------------------------------------------------------------------

void TinyFiles::Add(UnicodeView path) {
  entries_[UnicodeString(path)] = {false};
  for (std::size_t end = path.rfind(u'\\'); end > 2; end = path.rfind(u'\\', end - 1))
    entries_[UnicodeString(path.substr(0, end))] = {true};
}

DriveKind TinyFiles::Drive(char16_t letter) {
  return Upper(letter) == u'C' ? DriveKind::Fixed : DriveKind::Unknown;
}

Status TinyFiles::Stat(UnicodeView path, FsView, FileInfo& out) {
  // Only of this drive is the list complete, so only there does a missing entry prove anything.
  if (path.size() < 3 || Drive(path[0]) != DriveKind::Fixed) return Status::Unknown;
  if (path.size() == 3) return out = {true}, Status::Ok;
  if (path.back() == u'\\') path.remove_suffix(1);
  const auto found = entries_.find(UnicodeString(path));
  if (found == entries_.end()) return Status::Absent;
  out = found->second;
  return Status::Ok;
}

Status TinyFiles::Size(UnicodeView path, FsView view, std::uint64_t& out) {
  FileInfo info;
  const Status status = Stat(path, view, info);
  out = status == Status::Ok && !info.isFolder ? 1 : 0;
  return status;
}

Status TinyFiles::List(UnicodeView path, FsView view, std::vector<DirEntry>& out) {
  FileInfo info;
  if (const Status status = Stat(path, view, info); status != Status::Ok) return status;
  if (path.back() == u'\\') path.remove_suffix(1);
  out.clear();
  for (const auto& [entry, of] : entries_) {
    const UnicodeView name = NameBelow(entry, path);
    if (!name.empty()) out.push_back({UnicodeString(name), of.isFolder, 0});
  }
  return Status::Ok;
}

Status TinyFiles::Read(UnicodeView, FsView, std::size_t, Bytes&) {
  return Status::Unknown;
}
Status TinyFiles::Write(UnicodeView, const Bytes&) {
  return Status::Denied;
}
Status TinyFiles::EraseFile(UnicodeView) {
  return Status::Denied;
}
Status TinyFiles::EraseFolder(UnicodeView) {
  return Status::Denied;
}
Status TinyFiles::Backup(UnicodeView) {
  return Status::Denied;
}

// ---- System, shell and text ---------------------------------------------------------------

Status TinySystem::Environment(UnicodeView name, View, UnicodeString& out) {
  static const std::map<UnicodeString, UnicodeString, NoCase> variables = {
      {u"ProgramFiles", u"C:\\Program Files"},
      {u"SystemDrive", u"C:"},
      {u"SystemRoot", u"C:\\Windows"},
      {u"windir", u"C:\\Windows"},
  };
  const auto found = variables.find(UnicodeString(name));
  if (found == variables.end()) return Status::Unknown;
  out = found->second;
  return Status::Ok;
}

Status TinyShell::SpecialFolder(int csidl, UnicodeString& out) {
  constexpr int fonts = 0x14;
  if (csidl != fonts) return Status::Unknown;
  out = u"C:\\Windows\\Fonts";
  return Status::Ok;
}

int TinyText::CompareText(UnicodeView a, UnicodeView b) {
  return Upper(a).compare(Upper(b));
}

UnicodeString TinyText::FromAnsi(std::string_view bytes) {
  UnicodeString text;
  for (const char byte : bytes) text.push_back(static_cast<unsigned char>(byte));
  return text;
}

std::string TinyText::ToAnsi(UnicodeView text) {
  std::string bytes;
  for (const char16_t unit : text) bytes.push_back(unit <= 0xFF ? static_cast<char>(unit) : '?');
  return bytes;
}

}  // namespace embed
