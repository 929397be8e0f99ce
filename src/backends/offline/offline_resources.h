// Resources of the switched-off system's program files.
#pragma once

#include <optional>

#include "backends/offline/offline_files.h"
#include "formats/pe/pe.h"
#include "formats/regf/file_image.h"

namespace scrubwell::offline {

/// Texts come in the user's language where there is one, as the running system would show them.
class OfflineResources final : public IFileResources {
 public:
  OfflineResources(IRegistry& registry, OfflineFiles& files) : registry_(registry), files_(files) {}
  /// Absent when neither the file nor its satellites have the text.
  Status StringResource(UnicodeView file, std::uint32_t id, UnicodeString& out) override;
  Status Version(UnicodeView file, FileVersion& out) override;

 private:
  struct Languages {
    TStringList names;  ///< "de-DE", the preferred ones in front
    std::vector<pe::LangId> numbers;
  };
  const Languages& Preferred();
  Status Open(UnicodeView file, regf::FileImage& bytes, pe::Image& image);
  Status StringIn(UnicodeView file, std::uint32_t id, UnicodeString& out);

  IRegistry& registry_;
  OfflineFiles& files_;
  std::optional<Languages> languages_;
};

}  // namespace scrubwell::offline
