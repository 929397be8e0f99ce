// Shell item lists: the chain of folders that leads to a shell object.
#pragma once

#include <span>

#include "registry/types.h"

namespace scrubwell::lnk {

/// The path that a list of shell items spells, by the long names. Absent: the list names no file
/// system object. Unknown: it does, but below a folder that has no fixed place, in an archive, or
/// with a name that can't be decoded. Corrupt: the list runs out of its bytes.
Status PathOfItemList(std::span<const std::uint8_t> list, UnicodeString& out);

}  // namespace scrubwell::lnk
