#include "backends/common/overlay_registry.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "registry/Stringhelper.h"

namespace scrubwell {
namespace {

constexpr UnicodeView kClasses = u"Software\\Classes";
constexpr int kMaxDepth = 512;  // the system's own limit

bool NameLess(const UnicodeString& a, const UnicodeString& b) {
  return CompareUpCase(a, b) < 0;
}

UnicodeView ParentOf(UnicodeView path) {
  const std::size_t slash = path.rfind(u'\\');
  return slash == UnicodeView::npos ? UnicodeView() : path.substr(0, slash);
}

// The first component, which is taken off the path.
UnicodeView TakeComponent(UnicodeView& path) {
  const std::size_t slash = std::min(path.find(u'\\'), path.size());
  const UnicodeView name = path.substr(0, slash);
  path.remove_prefix(std::min(slash + 1, path.size()));
  return name;
}

bool Failed(Status status) {
  return status != Status::Ok && status != Status::Absent;
}

// NUL can't be the first unit of a component, so it sets values apart from keys.
UnicodeString ValueMark(UnicodeView place, UnicodeView name) {
  return (UpperCase(place) + u"\\" + u'\0').append(UpperCase(name));
}

// "HKLM\SOFTWARE" is a hive: its root can't go, nor can what stands for it in the 32-bit view.
bool LiesInHive(UnicodeView place) {
  constexpr UnicodeView kWow = u"\\Wow6432Node";
  const bool isWow =
      place.size() > kWow.size() && SameText(place.substr(place.size() - kWow.size()), kWow);
  return !isWow && std::count(place.begin(), place.end(), u'\\') > 1;
}

}  // namespace

/// What was planned for one key. Keys that something changes below have a node as well.
struct OverlayRegistry::Node {
  bool hidden = false;   ///< the key beneath went, with all below it
  bool present = false;  ///< a key was made here since
  UnicodeString name;
  std::map<UnicodeString, std::optional<RegValue>> values;  ///< by upper-cased name; none: it went
  std::map<UnicodeString, std::unique_ptr<Node>> children;  ///< by upper-cased name

  [[nodiscard]] const Node* Child(UnicodeView child) const {
    const auto it = children.find(UpperCase(child));
    return it == children.end() ? nullptr : it->second.get();
  }
  void Forget() {
    present = false;
    values.clear();
    children.clear();
  }
  /// The values with what was planned for them.
  void Apply(std::vector<RegValue>& list) const {
    if (values.empty()) return;
    std::unordered_set<UnicodeString> kept;
    std::erase_if(list, [&](RegValue& value) {
      const UnicodeString upper = UpperCase(value.name);
      const auto it = values.find(upper);
      if (it == values.end()) return false;
      if (it->second) value = *it->second, kept.insert(upper);
      return !it->second.has_value();
    });
    for (const auto& [upper, value] : values)
      if (value && !kept.contains(upper)) list.push_back(*value);
  }
};

/// One of the keys behind a key reference.
struct OverlayRegistry::Side {
  RootKey root = RootKey::None;
  UnicodeString path;
  View view = View::Native;
  UnicodeString place{};
  const Node* node = nullptr;
  bool shows = true;  ///< what lies beneath is still to be seen

  [[nodiscard]] KeyRef Ref() const { return {root, path, view}; }
  [[nodiscard]] bool Present() const { return node != nullptr && node->present; }
  [[nodiscard]] bool Touched() const { return node != nullptr || !shows; }
};

/// The user's in front of the machine's in the classes root, else one alone.
struct OverlayRegistry::Sides {
  std::vector<Side> all;

