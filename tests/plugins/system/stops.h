// A scan that is stopped at every one of its items.
#pragma once

#include <gtest/gtest.h>

#include "support/world.h"

namespace scrubwell::test {

/// `announced` items, each with one problem, in a world where the scan finds `all` problems.
template <class Plugin>
void CheckStops(std::string_view registry, std::int32_t weight, int announced, int all) {
  for (int stop = 1; stop <= announced + 1; ++stop) {
    World world(registry);
    auto& plugin = world.Create<Plugin>();
    for (int twice = 0; twice < 2; ++twice) plugin.Init();
    EXPECT_EQ(plugin.ScanWeight, weight);
    plugin.OnScanProgress = [stop](TRCPlugin& self, std::int32_t, UnicodeView, bool) {
      StopSearch = self.FScanItemsDone == stop;
    };
    plugin.Scan();
    // A stop asked for at the last item comes too late.
    EXPECT_EQ(plugin.FState, stop < announced ? rcpInited : rcpScanned) << stop;
    EXPECT_EQ(SweepErrors->Count(), stop < announced ? stop : all) << stop;
  }
}

}  // namespace scrubwell::test
