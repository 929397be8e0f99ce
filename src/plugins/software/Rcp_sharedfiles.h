// Entries of the machine-wide list of shared libraries whose file is missing.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPSharedFiles : public TRCPlugin {
 public:
  TRCPSharedFiles();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void Check_SharedDLL(UnicodeView fileName, UnicodeView valueData, TZmRegOptions opts);

  TStringList FValueNames32;
  TStringList FValueData32;
  TStringList FValueNames64;
  TStringList FValueData64;
};

}  // namespace scrubwell