  [[nodiscard]] bool Touched() const {
    return std::any_of(all.begin(), all.end(), [](const Side& side) { return side.Touched(); });
  }
};

OverlayRegistry::OverlayRegistry(IRegistry& base, IPhysicalKeys& physical, IPlan& plan)
    : base_(base), physical_(physical), plan_(plan), root_(std::make_unique<Node>()) {}
OverlayRegistry::~OverlayRegistry() = default;

// ---- Finding -------------------------------------------------------------------------------

// Nothing moves beneath while a plan is made, and rounds of scans ask for the same keys.
Status OverlayRegistry::PlaceOf(const KeyRef& key, bool asLink, UnicodeString& place) {
  UnicodeString mark{static_cast<char16_t>(static_cast<std::uint32_t>(key.root) & 0xFFU),
                     static_cast<char16_t>(key.view), static_cast<char16_t>(asLink ? 1 : 0)};
  mark += key.path;
  const auto known = places_.find(mark);
  if (known != places_.end()) return place = known->second, Status::Ok;
  const Status status = physical_.PlaceOf(key, asLink, place);
  if (status == Status::Ok) places_.emplace(std::move(mark), place);
  return status;
}

// What a link leads to has a place of its own, which does not tell that the way to it is gone.
bool OverlayRegistry::LiesBelowDeletedLink(const KeyRef& key) {
  if (links_.empty()) return false;
  for (UnicodeView path = key.path; !path.empty(); path = ParentOf(path)) {
    UnicodeString place;
    const Status status = PlaceOf({key.root, path, key.view}, true, place);
    if (status == Status::Ok && links_.contains(UpperCase(place))) return true;
  }
  return false;
}

Status OverlayRegistry::Find(Side& side, bool asLink) {
  side.node = nullptr;
  side.shows = !LiesBelowDeletedLink(side.Ref());
  const Status status = PlaceOf(side.Ref(), asLink, side.place);
  if (status != Status::Ok || !side.shows) return status;
  const Node* node = root_.get();
  for (UnicodeView rest = side.place; node != nullptr && !rest.empty();) {
    node = node->Child(TakeComponent(rest));
    if (node != nullptr && node->hidden) side.shows = false;
  }
  side.node = node;
  return Status::Ok;
}

Status OverlayRegistry::FindAll(const KeyRef& key, Sides& out, bool asLink) {
  if (key.view == View::Invalid) return Status::Unknown;
  out.all.clear();
  if (key.root == RootKey::ClassesRoot) {
    UnicodeString path(kClasses);
    if (!key.path.empty()) (path += u'\\') += key.path;
    out.all.push_back({RootKey::CurrentUser, path, key.view});
    out.all.push_back({RootKey::LocalMachine, std::move(path), key.view});
  } else {
    out.all.push_back({key.root, UnicodeString(key.path), key.view});
  }
  for (Side& side : out.all)
    if (const Status status = Find(side, asLink); status != Status::Ok) return status;
  return Status::Ok;
}

OverlayRegistry::Node& OverlayRegistry::NodeAt(UnicodeView place) {
  changed_ = true;
  Node* node = root_.get();
  for (UnicodeView rest = place; !rest.empty();) {
    const UnicodeView name = TakeComponent(rest);
    std::unique_ptr<Node>& child = node->children[UpperCase(name)];
    if (child == nullptr) {
      child = std::make_unique<Node>();
      child->name = name;
    }
    node = child.get();
  }
  return *node;
}

// ---- Reading one side ----------------------------------------------------------------------

Status OverlayRegistry::Existence(const Side& side) {
  if (side.Present()) return Status::Ok;
  KeyInfo info;
  return side.shows ? base_.OpenKey(side.Ref(), info) : Status::Absent;
}

Status OverlayRegistry::Keys(const Side& side, TStringList& out) {
  out.clear();
  Status status = side.shows ? base_.EnumKeys(side.Ref(), out) : Status::Absent;
  if (status == Status::Absent && side.Present()) status = Status::Ok;
  if (status != Status::Ok || side.node == nullptr) return status;
  std::erase_if(out, [&side](const UnicodeString& name) {
    const Node* const child = side.node->Child(name);
    return child != nullptr && (child->hidden || child->present);
  });
  for (const auto& [upper, child] : side.node->children)
    if (child->present) out.push_back(child->name);
  std::sort(out.begin(), out.end(), NameLess);
  return Status::Ok;
}

Status OverlayRegistry::Values(const Side& side, std::vector<RegValue>& out) {
  out.clear();
  Status status = side.shows ? base_.EnumValues(side.Ref(), out) : Status::Absent;
  if (status == Status::Absent && side.Present()) status = Status::Ok;
  if (status == Status::Ok && side.node != nullptr) side.node->Apply(out);
  return status;
}

Status OverlayRegistry::Value(const Side& side, UnicodeView name, RegValue& out) {
  if (side.node != nullptr) {
    const auto it = side.node->values.find(UpperCase(name));
    if (it != side.node->values.end()) {
      if (it->second) out = *it->second;
      return it->second ? Status::Ok : Status::Absent;
    }
  }
  return side.shows ? base_.GetValue(side.Ref(), name, out) : Status::Absent;
}

namespace {

/// Turns the image of a subtree into that of the subtree with what was planned for it.
template <class Node>
class TreeMerge {
 public:
  TreeMerge(const std::vector<KeyImage>& base, std::vector<KeyImage>& out)
      : base_(base), out_(out) {}

