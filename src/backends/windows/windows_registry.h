// The registry of the running system.
#pragma once

#include <unordered_set>

#include "backends/windows/reg_key.h"

namespace scrubwell::windows {

/// The system decides which key a view leads to. The classes root alone is put together here, from
/// the user's and the machine's classes, so that it is known which of them a change would hit, and
/// so that systems which don't merge them answer alike.
class WindowsRegistry final : public IRegistry {
 public:
  /// Without `mayChange` every change is Denied.
  explicit WindowsRegistry(bool mayChange) : mayChange_(mayChange) {}

  Status OpenKey(const KeyRef& key, KeyInfo& out) override;
  /// Ascending by upper-cased name. On a 64-bit system the subkey that holds a place's 32-bit part
  /// is left out, for its keys are the 32-bit view; its path can be opened.
  Status EnumKeys(const KeyRef& key, TStringList& out) override;
  Status EnumValues(const KeyRef& key, std::vector<RegValue>& out) override;
  Status GetValue(const KeyRef& key, UnicodeView name, RegValue& out) override;
  Status SetValue(const KeyRef& key, const RegValue& value) override;
  Status CreateKey(const KeyRef& key) override;
  Status DeleteKey(const KeyRef& key, bool force) override;
  Status DeleteValue(const KeyRef& key, UnicodeView name) override;
  /// Asks the system for the right by opening the key with it.
  Status CheckAccess(const KeyRef& key, Access access) override;

  /// The system's own name of the place that a key of any root but the classes root has, or would
  /// have: "\REGISTRY\MACHINE\SOFTWARE\x".
  Status PhysicalName(const KeyRef& key, bool asLink, UnicodeString& out);

  /// Deleting something of the user's through the classes root uncovers the machine's of the same
  /// name, which was not meant: deleting it again is Absent until this forgets it.
  void ForgetDeletions() { deleted_.clear(); }

 private:
  /// False for a key at the end of a link when too many ways through links were listed before.
  bool MayEnter(UnicodeView path, const RegKey& key);
  bool AlreadyDeleted(const RegKey& key, UnicodeView name, bool isValue) const;

  bool mayChange_;
  std::unordered_set<UnicodeString> deleted_;
  std::unordered_set<UnicodeString> ways_;  ///< paths whose last part is a link
};

}  // namespace scrubwell::windows
