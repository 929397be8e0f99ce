// Special folders and shortcuts of the switched-off system.
#pragma once

#include "backends/offline/offline_system.h"

namespace scrubwell::offline {

class OfflineShell final : public IShell {
 public:
  OfflineShell(IRegistry& registry, OfflineSystem& system, OfflineFiles& files, unsigned codePage,
               bool hasUser)
      : registry_(registry),
        system_(system),
        files_(files),
        codePage_(codePage),
        hasUser_(hasUser) {}
  /// From the user's and the machine's list of folders, with the defaults of the Windows version
  /// where the list has no entry. Unknown when the list can't be read or a variable in it can't be
  /// resolved.
  Status SpecialFolder(int csidl, UnicodeString& out) override;
  Status LinkTarget(UnicodeView linkFile, UnicodeString& out) override;
  Status ItemListPath(const Bytes& list, UnicodeString& out) override;

 private:
  UnicodeString ExpandedTarget(const UnicodeString& text);

  IRegistry& registry_;
  OfflineSystem& system_;
  OfflineFiles& files_;
  unsigned codePage_;
  bool hasUser_;
};

}  // namespace scrubwell::offline
