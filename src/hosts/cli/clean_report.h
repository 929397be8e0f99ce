// What a clean will do, has done and what was put back, in the forms that the program shows it in.
#pragma once

#include <string>
#include <vector>

#include "backends/common/session.h"
#include "hosts/driver/clean_driver.h"
#include "hosts/report/report.h"

namespace scrubwell::hosts {

/// One pass over an installation, with everything that its platform had to tell.
struct CleanReport {
  TargetFacts target;
  CleanResult result;
  std::vector<JournalProblem> journal;
  std::vector<JournalItem> items;
  TStringList notes;
  bool dryRun = false;
  CommitResult commit;      ///< empty for a dry run
  std::string undoCommand;  ///< puts all of it back, ready for the shell
};

/// The changes, each below the problem it is made for. The texts are UTF-8 for people.
std::string PlanText(const CleanReport& report, std::size_t width);
/// What became of the problems. With `withChanges` the changes stand below them once more.
std::string ResultText(const CleanReport& report, std::size_t width, bool withChanges);
/// Plan and result in one object; docs/json.md describes it.
std::string CleanJson(const CleanReport& report);

/// "345 B", "1.2 KB", "17 MB".
std::string SizeText(std::uint64_t bytes);
std::string SessionsText(const std::vector<SessionInfo>& sessions);
std::string SessionsJson(const std::vector<SessionInfo>& sessions);
std::string SessionText(const SessionContent& session);
std::string SessionJson(const SessionContent& session);
std::string UndoText(const UndoResult& result, std::size_t width);
std::string UndoJson(const UndoResult& result);

// ---- Parts that other reports use -----------------------------------------------------------

/// A line for each change.
std::string ChangesText(const std::vector<JournalItem>& items);
/// The changes as an array.
void WriteChanges(JsonWriter& json, const std::vector<JournalItem>& items,
                  const std::vector<JournalProblem>& problems);

// ---- Parts that both forms share ------------------------------------------------------------

/// For each change, whether it removes a key only because an earlier change for the same problem
/// has left it empty.
std::vector<bool> EmptiedParents(const std::vector<JournalItem>& items);
/// The id of the problem that the change was made for; empty when there is none.
std::string ProblemOf(const JournalItem& item, const std::vector<JournalProblem>& problems);

}  // namespace scrubwell::hosts
