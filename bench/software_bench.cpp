// The installed-software plugins over a machine with much installed: the time must grow in step
// with the number of entries. Each row names its entries.
#include <benchmark/benchmark.h>

#include "backends/memory/memory_backend.h"
#include "plugins/software/Rcp_softwareinstalled.h"
#include "plugins/software/Rcp_uninstall.h"

namespace {

using namespace scrubwell;

const std::string kWindows = R"([HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\)";

// Every third entry is broken.
std::string UninstallEntries(std::int64_t count) {
  std::string text;
  for (std::int64_t i = 0; i < count; ++i) {
    const std::string name = "Program " + std::to_string(i);
    text += kWindows + "Uninstall\\" + name + "]\n\"DisplayName\"=\"" + name +
            "\"\n\"UninstallString\"=\"C:\\\\Program Files\\\\" +
            (i % 3 == 0 ? "Gone " + std::to_string(i) : "Here") + "\\\\setup.exe -l0x9\"\n" +
            kWindows + "App Management\\ARPCache\\" + name + "]\n";
  }
  return text;
}

// Ten levels deep and wide, with a path in every tenth key.
std::string ProgramSettings(std::int64_t count) {
  std::string text;
  std::string path = R"([HKEY_LOCAL_MACHINE\SOFTWARE\Mozilla)";
  const std::size_t top = path.size();
  for (std::int64_t i = 0; i < count; ++i) {
    if (i % 1000 == 0) path.resize(top);
    if (i % 100 == 0) path += "\\Level" + std::to_string(i);
    text += path + "\\Key" + std::to_string(i) + "]\n\"Setting\"=dword:1\n";
    if (i % 10 == 0)
      text += "\"Install Dir\"=\"C:\\\\Gone\\\\" + std::to_string(i) + "\\\\x.exe,0\"\n";
  }
  return text;
}

template <class Plugin>
void ScanWorld(benchmark::State& state, const std::string& registry) {
  MemoryBackend backend(MemoryOptions{.is64Bit = false});
  const std::string wrong =
      backend.AddRegistry(registry) + backend.AddFiles("C:\\Program Files\\Here\\setup.exe");
  if (!wrong.empty()) {
    state.SkipWithError(wrong.c_str());
    return;
  }
  SetPlatform(&backend.Platform());
  InitialiseRcCommon();
  InitialiseRcBaseplugin();
  {
    Plugin plugin;
    for ([[maybe_unused]] const auto step : state) {
      SetPlatform(&backend.Platform());  // forgets what was looked up
      SweepErrors->Clear();
      plugin.Init();
      plugin.Scan();
    }
    state.counters["problems"] = SweepErrors->Count();
  }
  FinaliseRcBaseplugin();
  FinaliseRcCommon();
  SetPlatform(nullptr);
  state.SetComplexityN(state.range(0));
}

void ScanUninstall(benchmark::State& state) {
  ScanWorld<TRCPUninstall>(state, UninstallEntries(state.range(0)));
}
BENCHMARK(ScanUninstall)
    ->Arg(600)
    ->Arg(2400)
    ->Arg(9600)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

void ScanProgramSettings(benchmark::State& state) {
  ScanWorld<TRCPSoftwareInstalled>(state, ProgramSettings(state.range(0)));
}
BENCHMARK(ScanProgramSettings)
    ->Arg(6250)
    ->Arg(25000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

}  // namespace

BENCHMARK_MAIN();
