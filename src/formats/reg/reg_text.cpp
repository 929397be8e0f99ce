#include "formats/reg/reg_text.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell::reg {

namespace {

constexpr UnicodeView kHeader = u"Windows Registry Editor Version 5.00";
constexpr UnicodeView kOldHeader = u"REGEDIT4";
constexpr UnicodeView kHexDigits = u"0123456789abcdef";

UnicodeString Decode(std::string_view bytes) {
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF") return FromUtf8(bytes.substr(3));
  if (bytes.substr(0, 2) != "\xFF\xFE") return FromUtf8(bytes);
  UnicodeString text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
    text += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                  static_cast<unsigned char>(bytes[i + 1]) << 8);
  return text;
}

int DigitValue(char16_t unit) {
  const std::size_t at = kHexDigits.find(DownCase(unit));
  return at == UnicodeView::npos ? -1 : static_cast<int>(at);
}

void AppendUnits(Bytes& out, UnicodeView text) {
  for (const char16_t unit : text) {
    out.push_back(static_cast<std::uint8_t>(unit & 0xFFU));
    out.push_back(static_cast<std::uint8_t>(unit >> 8U));
  }
}

bool IsText(std::uint32_t type) {
  return type == REGT_SZ || type == REGT_EXPAND_SZ || type == REGT_MULTI_SZ;
}

// Reads a text from its first character to its last; a value may span lines.
class Parser {
 public:
  Parser(UnicodeView text, const ParseOptions& options)
      : text_(text), loose_(!options.needsHeader) {}

  Document Run() {
    if (Header()) {
      while (result_.error.empty() && Statement()) {
      }
    }
    return std::move(result_);
  }

 private:
  [[nodiscard]] char16_t Peek() const { return at_ < text_.size() ? text_[at_] : u'\0'; }
  [[nodiscard]] bool Done() const { return at_ >= text_.size(); }
  char16_t Take() {
    if (text_[at_] == u'\n') ++line_;
    return text_[at_++];
  }
  bool Skip(UnicodeView word) {
    if (text_.substr(at_, word.size()) != word) return false;
    at_ += word.size();
    return true;
  }
  bool Fail(const char* what) {
    if (result_.error.empty()) {
      result_.error = what;
      result_.errorLine = line_;
    }
    return false;
  }
  void Blanks() {
    while (Peek() == u' ' || Peek() == u'\t') ++at_;
  }
  [[nodiscard]] UnicodeView RestOfLine() const {
    return text_.substr(at_, std::min(text_.find(u'\n', at_), text_.size()) - at_);
  }
  // To the end of the line, where only a comment may stand.
  bool LineEnd() {
    const UnicodeView rest = Trim(RestOfLine());
    if (!rest.empty() && rest.front() != u';') return Fail("unexpected text behind the value");
    at_ += RestOfLine().size();
    return true;
  }

  bool Header() {
    const UnicodeView first = Trim(RestOfLine());
    old_ = first == kOldHeader;
    if (old_ || first == kHeader)
      at_ += RestOfLine().size();
    else if (!loose_)
      return Fail("not a registry text: the first line is missing");
    return true;
  }

  // One key line, value or comment; false at the end and after an error.
  bool Statement() {
    while (!Done() && (Peek() <= u' ')) Take();
    if (Done()) return false;
    switch (Peek()) {
      case u';':
        at_ += RestOfLine().size();
        return true;
      case u'[':
        return KeyLine();
      case u'"':
      case u'@':
        return ValueLine();
      default:
        return Fail("neither a key nor a value");
    }
  }

  bool KeyLine() {
    const UnicodeView line = RestOfLine();
    const std::size_t end = line.rfind(u']');
    if (end == UnicodeView::npos) return Fail("a key without its closing bracket");
    KeyEntry entry;
    entry.remove = line.substr(1, 1) == u"-";
    entry.line = line_;
    const std::size_t begin = entry.remove ? 2 : 1;
    if (end <= begin) return Fail("a key without a name");
    entry.path = line.substr(begin, end - begin);
    result_.keys.push_back(std::move(entry));
    at_ += end + 1;
    return LineEnd();
  }

  bool ValueLine() {
    if (result_.keys.empty()) return Fail("a value before the first key");
    ValueEntry entry;
    if (Peek() == u'@')
      ++at_;
    else if (!Quoted(entry.value.name))
      return false;
    Blanks();
    if (!Skip(u"=")) return Fail("a value without an equals sign");
    Blanks();
    if (Skip(u"-"))
      entry.remove = true;
    else if (!Data(entry.value))
      return false;
    result_.keys.back().values.push_back(std::move(entry));
    return LineEnd();
  }

  bool Quoted(UnicodeString& out) {
    if (!Skip(u"\"")) return Fail("a text without its opening quotation mark");
    while (!Done()) {
      char16_t unit = Take();
      if (unit == u'"') return true;
      if (unit == u'\\' && (Peek() == u'\\' || Peek() == u'"')) unit = Take();
      out += unit;
    }
    return Fail("a text without its closing quotation mark");
  }

  bool Text(RegValue& value, std::uint32_t type) {
    UnicodeString text;
    if (!Quoted(text)) return false;
    value.type = type;
    text += u'\0';
    AppendUnits(value.data, text);
    return true;
  }

