// Keys of the running system by the place that they lie at, saved and put back whole.
#pragma once

#include "backends/common/overlay_registry.h"
#include "backends/windows/windows_registry.h"

namespace scrubwell::windows {

/// A place as the system's functions take it: "HKLM\SOFTWARE\x" in the view that changes nothing.
struct PlaceParts {
  HKEY root = nullptr;  ///< null for a text that names no place
  UnicodeString path;
};
PlaceParts PartsOf(UnicodeView place);
inline constexpr REGSAM kPlaceView = KEY_WOW64_64KEY;

/// Opens a place itself, be it a link or not.
Status OpenPlace(UnicodeView place, REGSAM access, RegKey& out);

class LivePlaces final : public IPhysicalKeys {
 public:
  explicit LivePlaces(WindowsRegistry& registry) : registry_(registry) {}
  Status PlaceOf(const KeyRef& key, bool asLink, UnicodeString& place) override;
  /// What rights forbid to read is read with the privilege to make backups, where it is held.
  Status TreeOf(UnicodeView place, std::vector<KeyImage>& out) override;
  Status MayDelete(UnicodeView place) override;

 private:
  WindowsRegistry& registry_;
};

/// Equal but for the times, which tell of changes below and beside as well.
bool SameTrees(const std::vector<KeyImage>& a, const std::vector<KeyImage>& b);

/// Creates one key whose parent is there. Its values are to follow, and then Dress.
Status CreateLike(UnicodeView place, const KeyImage& like, RegKey& out);
/// Gives a key its security and time of writing: the last of all that is done to it. Parts of the
/// security that the program has no right to set are left as they are.
Status Dress(UnicodeView place, const KeyImage& like);

}  // namespace scrubwell::windows
