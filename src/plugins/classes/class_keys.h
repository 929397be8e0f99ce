// Reading of registered classes: which keys are there in which view, what their texts say.
// Everything answers to the safe side: a thing is only missing or empty when that is proven.
#pragma once

#include <functional>
#include <optional>

#include "registry/Zmregistry.h"

namespace scrubwell::classes {

inline constexpr TZmRegOptions kView32{zmreg32Bit};
inline constexpr TZmRegOptions kView64{zmreg64Bit};

/// Which direct subkeys a key has, to be asked for several names. They are read once unless there
/// are many; where they can't be read, there are none.
class SubkeyNames {
 public:
  SubkeyNames(UnicodeView key, TZmRegOptions opts);
  /// Letter case is ignored.
  [[nodiscard]] bool Has(UnicodeView name) const;

 private:
  UnicodeString key_;  // only where there are many
  TZmRegOptions opts_;
  TStringList names_;
};

/// A caption that is worked out when a problem first needs it: most keys have none, and resource
/// texts are dear.
class TCaption {
 public:
  explicit TCaption(UnicodeView text) : text_(text) {}
  explicit TCaption(std::function<UnicodeString()> compute) : compute_(std::move(compute)) {}
  const UnicodeString& Text() const;

 private:
  mutable std::function<UnicodeString()> compute_;
  mutable UnicodeString text_;
};

/// A text value; empty when it is proven not to be there, nothing when that can't be told or when
/// it is no text.
std::optional<UnicodeString> ReadText(UnicodeView key, UnicodeView name, TZmRegOptions opts);
/// The key's default value as text, empty when there is none or it can't be read.
UnicodeString DefaultText(UnicodeView key, TZmRegOptions opts);
/// The text behind a resource reference ("@file,-number"); empty when it can't be read.
UnicodeString ResourceText(UnicodeView reference);

/// Whether a key of the classes root is there in the view or, on a 64-bit system, in the other
/// one: what one kind of programs registers may serve the other.
bool ExistsInAnyView(UnicodeView key, TZmRegOptions opts);
TZmRegOptions OtherView(TZmRegOptions opts);

/// Whether the key reads the same in both registry views. True where there is one view only and
/// for a key that one of the views lacks.
bool RegKeysIdentic(RootKey root, UnicodeView path);

/// The path of an icon location without its index. A comma inside a folder name stays.
UnicodeString StripIconIndex(UnicodeView location);

/// Whether a program, library or icon that the registry names is missing from a local fixed drive.
/// For `needsDrive` see FileIsOnFixedDrive.
bool IsFileMissing(UnicodeView text, bool needsDrive);

/// The number of parts of a key path, and whether one of them (counted from 1) is `name`, letter
/// case ignored.
int PartCount(UnicodeView path);
bool PartIs(UnicodeView path, int part, UnicodeView name);

}  // namespace scrubwell::classes
