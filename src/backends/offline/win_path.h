// Windows path syntax. Pure functions; safe on any thread.
#pragma once

#include "registry/types.h"

namespace scrubwell::offline {

/// A path on a drive letter, cut into its components.
struct WinPath {
  char16_t letter = 0;               ///< upper case
  std::vector<UnicodeString> parts;  ///< none for the root folder
  bool literal = false;              ///< written with "\\?\": nothing is normalised
};

/// Cuts an absolute path with a drive letter ("C:\x", "\\?\C:\x", "\??\C:\x"). False for
/// everything that names no single file on a drive letter: relative, UNC and device paths, streams,
/// and text with characters that no file name can hold. What it gives as parts are names and
/// nothing else, for this machine too: not empty, not "." or "..", without separators and NUL.
bool ParsePath(UnicodeView text, WinPath& out);

/// "C:\x\y"; the root folder is "C:\".
UnicodeString PathText(const WinPath& path);

/// The component as the system looks it up: without trailing dots, and without trailing blanks
/// where it is the last one.
UnicodeView StripComponent(UnicodeView part, bool last);

/// NUL, CON, COM1 and so on, whatever the extension.
bool IsDeviceName(UnicodeView part);

/// True for the form of a generated short name: up to six units, "~", digits, a short extension.
bool IsShortNameForm(UnicodeView part);

/// True when the system may have generated the short name for the long one: same stem and
/// extension, and the long name needs a short one at all.
bool MayBeShortNameOf(UnicodeView shortName, UnicodeView longName);

}  // namespace scrubwell::offline
