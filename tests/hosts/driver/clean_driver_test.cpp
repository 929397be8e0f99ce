#include "hosts/driver/clean_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "hosts/driver/problem_id.h"
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
    SetFScanItemCount(1);
    FState = rcpInited;
  }
  void Scan() override {
    ErrorCount = 0;
    if (!ShowScanItem(u"all")) return;
    for (const char16_t letter : letters_) {
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

// Two plugins on an empty Windows; the first knows the letters to k, the second the rest.
struct World : test::World {
  explicit World(UnicodeView items) { litter.items.insert(items.begin(), items.end()); }
  static void Hide(char16_t letter) {
    TSweepError problem;
    problem.Data = {UnicodeString(u"existingkey:32:HKEY_CURRENT_USER\\") + letter};
    TIgnoredProblem entry;
    entry.StoredName = entry.Text1 = letter;
    EXPECT_EQ(StoreIgnoredProblem(problem, entry, false), Status::Ok);
  }

  Litter litter;
  TRCPLitter first{u"TRCPFirst", u"abcdAB12", litter};
  TRCPLitter second{u"TRCPSecond", u"wxyzW", litter};
};

std::string Id(char16_t letter) {
  TSweepError problem;
  problem.PluginID = UnicodeView(u"wxyzW").find(letter) < 5 ? u"Second" : u"First";
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
    for (const char c : std::string("abcdAB12wxyzW")) {
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
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    World world(row.items);
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
    EXPECT_EQ(result.outcome, RunOutcome::Complete);
    EXPECT_EQ(Outcomes(result), row.outcomes);
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

TEST(CleanDriver, StopsAfterTheProblemAtHand) {
  const std::tuple<int, const char*, RunOutcome> rows[] = {
      {1, "a", RunOutcome::Stopped},
      {2, "ab", RunOutcome::Stopped},
      {3, "abx", RunOutcome::Stopped},
      {5, "abxy", RunOutcome::Complete},
  };
  for (const auto& [stopAt, log, outcome] : rows) {
    World world(u"abxy");
    world.litter.stopAt = stopAt;
    EXPECT_EQ(CleanDriver({}).Run({true, {}}, false).outcome, outcome) << stopAt;
    EXPECT_EQ(world.litter.log, log);
    EXPECT_EQ(SweepErrors->Count(), 4) << "the run's own list is back in its place";
  }
}

}  // namespace
}  // namespace scrubwell
