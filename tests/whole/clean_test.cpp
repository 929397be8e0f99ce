// The whole sample cleaned and put back.
#include <gtest/gtest.h>

#include "backends/offline/clean_session.h"
#include "whole/sample.h"

namespace scrubwell::test {
namespace {

struct Left {
  const char* what;  ///< plugin, kind and caption
  const char* why;   ///< for the reader
};

// What a clean of everything leaves, each with the rule that leaves it.
constexpr Left kLeft[] = {
    {"ActiveXCOM 3 Aquila Speller",
     "which class could replace another one is not for a cleaner to say"},
};

Findings Scan(const DiskSample& sample) {
  const OfflineOpenResult opened = OfflineBackend::Open({sample.Windows(), {}, {}});
  EXPECT_NE(opened.backend, nullptr) << opened.error;
  const Package package(opened.backend->Platform());
  return Package::Scan();
}

void CleanAll(const DiskSample& sample) {
  CleanOptions options;
  options.target.folder = sample.Windows();
  options.backupFolder = sample.Backups();
  const CleanOpenResult opened = CleanSession::Open(options);
  ASSERT_NE(opened.session, nullptr) << opened.error;
  CleanSession& session = *opened.session;
  {
    const Package package(session.Backend().Platform());
    CleanDriver driver(
        {[&] { session.BeginRound(); },
         [&](const CleanedProblem& problem) {
           session.BeginProblem({problem.id, problem.plugin, problem.kind, problem.caption, false});
         },
         [&](const CleanedProblem&, bool repaired) { session.EndProblem(repaired); }});
    EXPECT_EQ(driver.Run({.all = true, .ids = {}, .choice = {}}, true).outcome,
              RunOutcome::Complete);
  }
  const CommitResult result = session.Commit();
  EXPECT_EQ(result.failure, CleanFailure::None) << result.error;
}

TEST(Whole, ACleanLeavesWhatTheRulesLeaveAndUndoBringsAllBack) {
  const DiskSample sample;
  const Findings first = Scan(sample);
  CleanAll(sample);
  std::string left;
  for (const auto& [digest, what] : Scan(sample)) left += what.substr(0, what.find(" | ")) + "\n";
  std::string expected;
  for (const Left& row : kLeft) expected += std::string(row.what) + "\n";
  EXPECT_EQ(left, expected);

  UndoOptions undo;
  undo.target.folder = sample.Windows();
  undo.backupFolder = sample.Backups();
  const UndoResult undone = Undo(undo);
  EXPECT_EQ(undone.failure, CleanFailure::None) << undone.error;
  for (const UndoItem& item : undone.items) {
    EXPECT_TRUE(item.outcome == UndoOutcome::Restored || item.outcome == UndoOutcome::AlreadyThere)
        << item.why;
  }
  EXPECT_EQ(Difference(first, Scan(sample)), "");
}

}  // namespace
}  // namespace scrubwell::test
