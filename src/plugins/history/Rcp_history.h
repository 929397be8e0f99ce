// Usage history that leads to files and folders that are gone: lists of Windows and of programs in
// the registry, recent documents, the browser's address history, and empty open-with keys.
#pragma once

#include "framework/Rc_baseplugin.h"
#include "registry/Zmtracecleaner.h"

namespace scrubwell {

class TRCPHistory : public TRCPlugin {
 public:
  TRCPHistory();
  /// Always true: what has gone already counts as repaired, and a failed removal deliberately does
  /// as well.
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;
  /// The cleaning of all plugins, and then one repair of each list that was cleaned and needs it.
  void Clean() override;

  /// Keeps a trace that names a file on a fixed drive and lies in the registry.
  void ScanTraceFound(TTracePlugin& plugin, TTraceSourceType sourceType,
                      const TTraceSourceData& sourceData, TTraceTargetType targetType,
                      TTraceFlags flags, const UnicodeString& targetName);

 private:
  struct TCacheListEntry {
    UnicodeString Url;
    UnicodeString FileName;
  };
  struct TRecentListEntry {
    UnicodeString LinkFile;
    UnicodeString Caption;
    UnicodeString Target;
  };
  struct TTraceListEntry {
    TTracePlugin* Plugin;
    TTraceSourceType SourceType;
    TTraceSourceData SourceData;
    TTraceTargetType TargetType;
    TTraceFlags Flags;
    UnicodeString TargetName;
  };
  using TRecentList = std::vector<TRecentListEntry>;

  void ClearTraceList() { TraceList.clear(); }
  void ClearCacheList() { CacheList.clear(); }
  void ReadUrlHistory();
  static UnicodeString OfficeRecentFolder();
  void SearchTraces();

  bool ScanOpenWithKeys();
  bool ScanTraces();
  bool ScanRecent(TRecentList& list, std::int32_t kind);
  bool ScanUrls();
  void Check_Trace(const TTraceListEntry& trace);
  void Check_Url(const TCacheListEntry& entry);
  void AddTraceError(std::int32_t kind, const TTraceListEntry& trace);

  void CleanTrace(const TSweepError& error);
  void EmptyRegValueWrapper(RootKey root, UnicodeView key, UnicodeView valueName,
                            TZmRegOptions opts);
  void DeleteLinkWrapper(UnicodeView fileName, bool parentOnly);

  TStringList FileExtList;
  std::vector<TTraceListEntry> TraceList;
  std::vector<TCacheListEntry> CacheList;
  TRecentList RecentList;
  TRecentList OfficeRecentList;
  TZMMRU FTraceScanner;
  std::vector<TTracePlugin*> FixList;
};

}  // namespace scrubwell
