// Version information of program files.
#pragma once

#include "registry/types.h"

namespace scrubwell {

/// A relative or variable-based file name as a full path, searched for along the search order and
/// the registered application paths; the text itself when nothing is found.
UnicodeString GetFileNameWithAbsolutePath(UnicodeView name);
/// "major.minor" of the file's version, the form that program settings are filed under ("11.0");
/// empty when the file has none.
UnicodeString GetFileVersionIdentificationFromFile(UnicodeView file);

}  // namespace scrubwell
