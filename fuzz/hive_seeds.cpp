// Writes small hives of every shape, two of them with a log behind their bins.
#include <cstdio>

#include "formats/regf/hive_samples.h"

namespace {

using namespace scrubwell;
using namespace scrubwell::regf;

Bytes Sample(const BuildOptions& options) {
  HiveBuilder builder(options);
  for (const UnicodeView name : {u"a", u"B", u"gr\u00FCn", u"\u041A", u"lone\xD800"}) {
    const auto key = builder.CreatePath(builder.Create(builder.Root(), name), u"x\\y");
    builder.SetText(key, name, name);
    builder.SetClass(key, name);
  }
  builder.SetValue(builder.Root(), {u"b", REGT_BINARY, Bytes(16345, 7)});
  return builder.Build();
}

Bytes With(Bytes hive, const Bytes& log) {
  hive.insert(hive.end(), log.begin(), log.end());
  return hive;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: hive_seeds DIR\n", stderr);
    return 2;
  }
  const std::filesystem::path folder = arguments[1];
  const Bytes seeds[] = {Sample({.lists = ListKind::Index}),
                         Sample({.minorVersion = 3, .lists = ListKind::Fast}),
                         Sample({.leafEntries = 2}), With(DirtyPrimary(), NewLog({0, 1, 2})),
                         With(DirtyPrimary(), OldLog())};
  int number = 0;
  for (const Bytes& seed : seeds) {
    const std::filesystem::path file = folder / ("hive" + std::to_string(number++));
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(seed.data()),
              static_cast<std::streamsize>(seed.size()));
    if (!out.flush()) {
      std::fprintf(stderr, "%s can't be written\n", file.c_str());
      return 1;
    }
  }
  return 0;
}
