// Virtual device drivers listed in the registry whose file is missing.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPDrivers : public TRCPlugin {
 public:
  TRCPDrivers();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void Check_Driver(UnicodeView name);
  void Check_DriverValue(UnicodeView key, UnicodeView valueName);
  /// Takes the missing file out of its list; false when the list can't be read.
  bool Clean_Item(const TSweepError& error, const KeyPlace& place, UnicodeView valueName);
  /// Deletes the value, and its key when nothing of use is left in it.
  bool Clean_Value(const KeyPlace& place, UnicodeView valueName);

  TStringList FNames;
};

}  // namespace scrubwell
