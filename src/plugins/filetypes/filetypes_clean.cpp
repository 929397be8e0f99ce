// Removal from the inside out: the broken entry first, then each parent that it left empty.
#include "plugins/filetypes/Rcp_filetypes.h"
#include "plugins/filetypes/filetypes_kinds.h"
#include "registry/Stringhelper.h"

namespace scrubwell {

using namespace classes;
using namespace filetypes;

namespace {

// While it lives, deletions override the rights of the keys they delete.
class ForcedDeletion {
 public:
  ForcedDeletion() { ForceRegDelete = true; }
  ~ForcedDeletion() { ForceRegDelete = false; }
  ForcedDeletion(const ForcedDeletion&) = delete;
  ForcedDeletion& operator=(const ForcedDeletion&) = delete;
};

bool IsClassesPath(RootKey root, UnicodeView path, int parts) {
  return root == HKEY_CLASSES_ROOT && PartCount(path) == parts;
}

bool LastPartIs(UnicodeView path, UnicodeView name) {
  return PartIs(path, PartCount(path), name);
}

// What refers to a file type that goes as a whole is broken from now on; to an extension nothing
// refers.
void AdviseNewScan(UnicodeView topLevelKey) {
  if (!topLevelKey.starts_with(u'.')) ShouldReSearch = true;
}

}  // namespace

// The shape that a problem's path must have, and what becomes of its parent.
struct TRCPFileTypes::CleanRule {
  Kind kind;
  int parts;         // 0: any number
  UnicodeView last;  // empty: anything
  bool anyRoot = false;
  void (TRCPFileTypes::*upward)(RootKey, UnicodeView, TZmRegOptions) = nullptr;
};

bool TRCPFileTypes::CleanError(const TSweepError& error) {
  using T = TRCPFileTypes;
  // An application's verb, one part longer, is deliberately taken below any root.
  static constexpr CleanRule kRules[] = {
      {kMissingProgram, 4, u"", false, &T::Clean_FileType_Shell_Verb},
      {kMissingProgram, 5, u"", true, &T::Clean_FileType_Shell_Verb},
      {kMissingType, 1, u""},
      {kMissingClass, 2, u"CLSID", false, &T::Clean_FileType},
      {kMissingIcon, 2, u"DefaultIcon", false, &T::Clean_FileType},
      {kEmptyIcon, 2, u"DefaultIcon", false, &T::Clean_FileType},
      {kMissingCommand, 3, u"", false, &T::Clean_FileType_Shell},
      {kMissingCommand, 4, u"", true, &T::Clean_FileType_Shell},
      {kEmptyType, 1, u""},
      {kNoVerbs, 0, u""},
      {kUnknownType, 4, u""},
      {kEmptyEntry, 0, u"", true},
  };
  const ForcedDeletion forced;
  RootKey root = RootKey::None;
  UnicodeString path;
  TZmRegOptions opts;
  GetErrorRegKey(error, u"existingkey", root, path, opts);
  const std::int32_t kind = error.ErrorType;
  for (const CleanRule& rule : kRules) {
    if (rule.kind != kind || (rule.parts != 0 && PartCount(path) != rule.parts) ||
        !(rule.anyRoot || root == HKEY_CLASSES_ROOT) ||
        !(rule.last.empty() || LastPartIs(path, rule.last)))
      continue;
    DeleteRegKeyWrapper(root, path, opts);
    if (rule.parts == 1) AdviseNewScan(path);
    if (rule.upward != nullptr) (this->*rule.upward)(root, StripLastKey(path), opts);
    return true;
  }
  const bool classKey = LastPartIs(path, u"CLSID");
  if (!classKey && (kind == kMissingClass || kind == kMissingIdentifier))
    Clean_ShellEx(root, path, opts);
  if (classKey && kind == kMissingClass && IsClassesPath(root, path, 5))
    DeleteRegKeyWrapper(root, StripLastKey(path), opts);
  return true;
}

void TRCPFileTypes::Clean_ShellEx(RootKey root, UnicodeView path, TZmRegOptions opts) {
  if (root != HKEY_CLASSES_ROOT || PartCount(path) <= 2) return;
  const UnicodeString parent = StripLastKey(path);
  DeleteRegKeyWrapper(root, path, opts);
  if (DeleteKeyIfEmpty(root, parent, opts)) DeleteKeyIfEmpty(root, StripLastKey(parent), opts);
}

void TRCPFileTypes::Clean_FileType_Shell_Verb(RootKey root, UnicodeView path, TZmRegOptions opts) {
  if (!IsClassesPath(root, path, 3)) return;
  if (KeyExist(root, UnicodeString(path).append(u"\\command"), opts)) return;
  DeleteRegKeyWrapper(root, path, opts);
  Clean_FileType_Shell(root, StripLastKey(path), opts);
}

void TRCPFileTypes::Clean_FileType_Shell(RootKey root, UnicodeView path, TZmRegOptions opts) {
  if (!IsClassesPath(root, path, 2)) return;
  if (DeleteKeyIfEmpty(root, path, opts)) Clean_FileType(root, StripLastKey(path), opts);
}

void TRCPFileTypes::Clean_FileType(RootKey root, UnicodeView path, TZmRegOptions opts) {
  if (!IsClassesPath(root, path, 1) || !KeyEmptyExEx(root, path, {})) return;
  DeleteRegKeyWrapper(root, path, opts);
  AdviseNewScan(path);
}

}  // namespace scrubwell
