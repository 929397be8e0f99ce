// INI files of the running system, through its own functions, which know what is mapped to the
// registry.
#pragma once

#include "backends/windows/win32.h"

namespace scrubwell::windows {

/// What is not there is never created by a change, and a file is copied before it is changed.
class WindowsProfiles final : public IProfiles {
 public:
  WindowsProfiles(bool mayChange, IFiles& files, ISystem& system)
      : mayChange_(mayChange), files_(files), system_(system) {}
  Status Get(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeString& out) override;
  Status Put(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeView value) override;
  Status Remove(UnicodeView file, UnicodeView section, UnicodeView key) override;
  Status Entries(UnicodeView file, UnicodeView section, TStringList& out) override;

 private:
  Status Change(UnicodeView file, UnicodeView section, UnicodeView key, const wchar_t* value);

  bool mayChange_;
  IFiles& files_;
  ISystem& system_;
};

}  // namespace scrubwell::windows