  bool Data(RegValue& value) {
    if (Peek() == u'"') return Text(value, REGT_SZ);
    if (loose_ && Skip(u"expand:")) return Text(value, REGT_EXPAND_SZ);
    if (loose_ && Skip(u"multi:")) return Multi(value);
    if (Skip(u"dword:")) return Number(value);
    if (Skip(u"hex")) return Hex(value);
    return Fail("a kind of data that is not known");
  }

  bool Multi(RegValue& value) {
    if (Peek() == u'"') {
      do {
        Blanks();
        if (!Text(value, REGT_MULTI_SZ)) return false;
        Blanks();
      } while (Skip(u","));
    }
    value.type = REGT_MULTI_SZ;
    AppendUnits(value.data, UnicodeView(u"\0", 1));
    return true;
  }

  // Up to eight hexadecimal digits.
  bool HexNumber(std::uint32_t& out) {
    const std::size_t begin = at_;
    out = 0;
    while (!Done() && DigitValue(Peek()) >= 0 && at_ - begin < 9)
      out = out << 4U | static_cast<std::uint32_t>(DigitValue(text_[at_++]));
    return at_ > begin && at_ - begin <= 8;
  }

  bool Number(RegValue& value) {
    std::uint32_t number = 0;
    if (!HexNumber(number)) return Fail("a number that is none");
    value.type = REGT_DWORD;
    for (int shift = 0; shift < 32; shift += 8)
      value.data.push_back(static_cast<std::uint8_t>(number >> shift));
    return true;
  }

  bool Hex(RegValue& value) {
    value.type = REGT_BINARY;
    if (Skip(u"(") && (!HexNumber(value.type) || !Skip(u")"))) return Fail("a type that is none");
    if (!Skip(u":")) return Fail("a colon is missing");
    const bool widen = old_ && IsText(value.type);
    bool more = true;
    while (more) {
      BlanksAndBreaks();
      std::uint32_t byte = 0;
      if (DigitValue(Peek()) < 0 && value.data.empty()) return true;  // no bytes at all
      if (!HexNumber(byte) || byte > 0xFF) return Fail("a byte that is none");
      value.data.push_back(static_cast<std::uint8_t>(byte));
      if (widen) value.data.push_back(0);
      BlanksAndBreaks();
      more = Skip(u",");
    }
    return true;
  }

  // A backslash at the end of a line continues it.
  void BlanksAndBreaks() {
    Blanks();
    while (Peek() == u'\\' && Trim(RestOfLine()) == u"\\") {
      at_ += RestOfLine().size();
      if (!Done()) Take();
      Blanks();
    }
  }

  UnicodeView text_;
  bool loose_;
  bool old_ = false;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
  Document result_;
};

UnicodeString Quote(UnicodeView text) {
  UnicodeString out = u"\"";
  for (const char16_t unit : text) {
    if (unit == u'\\' || unit == u'"') out += u'\\';
    out += unit;
  }
  return out += u'"';
}

// Digits of a number, at least `width` of them.
UnicodeString HexText(std::uint32_t number, std::size_t width) {
  UnicodeString out;
  for (; number != 0 || out.size() < width; number >>= 4U)
    out.insert(out.begin(), kHexDigits[number & 15U]);
  return out;
}

// Whether the data is one text, closed by the only NUL in it.
bool PlainText(const RegValue& value, UnicodeString& text) {
  if (value.type != REGT_SZ || value.data.size() % 2 != 0 || value.data.size() < 2) return false;
  for (std::size_t i = 0; i < value.data.size(); i += 2)
    text += static_cast<char16_t>(value.data[i] | value.data[i + 1] << 8);
  const bool plain = text.find(u'\0') == text.size() - 1;
  text.pop_back();
  return plain;
}

}  // namespace

Document Parse(std::string_view bytes, const ParseOptions& options) {
  const UnicodeString text = Decode(bytes);
  return Parser(text, options).Run();
}

UnicodeString FormatValue(const RegValue& value) {
  UnicodeString out = value.name.empty() ? u"@" : Quote(value.name);
  out += u'=';
  UnicodeString text;
  if (PlainText(value, text)) return out + Quote(text);
  if (value.type == REGT_DWORD && value.data.size() == 4) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;) number = number << 8U | value.data[i];
    return out + u"dword:" + HexText(number, 8);
  }
  out += u"hex";
  if (value.type != REGT_BINARY) out += u"(" + HexText(value.type, 1) + u")";
  out += u':';
  for (std::size_t i = 0; i < value.data.size(); ++i) {
    if (i != 0) out += u',';
    out += kHexDigits[value.data[i] >> 4U];
    out += kHexDigits[value.data[i] & 15U];
  }
  return out;
}

UnicodeString Format(const std::vector<KeyEntry>& keys) {
  UnicodeString out(kHeader);
  out += u"\r\n";
  for (const KeyEntry& key : keys) {
    out += key.remove ? u"\r\n[-" : u"\r\n[";
    out += key.path + u"]\r\n";
    for (const ValueEntry& entry : key.values) {
      if (entry.remove)
        out += (entry.value.name.empty() ? UnicodeString(u"@") : Quote(entry.value.name)) + u"=-";
      else
        out += FormatValue(entry.value);
      out += u"\r\n";
    }
  }
  return out;
}

std::string EncodeUtf16(UnicodeView text) {
  Bytes bytes{0xFF, 0xFE};
  AppendUnits(bytes, text);
  return {bytes.begin(), bytes.end()};
}

}  // namespace scrubwell::reg
