// Settings of programs whose name says that they hold a path, and whose path is gone.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPSoftwareInstalled : public TRCPlugin {
 public:
  TRCPSoftwareInstalled();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void FillRegistryKeys(RootKey root, const UnicodeString& keyPath, int depth);
  void FillRegistryKeyValues();
  void ScanRegistryKeyValues();
  void Check_Value(UnicodeView entry);
  [[nodiscard]] static bool KeyIsIgnored(RootKey root, UnicodeView keyPath);
  [[nodiscard]] static bool ValueNeedCheck(UnicodeView valueName);

  TStringList FRegistryKeys;       ///< full paths
  TStringList FRegistryKeyValues;  ///< full path, "/", name of the value
};

}  // namespace scrubwell
