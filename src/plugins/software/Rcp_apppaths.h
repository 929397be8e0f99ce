// Program paths registered under "App Paths" that lead nowhere, and keys there that hold nothing.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPAppPaths : public TRCPlugin {
 public:
  TRCPAppPaths();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void Check_AppPath(UnicodeView subKey, TZmRegOptions opts);
  static void Clean_SearchFolders(UnicodeView key, TZmRegOptions opts);

  TStringList FAppPathKeys;
  TStringList FAppPathKeys64;
};

}  // namespace scrubwell
