#include "hosts/cli/environment.h"
#include "hosts/cli/windows_text.h"
#include "hosts/report/language.h"

// After the general header.
#include <shellapi.h>

namespace scrubwell::hosts {

// Those that main is given have gone through a code page, which does not know every letter.
std::vector<std::string> ProgramArguments(int argc, const char* const* argv) {
  int count = 0;
  wchar_t** values = CommandLineToArgvW(GetCommandLineW(), &count);
  if (values == nullptr) return {argv, argv + argc};
  std::vector<std::string> arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(Utf8OfWide(values[i]));
  LocalFree(values);
  return arguments;
}

TLanguage PreferredLanguage() {
  const bool german = PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_GERMAN;
  return EnvironmentLanguage().value_or(german ? TLanguage::German : TLanguage::English);
}

}  // namespace scrubwell::hosts
