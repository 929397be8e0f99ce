#include "backends/offline/registry_read.h"

namespace scrubwell::offline {
namespace {

bool HiveValue(const regf::Hive& hive, UnicodeView path, UnicodeView name, RegValue& out) {
  regf::CellOffset key = regf::NoCell;
  return hive.Descend(hive.Root(), path, key) == Status::Ok &&
         hive.Value(key, name, out) == Status::Ok;
}

}  // namespace

UnicodeString TextOf(const RegValue& value) {
  if (value.type != REGT_SZ && value.type != REGT_EXPAND_SZ && value.type != REGT_LINK) return {};
  UnicodeString text;
  for (std::size_t i = 0; i + 1 < value.data.size(); i += 2) {
    const auto unit = static_cast<char16_t>(value.data[i] | value.data[i + 1] << 8);
    if (unit == 0) break;
    text.push_back(unit);
  }
  return text;
}

std::optional<std::uint32_t> NumberOf(const RegValue& value) {
  if (value.type != REGT_DWORD || value.data.size() != 4) return std::nullopt;
  return regf::Get32(value.data, 0);
}

UnicodeString HiveText(const regf::Hive& hive, UnicodeView path, UnicodeView name) {
  RegValue value;
  return HiveValue(hive, path, name, value) ? TextOf(value) : UnicodeString();
}

std::optional<std::uint32_t> HiveNumber(const regf::Hive& hive, UnicodeView path,
                                        UnicodeView name) {
  RegValue value;
  return HiveValue(hive, path, name, value) ? NumberOf(value) : std::nullopt;
}

UnicodeString RegistryText(IRegistry& registry, const KeyRef& key, UnicodeView name) {
  RegValue value;
  return registry.GetValue(key, name, value) == Status::Ok ? TextOf(value) : UnicodeString();
}

}  // namespace scrubwell::offline
