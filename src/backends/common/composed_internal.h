// How the composed registry finds keys. Not for use outside this folder.
#pragma once

#include <map>
#include <span>
#include <tuple>

#include "backends/common/composed_registry.h"
#include "backends/common/view_tables.h"
#include "registry/Stringhelper.h"

namespace scrubwell {

/// More links than this on the way to a key are taken for a circle.
inline constexpr int kMaxLinks = 16;
/// A look-up that had to follow this many, all its sides and targets counted, has gone astray.
inline constexpr int kMaxFollowed = 8 * kMaxLinks;

struct ComposedRegistry::MountPoint {
  UnicodeString place;  // as mounted
  bool user = false;    // below HKU
  UnicodeString name;   // last part of the place
  IHive* hive = nullptr;
  Status status = Status::Ok;  // why there is no hive
  HiveOpener opener;

  IHive* Open() {
    if (hive == nullptr && opener) {
      status = Status::Unknown;
      hive = opener(status);
      opener = nullptr;
    }
    return hive;
  }
};

/// One physical key, or why there is none.
struct ComposedRegistry::Node {
  enum class Box : std::uint8_t { None, Machine, Users };
  MountPoint* mount = nullptr;  // known also where the key is absent
  IHive::Key key = IHive::NoKey;
  Status status = Status::Absent;
  Box box = Box::None;    // the roots that hold hives are no keys of a hive
  std::uint16_t way = 0;  // through which links it was reached; see Ways

  [[nodiscard]] bool Ok() const { return status == Status::Ok; }
  [[nodiscard]] bool Failed() const { return status != Status::Ok && status != Status::Absent; }
  [[nodiscard]] IHive& Hive() const { return *mount->hive; }
};

/// A key as it is seen: the user's in front of the machine's. Where nothing is merged, the second
/// stands alone.
struct ComposedRegistry::Place {
  Node user;
  Node machine;
  Node userBase;  // of the region
  Node machineBase;
  const detail::ViewRule* rule = nullptr;  // null: no rule here nor below

  [[nodiscard]] Status Readable() const {
    if (user.Failed()) return user.status;
    if (machine.Failed()) return machine.status;
    return user.Ok() ? Status::Ok : machine.status;
  }
};

/// The paths that belong to a Place, collected only where something changes.
struct ComposedRegistry::Trail {
  UnicodeString user;
  UnicodeString machine;
  UnicodeString userBase;
  UnicodeString machineBase;
  MountPoint* userMount = nullptr;
};

/// The ways that lead to keys through links. A way is a number; 0 leads through none. Without them
/// links to keys above themselves would make an endless tree of a small registry.
class ComposedRegistry::Ways {
 public:
  static constexpr std::uint16_t kNone = 0xFFFF;
  /// Far more than any system has. Keys behind further ones are not known, so that what there is to
  /// see stays in proportion to what there is.
  static constexpr std::size_t kMost = 1U << 10;

  /// The way on through that link; kNone where it has led through the link before, or is too long.
  std::uint16_t Through(std::uint16_t way, const Node& link);
  /// One way after the other.
  std::uint16_t Joined(std::uint16_t first, std::uint16_t second);
  void Clear() { steps_.resize(1), next_.clear(); }

 private:
  struct Step {
    const MountPoint* mount = nullptr;
    IHive::Key key = IHive::NoKey;
    std::uint16_t before = 0;
    std::uint16_t length = 0;
  };
  using Onward = std::tuple<std::uint16_t, const MountPoint*, IHive::Key>;
  std::uint16_t Through(std::uint16_t way, const Step& link);

  std::vector<Step> steps_ = std::vector<Step>(1);
  std::map<Onward, std::uint16_t> next_;
};

/// Resolved keys by root, view and path. A newer key takes an older one's slot; the number of
/// slots grows with the use up to a limit.
class ComposedRegistry::Cache {
 public:
  static constexpr std::size_t kFirstSlots = 1U << 8;
  static constexpr std::size_t kMaxSlots = 1U << 10;
  static constexpr std::size_t kLongestPath = 2048;

  struct Probe {
    std::uint64_t hash = 0;
    RootKey root = RootKey::None;
    bool bits32 = false;
  };
  /// The hash of a path, from that of what is in front of this part; 0 is in front of all.
  static std::uint64_t HashBelow(std::uint64_t hash, UnicodeView part);
  const Place* Find(const Probe& probe, UnicodeView path) const;
  void Store(const Probe& probe, UnicodeView path, const Place& place);
  void Clear() { ++generation_; }

 private:
  struct Slot {
    std::uint64_t generation = 0;
    Probe probe;
    UnicodeString path;
    Place place;
  };
  [[nodiscard]] std::size_t SlotOf(const Probe& probe) const {
    const std::uint64_t view =
        static_cast<std::uint64_t>(probe.root) * 2 + (probe.bits32 ? 1U : 0U);
    return static_cast<std::size_t>((probe.hash + view * 0x9E3779B1U) % slots_.size());
  }

  std::vector<Slot> slots_ = std::vector<Slot>(kFirstSlots);
  std::size_t stored_ = 0;
  std::uint64_t generation_ = 1;
};

/// Finds the place of one key. With a trail, nothing is taken from the cache.
class ComposedRegistry::Resolver {
 public:
  Resolver(ComposedRegistry& registry, bool bits32, int& links, Trail* trail)
      : registry_(registry), bits32_(bits32), links_(links), trail_(trail) {}

  Place Find(RootKey root, UnicodeView path, bool followLast);
  /// One more component below a place.
  Place Step(const Place& parent, UnicodeView component, bool follow);

 private:
  Place Root(RootKey root);
  Place ClassesRoot();
  Place CurrentConfig();
  Place IntoHive(Node::Box box, UnicodeView name);
  void Enter(Place& place, const detail::ViewRule& region);
  void Apply(Place& place, const detail::ViewRule& rule, bool follow);
  Place IntoUserClasses(const MountPoint* user);
  Node UserClasses(UnicodeView user, UnicodeString* path);
  Node ControlSet(const Node& system, UnicodeString* path);
  Node MachineSide(const Node& base, UnicodeView place, bool follow, UnicodeString* path);
  Node Walk(Node from, UnicodeView path, bool follow, UnicodeString* trail);
  Node Child(const Node& parent, UnicodeView name, bool follow, UnicodeString* trail);
  Node FollowLink(const Node& link, UnicodeString* trail);
  Node HiveRoot(MountPoint* mount) const;
  bool Number(const Node& key, UnicodeView name, std::uint32_t& out) const;

  ComposedRegistry& registry_;
  bool bits32_;
  int& links_;
  Trail* trail_;
};

}  // namespace scrubwell
