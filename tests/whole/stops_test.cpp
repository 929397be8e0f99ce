// Every scanner over the sample, stopped at each of its items.
#include <gtest/gtest.h>

#include "framework/Rc_common.h"
#include "registry/Stringhelper.h"
#include "whole/sample.h"

namespace scrubwell::test {
namespace {

// The number of problems each time an item was announced, and in the end.
std::vector<std::int32_t> Scan(TRCPlugin& plugin, std::size_t stopAt) {
  SweepErrors->Clear();
  StopSearch = false;
  std::vector<std::int32_t> problems;
  plugin.OnScanProgress = [&](TRCPlugin&, std::int32_t, UnicodeView, bool) {
    problems.push_back(SweepErrors->Count());
    StopSearch = problems.size() == stopAt;
  };
  plugin.Init();
  plugin.Scan();
  plugin.OnScanProgress = nullptr;
  problems.push_back(SweepErrors->Count());
  return problems;
}

TEST(Stops, KeepWhatWasFoundByThen) {
  MemorySample sample;
  const Package package(sample.Platform());
  for (TRCPlugin* const plugin : *Plugins) {
    const std::string id = ToUtf8(plugin->FPluginID);
    SCOPED_TRACE(id);
    const std::vector<std::int32_t> whole = Scan(*plugin, 0);
    EXPECT_EQ(plugin->FState, rcpScanned);
    // Only the keys are announced there, and each phase goes on with what it has.
    if (id == "SoftwareInstalled") continue;
    for (std::size_t stop = 1; stop < whole.size(); ++stop) {
      const std::vector<std::int32_t> stopped = Scan(*plugin, stop);
      EXPECT_EQ(stopped.size(), stop + 1);
      EXPECT_EQ(stopped.back(), whole[stop]) << stop;
      // A stop asked for at the last item comes too late; the cache of uninstallers is passed over.
      const bool complete = stop + 1 == whole.size();
      if (id != "Uninstall") {
        EXPECT_EQ(plugin->FState, complete ? rcpScanned : rcpInited) << stop;
      }
    }
  }
}

}  // namespace
}  // namespace scrubwell::test
