// INI files of the switched-off system, those mapped to the registry included.
#pragma once

#include <map>

#include "backends/offline/offline_files.h"
#include "formats/ini/ini.h"

namespace scrubwell::offline {

/// Reading only: changes are Denied. Files are read once.
class OfflineProfiles final : public IProfiles {
 public:
  OfflineProfiles(IRegistry& registry, OfflineFiles& files, ITextServices& text,
                  UnicodeString windowsDir)
      : registry_(registry), files_(files), text_(text), windowsDir_(std::move(windowsDir)) {}

  Status Get(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeString& out) override;
  Status Put(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeView value) override;
  Status Remove(UnicodeView file, UnicodeView section, UnicodeView key) override;
  Status Entries(UnicodeView file, UnicodeView section, TStringList& out) override;

 private:
  struct Document {
    Status status = Status::Unknown;
    ini::Document ini;
  };
  /// Where the registry keeps a section or one entry of it.
  struct Mapping {
    bool mapped = false;
    bool fileToo = true;  ///< what the registry does not hold is looked for in the file
    RootKey root = RootKey::None;
    UnicodeString path;
  };

  Status FindMapping(UnicodeView file, UnicodeView section, UnicodeView key, Mapping& out);
  Status ReadMapping(const UnicodeString& place, UnicodeView value, UnicodeView below,
                     Mapping& out);
  Document& Open(UnicodeView file);

  IRegistry& registry_;
  OfflineFiles& files_;
  ITextServices& text_;
  UnicodeString windowsDir_;
  std::map<UnicodeString, Document> documents_;
};

}  // namespace scrubwell::offline
