// The host's image catalogue.
#pragma once

#include "registry/types.h"

namespace scrubwell {

using TZMGraphicsCategory = int;
/// The category that all plugins draw their images from.
inline constexpr TZMGraphicsCategory PluginGraphics = 7;

/// The image file of a number; empty when the host has none.
UnicodeString FileNameByID(int id, TZMGraphicsCategory category);

}  // namespace scrubwell
