#include "plugins/software/Rcp_sharedfiles.h"

#include "registry/Zelmarwow64.h"
#include "texts/sharedfiles.h"

namespace scrubwell {
namespace {

namespace text = texts::sharedfiles;

enum Kind : std::int32_t { kMissingFile = 1 };

constexpr TCategory kCategory{
    .className = u"TRCPSharedFiles",
    .imageIndex = 4,
    .iconID = 16001,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 1> kKinds{{
    {kMissingFile, 16000, text::kMissingCaption, text::kMissingShort, text::kMissingDetail},
}};

// Each value's name is the path of a shared file, its data a usage counter.
constexpr UnicodeView kKey = u"Software\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs";
constexpr double kWeightPerItem = 2.7;

constexpr TZmRegOptions kView32{zmreg32Bit};
constexpr TZmRegOptions kView64{zmreg64Bit};

}  // namespace

TRCPSharedFiles::TRCPSharedFiles() : TRCPlugin(kCategory, kKinds) {}

void TRCPSharedFiles::Init() {
  EnumRegValuesEx(HKEY_LOCAL_MACHINE, kKey, FValueNames32, FValueData32, kView32);
  FValueNames64.clear();
  FValueData64.clear();
  if (IsCurrentProcessWow64())
    EnumRegValuesEx(HKEY_LOCAL_MACHINE, kKey, FValueNames64, FValueData64, kView64);
  SetFScanItemCount(static_cast<std::int32_t>(FValueNames32.size() + FValueNames64.size()));
  ScanWeight = RoundHalfEven(FScanItemCount * kWeightPerItem);
  FState = rcpInited;
}

void TRCPSharedFiles::Scan() {
  ErrorCount = 0;
  const auto scanView = [this](const TStringList& names, const TStringList& data,
                               TZmRegOptions opts) {
    return ScanValueList(
        {HKEY_LOCAL_MACHINE, kKey, opts}, names, data,
        [&](UnicodeView name, UnicodeView counter) { Check_SharedDLL(name, counter, opts); });
  };
  if (!scanView(FValueNames32, FValueData32, kView32)) return;
  if (!scanView(FValueNames64, FValueData64, kView64)) return;
  FState = rcpScanned;
}

void TRCPSharedFiles::Check_SharedDLL(UnicodeView fileName, UnicodeView /*valueData*/,
                                      TZmRegOptions opts) {
  if (!FileIsOnFixedDrive(fileName, false) || FindFile(fileName)) return;
  const UnicodeString key = RegKeyToStr(HKEY_LOCAL_MACHINE, kKey, false);
  const UnicodeString file(fileName);
  AddError(kMissingFile, {u"existingkey:" + BuildErrorRegKeyParameter(key, opts),
                          u"existingvalue:" + file, u"missingfile:" + file});
}

bool TRCPSharedFiles::CleanError(const TSweepError& error) {
  if (error.ErrorType == kMissingFile) DeleteErrorRegValue(error);
  // A value that has gone already counts as repaired, and so does, deliberately, any other failure.
  return true;
}

}  // namespace scrubwell
