// Programs and scheduled tasks that Windows would start and that are missing.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPAutostart : public TRCPlugin {
 public:
  TRCPAutostart();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  /// What one source held when Init read it.
  struct TEntries {
    TStringList names;
    TStringList data;
  };

  void InitSchedulerInterface();
  void Check_Autostart(UnicodeView valueName, UnicodeView fileName, TZmRegOptions flags,
                       UnicodeView keyPath);
  void Check_Task(UnicodeView job, UnicodeView application);
  /// False when a stop was requested.
  bool ScanTasks();
  bool Clean_Task(const TSweepError& error);

  std::array<TEntries, 8> FEntries;
  bool FHasScheduler = false;
};

}  // namespace scrubwell
