// A record goes whole or not at all, and what it leaves behind can be read.
#include <cstdlib>

#include "formats/msiecf/msiecf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace msiecf = scrubwell::msiecf;
  using scrubwell::Status;
  scrubwell::Bytes file(data, data + size);
  std::vector<msiecf::UrlRecord> records;
  if (msiecf::ReadUrls(file, records) != Status::Ok) return 0;
  for (const msiecf::UrlRecord& record : records) {
    const scrubwell::Bytes before = file;
    const Status status = msiecf::EraseRecord(file, record.location);
    if ((status == Status::Ok) == (file == before)) std::abort();
  }
  std::vector<msiecf::UrlRecord> rest;
  if (msiecf::ReadUrls(file, rest) != Status::Ok || rest.size() > records.size()) std::abort();
  return 0;
}
