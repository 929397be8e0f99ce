// The program's icons: one file for every image number that categories and kinds of problems name,
// and the same files inside the program.
#pragma once

#include <span>
#include <string_view>

#include "registry/platform.h"

namespace scrubwell::hosts {

struct Icon {
  int number = 0;
  std::string_view svg;  ///< the file's text, without a line end after it
};

/// Every icon, the numbers ascending.
std::span<const Icon> AllIcons();

/// The icon of a file name as the catalogue gives it; null for any other name.
const Icon* FindIcon(UnicodeView fileName);

/// Names the icon files, without their folder.
class ImageCatalogue final : public IImages {
 public:
  UnicodeString FileName(int id, int category) override;
};

/// The platform with other images. Both must outlive the result.
TPlatform WithImages(const TPlatform& platform, IImages& images);

}  // namespace scrubwell::hosts
