#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "hosts/driver/clean_driver.h"
#include "hosts/driver/problem_id.h"
#include "hosts/driver/scan_driver.h"
#include "support/world.h"

namespace scrubwell {
namespace {

constexpr TProblemKind TestKinds[] = {{1, 0, {u"x", u"x"}, {u"y", u"y"}, {u"z", u"z"}}};

// What there is to find, one letter an item, and what was done to it. Upper-case letters can't be
// repaired; digits claim to be, and stay. Repairing "c" takes "w" with it, and leaves "d" behind.
struct Litter {
  std::multiset<char16_t> items;
  std::string log;
  int stopAt = -1;  // how many repairs until a stop comes in
};

class TRCPLitter : public TRCPlugin {
 public:
  TRCPLitter(UnicodeView className, UnicodeView letters, Litter& litter)
      : TRCPlugin({className, -1, 0, {u"a", u"a"}, {u"b", u"b"}, {u"c", u"c"}}, TestKinds),
        letters_(letters),
        litter_(litter) {}
  void Init() override {
    SetFScanItemCount(static_cast<std::int32_t>(letters_.size()));
    FState = rcpInited;
  }
  void Scan() override {
    ErrorCount = 0;
    for (const char16_t letter : letters_) {
      if (!ShowScanItem(UnicodeString(1, letter))) return;
      if (!litter_.items.contains(letter)) continue;
      AddError(1, {UnicodeString(u"existingkey:32:HKEY_CURRENT_USER\\") + letter});
    }
    FState = rcpScanned;
  }
  bool CleanError(const TSweepError& error) override {
    const char16_t letter = error.Data[0].back();
    litter_.log += static_cast<char>(letter);
    if (letter >= u'A' && letter <= u'Z') return false;
    if (letter > u'9') litter_.items.erase(letter);
    if (letter == u'c') {
      litter_.items.erase(u'w');
      litter_.items.insert(u'd');
      ShouldReSearch = true;
    }
    if (--litter_.stopAt == 0) StopSearch = true;
    return true;
  }

 private:
  UnicodeView letters_;
  Litter& litter_;
};

// Three plugins on an empty Windows, of 6, 0 and 4 letters.
struct World : test::World {
  explicit World(UnicodeView items = u"abcdA1wxyz") {
    litter.items.insert(items.begin(), items.end());
  }
  static void Hide(char16_t letter) {
    TSweepError problem;
    problem.Data = {UnicodeString(u"existingkey:32:HKEY_CURRENT_USER\\") + letter};
    TIgnoredProblem entry;
    entry.StoredName = entry.Text1 = letter;
    EXPECT_EQ(StoreIgnoredProblem(problem, entry, false), Status::Ok);
  }

