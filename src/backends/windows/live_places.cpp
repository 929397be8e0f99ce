#include "backends/windows/live_places.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "backends/windows/privileges.h"
#include "backends/windows/reg_force.h"
#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

constexpr UnicodeView kLinkValue = u"SymbolicLinkValue";
constexpr int kMaxDepth = 512;  // the system's own limit
constexpr const wchar_t* kToSave[] = {SE_BACKUP_NAME};
constexpr const wchar_t* kToSaveAudit[] = {SE_SECURITY_NAME};
constexpr const wchar_t* kToRestore[] = {SE_RESTORE_NAME, SE_TAKE_OWNERSHIP_NAME};

constexpr SECURITY_INFORMATION kAccess =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

constexpr struct {
  UnicodeView name;  // the system's
  UnicodeView mount;
} kRoots[] = {{u"\\REGISTRY\\MACHINE", u"HKLM"}, {u"\\REGISTRY\\USER", u"HKU"}};

struct SavedRights {
  REGSAM access = KEY_READ;
  SECURITY_INFORMATION parts = kAccess;
};

/// Reads a key and all below it.
class TreeReader {
 public:
  TreeReader(const SavedRights& rights, std::vector<KeyImage>& out) : rights_(rights), out_(out) {}

  Status Add(const RegKey& key, UnicodeView name, std::uint32_t level) {
    if (level > kMaxDepth) return Status::Unknown;
    KeyImage image;
    image.level = level;
    image.name = name;
    image.time = key.LastWritten();
    image.security = key.Security(rights_.parts);
    if (image.security.empty()) image.security = key.Security(kAccess);
    if (image.security.empty()) return Status::Denied;
    RegValue target;
    image.link = key.Value(kLinkValue, target) == Status::Ok && target.type == REGT_LINK;
    Status status = key.ClassName(image.className);
    if (status == Status::Ok) status = key.Values(image.values);
    TStringList names;
    if (status == Status::Ok) status = key.Subkeys(names);
    out_.push_back(std::move(image));
    for (auto it = names.begin(); status == Status::Ok && it != names.end(); ++it) {
      RegKey child;
      status = child.OpenBelowToSave(key, *it, rights_.access);
      if (status == Status::Ok) status = Add(child, *it, level + 1);
      if (status == Status::Absent) status = Status::Ok;  // gone since it was listed
    }
    return status;
  }

 private:
  const SavedRights& rights_;
  std::vector<KeyImage>& out_;
};

using ByPath = std::map<UnicodeString, const KeyImage*>;

ByPath Paths(const std::vector<KeyImage>& tree) {
  ByPath result;
  std::vector<UnicodeString> above;
  for (const KeyImage& key : tree) {
    above.resize(std::min<std::size_t>(key.level, above.size()));
    above.push_back((above.empty() ? UnicodeString() : above.back() + u"\\") + UpperCase(key.name));
    result.emplace(above.back(), &key);
  }
  return result;
}

bool SameKeys(const KeyImage& a, const KeyImage& b) {
  if (a.className != b.className || a.link != b.link || a.values.size() != b.values.size())
    return false;
  // A key of the plan's own has not got its security yet.
  if (!a.security.empty() && !b.security.empty() && a.security != b.security) return false;
  std::map<UnicodeString, const RegValue*> mine;
  for (const RegValue& value : a.values) mine.emplace(UpperCase(value.name), &value);
  return std::all_of(b.values.begin(), b.values.end(), [&mine](const RegValue& value) {
    const auto it = mine.find(UpperCase(value.name));
    return it != mine.end() && it->second->type == value.type && it->second->data == value.data;
  });
}

}  // namespace

PlaceParts PartsOf(UnicodeView place) {
  const std::size_t slash = std::min(place.find(u'\\'), place.size());
  const UnicodeView mount = place.substr(0, slash);
  PlaceParts parts;
  if (SameText(mount, u"HKLM")) parts.root = HKEY_LOCAL_MACHINE;
  if (SameText(mount, u"HKU")) parts.root = HKEY_USERS;
  parts.path = place.substr(std::min(slash + 1, place.size()));
  return parts;
}

Status OpenPlace(UnicodeView place, REGSAM access, RegKey& out) {
  const PlaceParts parts = PartsOf(place);
  if (parts.root == nullptr) return Status::Unknown;
  return out.Open(parts.root, parts.path, access | kPlaceView, true);
}

Status LivePlaces::PlaceOf(const KeyRef& key, bool asLink, UnicodeString& place) {
  UnicodeString name;
  const Status status = registry_.PhysicalName(key, asLink, name);
  if (status != Status::Ok) return status;
  for (const auto& root : kRoots) {
    const std::size_t length = root.name.size();
    if (!SameText(UnicodeView(name).substr(0, length), root.name)) continue;
    if (name.size() > length && name[length] != u'\\') continue;
    place = UnicodeString(root.mount) + name.substr(length);
    return Status::Ok;
  }
  return Status::Unknown;
}

