#include "plugins/software/Rcp_apppaths.h"

#include <algorithm>
#include <utility>

#include "registry/Zelmarwow64.h"
#include "texts/apppaths.h"

namespace scrubwell {
namespace {

namespace text = texts::apppaths;

// The scan never reports the last kind; records of it are still shown and repaired.
enum Kind : std::int32_t { kTargetMissing = 1, kEmptyKey = 2, kNoPath = 3 };

constexpr TCategory kCategory{
    .className = u"TRCPAppPaths",
    .imageIndex = 10,
    .iconID = 6003,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 3> kKinds{{
    {kTargetMissing, 6000, text::kMissingCaption, text::kMissingShort, text::kMissingDetail},
    {kEmptyKey, 6001, text::kEmptyCaption, text::kEmptyShort, text::kEmptyDetail},
    {kNoPath, 6002, text::kNoPathCaption, text::kNoPathShort, text::kNoPathDetail},
}};

// One subkey for each program: its default value names the program's file, the value "Path" the
// folders that are searched besides.
constexpr UnicodeView kKey = u"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths";
constexpr UnicodeView kSearchFolders = u"Path";
constexpr double kWeightPerItem = 0.7;

// Never reported. Deliberately this spelling alone: in other letter case it is a name like any.
constexpr UnicodeView kException = u"TB85.EXE";

constexpr TZmRegOptions kOwnView{};
constexpr TZmRegOptions kView64{zmreg64Bit};

}  // namespace

TRCPAppPaths::TRCPAppPaths() : TRCPlugin(kCategory, kKinds) {}

void TRCPAppPaths::Init() {
  EnumRegKeysEx(HKEY_LOCAL_MACHINE, kKey, FAppPathKeys, kOwnView);
  FAppPathKeys64.clear();
  if (IsCurrentProcessWow64()) EnumRegKeysEx(HKEY_LOCAL_MACHINE, kKey, FAppPathKeys64, kView64);
  SetFScanItemCount(static_cast<std::int32_t>(FAppPathKeys.size() + FAppPathKeys64.size()));
  ScanWeight = RoundHalfEven(FScanItemCount * kWeightPerItem);
  FState = rcpInited;
}

void TRCPAppPaths::Scan() {
  ErrorCount = 0;
  const auto scanView = [this](const TStringList& names, TZmRegOptions opts) {
    for (const UnicodeString& name : names) {
      if (!ShowScanItem(name)) return false;
      Check_AppPath(name, opts);
    }
    return true;
  };
  if (!scanView(FAppPathKeys, kOwnView) || !scanView(FAppPathKeys64, kView64)) return;
  FState = rcpScanned;
}

void TRCPAppPaths::Check_AppPath(UnicodeView subKey, TZmRegOptions opts) {
  const UnicodeString key = UnicodeString(kKey).append(u"\\").append(subKey);
  if (!KeyIsDeletable(HKEY_LOCAL_MACHINE, key, opts) || subKey == kException) return;
  const UnicodeString target = GetRegStringValueDef(HKEY_LOCAL_MACHINE, key, u"", u"", opts);
  const UnicodeString locator =
      u"existingkey:" +
      BuildErrorRegKeyParameter(RegKeyToStr(HKEY_LOCAL_MACHINE, key, false), opts);
  const UnicodeString caption = UnicodeString(u"caption:").append(subKey);
  if (!target.empty()) {
    if (FileIsOnFixedDrive(target, true) && !FindFileOrDir(target))
      AddError(kTargetMissing, {locator, caption, u"missingfile:" + target});
  } else if (KeyEmptyExEx(HKEY_LOCAL_MACHINE, key, opts)) {
    AddError(kEmptyKey, {locator, caption});
  }
}

// Removes the value that names search folders when they are all gone.
void TRCPAppPaths::Clean_SearchFolders(UnicodeView key, TZmRegOptions opts) {
  if (!RegValueExists(HKEY_LOCAL_MACHINE, key, kSearchFolders, opts)) return;
  const UnicodeString folders =
      GetRegStringValueDef(HKEY_LOCAL_MACHINE, key, kSearchFolders, u"", opts);
  if (!folders.empty() && FileIsOnFixedDrive(folders, true) && !FindFileOrDir(folders))
    DeleteRegValue(HKEY_LOCAL_MACHINE, key, kSearchFolders, opts);
}

bool TRCPAppPaths::CleanError(const TSweepError& error) {
  if (error.ErrorType < kTargetMissing || error.ErrorType > kNoPath) return true;
  RootKey root = RootKey::None;
  UnicodeString key;
  TZmRegOptions opts;
  GetErrorRegKey(error, u"existingkey", root, key, opts);
  Clean_SearchFolders(key, opts);

  TStringList names;
  TStringList data;
  EnumRegValuesEx(root, key, names, data, opts);
  // Values that can't be read are values that remain.
  const bool readAll = std::cmp_equal(names.size(), GetValueCount(root, key, opts)) &&
                       HasValuesEx(root, key, opts) != 2;
  const bool othersRemain =
      std::ranges::any_of(names, [](const UnicodeString& name) { return !name.empty(); });
  if (readAll && !othersRemain)
    DeleteRegKeyWrapper(root, key, opts);
  else
    DeleteRegValue(root, key, u"", opts);
  // Deliberately a success whatever came of it: what has gone already counts as repaired.
  return true;
}

}  // namespace scrubwell