  /// One key of the image with all below it; gives where the next one begins.
  std::size_t AddBase(std::size_t at, const Node* node) {
    const std::uint32_t level = base_[at].level;
    const bool goes = node != nullptr && node->hidden;
    if (goes && node->present) AddMade(*node, level);
    if (goes) return EndOf(at);
    KeyImage& key = out_.emplace_back(base_[at]);
    if (node != nullptr) node->Apply(key.values);
    std::unordered_set<UnicodeString> seen;
    std::size_t next = at + 1;
    while (next < base_.size() && base_[next].level > level) {
      if (node != nullptr) seen.insert(UpperCase(base_[next].name));
      next = AddBase(next, node == nullptr ? nullptr : node->Child(base_[next].name));
    }
    if (node != nullptr) AddMadeChildren(*node, level, seen);
    return next;
  }

  void AddMade(const Node& node, std::uint32_t level) {
    if (level > kMaxDepth) return;
    KeyImage& key = out_.emplace_back();
    key.level = level;
    key.name = node.name;
    node.Apply(key.values);
    AddMadeChildren(node, level, {});
  }

 private:
  void AddMadeChildren(const Node& node, std::uint32_t level,
                       const std::unordered_set<UnicodeString>& seen) {
    for (const auto& [upper, child] : node.children)
      if (child->present && !seen.contains(upper)) AddMade(*child, level + 1);
  }
  [[nodiscard]] std::size_t EndOf(std::size_t at) const {
    std::size_t next = at + 1;
    while (next < base_.size() && base_[next].level > base_[at].level) ++next;
    return next;
  }

