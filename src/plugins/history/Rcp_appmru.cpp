#include "plugins/history/Rcp_appmru.h"

#include <algorithm>

#include "plugins/history/history_checks.h"
#include "registry/Stringhelper.h"
#include "texts/appmru.h"

namespace scrubwell {
namespace {

namespace text = texts::appmru;

enum Kind : std::int32_t { kEntry = 1, kOpenWith = 2, kAddress = 3 };

constexpr int kIcon = 13000;
constexpr TCategory kCategory{
    .className = u"TRCPAppMRU",
    .imageIndex = 13,
    .iconID = 13001,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = {},
};

constexpr std::array<TProblemKind, 3> kKinds{{
    {kEntry, kIcon, text::kEntryCaption, text::kEntryShort, text::kEntryDetail},
    {kOpenWith, kIcon, text::kOpenWithCaption, text::kOpenWithShort, text::kOpenWithDetail},
    {kAddress, kIcon, text::kEntryCaption, text::kEntryShort, text::kAddressDetail},
}};

constexpr UnicodeView kOpenSave =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\OpenSaveMRU";
constexpr UnicodeView kOrder = u"mrulist";
constexpr UnicodeView kVisited = u"Visited: ";
constexpr UnicodeView kFileUrl = u"file:///";

// What the cache is asked for: visited addresses, of any kind.
constexpr int kCacheMode = 2;
constexpr int kCacheFilter = 17;

constexpr TMRUList Row(UnicodeView key, UnicodeView valueName) {
  return {.Key = key, .ValueName = valueName};
}
constexpr TMRUList kMRULists[] = {
    Row(u"Software\\Microsoft\\Office\\9.0\\Access\\Settings", u"MRU"),
    Row(u"Software\\Microsoft\\Office\\9.0\\Excel\\Recent Files", u"File"),
    Row(u"Software\\Microsoft\\Office\\9.0\\MS Project\\Recent File List", u"File"),
    Row(u"Software\\Microsoft\\Office\\9.0\\PowerPoint\\Recent File List", u"File"),
    Row(u"Software\\Microsoft\\Office\\10.0\\Access\\Settings", u"MRU"),
    Row(u"Software\\Microsoft\\Office\\10.0\\Excel\\Recent Files", u"File"),
    Row(u"Software\\Microsoft\\Office\\10.0\\MS Project\\Recent File List", u"File"),
    Row(u"Software\\Microsoft\\Office\\10.0\\PowerPoint\\Recent File List", u"File"),
    Row(u"Software\\Microsoft\\Office\\11.0\\Access\\Settings", u"MRU"),
    Row(u"Software\\Microsoft\\Office\\11.0\\Excel\\Recent Files", u"File"),
    Row(u"Software\\Microsoft\\Office\\11.0\\MS Project\\Recent File List", u"File"),
    Row(u"Software\\Microsoft\\Office\\11.0\\PowerPoint\\Recent File List", u"File"),
    Row(u"Software\\Microsoft\\Office\\12.0\\Access\\Settings", u"MRU"),
    Row(u"Software\\Microsoft\\Office\\12.0\\Excel\\Recent Files", u"File"),
    Row(u"Software\\Microsoft\\Office\\12.0\\MS Project\\Recent File List", u"File"),
    Row(u"Software\\Microsoft\\Office\\12.0\\PowerPoint\\Recent File List", u"File"),
    Row(u"Software\\Stardock\\IconPackager\\Recent", u"Icon"),
    Row(u"Software\\Nico Mak Computing\\WinZip\\filemenu", u"filemenu"),
    Row(u"Software\\Nico Mak Computing\\WinZip\\extract", u"extract"),
};

bool IsNumbered(UnicodeView name, UnicodeView prefix) {
  if (name.size() <= prefix.size() || !SameText(name.substr(0, prefix.size()), prefix)) {
    return false;
  }
  return std::ranges::all_of(name.substr(prefix.size()),
                             [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

}  // namespace

std::span<const TMRUList> MRULists() {
  return kMRULists;
}

TRCPAppMRU::TRCPAppMRU() : TRCPlugin(kCategory, kKinds) {}

void TRCPAppMRU::Init() {
  FKeyPaths.clear();
  FValueNames.clear();
  FValueData.clear();
  ReadOpenSaveLists();
  ReadNumberedLists();
  EnumRegKeysEx(HKEY_CURRENT_USER, history::kFileExts, FFileExts, {});
  FCacheFiles.clear();
  TIECache cache(this);
  cache.OnIECacheEntry = [this](TIECache& sender, const UnicodeString& entry) {
    OnIECacheEntry(sender, entry);
  };
  cache.Mode = kCacheMode;
  cache.SetFilterOptions(kCacheFilter);
  cache.RetrieveEntries();
  SetFScanItemCount(static_cast<std::int32_t>(FKeyPaths.size() + FFileExts.size()));
  FState = rcpInited;
}

void TRCPAppMRU::AddEntries(const UnicodeString& key,
                            const std::function<bool(UnicodeView)>& isEntry) {
  TStringList names;
  TStringList data;
  EnumRegValuesEx(HKEY_CURRENT_USER, key, names, data, {});
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!isEntry(names[i])) continue;
    FKeyPaths.push_back(key);
    FValueNames.push_back(std::move(names[i]));
    FValueData.push_back(std::move(data[i]));
  }
}

void TRCPAppMRU::ReadOpenSaveLists() {
  const auto isEntry = [](UnicodeView name) { return LowerCase(name) != kOrder; };
  AddEntries(UnicodeString(kOpenSave), isEntry);
  TStringList extensions;
  EnumRegKeysEx(HKEY_CURRENT_USER, kOpenSave, extensions, {});
  for (const UnicodeString& extension : extensions) {
    AddEntries(UnicodeString(kOpenSave) + u"\\" + extension, isEntry);
  }
}

void TRCPAppMRU::ReadNumberedLists() {
  for (const TMRUList& list : kMRULists) {
    AddEntries(UnicodeString(list.Key),
               [&list](UnicodeView name) { return IsNumbered(name, list.ValueName); });
  }
}

void TRCPAppMRU::OnIECacheEntry(TIECache& /*sender*/, const UnicodeString& entry) {
  UnicodeView name = entry;
  if (!name.starts_with(kVisited)) return;
  name.remove_prefix(kVisited.size());
  if (const std::size_t at = name.find(u'@'); at != UnicodeView::npos) name.remove_prefix(at + 1);
  if (!name.starts_with(kFileUrl)) return;
  FCacheFiles.push_back(history::PathAsWritten(name.substr(kFileUrl.size())));
}

void TRCPAppMRU::Scan() {
  ErrorCount = 0;
  for (std::size_t i = 0; i < FKeyPaths.size(); ++i) {
    if (!ShowScanItem(FValueData[i])) return;
    Check_History(FValueData[i], FValueNames[i], FKeyPaths[i]);
  }
  for (const UnicodeString& extension : FFileExts) {
    if (!ShowScanItem(extension)) return;
    const UnicodeString key = UnicodeString(history::kFileExts) + u"\\" + extension;
    if (!history::IsOpenWithKeyEmpty(key)) continue;
    AddError(kOpenWith, {u"existingkey:" + RegKeyToStr(HKEY_CURRENT_USER, key, false)});
  }
  for (const UnicodeString& file : FCacheFiles) {
    if (history::IsAddressFileMissing(file)) AddError(kAddress, {u"missingfile:" + file});
  }
  FState = rcpScanned;
}

void TRCPAppMRU::Check_History(UnicodeView fileName, UnicodeView valueName, UnicodeView keyPath) {
  if (!FileIsOnFixedDrive(fileName, false) || FindFileOrDir(fileName)) return;
  if (history::LeadsIntoFile(fileName)) return;
  if (!RegValueIsText(HKEY_CURRENT_USER, keyPath, valueName, {})) return;
  AddError(kEntry, {u"existingkey:" + RegKeyToStr(HKEY_CURRENT_USER, keyPath, false),
                    UnicodeString(u"existingvalue:").append(valueName),
                    UnicodeString(u"missingfile:").append(fileName)});
}

bool TRCPAppMRU::CleanError(const TSweepError& error) {
  RootKey root = RootKey::None;
  UnicodeString key;
  UnicodeString valueName;
  TZmRegOptions opts;
  GetErrorRegValue(error, u"existingkey", u"existingvalue", root, key, valueName, opts);
  if (error.ErrorType == kOpenWith) {
    DeleteRegKeyWrapper(root, key, opts);
  } else if (error.ErrorType == kEntry) {
    // The list may have been renumbered since; the name then belongs to another entry.
    UnicodeString now;
    const bool known = GetRegStringValue(root, key, valueName, now, opts) == ERRC_SUCCESS;
    if (!known || now == GetErrorStringValue(error.Data, u"missingfile")) {
      NoteForRepair(root, key, valueName, now);
      DeleteRegValueWrapper(root, key, valueName, opts);
      history::RemoveFromOrder(root, key, valueName, opts);
    }
  }
  RepairAfterLast();
  return true;
}

// The lists of programs must be numbered without gaps. The history sources know how to mend them.
void TRCPAppMRU::NoteForRepair(RootKey root, const UnicodeString& key,
                               const UnicodeString& valueName, UnicodeView target) {
  const bool isNumbered = std::ranges::any_of(
      kMRULists, [&key](const TMRUList& list) { return SameText(list.Key, key); });
  if (!isNumbered) return;
  const TTraceSourceData source{root, key, valueName};
  const TTracePluginList& plugins = TracePlugins();
  for (std::int32_t i = 0; i < plugins.Count(); ++i) {
    TTracePlugin* const plugin = plugins.Get(i);
    if (!plugin->Holds(source, target)) continue;
    plugin->NoteRemoval(source, target);
    if (std::ranges::find(FToRepair, plugin) == FToRepair.end()) FToRepair.push_back(plugin);
  }
}

// Not before the last problem of a cleaning: the others name their entries by the old numbers. A
// cleaning that is stopped leaves the gaps.
void TRCPAppMRU::RepairAfterLast() {
  if (FCleanItemsDone < FCleanItemCount) return;
  for (TTracePlugin* plugin : FToRepair) plugin->Repair();
  FToRepair.clear();
}

}  // namespace scrubwell
