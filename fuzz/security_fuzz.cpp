// Security descriptors of keys, and the texts of SIDs.
#include <cstdlib>

#include "backends/common/access_check.h"
#include "registry/Stringhelper.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace scrubwell;
  const std::span<const std::uint8_t> data(bytes, size);
  for (const UnicodeView sid : {u"", u"S-1-5-21-1-2-3-1001"}) {
    const Status whole = CheckDescriptor(data, sid, kKeyAllAccess);
    // Who may do everything may do each thing.
    for (const std::uint32_t right : {kRightDelete, kRightSetValue, kRightCreateSubKey}) {
      const Status part = CheckDescriptor(data, sid, right);
      if (whole == Status::Ok && part != Status::Ok) std::abort();
    }
    (void)CheckDescriptor(data, sid, Access::Write);
  }
  (void)SidFromText(FromUtf8({reinterpret_cast<const char*>(bytes), size}));
  return 0;
}
