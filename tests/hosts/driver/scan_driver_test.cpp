#include "hosts/driver/scan_driver.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/world.h"

namespace scrubwell {
namespace {

constexpr TProblemKind TestKinds[] = {{1, 0, {u"x", u"x"}, {u"y", u"y"}, {u"z", u"z"}}};

// Reports one problem an item.
class TRCPProbe : public TRCPlugin {
 public:
  TRCPProbe(UnicodeView className, std::int32_t items)
      : TRCPlugin({className, -1, 0, {u"a", u"a"}, {u"b", u"b"}, {u"c", u"c"}}, TestKinds),
        items_(items) {}
  void Init() override {
    SetFScanItemCount(items_);
    FState = rcpInited;
  }
  void Scan() override {
    ErrorCount = 0;
    for (std::int32_t i = 0; i < items_; ++i) {
      const UnicodeString name = {static_cast<char16_t>(u'a' + i)};
      if (!ShowScanItem(name)) return;
      AddError(1, {u"existingkey:32:HKEY_CURRENT_USER\\" + FPluginID + name});
    }
    FState = rcpScanned;
  }
  bool CleanError(const TSweepError&) override { return false; }

 private:
  std::int32_t items_;
};

// Three plugins of 4, 0 and 6 items on an empty Windows.
struct Probes : test::World {
  TRCPProbe first{u"TRCPFirst", 4};
  TRCPProbe empty{u"TRCPEmpty", 0};
  TRCPProbe last{u"TRCPLast", 6};
};

TEST(ScanDriver, RunsWhatWasChosenAndStopsAtOnce) {
  // The number is that of the item after which the stop comes in; 0: before the run, -1: never.
  const std::tuple<const char*, std::vector<UnicodeString>, int, std::int32_t, RunOutcome,
                   std::int32_t>
      rows[] = {
          {"all", {}, -1, 10, RunOutcome::Complete, 1000},
          {"one, letter case ignored", {u"LAST"}, -1, 6, RunOutcome::Complete, 1000},
          {"two out of order", {u"Last", u"First"}, -1, 10, RunOutcome::Complete, 1000},
          {"nothing to do", {u"Empty"}, -1, 0, RunOutcome::Complete, -1},
          {"stopped before", {}, 0, 0, RunOutcome::Stopped, -1},
          {"stopped in the first", {}, 2, 2, RunOutcome::Stopped, 200},
          {"stopped in the last", {}, 9, 9, RunOutcome::Stopped, 900},
          {"stopped after everything", {}, 10, 10, RunOutcome::Complete, 1000},
          {"stopped between two", {}, 4, 4, RunOutcome::Stopped, 400},
      };
  for (const auto& [name, chosen, stopAt, problems, outcome, lastPromille] : rows) {
    SCOPED_TRACE(name);
    Probes probes;
    UnicodeString unknown;
    ASSERT_TRUE(ChoosePlugins(chosen, unknown));
    int itemsLeft = stopAt;
    std::vector<std::int32_t> steps;
    ScanDriver driver([&](const RunProgress& progress) {
      steps.push_back(progress.promille);
      if (--itemsLeft == 0) StopSearch = true;
    });
    StopSearch = stopAt == 0;
    EXPECT_EQ(driver.Scan(), outcome);
    EXPECT_EQ(SweepErrors->Count(), problems);
    EXPECT_EQ(RCStatus, outcome == RunOutcome::Complete ? RCS_WaitingForUser : RCS_ScanAborted);
    EXPECT_EQ(steps.empty() ? -1 : steps.back(), lastPromille);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    for (const TRCPlugin* plugin : *Plugins) EXPECT_FALSE(plugin->OnScanProgress);
  }
}

TEST(ScanDriver, EachRunStartsAfresh) {
  Probes probes;
  ScanDriver driver;
  UnicodeString unknown;
  EXPECT_FALSE(ChoosePlugins(std::vector<UnicodeString>{u"First", u"Frist"}, unknown));
  EXPECT_EQ(unknown, u"Frist");
  EXPECT_TRUE(probes.last.Active) << "a wrong choice changes nothing";

  driver.Scan();
  ShouldReSearch = true;
  // The second run finds one of the ten on the ignore list.
  TIgnoredProblem entry;
  entry.StoredName = entry.Text1 = u"P";
  ASSERT_EQ(StoreIgnoredProblem((*SweepErrors)[0], entry, false), Status::Ok);
  ASSERT_TRUE(ChoosePlugins({}, unknown));
  driver.Scan();
  EXPECT_EQ(SweepErrors->Count(), 10);
  EXPECT_EQ(RealSweepErrorCount, 9);
  EXPECT_EQ(CategoryErrors, 9);
  EXPECT_FALSE(ShouldReSearch);
  EXPECT_EQ(driver.Progress().TotalItems(), 10);

  ASSERT_TRUE(ChoosePlugins(std::vector<UnicodeString>{u"Last"}, unknown));
  driver.Scan();
  EXPECT_EQ(probes.first.ErrorCount, 0) << "a plugin left out keeps no count of another run";
  EXPECT_EQ(probes.first.FState, rcpUnknown);
}

}  // namespace
}  // namespace scrubwell
