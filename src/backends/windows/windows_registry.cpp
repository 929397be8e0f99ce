#include "backends/windows/windows_registry.h"

#include <algorithm>
#include <iterator>

#include "backends/windows/reg_force.h"
#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

constexpr UnicodeView kClasses = u"Software\\Classes";
constexpr UnicodeView kWow = u"Wow6432Node";

bool IsLink(HKEY root, UnicodeView path, REGSAM view, UnicodeString& name) {
  RegKey key;
  RegValue target;
  if (key.Open(root, path, KEY_QUERY_VALUE | view, true) != Status::Ok) return false;
  if (key.Value(u"SymbolicLinkValue", target) != Status::Ok || target.type != REG_LINK)
    return false;
  name = UpperCase(key.PhysicalName());
  return true;
}

// Whether the path leads through too many links, or through one of them twice. Part by part,
// because the key at its end doesn't tell what was passed on the way.
bool GoesAstray(HKEY root, UnicodeView path, REGSAM view) {
  constexpr std::size_t kMaxLinks = 16;
  std::unordered_set<UnicodeString> passed;
  UnicodeString name;
  for (std::size_t end = 0; end < path.size(); ++end) {
    end = std::min(path.find(u'\\', end), path.size());
    if (!IsLink(root, path.substr(0, end), view, name)) continue;
    if (!passed.insert(name).second || passed.size() > kMaxLinks) return true;
  }
  return false;
}

// Every way that has no end passes a link of the same name again. Few other paths name anything
// twice, so that only they have to be looked at.
bool MayGoAstray(UnicodeView path) {
  constexpr std::size_t kManyParts = 16;
  std::vector<UnicodeView> parts;
  for (std::size_t from = 0; from <= path.size();) {
    const std::size_t to = std::min(path.find(u'\\', from), path.size());
    const UnicodeView part = path.substr(from, to - from);
    for (const UnicodeView other : parts)
      if (SameText(part, other)) return true;
    parts.push_back(part);
    from = to + 1;
  }
  return parts.size() > kManyParts;
}

UnicodeView LastPart(UnicodeView path) {
  const std::size_t slash = path.rfind(u'\\');
  return slash == UnicodeView::npos ? path : path.substr(slash + 1);
}

/// One physical place that a key reference leads to.
struct Side {
  HKEY root = nullptr;
  UnicodeString path;
  REGSAM view = 0;
  RegKey key;
  Status status = Status::Absent;

  Status Open(REGSAM access, bool asLink = false) {
    if (root == nullptr) return status;
    status = key.Open(root, path, access | view, asLink);
    if (Ok() && MayGoAstray(path) && GoesAstray(root, path, view)) status = Status::Unknown;
    return status;
  }
  [[nodiscard]] bool Ok() const { return status == Status::Ok; }
  [[nodiscard]] bool Failed() const { return status != Status::Ok && status != Status::Absent; }
};

/// The user's in front of the machine's. Where nothing is merged, the second stands alone.
struct Sides {
  Side user;
  Side machine;

  /// Opens both; Ok when one is there and none failed.
  Status Open(REGSAM access, bool asLink = false) {
    if (user.Open(access, asLink); user.Failed()) return user.status;
    if (machine.Open(access, asLink); machine.Failed()) return machine.status;
    return user.Ok() ? Status::Ok : machine.status;
  }
  [[nodiscard]] bool Both() const { return user.Ok() && machine.Ok(); }
  /// The one that a change of the key hits.
  Side& Hit() { return user.Ok() ? user : machine; }
};

// Of all classes the two views have only these apart. Some systems don't hold to that in programs
// of their own width, so that a class which is plainly there would seem to be missing.
constexpr UnicodeView kSeparateClasses[] = {u"CLSID",      u"DirectShow",      u"Interface",
                                            u"Media Type", u"MediaFoundation", kWow};

bool IsSharedClass(UnicodeView path) {
  const std::size_t prefix = kClasses.size();
  if (path.size() <= prefix + 1 || path[prefix] != u'\\' ||
      !SameText(path.substr(0, prefix), kClasses))
    return false;
  UnicodeView name = path.substr(prefix + 1);
  name = name.substr(0, name.find(u'\\'));
  return std::none_of(std::begin(kSeparateClasses), std::end(kSeparateClasses),
                      [name](UnicodeView separate) { return SameText(name, separate); });
}

