#include "plugins/package.h"

#include <array>

#include "framework/Rc_baseplugin.h"
#include "plugins/com/Rcp_activexcom.h"
#include "plugins/filetypes/Rcp_filetypes.h"
#include "plugins/history/Rcp_appmru.h"
#include "plugins/history/Rcp_history.h"
#include "plugins/software/Rcp_apppaths.h"
#include "plugins/software/Rcp_helpfiles.h"
#include "plugins/software/Rcp_odbc.h"
#include "plugins/software/Rcp_sharedfiles.h"
#include "plugins/software/Rcp_softwareinstalled.h"
#include "plugins/software/Rcp_uninstall.h"
#include "plugins/startup/Rcp_autostart.h"
#include "plugins/startup/Rcp_drivers.h"
#include "plugins/startup/Rcp_inifiles.h"
#include "plugins/system/Rcp_firewall.h"
#include "plugins/system/Rcp_fonts.h"
#include "plugins/system/Rcp_sounds.h"
#include "plugins/system/Rcp_systemaddon.h"

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
    PluginUnit<TRCPActiveXCOM>,
    PluginUnit<TRCPAppMRU>,
    PluginUnit<TRCPAppPaths>,
    PluginUnit<TRCPAutostart>,
    PluginUnit<TRCPDrivers>,
    PluginUnit<TRCPFileTypes>,
    PluginUnit<TRCPFirewall>,
    PluginUnit<TRCPFonts>,
    PluginUnit<TRCPHelpFiles>,
    PluginUnit<TRCPHistory>,
    PluginUnit<TRCPIniFiles>,
    PluginUnit<TRCPODBC>,
    PluginUnit<TRCPSharedFiles>,
    PluginUnit<TRCPSoftwareInstalled>,
    PluginUnit<TRCPSounds>,
    PluginUnit<TRCPSystemAddOn>,
    PluginUnit<TRCPUninstall>,
};

}  // namespace

void LoadPackage() {
  for (const Unit& unit : kUnits) unit.initialise();
}

void UnloadPackage() {
  for (auto unit = kUnits.rbegin(); unit != kUnits.rend(); ++unit) unit->finalise();
}

}  // namespace scrubwell
