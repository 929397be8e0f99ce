// References of WIN.INI and SYSTEM.INI to programs and drivers that are missing.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPIniFiles : public TRCPlugin {
 public:
  TRCPIniFiles();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  // Each scans one place; false when a stop was requested.
  bool ScanPrograms(UnicodeView entry, UnicodeView line);
  bool ScanExtensions();
  bool ScanEmbedding();
  bool ScanBootDrivers();
  bool ScanScreenSaver();
  bool ScanDrivers32();
  void Check_SystemIni_Driver(UnicodeView entryName, UnicodeView value);
  bool Clean_Program(const TSweepError& error);
  bool Clean_Driver(const TSweepError& error);
  bool Clean_Entry(UnicodeView file, UnicodeView section, UnicodeView entry);

  UnicodeString FWinDir;
  UnicodeString FRunLine;
  UnicodeString FLoadLine;
  UnicodeString FExtensions;  ///< names, each followed by a NUL
  UnicodeString FEmbedding;
  UnicodeString FBootDrivers;
  UnicodeString FDrivers32;
};

}  // namespace scrubwell
