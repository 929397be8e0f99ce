// The package as a module, loaded by a program that holds a copy of the same code.
#include "backends/windows/win32.h"
#include "plugins/module/interface.h"
#include "scratch.h"

namespace scrubwell::test {
namespace {

using Load = const TPackageInterface*(TPlatform*, TLanguage);
using Unload = void();

TEST(LiveModule, LoadsScansAndUnloads) {
  WindowsBackend backend{WindowsOptions{}};
  for (int round = 0; round < 3; ++round) {
    const windows::OwnedModule module(LoadLibraryW(L"scrubwell_package.dll"));
    ASSERT_TRUE(module.Good()) << GetLastError();
    auto* const load = windows::SystemFunction<Load>(L"scrubwell_package", "ScrubwellLoad");
    auto* const unload = windows::SystemFunction<Unload>(L"scrubwell_package", "ScrubwellUnload");
    ASSERT_TRUE(load != nullptr && unload != nullptr);
    EXPECT_EQ(GetProcAddress(module.Get(), "LoadPackage"), nullptr);  // nothing else gets out
    EXPECT_EQ(load(nullptr, {}), nullptr);
    const TPackageInterface* const package = load(&backend.Platform(), {});
    ASSERT_NE(package, nullptr);
    EXPECT_EQ(package->Version, TPackageInterface::CurrentVersion);
    EXPECT_EQ(Plugins, nullptr);  // the program's own copy is not touched
    TRCPlugin* plugin = nullptr;
    ASSERT_TRUE(package->GetPluginByID(u"Fonts", plugin));
    plugin->Init();
    plugin->Scan();
    EXPECT_EQ(plugin->FState, rcpScanned);
    unload();
    EXPECT_EQ(*package->Plugins, nullptr);
  }
  EXPECT_EQ(GetModuleHandleW(L"scrubwell_package"), nullptr);
}

}  // namespace
}  // namespace scrubwell::test
