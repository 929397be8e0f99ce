#include "hosts/driver/scan_driver.h"

#include <algorithm>
#include <utility>

#include "registry/Stringhelper.h"

namespace scrubwell {

namespace {

void ResetRun() {
  ForgetLookups();
  SweepErrors->Clear();
  RealSweepErrorCount = 0;
  CategoryErrors = 0;
  ShouldReSearch = false;
  for (TRCPlugin* plugin : *Plugins) {
    plugin->ErrorCount = 0;
    plugin->FState = rcpUnknown;
  }
  ClearIgnoredProblems();
  LoadIgnoredProblems();
}

// Takes the callbacks off again, also when a plugin throws: they refer to the driver.
class CallbackGuard {
 public:
  CallbackGuard() = default;
  ~CallbackGuard() {
    for (TRCPlugin* plugin : *Plugins) plugin->OnScanProgress = {};
  }
  CallbackGuard(const CallbackGuard&) = delete;
  CallbackGuard& operator=(const CallbackGuard&) = delete;
};

}  // namespace

TRCPlugin* FindPlugin(UnicodeView id) {
  const auto it = std::find_if(Plugins->begin(), Plugins->end(), [id](const TRCPlugin* plugin) {
    return SameText(plugin->FPluginID, id);
  });
  return it == Plugins->end() ? nullptr : *it;
}

bool ChoosePlugins(std::span<const UnicodeString> ids, UnicodeString& unknown) {
  for (const UnicodeString& id : ids) {
    if (FindPlugin(id) == nullptr) {
      unknown = id;
      return false;
    }
  }
  SetAllPluginStatus(ids.empty());
  for (const UnicodeString& id : ids) FindPlugin(id)->Active = true;
  return true;
}

ScanDriver::ScanDriver(RunProgressEvent onProgress) : onProgress_(std::move(onProgress)) {}

RunOutcome ScanDriver::Scan() {
  ResetRun();
  RCStatus = RCS_Scanning;
  const CallbackGuard guard;
  const std::vector<TRCPlugin*> active = InitActivePlugins();
  for (TRCPlugin* plugin : active) {
    if (StopSearch) break;
    Attach(*plugin);
    progress_.BeginItem(plugin->FPluginID);
    plugin->Scan();
    progress_.EndItem(plugin->FPluginID);
  }
  // A stop that came after the last item has cut nothing off.
  const bool complete = std::all_of(active.begin(), active.end(), [](const TRCPlugin* plugin) {
    return plugin->FState == rcpScanned;
  });
  RCStatus = complete ? RCS_WaitingForUser : RCS_ScanAborted;
  return complete ? RunOutcome::Complete : RunOutcome::Stopped;
}

// All weights are needed before the first plugin scans, or the overall figure would run backwards.
std::vector<TRCPlugin*> ScanDriver::InitActivePlugins() {
  progress_.Clear();
  std::vector<TRCPlugin*> active;
  for (TRCPlugin* plugin : *Plugins) {
    if (!plugin->Active) continue;
    active.push_back(plugin);
    if (StopSearch) continue;
    plugin->Init();
    progress_.AddItem(plugin->FPluginID, plugin->FScanItemCount, plugin->ScanWeight);
  }
  return active;
}

// Plugins report every item, but the combined figure only has to be worked out again when the
// plugin's own per-mille step changes.
void ScanDriver::Attach(TRCPlugin& plugin) {
  if (!onProgress_) return;
  plugin.OnScanProgress = [this, last = std::int32_t{-1}, total = std::int32_t{0}](
                              TRCPlugin& sender, std::int32_t promille, UnicodeView item,
                              bool mustDisplay) mutable {
    if (promille != last) {
      last = promille;
      progress_.SetProgress(sender.FPluginID, promille);
      total = progress_.GetTotalProgress();
    }
    onProgress_({total, &sender, item, mustDisplay});
  };
}

}  // namespace scrubwell