Status LivePlaces::TreeOf(UnicodeView place, std::vector<KeyImage>& out) {
  out.clear();
  const Privileges backup(kToSave);
  const Privileges audit(kToSaveAudit);
  SavedRights rights;
  if (audit.All()) {
    rights.access |= ACCESS_SYSTEM_SECURITY;
    rights.parts |= SACL_SECURITY_INFORMATION;
  }
  const PlaceParts parts = PartsOf(place);
  if (parts.root == nullptr) return Status::Unknown;
  RegKey key;
  Status status = key.OpenToSave(parts.root, parts.path, rights.access | kPlaceView);
  if (status == Status::Denied && audit.All()) {
    rights = {};
    status = key.OpenToSave(parts.root, parts.path, rights.access | kPlaceView);
  }
  if (status != Status::Ok) return status;
  // As it is spelled where it lies.
  const UnicodeString name = key.PhysicalName();
  return TreeReader(rights, out).Add(key, UnicodeView(name).substr(name.rfind(u'\\') + 1), 0);
}

Status LivePlaces::MayDelete(UnicodeView place) {
  const PlaceParts parts = PartsOf(place);
  return parts.root == nullptr ? Status::Unknown
                               : MayDeleteTree(parts.root, parts.path, kPlaceView);
}

bool SameTrees(const std::vector<KeyImage>& a, const std::vector<KeyImage>& b) {
  const ByPath mine = Paths(a);
  const ByPath others = Paths(b);
  // The names of the keys themselves are part of their place.
  return mine.size() == others.size() &&
         std::equal(mine.begin(), mine.end(), others.begin(), [](const auto& x, const auto& y) {
           return x.first == y.first && SameKeys(*x.second, *y.second);
         });
}

Status CreateLike(UnicodeView place, const KeyImage& like, RegKey& out) {
  const std::size_t slash = place.rfind(u'\\');
  if (slash == UnicodeView::npos) return Status::Unknown;
  const Privileges privileges(kToRestore);
  const PlaceParts parts = PartsOf(place.substr(0, slash));
  if (parts.root == nullptr) return Status::Unknown;
  RegKey parent;
  // A link in the way is followed, as it was when the key lay behind it.
  const Status status = parent.Open(parts.root, parts.path, KEY_CREATE_SUB_KEY | kPlaceView, false);
  if (status != Status::Ok) return status;
  return out.CreateBelow(parent, like.name, like.className, like.link,
                         KEY_SET_VALUE | KEY_CREATE_SUB_KEY | (like.link ? KEY_CREATE_LINK : 0));
}

namespace {

// What was inherited stays marked so only when it is said that this is wanted.
Bytes ReadyToSet(Bytes descriptor) {
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  if (descriptor.size() < sizeof(SECURITY_DESCRIPTOR_RELATIVE)) return {};
  auto* const header = reinterpret_cast<SECURITY_DESCRIPTOR_RELATIVE*>(descriptor.data());
  control = header->Control;
  if ((control & SE_DACL_AUTO_INHERITED) != 0) control |= SE_DACL_AUTO_INHERIT_REQ;
  if ((control & SE_SACL_AUTO_INHERITED) != 0) control |= SE_SACL_AUTO_INHERIT_REQ;
  header->Control = control;
  return IsValidSecurityDescriptor(descriptor.data()) != FALSE ? descriptor : Bytes();
}

struct SecurityTry {
  REGSAM access;
  SECURITY_INFORMATION parts;
};
// The most first; who holds no privileges may at least set who may do what.
constexpr SecurityTry kTries[] = {
    {WRITE_OWNER | WRITE_DAC | ACCESS_SYSTEM_SECURITY, kAccess | SACL_SECURITY_INFORMATION},
    {WRITE_OWNER | WRITE_DAC, kAccess},
    {WRITE_DAC, DACL_SECURITY_INFORMATION}};

}  // namespace

Status Dress(UnicodeView place, const KeyImage& like) {
  const Privileges privileges(kToRestore);
  const Privileges audit(kToSaveAudit);
  const Bytes descriptor = ReadyToSet(like.security);
  const bool audited =
      !descriptor.empty() &&
      (reinterpret_cast<const SECURITY_DESCRIPTOR_RELATIVE*>(descriptor.data())->Control &
       SE_SACL_PRESENT) != 0;
  Status status = descriptor.empty() ? Status::Ok : Status::Denied;
  RegKey key;
  // Opened before the new rights hold.
  const bool canDate = like.time != 0 && OpenPlace(place, KEY_SET_VALUE, key) == Status::Ok;
  for (const SecurityTry& each : kTries) {
    if (status == Status::Ok) break;
    if ((each.parts & SACL_SECURITY_INFORMATION) != 0 && !audited) continue;
    RegKey opened;
    status = OpenPlace(place, each.access, opened);
    if (status == Status::Ok) status = opened.SetSecurity(each.parts, descriptor.data());
  }
  if (canDate) (void)key.SetLastWritten(like.time);
  return status;
}

}  // namespace scrubwell::windows
