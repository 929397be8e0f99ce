// The checks that COM classes and file types share: shell verbs, shell extension handlers, icons.
// In what the two differ is said by ClassRules.
#pragma once

#include "framework/Rc_baseplugin.h"
#include "plugins/classes/class_keys.h"

namespace scrubwell {

/// The numbers that a plugin gives to what the shared checks find.
struct ClassKinds {
  std::int32_t missingProgram = 0;
  std::int32_t missingCommand = 0;
  std::int32_t noVerbs = 0;  ///< 0: a key without verbs is no problem
  std::int32_t missingClass = 0;
  std::int32_t missingIdentifier = 0;
  std::int32_t missingIcon = 0;
  std::int32_t emptyIcon = 0;
};

struct ClassRules {
  ClassKinds kinds;
  /// Subkeys of "ShellEx" that are passed over, lower-case, each between bars.
  UnicodeView skippedHandlers;
  /// A handler key that names no class is a problem when it holds at most an empty default value;
  /// otherwise only when it holds nothing at all.
  bool emptyDefaultIsNothing = false;
  /// The item that names a missing class of a handler records the view.
  bool missingClassHasView = false;
  /// Only an icon with a drive letter can be missing (see FileIsOnFixedDrive).
  bool iconNeedsDrive = false;
  /// An icon key is only judged when it reads the same in both views.
  bool iconSameInBothViews = false;
};

/// A class or file type whose parts are checked.
struct ClassOwner {
  UnicodeString key;  ///< its path below the classes root
  const classes::TCaption& caption;
  TZmRegOptions opts;
  classes::SubkeyNames subkeys;

  ClassOwner(UnicodeView path, const classes::TCaption& text, TZmRegOptions view)
      : key(path), caption(text), opts(view), subkeys(key, view) {}
  ClassOwner(const ClassOwner&) = delete;
  ClassOwner& operator=(const ClassOwner&) = delete;
};

/// A plugin over registered classes.
class TRCPClasses : public TRCPlugin {
 protected:
  TRCPClasses(const TCategory& category, std::span<const TProblemKind> kinds,
              const ClassRules& rules)
      : TRCPlugin(category, kinds), FRules(rules) {}

  /// Where the shared checks leave what they find.
  virtual void Report(std::int32_t kind, const TStringList& data) { AddError(kind, data); }

  void CheckVerbs(const ClassOwner& owner);
  void CheckHandlers(const ClassOwner& owner);
  void CheckIcon(const ClassOwner& owner);

  /// The items of a problem. Keys are named by their path below the classes root.
  [[nodiscard]] UnicodeString ExistingKey(UnicodeView key, TZmRegOptions opts) const;
  [[nodiscard]] UnicodeString MissingKey(UnicodeView key, TZmRegOptions opts) const;
  [[nodiscard]] static UnicodeString MissingKey(UnicodeView key);
  [[nodiscard]] static UnicodeString CaptionItem(const classes::TCaption& caption);

 private:
  void CheckVerb(const ClassOwner& owner, const UnicodeString& verbKey);
  void CheckHandlerCollection(const ClassOwner& owner, const UnicodeString& key, bool folderViews);
  void CheckHandler(const ClassOwner& owner, const UnicodeString& key, UnicodeView name);
  void ReportMissingClass(const ClassOwner& owner, const UnicodeString& key,
                          const UnicodeString& id);

  const ClassRules& FRules;
};

}  // namespace scrubwell
