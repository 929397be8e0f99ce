#include "plugins/package.h"

#include <array>

#include "framework/Rc_baseplugin.h"
#include "plugins/software/Rcp_sharedfiles.h"

namespace scrubwell {
namespace {

struct Unit {
  void (*initialise)();
  void (*finalise)();
};

template <class Plugin>
constexpr Unit PluginUnit{&TPluginUnit<Plugin>::Initialise, &TPluginUnit<Plugin>::Finalise};

// The order is part of the package's interface: hosts see it as the order of Plugins. Plugins stand
// in the alphabetical order of their units. An explicit list, because a linker drops units that
// only register themselves.
constexpr std::array kUnits{
    Unit{&InitialiseRcCommon, &FinaliseRcCommon},
    Unit{&InitialiseRcBaseplugin, &FinaliseRcBaseplugin},
    PluginUnit<TRCPSharedFiles>,
};

}  // namespace

void LoadPackage() {
  for (const Unit& unit : kUnits) unit.initialise();
}

void UnloadPackage() {
  for (auto unit = kUnits.rbegin(); unit != kUnits.rend(); ++unit) unit->finalise();
}

}  // namespace scrubwell