// No view asked for is that of a 32-bit program, whatever this one is.
REGSAM ViewFlag(View view, UnicodeView path) {
  return view == View::Bits64 || IsSharedClass(path) ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
}

UnicodeString BelowClasses(UnicodeView path) {
  UnicodeString full(kClasses);
  if (!path.empty()) (full += u'\\') += path;
  return full;
}

Sides SidesOf(const KeyRef& key) {
  Sides sides;
  if (key.view == View::Invalid) {
    sides.machine.status = Status::Unknown;
  } else if (key.root == RootKey::ClassesRoot) {
    sides.user.root = HKEY_CURRENT_USER;
    sides.machine.root = HKEY_LOCAL_MACHINE;
    sides.user.path = sides.machine.path = BelowClasses(key.path);
  } else {
    sides.machine.root = RootHandle(key.root);
    sides.machine.path = key.path;
    if (sides.machine.root == nullptr) sides.machine.status = Status::Unknown;
  }
  sides.user.view = sides.machine.view = ViewFlag(key.view, sides.machine.path);
  return sides;
}

// Whether the key's 32-bit part lies in a subkey of it.
bool HoldsWow(const KeyRef& key) {
  if (!Is64BitSystem()) return false;
  const UnicodeView path = key.path;
  switch (key.root) {
    case RootKey::ClassesRoot:
      return path.empty();
    case RootKey::LocalMachine:
      return SameText(path, u"SOFTWARE") || SameText(path, kClasses);
    case RootKey::CurrentUser:
      return SameText(path, kClasses);
    case RootKey::Users: {
      const std::size_t slash = path.find(u'\\');
      if (slash != UnicodeView::npos) return SameText(path.substr(slash + 1), kClasses);
      constexpr UnicodeView kEnd = u"_Classes";
      return path.size() > kEnd.size() && SameText(path.substr(path.size() - kEnd.size()), kEnd);
    }
    default:
      return false;
  }
}

bool NameLess(const UnicodeString& a, const UnicodeString& b) {
  return CompareUpCase(a, b) < 0;
}

// A class's path, the same for the user's and the machine's; empty for what is no class. In older
// systems the 32-bit classes lie beside the others, since Windows 7 below them.
UnicodeString ClassPath(const RegKey& key) {
  constexpr UnicodeView kPlaces[][2] = {{u"\\SOFTWARE\\CLASSES\\", u""},
                                        {u"\\SOFTWARE\\WOW6432NODE\\CLASSES\\", u"WOW6432NODE\\"},
                                        {u"_CLASSES\\", u""}};
  const UnicodeString name = UpperCase(key.PhysicalName());
  for (const auto& [place, prefix] : kPlaces) {
    const std::size_t at = name.find(place);
    if (at != UnicodeString::npos) return UnicodeString(prefix) + name.substr(at + place.size());
  }
  return {};
}

// NUL can't be the first unit of a component, so it sets values apart from keys.
UnicodeString ValueMark(UnicodeView classPath, UnicodeView name) {
  return (UnicodeString(classPath) + u"\\" + u'\0').append(UpperCase(name));
}

}  // namespace

Status WindowsRegistry::OpenKey(const KeyRef& key, KeyInfo& out) {
  Sides sides = SidesOf(key);
  out = {};
  const Status status = sides.Open(KEY_QUERY_VALUE);
  if (status != Status::Ok) return status;
  if (!sides.Both() && !HoldsWow(key)) return sides.Hit().key.Info(out);
  TStringList names;
  std::vector<RegValue> values;
  Status counted = EnumKeys(key, names);
  if (counted == Status::Ok) counted = EnumValues(key, values);
  out.subkeyCount = static_cast<std::uint32_t>(names.size());
  out.valueCount = static_cast<std::uint32_t>(values.size());
  return counted;
}

