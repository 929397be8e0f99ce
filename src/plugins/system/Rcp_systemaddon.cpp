#include "plugins/system/Rcp_systemaddon.h"

#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"
#include "texts/framework.h"
#include "texts/systemaddon.h"

namespace scrubwell {
namespace {

namespace text = texts::systemaddon;

enum Kind : std::int32_t { kMissingCodec = 1, kOrphanedHelper = 2 };

constexpr TCategory kCategory{
    .className = u"TRCPSystemAddOn",
    .imageIndex = 16,
    .iconID = 18002,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 2> kKinds{{
    {kMissingCodec, 18000, text::kCodecCaption, text::kCodecShort, text::kCodecDetail},
    {kOrphanedHelper, 18001, text::kHelperCaption, text::kHelperShort, text::kHelperDetail},
}};

// Each value's name is a kind of driver or codec, its data the file that serves it.
constexpr UnicodeView kDriversKey = u"Software\\Microsoft\\Windows NT\\CurrentVersion\\Drivers32";
constexpr std::int32_t kWeightPerItem = 6;

constexpr TZmRegOptions kView32{zmreg32Bit};
constexpr TZmRegOptions kView64{zmreg64Bit};

}  // namespace

TRCPSystemAddOn::TRCPSystemAddOn() : TRCPlugin(kCategory, kKinds) {}

void TRCPSystemAddOn::Init() {
  FObjects.Reload();
  const bool bothViews = IsCurrentProcessWow64();
  std::int32_t count = GetValueCount(HKEY_LOCAL_MACHINE, kDriversKey, {});
  if (bothViews) count += GetValueCount(HKEY_LOCAL_MACHINE, kDriversKey, kView64);
  SetFScanItemCount(count);
  // Deliberately doubled once more, although the count holds both views already.
  ScanWeight = FScanItemCount * kWeightPerItem * (bothViews ? 2 : 1);
  FState = rcpInited;
}

void TRCPSystemAddOn::Scan() {
  ErrorCount = 0;
  if (!CheckKeyForMissingFiles(kMissingCodec, {HKEY_LOCAL_MACHINE, kDriversKey, {}})) return;
  if (IsCurrentProcessWow64() &&
      !CheckKeyForMissingFiles(kMissingCodec, {HKEY_LOCAL_MACHINE, kDriversKey, kView64}))
    return;
  CheckBrowserHelperObjects();
  FState = rcpScanned;
}

// False when a stop was requested. Deliberately no test for a fixed drive: files are looked up
// wherever they lie.
bool TRCPSystemAddOn::CheckKeyForMissingFiles(std::int32_t kind, const KeyPlace& place) {
  if (!KeyExist(place.root, place.key, place.opts)) return true;
  TStringList names;
  TStringList files;
  EnumRegValuesEx(place.root, place.key, names, files, place.opts);
  const UnicodeString key =
      u"existingkey:" +
      BuildErrorRegKeyParameter(RegKeyToStr(place.root, place.key, false), place.opts);
  for (std::size_t i = 0; i < names.size() && i < files.size(); ++i) {
    // The default value deliberately ends the walk rather than being passed over; what counts as
    // found after it depends on the order in which the values were stored.
    if (names[i].empty()) break;
    if (!ShowScanItem(names[i])) return false;
    if (!FindFileOnAnyDrive(files[i]) &&
        RegValueIsText(place.root, place.key, names[i], place.opts))
      AddError(kind, {key, u"existingvalue:" + names[i], u"missingfile:" + files[i]});
  }
  return true;
}

void TRCPSystemAddOn::CheckBrowserHelperObjects() {
  for (std::int32_t i = 0; i < FObjects.GetCount(); ++i) {
    const TBrowserHelperObject& object = *FObjects.GetObject(i);
    if (object.IsValid()) continue;
    const TZmRegOptions opts = object.Is64BitEntry() ? kView64 : kView32;
    const UnicodeString classKey = u"HKEY_CLASSES_ROOT\\CLSID\\" + object.CLSID;
    AddError(kOrphanedHelper,
             {u"caption:" + object.GetDisplayName(),
              u"existingkey:" + BuildErrorRegKeyParameter(object.GetRegKeyPath(), opts),
              u"missingkey:" + BuildErrorRegKeyParameter(classKey, opts), u"item:" + IntToStr(i)});
  }
}

bool TRCPSystemAddOn::CleanError(const TSweepError& error) {
  if (error.ErrorType == kMissingCodec) DeleteErrorRegValue(error);
  if (error.ErrorType == kOrphanedHelper) Clean_BrowserHelperObject(error);
  return true;  // deliberately, whatever came of it
}

// A problem names its object by its position in the list that the scan walked. Should the list have
// been loaded anew since, the object there may be another, healthy one: it must be the problem's.
void TRCPSystemAddOn::Clean_BrowserHelperObject(const TSweepError& error) {
  const std::int32_t index = StrToIntDef(InsertData(u"#item#", error.Data), -1);
  TBrowserHelperObject* const object = FObjects.GetObject(index);
  if (object == nullptr) return;
  const UnicodeString path = object->GetRegKeyPath();
  const UnicodeString entry = BuildErrorRegKeyParameter(path, object->Options);
  if (!SameText(GetErrorStringValue(error.Data, u"existingkey"), entry)) return;
  ShowCleanItem(LoadText(texts::framework::kDeletingKey), path);
  object->Delete();
}

}  // namespace scrubwell
