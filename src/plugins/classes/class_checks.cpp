#include "plugins/classes/class_checks.h"

#include "registry/Stringhelper.h"

namespace scrubwell {

using namespace classes;

namespace {

// Subkeys of "ShellEx" that hold a subkey for each of their handlers.
constexpr UnicodeView kCollections =
    u"|contextmenuhandlers|copyhookhandlers|dragdrophandlers|extshellfolderviews|"
    u"propertysheethandlers|";
constexpr UnicodeView kFolderViews = u"|extshellfolderviews|";
constexpr UnicodeView kFolderViewsKey =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\ExtShellViews\\";

bool IsIgnoredClass(UnicodeView id) {
  return IgnoredCLSIDs->Contains(UpperCase(id));
}

// A command key may hold an installer's descriptor, from which the installer restores the program
// when it is missing. It is usually a multi-text.
bool MayHaveDescriptor(UnicodeView commandKey, TZmRegOptions opts) {
  constexpr UnicodeView name = u"command";
  if (!RegValueExists(HKEY_CLASSES_ROOT, commandKey, name, opts)) return false;
  TStringList names;
  TStringList data;
  EnumRegValuesEx(HKEY_CLASSES_ROOT, commandKey, names, data, opts);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (SameText(names[i], name)) return !data[i].empty();
  }
  return true;
}

// The class that a handler key names: its default value, else its own name. Nothing when the value
// is there but can't be read as text.
std::optional<UnicodeString> HandlerClass(UnicodeView key, UnicodeView name, TZmRegOptions opts) {
  std::optional<UnicodeString> id = ReadText(key, u"", opts);
  if (id && !IsCLSIDKey(*id)) id = name;
  return id;
}

}  // namespace

void TRCPClasses::CheckVerbs(const ClassOwner& owner) {
  if (!owner.subkeys.Has(u"shell")) return;
  const UnicodeString shell = owner.key + u"\\shell";
  TStringList verbs;
  EnumRegKeysEx(HKEY_CLASSES_ROOT, shell, verbs, owner.opts);
  if (FRules.kinds.noVerbs != 0 && KeyExist(HKEY_CLASSES_ROOT, shell, owner.opts) &&
      !HasSubKeys(HKEY_CLASSES_ROOT, shell, owner.opts)) {
    // The key stands for the caption here, whatever the owner is called.
    Report(FRules.kinds.noVerbs, {ExistingKey(shell, owner.opts), u"caption:" + owner.key});
  }
  for (const UnicodeString& verb : verbs) CheckVerb(owner, shell + u"\\" + verb);
}

void TRCPClasses::CheckVerb(const ClassOwner& owner, const UnicodeString& verbKey) {
  const UnicodeString commandKey = verbKey + u"\\command";
  if (!KeyExist(HKEY_CLASSES_ROOT, commandKey, owner.opts)) {
    if (KeyExist(HKEY_CLASSES_ROOT, verbKey + u"\\DropTarget", owner.opts)) return;
    Report(FRules.kinds.missingCommand,
           {ExistingKey(verbKey, owner.opts), CaptionItem(owner.caption)});
    return;
  }
  UnicodeString command;
  if (GetRegStringValue(HKEY_CLASSES_ROOT, commandKey, u"", command, owner.opts) != ERRC_SUCCESS)
    return;
  if (command == u"%1" || command == u"\"%1\"" || !IsFileMissing(command, false)) return;
  if (MayHaveDescriptor(commandKey, owner.opts)) return;
  Report(
      FRules.kinds.missingProgram,
      {CaptionItem(owner.caption), ExistingKey(commandKey, owner.opts), u"missingfile:" + command});
}

void TRCPClasses::CheckHandlers(const ClassOwner& owner) {
  if (!owner.subkeys.Has(u"ShellEx")) return;
  const UnicodeString shellEx = owner.key + u"\\ShellEx";
  TStringList names;
  EnumRegKeysEx(HKEY_CLASSES_ROOT, shellEx, names, owner.opts);
  for (const UnicodeString& name : names) {
    const UnicodeString marked = u"|" + LowerCase(name) + u"|";
    const UnicodeString key = shellEx + u"\\" + name;
    if (FRules.skippedHandlers.find(marked) != UnicodeView::npos) continue;
    if (kCollections.find(marked) != UnicodeView::npos)
      CheckHandlerCollection(owner, key, marked == kFolderViews);
    else
      CheckHandler(owner, key, name);
  }
}

