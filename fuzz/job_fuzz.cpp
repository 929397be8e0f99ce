// A task file is read whole or refused.
#include "formats/job/job.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  scrubwell::job::Job job;
  (void)scrubwell::job::ReadJob({data, size}, job);
  return 0;
}