// Links to keys above them show a tree of ways that grows with every level, though each of them is
// passed but once on a way. What is listed of it stays in proportion to what there is.
bool WindowsRegistry::MayEnter(UnicodeView path, const RegKey& key) {
  constexpr std::size_t kMostWays = 1024;
  if (std::ranges::count(path, u'\\') < 2) return true;
  const UnicodeString name = key.PhysicalName();
  if (name.empty() || SameText(LastPart(name), LastPart(path))) return true;
  const UnicodeString way = UpperCase(path);
  if (ways_.size() >= kMostWays) return ways_.contains(way);
  ways_.insert(way);
  return true;
}

Status WindowsRegistry::EnumKeys(const KeyRef& key, TStringList& out) {
  Sides sides = SidesOf(key);
  out.clear();
  Status status = sides.Open(KEY_ENUMERATE_SUB_KEYS);
  if (status == Status::Ok && !MayEnter(sides.Hit().path, sides.Hit().key)) return Status::Unknown;
  if (status != Status::Ok) return status;
  status = sides.Hit().key.Subkeys(out);
  if (status == Status::Ok && sides.Both()) {
    TStringList machine;
    status = sides.machine.key.Subkeys(machine);
    out.insert(out.end(), std::make_move_iterator(machine.begin()),
               std::make_move_iterator(machine.end()));
  }
  // Of equal names the user's stays, which came first.
  if (!std::is_sorted(out.begin(), out.end(), NameLess))
    std::stable_sort(out.begin(), out.end(), NameLess);
  const auto same = [](const UnicodeString& a, const UnicodeString& b) { return SameText(a, b); };
  out.erase(std::unique(out.begin(), out.end(), same), out.end());
  if (HoldsWow(key)) std::erase_if(out, [](UnicodeView name) { return SameText(name, kWow); });
  return status;
}

Status WindowsRegistry::EnumValues(const KeyRef& key, std::vector<RegValue>& out) {
  Sides sides = SidesOf(key);
  out.clear();
  Status status = sides.Open(KEY_QUERY_VALUE);
  if (status == Status::Ok) status = sides.Hit().key.Values(out);
  if (status != Status::Ok || !sides.Both()) return status;
  std::vector<RegValue> machine;
  status = sides.machine.key.Values(machine);
  std::unordered_set<UnicodeString> seen;
  for (const RegValue& value : out) seen.insert(UpperCase(value.name));
  for (RegValue& value : machine)
    if (!seen.contains(UpperCase(value.name))) out.push_back(std::move(value));
  return status;
}

Status WindowsRegistry::GetValue(const KeyRef& key, UnicodeView name, RegValue& out) {
  Sides sides = SidesOf(key);
  if (sides.user.Open(KEY_QUERY_VALUE); sides.user.Failed()) return sides.user.status;
  if (sides.user.Ok()) {
    // A value of the user's is the answer, whatever the machine's side is like.
    const Status own = sides.user.key.Value(name, out);
    if (own != Status::Absent) return own;
  }
  const Status status = sides.machine.Open(KEY_QUERY_VALUE);
  return status == Status::Ok ? sides.machine.key.Value(name, out) : status;
}

Status WindowsRegistry::SetValue(const KeyRef& key, const RegValue& value) {
  if (!mayChange_) return Status::Denied;
  Sides sides = SidesOf(key);
  if (sides.user.Open(KEY_SET_VALUE); sides.user.Failed()) return sides.user.status;
  if (sides.user.Ok()) return sides.user.key.Put(value);
  Side& machine = sides.machine;
  if (machine.root == nullptr) return machine.status;
  if (machine.path.empty()) return Status::Denied;
  const Status status = machine.key.Create(machine.root, machine.path,
                                           KEY_SET_VALUE | KEY_CREATE_SUB_KEY | machine.view);
  return status == Status::Ok ? machine.key.Put(value) : status;
}

Status WindowsRegistry::CreateKey(const KeyRef& key) {
  if (!mayChange_) return Status::Denied;
  Sides sides = SidesOf(key);
  const Status status = sides.Open(KEY_QUERY_VALUE);
  if (status != Status::Absent) return status;
  Side& machine = sides.machine;
  return machine.key.Create(machine.root, machine.path, KEY_CREATE_SUB_KEY | machine.view);
}

