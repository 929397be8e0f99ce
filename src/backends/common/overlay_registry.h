// A registry whose changes are held back: every answer shows them as made, while the registry
// beneath stays as it is.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "backends/common/overlay_plan.h"
#include "registry/platform.h"

namespace scrubwell {

/// What there is to know of a registry's keys beside what any registry answers. Never asked for
/// keys of the merged classes root.
class IPhysicalKeys {
 public:
  virtual ~IPhysicalKeys() = default;
  /// Where the key lies, or would lie if there is none: "HKLM\SOFTWARE\x", the same for all ways
  /// that lead to it. With `asLink` a symbolic link is its own place, else its target's.
  virtual Status PlaceOf(const KeyRef& key, bool asLink, UnicodeString& place) = 0;
  /// The key with all below it; anything but Ok when not all of it can be read.
  virtual Status TreeOf(UnicodeView place, std::vector<KeyImage>& out) = 0;
  /// Ok when the key with all below it may be deleted without force.
  virtual Status MayDelete(UnicodeView place) = 0;
};

/// Answers as the registry beneath does, the merged classes root included, which is put together
/// here of the user's and the machine's classes.
class OverlayRegistry final : public IRegistry {
 public:
  OverlayRegistry(IRegistry& base, IPhysicalKeys& physical, IPlan& plan);
  ~OverlayRegistry() override;
  OverlayRegistry(const OverlayRegistry&) = delete;
  OverlayRegistry& operator=(const OverlayRegistry&) = delete;

  Status OpenKey(const KeyRef& key, KeyInfo& out) override;
  Status EnumKeys(const KeyRef& key, TStringList& out) override;
  Status EnumValues(const KeyRef& key, std::vector<RegValue>& out) override;
  Status GetValue(const KeyRef& key, UnicodeView name, RegValue& out) override;
  Status SetValue(const KeyRef& key, const RegValue& value) override;
  Status CreateKey(const KeyRef& key) override;
  Status DeleteKey(const KeyRef& key, bool force) override;
  Status DeleteValue(const KeyRef& key, UnicodeView name) override;
  Status CheckAccess(const KeyRef& key, Access access) override;

  /// Deleting something of the user's through the classes root uncovers the machine's of the same
  /// name: deleting it again is Absent until this forgets it.
  void ForgetDeletions() { deleted_.clear(); }

 private:
  struct Node;
  struct Side;
  struct Sides;

  Status PlaceOf(const KeyRef& key, bool asLink, UnicodeString& place);
  Status Find(Side& side, bool asLink = false);
  Status FindAll(const KeyRef& key, Sides& out, bool asLink = false);
  Status Existence(const Side& side);
  Status Keys(const Side& side, TStringList& out);
  Status Values(const Side& side, std::vector<RegValue>& out);
  Status Value(const Side& side, UnicodeView name, RegValue& out);
  Status Tree(const Side& side, std::vector<KeyImage>& out);
  Status Permit(const Side& side, Access access);
  Status Hit(const KeyRef& key, Sides& sides, Side*& out);
  Status CreateMissing(const Side& side);
  bool LiesBelowDeletedLink(const KeyRef& key);
  Node& NodeAt(UnicodeView place);
  [[nodiscard]] bool AlreadyDeleted(UnicodeView place, UnicodeView name, bool isValue) const;

  IRegistry& base_;
  IPhysicalKeys& physical_;
  IPlan& plan_;
  std::unique_ptr<Node> root_;
  bool changed_ = false;
  std::unordered_map<UnicodeString, UnicodeString> places_;  // of keys asked for before
  std::unordered_set<UnicodeString> links_;    // upper-cased places of links that went
  std::unordered_set<UnicodeString> deleted_;  // see ForgetDeletions
};

}  // namespace scrubwell
