#include "plugins/system/Browserhelperobjects.h"

#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"
#include "registry/Zmregistry.h"

namespace scrubwell {
namespace {

constexpr UnicodeView kObjectsKey =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Browser Helper Objects";
constexpr UnicodeView kSettingsKey = u"Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Settings";
constexpr UnicodeView kServers[] = {u"InprocServer", u"InprocServer32", u"LocalServer",
                                    u"LocalServer32"};
// Where a well-known start-up manager keeps the entries that it switched off.
constexpr UnicodeView kNoObjects = u"|autorunsdisabled|";

UnicodeString Below(UnicodeView key, UnicodeView subkey) {
  return UnicodeString(key).append(u"\\").append(subkey);
}

}  // namespace

bool TBrowserHelperObject::IsValid() const {
  return KeyExist(HKEY_CLASSES_ROOT, Below(u"CLSID", CLSID), Options);
}

bool TBrowserHelperObject::Is64BitEntry() const {
  return Options.Contains(zmreg64Bit);
}

UnicodeString TBrowserHelperObject::GetRegKeyPath() const {
  return RegKeyToStr(HKEY_LOCAL_MACHINE, Below(kObjectsKey, CLSID), false);
}

UnicodeString TBrowserHelperObject::GetDisplayName() const {
  UnicodeString name =
      GetRegStringValueDef(HKEY_CLASSES_ROOT, Below(u"CLSID", CLSID), {}, {}, Options);
  return Trim(name).empty() ? CLSID : name;
}

UnicodeString TBrowserHelperObject::GetFile() const {
  const UnicodeString classKey = Below(u"CLSID", CLSID);
  for (const UnicodeView server : kServers) {
    UnicodeString file =
        GetRegStringValueDef(HKEY_CLASSES_ROOT, Below(classKey, server), {}, {}, Options);
    if (!Trim(file).empty()) return file;
  }
  return {};
}

void TBrowserHelperObject::Delete() {
  const UnicodeString key = Below(kObjectsKey, CLSID);
  if (KeyExist(HKEY_LOCAL_MACHINE, key, Options)) DeleteRegKey(HKEY_LOCAL_MACHINE, key, Options);
}

bool TBrowserHelperObject::GetDisabled() const {
  return KeyExist(HKEY_CURRENT_USER, Below(kSettingsKey, CLSID), {});
}

void TBrowserHelperObject::SetDisabled(bool disabled) {
  const UnicodeString key = Below(kSettingsKey, CLSID);
  const bool exists = KeyExist(HKEY_CURRENT_USER, key, {});
  if (!disabled) {
    if (exists) DeleteRegKey(HKEY_CURRENT_USER, key, {});
    return;
  }
  if (!exists) CreateRegKey(HKEY_CURRENT_USER, key, {});
  SetRegStringValue(HKEY_CURRENT_USER, key, u"Version", u"*", {});
  SetRegDWORDValue(HKEY_CURRENT_USER, key, u"Flags", 1, {});
}

void TBrowserHelperObjects::Reload() {
  FLoaded = true;
  ClearBHObjects();
  EnumBHObjects(HKEY_LOCAL_MACHINE, kObjectsKey, {zmreg32Bit});
  if (IsCurrentProcessWow64()) EnumBHObjects(HKEY_LOCAL_MACHINE, kObjectsKey, {zmreg64Bit});
}

void TBrowserHelperObjects::EnumBHObjects(RootKey root, UnicodeView keyPath,
                                          TZmRegOptions options) {
  TStringList names;
  EnumRegKeysEx(root, keyPath, names, options);
  for (const UnicodeString& name : names) {
    // Deliberately this way round: a name that is a part of the text is passed over as well.
    if (kNoObjects.find(LowerCase(name)) != UnicodeView::npos) continue;
    FObjects.push_back(std::make_unique<TBrowserHelperObject>(name, options));
  }
}

std::int32_t TBrowserHelperObjects::GetCount() {
  if (!FLoaded) Reload();
  return static_cast<std::int32_t>(FObjects.size());
}

TBrowserHelperObject* TBrowserHelperObjects::GetObject(std::int32_t index) const {
  const auto at = static_cast<std::size_t>(index);
  return index >= 0 && at < FObjects.size() ? FObjects[at].get() : nullptr;
}

}  // namespace scrubwell
