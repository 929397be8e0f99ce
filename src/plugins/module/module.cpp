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
    .RealSweepErrorCount = &RealSweepErrorCount,
    .CategoryErrors = &CategoryErrors,
    .SetPluginStatus = &SetPluginStatus,
    .SetAllPluginStatus = &SetAllPluginStatus,
    .GetPluginByID = &GetPluginByID,
    .GetGroupErrorCount = &GetGroupErrorCount,
    .SortPluginList = [](TPluginList& list) { list.Sort(); },
    .ClearSweepErrors = [] { SweepErrors->Clear(); },
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
