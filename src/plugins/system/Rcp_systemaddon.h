// Multimedia drivers whose file is missing, and browser helper objects whose class is.
#pragma once

#include "framework/Rc_baseplugin.h"
#include "plugins/system/Browserhelperobjects.h"

namespace scrubwell {

class TRCPSystemAddOn : public TRCPlugin {
 public:
  TRCPSystemAddOn();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  bool CheckKeyForMissingFiles(std::int32_t kind, const KeyPlace& place);
  void CheckBrowserHelperObjects();
  void Clean_BrowserHelperObject(const TSweepError& error);

  TBrowserHelperObjects FObjects;
};

}  // namespace scrubwell
