// The JSON that journals and records consist of: one object a line, closed by a checksum.
#pragma once

#include <string>
#include <vector>

#include "formats/sha256/sha256.h"
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
  /// The line with its end. The checksum, a SHA-256, also covers the lines before: `chain` goes
  /// from line to line and begins with zeros.
  std::string Close(Sha256Digest& chain) const;

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

/// Reads lines one by one, up to the first that is cut, changed or out of its place. Lines whose
/// checksums are of the first format (FNV-1a, 64 bits) are read too. Nesting deeper than 16 is
/// refused. The text must outlive the reader.
class JsonLines {
 public:
  explicit JsonLines(std::string_view text) : rest_(text) {}
  /// False at the end, or at what is no whole line.
  bool Next(JsonValue& out);
  /// What has not been read; empty after a text that is whole.
  [[nodiscard]] std::string_view Rest() const { return rest_; }

 private:
  enum class Sum : std::uint8_t { NotKnown, Fnv, Sha256 };
  bool IsRight(std::string_view body, std::string_view sum);

  std::string_view rest_;
  Sum kind_ = Sum::NotKnown;
  std::uint64_t fnv_ = 0;
  Sha256Digest chain_{};
};

}  // namespace scrubwell
