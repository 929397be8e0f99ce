// Why a problem is one: the evidence, in the forms that the program shows it in.
#pragma once

#include "backends/common/session.h"
#include "hosts/driver/evidence.h"
#include "hosts/report/report.h"

namespace scrubwell::hosts {

/// All that is known of one problem.
struct Explanation {
  ScanReport report;  ///< target and notes
  std::string id;
  std::int32_t index = 0;  ///< of the problem in SweepErrors
  Evidence evidence;
  std::vector<JournalItem> changes;  ///< what a clean would do; none for a hidden problem
  std::vector<JournalProblem> journal;
};

/// UTF-8 for people, harmless for a terminal.
std::string ExplanationText(const Explanation& explanation, const TextLook& look);
/// One object; docs/json.md describes it.
std::string ExplanationJson(const Explanation& explanation);

}  // namespace scrubwell::hosts
