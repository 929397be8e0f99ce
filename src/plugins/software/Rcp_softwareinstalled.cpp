#include "plugins/software/Rcp_softwareinstalled.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "texts/softwareinstalled.h"

namespace scrubwell {
namespace {

namespace text = texts::softwareinstalled;

enum Kind : std::int32_t { kMissingPath = 1 };

constexpr TCategory kCategory{
    .className = u"TRCPSoftwareInstalled",
    .imageIndex = 19,
    .iconID = 19101,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 1> kKinds{{
    {kMissingPath, 19100, text::kMissingCaption, text::kMissingShort, text::kMissingDetail},
}};

constexpr UnicodeView kAreas[] = {
    u"HKLM\\Software\\Clients",
    u"HKCU\\Software\\Clients",
    u"HKLM\\Software\\JavaSoft",
    u"HKCU\\Software\\JavaSoft",
    u"HKLM\\Software\\Mozilla",
    u"HKCU\\Software\\Mozilla",
    u"HKLM\\Software\\MozillaPlugIns",
    u"HKCU\\Software\\MozillaPlugIns",
    u"HKLM\\Software\\NetScape",
    u"HKCU\\Software\\NetScape",
    u"HKLM\\Software\\Symantec",
    u"HKCU\\Software\\Symantec",
    u"HKLM\\Software\\Update",
    u"HKCU\\Software\\Update",
    u"HKLM\\Software\\WinRar",
    u"HKCU\\Software\\WinRar",
    u"HKLM\\Software\\P2P Networking",
    u"HKLM\\Software\\Microsoft\\MMC\\Internet Explorer",
    u"HKCU\\Software\\Microsoft\\MMC\\Internet Explorer",
    u"HKLM\\Software\\Microsoft\\MMC\\Office",
    u"HKCU\\Software\\Microsoft\\MMC\\Office",
    u"HKLM\\Software\\Microsoft\\MMC\\SnapIns",
    u"HKCU\\Software\\Microsoft\\MMC\\SnapIns",
    u"HKLM\\Software\\Microsoft\\MMC\\Windows Media",
    u"HKCU\\Software\\Microsoft\\MMC\\Windows Media",
    u"HKLM\\Software\\Microsoft\\Updates",
    u"HKCU\\Software\\Microsoft\\Updates",
};

// Never entered; a key below one of them that is an area of its own is.
struct TIgnoredKey {
  RootKey root;
  UnicodeView path;
};
constexpr TIgnoredKey kIgnoredKeys[] = {
    {RootKey::LocalMachine, u"Software\\Classes"},
    {RootKey::CurrentUser, u"Software\\Classes"},
    {RootKey::LocalMachine, u"Software\\Policies"},
    {RootKey::CurrentUser, u"Software\\Policies"},
    {RootKey::LocalMachine, u"Software\\Microsoft"},
    {RootKey::CurrentUser, u"Software\\Microsoft"},
    {RootKey::LocalMachine, u"Software\\Wow6432Node"},
    {RootKey::CurrentUser, u"Software\\Wow6432Node"},
};

// Names of values that hold a path, without blanks and in upper case. What follows a star is the
// end of a name.
constexpr UnicodeView kValueNames[] = {
    u"DLL",
    u"DLLPATH",
    u"PATH",
    u"PROGRAM",
    u"PROGRAMM",
    u"PFAD",
    u"DIRECTORY",
    u"DIR",
    u"SHAREDFILES",
    u"BACKUPFILENAME",
    u"BACKUPPATH",
    u"SOURCEPATH",
    u"ICON",
    u"HOTICON",
    u"DISPLAYICON",
    u"TEMPLATES",
    u"TEMPLATEFILENAME",
    u"TEMPLATEDIR",
    u"REQUIREDFILE",
    u"REQUIREDPATH",
    u"PROVIDERLOGO",
    u"LOGO",
    u"FOLDER",
    u"DEFAULT",
    u"CACHE",
    u"CACHEPATH",
    u"INSTALLATION",
    u"INSTALLATIONSOURCE",
    u"LOCALPAGE",
    u"MAINPAGE",
    u"SYSTEMRESTORE",
    u"INSTALLDIR",
    u"FILE",
    u"FILENAME",
    u"FILEDIR",
    u"TEMP",
    u"TEMPPATH",
    u"UNINSTALL",
    u"UNINSTALLCOMMAND",
    u"FPDIR",
    u"FOLDERPATH",
    u"APP",
    u"ROOT",
    u"ROOTDIR",
    u"ROOTPATH",
    u"INSTALLLOCATION",
    u"DOWNLOAD",
    u"DOWNLOADPATH",
    u"DOWNLOADDIR",
    u"DOWNLOADDIRECTORY",
    u"EXEFILE",
    u"EXEPATH",
    u"EXEDIR",
    u"EXEDIRECTORY",
    u"STAGINGPATH",
    u"HELPTOPIC",
    u"COMPONENTS",
    u"PLUGINS",
    u"*FILE",
    u"*PATH",
    u"*DIRECTORY",
    u"*FOLDER",
    u"*SOURCE",
};
static_assert(std::size(kAreas) == 27 && std::size(kValueNames) == 63);

// What ends a path and begins its arguments, in the order in which they are looked for.
constexpr UnicodeView kSeparators = u",@|\t";
constexpr char16_t kNameMark = u'/';
constexpr std::size_t kLongestIndirectText = 255;
constexpr int kDeepestKey = 512;  // the registry's own limit
constexpr std::int32_t kWeightPerItem = 2;

// Everything here is read and changed in the process's own view, and key items carry no view.
constexpr TZmRegOptions kOwnView{};

UnicodeView WithoutArguments(UnicodeView path) {
  for (const char16_t separator : kSeparators) path = path.substr(0, path.find(separator));
  return path;
}

// As much of the text as can be a name: commas and the like may be part of one. What is filled in
// later, behind a separator, is not.
UnicodeView LongestName(UnicodeView path) {
  std::size_t end = path.find_first_of(u"|\t*?<>");
  const std::size_t separator = path.find_first_of(u",@");
  if (separator != UnicodeView::npos) end = std::min(end, path.find(u'%', separator));
  return path.substr(0, end);
}

}  // namespace

TRCPSoftwareInstalled::TRCPSoftwareInstalled() : TRCPlugin(kCategory, kKinds) {}

void TRCPSoftwareInstalled::Init() {
  std::int32_t count = 0;
  for (const UnicodeView area : kAreas) {
    RootKey root = RootKey::None;
    UnicodeString path;
    TZmRegOptions ignored;
    if (GetRegKeyFromString(area, root, path, ignored))
      count += GetSubKeyCount(root, path, kOwnView);
  }
  SetFScanItemCount(count);
  ScanWeight = count * kWeightPerItem;
  FState = rcpInited;
}

// A stop ends each phase after its first step, but the phases still run over what was collected
// and the scan counts as complete.
void TRCPSoftwareInstalled::Scan() {
  ErrorCount = 0;
  FRegistryKeys.clear();
  FRegistryKeyValues.clear();
  for (const UnicodeView area : kAreas) {
    RootKey root = RootKey::None;
    UnicodeString path;
    TZmRegOptions ignored;
    if (GetRegKeyFromString(area, root, path, ignored)) FillRegistryKeys(root, path, 0);
    if (StopSearch) break;
  }
  FillRegistryKeyValues();
  ScanRegistryKeyValues();
  FState = rcpScanned;
}

// Collects a key after all its subkeys. Only the keys directly below an area are announced.
void TRCPSoftwareInstalled::FillRegistryKeys(RootKey root, const UnicodeString& keyPath,
                                             int depth) {
  if (depth > kDeepestKey || StopSearch || KeyIsIgnored(root, keyPath)) return;
  TStringList subKeys;
  EnumRegKeysEx(root, keyPath, subKeys, kOwnView);
  for (const UnicodeString& subKey : subKeys) {
    const UnicodeString path = keyPath + u"\\" + subKey;
    if (depth == 0 && !ShowScanItem(path)) break;
    FillRegistryKeys(root, path, depth + 1);
  }
  FRegistryKeys.push_back(RegKeyToStr(root, keyPath, false));
}

bool TRCPSoftwareInstalled::KeyIsIgnored(RootKey root, UnicodeView keyPath) {
  return std::ranges::any_of(kIgnoredKeys, [&](const TIgnoredKey& key) {
    return key.root == root && SameText(key.path, keyPath);
  });
}

bool TRCPSoftwareInstalled::ValueNeedCheck(UnicodeView valueName) {
  UnicodeString name = UpperCase(valueName);
  std::erase(name, u' ');
  return std::ranges::any_of(kValueNames, [&](UnicodeView known) {
    return known.front() == u'*' ? name.ends_with(known.substr(1)) : name == known;
  });
}

void TRCPSoftwareInstalled::FillRegistryKeyValues() {
  TStringList names;
  TStringList data;
  for (const UnicodeString& key : FRegistryKeys) {
    RootKey root = RootKey::None;
    UnicodeString path;
    TZmRegOptions ignored;
    if (GetRegKeyFromString(key, root, path, ignored)) {
      EnumRegValuesEx(root, path, names, data, kOwnView);
      for (const UnicodeString& name : names) {
        if (ValueNeedCheck(name)) FRegistryKeyValues.push_back(key + kNameMark + name);
      }
    }
    if (StopSearch) return;
  }
}

void TRCPSoftwareInstalled::ScanRegistryKeyValues() {
  for (const UnicodeString& entry : FRegistryKeyValues) {
    Check_Value(entry);
    if (StopSearch) return;
  }
}

void TRCPSoftwareInstalled::Check_Value(UnicodeView entry) {
  // The first mark, deliberately, so that a key with a mark in its path is passed over: its values
  // go unreported, as those of browser plug-ins ("@vendor/plugin") always have.
  const std::size_t mark = entry.find(kNameMark);
  if (mark == UnicodeView::npos) return;
  const UnicodeView name = entry.substr(mark + 1);
  RootKey root = RootKey::None;
  UnicodeString key;
  TZmRegOptions ignored;
  if (!GetRegKeyFromString(entry.substr(0, mark), root, key, ignored)) return;

  UnicodeString data = GetRegStringValueDef(root, key, name, u"", kOwnView);
  // An indirect text keeps its "@" deliberately, which no drive begins with: it goes unreported.
  if (data.starts_with(u'@') && data.size() > kLongestIndirectText)
    data.resize(kLongestIndirectText);
  if (!FileIsOnFixedDrive(data, true)) return;
  const UnicodeView path = WithoutArguments(data);
  if (FindFileOrDir(path) || FindFileOrDir(LongestName(data))) return;
  AddError(kMissingPath, {u"existingkey:" + RegKeyToStr(root, key, false),
                          UnicodeString(u"existingvalue:").append(name),
                          UnicodeString(u"missingfile:").append(path)});
}

bool TRCPSoftwareInstalled::CleanError(const TSweepError& error) {
  if (error.ErrorType == kMissingPath) {
    RootKey root = RootKey::None;
    UnicodeString key;
    UnicodeString valueName;
    TZmRegOptions ignored;
    GetErrorRegValue(error, u"existingkey", u"existingvalue", root, key, valueName, ignored);
    DeleteRegValueWrapper(root, key, valueName, kOwnView);
  }
  // Deliberately a success whatever came of it: what has gone already counts as repaired.
  return true;
}

}  // namespace scrubwell
