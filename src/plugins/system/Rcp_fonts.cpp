#include "plugins/system/Rcp_fonts.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"
#include "texts/fonts.h"

namespace scrubwell {
namespace {

namespace text = texts::fonts;

enum Kind : std::int32_t { kMissingFile = 1, kEmptyFile = 2 };

constexpr TCategory kCategory{
    .className = u"TRCPFonts",
    .imageIndex = 5,
    .iconID = 11002,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 2> kKinds{{
    {kMissingFile, 11000, text::kMissingCaption, text::kMissingShort, text::kMissingDetail},
    {kEmptyFile, 11001, text::kEmptyCaption, text::kEmptyShort, text::kEmptyDetail},
}};

// Each value's name is a font, its data the font's file.
constexpr UnicodeView kFontsKey = u"Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";
constexpr UnicodeView kFontsKeyBeforeNT = u"Software\\Microsoft\\Windows\\CurrentVersion\\Fonts";
constexpr UnicodeView kShellFolders =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr UnicodeView kDefaultProfile = u".DEFAULT";
constexpr UnicodeView kFontFolderValue = u"Fonts";
constexpr int kFontFolderNumber = 20;

constexpr TZmRegOptions kView32{zmreg32Bit};
constexpr TZmRegOptions kView64{zmreg64Bit};

enum class FileState { Present, Missing, Empty };

// Whatever can't be told counts as present.
FileState StateOf(UnicodeView path) {
  if (!FileIsOnFixedDrive(path, false)) return FileState::Present;
  const std::int64_t size = ZMGetFileSize(path);
  if (size == -1) return FileState::Missing;
  return size == 0 ? FileState::Empty : FileState::Present;
}

// Unknown counts as there. A Windows whose users are listed without it provably has none.
bool HasDefaultProfile() {
  TStringList users;
  EnumRegKeysEx(HKEY_USERS, {}, users, {});
  return users.empty() || std::ranges::any_of(users, [](const UnicodeString& user) {
           return SameText(user, kDefaultProfile);
         });
}

UnicodeString Folder(UnicodeView path) {
  return path.empty() ? UnicodeString() : IncludeTrailingPathDelimiter(path);
}

// A variable in front stands for a drive. Network paths deliberately are no full paths here: fonts
// are loaded from the font folder or a local drive alone.
bool IsFullPath(UnicodeView file) {
  return file.substr(std::min<std::size_t>(file.size(), 1), 2) == u":\\" || file.starts_with(u'%');
}

}  // namespace

TRCPFonts::TRCPFonts() : TRCPlugin(kCategory, kKinds) {}

void TRCPFonts::Init() {
  const OsVersion os = CurrentOS();
  const bool beforeNT = os >= OsVersion::Win95 && os <= OsVersion::WinME;
  FFontsKey = beforeNT ? kFontsKeyBeforeNT : kFontsKey;
  FFontFolder = Folder(GetFolderLocStr(kFontFolderNumber));
  if (FFontFolder.empty())
    FFontFolder =
        Folder(GetRegStringValueDef(HKEY_CURRENT_USER, kShellFolders, kFontFolderValue, {}, {}));
  UnicodeString folder;
  const std::int32_t error = GetRegStringValue(
      HKEY_USERS, UnicodeString(kDefaultProfile).append(u"\\").append(kShellFolders),
      kFontFolderValue, folder, {});
  FDefaultFontFolder = Folder(folder);
  FDefaultFontFolderKnown =
      error == ERRC_SUCCESS || error == ERRC_FILE_NOT_FOUND || !HasDefaultProfile();
  if (SameText(FDefaultFontFolder, FFontFolder)) FDefaultFontFolder.clear();

  EnumRegValuesEx(HKEY_LOCAL_MACHINE, FFontsKey, FFontNames32, FFontFiles32, kView32);
  FFontNames64.clear();
  FFontFiles64.clear();
  if (IsCurrentProcessWow64())
    EnumRegValuesEx(HKEY_LOCAL_MACHINE, FFontsKey, FFontNames64, FFontFiles64, kView64);
  SetFScanItemCount(static_cast<std::int32_t>(FFontNames32.size() + FFontNames64.size()));
  FState = rcpInited;
}

void TRCPFonts::Scan() {
  ErrorCount = 0;
  const auto scanView = [this](const TStringList& names, const TStringList& files,
                               TZmRegOptions opts) {
    return ScanValueList(
        {HKEY_LOCAL_MACHINE, FFontsKey, opts}, names, files,
        [&](UnicodeView name, UnicodeView file) { Check_Font(FFontsKey, name, file, opts); },
        /*skipDefault=*/true);
  };
  // Both views show the same key on current systems. Each is listed all the same, by design: what a
  // problem is recognised by holds its view.
  if (!scanView(FFontNames32, FFontFiles32, kView32)) return;
  if (!scanView(FFontNames64, FFontFiles64, kView64)) return;
  FState = rcpScanned;
}

void TRCPFonts::Check_Font(UnicodeView fontsKey, UnicodeView fontName, UnicodeView fileName,
                           TZmRegOptions opts) {
  FileState state = FileState::Present;
  if (IsFullPath(fileName)) {
    state = StateOf(fileName);
  } else if (!FFontFolder.empty()) {
    state = StateOf(UnicodeString(FFontFolder).append(fileName));
    if (state == FileState::Missing && !FDefaultFontFolderKnown) return;
    if (state == FileState::Missing && !FDefaultFontFolder.empty())
      state = StateOf(UnicodeString(FDefaultFontFolder).append(fileName));
  }
  if (state == FileState::Present) return;
  if (!RegValueIsText(HKEY_LOCAL_MACHINE, fontsKey, fontName, opts)) return;
  const bool missing = state == FileState::Missing;
  const UnicodeString key = RegKeyToStr(HKEY_LOCAL_MACHINE, fontsKey, false);
  AddError(missing ? kMissingFile : kEmptyFile,
           {u"existingkey:" + BuildErrorRegKeyParameter(key, opts),
            UnicodeString(u"existingvalue:").append(fontName),
            UnicodeString(u"caption:").append(fontName),
            UnicodeString(missing ? u"missingfile:" : u"existingfile:").append(fileName)});
}

bool TRCPFonts::CleanError(const TSweepError& error) {
  if (error.ErrorType == kMissingFile || error.ErrorType == kEmptyFile) DeleteErrorRegValue(error);
  // Deliberately a success whatever came of it: an entry of a key that both views share has gone
  // with its twin.
  return true;
}

}  // namespace scrubwell
