// Removal from the inside out: the broken entry first, then each parent that lost its use by that.
#include <algorithm>

#include "plugins/com/Rcp_activexcom.h"
#include "plugins/com/activexcom_kinds.h"
#include "registry/Stringhelper.h"

namespace scrubwell {

using namespace activexcom;
using namespace classes;

namespace {

// A class that has none of these does nothing any more.
constexpr std::array<UnicodeView, 9> kEssentialSubkeys{
    u"InprocServer", u"InprocServer32", u"LocalServer", u"LocalServer32", u"Instance",
    u"DefaultIcon",  u"TypeLib",        u"shell",       u"shellex"};

// What is left of a type library's version without any library.
constexpr UnicodeView kVersionAttachments = u"|FLAGS|HELPDIR|";

bool IsClassesPath(RootKey root, UnicodeView path, int parts, UnicodeView first) {
  return root == HKEY_CLASSES_ROOT && PartCount(path) == parts &&
         (first.empty() || PartIs(path, 1, first));
}

bool Lists(const TStringList& names, UnicodeView name) {
  return std::ranges::any_of(names, [name](const auto& listed) { return SameText(listed, name); });
}

// What keeps a key with all that is in it from going is looked for by its name and in the key's
// list: one wrong answer of the system must not cost the whole key.
bool HasSubkey(RootKey root, UnicodeView path, std::span<const UnicodeView> anyOf,
               TZmRegOptions opts) {
  for (const UnicodeView name : anyOf)
    if (KeyExist(root, UnicodeString(path).append(u"\\").append(name), opts)) return true;
  TStringList names;
  EnumRegKeysEx(root, path, names, opts);
  return std::ranges::any_of(anyOf, [&](UnicodeView name) { return Lists(names, name); });
}

bool HasValue(RootKey root, UnicodeView path, UnicodeView name, TZmRegOptions opts) {
  if (RegValueExists(root, path, name, opts)) return true;
  TStringList names;
  TStringList data;
  EnumRegValuesEx(root, path, names, data, opts);
  return Lists(names, name);
}

}  // namespace

// The shape that a problem's path must have, and what becomes of its parent.
struct TRCPActiveXCOM::CleanRule {
  Kind kind;
  int parts;
  UnicodeView first;  // empty: anything
  UnicodeView last;   // empty: anything
  void (TRCPActiveXCOM::*upward)(RootKey, UnicodeView, TZmRegOptions) = nullptr;
};

bool TRCPActiveXCOM::CleanError(const TSweepError& error) {
  using T = TRCPActiveXCOM;
  static constexpr CleanRule kRules[] = {
      {kMissingServer, 3, u"CLSID", u"", &T::Clean_CLSID},
      {kMissingBitmap, 3, u"CLSID", u"", &T::Clean_CLSID},
      {kEmptyKey, 3, u"CLSID", u"", &T::Clean_CLSID},
      {kMissingProgram, 5, u"CLSID", u"command", &T::Clean_CLSID_Shell_Verb},
      {kMissingIcon, 3, u"", u"DefaultIcon", &T::Clean_CLSID},
      {kEmptyIcon, 3, u"", u"DefaultIcon", &T::Clean_CLSID},
      {kMissingTypeLib, 3, u"CLSID", u"TypeLib"},
      {kMissingHandler, 3, u"CLSID", u"PersistentHandler"},
      {kInterfaceMissingClass, 3, u"Interface", u""},
      {kInterfaceMissingInterface, 3, u"Interface", u""},
      {kInterfaceMissingTypeLib, 3, u"Interface", u""},
      {kTypeLibMissingFile, 5, u"TypeLib", u"", &T::Clean_TypeLib_Version_SubKey},
      {kTypeLibEmpty, 5, u"TypeLib", u"", &T::Clean_TypeLib_Version_SubKey},
      {kTypeLibMissingFolder, 4, u"TypeLib", u"HELPDIR"},
      {kTypeLibEmptyHelp, 4, u"TypeLib", u"HELPDIR"},
      {kEmptyProgID, 3, u"CLSID", u"ProgID"},
      {kEmptyProgID, 3, u"CLSID", u"VersionIndependentProgID"},
      {kMissingCommand, 4, u"", u"", &T::Clean_CLSID_Shell},
  };
  RootKey root = RootKey::None;
  UnicodeString path;
  UnicodeString value;
  TZmRegOptions opts;
  GetErrorRegValue(error, u"existingkey", u"existingvalue", root, path, value, opts);
  if (root != HKEY_CLASSES_ROOT) return true;
  const std::int32_t kind = error.ErrorType;
  for (const CleanRule& rule : kRules) {
    if (rule.kind != kind || !IsClassesPath(root, path, rule.parts, rule.first) ||
        !(rule.last.empty() || PartIs(path, rule.parts, rule.last)))
      continue;
    DeleteRegKeyWrapper(root, path, opts);
    if (rule.upward != nullptr) (this->*rule.upward)(root, StripLastKey(path), opts);
    return true;
  }
  if (kind == kMissingClass || kind == kMissingIdentifier) Clean_Handler(root, path, opts);
  if (kind == kMissingAppID && IsClassesPath(root, path, 2, u"CLSID"))
    DeleteRegValueWrapper(root, path, value, opts);
  return true;
}

void TRCPActiveXCOM::Clean_Handler(RootKey root, UnicodeView path, TZmRegOptions opts) {
  // Deliberate: a replacement class ("TreatAs", "AutoConvertTo") lies in three parts, stays where
  // it is and counts as done, for which class could take its place is not for a cleaner to say.
  if (PartCount(path) <= 3) return;
  DeleteRegKeyWrapper(root, path, opts);
  const UnicodeString parent = StripLastKey(path);
  if (!DeleteKeyIfEmpty(root, parent, opts)) return;
  const UnicodeString grandparent = StripLastKey(parent);
  if (!DeleteKeyIfEmpty(root, grandparent, opts)) return;
  // Of a single handler, that was the class itself.
  if (PartCount(grandparent) == 2) ShouldReSearch = true;
  const UnicodeString owner = StripLastKey(grandparent);
  if (PartCount(owner) != 2 || !KeyEmptyExEx(root, owner, opts)) return;
  ShouldReSearch = true;
  DeleteRegKeyWrapper(root, owner, opts);
}

void TRCPActiveXCOM::Clean_CLSID(RootKey root, UnicodeView path, TZmRegOptions opts) {
  if (!IsClassesPath(root, path, 2, u"CLSID")) return;
  if (HasSubkey(root, path, kEssentialSubkeys, opts) || HasValue(root, path, u"AppId", opts))
    return;
  ShouldReSearch = true;
  DeleteRegKeyWrapper(root, path, opts);
}

void TRCPActiveXCOM::Clean_CLSID_Shell_Verb(RootKey root, UnicodeView path, TZmRegOptions opts) {
  if (!IsClassesPath(root, path, 4, u"")) return;
  constexpr UnicodeView command = u"command";
  if (HasSubkey(root, path, {&command, 1}, opts)) return;
  DeleteRegKeyWrapper(root, path, opts);
  Clean_CLSID_Shell(root, StripLastKey(path), opts);
}

void TRCPActiveXCOM::Clean_CLSID_Shell(RootKey root, UnicodeView path, TZmRegOptions opts) {
  if (!IsClassesPath(root, path, 3, u"")) return;
  if (DeleteKeyIfEmpty(root, path, opts)) Clean_CLSID(root, StripLastKey(path), opts);
}

void TRCPActiveXCOM::Clean_TypeLib_Version_SubKey(RootKey root, UnicodeView path,
                                                  TZmRegOptions opts) {
  if (!IsClassesPath(root, path, 4, u"TypeLib")) return;
  if (DeleteKeyIfEmpty(root, path, opts)) Clean_TypeLib_Version(root, StripLastKey(path), opts);
}

void TRCPActiveXCOM::Clean_TypeLib_Version(RootKey root, UnicodeView path, TZmRegOptions opts) {
  if (!IsClassesPath(root, path, 3, u"TypeLib")) return;
  TStringList names;
  EnumRegKeysEx(root, path, names, opts);
  // Subkeys that are there but can't be named are none that could be given up.
  if (names.empty() && HasSubKeys(root, path, opts)) return;
  for (const UnicodeString& name : names) {
    if (kVersionAttachments.find(u"|" + UpperCase(name) + u"|") == UnicodeView::npos) return;
  }
  DeleteRegKeyWrapper(root, path, opts);
  Clean_TypeLib(root, StripLastKey(path), opts);
}

void TRCPActiveXCOM::Clean_TypeLib(RootKey root, UnicodeView path, TZmRegOptions opts) {
  if (IsClassesPath(root, path, 2, u"TypeLib")) DeleteKeyIfEmpty(root, path, opts);
}

}  // namespace scrubwell
