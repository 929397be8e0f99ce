// Entries of the list of installed programs that can't be uninstalled any more, and the control
// panel's cache of programs that are gone.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPUninstall : public TRCPlugin {
 public:
  TRCPUninstall();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void Check_Uninstall(UnicodeView subKey, TZmRegOptions opts);
  void Check_ARPCacheEntries();
  void Check_ARPCacheEntry(UnicodeView subKey, TZmRegOptions opts);

  TStringList FUninstallKeys32;
  TStringList FUninstallKeys64;
  TStringList FARPCacheKeys32;
  TStringList FARPCacheKeys64;
};

}  // namespace scrubwell
