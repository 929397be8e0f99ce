// Start-up and shut-down of the whole package.
#pragma once

namespace scrubwell {

/// Runs every unit's start-up in the fixed order: the framework's two units, then one unit a
/// plugin, each of which enrols its plugin in Plugins. Counted: only the first of nested calls does
/// work. The platform and the language must be set before. Not locked: call it from the thread that
/// owns the package.
void LoadPackage();

/// Runs the shut-downs in the reverse order once it was called as often as LoadPackage; a call too
/// many does nothing. No plugin, problem or exclusion table may be used after the last one.
void UnloadPackage();

}  // namespace scrubwell
