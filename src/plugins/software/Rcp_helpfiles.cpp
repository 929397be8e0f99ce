#include "plugins/software/Rcp_helpfiles.h"

#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"
#include "texts/helpfiles.h"

namespace scrubwell {
namespace {

namespace text = texts::helpfiles;

enum Kind : std::int32_t { kHelpMissing = 1, kHtmlHelpMissing = 2, kEmptyFile = 3 };

constexpr TCategory kCategory{
    .className = u"TRCPHelpFiles",
    .imageIndex = 6,
    .iconID = 12003,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 3> kKinds{{
    {kHelpMissing, 12000, text::kHelpCaption, text::kHelpShort, text::kHelpDetail},
    {kHtmlHelpMissing, 12001, text::kHtmlHelpCaption, text::kHtmlHelpShort, text::kHtmlHelpDetail},
    {kEmptyFile, 12002, text::kEmptyCaption, text::kEmptyShort, text::kEmptyDetail},
}};

// Each value's name is the name of a help file, its data the folder that holds it.
constexpr UnicodeView kHelpKey = u"Software\\Microsoft\\Windows\\Help";
constexpr UnicodeView kHtmlHelpKey = u"Software\\Microsoft\\Windows\\HTML Help";
constexpr std::int32_t kWeightPerItem = 20;

constexpr TZmRegOptions kView32{zmreg32Bit};
constexpr TZmRegOptions kView64{zmreg64Bit};

}  // namespace

TRCPHelpFiles::TRCPHelpFiles() : TRCPlugin(kCategory, kKinds) {}

void TRCPHelpFiles::Init() {
  for (TStringList* list :
       {&FHelpNames64, &FHelpFolders64, &FHtmlHelpNames64, &FHtmlHelpFolders64}) {
    list->clear();
  }
  EnumRegValuesEx(HKEY_LOCAL_MACHINE, kHelpKey, FHelpNames32, FHelpFolders32, kView32);
  EnumRegValuesEx(HKEY_LOCAL_MACHINE, kHtmlHelpKey, FHtmlHelpNames32, FHtmlHelpFolders32, kView32);
  if (IsCurrentProcessWow64()) {
    EnumRegValuesEx(HKEY_LOCAL_MACHINE, kHelpKey, FHelpNames64, FHelpFolders64, kView64);
    EnumRegValuesEx(HKEY_LOCAL_MACHINE, kHtmlHelpKey, FHtmlHelpNames64, FHtmlHelpFolders64,
                    kView64);
  }
  SetFScanItemCount(static_cast<std::int32_t>(FHelpNames32.size() + FHelpNames64.size() +
                                              FHtmlHelpNames32.size() + FHtmlHelpNames64.size()));
  ScanWeight = FScanItemCount * kWeightPerItem;
  FState = rcpInited;
}

void TRCPHelpFiles::Scan() {
  ErrorCount = 0;
  const auto scanView = [this](UnicodeView key, const TStringList& names,
                               const TStringList& folders, TZmRegOptions opts) {
    const bool isHtmlHelp = key == kHtmlHelpKey;
    const UnicodeString keyText = RegKeyToStr(HKEY_LOCAL_MACHINE, key, false);
    return ScanValueList({HKEY_LOCAL_MACHINE, key, opts}, names, folders,
                         [&](UnicodeView name, UnicodeView folder) {
                           Check_Help(name, folder, opts, isHtmlHelp, keyText);
                         });
  };
  const bool complete = scanView(kHelpKey, FHelpNames32, FHelpFolders32, kView32) &&
                        scanView(kHelpKey, FHelpNames64, FHelpFolders64, kView64) &&
                        scanView(kHtmlHelpKey, FHtmlHelpNames32, FHtmlHelpFolders32, kView32) &&
                        scanView(kHtmlHelpKey, FHtmlHelpNames64, FHtmlHelpFolders64, kView64);
  if (complete) FState = rcpScanned;
}

void TRCPHelpFiles::Check_Help(UnicodeView fileName, UnicodeView folder, TZmRegOptions opts,
                               bool isHtmlHelp, UnicodeView keyText) {
  // A default value names no file, so none can be missing.
  if (fileName.empty()) return;
  const UnicodeString path = IncludeTrailingPathDelimiter(folder).append(fileName);
  if (!FileIsOnFixedDrive(path, false)) return;
  const UnicodeView place = isHtmlHelp ? kHtmlHelpKey : kHelpKey;
  if (!RegValueIsText(HKEY_LOCAL_MACHINE, place, fileName, opts)) return;
  const UnicodeString key = u"existingkey:" + BuildErrorRegKeyParameter(keyText, opts);
  const UnicodeString value = UnicodeString(u"existingvalue:").append(fileName);
  if (!FindFile(path))
    AddError(isHtmlHelp ? kHtmlHelpMissing : kHelpMissing, {key, value, u"missingfile:" + path});
  else if (ZMGetFileSize(path) == 0)
    AddError(kEmptyFile, {key, value, u"existingfile:" + path});
}

bool TRCPHelpFiles::CleanError(const TSweepError& error) {
  if (error.ErrorType >= kHelpMissing && error.ErrorType <= kEmptyFile) DeleteErrorRegValue(error);
  // Deliberately a success whatever came of it: what has gone already counts as repaired.
  return true;
}

}  // namespace scrubwell
