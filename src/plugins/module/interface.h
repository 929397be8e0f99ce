// What a host reaches through the loadable module. The host opens the module, looks up
// ScrubwellLoad and ScrubwellUnload and works with the table that the first gives out; nothing else
// is exported, so that a host may hold a copy of the same code without the two getting mixed up.
// Host and module must be built with the same compiler and standard library.
#pragma once

#include "framework/Rc_baseplugin.h"
#include "plugins/system/Browserhelperobjects.h"

namespace scrubwell {

/// Pointers to the package's globals and functions, named as those are. The globals are pointed to
/// rather than copied, because start-up and shut-down change them. Plugins are driven through their
/// virtual operations and fields; what else a class can do stands here as a function, for a host
/// links nothing.
struct TPackageInterface {
  /// Grows when the table changes; a host refuses a module of another version.
  static constexpr std::uint32_t CurrentVersion = 2;
  std::uint32_t Version;

  TPluginList** Plugins;
  TPluginGroupList** PluginGroups;
  TSweepErrorList** SweepErrors;
  THashList** IgnoredProblems;
  THashList** IgnoredCLSIDs;
  THashList** IgnoredInterfaces;
  THashList** IgnoredLinkedCLSIDs;
  THashList** IgnoredTypeLibs;
  THashList** IgnoredAppIds;
  THashList** IgnoredSystemProtectedKeys;
  TRCStatus* RCStatus;
  std::atomic<bool>* StopSearch;
  bool* ShouldReSearch;
  bool* ForceRegDelete;
  std::int32_t* RealSweepErrorCount;
  std::int32_t* CategoryErrors;

  bool (*SetPluginStatus)(UnicodeView id, bool active, std::int32_t group);
  void (*SetAllPluginStatus)(bool active);
  bool (*GetPluginByID)(UnicodeView id, TRCPlugin*& plugin);
  std::int32_t (*GetGroupErrorCount)(std::int32_t group);

  // TPluginList
  void (*SortPluginList)(TPluginList& list);
  void (*RemoveFromPluginList)(TPluginList& list, TRCPlugin* plugin);
  bool (*GetStopSearch)(const TPluginList& list);
  void (*SetStopSearch)(TPluginList& list, bool stop);
  // TSweepErrorList, of the global list
  void (*ClearSweepErrors)();
  std::int32_t (*AddSweepError)(std::unique_ptr<TSweepError> record);
  void (*PutSweepError)(std::int32_t index, std::unique_ptr<TSweepError> record);
  bool (*HasUnfixedSweepError)(UnicodeView pluginID, std::int32_t errorType,
                               std::span<const UnicodeString> data);
  // TRCPlugin
  UnicodeString (*BuildErrorRegKeyParameter)(const TRCPlugin& plugin, UnicodeView key,
                                             TZmRegOptions opts);
  bool (*DeleteRegKeyWrapper)(TRCPlugin& plugin, RootKey root, UnicodeView key, TZmRegOptions opts);
  bool (*DeleteRegValueWrapper)(TRCPlugin& plugin, RootKey root, UnicodeView key,
                                UnicodeView valueName, TZmRegOptions opts);

  void (*SetFixedState)(std::int32_t index, bool fixed);
  void (*SetVisibleState)(std::int32_t index, bool visible);
  bool (*IsErrorVisible)(std::int32_t index);
  bool (*IsErrorSelectedForCleaning)(std::int32_t index);
  UnicodeString (*GetErrorStringValue)(const TStringList& data, std::int32_t high,
                                       UnicodeView name);

  UnicodeString (*InsertData)(UnicodeView pattern, const TStringList& data);
  UnicodeString (*StrOrEmpty)(UnicodeView text);
  UnicodeString (*StrOrEmptyToStr)(UnicodeView text);
  void (*GetErrorRegKey)(const TSweepError& error, UnicodeView itemName, RootKey& root,
                         UnicodeString& key, TZmRegOptions& opts);
  void (*GetErrorRegValue)(const TSweepError& error, UnicodeView keyItemName,
                           UnicodeView valueItemName, RootKey& root, UnicodeString& key,
                           UnicodeString& valueName, TZmRegOptions& opts);
  UnicodeString (*StripLastKey)(UnicodeView path);
  bool (*IsCLSIDKey)(UnicodeView name);

  UnicodeString (*BuildErrorIdentificationString)(const TSweepError& error);
  void (*AddIgnoredProblem)(UnicodeView name, UnicodeView data);
  void (*LoadIgnoredProblems)();
  void (*ClearIgnoredProblems)();
  UnicodeString (*IgnoredProblemsKey)();
  UnicodeString (*BuildIgnoredProblemData)(UnicodeView identification, UnicodeView text1,
                                           UnicodeView text2, UnicodeView text3);
  Status (*StoreIgnoredProblem)(const TSweepError& error, const TIgnoredProblem& entry,
                                bool machine);
  Status (*RemoveIgnoredProblem)(UnicodeView storedName, bool machine);

  void (*ForgetLookups)();
  /// The host's own manager, without items yet.
  std::unique_ptr<TProgressManager> (*CreateProgressManager)();
  /// The host's own list of browser helper objects, not loaded yet.
  std::unique_ptr<TBrowserHelperObjects> (*CreateBrowserHelperObjects)();
};

}  // namespace scrubwell

extern "C" {

/// Starts the package up on the host's platform, with its texts in that language, and gives out the
/// interface. Counted: a nested call only counts and leaves platform and language as they are. Null
/// when the first call brings no platform. The platform is borrowed until the last ScrubwellUnload.
const scrubwell::TPackageInterface* ScrubwellLoad(scrubwell::TPlatform* platform,
                                                  scrubwell::TLanguage language);

/// Shuts the package down when it was called as often as ScrubwellLoad; further calls do nothing.
void ScrubwellUnload();
}
