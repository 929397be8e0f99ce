// The JSON that journals and records consist of: one object a line, closed by a checksum.
#pragma once

#include <string>
#include <vector>

#include "registry/types.h"

namespace scrubwell {

/// Writes one line. Texts keep every UTF-16 unit, lone surrogates too, for all but ASCII is
/// escaped; bytes become hexadecimal digits.
class JsonLine {
 public:
  JsonLine& Text(std::string_view name, UnicodeView text);
  /// Bytes of a path or message of this machine, each as one unit.
  JsonLine& Raw(std::string_view name, std::string_view bytes);
  JsonLine& Number(std::string_view name, std::int64_t number);
  JsonLine& Data(std::string_view name, const Bytes& bytes);
  JsonLine& BeginList(std::string_view name);
  JsonLine& EndList();
  JsonLine& BeginItem();
  JsonLine& EndItem();
  /// The line with its end. The checksum also covers the lines before: `chain` goes from line to
  /// line and begins with 0.
  std::string Close(std::uint64_t& chain) const;

 private:
  void Name(std::string_view name);
  void Quote(UnicodeView text);
  std::string text_ = "{";
};

/// A parsed value. What is asked for and not there is empty or 0.
struct JsonValue {
  UnicodeString text;
  std::int64_t number = 0;
  std::vector<JsonValue> items;
  std::vector<std::string> names;  ///< of an object's members, which are its items

  [[nodiscard]] const JsonValue& operator[](std::string_view name) const;
  [[nodiscard]] bool Has(std::string_view name) const;
  [[nodiscard]] std::string Raw(std::string_view name) const;
  [[nodiscard]] std::uint64_t Count(std::string_view name) const;
  /// False when the member is no row of hexadecimal digits.
  [[nodiscard]] bool Data(std::string_view name, Bytes& out) const;
};

/// Reads lines up to the first one that is cut, changed or out of its place; false when there is
/// one, and `rest` is then what begins with it. Nesting deeper than 16 is refused.
bool ReadJsonLines(std::string_view bytes, std::vector<JsonValue>& out,
                   std::string_view* rest = nullptr);

}  // namespace scrubwell
