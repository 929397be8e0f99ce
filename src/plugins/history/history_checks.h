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

/// Whether the file that an address names is proven missing under the path as it stands and, where
/// it differs, percent-decoded. A folder of that name is there, too. Only drives that are attached
/// and fixed prove anything.
bool IsAddressFileMissing(UnicodeView path);

/// Takes a name out of the order of a lettered list; nothing for a list without an order.
void RemoveFromOrder(RootKey root, UnicodeView key, UnicodeView valueName, TZmRegOptions opts);

}  // namespace scrubwell::history
