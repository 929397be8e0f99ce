// Database drivers whose file is missing, and data sources that no driver serves.
#pragma once

#include <unordered_set>

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPODBC : public TRCPlugin {
 public:
  TRCPODBC();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void FillODBCDriverKeys(RootKey root, UnicodeView keyPath);
  void FillODBCDatasourceKeys(RootKey root, UnicodeView keyPath);
  void ScanODBCDrivers();
  void ScanODBCDataSources();
  void Check_Driver(UnicodeView name);
  void Check_DataSource(UnicodeView name);
  void Check_ListedDriver(UnicodeView name);
  void Clean_Listing(UnicodeView dataSource);

  TStringList FODBCDrivers;
  TStringList FODBCDataSources;
  std::unordered_set<UnicodeString> FInvalidDrivers;
};

}  // namespace scrubwell
