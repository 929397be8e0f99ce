// From a key's name to the physical keys behind it.
#include <algorithm>
#include <array>
#include <cstring>

#include "backends/common/composed_internal.h"

namespace scrubwell {

namespace {

constexpr UnicodeView kClassesSuffix = u"_Classes";
constexpr UnicodeView kDefaultUser = u".DEFAULT";
constexpr UnicodeView kSystemUser = u"S-1-5-18";
constexpr UnicodeView kLinkValue = u"SymbolicLinkValue";

// The hives that a running system has below HKLM. One that is not mounted is not known.
constexpr UnicodeView kMachineHives[] = {u"SOFTWARE",    u"SYSTEM",     u"SAM",
                                         u"SECURITY",    u"COMPONENTS", u"DRIVERS",
                                         u"BCD00000000", u"HARDWARE",   u"SCHEMA"};

bool EndsWith(UnicodeView text, UnicodeView end) {
  return text.size() >= end.size() && SameText(text.substr(text.size() - end.size()), end);
}

bool StartsWith(UnicodeView text, UnicodeView start) {
  return text.size() >= start.size() && SameText(text.substr(0, start.size()), start);
}

// Where the next component ends: the place of the next backslash from `from` on, or the path's end.
std::size_t EndOfPart(UnicodeView path, std::size_t from) {
  // Paths are looked through all the time, so four units at a time: subtracting one borrows from a
  // unit's upper bit only where the unit is zero, which a backslash is made here.
  constexpr std::uint64_t ones = 0x0001000100010001U;
  constexpr std::uint64_t slashes = ones * u'\\';
  constexpr std::size_t block = sizeof ones / sizeof(char16_t);
  for (; path.size() - from >= block; from += block) {
    std::uint64_t units = 0;
    std::memcpy(&units, path.data() + from, sizeof units);
    units ^= slashes;
    if (((units - ones) & ~units & ones << 15U) != 0) break;
  }
  while (from < path.size() && path[from] != u'\\') ++from;
  return from;
}

// The next component from `from` on; moves `from` behind it. Empty at the end.
UnicodeView NextPart(UnicodeView path, std::size_t& from) {
  while (from < path.size() && path[from] == u'\\') ++from;
  const std::size_t begin = from;
  from = EndOfPart(path, begin);
  return path.substr(begin, from - begin);
}

bool HasMore(UnicodeView path, std::size_t from) {
  return path.find_first_not_of(u'\\', from) != UnicodeView::npos;
}

void AppendPart(UnicodeString* trail, UnicodeView name) {
  if (trail == nullptr) return;
  if (!trail->empty()) *trail += u'\\';
  *trail += name;
}

}  // namespace

// ---- Ways ---------------------------------------------------------------------------------

std::uint16_t ComposedRegistry::Ways::Through(std::uint16_t way, const Node& link) {
  return Through(way, Step{link.mount, link.key, 0, 0});
}

std::uint16_t ComposedRegistry::Ways::Through(std::uint16_t way, const Step& link) {
  // A way from before the last Clear is no way any more; kNone is none of them either.
  if (way >= steps_.size() || steps_[way].length == kMaxLinks) return kNone;
  for (std::uint16_t at = way; at != 0; at = steps_[at].before)
    if (steps_[at].mount == link.mount && steps_[at].key == link.key) return kNone;
  const auto [known, fresh] =
      next_.try_emplace({way, link.mount, link.key}, static_cast<std::uint16_t>(steps_.size()));
  if (!fresh) return known->second;
  if (steps_.size() == kMost) return next_.erase(known), kNone;
  steps_.push_back({link.mount, link.key, way, static_cast<std::uint16_t>(steps_[way].length + 1)});
  return known->second;
}

std::uint16_t ComposedRegistry::Ways::Joined(std::uint16_t first, std::uint16_t second) {
  if (second == 0) return first;
  if (second >= steps_.size()) return kNone;
  const Step last = steps_[second];
  return Through(Joined(first, last.before), last);
}

// ---- Cache --------------------------------------------------------------------------------

std::uint64_t ComposedRegistry::Cache::HashBelow(std::uint64_t hash, UnicodeView part) {
  // Blind to the bit that tells the cases of ASCII letters apart. Other letters in another case
  // are just looked up once more.
  constexpr std::uint64_t caseless = 0xFFDFFFDFFFDFFFDFU;
  constexpr std::uint64_t factor = 0x9E3779B97F4A7C15U;
  constexpr std::size_t block = sizeof(std::uint64_t) / sizeof(char16_t);
  const auto mix = [&hash](std::uint64_t units) {
    hash = (hash ^ (units & caseless)) * factor;
    hash ^= hash >> 32U;
  };
  std::size_t at = 0;
  for (; part.size() - at >= block; at += block) {
    std::uint64_t units = 0;
    std::memcpy(&units, part.data() + at, sizeof units);
    mix(units);
  }
  for (; at < part.size(); ++at) mix(part[at]);
  return hash;
}

const ComposedRegistry::Place* ComposedRegistry::Cache::Find(const Probe& probe,
                                                             UnicodeView path) const {
  const Slot& slot = slots_[SlotOf(probe)];
  if (slot.generation != generation_ || slot.probe.hash != probe.hash ||
      slot.probe.root != probe.root || slot.probe.bits32 != probe.bits32)
    return nullptr;
  // Nearly always spelt as it was before.
  return SameUnits(slot.path, path) || SameText(slot.path, path) ? &slot.place : nullptr;
}

void ComposedRegistry::Cache::Store(const Probe& probe, UnicodeView path, const Place& place) {
  // The system's own limit is far below. Longer ones would let a small hive take much memory here.
  if (path.size() > kLongestPath) return;
  if (++stored_ > slots_.size() && slots_.size() < kMaxSlots) {
    slots_ = std::vector<Slot>(slots_.size() * 4);
    stored_ = 0;
  }
  Slot& slot = slots_[SlotOf(probe)];
  slot.generation = generation_;
  slot.probe = probe;
  slot.path = path;
  slot.place = place;
}

// ---- Paths --------------------------------------------------------------------------------

ComposedRegistry::Place ComposedRegistry::Resolver::Find(RootKey root, UnicodeView path,
                                                         bool followLast) {
  // A last part that is not followed is no place to remember, but all before it are.
  const bool cached = trail_ == nullptr;
  UnicodeView kept = path;
  if (!followLast) {
    const std::size_t end = path.find_last_not_of(u'\\');
    const std::size_t slash = end == UnicodeView::npos ? end : path.find_last_of(u'\\', end);
    kept = path.substr(0, slash == UnicodeView::npos ? 0 : slash);
  }
  // The leading parts of the path that the cache is asked for: where each ends, the root's first.
  std::array<std::size_t, 32> leads;
  std::array<std::uint64_t, 32> hashes;
  std::size_t count = 0;
  if (cached) {
    leads[0] = 0;
    hashes[0] = 0;
    for (count = 1; leads[count - 1] < kept.size() && count < leads.size(); ++count) {
      const std::size_t begin = leads[count - 1];
      leads[count] = EndOfPart(kept, begin + 1);
      hashes[count] = Cache::HashBelow(hashes[count - 1], kept.substr(begin, leads[count] - begin));
    }
  }
  const auto probe = [&](std::size_t lead) { return Cache::Probe{hashes[lead], root, bits32_}; };
  Place place;
  std::size_t known = count;  // index behind the lead that was found
  for (; known > 0; --known) {
    const Place* hit = registry_.cache_->Find(probe(known - 1), path.substr(0, leads[known - 1]));
    if (hit == nullptr) continue;
    place = *hit;
    break;
  }
  std::size_t from = known > 0 ? leads[known - 1] : 0;
  if (known == 0) {
    place = Root(root);
    if (cached) registry_.cache_->Store(probe(0), {}, place), known = 1;
  }
  while (HasMore(path, from)) {
    const UnicodeView part = NextPart(path, from);
    place = Step(place, part, followLast || HasMore(path, from));
    if (!place.user.Ok() && !place.machine.Ok() && place.rule == nullptr && trail_ == nullptr)
      break;
    while (known < count && leads[known] < from) ++known;
    if (known < count && leads[known] == from && (place.user.Ok() || place.machine.Ok()))
      registry_.cache_->Store(probe(known), path.substr(0, from), place);
  }
  return place;
}

ComposedRegistry::Place ComposedRegistry::Resolver::Step(const Place& parent, UnicodeView component,
                                                         bool follow) {
  if (parent.machine.box != Node::Box::None) return IntoHive(parent.machine.box, component);
  const detail::ViewRule* rule = parent.rule == nullptr ? nullptr : parent.rule->Find(component);
  Place place = parent;
  place.rule = rule;
  if (rule != nullptr && rule->kind == detail::RuleKind::Fixed) {
    Apply(place, *rule, follow);
    return place;
  }
  if (rule != nullptr && rule->kind == detail::RuleKind::UserClasses)
    return IntoUserClasses(parent.machineBase.mount);
  UnicodeString before;
  if (rule != nullptr && trail_ != nullptr) before = trail_->machine;
  place.user = Child(parent.user, component, follow, trail_ ? &trail_->user : nullptr);
  place.machine = Child(parent.machine, component, follow, trail_ ? &trail_->machine : nullptr);
  if (rule != nullptr && rule->kind == detail::RuleKind::ControlSet &&
      place.machine.status == Status::Absent) {
    if (trail_ != nullptr) trail_->machine = before;
    place.machine = ControlSet(parent.machine, trail_ ? &trail_->machine : nullptr);
  }
  return place;
}

ComposedRegistry::Node ComposedRegistry::Resolver::Walk(Node from, UnicodeView path, bool follow,
                                                        UnicodeString* trail) {
  for (std::size_t at = 0; HasMore(path, at);) {
    const UnicodeView part = NextPart(path, at);
    from = Child(from, part, follow || HasMore(path, at), trail);
  }
  return from;
}

ComposedRegistry::Node ComposedRegistry::Resolver::Child(const Node& parent, UnicodeView name,
                                                         bool follow, UnicodeString* trail) {
  AppendPart(trail, name);
  Node child = parent;
  if (!parent.Ok()) return child;
  child.status = parent.Hive().Child(parent.key, name, child.key);
  if (child.Ok() && follow && child.Hive().IsLink(child.key)) return FollowLink(child, trail);
  return child;
}

// Links name places of the running system; they are looked up in this registry. What they name is
// a physical place, so no view applies.
ComposedRegistry::Node ComposedRegistry::Resolver::FollowLink(const Node& link,
                                                              UnicodeString* trail) {
  Node broken = link;
  broken.status = Status::Unknown;
  const std::uint16_t way = registry_.ways_->Through(link.way, link);
  if (++links_ > kMaxFollowed || way == Ways::kNone) return broken;
  broken.status = Status::Corrupt;
  RegValue value;
  const Status status = link.Hive().Value(link.key, kLinkValue, value);
  if (status != Status::Ok || value.type != REGT_LINK) return broken;
  UnicodeString target;
  for (std::size_t i = 0; i + 1 < value.data.size(); i += 2)
    target += static_cast<char16_t>(value.data[i] | value.data[i + 1] << 8);
  while (!target.empty() && target.back() == u'\0') target.pop_back();
  constexpr UnicodeView machine = u"\\REGISTRY\\MACHINE\\";
  constexpr UnicodeView users = u"\\REGISTRY\\USER\\";
  const bool isMachine = StartsWith(target, machine);
  if (!isMachine && !StartsWith(target, users)) return broken;
  Trail inner;
  Resolver resolver(registry_, false, links_, trail != nullptr ? &inner : nullptr);
  Place place =
      resolver.Find(isMachine ? RootKey::LocalMachine : RootKey::Users,
                    UnicodeView(target).substr(isMachine ? machine.size() : users.size()), true);
  if (trail != nullptr) *trail = inner.machine;
  if (!place.machine.Ok()) return place.machine;
  place.machine.way = registry_.ways_->Joined(way, place.machine.way);
  if (place.machine.way != Ways::kNone) return place.machine;
  broken.status = Status::Unknown;
  return broken;
}

// ---- Roots --------------------------------------------------------------------------------

ComposedRegistry::Node ComposedRegistry::Resolver::HiveRoot(MountPoint* mount) const {
  Node node;
  node.mount = mount;
  IHive* hive = mount->Open();
  node.status = hive == nullptr ? mount->status : hive->Root(node.key);
  return node;
}

ComposedRegistry::Place ComposedRegistry::Resolver::Root(RootKey root) {
  Place place;
  place.machine.status = Status::Ok;
  switch (root) {
    case RootKey::LocalMachine:
      place.machine.box = Node::Box::Machine;
      return place;
    case RootKey::Users:
      place.machine.box = Node::Box::Users;
      return place;
    case RootKey::CurrentUser:
      if (!registry_.settings_.userSid.empty())
        return IntoHive(Node::Box::Users, registry_.settings_.userSid);
      break;
    case RootKey::ClassesRoot:
      return ClassesRoot();
    case RootKey::CurrentConfig:
      return CurrentConfig();
    default:
      break;
  }
  place.machine.status = Status::Unknown;
  return place;
}

ComposedRegistry::Place ComposedRegistry::Resolver::ClassesRoot() {
  const UnicodeString& sid = registry_.settings_.userSid;
  Place place;
  if (!sid.empty()) {
    place.user = UserClasses(sid, trail_ ? &trail_->user : nullptr);
    if (trail_ != nullptr) trail_->userMount = place.user.mount;
  }
  MountPoint* software = registry_.FindMount(false, u"SOFTWARE");
  if (software == nullptr) {
    place.machine.status = Status::Unknown;
    return place;
  }
  place.machine = Walk(HiveRoot(software), u"Classes", true, trail_ ? &trail_->machine : nullptr);
  Enter(place, registry_.tables_->Classes(bits32_));
  return place;
}

ComposedRegistry::Place ComposedRegistry::Resolver::CurrentConfig() {
  const Place set = Step(IntoHive(Node::Box::Machine, u"SYSTEM"), u"CurrentControlSet", true);
  std::uint32_t number = 0;
  const Node id = Walk(set.machine, u"Control\\IDConfigDB", true, nullptr);
  Place place;
  if (!Number(id, u"CurrentConfig", number)) {
    place.machine.status = Status::Unknown;
    return place;
  }
  UnicodeString digits = IntToStr(number);
  if (digits.size() < 4) digits.insert(0, 4 - digits.size(), u'0');
  place.machine =
      Walk(set.machine, u"Hardware Profiles\\" + digits, true, trail_ ? &trail_->machine : nullptr);
  return place;
}

ComposedRegistry::Place ComposedRegistry::Resolver::IntoHive(Node::Box box, UnicodeView name) {
  const bool user = box == Node::Box::Users;
  if (user && SameText(name, kSystemUser)) name = kDefaultUser;
  if (trail_ != nullptr) trail_->machine.clear();
  const detail::ViewTables& tables = *registry_.tables_;
  MountPoint* mount = registry_.FindMount(user, name);
  const bool classes = user && EndsWith(name, kClassesSuffix);
  Place place;
  if (mount == nullptr && classes) {
    place.machine = UserClasses(name.substr(0, name.size() - kClassesSuffix.size()),
                                trail_ ? &trail_->machine : nullptr);
  } else if (mount == nullptr) {
    const bool expected = user
                              ? StartsWith(name, u"S-1-") || SameText(name, kDefaultUser)
                              : std::any_of(std::begin(kMachineHives), std::end(kMachineHives),
                                            [&](UnicodeView hive) { return SameText(hive, name); });
    place.machine.status = expected ? Status::Unknown : Status::Absent;
    return place;
  } else {
    place.machine = HiveRoot(mount);
  }
  if (classes)
    Enter(place, tables.Classes(bits32_));
  else if (user)
    Enter(place, tables.User());
  else if (SameText(name, u"SOFTWARE"))
    Enter(place, tables.Software(bits32_));
  else if (SameText(name, u"SYSTEM"))
    Enter(place, tables.System());
  return place;
}

// ---- Rules --------------------------------------------------------------------------------

void ComposedRegistry::Resolver::Enter(Place& place, const detail::ViewRule& region) {
  place.userBase = place.user;
  place.machineBase = place.machine;
  place.rule = &region;
  if (trail_ != nullptr) {
    trail_->userBase = trail_->user;
    trail_->machineBase = trail_->machine;
  }
  if (region.kind == detail::RuleKind::Fixed) Apply(place, region, true);
}

void ComposedRegistry::Resolver::Apply(Place& place, const detail::ViewRule& rule, bool follow) {
  UnicodeString* user = trail_ ? &trail_->user : nullptr;
  UnicodeString* machine = trail_ ? &trail_->machine : nullptr;
  if (user != nullptr) *user = trail_->userBase;
  place.user = Walk(place.userBase, rule.place, follow, user);
  if (machine != nullptr) *machine = trail_->machineBase;
  place.machine = MachineSide(place.machineBase, rule.place, follow, machine);
  if (place.machine.status != Status::Absent || rule.otherPlace.empty()) return;
  UnicodeString path = trail_ ? trail_->machineBase : UnicodeString();
  const Node other = Walk(place.machineBase, rule.otherPlace, follow, machine ? &path : nullptr);
  // Where there is nothing at either place, the first is the one to create.
  if (other.status == Status::Absent) return;
  place.machine = other;
  if (machine != nullptr) *machine = path;
}

// The machine's 32-bit classes may lie below the 32-bit part of SOFTWARE instead, which is no
// place below the classes.
ComposedRegistry::Node ComposedRegistry::Resolver::MachineSide(const Node& base, UnicodeView place,
                                                               bool follow, UnicodeString* path) {
  constexpr UnicodeView wow = u"Wow6432Node";
  Node node = Walk(base, place, follow, path);
  if (node.status != Status::Absent || !StartsWith(place, wow) || base.mount == nullptr ||
      base.mount->user || base.key == HiveRoot(base.mount).key)
    return node;
  UnicodeString outer;
  const UnicodeString rest =
      UnicodeString(wow) + u"\\Classes" + UnicodeString(place.substr(wow.size()));
  const Node other = Walk(HiveRoot(base.mount), rest, follow, path ? &outer : nullptr);
  if (other.status == Status::Absent) return node;
  if (path != nullptr) *path = outer;
  return other;
}

ComposedRegistry::Place ComposedRegistry::Resolver::IntoUserClasses(const MountPoint* user) {
  Place place;
  if (trail_ != nullptr) trail_->machine.clear();
  if (user == nullptr) {
    place.machine.status = Status::Unknown;
    return place;
  }
  place.machine = UserClasses(user->name, trail_ ? &trail_->machine : nullptr);
  Enter(place, registry_.tables_->Classes(bits32_));
  return place;
}

// The user's classes hive; where the user has none, what his own hive holds in its place. There, a
// link can only lead to the missing hive.
ComposedRegistry::Node ComposedRegistry::Resolver::UserClasses(UnicodeView user,
                                                               UnicodeString* path) {
  if (SameText(user, kSystemUser)) user = kDefaultUser;
  MountPoint* own = registry_.FindMount(true, UnicodeString(user) + UnicodeString(kClassesSuffix));
  if (own != nullptr) return HiveRoot(own);
  Node node;
  node.mount = registry_.FindMount(true, user);
  node.status = Status::Unknown;
  if (node.mount == nullptr) return node;
  node = Walk(HiveRoot(node.mount), u"Software\\Classes", false, path);
  if (node.Ok() && node.Hive().IsLink(node.key)) node.status = Status::Absent;
  return node;
}

ComposedRegistry::Node ComposedRegistry::Resolver::ControlSet(const Node& system,
                                                              UnicodeString* path) {
  const Node select = Walk(system, u"Select", true, nullptr);
  Node found = select;
  for (const UnicodeView name : {UnicodeView(u"Current"), UnicodeView(u"Default")}) {
    std::uint32_t number = 0;
    if (!Number(select, name, number) || number == 0) continue;
    UnicodeString set = IntToStr(number);
    if (set.size() < 3) set.insert(0, 3 - set.size(), u'0');
    set.insert(0, u"ControlSet");
    found = Walk(system, set, true, nullptr);
    if (!found.Ok()) continue;
    AppendPart(path, set);
    return found;
  }
  // Without a control set nothing is known of what would be in it.
  if (found.Ok() || found.status == Status::Absent) found.status = Status::Unknown;
  return found;
}

bool ComposedRegistry::Resolver::Number(const Node& key, UnicodeView name,
                                        std::uint32_t& out) const {
  RegValue value;
  if (!key.Ok() || key.Hive().Value(key.key, name, value) != Status::Ok) return false;
  if (value.type != REGT_DWORD || value.data.size() != 4) return false;
  out = 0;
  for (std::size_t i = 4; i-- > 0;) out = out << 8U | value.data[i];
  return true;
}

}  // namespace scrubwell
