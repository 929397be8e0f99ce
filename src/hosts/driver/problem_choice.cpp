#include "hosts/driver/problem_choice.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell {

bool ContainsText(UnicodeView text, UnicodeView part) {
  const auto found = std::search(text.begin(), text.end(), part.begin(), part.end(),
                                 [](char16_t a, char16_t b) { return UpCase(a) == UpCase(b); });
  return part.empty() || found != text.end();
}

bool ProblemChoice::Takes(const TSweepError& problem) const {
  bool named = false;
  bool listed = false;
  for (const KindChoice& choice : kinds) {
    if (!SameText(choice.plugin, problem.PluginID)) continue;
    named = true;
    listed = listed || std::find(choice.kinds.begin(), choice.kinds.end(), problem.ErrorType) !=
                           choice.kinds.end();
  }
  if (named && !listed) return false;
  return ContainsText(problem.Caption, text) || ContainsText(problem.ShortDescription, text) ||
         std::any_of(problem.Data.begin(), problem.Data.end(),
                     [this](const UnicodeString& item) { return ContainsText(item, text); });
}

}  // namespace scrubwell
