// INI files on top of a registry and files, those mapped to the registry included.
#pragma once

#include <functional>
#include <map>

#include "formats/ini/ini.h"
#include "registry/platform.h"

namespace scrubwell {

/// Files are read once. What is changed is changed where it was read: in the registry or in the
/// file, in both where the mapping says so. A file that is not there is never created.
class IniProfiles final : public IProfiles {
 public:
  IniProfiles(IRegistry& registry, IFiles& files, ITextServices& text, UnicodeString windowsDir)
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
    bool both = false;    ///< what is written to the registry is written to the file as well
    RootKey root = RootKey::None;
    UnicodeString path;
  };

  Status FindMapping(UnicodeView file, UnicodeView section, UnicodeView key, Mapping& out);
  Status ReadMapping(const UnicodeString& place, UnicodeView value, UnicodeView below,
                     Mapping& out);
  Document& Open(UnicodeView file);
  [[nodiscard]] UnicodeString FullName(UnicodeView file) const;
  using FileEdit = std::function<Status(ini::Document&)>;
  using RegistryEdit = std::function<Status(const KeyRef& place, const RegValue& old)>;
  Status Change(UnicodeView file, UnicodeView section, UnicodeView key,
                const RegistryEdit& inRegistry, const FileEdit& inFile);
  Status ChangeFile(UnicodeView file, const FileEdit& edit);

  IRegistry& registry_;
  IFiles& files_;
  ITextServices& text_;
  UnicodeString windowsDir_;
  std::map<UnicodeString, Document> documents_;
};

}  // namespace scrubwell
