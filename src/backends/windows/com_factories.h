// Where the backend gets its COM objects from.
#pragma once

#include "backends/windows/windows_browser.h"
#include "backends/windows/windows_firewall.h"
#include "backends/windows/windows_tasks.h"

namespace scrubwell::windows {

struct ComFactories {
  ComFactory<ITaskScheduler> scheduler = SystemScheduler();
  ComFactory<INetFwMgr> firewall = SystemFirewall();
  ComFactory<INetFwAuthorizedApplication> firewallEntry = SystemFirewallEntry();
  ComFactory<IUrlHistoryStg2> urlHistory = SystemUrlHistory();
};

}  // namespace scrubwell::windows
