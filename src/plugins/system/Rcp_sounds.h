// Sounds of system and program events whose file is missing.
#pragma once

#include "framework/Rc_baseplugin.h"
#include "registry/Hashlist.h"

namespace scrubwell {

class TRCPSounds : public TRCPlugin {
 public:
  TRCPSounds();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void Check_Sound_Event(UnicodeView application, UnicodeView event, UnicodeView applicationLabel);

  TStringList FApps;
  std::int32_t FEventCount = 0;
  THashStringList FEventLabels;  ///< by lower-cased event
  THashStringList FSchemeNames;  ///< by lower-cased scheme
};

}  // namespace scrubwell
