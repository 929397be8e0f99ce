// JSON written straight from UTF-16, so that texts which are no valid Unicode survive: a lone
// surrogate comes out as its \udXXX escape, which no library's string type would let through. Some
// readers stop there; for them, and in lines that are read by such, it becomes U+FFFD.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "registry/types.h"

namespace scrubwell::hosts {

enum class JsonLayout : std::uint8_t { Indented, OneLine };

/// Whether lone surrogates are to become U+FFFD in all that is written from now on.
void WriteValidJsonText(bool valid);

/// Appends to a text that outlives it. Calls must nest as JSON does; Key comes before each member
/// of an object.
class JsonWriter {
 public:
  explicit JsonWriter(std::string& out, JsonLayout layout = JsonLayout::Indented);

  JsonWriter& Key(std::string_view name);
  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }
  void Text(UnicodeView text);
  void Text(std::string_view utf8);
  void Number(std::int64_t number);
  void Bool(bool value);
  /// A value that is JSON already, as it stands.
  void Raw(std::string_view value);

 private:
  void Separate();
  void NewLine();
  void Open(char bracket);
  void Close(char bracket);

  std::string& out_;
  JsonLayout layout_;
  bool valid_;
  std::size_t depth_ = 0;
  bool first_ = true;      // no member of the innermost bracket yet
  bool afterKey_ = false;  // the next value belongs to a key
};

}  // namespace scrubwell::hosts
