// The checks of one class identifier.
#include <algorithm>

#include "plugins/com/Rcp_activexcom.h"
#include "plugins/com/activexcom_kinds.h"
#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"

namespace scrubwell {

using namespace activexcom;
using namespace classes;

namespace {

constexpr std::array<UnicodeView, 4> kServers{u"InprocServer", u"InprocServer32", u"LocalServer",
                                              u"LocalServer32"};
constexpr std::array<UnicodeView, 2> kProgIDs{u"ProgID", u"VersionIndependentProgID"};

// The system's own limit for an icon location, its end mark not counted.
constexpr std::size_t kLongestIconLocation = 259;

enum class ServerState : std::uint8_t { Usable, Empty, Missing };

// Usable also where it can't be told.
ServerState JudgeServer(const UnicodeString& key, TZmRegOptions opts, UnicodeString& file) {
  file = DefaultText(key, opts);
  if (Trim(file).empty()) {
    return KeyEmptyEx(HKEY_CLASSES_ROOT, key, opts) ? ServerState::Empty : ServerState::Usable;
  }
  const bool missing =
      IsFileMissing(file, true) && !DirectoryExists(ExcludeTrailingPathDelimiter(file));
  return missing ? ServerState::Missing : ServerState::Usable;
}

}  // namespace

void TRCPActiveXCOM::Check_CLSID(UnicodeView clsid, const TCaption& caption, TZmRegOptions opts) {
  if (IgnoredCLSIDs->Contains(UpperCase(clsid))) return;
  const ClassOwner owner(UnicodeString(u"CLSID\\").append(clsid), caption, opts);
  Check_CLSID_Servers(owner);
  Check_CLSID_ProgID(owner);
  Check_CLSID_Shell(owner);
  Check_CLSID_ShellEx(owner);
  Check_CLSID_DefaultIcon(owner);
  Check_CLSID_TypeLib(owner);
  Check_CLSID_AppID(owner);
  Check_CLSID_ToolboxBitmap(owner);
  Check_CLSID_PersistentHandler(owner);
  Check_CLSID_AutoConvertTo(owner);
  Check_CLSID_TreatAs(owner);
}

void TRCPActiveXCOM::Check_CLSID_Servers(const ClassOwner& owner) {
  for (const UnicodeView name : kServers) {
    if (!owner.subkeys.Has(name)) continue;
    const UnicodeString key = owner.key + UnicodeString(u"\\").append(name);
    UnicodeString file;
    const ServerState state = JudgeServer(key, owner.opts, file);
    if (state == ServerState::Usable) continue;
    // A different entry of the other view that works, or that can't be judged, speaks for the
    // class as a whole.
    UnicodeString otherFile;
    if (IsCurrentProcessWow64() && !RegKeysIdentic(HKEY_CLASSES_ROOT, key) &&
        JudgeServer(key, OtherView(owner.opts), otherFile) == ServerState::Usable)
      continue;
    if (state == ServerState::Empty)
      ReportEmptyKey(owner, UnicodeString(name));
    else
      AddError(kMissingServer,
               {UnicodeString(u"servertype:").append(name), ExistingKey(key, owner.opts),
                CaptionItem(owner.caption), u"missingfile:" + file});
  }
}

void TRCPActiveXCOM::ReportEmptyKey(const ClassOwner& owner, const UnicodeString& subkey) {
  const UnicodeString key = ExistingKey(owner.key + u"\\" + subkey, owner.opts);
  // The order of the items differs, and hosts see it: the first one decides what counts as 64-bit.
  if (std::ranges::find(kServers, UnicodeView(subkey)) != kServers.end())
    AddError(kEmptyKey, {u"key:" + subkey, key, CaptionItem(owner.caption)});
  else
    AddError(kEmptyKey, {CaptionItem(owner.caption), key, u"key:" + subkey});
}

void TRCPActiveXCOM::Check_CLSID_ProgID(const ClassOwner& owner) {
  for (const UnicodeView name : kProgIDs) {
    if (!owner.subkeys.Has(name)) continue;
    const UnicodeString key = owner.key + UnicodeString(u"\\").append(name);
    if (KeyEmptyEx(HKEY_CLASSES_ROOT, key, owner.opts) && RegKeysIdentic(HKEY_CLASSES_ROOT, key))
      AddError(kEmptyProgID, {ExistingKey(key, owner.opts), CaptionItem(owner.caption)});
  }
}

void TRCPActiveXCOM::Check_CLSID_TypeLib(const ClassOwner& owner) {
  if (!owner.subkeys.Has(u"TypeLib")) return;
  const UnicodeString key = owner.key + u"\\TypeLib";
  const UnicodeString value = DefaultText(key, owner.opts);
  const UnicodeView library = Trim(value);
  if (library.empty() || IgnoredTypeLibs->Contains(UpperCase(library))) return;
  const UnicodeString missing = UnicodeString(u"TypeLib\\").append(library);
  if (ExistsInAnyView(missing, owner.opts) || !RegKeysIdentic(HKEY_CLASSES_ROOT, key)) return;
  AddError(kMissingTypeLib,
           {ExistingKey(key, owner.opts), CaptionItem(owner.caption), MissingKey(missing)});
}

void TRCPActiveXCOM::Check_CLSID_AppID(const ClassOwner& owner) {
  const UnicodeString value =
      GetRegStringValueDef(HKEY_CLASSES_ROOT, owner.key, u"AppID", u"", owner.opts);
  const UnicodeView id = Trim(value);
  if (id.empty() || IgnoredAppIds->Contains(UpperCase(id))) return;
  const UnicodeString missing = UnicodeString(u"AppID\\").append(id);
  if (ExistsInAnyView(missing, owner.opts)) return;
  AddError(kMissingAppID, {CaptionItem(owner.caption), ExistingKey(owner.key, owner.opts),
                           u"existingvalue:AppID", MissingKey(missing, owner.opts)});
}

void TRCPActiveXCOM::Check_CLSID_ToolboxBitmap(const ClassOwner& owner) {
  constexpr UnicodeView name = u"ToolboxBitmap32";
  if (!owner.subkeys.Has(name)) return;
  const UnicodeString key = owner.key + UnicodeString(u"\\").append(name);
  UnicodeString location = DefaultText(key, owner.opts);
  if (Trim(location).empty()) {
    if (KeyEmptyEx(HKEY_CLASSES_ROOT, key, owner.opts)) ReportEmptyKey(owner, UnicodeString(name));
    return;
  }
  // A longer location is cut, as the system's own reader of it does.
  location.resize(std::min(location.size(), kLongestIconLocation));
  PathParseIconLocation(location);
  if (!IsFileMissing(location, false)) return;
  AddError(kMissingBitmap,
           {CaptionItem(owner.caption), ExistingKey(key, owner.opts), u"missingfile:" + location});
}

void TRCPActiveXCOM::Check_CLSID_PersistentHandler(const ClassOwner& owner) {
  if (!owner.subkeys.Has(u"PersistentHandler")) return;
  const UnicodeString key = owner.key + u"\\PersistentHandler";
  const UnicodeString value = DefaultText(key, owner.opts);
  const UnicodeView id = Trim(value);
  if (id.empty()) return;
  const UnicodeString missing = UnicodeString(u"CLSID\\").append(id);
  if (ExistsInAnyView(missing, owner.opts)) return;
  AddError(kMissingHandler, {CaptionItem(owner.caption), ExistingKey(key, owner.opts),
                             MissingKey(missing, owner.opts)});
}

void TRCPActiveXCOM::Check_CLSID_Replacement(const ClassOwner& owner, const UnicodeString& subkey) {
  if (!owner.subkeys.Has(subkey)) return;
  const UnicodeString key = owner.key + u"\\" + subkey;
  if (KeyEmptyEx(HKEY_CLASSES_ROOT, key, owner.opts)) {
    ReportEmptyKey(owner, subkey);
    return;
  }
  const UnicodeString value = DefaultText(key, owner.opts);
  const UnicodeView id = Trim(value);
  if (id.empty() || !IsCLSIDKey(id)) return;
  const UnicodeString missing = UnicodeString(u"CLSID\\").append(id);
  if (ExistsInAnyView(missing, owner.opts)) return;
  AddError(kMissingClass, {ExistingKey(key, owner.opts), CaptionItem(owner.caption),
                           MissingKey(missing, owner.opts)});
}

}  // namespace scrubwell
