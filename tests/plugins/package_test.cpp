#include "plugins/package.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "backends/memory/memory_backend.h"
#include "plugins/module/interface.h"
#include "registry/Stringhelper.h"

namespace scrubwell::test {
namespace {

TEST(Package, LoadsInOrderCounted) {
  MemoryBackend backend;
  SetPlatform(&backend.Platform());
  UnloadPackage();  // one too many at any time
  for (int again = 0; again < 2; ++again) {
    LoadPackage();
    LoadPackage();
    UnicodeString ids;
    for (const TRCPlugin* plugin : *Plugins) {
      ids += plugin->FPluginID + u" ";
      EXPECT_FALSE(plugin->Caption.empty() || plugin->ShortDescription.empty() ||
                   plugin->IconFileName.empty());
      EXPECT_EQ(plugin->Description.empty(), plugin->FPluginID == u"AppMRU");
      EXPECT_TRUE(plugin->Active && plugin->GroupIndex == 0);
      // The firewall's plugin is ready as soon as it has asked for the service.
      EXPECT_EQ(plugin->FState, plugin->FPluginID == u"Firewall" ? rcpInited : rcpUnknown);
    }
    EXPECT_EQ(
        ToUtf8(ids),
        "ActiveXCOM AppMRU AppPaths Autostart Drivers FileTypes Firewall Fonts HelpFiles History "
        "IniFiles ODBC SharedFiles SoftwareInstalled Sounds SystemAddOn Uninstall ");
    UnloadPackage();
    ASSERT_NE(Plugins, nullptr);
    RealSweepErrorCount = 7;
    UnloadPackage();
    EXPECT_TRUE(Plugins == nullptr && SweepErrors == nullptr && IgnoredCLSIDs == nullptr);
    EXPECT_EQ(RealSweepErrorCount, 0);
  }
  SetPlatform(nullptr);
}

TEST(Module, LoadsNestedAndKeepsItsState) {
  void* module = dlopen(SCRUBWELL_MODULE, RTLD_NOW | RTLD_GLOBAL);
  ASSERT_NE(module, nullptr) << dlerror();
  const auto load = reinterpret_cast<decltype(&ScrubwellLoad)>(dlsym(module, "ScrubwellLoad"));
  const auto unload =
      reinterpret_cast<decltype(&ScrubwellUnload)>(dlsym(module, "ScrubwellUnload"));
  ASSERT_TRUE(load != nullptr && unload != nullptr);
  EXPECT_EQ(dlsym(module, "_ZN9scrubwell7PluginsE"), nullptr);

  EXPECT_EQ(load(nullptr, TLanguage::German), nullptr);
  MemoryBackend backend;
  ASSERT_EQ(backend.AddRegistry(
                R"([HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\SharedDLLs]
"C:\\gone.dll"=dword:1
)"),
            "");
  const TPackageInterface* package = load(&backend.Platform(), TLanguage::English);
  ASSERT_EQ(load(nullptr, TLanguage::German), package);
  ASSERT_EQ(package->Version, TPackageInterface::CurrentVersion);
  EXPECT_EQ(Plugins, nullptr);  // the test's own copy is another one

  unload();
  TRCPlugin* plugin = nullptr;
  ASSERT_TRUE(package->GetPluginByID(u"SharedFiles", plugin));
  const TPluginList& plugins = **package->Plugins;
  EXPECT_EQ(std::count(plugins.begin(), plugins.end(), plugin), 1);
  plugin->Init();
  plugin->Scan();
  ASSERT_EQ((*package->SweepErrors)->Count(), 1);
  EXPECT_EQ((*package->SweepErrors)->Get(0)->Caption, u"Missing shared file \"gone.dll\"");
  EXPECT_EQ(package->CreateBrowserHelperObjects()->GetCount(), 0);
  package->ClearSweepErrors();
  EXPECT_EQ((*package->SweepErrors)->Count(), 0);
  // What the scan before has looked up is not the answer any more.
  ASSERT_EQ(backend.Files().Add("C:\\gone.dll"), "");
  plugin->Init();
  plugin->Scan();
  EXPECT_EQ((*package->SweepErrors)->Count(), 0);

  unload();
  EXPECT_EQ(*package->Plugins, nullptr);
  unload();
  EXPECT_EQ(dlclose(module), 0);
}

}  // namespace
}  // namespace scrubwell::test
