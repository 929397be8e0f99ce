#include "plugins/module/interface.h"
#include "plugins/package.h"

namespace {

using namespace scrubwell;

int loads = 0;

constexpr TPackageInterface kInterface{
    .Version = TPackageInterface::CurrentVersion,
    .Plugins = &Plugins,
    .PluginGroups = &PluginGroups,
    .SweepErrors = &SweepErrors,
    .IgnoredProblems = &IgnoredProblems,
    .IgnoredCLSIDs = &IgnoredCLSIDs,
    .IgnoredInterfaces = &IgnoredInterfaces,
    .IgnoredLinkedCLSIDs = &IgnoredLinkedCLSIDs,
    .IgnoredTypeLibs = &IgnoredTypeLibs,
    .IgnoredAppIds = &IgnoredAppIds,
    .IgnoredSystemProtectedKeys = &IgnoredSystemProtectedKeys,
    .RCStatus = &RCStatus,
    .StopSearch = &StopSearch,
    .ShouldReSearch = &ShouldReSearch,
    .ForceRegDelete = &ForceRegDelete,
    .RealSweepErrorCount = &RealSweepErrorCount,
    .CategoryErrors = &CategoryErrors,
    .SetPluginStatus = &SetPluginStatus,
    .SetAllPluginStatus = &SetAllPluginStatus,
    .GetPluginByID = &GetPluginByID,
    .GetGroupErrorCount = &GetGroupErrorCount,
    .SortPluginList = [](TPluginList& list) { list.Sort(); },
    .RemoveFromPluginList = [](TPluginList& list, TRCPlugin* plugin) { list.Remove(plugin); },
    .GetStopSearch = [](const TPluginList& list) { return list.GetStopSearch(); },
    .SetStopSearch = [](TPluginList& list, bool stop) { list.SetStopSearch(stop); },
    .ClearSweepErrors = [] { SweepErrors->Clear(); },
    .AddSweepError =
        [](std::unique_ptr<TSweepError> record) { return SweepErrors->Add(std::move(record)); },
    .PutSweepError =
        [](std::int32_t index, std::unique_ptr<TSweepError> record) {
          SweepErrors->Put(index, std::move(record));
        },
    .HasUnfixedSweepError =
        [](UnicodeView pluginID, std::int32_t errorType, std::span<const UnicodeString> data) {
          return SweepErrors->HasUnfixed(pluginID, errorType, data);
        },
    .BuildErrorRegKeyParameter =
        [](const TRCPlugin& plugin, UnicodeView key, TZmRegOptions opts) {
          return plugin.BuildErrorRegKeyParameter(key, opts);
        },
    .DeleteRegKeyWrapper =
        [](TRCPlugin& plugin, RootKey root, UnicodeView key, TZmRegOptions opts) {
          return plugin.DeleteRegKeyWrapper(root, key, opts);
        },
    .DeleteRegValueWrapper =
        [](TRCPlugin& plugin, RootKey root, UnicodeView key, UnicodeView valueName,
           TZmRegOptions opts) { return plugin.DeleteRegValueWrapper(root, key, valueName, opts); },
    .SetFixedState = &SetFixedState,
    .SetVisibleState = &SetVisibleState,
    .IsErrorVisible = &IsErrorVisible,
    .IsErrorSelectedForCleaning = &IsErrorSelectedForCleaning,
    .GetErrorStringValue = &GetErrorStringValue,
    .InsertData = &InsertData,
    .StrOrEmpty = &StrOrEmpty,
    .StrOrEmptyToStr = &StrOrEmptyToStr,
    .GetErrorRegKey = &GetErrorRegKey,
    .GetErrorRegValue = &GetErrorRegValue,
    .StripLastKey = &StripLastKey,
    .IsCLSIDKey = &IsCLSIDKey,
    .BuildErrorIdentificationString = &BuildErrorIdentificationString,
    .AddIgnoredProblem = &AddIgnoredProblem,
    .LoadIgnoredProblems = &LoadIgnoredProblems,
    .ClearIgnoredProblems = &ClearIgnoredProblems,
    .IgnoredProblemsKey = &IgnoredProblemsKey,
    .BuildIgnoredProblemData = &BuildIgnoredProblemData,
    .StoreIgnoredProblem = &StoreIgnoredProblem,
    .RemoveIgnoredProblem = &RemoveIgnoredProblem,
    .ForgetLookups = &ForgetLookups,
    .CreateProgressManager = [] { return std::make_unique<TProgressManager>(); },
    .CreateBrowserHelperObjects = [] { return std::make_unique<TBrowserHelperObjects>(); },
};

}  // namespace

const TPackageInterface* ScrubwellLoad(TPlatform* platform, TLanguage language) {
  if (loads == 0) {
    if (platform == nullptr) return nullptr;
    SetPlatform(platform);
    SetPackageLanguage(language);
  }
  ++loads;
  LoadPackage();
  return &kInterface;
}

void ScrubwellUnload() {
  if (loads == 0) return;
  UnloadPackage();
  if (--loads == 0) SetPlatform(nullptr);
}
