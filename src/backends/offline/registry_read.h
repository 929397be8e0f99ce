// Short ways to read single values.
#pragma once

#include <optional>

#include "formats/regf/hive.h"
#include "registry/platform.h"

namespace scrubwell::offline {

/// The text of a value's data up to the first NUL; empty for data that is no text.
UnicodeString TextOf(const RegValue& value);
/// A DWORD value's number; nothing for other types and sizes.
std::optional<std::uint32_t> NumberOf(const RegValue& value);

/// From one hive, by the path below its root. Empty or nothing where it can't be read.
UnicodeString HiveText(const regf::Hive& hive, UnicodeView path, UnicodeView name);
std::optional<std::uint32_t> HiveNumber(const regf::Hive& hive, UnicodeView path, UnicodeView name);

/// From the composed registry.
UnicodeString RegistryText(IRegistry& registry, const KeyRef& key, UnicodeView name);

}  // namespace scrubwell::offline
