// A shortcut either names a target or doesn't; damage is never a crash. The item list parser is
// fed on its own as well, because few mutations get to it through a whole file.
#include <cstdlib>

#include "formats/lnk/item_list.h"
#include "formats/lnk/lnk.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace lnk = scrubwell::lnk;
  scrubwell::UnicodeString path;
  const bool placed = lnk::PathOfItemList({data, size}, path) == scrubwell::Status::Ok;
  if (placed == path.empty()) std::abort();
  lnk::Link link;
  const bool found = lnk::ReadLink({data, size}, 1252, link) == scrubwell::Status::Ok;
  if (found == link.target.empty()) std::abort();
  return 0;
}
