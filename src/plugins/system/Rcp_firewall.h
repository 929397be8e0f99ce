// Programs that may accept incoming connections, and whose file is missing.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPFirewall : public TRCPlugin {
 public:
  /// Asks for the firewall's state once, so that the platform must be set before.
  TRCPFirewall();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void InitFirewallInterface();
  void Check_Application(const FirewallApplication& application);

  IFirewall* FFwMgr = nullptr;  ///< borrowed; null while the firewall's service is not running
};

}  // namespace scrubwell
