#include "plugins/history/Rcp_history.h"

#include <algorithm>

#include "plugins/history/history_checks.h"
#include "registry/Shelllink.h"
#include "registry/Stringhelper.h"
#include "registry/Wildcards.h"
#include "registry/Zelmarwow64.h"
#include "registry/Zmverinfo.h"
#include "texts/framework.h"
#include "texts/history.h"

namespace scrubwell {
namespace {

namespace text = texts::history;

enum Kind : std::int32_t {
  kFileDialog = 1,
  kOpenWith = 2,
  kUrl = 3,
  kApplicationFile = 4,
  kWindows = 5,
  kMenuLink = 6,
  kMenuFolder = 7,
  kApplicationFolder = 8,
  kMenuRootLink = 9,
  kRecent = 10,
  kOfficeRecent = 11,
};

constexpr TCategory kCategory{
    .className = u"TRCPHistory",
    .imageIndex = 13,
    .iconID = 13001,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr int kIcon = 13000;
constexpr std::array<TProblemKind, 11> kKinds{{
    {kFileDialog, kIcon, text::kFileDialogCaption, text::kFileShort, text::kFileDialogDetail},
    {kOpenWith, kIcon, text::kOpenWithCaption, text::kOpenWithShort, text::kOpenWithDetail},
    {kUrl, kIcon, text::kWindowsCaption, text::kFileShort, text::kWindowsDetail},
    {kApplicationFile, kIcon, text::kApplicationCaption, text::kFileShort,
     text::kApplicationFileDetail},
    {kWindows, kIcon, text::kWindowsCaption, text::kFileShort, text::kWindowsDetail},
    {kMenuLink, kIcon, text::kMenuLinkCaption, text::kMenuLinkShort, text::kMenuLinkDetail},
    {kMenuFolder, kIcon, text::kMenuFolderCaption, text::kMenuFolderShort, text::kMenuFolderDetail},
    {kApplicationFolder, kIcon, text::kApplicationCaption, text::kApplicationFolderShort,
     text::kApplicationFolderDetail},
    {kMenuRootLink, kIcon, text::kMenuLinkCaption, text::kMenuRootLinkShort, text::kMenuLinkDetail},
    {kRecent, kIcon, text::kRecentCaption, text::kFileShort, text::kRecentDetail},
    {kOfficeRecent, kIcon, text::kOfficeRecentCaption, text::kFileShort, text::kOfficeRecentDetail},
}};

constexpr UnicodeView kFileUrl = u"file:///";
constexpr UnicodeView kShellFolders =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

constexpr int kRecentFolder = 8;
constexpr int kAppDataFolder = 26;
// Programs and Start menu, each of the user and then of all users.
constexpr int kMenuFolders[] = {2, 23, 11, 22};

enum CleanMode : std::int32_t { kLeaveToRepair = 0, kDeleteValue = 1, kEmptyValue = 2 };

// Both conditions hold on purpose: program links (".pif") are known here but never listed.
constexpr UnicodeView kLinkMask = u"*.lnk";
constexpr UnicodeView kLinkExtensions = u"|.lnk|.pif|";

bool IsLink(const DirEntry& entry) {
  if (entry.isFolder || !MatchesMask(entry.name, kLinkMask)) return false;
  const UnicodeString extension = u"|" + LowerCase(ExtractFileExt(entry.name)) + u"|";
  return kLinkExtensions.find(extension) != UnicodeView::npos;
}

TStringList LinksIn(UnicodeView folder) {
  std::vector<DirEntry> entries;
  ListFolder(folder, entries);
  TStringList links;
  for (const DirEntry& entry : entries) {
    if (IsLink(entry)) links.push_back(IncludeTrailingPathDelimiter(folder) + entry.name);
  }
  return links;
}

UnicodeString NameWithoutExtension(UnicodeView path) {
  const UnicodeView name = ExtractFileName(path);
  return UnicodeString(name.substr(0, name.size() - ExtractFileExt(name).size()));
}

UnicodeString FileTypeName(const UnicodeString& extension) {
  const UnicodeString type = GetRegStringValueDef(HKEY_CLASSES_ROOT, extension, u"", u"", {});
  if (type.empty() || !KeyExist(HKEY_CLASSES_ROOT, type, {})) {
    return FormatText(LoadText(text::kExtensionFile), {UpperCase(extension), extension});
  }
  const UnicodeString name = GetRegStringValueDef(HKEY_CLASSES_ROOT, type, u"", u"", {});
  return FormatText(LoadText(text::kTypeAndExtension), {name.empty() ? type : name, extension});
}

// False also where one of the folders is not known.
bool IsMissingInMenus(const UnicodeString& name) {
  return std::ranges::all_of(kMenuFolders, [&](int number) {
    const UnicodeString folder = GetFolderLocStr(number);
    return !folder.empty() && FileOrDirExists(IncludeTrailingPathDelimiter(folder) + name, true);
  });
}

// From version 7 on, the history can't be asked for addresses of other names.
bool CanBeQueried(UnicodeView url) {
  const UnicodeString name = UrlDecode(ExtractFileName(Replace(url, kFileUrl, {})));
  return std::ranges::all_of(name, [](char16_t c) {
    return c >= 32 && c <= 127 && UnicodeView(u"#&[]").find(c) == UnicodeView::npos;
  });
}

UnicodeString CleanModeOf(TTraceFlags flags) {
  CleanMode mode = kLeaveToRepair;
  if ((flags & tfDeleteValue) != 0)
    mode = kDeleteValue;
  else if ((flags & tfEmptyValue) != 0)
    mode = kEmptyValue;
  return u"cleanmode:" + IntToStr(mode);
}

// The item's value; empty when the problem has no such item.
UnicodeString Item(const TSweepError& error, UnicodeView placeholder) {
  UnicodeString value = InsertData(placeholder, error.Data);
  if (value == placeholder) value.clear();
  return value;
}

}  // namespace

TRCPHistory::TRCPHistory() : TRCPlugin(kCategory, kKinds), FTraceScanner(this) {
  FTraceScanner.OnScanTraceFound = [this](auto&&... trace) { ScanTraceFound(trace...); };
}

// ---- Reading ------------------------------------------------------------------------------

void TRCPHistory::Init() {
  ClearTraceList();
  ClearCacheList();
  EnumRegKeysEx(HKEY_CURRENT_USER, history::kFileExts, FileExtList, {});
  ReadUrlHistory();
  const auto readLinks = [](UnicodeView folder, TRecentList& list) {
    list.clear();
    for (UnicodeString& link : LinksIn(folder)) list.push_back({std::move(link), {}, {}});
  };
  RecentList.clear();
  const UnicodeString recent = GetFolderLocStr(kRecentFolder);
  if (!recent.empty()) readLinks(recent, RecentList);
  readLinks(OfficeRecentFolder(), OfficeRecentList);
  SearchTraces();
  SetFScanItemCount(static_cast<std::int32_t>(FileExtList.size() + CacheList.size() +
                                              TraceList.size() + OfficeRecentList.size() +
                                              RecentList.size()));
  FState = rcpInited;
}

void TRCPHistory::ReadUrlHistory() {
  TUrlHistory reader;
  TStringList urls;
  reader.Enumerate(urls);
  for (UnicodeString& url : urls) {
    if (!url.starts_with(kFileUrl)) continue;
    UnicodeString path;
    if (!PathCreateFromUrl(url, path)) path = url;
    CacheList.push_back({std::move(url), std::move(path)});
  }
}

UnicodeString TRCPHistory::OfficeRecentFolder() {
  const UnicodeString appData = GetFolderLocStr(kAppDataFolder);
  if (appData.empty()) return {};
  const UnicodeString version =
      GetFileVersionIdentificationFromFile(GetFileNameWithAbsolutePath(u"WINWORD.EXE"));
  if (version.empty()) return {};
  const UnicodeString key = u"Software\\Microsoft\\Office\\" + version + u"\\Common\\General";
  UnicodeString name;
  if (!IsCurrentProcessWow64()) {
    name = GetRegStringValueDef(HKEY_CURRENT_USER, key, u"RecentFiles", u"", {});
  }
  if (name.empty()) {
    name = GetRegStringValueDef(HKEY_CURRENT_USER, key, u"RecentFiles", u"", {zmreg64Bit});
  }
  if (name.empty()) return {};
  return IncludeTrailingPathDelimiter(appData) + u"Microsoft\\Office\\" + name;
}

void TRCPHistory::SearchTraces() {
  const TTracePluginList& plugins = TracePlugins();
  for (std::int32_t i = 0; i < plugins.Count(); ++i) {
    TTracePlugin& plugin = *plugins.Get(i);
    bool wanted = false;
    for (std::int32_t n = 0; n < plugin.GetTraceLocationCount(); ++n) {
      const TTraceLocation location = plugin.GetTraceLocation(n);
      wanted = wanted || (location.targetType != tttNone && location.targetType != tttText &&
                          (location.flags & tfDeleteValue) != 0);
    }
    if (wanted) plugin.Search(FTraceScanner);
  }
}

void TRCPHistory::ScanTraceFound(TTracePlugin& plugin, TTraceSourceType sourceType,
                                 const TTraceSourceData& sourceData, TTraceTargetType targetType,
                                 TTraceFlags flags, const UnicodeString& targetName) {
  if (targetType == tttNone || targetType == tttText) return;
  if (!FileIsOnFixedDrive(targetName, false)) return;
  if (sourceType != tstRegValue && sourceType != tstRegPart) return;
  TraceList.push_back({&plugin, sourceType, sourceData, targetType, flags, targetName});
}

// ---- Scanning -----------------------------------------------------------------------------

void TRCPHistory::Scan() {
  ErrorCount = 0;
  if (!ScanOpenWithKeys() || !ScanTraces()) return;
  if (!ScanRecent(RecentList, kRecent) || !ScanRecent(OfficeRecentList, kOfficeRecent)) return;
  if (!ScanUrls()) return;
  FState = rcpScanned;
}

bool TRCPHistory::ScanOpenWithKeys() {
  for (const UnicodeString& extension : FileExtList) {
    if (!ShowScanItem(extension)) return false;
    const UnicodeString key = UnicodeString(history::kFileExts) + u"\\" + extension;
    if (!history::IsOpenWithKeyEmpty(key)) continue;
    AddError(kOpenWith, {u"existingkey:" + RegKeyToStr(HKEY_CURRENT_USER, key, false),
                         u"caption:" + FileTypeName(extension)});
  }
  return true;
}

bool TRCPHistory::ScanTraces() {
  for (const TTraceListEntry& trace : TraceList) {
    if (!ShowScanItem(trace.TargetName)) return false;
    if (trace.SourceType == tstRegValue || trace.SourceType == tstRegPart) Check_Trace(trace);
  }
  return true;
}

void TRCPHistory::Check_Trace(const TTraceListEntry& trace) {
  const UnicodeString& name = trace.TargetName;
  if (trace.TargetType == tttWindows && (trace.Flags & tfStartMenu) != 0) {
    if (!IsMissingInMenus(name)) return;
    const bool inRoot = ExtractFilePath(name).empty();
    const Kind link = inRoot ? kMenuRootLink : kMenuLink;
    AddTraceError(ExtractFileExt(name).empty() ? kMenuFolder : link, trace);
  } else if (trace.TargetType == tttWindows) {
    if (history::IsTargetMissing(name)) AddTraceError(kWindows, trace);
  } else if (dynamic_cast<const TTCPComDlgOpenSave*>(trace.Plugin) != nullptr) {
    if (!FindFileOrDir(name) && !history::LeadsIntoFile(name)) AddTraceError(kFileDialog, trace);
  } else if (history::IsTargetMissing(name)) {
    AddTraceError(trace.TargetType == tttFileOrFolder ? kApplicationFolder : kApplicationFile,
                  trace);
  }
}

void TRCPHistory::AddTraceError(std::int32_t kind, const TTraceListEntry& trace) {
  const TTraceSourceData& source = trace.SourceData;
  TStringList data{u"existingkey:" + RegKeyToStr(source.root, source.key, false),
                   u"existingvalue:" + source.valueName, u"missingfile:" + trace.TargetName};
  const bool repairs = (trace.Flags & tfRepair) != 0;
  data.push_back(repairs ? u"fixhistory:" + IntToStr(TracePlugins().ReferenceOf(*trace.Plugin))
                         : UnicodeString(u"nil:nil"));
  data.push_back(CleanModeOf(trace.Flags));
  if (kind == kApplicationFile || kind == kApplicationFolder) {
    data.push_back(UnicodeString(u"traceapp:").append(trace.Plugin->ApplicationName()));
  }
  AddError(kind, data);
}

bool TRCPHistory::ScanRecent(TRecentList& list, std::int32_t kind) {
  for (TRecentListEntry& entry : list) {
    entry.Caption = NameWithoutExtension(entry.LinkFile);
    if (!ShowScanItem(entry.Caption)) return false;
    entry.Target = RemoveQuotationMarks(GetShellLinkTarget(entry.LinkFile, false));
    if (entry.Target.empty() || !FileIsOnFixedDrive(entry.Target, false)) continue;
    if (!history::IsTargetMissing(entry.Target)) continue;
    AddError(kind, {u"existingfile:" + entry.LinkFile, u"missingfile:" + entry.Target,
                    u"caption:" + entry.Caption});
  }
  return true;
}

bool TRCPHistory::ScanUrls() {
  for (const TCacheListEntry& entry : CacheList) {
    if (!ShowScanItem(entry.FileName)) return false;
    if (!FileIsOnFixedDrive(entry.FileName, false)) continue;
    // Deliberately announced once more, when the drive is found to be worth a look.
    if (!ShowScanItem(entry.FileName)) return false;
    Check_Url(entry);
  }
  return true;
}

void TRCPHistory::Check_Url(const TCacheListEntry& entry) {
  if (!history::IsAddressFileMissing(entry.FileName)) return;
  // The escapes may be the name itself.
  const UnicodeString asWritten = history::PathAsWritten(entry.Url.substr(kFileUrl.size()));
  if (asWritten != entry.FileName && !history::IsAddressFileMissing(asWritten)) return;
  constexpr int kFirstWithRestriction = 7;
  if (GetIEVersion() >= kFirstWithRestriction && !CanBeQueried(entry.Url)) return;
  if (IEUrlHistory().QueryUrl(entry.Url) != ERRC_SUCCESS) return;
  AddError(kUrl, {u"missingfile:" + entry.FileName, u"url:" + entry.Url});
}

// ---- Cleaning -----------------------------------------------------------------------------

void TRCPHistory::Clean() {
  FixList.clear();
  TRCPlugin::Clean();
  for (TTracePlugin* plugin : FixList) plugin->Repair();
}

bool TRCPHistory::CleanError(const TSweepError& error) {
  RootKey root = RootKey::None;
  UnicodeString key;
  UnicodeString valueName;
  TZmRegOptions opts;
  GetErrorRegValue(error, u"existingkey", u"existingvalue", root, key, valueName, opts);
  switch (error.ErrorType) {
    case kFileDialog:
      DeleteRegValueWrapper(root, key, valueName, opts);
      history::RemoveFromOrder(root, key, valueName, opts);
      break;
    case kOpenWith:
      DeleteRegKeyWrapper(root, key, opts);
      break;
    case kUrl:
      DeleteUrlHistoryEntry(Item(error, u"#url#"));
      break;
    case kApplicationFile:
    case kWindows:
    case kMenuLink:
    case kMenuFolder:
    case kApplicationFolder:
    case kMenuRootLink:
      CleanTrace(error);
      break;
    case kRecent:
    case kOfficeRecent:
      DeleteLinkWrapper(Item(error, u"#existingfile#"), false);
      break;
    default:
      break;
  }
  return true;
}

void TRCPHistory::CleanTrace(const TSweepError& error) {
  TTraceSourceData source;
  TZmRegOptions opts;
  GetErrorRegValue(error, u"existingkey", u"existingvalue", source.root, source.key,
                   source.valueName, opts);
  TTracePlugin* plugin = TracePlugins().ByReference(StrToIntDef(Item(error, u"#fixhistory#"), 0));
  if (plugin != nullptr) {
    if (std::ranges::find(FixList, plugin) == FixList.end()) FixList.push_back(plugin);
    // The repair of an earlier cleaning may have given the name to another entry.
    const UnicodeString target = GetErrorStringValue(error.Data, u"missingfile");
    if (!plugin->Holds(source, target)) return;
    plugin->NoteRemoval(source, target);
  }
  switch (StrToIntDef(Item(error, u"#cleanmode#"), 0)) {
    case kDeleteValue:
      DeleteRegValueWrapper(source.root, source.key, source.valueName, opts);
      break;
    case kEmptyValue:
      EmptyRegValueWrapper(source.root, source.key, source.valueName, opts);
      break;
    default:
      break;
  }
}

void TRCPHistory::EmptyRegValueWrapper(RootKey root, UnicodeView key, UnicodeView valueName,
                                       TZmRegOptions opts) {
  UnicodeString shown(key);
  if (valueName.empty())
    shown.append(u" - (").append(LoadText(texts::framework::kDefaultValue)).append(u")");
  else
    shown.append(u" - ").append(valueName);
  ShowCleanItem(LoadText(texts::framework::kDeletingValue), shown);
  SetRegStringValue(root, key, valueName, u"", opts);
}

void TRCPHistory::DeleteLinkWrapper(UnicodeView fileName, bool parentOnly) {
  if (!parentOnly) {
    ShowCleanItem(LoadText(text::kDeletingLink), fileName);
    if (ZMFileExists(fileName)) {
      BackupFile(fileName);
      ZMDeleteFile(fileName);
    }
  }
  const UnicodeString folder = StripLastKey(fileName);
  // A drive has no parent.
  if (folder == fileName || !IsDirectoryEmpty(folder)) return;
  const auto shellFolder = [](UnicodeView name) {
    return GetRegStringValueDef(HKEY_CURRENT_USER, kShellFolders, name, u"<empty>", {});
  };
  // Deliberately lopsided: only the folder is brought into this form, the registry's texts stay as
  // they were read. So a folder is spared only where these happen to have the same form.
  const UnicodeString compared = IncludeTrailingPathDelimiter(LowerCase(folder));
  const UnicodeString appData = shellFolder(u"AppData");
  if (compared == shellFolder(u"Start Menu") || compared == shellFolder(u"Desktop")) return;
  if (compared.substr(0, appData.size()) == appData) return;
  if (ZMRemoveDir(folder)) DeleteLinkWrapper(folder, true);
}

}  // namespace scrubwell
