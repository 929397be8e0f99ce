// Registrations of help files that are missing or empty.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPHelpFiles : public TRCPlugin {
 public:
  TRCPHelpFiles();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void Check_Help(UnicodeView fileName, UnicodeView folder, TZmRegOptions opts, bool isHtmlHelp,
                  UnicodeView keyText);

  TStringList FHelpNames32;
  TStringList FHelpFolders32;
  TStringList FHelpNames64;
  TStringList FHelpFolders64;
  TStringList FHtmlHelpNames32;
  TStringList FHtmlHelpFolders32;
  TStringList FHtmlHelpNames64;
  TStringList FHtmlHelpFolders64;
};

}  // namespace scrubwell
