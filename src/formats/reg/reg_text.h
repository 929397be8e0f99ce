// Registry texts: the .reg form that registry editors import and export.
#pragma once

#include <string>

#include "registry/types.h"

namespace scrubwell::reg {

struct ValueEntry {
  RegValue value;
  bool remove = false;  ///< "name"=-
};

struct KeyEntry {
  UnicodeString path;    ///< as written, from the root's name on
  bool remove = false;   ///< [-path]
  std::size_t line = 0;  ///< counts from 1
  std::vector<ValueEntry> values;
};

struct ParseOptions {
  /// False: the text may do without its first line and then is of the current form. Texts written
  /// by hand may also say expand:"..." and multi:"a","b" for the types that else need hex digits.
  bool needsHeader = true;
};

/// A parsed text, or why it is none.
struct Document {
  std::vector<KeyEntry> keys;
  std::string error;          ///< empty when the whole text was understood
  std::size_t errorLine = 0;  ///< counts from 1
  [[nodiscard]] bool Ok() const { return error.empty(); }
};

/// Reads "Windows Registry Editor Version 5.00" and "REGEDIT4" texts in UTF-8 or in UTF-16LE with
/// its mark. In the old form texts of hex types are single bytes and are widened as Latin-1.
/// Stops at the first line it does not understand. Memory is bounded by a small multiple of the
/// input.
Document Parse(std::string_view bytes, const ParseOptions& options = {});

/// One value as its line of a registry text, without the line end.
UnicodeString FormatValue(const RegValue& value);
/// The whole text with its first line, CR LF line ends. Parse reads it back unchanged.
UnicodeString Format(const std::vector<KeyEntry>& keys);
/// The bytes of a text as registry editors write them: UTF-16LE with its mark.
std::string EncodeUtf16(UnicodeView text);

}  // namespace scrubwell::reg