Status WindowsRegistry::PhysicalName(const KeyRef& key, bool asLink, UnicodeString& out) {
  Side side = SidesOf(key).machine;
  if (key.root == RootKey::ClassesRoot || side.root == nullptr) return Status::Unknown;
  const UnicodeString whole = side.path;
  if (MayGoAstray(whole) && GoesAstray(side.root, whole, side.view)) return Status::Unknown;
  UnicodeString missing;
  for (;;) {
    // Any right is enough to ask for the name.
    for (const REGSAM right : {REGSAM{KEY_QUERY_VALUE}, REGSAM{READ_CONTROL}, REGSAM{DELETE}}) {
      if (side.Open(right, asLink && missing.empty()) != Status::Denied) break;
    }
    if (side.Ok()) out = side.key.PhysicalName() + missing;
    if (side.Ok()) return out.starts_with(u'\\') ? Status::Ok : Status::Unknown;
    if (side.path.empty()) return side.status;
    // What is not there, or can't be looked at, lies below what can.
    const std::size_t slash = side.path.rfind(u'\\');
    side.path.resize(slash == UnicodeString::npos ? 0 : slash);
    missing = u"\\" + whole.substr(side.path.empty() ? 0 : side.path.size() + 1);
    side.view = ViewFlag(key.view, side.path);
  }
}

bool WindowsRegistry::AlreadyDeleted(const RegKey& key, UnicodeView name, bool isValue) const {
  if (deleted_.empty()) return false;
  const UnicodeString whole = ClassPath(key);
  if (whole.empty()) return false;
  if (isValue && deleted_.contains(ValueMark(whole, name))) return true;
  for (UnicodeView path = whole; !path.empty();) {
    if (deleted_.contains(UnicodeString(path))) return true;
    const std::size_t slash = path.rfind(u'\\');
    path = slash == UnicodeView::npos ? UnicodeView() : path.substr(0, slash);
  }
  return false;
}

Status WindowsRegistry::DeleteKey(const KeyRef& key, bool force) {
  if (!mayChange_ || key.path.empty()) return Status::Denied;
  Sides sides = SidesOf(key);
  for (Side* const side : {&sides.user, &sides.machine}) {
    // A key that can't be read may still be deleted, by force or by a right of its own.
    side->Open(KEY_QUERY_VALUE, true);
    if (side->status == Status::Absent) continue;
    if (side->status != Status::Ok && side->status != Status::Denied) return side->status;
    const bool merged = key.root == RootKey::ClassesRoot;
    UnicodeString mark;
    if (side->Ok() && merged) {
      if (AlreadyDeleted(side->key, {}, false)) return Status::Absent;
      mark = ClassPath(side->key);
    }
    side->key = {};
    const Status status = DeleteTree(side->root, side->path, side->view, force);
    if (status == Status::Ok && side == &sides.user && !mark.empty()) deleted_.insert(mark);
    return status;
  }
  return sides.machine.status;
}

Status WindowsRegistry::DeleteValue(const KeyRef& key, UnicodeView name) {
  if (!mayChange_) return Status::Denied;
  Sides sides = SidesOf(key);
  const bool merged = key.root == RootKey::ClassesRoot;
  for (Side* const side : {&sides.user, &sides.machine}) {
    if (side->Open(KEY_QUERY_VALUE) == Status::Absent) continue;
    if (!side->Ok()) return side->status;
    if (merged && AlreadyDeleted(side->key, name, true)) return Status::Absent;
    RegValue old;
    Status status = side->key.Value(name, old);
    if (status == Status::Absent) continue;
    if (status == Status::Ok) status = side->Open(KEY_SET_VALUE);
    if (status == Status::Ok) status = side->key.EraseValue(name);
    if (status == Status::Ok && merged && side == &sides.user) {
      const UnicodeString path = ClassPath(side->key);
      if (!path.empty()) deleted_.insert(ValueMark(path, name));
    }
    return status;
  }
  return Status::Absent;
}

Status WindowsRegistry::CheckAccess(const KeyRef& key, Access access) {
  Sides sides = SidesOf(key);
  const bool toDelete = access == Access::Delete;
  const REGSAM rights = toDelete ? DELETE : KEY_SET_VALUE | KEY_CREATE_SUB_KEY;
  if (sides.user.Open(rights, toDelete) != Status::Absent) return sides.user.status;
  return sides.machine.Open(rights, toDelete);
}

}  // namespace scrubwell::windows
