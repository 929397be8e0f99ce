// Reports of an earlier scan, which anybody may have written.
#include <cstdlib>
#include <string>

#include "hosts/report/previous_scan.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace scrubwell;
  hosts::PreviousScan previous;
  const auto failure = previous.Read(std::string(reinterpret_cast<const char*>(bytes), size));
  if (failure != hosts::PreviousFailure::None && previous.Count() != 0) std::abort();
  TSweepError problem;
  problem.PluginID = u"SharedFiles";
  problem.ErrorType = 1;
  problem.Data = {u"existingvalue:C:\\gone.dll"};
  const bool known = previous.Knows(problem, u"anna") || previous.Knows(problem, u"");
  if (known && previous.Count() == 0) std::abort();
  return 0;
}
