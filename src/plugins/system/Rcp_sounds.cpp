#include "plugins/system/Rcp_sounds.h"

#include "registry/Stringhelper.h"
#include "texts/sounds.h"

namespace scrubwell {
namespace {

namespace text = texts::sounds;

enum Kind : std::int32_t { kMissingFile = 1 };

constexpr TCategory kCategory{
    .className = u"TRCPSounds",
    .imageIndex = 12,
    .iconID = 17001,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 1> kKinds{{
    {kMissingFile, 17000, text::kMissingCaption, text::kMissingShort, text::kMissingDetail},
}};

// application\event\scheme, the sound file in the scheme's default value.
constexpr UnicodeView kAppsKey = u"AppEvents\\Schemes\\Apps";
constexpr UnicodeView kEventLabelsKey = u"AppEvents\\EventLabels";
constexpr UnicodeView kSchemeNamesKey = u"AppEvents\\Schemes\\Names";
constexpr UnicodeView kWindowsKey = u"Software\\Microsoft\\Windows\\CurrentVersion";
constexpr UnicodeView kCurrentScheme = u".current";
constexpr double kWeightPerItem = 2.7;

UnicodeString Below(UnicodeView key, UnicodeView subkey) {
  return UnicodeString(key).append(u"\\").append(subkey);
}

UnicodeString DefaultValue(UnicodeView key) {
  return GetRegStringValueDef(HKEY_CURRENT_USER, key, {}, {}, {});
}

// The default values of a key's subkeys by the subkeys' names.
THashStringList ReadLabels(UnicodeView key) {
  THashStringList labels;
  TStringList names;
  EnumRegKeysEx(HKEY_CURRENT_USER, key, names, {});
  for (const UnicodeString& name : names) {
    const UnicodeString value = DefaultValue(Below(key, name));
    if (const UnicodeView label = Trim(value); !label.empty()) labels.Put(LowerCase(name), label);
  }
  return labels;
}

// Sounds without a folder are played from the media folder. What names a drive can't lie below it.
// False only when that is proven.
bool IsInMediaFolder(UnicodeView file) {
  bool resolved = true;
  if (ExpandEnvironment(file, View::Native, resolved).find(u':') != UnicodeString::npos) {
    return false;
  }
  UnicodeString folder;
  const std::int32_t error =
      GetRegStringValue(HKEY_LOCAL_MACHINE, kWindowsKey, u"MediaPath", folder, {});
  if (error != ERRC_SUCCESS) return error != ERRC_FILE_NOT_FOUND;  // it may be there
  return !folder.empty() && ZMFileExists(IncludeTrailingPathDelimiter(folder).append(file));
}

}  // namespace

TRCPSounds::TRCPSounds() : TRCPlugin(kCategory, kKinds) {}

void TRCPSounds::Init() {
  EnumRegKeysEx(HKEY_CURRENT_USER, kAppsKey, FApps, {});
  FEventCount = 0;
  for (const UnicodeString& application : FApps)
    FEventCount += GetSubKeyCount(HKEY_CURRENT_USER, Below(kAppsKey, application), {});
  FEventLabels = ReadLabels(kEventLabelsKey);
  FSchemeNames = ReadLabels(kSchemeNamesKey);
  SetFScanItemCount(FEventCount);
  ScanWeight = RoundHalfEven(FEventCount * kWeightPerItem);
  FState = rcpInited;
}

void TRCPSounds::Scan() {
  ErrorCount = 0;
  TStringList events;
  for (const UnicodeString& application : FApps) {
    const UnicodeString key = Below(kAppsKey, application);
    UnicodeString label = DefaultValue(key);
    if (label.empty()) label = application;
    EnumRegKeysEx(HKEY_CURRENT_USER, key, events, {});
    for (const UnicodeString& event : events) {
      if (!ShowScanItem(Below(application, event))) return;
      Check_Sound_Event(application, event, label);
    }
  }
  FState = rcpScanned;
}

void TRCPSounds::Check_Sound_Event(UnicodeView application, UnicodeView event,
                                   UnicodeView applicationLabel) {
  const UnicodeString eventKey = Below(Below(kAppsKey, application), event);
  UnicodeString eventLabel = FEventLabels.Get(LowerCase(event));
  if (eventLabel.empty()) eventLabel = DefaultValue(eventKey);
  if (eventLabel.empty()) eventLabel = event;
  TStringList schemes;
  EnumRegKeysEx(HKEY_CURRENT_USER, eventKey, schemes, {});
  for (const UnicodeString& scheme : schemes) {
    const UnicodeString key = Below(eventKey, scheme);
    const UnicodeString file = DefaultValue(key);
    if (file.empty() || !FileIsOnFixedDrive(file, false)) continue;
    if (FindFile(file) || IsInMediaFolder(file)) continue;
    const UnicodeString schemeID = LowerCase(scheme);
    UnicodeString schemeLabel = FSchemeNames.Get(schemeID);
    if (schemeLabel.empty()) schemeLabel = scheme;
    if (schemeID == kCurrentScheme) schemeLabel = LoadText(text::kCurrentScheme);
    if (!KeyIsWriteable(HKEY_CURRENT_USER, key, {})) continue;
    // The user's settings are the same in both views, so the key carries none.
    AddError(kMissingFile,
             {u"existingkey:" + RegKeyToStr(HKEY_CURRENT_USER, key, false),
              UnicodeString(u"application:").append(applicationLabel), u"scheme:" + schemeLabel,
              u"event:" + eventLabel, u"missingfile:" + file});
  }
}

bool TRCPSounds::CleanError(const TSweepError& error) {
  if (error.ErrorType == kMissingFile) {
    RootKey root = RootKey::None;
    UnicodeString key;
    TZmRegOptions opts;
    GetErrorRegKey(error, u"existingkey", root, key, opts);
    ShowCleanItem(LoadText(text::kOverwritingValue), key);
    // Emptied rather than deleted, so that the event stays in the control panel's list. Writing
    // would create a key that has gone in the meantime.
    if (!key.empty() && KeyExist(root, key, opts)) SetRegStringValue(root, key, {}, {}, opts);
  }
  return true;  // deliberately, whatever came of it
}

}  // namespace scrubwell
