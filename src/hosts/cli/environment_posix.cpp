#include "hosts/cli/environment.h"
#include "hosts/report/language.h"

namespace scrubwell::hosts {

std::vector<std::string> ProgramArguments(int argc, const char* const* argv) {
  return {argv, argv + argc};
}

TLanguage PreferredLanguage() {
  return EnvironmentLanguage().value_or(TLanguage::English);
}

}  // namespace scrubwell::hosts
