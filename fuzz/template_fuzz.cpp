// Templates and stored problems: the input is a template and data items, one a line.
#include <cstdint>
#include <cstdlib>

#include "backends/memory/memory_backend.h"
#include "framework/Rc_common.h"
#include "registry/Stringhelper.h"

namespace {

using namespace scrubwell;

struct Start {
  MemoryBackend backend;
  Start() { SetPlatform(&backend.Platform()), InitialiseRcCommon(); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const Start start;
  const UnicodeString text = FromUtf8({reinterpret_cast<const char*>(bytes), size});
  TSweepError problem;
  const std::size_t first = text.find(u'\n');
  const UnicodeString pattern = text.substr(0, first);
  for (std::size_t from = first; from != UnicodeString::npos;) {
    const std::size_t to = text.find(u'\n', from + 1);
    problem.Data.push_back(text.substr(from + 1, to == UnicodeString::npos ? to : to - from - 1));
    from = to;
  }

  const UnicodeString filled = InsertData(pattern, problem.Data);
  // Nothing to fill, nothing changed.
  if (problem.Data.empty() && filled != pattern) std::abort();

  // What is stored for a problem must be found again by the problem.
  const UnicodeString identification = BuildErrorIdentificationString(problem);
  AddIgnoredProblem(u"n", BuildIgnoredProblemData(identification, u"1", pattern, filled));
  // Separators in a file or address item may move the boundary; then nothing is recognised.
  const bool plain =
      identification.find(u"\x1D\x1D") == UnicodeString::npos && !identification.ends_with(u'\x1D');
  if (plain && IgnoredProblems->Get(identification) == nullptr) std::abort();
  AddIgnoredProblem(u"n", text);
  ClearIgnoredProblems();
  return 0;
}
