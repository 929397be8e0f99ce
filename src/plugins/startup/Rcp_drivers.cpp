#include "plugins/startup/Rcp_drivers.h"

#include "registry/Stringhelper.h"
#include "texts/drivers.h"

namespace scrubwell {
namespace {

namespace text = texts::drivers;

enum Kind : std::int32_t { kMissingDriver = 1, kEmptyEntry = 2 };

constexpr TCategory kCategory{
    .className = u"TRCPDrivers",
    .imageIndex = 8,
    .iconID = 8002,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 2> kKinds{{
    {kMissingDriver, 8000, text::kMissingCaption, text::kMissingShort, text::kMissingDetail},
    {kEmptyEntry, 8001, text::kEmptyCaption, text::kEmptyShort, text::kEmptyDetail},
}};

constexpr UnicodeView kKey = u"System\\CurrentControlSet\\Services\\VxD";
constexpr std::array<UnicodeView, 2> kLists{u"StaticVxD", u"DeviceVxDs"};
constexpr char16_t kSeparator = u',';
// The driver is part of the system's own driver file.
constexpr char16_t kBuiltIn = u'*';

// The key is the same in both views.
constexpr TZmRegOptions kAnyView{};

bool HoldsNothing(UnicodeView list) {
  return Trim(Replace(list, u",", u" ")).empty();
}

// No value is left, or only the order of starting. What can't be read is not empty.
bool IsUsedUp(const KeyPlace& place) {
  constexpr int noValues = 0;
  constexpr int hasValues = 1;
  const int state = HasValuesEx(place.root, place.key, place.opts);
  if (state != hasValues) return state == noValues;
  TStringList names;
  TStringList data;
  EnumRegValuesEx(place.root, place.key, names, data, place.opts);
  return names.size() == 1 && LowerCase(names.front()) == u"start";
}

}  // namespace

TRCPDrivers::TRCPDrivers() : TRCPlugin(kCategory, kKinds) {}

void TRCPDrivers::Init() {
  EnumRegKeysEx(HKEY_LOCAL_MACHINE, kKey, FNames, kAnyView);
  SetFScanItemCount(static_cast<std::int32_t>(FNames.size()));
  FState = rcpInited;
}

void TRCPDrivers::Scan() {
  ErrorCount = 0;
  for (const UnicodeString& name : FNames) {
    if (!ShowScanItem(name)) return;
    Check_Driver(name);
  }
  FState = rcpScanned;
}

void TRCPDrivers::Check_Driver(UnicodeView name) {
  const UnicodeString key = UnicodeString(kKey).append(u"\\").append(name);
  for (const UnicodeView list : kLists) Check_DriverValue(key, list);
}

void TRCPDrivers::Check_DriverValue(UnicodeView key, UnicodeView valueName) {
  if (!KeyIsWriteable(HKEY_LOCAL_MACHINE, key, kAnyView)) return;
  UnicodeString stored;
  if (GetRegStringValue(HKEY_LOCAL_MACHINE, key, valueName, stored, kAnyView) != ERRC_SUCCESS)
    return;
  const UnicodeView list = Trim(stored);
  // Deliberately without a view in front: the key has only one, and stored lists of ignored
  // problems hold this form.
  const UnicodeString keyItem = u"existingkey:" + RegKeyToStr(HKEY_LOCAL_MACHINE, key, false);
  const UnicodeString valueItem = u"existingvalue:" + UnicodeString(valueName);
  if (HoldsNothing(list)) {
    AddError(kEmptyEntry, {keyItem, valueItem});
    return;
  }
  for (const UnicodeString& file : ParamXAll(list, kSeparator)) {
    if (file.starts_with(kBuiltIn) || !FileIsOnFixedDrive(file, false) || FindFile(file)) continue;
    AddError(kMissingDriver, {keyItem, valueItem, u"missingfile:" + file});
  }
}

bool TRCPDrivers::CleanError(const TSweepError& error) {
  RootKey root = RootKey::None;
  UnicodeString key;
  UnicodeString valueName;
  TZmRegOptions opts;
  GetErrorRegValue(error, u"existingkey", u"existingvalue", root, key, valueName, opts);
  if (root != HKEY_LOCAL_MACHINE || !SameText(StripLastKey(key), kKey)) return false;
  const KeyPlace place{root, key, opts};
  if (error.ErrorType == kMissingDriver) return Clean_Item(error, place, valueName);
  return error.ErrorType == kEmptyEntry && Clean_Value(place, valueName);
}

bool TRCPDrivers::Clean_Item(const TSweepError& error, const KeyPlace& place,
                             UnicodeView valueName) {
  UnicodeString list;
  if (GetRegStringValue(place.root, place.key, valueName, list, place.opts) != ERRC_SUCCESS)
    return false;
  list = RemoveParamX(list, kSeparator, GetErrorStringValue(error.Data, u"missingfile"));
  // Separators alone would be the next scan's empty entry.
  if (HoldsNothing(list)) return Clean_Value(place, valueName);
  SetRegStringValue(place.root, place.key, valueName, list, place.opts);
  UnicodeString now;
  return GetRegStringValue(place.root, place.key, valueName, now, place.opts) == ERRC_SUCCESS &&
         now == list;
}

bool TRCPDrivers::Clean_Value(const KeyPlace& place, UnicodeView valueName) {
  const bool deleted = DeleteRegValueWrapper(place.root, place.key, valueName, place.opts);
  // Deliberately only the values count: a driver's key without its list is of no use, whatever
  // lies below it.
  if (deleted && IsUsedUp(place)) DeleteRegKeyWrapper(place.root, place.key, place.opts);
  return deleted;
}

}  // namespace scrubwell
