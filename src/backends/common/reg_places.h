// From the key paths of a registry text to hives: which hive a full path lies in.
#pragma once

#include "registry/types.h"

namespace scrubwell {

struct HivePlace {
  UnicodeString mount;  ///< "HKLM\SOFTWARE", "HKU\<SID>", "HKU\<SID>_Classes", "HKU\.DEFAULT"
  UnicodeString path;   ///< below the hive's root; may be empty
};

/// Splits a full path ("HKEY_LOCAL_MACHINE\SOFTWARE\X", "HKLM\...") into hive and path in it.
/// HKEY_CURRENT_USER is the given user's; HKEY_CLASSES_ROOT the machine's classes; the user's
/// Software\Classes lies in the user's classes hive; CurrentControlSet is ControlSet001; the 32-bit
/// classes lie below Classes. False for a path that names no hive.
bool HivePlaceOf(UnicodeView fullPath, UnicodeView userSid, HivePlace& out);

}  // namespace scrubwell
