// How fast a large hive is written, walked and searched. The hive is of the size and shape of a
// SOFTWARE hive on a machine with much installed: some 300,000 keys, most of them classes.
#include <benchmark/benchmark.h>

#include <algorithm>

#include "formats/regf/hive.h"
#include "formats/regf/hive_builder.h"
#include "identifiers.h"
#include "registry/Stringhelper.h"

namespace {

using namespace scrubwell;
using namespace scrubwell::regf;

class SoftwareHive {
 public:
  HiveBuilder Make() {
    const auto classes = builder_.Create(builder_.Root(), u"Classes");
    AddClasses(classes, 20000, 25000);
    AddClasses(builder_.Create(classes, u"Wow6432Node"), 12000, 22000);
    AddFileTypes(classes);
    AddInstalled();
    return std::move(builder_);
  }

 private:
  static UnicodeString Numbered(UnicodeView text, int number) {
    return UnicodeString(text).append(IntToStr(number));
  }

  void AddClasses(HiveBuilder::Key below, int classes, int interfaces) {
    const auto clsid = builder_.Create(below, u"CLSID");
    for (int i = 0; i < classes; ++i) {
      const auto key = builder_.Create(clsid, ids_.Guid());
      builder_.SetText(key, u"", Numbered(u"Class ", i));
      const auto server = builder_.Create(key, u"InprocServer32");
      builder_.SetText(server, u"", Numbered(u"%SystemRoot%\\System32\\comp", i).append(u".dll"));
      builder_.SetText(server, u"ThreadingModel", u"Both");
      if (ids_.Chance(40)) {
        builder_.SetText(builder_.Create(key, u"ProgID"), u"", u"Comp.Class.1");
        builder_.SetText(builder_.Create(key, u"VersionIndependentProgID"), u"", u"Comp.Class");
      }
      if (ids_.Chance(30)) builder_.SetText(builder_.Create(key, u"TypeLib"), u"", ids_.Guid());
    }
    const auto interface = builder_.Create(below, u"Interface");
    for (int i = 0; i < interfaces; ++i) {
      const auto key = builder_.Create(interface, ids_.Guid());
      builder_.SetText(key, u"", Numbered(u"IInterface", i));
      builder_.SetText(builder_.Create(key, u"ProxyStubClsid32"), u"", ids_.Guid());
      if (ids_.Chance(50)) builder_.SetText(builder_.Create(key, u"TypeLib"), u"", ids_.Guid());
      if (ids_.Chance(30)) builder_.SetText(builder_.Create(key, u"NumMethods"), u"", u"12");
    }
  }

  void AddFileTypes(HiveBuilder::Key classes) {
    for (int i = 0; i < 6000; ++i) {
      const UnicodeString program = Numbered(u"prog", i).append(u".1");
      builder_.SetText(builder_.Create(classes, Numbered(u".ex", i)), u"", program);
      const auto type = builder_.Create(classes, program);
      builder_.SetText(builder_.Create(type, u"DefaultIcon"), u"", u"C:\\p.exe,1");
      builder_.SetText(builder_.CreatePath(type, u"shell\\open\\command"), u"", u"C:\\p.exe");
    }
    const auto libraries = builder_.Create(classes, u"TypeLib");
    for (int i = 0; i < 3000; ++i) {
      const auto version = builder_.CreatePath(builder_.Create(libraries, ids_.Guid()), u"1.0");
      builder_.SetText(builder_.CreatePath(version, u"0\\win32"), u"", u"C:\\t.dll");
      builder_.SetText(builder_.Create(version, u"FLAGS"), u"", u"0");
    }
  }

  void AddInstalled() {
    const auto current =
        builder_.CreatePath(builder_.Root(), u"Microsoft\\Windows\\CurrentVersion");
    const auto components =
        builder_.CreatePath(current, u"Installer\\UserData\\S-1-5-18\\Components");
    for (int i = 0; i < 20000; ++i) {
      builder_.SetText(builder_.Create(components, ids_.Hex(32)), ids_.Hex(32),
                       u"C:\\Program Files\\f.dll");
    }
    const auto shared = builder_.Create(current, u"SharedDLLs");
    for (int i = 0; i < 5000; ++i) builder_.SetNumber(shared, Numbered(u"C:\\f", i), 1);
  }

  HiveBuilder builder_;
  Identifiers ids_;
};

const HiveBuilder& Software() {
  static const HiveBuilder builder = SoftwareHive().Make();
  return builder;
}

const Hive& SoftwareImage() {
  static const OpenedHive opened = Hive::FromBytes(Software().Build(), "bench");
  return *opened.hive;
}

/// Every key with its name and counts.
void Walk(benchmark::State& state) {
  const Hive& hive = SoftwareImage();
  std::size_t keys = 0;
  UnicodeString name;
  for (auto _ : state) {
    std::uint64_t sum = 0;
    keys = 0;
    hive.Walk(hive.Root(), [&](const Subkey& subkey, int) {
      ++keys;
      subkey.facts.name.CopyTo(name);
      sum += name.size() + subkey.facts.subkeyCount + subkey.facts.valueCount;
    });
    benchmark::DoNotOptimize(sum);
  }
  state.counters["keys"] = static_cast<double>(keys);
  state.SetItemsProcessed(static_cast<std::int64_t>(keys) * state.iterations());
}
BENCHMARK(Walk)->Unit(benchmark::kMillisecond);

/// One child among 20,000, in another order than they lie in; every second one is not there.
void ChildLookup(benchmark::State& state) {
  const Hive& hive = SoftwareImage();
  CellOffset clsid = NoCell;
  hive.Descend(hive.Root(), u"Classes\\CLSID", clsid);
  std::vector<Subkey> subkeys;
  hive.Subkeys(clsid, subkeys);
  std::vector<UnicodeString> names;
  for (const Subkey& subkey : subkeys) {
    names.push_back(LowerCase(subkey.facts.name.Text()));
    names.push_back(names.back() + u"x");
  }
  std::shuffle(names.begin(), names.end(), std::mt19937(1));
  std::size_t next = 0;
  for (auto _ : state) {
    CellOffset found = NoCell;
    benchmark::DoNotOptimize(hive.Child(clsid, names[next], found));
    next = next + 1 == names.size() ? 0 : next + 1;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ChildLookup);

void Values(benchmark::State& state) {
  const Hive& hive = SoftwareImage();
  std::size_t count = 0;
  for (auto _ : state) {
    std::vector<RegValue> values;
    hive.Walk(hive.Root(), [&](const Subkey& subkey, int) {
      hive.Values(subkey.key, values);
      count += values.size();
    });
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(count));
}
BENCHMARK(Values)->Unit(benchmark::kMillisecond);

void BuildTree(benchmark::State& state) {
  for (auto _ : state) {
    HiveBuilder builder = SoftwareHive().Make();
    benchmark::DoNotOptimize(&builder);
  }
}
BENCHMARK(BuildTree)->Unit(benchmark::kMillisecond);

void WriteHive(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Software().Build());
}
BENCHMARK(WriteHive)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
