// One registry made of hives: roots, both views, the merged classes root, symbolic links and
// rights. The memory and the offline backend share all of it and supply hives only.
#pragma once

#include <functional>
#include <memory>
#include <unordered_set>

#include "backends/common/hive.h"
#include "registry/platform.h"

namespace scrubwell {

/// Which Windows decides what the 32-bit view shares with the 64-bit one.
enum class ViewRules : std::uint8_t { BeforeWindows7, Windows7 };

struct ComposedSettings {
  /// The user whose registry is HKEY_CURRENT_USER. Empty: there is none, HKEY_CURRENT_USER is
  /// Unknown and the classes root is the machine's alone.
  UnicodeString userSid;
  /// False: there is one view only, and view flags are ignored.
  bool is64Bit = true;
  ViewRules rules = ViewRules::Windows7;
};

enum class ChangeKind : std::uint8_t { CreateKey, SetValue, DeleteKey, DeleteValue };

/// One change of one physical key, told before it is made. The views are good during the call.
struct RegistryChange {
  ChangeKind kind = ChangeKind::SetValue;
  UnicodeView mount;  ///< the hive's place as it was mounted, for example "HKLM\SOFTWARE"
  UnicodeView path;   ///< the key's path in that hive; empty for its root
  UnicodeView name;   ///< the value's name where a value changes
  const RegValue* value = nullptr;  ///< what SetValue will write
  IHive* hive = nullptr;
  IHive::Key key = IHive::NoKey;  ///< the changed key, for CreateKey its existing parent
};

class IRegistryObserver {
 public:
  virtual ~IRegistryObserver() = default;
  /// False makes the change Denied; nothing is changed then.
  virtual bool BeforeChange(const RegistryChange& change) = 0;
};

/// Where a key lies.
struct PhysicalKey {
  UnicodeString mount;
  UnicodeString path;
  IHive* hive = nullptr;
  IHive::Key key = IHive::NoKey;
};

namespace detail {
class ViewTables;
struct ViewRule;
}  // namespace detail

/// The registry of one installation. Borrows its hives, which must outlive it. One thread at a
/// time, as every platform interface.
///
/// Outcomes: a key below a hive that is not mounted is Unknown, below a damaged place Corrupt. One
/// that is reached through more than 16 links, or through one link twice, is Unknown.
/// Where a key is merged of two and one of them can't be read, reading answers why: nobody may
/// conclude anything from the half that can.
///
/// Rights: changes need what CheckAccess asks for; only a forced DeleteKey does not.
class ComposedRegistry final : public IRegistry {
 public:
  /// Opens a hive when it is first asked for; null and the reason in `why` when it can't.
  using HiveOpener = std::function<IHive*(Status& why)>;

  explicit ComposedRegistry(ComposedSettings settings);
  ~ComposedRegistry() override;
  ComposedRegistry(const ComposedRegistry&) = delete;
  ComposedRegistry& operator=(const ComposedRegistry&) = delete;

  /// Puts a hive in its place: "HKLM\<name>", "HKU\<SID>", "HKU\<SID>_Classes" or "HKU\.DEFAULT".
  /// A second hive for the same place replaces the first.
  void Mount(UnicodeView place, IHive& hive);
  void MountLazily(UnicodeView place, HiveOpener opener);
  /// Says that there is a hive for the place which can't be read, and why.
  void MountFailed(UnicodeView place, Status why);

  /// Null ends the observation.
  void SetObserver(IRegistryObserver* observer) { observer_ = observer; }

  /// In the classes root, deleting the user's key or value would uncover the machine's of the same
  /// name, and a second deletion would hit that. So once something of the user's was deleted
  /// through the classes root, deleting it again, or anything below it, is Absent, in either view.
  /// This forgets those deletions; called when a run of deletions begins.
  void ForgetDeletions();

  /// Drops what is remembered of resolved keys. Needed after a hive was changed from outside.
  void Invalidate();

  /// The physical keys behind a key, the one that a deletion would hit first.
  Status Locate(const KeyRef& key, std::vector<PhysicalKey>& out);

  Status OpenKey(const KeyRef& key, KeyInfo& out) override;
  /// Ascending by upper-cased name, without duplicates. The subkey that holds a redirected place's
  /// 32-bit part is left out on a 64-bit installation, for its keys are the 32-bit view; its path
  /// can be opened.
  Status EnumKeys(const KeyRef& key, TStringList& out) override;
  Status EnumValues(const KeyRef& key, std::vector<RegValue>& out) override;
  Status GetValue(const KeyRef& key, UnicodeView name, RegValue& out) override;
  Status SetValue(const KeyRef& key, const RegValue& value) override;
  Status CreateKey(const KeyRef& key) override;
  /// A symbolic link goes itself, never its target.
  Status DeleteKey(const KeyRef& key, bool force) override;
  Status DeleteValue(const KeyRef& key, UnicodeView name) override;
  /// Of the physical key that a change would hit; for Delete the key's own right decides, the
  /// rights of its subkeys are not looked at.
  Status CheckAccess(const KeyRef& key, Access access) override;

 private:
  struct MountPoint;
  struct Node;
  struct Place;
  struct Trail;
  class Ways;
  class Cache;
  class Resolver;

  MountPoint* FindMount(bool user, UnicodeView name);
  MountPoint& AddMount(UnicodeView place);
  Status Resolve(const KeyRef& key, Place& out, Trail* trail = nullptr, bool followLast = true);
  Status Names(const Place& place, TStringList& out);
  void ApplyRules(const Place& place, bool bits32, TStringList& names);
  Status Permit(const Node& node, Access access);
  Status PermitTree(const Node& node, int level);
  bool Announce(const RegistryChange& change);
  Status CreateAt(Node& node, const UnicodeString& path);
  Status WriteTarget(const KeyRef& key, bool create, Node& node, UnicodeString& path);
  [[nodiscard]] bool AlreadyDeleted(const Trail& trail, UnicodeView name, bool isValue) const;
  void Remember(const Trail& trail, UnicodeView name, bool isValue);

  // The descriptor judged last for one kind of access.
  struct Judged {
    bool known = false;
    Bytes descriptor;
    Status answer = Status::Unknown;
  };

  ComposedSettings settings_;
  std::unique_ptr<detail::ViewTables> tables_;
  std::vector<std::unique_ptr<MountPoint>> mounts_;
  std::unique_ptr<Ways> ways_;
  std::unique_ptr<Cache> cache_;
  std::unordered_set<UnicodeString> deleted_;
  Judged judged_[2];
  IRegistryObserver* observer_ = nullptr;
};

}  // namespace scrubwell
