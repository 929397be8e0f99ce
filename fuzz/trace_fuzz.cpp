// Values of usage histories: the first byte chooses the source, the second the length of the key's
// name, which follows; the rest is the value's data. What was taken out must not be found again.
#include <algorithm>
#include <cstdlib>

#include "backends/memory/memory_backend.h"
#include "registry/TraceForms.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace scrubwell;
  static MemoryBackend backend;
  SetPlatform(&backend.Platform());
  if (size < 2) return 0;
  const std::size_t sourceCount = TraceSources().size();
  const TTraceSource& source = TraceSources()[bytes[0] % sourceCount];
  const std::size_t start = std::min(size, std::size_t{2} + bytes[1] % 32U);
  const UnicodeString key(bytes + 2, bytes + start);
  for (const std::uint32_t type : {REGT_SZ, REGT_BINARY, REGT_MULTI_SZ}) {
    RegValue value{key, type, Bytes(bytes + start, bytes + size)};
    std::vector<traces::Target> targets;
    traces::ReadTargets(source, key, value, targets);
    if (targets.empty() || !traces::HoldsParts(source.form)) continue;
    const UnicodeString gone = targets[targets.size() / 2].name;
    const Bytes before = value.data;
    const bool removed = traces::RemoveParts(source, key, std::span(&gone, 1), value.data);
    if (removed == (value.data == before)) std::abort();
    if (!removed) continue;
    targets.clear();
    traces::ReadTargets(source, key, value, targets);
    // Letter for letter: a target in another case is asked for by itself.
    const bool left = std::ranges::any_of(
        targets, [&](const traces::Target& target) { return target.name == gone; });
    if (left) std::abort();
  }
  return 0;
}
