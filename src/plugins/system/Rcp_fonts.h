// Registered fonts whose file is missing or empty.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

class TRCPFonts : public TRCPlugin {
 public:
  TRCPFonts();
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

 private:
  void Check_Font(UnicodeView fontsKey, UnicodeView fontName, UnicodeView fileName,
                  TZmRegOptions opts);

  UnicodeString FFontsKey;
  UnicodeString FFontFolder;         ///< with a trailing backslash; empty when it is not known
  UnicodeString FDefaultFontFolder;  ///< the default profile's; empty when it has no other one
  bool FDefaultFontFolderKnown = true;
  TStringList FFontNames32;
  TStringList FFontFiles32;
  TStringList FFontNames64;
  TStringList FFontFiles64;
};

}  // namespace scrubwell