  Litter litter;
  TRCPLitter first{u"TRCPFirst", u"abcdA1", litter};
  TRCPLitter empty{u"TRCPEmpty", u"", litter};
  TRCPLitter second{u"TRCPSecond", u"wxyz", litter};
};

std::string Id(char16_t letter) {
  TSweepError problem;
  problem.PluginID = letter >= u'w' ? u"Second" : u"First";
  problem.ErrorType = 1;
  problem.Data = {UnicodeString(u"existingkey:32:HKEY_CURRENT_USER\\") + letter};
  return ProblemDigest(problem).substr(0, 12);
}

// "a fixed, B failed, ...": each problem with its outcome and, beyond the first, its round.
std::string Outcomes(const CleanResult& result) {
  static constexpr const char* names[] = {" fixed", " failed", " still found", " gone"};
  std::string text;
  for (const CleanedProblem& problem : result.problems) {
    std::string letter = "?";
    for (const char c : std::string("abcdA1wxyz")) {
      if (Id(static_cast<char16_t>(c)) == problem.id) letter = c;
    }
    text += (text.empty() ? "" : ", ") + letter + names[static_cast<int>(problem.outcome)];
    if (problem.round > 1) text += " in " + std::to_string(problem.round);
  }
  return text;
}

TEST(CleanDriver, RepairsWhatWasSelectedAndSaysWhatCameOfIt) {
  struct Row {
    const char* name;
    UnicodeView items;
    const char* select;  // empty: all
    bool untilClean;
    const char* outcomes;
    const char* log;  // what CleanError was called for
    std::size_t left;
    int rounds;
    int stopAt = -1;
  };
  const Row rows[] = {
      {"nothing there", u"", "", false, "", "", 0, 0},
      {"nothing there, on and on", u"", "", true, "", "", 0, 0},
      {"in list order", u"xba", "", false, "a fixed, b fixed, x fixed", "abx", 0, 1},
      {"one of each plugin", u"abxy", "ya", false, "a fixed, y fixed", "ay", 0, 1},
      {"failures are left", u"aAx", "", false, "a fixed, A failed, x fixed", "aAx", 1, 1},
      {"claims are looked at", u"1a", "", false, "a fixed, 1 still found", "a1", 1, 1},
      {"gone with another", u"cwx", "", false, "c fixed, w gone, x fixed", "cx", 0, 1},
      {"chain", u"cx", "", true, "c fixed, x fixed, d fixed in 2", "cxd", 0, 2},
      {"a chain is nobody's choice", u"cx", "c", true, "c fixed", "c", 0, 1},
      {"no use in going on", u"aA1", "", true, "a fixed, A failed in 2, 1 still found in 2",
       "aA1A1", 2, 2},
      {"stopped at once", u"abxy", "", false, "", "a", 0, 1, 1},
      {"stopped in the second", u"abxy", "", false, "", "abx", 0, 1, 3},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    World world(row.items);
    world.litter.stopAt = row.stopAt;
    CleanSelection selection{*row.select == '\0', {}};
    for (const char* c = row.select; *c != '\0'; ++c) {
      selection.ids.push_back(Id(static_cast<char16_t>(*c)));
    }
    std::string events;
    CleanDriver driver({[&] { events += '|'; }, [&](const CleanedProblem&) { events += '('; },
                        [&](const CleanedProblem&, bool repaired) {
                          events += world.litter.log.back();
                          events += repaired ? ')' : '!';
                        }});
    const CleanResult result = driver.Run(selection, row.untilClean);
    EXPECT_EQ(result.selection.failure, SelectFailure::None);
    EXPECT_EQ(result.outcome, row.stopAt > 0 ? RunOutcome::Stopped : RunOutcome::Complete);
    // The run's own list is back in its place.
    EXPECT_TRUE(row.untilClean || SweepErrors->Count() == static_cast<int>(row.items.size()));
    EXPECT_EQ(row.stopAt > 0 ? "" : Outcomes(result), row.outcomes);
    EXPECT_EQ(world.litter.log, row.log);
    EXPECT_EQ(result.Left(), row.left);
    EXPECT_EQ(result.rounds, row.rounds);
    // Every repair lies in the brackets of its own problem.
    std::string bracketed;
    for (const char c : events) {
      if (std::string("()!|").find(c) == std::string::npos) bracketed += c;
    }
    EXPECT_EQ(bracketed, row.log);
    EXPECT_EQ(std::count(events.begin(), events.end(), '|'), row.rounds);
    EXPECT_EQ(result.shouldReSearch,
              !row.untilClean && std::string(row.log).find('c') != std::string::npos);
    EXPECT_FALSE(world.first.OnBeforeRepair || world.first.OnScanProgress);
  }
}

TEST(CleanDriver, RefusesWhatCantBeSelected) {
  const std::string a = Id(u'a');
  const std::pair<std::string, SelectFailure> rows[] = {
      {a, SelectFailure::None},           {"000000000000", SelectFailure::Unknown},
      {"", SelectFailure::Unknown},       {a.substr(0, 11), SelectFailure::Unknown},
      {a + "zz", SelectFailure::Unknown}, {Id(u'b'), SelectFailure::Hidden},
      {Id(u'z'), SelectFailure::Unknown},
  };
  for (const auto& [id, failure] : rows) {
    SCOPED_TRACE(id);
    World world(u"abx");
    world.Hide(u'b');
    const CleanResult result = CleanDriver({}).Run({false, {Id(u'x'), id}}, false);
    EXPECT_EQ(result.selection.failure, failure);
    EXPECT_EQ(result.selection.id, failure == SelectFailure::None ? "" : id);
    EXPECT_EQ(world.litter.log, failure == SelectFailure::None ? "ax" : "");
    EXPECT_EQ(result.hidden, 1U);
  }
  World world(u"abx");
  world.Hide(u'b');
  EXPECT_EQ(Outcomes(CleanDriver({}).Run({true, {}}, false)), "a fixed, x fixed");
  EXPECT_EQ(Outcomes(CleanDriver({}).Run({false, {a}}, false, true)), "") << "it may be missing";
}

TEST(ScanDriver, RunsWhatWasChosenAndStopsAtOnce) {
  // The number is that of the item after which the stop comes in; 0: before the run, -1: never.
  const std::tuple<const char*, std::vector<UnicodeString>, int, std::int32_t, RunOutcome,
                   std::int32_t>
      rows[] = {
          {"all", {}, -1, 10, RunOutcome::Complete, 1000},
          {"one, letter case ignored", {u"SECOND"}, -1, 4, RunOutcome::Complete, 1000},
          {"two out of order", {u"Second", u"First"}, -1, 10, RunOutcome::Complete, 1000},
          {"nothing to do", {u"Empty"}, -1, 0, RunOutcome::Complete, -1},
          {"stopped before", {}, 0, 0, RunOutcome::Stopped, -1},
          {"stopped in the first", {}, 2, 2, RunOutcome::Stopped, 200},
          {"stopped in the last", {}, 9, 9, RunOutcome::Stopped, 900},
          {"stopped after everything", {}, 10, 10, RunOutcome::Complete, 1000},
          {"stopped between two", {}, 6, 6, RunOutcome::Stopped, 600},
      };
  for (const auto& [name, chosen, stopAt, problems, outcome, lastPromille] : rows) {
    SCOPED_TRACE(name);
    World world;
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
  World world;
  ScanDriver driver;
  UnicodeString unknown;
  EXPECT_FALSE(ChoosePlugins(std::vector<UnicodeString>{u"First", u"Frist"}, unknown));
  EXPECT_EQ(unknown, u"Frist");
  EXPECT_TRUE(world.second.Active) << "a wrong choice changes nothing";

  driver.Scan();
  ShouldReSearch = true;
  // The second run finds one of the ten on the ignore list.
  world.Hide(u'x');
  ASSERT_TRUE(ChoosePlugins({}, unknown));
  driver.Scan();
  EXPECT_EQ(SweepErrors->Count(), 10);
  EXPECT_EQ(RealSweepErrorCount, 9);
  EXPECT_EQ(CategoryErrors, 9);
  EXPECT_FALSE(ShouldReSearch);
  EXPECT_EQ(driver.Progress().TotalItems(), 10);

  ASSERT_TRUE(ChoosePlugins(std::vector<UnicodeString>{u"Second"}, unknown));
  driver.Scan();
  EXPECT_EQ(world.first.ErrorCount, 0) << "a plugin left out keeps no count of another run";
  EXPECT_EQ(world.first.FState, rcpUnknown);
}

}  // namespace
}  // namespace scrubwell
