// INI files, edited without losing a byte.
#pragma once

#include <functional>
#include <string>
#include <unordered_map>

#include "registry/types.h"

namespace scrubwell::ini {

/// A larger file is no settings file: it is refused instead of indexed.
inline constexpr std::size_t kMaxFileSize = std::size_t{4} << 20;

/// How the bytes of a file without a UTF-16 mark stand for text: the installation's ANSI page.
/// Both functions answer for every input; a text that does not come back from
/// decode(encode(text)) is never written.
struct Codec {
  std::function<UnicodeString(std::string_view)> decode;
  std::function<std::string(UnicodeView)> encode;
};

/// One INI file with the reading rules of Windows' profile functions: names compare without letter
/// case, the first of equal sections and of equal keys counts, blanks around names and values and
/// one pair of quotes around a value are no part of them, a comment is a whole line that begins
/// with ";". Everything that no call names keeps its bytes. Not safe for use by two threads.
class Document {
 public:
  /// Replaces the document. Corrupt when the file is too large, Unknown when it begins with the
  /// big-endian UTF-16 mark (how Windows reads that is not settled); the document is then empty
  /// and not to be written back. Nothing else can go wrong: any bytes are a document.
  Status Parse(const Bytes& data, Codec codec);
  /// Absent when there is no such section or key. A key with nothing behind "=" is Ok and empty.
  [[nodiscard]] Status Get(UnicodeView section, UnicodeView key, UnicodeString& out) const;
  /// The key names of the section in the file's order, each once.
  [[nodiscard]] Status Entries(UnicodeView section, TStringList& out) const;
  /// Replaces the bytes of the value, quotes included, or adds the key behind the section's last
  /// line that isn't blank, or adds section and key at the end of the file. Denied, and nothing
  /// changed, when the text could not be read back: characters outside the file's code page, line
  /// breaks, "=" in a key, "]" in a section.
  Status Set(UnicodeView section, UnicodeView key, UnicodeView value);
  /// Takes the key's whole line out. A later duplicate then comes to light, as it does in Windows.
  Status Remove(UnicodeView section, UnicodeView key);
  /// The file as it is to be stored.
  [[nodiscard]] scrubwell::Bytes Bytes() const;

 private:
  struct Range {
    std::uint32_t begin = 0, end = 0;
  };
  struct Entry {
    Range line, name, value;  ///< the line with its line end; the value with its quotes
  };
  struct Section {
    std::vector<Entry> entries;
    std::unordered_map<UnicodeString, std::size_t> byName;  ///< upper-cased name to entry
    std::uint32_t insertAt = 0;
  };

  void Index();
  void IndexLine(Range line, Section*& current);
  Section* OpenSection(UnicodeView header);
  void IndexEntry(Range line, Range content, Section& section);
  [[nodiscard]] UnicodeView Text(Range range) const;
  [[nodiscard]] UnicodeString Decode(UnicodeView units) const;
  [[nodiscard]] bool Encode(UnicodeView text, UnicodeString& units) const;
  [[nodiscard]] const Section* FindSection(UnicodeView name) const;
  [[nodiscard]] const Entry* FindEntry(UnicodeView section, UnicodeView key) const;
  [[nodiscard]] UnicodeView LineEndBefore(std::size_t position) const;
  void InsertLine(std::size_t position, const UnicodeString& line);

  Codec codec_;
  bool utf16_ = false;
  /// The file's units: UTF-16 units behind the mark, or one unit a byte, not decoded.
  UnicodeString units_;
  scrubwell::Bytes oddByte_;                             ///< a UTF-16 file's half unit at its end
  std::unordered_map<UnicodeString, Section> sections_;  ///< by upper-cased name
};

}  // namespace scrubwell::ini
