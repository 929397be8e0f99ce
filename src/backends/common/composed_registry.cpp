#include "backends/common/composed_registry.h"

#include <algorithm>

#include "backends/common/access_check.h"
#include "backends/common/composed_internal.h"

namespace scrubwell {

namespace {

bool NameLess(UnicodeView a, UnicodeView b) {
  return CompareUpCase(a, b) < 0;
}

// The names of a key's subkeys, sorted. A damaged hive may hold them in any order.
Status SortedNames(IHive& hive, IHive::Key key, TStringList& out) {
  std::vector<IHive::Subkey> subkeys;
  const Status status = hive.Subkeys(key, subkeys);
  if (status != Status::Ok) return status;
  out.reserve(subkeys.size());
  for (IHive::Subkey& subkey : subkeys) out.push_back(std::move(subkey.name));
  if (!std::is_sorted(out.begin(), out.end(), NameLess))
    std::stable_sort(out.begin(), out.end(), NameLess);
  return Status::Ok;
}

// Both sorted; of equal names the one of `front` stays.
TStringList Merge(TStringList front, TStringList back) {
  if (front.empty()) return back;
  if (back.empty()) return front;
  TStringList merged;
  merged.reserve(front.size() + back.size());
  auto a = front.begin();
  auto b = back.begin();
  while (a != front.end() || b != back.end()) {
    const int order = a == front.end() ? 1 : b == back.end() ? -1 : CompareUpCase(*a, *b);
    if (order == 0) ++b;
    merged.push_back(std::move(order <= 0 ? *a++ : *b++));
  }
  return merged;
}

UnicodeString DeletionMark(UnicodeView mount, UnicodeView path, UnicodeView name, bool isValue) {
  UnicodeString mark = UpperCase(mount);
  mark += u'\\';
  mark += UpperCase(path);
  if (!isValue) return mark;
  mark += u'\\';
  mark += u'\0';  // no key name ends a path like this
  mark += UpperCase(name);
  return mark;
}

}  // namespace

ComposedRegistry::ComposedRegistry(ComposedSettings settings)
    : settings_(std::move(settings)),
      tables_(std::make_unique<detail::ViewTables>(settings_.is64Bit, settings_.rules)),
      ways_(std::make_unique<Ways>()),
      cache_(std::make_unique<Cache>()) {}

ComposedRegistry::~ComposedRegistry() = default;

// ---- Mounts -------------------------------------------------------------------------------

ComposedRegistry::MountPoint* ComposedRegistry::FindMount(bool user, UnicodeView name) {
  for (const auto& mount : mounts_)
    if (mount->user == user && SameText(mount->name, name)) return mount.get();
  return nullptr;
}

ComposedRegistry::MountPoint& ComposedRegistry::AddMount(UnicodeView place) {
  Invalidate();
  const std::size_t slash = std::min(place.find(u'\\'), place.size());
  const bool user = SameText(place.substr(0, slash), u"HKU");
  const UnicodeView name = place.substr(std::min(slash + 1, place.size()));
  MountPoint* mount = FindMount(user, name);
  if (mount == nullptr) mount = mounts_.emplace_back(std::make_unique<MountPoint>()).get();
  *mount = {};
  mount->place = place;
  mount->user = user;
  mount->name = name;
  return *mount;
}

void ComposedRegistry::Mount(UnicodeView place, IHive& hive) {
  AddMount(place).hive = &hive;
}

void ComposedRegistry::MountLazily(UnicodeView place, HiveOpener opener) {
  AddMount(place).opener = std::move(opener);
}

void ComposedRegistry::MountFailed(UnicodeView place, Status why) {
  // A hive that is said to be absent is still one that can't be read.
  AddMount(place).status = why == Status::Ok || why == Status::Absent ? Status::Unknown : why;
}

void ComposedRegistry::Invalidate() {
  cache_->Clear();
  ways_->Clear();
}

void ComposedRegistry::ForgetDeletions() {
  deleted_.clear();
}

// ---- Reading ------------------------------------------------------------------------------

Status ComposedRegistry::Resolve(const KeyRef& key, Place& out, Trail* trail, bool followLast) {
  if (key.view == View::Invalid) return Status::Unknown;
  const bool bits32 = settings_.is64Bit && key.view != View::Bits64;
  int links = 0;
  out = Resolver(*this, bits32, links, trail).Find(key.root, key.path, followLast);
  return out.Readable();
}

Status ComposedRegistry::Locate(const KeyRef& key, std::vector<PhysicalKey>& out) {
  out.clear();
  Place place;
  Trail trail;
  const Status status = Resolve(key, place, &trail, false);
  if (status != Status::Ok) return status;
  if (place.user.Ok())
    out.push_back({place.user.mount->place, trail.user, &place.user.Hive(), place.user.key});
  if (place.machine.Ok() && place.machine.mount != nullptr)
    out.push_back(
        {place.machine.mount->place, trail.machine, &place.machine.Hive(), place.machine.key});
  return Status::Ok;
}

Status ComposedRegistry::Names(const Place& place, TStringList& out) {
  out.clear();
  if (place.machine.box != Node::Box::None) {
    for (const auto& mount : mounts_)
      if (mount->user == (place.machine.box == Node::Box::Users)) out.push_back(mount->name);
    std::sort(out.begin(), out.end(), NameLess);
    return Status::Ok;
  }
  TStringList user;
  Status status = Status::Ok;
  if (place.user.Ok()) status = SortedNames(place.user.Hive(), place.user.key, user);
  if (status == Status::Ok && place.machine.Ok())
    status = SortedNames(place.machine.Hive(), place.machine.key, out);
  if (status == Status::Ok) out = Merge(std::move(user), std::move(out));
  return status;
}

// Keys that lie elsewhere are listed where they are seen: exactly the names that can be opened.
void ComposedRegistry::ApplyRules(const Place& place, bool bits32, TStringList& names) {
  if (place.rule == nullptr || !place.rule->changesNames) return;
  for (const auto& child : place.rule->children) {
    if (!child->shown && !child->hidden) continue;
    int links = 0;
    const bool there =
        !child->hidden &&
        Resolver(*this, bits32, links, nullptr).Step(place, child->name, true).Readable() !=
            Status::Absent;
    const auto at = std::lower_bound(names.begin(), names.end(), child->name, NameLess);
    const bool listed = at != names.end() && SameText(*at, child->name);
    if (there && !listed) names.insert(at, child->name);
    if (!there && listed) names.erase(at);
  }
}

Status ComposedRegistry::OpenKey(const KeyRef& key, KeyInfo& out) {
  Place place;
  const Status status = Resolve(key, place);
  if (status != Status::Ok) return status;
  out = {};
  const bool plain =
      place.machine.box == Node::Box::None && (place.rule == nullptr || !place.rule->changesNames);
  if (plain && !(place.user.Ok() && place.machine.Ok())) {
    const Node& node = place.user.Ok() ? place.user : place.machine;
    return node.Hive().Info(node.key, out);
  }
  TStringList names;
  Status counted = EnumKeys(key, names);
  out.subkeyCount = static_cast<std::uint32_t>(names.size());
  if (counted != Status::Ok || place.machine.box != Node::Box::None) return counted;
  std::vector<RegValue> values;
  counted = EnumValues(key, values);
  out.valueCount = static_cast<std::uint32_t>(values.size());
  return counted;
}

Status ComposedRegistry::EnumKeys(const KeyRef& key, TStringList& out) {
  Place place;
  Status status = Resolve(key, place);
  if (status == Status::Ok) status = Names(place, out);
  if (status != Status::Ok) return status;
  ApplyRules(place, settings_.is64Bit && key.view != View::Bits64, out);
  return Status::Ok;
}

Status ComposedRegistry::EnumValues(const KeyRef& key, std::vector<RegValue>& out) {
  Place place;
  Status status = Resolve(key, place);
  out.clear();
  if (status != Status::Ok || place.machine.box != Node::Box::None) return status;
  if (!place.user.Ok()) return place.machine.Hive().Values(place.machine.key, out);
  status = place.user.Hive().Values(place.user.key, out);
  if (status != Status::Ok || !place.machine.Ok()) return status;
  std::vector<RegValue> machine;
  status = place.machine.Hive().Values(place.machine.key, machine);
  std::unordered_set<UnicodeString> seen;
  for (const RegValue& value : out) seen.insert(UpperCase(value.name));
  for (RegValue& value : machine)
    if (!seen.contains(UpperCase(value.name))) out.push_back(std::move(value));
  return status;
}

Status ComposedRegistry::GetValue(const KeyRef& key, UnicodeView name, RegValue& out) {
  Place place;
  const Status status = Resolve(key, place);
  if (place.user.Failed()) return place.user.status;
  if (place.user.Ok()) {
    // A value of the user's is the answer, whatever the machine's side is like.
    const Status own = place.user.Hive().Value(place.user.key, name, out);
    if (own != Status::Absent) return own;
  }
  if (status != Status::Ok) return status;
  if (!place.machine.Ok() || place.machine.box != Node::Box::None) return Status::Absent;
  return place.machine.Hive().Value(place.machine.key, name, out);
}

// ---- Rights -------------------------------------------------------------------------------

Status ComposedRegistry::Permit(const Node& node, Access access) {
  Bytes descriptor;
  const Status status = node.Hive().Security(node.key, descriptor);
  if (status == Status::Absent) return Status::Ok;
  if (status != Status::Ok) return Status::Unknown;
  // Thousands of keys in a row have the same descriptor.
  Judged& judged = judged_[access == Access::Delete ? 0 : 1];
  if (!judged.known || judged.descriptor != descriptor) {
    judged.answer = CheckDescriptor(descriptor, settings_.userSid, access);
    judged.descriptor = std::move(descriptor);
    judged.known = true;
  }
  return judged.answer;
}

// A subtree goes as a whole or not at all: one key that may not go keeps all of it. A link goes
// itself, so that its target is not asked.
Status ComposedRegistry::PermitTree(const Node& node, int level) {
  constexpr int kDeepest = 512;
  if (const Status status = Permit(node, Access::Delete); status != Status::Ok) return status;
  if (level > kDeepest) return Status::Unknown;
  if (node.Hive().IsLink(node.key)) return Status::Ok;
  std::vector<IHive::Subkey> subkeys;
  Status status = node.Hive().Subkeys(node.key, subkeys);
  for (const IHive::Subkey& subkey : subkeys) {
    if (status != Status::Ok) break;
    Node below = node;
    below.key = subkey.key;
    status = PermitTree(below, level + 1);
  }
  return status;
}

Status ComposedRegistry::CheckAccess(const KeyRef& key, Access access) {
  Place place;
  Status status = Resolve(key, place, nullptr, access != Access::Delete);
  if (place.user.Failed()) return place.user.status;
  const Node& node = place.user.Ok() ? place.user : place.machine;
  status = node.status;
  if (status != Status::Ok) return status;
  return node.box != Node::Box::None ? Status::Denied : Permit(node, access);
}

// ---- Changes ------------------------------------------------------------------------------

bool ComposedRegistry::Announce(const RegistryChange& change) {
  return observer_ == nullptr || observer_->BeforeChange(change);
}

// Creates what is missing on the way to a physical place whose absence is proven.
Status ComposedRegistry::CreateAt(Node& node, const UnicodeString& path) {
  if (node.mount == nullptr || node.mount->Open() == nullptr) return Status::Denied;
  IHive& hive = node.Hive();
  Status status = hive.Root(node.key);
  for (std::size_t from = 0; status == Status::Ok && from < path.size();) {
    const std::size_t to = std::min(path.find(u'\\', from), path.size());
    const UnicodeView name = UnicodeView(path).substr(from, to - from);
    const IHive::Key parent = node.key;
    status = hive.Child(parent, name, node.key);
    if (status == Status::Absent) {
      node.key = parent;
      status = Permit(node, Access::Write);
      if (status != Status::Ok) return status;
      if (!Announce({ChangeKind::CreateKey,
                     node.mount->place,
                     UnicodeView(path).substr(0, to),
                     {},
                     nullptr,
                     &hive,
                     parent}))
        return Status::Denied;
      Invalidate();
      status = hive.Create(parent, name, node.key);
    }
    from = to + 1;
  }
  node.status = status;
  return status;
}

// The physical key that a value is written to.
Status ComposedRegistry::WriteTarget(const KeyRef& key, bool create, Node& node,
                                     UnicodeString& path) {
  Place place;
  Trail trail;
  if (key.view == View::Invalid) return Status::Unknown;
  Resolve(key, place, &trail);
  if (place.user.Failed()) return place.user.status;
  const bool user = place.user.Ok();
  node = user ? place.user : place.machine;
  path = user ? trail.user : trail.machine;
  if (node.box != Node::Box::None) return Status::Denied;
  if (node.status == Status::Absent && create) return CreateAt(node, path);
  return node.status;
}

Status ComposedRegistry::SetValue(const KeyRef& key, const RegValue& value) {
  Node node;
  UnicodeString path;
  Status status = WriteTarget(key, true, node, path);
  if (status == Status::Ok) status = Permit(node, Access::Write);
  if (status != Status::Ok) return status;
  if (!Announce({ChangeKind::SetValue, node.mount->place, path, value.name, &value, &node.Hive(),
                 node.key}))
    return Status::Denied;
  Invalidate();
  return node.Hive().Put(node.key, value);
}

Status ComposedRegistry::CreateKey(const KeyRef& key) {
  Node node;
  UnicodeString path;
  return WriteTarget(key, true, node, path);
}

bool ComposedRegistry::AlreadyDeleted(const Trail& trail, UnicodeView name, bool isValue) const {
  if (deleted_.empty() || trail.userMount == nullptr) return false;
  const UnicodeString& mount = trail.userMount->place;
  if (isValue && deleted_.contains(DeletionMark(mount, trail.user, name, true))) return true;
  for (UnicodeView path = trail.user; !path.empty();) {
    if (deleted_.contains(DeletionMark(mount, path, {}, false))) return true;
    const std::size_t slash = path.rfind(u'\\');
    path = slash == UnicodeView::npos ? UnicodeView() : path.substr(0, slash);
  }
  return false;
}

void ComposedRegistry::Remember(const Trail& trail, UnicodeView name, bool isValue) {
  if (trail.userMount != nullptr)
    deleted_.insert(DeletionMark(trail.userMount->place, trail.user, name, isValue));
}

Status ComposedRegistry::DeleteKey(const KeyRef& key, bool force) {
  Place place;
  Trail trail;
  if (key.view == View::Invalid) return Status::Unknown;
  if (key.path.empty()) return Status::Denied;
  Resolve(key, place, &trail, false);
  if (place.user.Failed()) return place.user.status;
  if (AlreadyDeleted(trail, {}, false)) return Status::Absent;
  const bool user = place.user.Ok();
  const Node& node = user ? place.user : place.machine;
  const UnicodeString& path = user ? trail.user : trail.machine;
  if (node.status != Status::Ok) return node.status;
  if (node.box != Node::Box::None || path.empty()) return Status::Denied;
  Status status = force ? Status::Ok : PermitTree(node, 0);
  if (status != Status::Ok) return status;
  if (!Announce(
          {ChangeKind::DeleteKey, node.mount->place, path, {}, nullptr, &node.Hive(), node.key}))
    return Status::Denied;
  Invalidate();
  status = node.Hive().Erase(node.key);
  if (status == Status::Ok && user) Remember(trail, {}, false);
  return status;
}

Status ComposedRegistry::DeleteValue(const KeyRef& key, UnicodeView name) {
  Place place;
  Trail trail;
  if (key.view == View::Invalid) return Status::Unknown;
  Resolve(key, place, &trail);
  if (place.user.Failed()) return place.user.status;
  if (AlreadyDeleted(trail, name, true)) return Status::Absent;
  RegValue old;
  bool user = place.user.Ok();
  Status status = user ? place.user.Hive().Value(place.user.key, name, old) : Status::Absent;
  user = status != Status::Absent;
  const Node& node = user ? place.user : place.machine;
  if (!user) {
    if (place.machine.box != Node::Box::None) return Status::Absent;
    status = place.machine.Ok() ? node.Hive().Value(node.key, name, old) : node.status;
  }
  if (status == Status::Ok) status = Permit(node, Access::Write);
  if (status != Status::Ok) return status;
  if (!Announce({ChangeKind::DeleteValue, node.mount->place, user ? trail.user : trail.machine,
                 name, nullptr, &node.Hive(), node.key}))
    return Status::Denied;
  Invalidate();
  status = node.Hive().EraseValue(node.key, name);
  if (status == Status::Ok && user) Remember(trail, name, true);
  return status;
}

}  // namespace scrubwell
