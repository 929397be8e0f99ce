// Registry texts: no input breaks the parser, and what it understood reads back the same.
#include <cstdlib>
#include <string_view>

#include "formats/reg/reg_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace scrubwell::reg;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const Document first = Parse(text, {.needsHeader = false});
  if (!first.Ok()) return 0;
  const Document second = Parse(EncodeUtf16(Format(first.keys)));
  if (!second.Ok() || first.keys.size() != second.keys.size()) std::abort();
  for (std::size_t i = 0; i < first.keys.size(); ++i) {
    if (first.keys[i].path != second.keys[i].path) std::abort();
    if (first.keys[i].values.size() != second.keys[i].values.size()) std::abort();
    for (std::size_t j = 0; j < first.keys[i].values.size(); ++j)
      if (!(first.keys[i].values[j].value == second.keys[i].values[j].value)) std::abort();
  }
  return 0;
}
