// Registry values for people and programs.
#pragma once

#include <string>

#include "hosts/report/json_writer.h"
#include "registry/types.h"

namespace scrubwell::hosts {

/// "REG_SZ"; a number without a name as "type 0x12".
std::string TypeName(std::uint32_t type);

/// The data in one line, harmless for a terminal: texts in quotation marks, numbers both ways, all
/// else as hexadecimal bytes, at most `mostBytes` of them.
std::string DataText(const RegValue& value, std::size_t mostBytes);

/// A value in one line: its name, its type and its data.
std::string ValueLine(const RegValue& value, std::size_t mostBytes);

/// A value as an object; docs/json.md describes it.
void WriteValue(JsonWriter& json, const RegValue& value);

/// "HKEY_LOCAL_MACHINE\x", harmless for a terminal.
std::string KeyText(const KeyRef& key);

/// 32, 64, or 0 where a key is in both views the same or has but one.
int ViewBits(View view);

}  // namespace scrubwell::hosts
