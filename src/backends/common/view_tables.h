// Which keys the two registry views share and where the others lie.
#pragma once

#include <memory>

#include "backends/common/composed_registry.h"

namespace scrubwell::detail {

enum class RuleKind : std::uint8_t {
  Passage,      ///< nothing of its own, only on the way to a rule
  Fixed,        ///< lies at a place of its own below the region's base
  UserClasses,  ///< the user's classes: another hive, another region
  ControlSet,   ///< the control set that the system would start with
};

/// A key of a region, with the rules for the keys below it. A key without a rule lies where its
/// parent lies.
struct ViewRule {
  UnicodeString name;   ///< as it is shown
  UnicodeString upper;  ///< as it is compared
  RuleKind kind = RuleKind::Passage;
  UnicodeString place;        ///< of a Fixed key
  UnicodeString otherPlace;   ///< tried when there is nothing at the first; empty for none
  bool shown = false;         ///< listed among its parent's subkeys although it lies elsewhere
  bool hidden = false;        ///< left out of the list of its parent's subkeys
  bool changesNames = false;  ///< has children that are shown or hidden
  std::vector<std::unique_ptr<ViewRule>> children;

  [[nodiscard]] const ViewRule* Find(UnicodeView component) const;
};

/// The rules of one installation. A region is a tree of keys with rules of its own; its root may
/// itself be redirected.
class ViewTables {
 public:
  ViewTables(bool is64Bit, ViewRules rules);
  [[nodiscard]] const ViewRule& Software(bool bits32) const { return software_[bits32]; }
  /// The classes root and everything that is a user's or the machine's classes alone.
  [[nodiscard]] const ViewRule& Classes(bool bits32) const { return classes_[bits32]; }
  [[nodiscard]] const ViewRule& User() const { return user_; }
  [[nodiscard]] const ViewRule& System() const { return system_; }

 private:
  void AddShared(ViewRules rules);
  void AddClasses(ViewRules rules);
  void AddLinks(ViewRules rules);

  ViewRule software_[2];
  ViewRule classes_[2];
  ViewRule user_;
  ViewRule system_;
};

}  // namespace scrubwell::detail