  const std::vector<KeyImage>& base_;
  std::vector<KeyImage>& out_;
};

}  // namespace

Status OverlayRegistry::Tree(const Side& side, std::vector<KeyImage>& out) {
  out.clear();
  std::vector<KeyImage> base;
  const Status status = side.shows ? physical_.TreeOf(side.place, base) : Status::Absent;
  TreeMerge<Node> merge(base, out);
  if (status == Status::Ok && !base.empty()) {
    merge.AddBase(0, side.node);
  } else if (status == Status::Absent && side.Present()) {
    merge.AddMade(*side.node, 0);
  } else {
    return status;
  }
  return out.empty() ? Status::Absent : Status::Ok;
}

// ---- Reading -------------------------------------------------------------------------------

Status OverlayRegistry::OpenKey(const KeyRef& key, KeyInfo& out) {
  Sides sides;
  if (!changed_ || FindAll(key, sides) != Status::Ok || !sides.Touched())
    return base_.OpenKey(key, out);
  out = {};
  TStringList names;
  std::vector<RegValue> values;
  Status status = EnumKeys(key, names);
  if (status == Status::Ok) status = EnumValues(key, values);
  out.subkeyCount = static_cast<std::uint32_t>(names.size());
  out.valueCount = static_cast<std::uint32_t>(values.size());
  return status;
}

Status OverlayRegistry::EnumKeys(const KeyRef& key, TStringList& out) {
  Sides sides;
  if (!changed_ || FindAll(key, sides) != Status::Ok || !sides.Touched())
    return base_.EnumKeys(key, out);
  out.clear();
  Status found = Status::Absent;
  for (const Side& side : sides.all) {
    TStringList names;
    const Status status = Keys(side, names);
    if (Failed(status)) return status;
    if (status == Status::Ok) found = Status::Ok;
    out.insert(out.end(), std::make_move_iterator(names.begin()),
               std::make_move_iterator(names.end()));
  }
  // Of equal names the user's stays, which came first.
  std::stable_sort(out.begin(), out.end(), NameLess);
  const auto same = [](const UnicodeString& a, const UnicodeString& b) { return SameText(a, b); };
  out.erase(std::unique(out.begin(), out.end(), same), out.end());
  return found;
}

Status OverlayRegistry::EnumValues(const KeyRef& key, std::vector<RegValue>& out) {
  Sides sides;
  if (!changed_ || FindAll(key, sides) != Status::Ok || !sides.Touched())
    return base_.EnumValues(key, out);
  out.clear();
  Status found = Status::Absent;
  std::unordered_set<UnicodeString> seen;
  for (const Side& side : sides.all) {
    std::vector<RegValue> values;
    const Status status = Values(side, values);
    if (Failed(status)) return status;
    if (status == Status::Ok) found = Status::Ok;
    for (RegValue& value : values)
      if (seen.insert(UpperCase(value.name)).second) out.push_back(std::move(value));
  }
  return found;
}

Status OverlayRegistry::GetValue(const KeyRef& key, UnicodeView name, RegValue& out) {
  Sides sides;
  if (!changed_ || FindAll(key, sides) != Status::Ok || !sides.Touched())
    return base_.GetValue(key, name, out);
  for (const Side& side : sides.all) {
    const Status status = Value(side, name, out);
    if (status != Status::Absent) return status;
  }
  return Status::Absent;
}

Status OverlayRegistry::Permit(const Side& side, Access access) {
  if (side.shows) {
    const Status status = base_.CheckAccess(side.Ref(), access);
    if (status != Status::Absent) return status;
  }
  return side.Present() ? Status::Ok : Status::Absent;
}

Status OverlayRegistry::CheckAccess(const KeyRef& key, Access access) {
  Sides sides;
  if (!changed_ || FindAll(key, sides, access == Access::Delete) != Status::Ok || !sides.Touched())
    return base_.CheckAccess(key, access);
  for (const Side& side : sides.all) {
    const Status status = Permit(side, access);
    if (status != Status::Absent) return status;
  }
  return Status::Absent;
}

// ---- Changing ------------------------------------------------------------------------------

namespace {

PlannedChange Planned(JournalAction action, UnicodeView place) {
  PlannedChange change;
  change.entry.item.action = action;
  change.entry.item.place = change.entry.path = place;
  return change;
}

}  // namespace

// The side that a change of the key hits, with Absent when that is yet to be made.
Status OverlayRegistry::Hit(const KeyRef& key, Sides& sides, Side*& out) {
  if (const Status status = FindAll(key, sides); status != Status::Ok) return status;
  for (Side& side : sides.all) {
    out = &side;
    const Status status = Existence(side);
    if (status != Status::Absent) return status;
  }
  return Status::Absent;
}

Status OverlayRegistry::CreateMissing(const Side& side) {
  std::vector<UnicodeView> missing;
  for (UnicodeView path = side.path;; path = ParentOf(path)) {
    Side key{side.root, UnicodeString(path), side.view};
    Status status = Find(key);
    if (status == Status::Ok) status = Existence(key);
    if (Failed(status)) return status;
    if (status == Status::Ok) {
      status = Permit(key, Access::Write);
      if (status != Status::Ok) return status;
      break;
    }
    if (path.empty()) return Status::Denied;
    missing.push_back(UnicodeView(side.path).substr(0, path.size()));
  }
  for (auto path = missing.rbegin(); path != missing.rend(); ++path) {
    Side key{side.root, UnicodeString(*path), side.view};
    Status status = Find(key);
    if (status == Status::Ok && !LiesInHive(key.place)) status = Status::Denied;
    if (status == Status::Ok) status = plan_.Add(Planned(JournalAction::CreateKey, key.place));
    if (status != Status::Ok) return status;
    NodeAt(key.place).present = true;
  }
  return Status::Ok;
}

Status OverlayRegistry::CreateKey(const KeyRef& key) {
  Sides sides;
  Side* side = nullptr;
  const Status status = Hit(key, sides, side);
  return status == Status::Absent ? CreateMissing(*side) : status;
}

Status OverlayRegistry::SetValue(const KeyRef& key, const RegValue& value) {
  Sides sides;
  Side* side = nullptr;
  Status status = Hit(key, sides, side);
  if (status == Status::Absent) {
    status = CreateMissing(*side);
    if (status == Status::Ok) status = Find(*side);
  }
  if (status == Status::Ok) status = Permit(*side, Access::Write);
  if (status != Status::Ok) return status;
  PlannedChange change = Planned(JournalAction::SetValue, side->place);
  RegValue before;
  status = Value(*side, value.name, before);
  if (Failed(status)) return status;
  change.entry.item.name = status == Status::Ok ? before.name : value.name;
  change.entry.item.bytes = before.data.size();
  if (status == Status::Ok) change.entry.before = std::move(before);
  change.entry.after = value;
  RegValue stored{change.entry.item.name, value.type, value.data};
  status = plan_.Add(std::move(change));
  if (status == Status::Ok) NodeAt(side->place).values[UpperCase(value.name)] = std::move(stored);
  return status;
}

bool OverlayRegistry::AlreadyDeleted(UnicodeView place, UnicodeView name, bool isValue) const {
  if (deleted_.empty()) return false;
  if (isValue && deleted_.contains(ValueMark(place, name))) return true;
  const UnicodeString whole = UpperCase(place);
  for (UnicodeView path = whole; !path.empty(); path = ParentOf(path))
    if (deleted_.contains(UnicodeString(path))) return true;
  return false;
}

Status OverlayRegistry::DeleteKey(const KeyRef& key, bool force) {
  Sides sides;
  if (key.path.empty()) return Status::Denied;
  if (const Status status = FindAll(key, sides, true); status != Status::Ok) return status;
  const bool merged = key.root == RootKey::ClassesRoot;
  for (const Side& side : sides.all) {
    PlannedChange change = Planned(JournalAction::DeleteKey, side.place);
    change.force = force;
    if (!LiesInHive(side.place)) {
      if (Existence(side) == Status::Absent) continue;
      return Status::Denied;
    }
    // Opened itself: a link may lead nowhere.
    Status status = Tree(side, change.entry.tree);
    if (status == Status::Absent) continue;
    if (merged && AlreadyDeleted(sides.all.back().place, {}, false)) return Status::Absent;
    if (status == Status::Ok && side.shows && !force) status = physical_.MayDelete(side.place);
    if (status == Status::Absent && side.Present()) status = Status::Ok;
    if (status != Status::Ok) return status;
    change.entry.item.subkeys = change.entry.tree.size() - 1;
    for (const KeyImage& image : change.entry.tree) change.entry.item.values += image.values.size();
    const bool isLink = change.entry.tree.front().link;
    status = plan_.Add(std::move(change));
    if (status != Status::Ok) return status;
    if (isLink) links_.insert(UpperCase(side.place));
    Node& node = NodeAt(side.place);
    node.Forget();
    node.hidden = true;
    if (merged && &side != &sides.all.back()) deleted_.insert(UpperCase(sides.all.back().place));
    return Status::Ok;
  }
  return Status::Absent;
}

Status OverlayRegistry::DeleteValue(const KeyRef& key, UnicodeView name) {
  Sides sides;
  if (const Status status = FindAll(key, sides); status != Status::Ok) return status;
  const bool merged = key.root == RootKey::ClassesRoot;
  for (const Side& side : sides.all) {
    PlannedChange change = Planned(JournalAction::DeleteValue, side.place);
    RegValue before;
    Status status = Value(side, name, before);
    if (status == Status::Absent) continue;
    if (status != Status::Ok) return status;
    if (merged && AlreadyDeleted(sides.all.back().place, name, true)) return Status::Absent;
    status = Permit(side, Access::Write);
    if (status != Status::Ok) return status;
    change.entry.item.name = before.name;
    change.entry.item.bytes = before.data.size();
    change.entry.before = std::move(before);
    change.entry.after.name = name;
    status = plan_.Add(std::move(change));
    if (status != Status::Ok) return status;
    NodeAt(side.place).values[UpperCase(name)].reset();
    if (merged && &side != &sides.all.back())
      deleted_.insert(ValueMark(sides.all.back().place, name));
    return Status::Ok;
  }
  return Status::Absent;
}

}  // namespace scrubwell