void TRCPClasses::CheckHandlerCollection(const ClassOwner& owner, const UnicodeString& key,
                                         bool folderViews) {
  TStringList names;
  EnumRegKeysEx(HKEY_CLASSES_ROOT, key, names, owner.opts);
  for (const UnicodeString& name : names) {
    const UnicodeString handler = key + u"\\" + name;
    const std::optional<UnicodeString> id = HandlerClass(handler, name, owner.opts);
    if (!id || IsIgnoredClass(*id)) continue;
    if (!IsCLSIDKey(*id)) {
      // Deliberately without a look at what else the key holds, unlike for a single handler.
      Report(FRules.kinds.missingIdentifier,
             {ExistingKey(handler, owner.opts), CaptionItem(owner.caption)});
    } else if (!ExistsInAnyView(u"CLSID\\" + *id, owner.opts) &&
               !(folderViews && KeyExist(HKEY_LOCAL_MACHINE,
                                         UnicodeString(kFolderViewsKey).append(*id), owner.opts))) {
      ReportMissingClass(owner, handler, *id);
    }
  }
}

void TRCPClasses::CheckHandler(const ClassOwner& owner, const UnicodeString& key,
                               UnicodeView name) {
  const std::optional<UnicodeString> id = HandlerClass(key, name, owner.opts);
  if (!id || IsIgnoredClass(*id)) return;
  if (IsCLSIDKey(*id)) {
    if (!ExistsInAnyView(u"CLSID\\" + *id, owner.opts)) ReportMissingClass(owner, key, *id);
    return;
  }
  const bool empty = FRules.emptyDefaultIsNothing
                         ? KeyEmptyEx(HKEY_CLASSES_ROOT, key, owner.opts)
                         : KeyEmptyExEx(HKEY_CLASSES_ROOT, key, owner.opts);
  if (empty)
    Report(FRules.kinds.missingIdentifier,
           {ExistingKey(key, owner.opts), CaptionItem(owner.caption)});
}

void TRCPClasses::ReportMissingClass(const ClassOwner& owner, const UnicodeString& key,
                                     const UnicodeString& id) {
  const UnicodeString missing = u"CLSID\\" + id;
  Report(FRules.kinds.missingClass,
         {ExistingKey(key, owner.opts), CaptionItem(owner.caption),
          FRules.missingClassHasView ? MissingKey(missing, owner.opts) : MissingKey(missing)});
}

void TRCPClasses::CheckIcon(const ClassOwner& owner) {
  if (!owner.subkeys.Has(u"DefaultIcon")) return;
  const UnicodeString key = owner.key + u"\\DefaultIcon";
  const std::optional<UnicodeString> icon = ReadText(key, u"", owner.opts);
  if (!icon || !KeyExist(HKEY_CLASSES_ROOT, key, owner.opts)) return;
  const bool empty = icon->empty();
  if (!empty) {
    // "%1" stands for the file itself, whose own icon is shown.
    const UnicodeString file = StripIconIndex(*icon);
    if (file.find(u"%1") != UnicodeString::npos || !IsFileMissing(file, FRules.iconNeedsDrive))
      return;
  }
  if (FRules.iconSameInBothViews && !RegKeysIdentic(HKEY_CLASSES_ROOT, key)) return;
  if (empty)
    // Deliberate: also where the key holds other values or subkeys.
    Report(FRules.kinds.emptyIcon, {ExistingKey(key, owner.opts), CaptionItem(owner.caption)});
  else
    Report(FRules.kinds.missingIcon,
           {ExistingKey(key, owner.opts), CaptionItem(owner.caption), u"missingfile:" + *icon});
}

UnicodeString TRCPClasses::ExistingKey(UnicodeView key, TZmRegOptions opts) const {
  return u"existingkey:" +
         BuildErrorRegKeyParameter(RegKeyToStr(HKEY_CLASSES_ROOT, key, false), opts);
}

UnicodeString TRCPClasses::MissingKey(UnicodeView key, TZmRegOptions opts) const {
  return u"missingkey:" +
         BuildErrorRegKeyParameter(RegKeyToStr(HKEY_CLASSES_ROOT, key, false), opts);
}

UnicodeString TRCPClasses::MissingKey(UnicodeView key) {
  return u"missingkey:" + RegKeyToStr(HKEY_CLASSES_ROOT, key, false);
}

UnicodeString TRCPClasses::CaptionItem(const TCaption& caption) {
  return u"caption:" + caption.Text();
}

}  // namespace scrubwell
