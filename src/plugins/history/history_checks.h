// Checks that both history plugins make.
#pragma once

#include "framework/Rc_baseplugin.h"

namespace scrubwell::history {

/// Below it lies a key for each file extension that Explorer has something to remember of.
inline constexpr UnicodeView kFileExts =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts";

/// Whether an extension's key holds nothing, or nothing but an open-with list that holds nothing.
/// False where that can't be told.
bool IsOpenWithKeyEmpty(UnicodeView key);

/// Whether a list's target is proven to be neither file nor folder, nor a place inside of a file:
/// programs that open archives remember folders in them as if the archive were a folder.
bool IsTargetMissing(UnicodeView path);
/// Whether the path leads on behind an existing file. A full path as it stands.
bool LeadsIntoFile(UnicodeView path);

/// The path in a local file's address, from behind "file:///" on, as it is written there. "C|" is
/// an old spelling of the drive.
UnicodeString PathAsWritten(UnicodeView rest);
/// Whether the file that an address names is proven missing under the path as it stands and, where
/// it differs, percent-decoded. A folder of that name is there, too. Only drives that are attached
/// and fixed prove anything.
bool IsAddressFileMissing(UnicodeView path);

/// Takes a name out of the order of a lettered list; nothing for a list without an order.
void RemoveFromOrder(RootKey root, UnicodeView key, UnicodeView valueName, TZmRegOptions opts);

}  // namespace scrubwell::history
