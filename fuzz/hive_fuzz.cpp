// Hives with a log: the input is a hive file, and what lies behind its bins is taken for a log.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "formats/regf/check.h"
#include "formats/regf/dump.h"
#include "formats/regf/hive.h"
#include "formats/regf/hive_samples.h"
#include "require.h"

namespace {

using namespace scrubwell;
using namespace scrubwell::regf;

// Bytes of names and data that a hive has given, whatever way.
std::uint64_t given = 0;

void ReadKey(const Hive& hive, const Subkey& subkey) {
  UnicodeString text;
  ByteView security;
  RegValue value;
  std::vector<RegValue> values;
  hive.ClassName(subkey.key, text);
  hive.Security(subkey.key, security);
  hive.Values(subkey.key, values);
  hive.Value(subkey.key, u"b", value);
  hive.ForEachValue(subkey.key, [&](const ValueFacts& facts) {
    const bool read = hive.Data(facts, value.data) == Status::Ok;
    Require(!read || value.data.size() == facts.size);
    given += facts.name.Units() + (read ? value.data.size() : 0);
  });
  if (subkey.key == hive.Root()) return;
  // What an enumeration delivers, a look-up must find.
  CellOffset found = NoCell;
  Require(hive.Child(subkey.facts.parent, subkey.facts.name.Text(), found) == Status::Ok);
  KeyFacts facts;
  Require(hive.Key(found, facts) == Status::Ok && facts.name.Compare(subkey.facts.name) == 0);
}

void ReadAll(const Bytes& image, const std::vector<Bytes>& logs) {
  const OpenedHive opened = Hive::FromBytes(image, "input", logs);
  Require((opened.hive != nullptr) == opened.error.empty());
  if (!opened.hive) return;
  const Hive& hive = *opened.hive;
  std::size_t visited = 0;
  given = 0;
  hive.Walk(hive.Root(), [&](const Subkey& subkey, int level) {
    Require(level <= Hive::MaxDepth);
    // Every key is visited at most once, so there can't be more than the file has room for.
    Require(++visited <= hive.Image().size() / 8);
    ReadKey(hive, subkey);
  });
  // What it makes us do is in proportion to its size.
  Require(given <= 100 * hive.Image().size());
  // A hive that the check finds sound can be read to the last byte.
  std::string text;
  const Status dumped = DumpTree(hive, hive.Root(), {}, text);
  Require(!CheckImage(hive.Image()).empty() || dumped == Status::Ok);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Bytes image(bytes, bytes + size);
  Bytes log;
  if (size > BaseBlockSize) {
    const std::size_t end = BaseBlockSize + std::size_t{Get32(image, base::BinsSize)};
    if (end < size) {
      log.assign(bytes + end, bytes + size);
      image.resize(end);
    }
  }
  ReadAll(image, {log});
  SignLog(log);
  ReadAll(image, {log});
  if (image.size() >= BaseBlockSize) {
    SignBase(image);
    ReadAll(image, {log});
  }
  return 0;
}
