#include "plugins/software/Rcp_uninstall.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"
#include "texts/uninstall.h"

namespace scrubwell {
namespace {

namespace text = texts::uninstall;

enum Kind : std::int32_t {
  kUninstallerMissing = 1,
  kLogMissing = 2,
  kIncomplete = 3,
  kOrphanedCache = 4,
  kSourceMissing = 5,
};

constexpr TCategory kCategory{
    .className = u"TRCPUninstall",
    .imageIndex = 11,
    .iconID = 19001,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 5> kKinds{{
    {kUninstallerMissing, 19000, text::kUninstallerCaption, text::kUninstallerShort,
     text::kUninstallerDetail},
    {kLogMissing, 19000, text::kLogCaption, text::kLogShort, text::kLogDetail},
    {kIncomplete, 19000, text::kIncompleteCaption, text::kIncompleteShort, text::kIncompleteDetail},
    {kOrphanedCache, 19000, text::kCacheCaption, text::kCacheShort, text::kCacheDetail},
    {kSourceMissing, 19000, text::kSourceCaption, text::kSourceShort, text::kSourceDetail},
}};

constexpr UnicodeView kUninstallKey = u"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr UnicodeView kCacheKey =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\App Management\\ARPCache\\";
constexpr UnicodeView kInstallSource = u"InstallSource";
constexpr std::int32_t kWeightPerItem = 4;

constexpr TZmRegOptions kView32{zmreg32Bit};
constexpr TZmRegOptions kView64{zmreg64Bit};

// Programs whose entries look broken but are not.
constexpr UnicodeView kExceptions[] = {
    u"InstallShield Uninstall Information",
    u"Myst V",
    u"SilverFast UScan-SE",
    u"{FBCCF9CE-61EE-425E-BE4D-959D76FA7701}",
    u"{0F22C794-89DE-4F31-9479-827E3385CDAE}",
    u"{FDAE2B3E-E3A8-42FF-AF6F-0AF4C59AE2CC}",
    u"CinePlayer.exe",
    u"{4AA5742C-2B17-4289-A502-CB2EE0971CFF}",
    u"{2D5D9603-22CF-4B99-83F6-0CD20330F62E}",
};
// As part of the name, written exactly so.
constexpr UnicodeView kExceptionPart = u"Outpost";

bool IsException(UnicodeView subKey) {
  return subKey.find(kExceptionPart) != UnicodeView::npos ||
         std::ranges::any_of(kExceptions, [&](UnicodeView name) { return SameText(subKey, name); });
}

// Reads the values of one key and remembers whether all could be read. A name or number that is
// missing or of another type reads as nothing, but one that can't be read leaves open what the
// entry says.
class TEntryValues {
 public:
  TEntryValues(UnicodeView key, TZmRegOptions opts) : key_(key), opts_(opts) {}

  UnicodeString Text(UnicodeView name) {
    UnicodeString value;
    Judge(GetRegStringValue(HKEY_LOCAL_MACHINE, key_, name, value, opts_));
    return value;
  }
  // A command that is no text is there all the same, but leaves open what it starts.
  UnicodeString Command(UnicodeView name) {
    UnicodeString value;
    const std::int32_t code = GetRegStringValue(HKEY_LOCAL_MACHINE, key_, name, value, opts_);
    if (code != ERRC_SUCCESS && code != ERRC_FILE_NOT_FOUND) allRead_ = false;
    return value;
  }
  std::uint32_t Number(UnicodeView name) {
    std::uint32_t value = 0;
    Judge(GetRegDWORDValue(HKEY_LOCAL_MACHINE, key_, name, value, opts_));
    return value;
  }
  // Installers write such marks as numbers and as texts: only that there is one counts.
  [[nodiscard]] bool Has(UnicodeView name) const {
    return RegValueExists(HKEY_LOCAL_MACHINE, key_, name, opts_);
  }
  [[nodiscard]] bool AllRead() const { return allRead_; }

 private:
  void Judge(std::int32_t code) {
    if (code != ERRC_SUCCESS && code != ERRC_FILE_NOT_FOUND && code != ERRC_UNSUPPORTED_TYPE)
      allRead_ = false;
  }
  UnicodeView key_;
  TZmRegOptions opts_;
  bool allRead_ = true;
};

UnicodeString DisplayName(TEntryValues& values, UnicodeView subKey) {
  UnicodeString name = values.Text(u"DisplayName");
  if (Trim(name).empty()) name = values.Text(u"QuietDisplayName");
  if (Trim(name).empty()) name = subKey;
  return name;
}

bool IsSourceMissing(UnicodeView source) {
  UnicodeString file;
  UnicodeString arguments;
  return FileIsOnFixedDrive(source, false) && !FileOrDirExistsEx(source) &&
         FindFileAndVerifyArguments(source, file, arguments) == 1;
}

// What is wrong with the command, 0 for nothing.
std::int32_t CommandProblem(UnicodeView command) {
  if (command.empty()) return kIncomplete;
  if (!FileIsOnFixedDrive(command, false)) return 0;
  UnicodeString file;
  UnicodeString arguments;
  switch (FindFileAndVerifyArguments(command, file, arguments)) {
    case 1:
      return kUninstallerMissing;
    case 2:
      return kLogMissing;
    default:
      return 0;
  }
}

}  // namespace

TRCPUninstall::TRCPUninstall() : TRCPlugin(kCategory, kKinds) {}

void TRCPUninstall::Init() {
  FUninstallKeys64.clear();
  FARPCacheKeys64.clear();
  const bool bothViews = IsCurrentProcessWow64();
  const auto read = [bothViews](UnicodeView key, TStringList& keys32, TStringList& keys64) {
    key.remove_suffix(1);
    EnumRegKeysEx(HKEY_LOCAL_MACHINE, key, keys32, kView32);
    if (bothViews) EnumRegKeysEx(HKEY_LOCAL_MACHINE, key, keys64, kView64);
  };
  read(kUninstallKey, FUninstallKeys32, FUninstallKeys64);
  read(kCacheKey, FARPCacheKeys32, FARPCacheKeys64);
  SetFScanItemCount(static_cast<std::int32_t>(FUninstallKeys32.size() + FUninstallKeys64.size() +
                                              FARPCacheKeys32.size() + FARPCacheKeys64.size()));
  ScanWeight = FScanItemCount * kWeightPerItem;
  FState = rcpInited;
}

void TRCPUninstall::Scan() {
  ErrorCount = 0;
  const auto scanView = [this](const TStringList& names, TZmRegOptions opts) {
    for (const UnicodeString& name : names) {
      if (!ShowScanItem(name)) return false;
      Check_Uninstall(name, opts);
    }
    return true;
  };
  if (!scanView(FUninstallKeys32, kView32) || !scanView(FUninstallKeys64, kView64)) return;
  // Older systems have no such cache. Its items stay counted all the same.
  if (CurrentOS() > OsVersion::WinNT4) Check_ARPCacheEntries();
  FState = rcpScanned;
}

void TRCPUninstall::Check_Uninstall(UnicodeView subKey, TZmRegOptions opts) {
  if (IsException(subKey)) return;
  const UnicodeString key = UnicodeString(kUninstallKey).append(subKey);
  // Windows has keys of its own here that hold no value (AddressBook, DXM_Runtime and others).
  constexpr int hasValues = 1;
  if (HasValuesEx(HKEY_LOCAL_MACHINE, key, opts) != hasValues) return;

  TEntryValues values(key, opts);
  if (values.Number(u"NoRemove") == 1) return;
  const bool mayLackCommand = values.Has(u"WindowsInstaller") || values.Has(u"SystemComponent");
  const UnicodeString name = DisplayName(values, subKey);
  UnicodeString command = values.Command(u"UninstallString");
  if (command.empty()) command = values.Command(u"QuietUninstallString");
  const UnicodeString source = command.empty() ? UnicodeString() : values.Text(kInstallSource);
  if (!values.AllRead()) return;

  const auto report = [&](std::int32_t kind, UnicodeView missing) {
    TStringList data{u"existingkey:" + BuildErrorRegKeyParameter(
                                           RegKeyToStr(HKEY_LOCAL_MACHINE, key, false), opts),
                     u"caption:" + name};
    if (kind != kIncomplete) data.push_back(u"missingfile:" + RemoveQuotationMarks(missing));
    AddError(kind, data);
  };
  if (!mayLackCommand) {
    if (const std::int32_t kind = CommandProblem(command); kind != 0) report(kind, command);
  }
  if (!source.empty() && IsSourceMissing(source)) report(kSourceMissing, source);
}

void TRCPUninstall::Check_ARPCacheEntries() {
  for (const UnicodeString& name : FARPCacheKeys32) Check_ARPCacheEntry(name, kView32);
  for (const UnicodeString& name : FARPCacheKeys64) Check_ARPCacheEntry(name, kView64);
}

void TRCPUninstall::Check_ARPCacheEntry(UnicodeView subKey, TZmRegOptions opts) {
  if (IsCLSIDKey(subKey)) return;
  // A stop only passes this entry over. The walk goes on and passes the rest over the same way,
  // so that the scan still counts as complete.
  if (!ShowScanItem(subKey)) return;
  const UnicodeString program = UnicodeString(kUninstallKey).append(subKey);
  if (KeyExist(HKEY_LOCAL_MACHINE, program, kView32)) return;
  if (IsCurrentProcessWow64() && KeyExist(HKEY_LOCAL_MACHINE, program, kView64)) return;
  const UnicodeString key = UnicodeString(kCacheKey).append(subKey);
  AddError(kOrphanedCache,
           {UnicodeString(u"caption:").append(subKey),
            u"existingkey:" +
                BuildErrorRegKeyParameter(RegKeyToStr(HKEY_LOCAL_MACHINE, key, false), opts)});
}

bool TRCPUninstall::CleanError(const TSweepError& error) {
  if (error.ErrorType >= kUninstallerMissing && error.ErrorType <= kSourceMissing) {
    RootKey root = RootKey::None;
    UnicodeString key;
    TZmRegOptions opts;
    GetErrorRegKey(error, u"existingkey", root, key, opts);
    // Without its installation source a program can still be used and uninstalled.
    if (error.ErrorType == kSourceMissing)
      DeleteRegValueWrapper(root, key, kInstallSource, opts);
    else
      DeleteRegKeyWrapper(root, key, opts);
  }
  // Deliberately a success whatever came of it: what has gone already counts as repaired.
  return true;
}

}  // namespace scrubwell
