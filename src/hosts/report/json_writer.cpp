#include "hosts/report/json_writer.h"

#include "hosts/report/surrogates.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendEscape(std::string& out, char16_t unit) {
  constexpr std::string_view digits = "0123456789abcdef";
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) {
    out += digits[static_cast<std::size_t>(unit >> shift & 0xF)];
  }
}

// Everything but ASCII letters goes the slow way.
void AppendUnit(std::string& out, UnicodeView text, std::size_t& at) {
  const char16_t unit = text[at];
  switch (unit) {
    case u'"':
      out += "\\\"";
      return;
    case u'\\':
      out += "\\\\";
      return;
    case u'\n':
      out += "\\n";
      return;
    case u'\r':
      out += "\\r";
      return;
    case u'\t':
      out += "\\t";
      return;
    default:
      break;
  }
  if (unit < 0x20 || unit == 0x7F) {
    AppendEscape(out, unit);
  } else if (IsHighSurrogate(unit) && at + 1 < text.size() && IsLowSurrogate(text[at + 1])) {
    out += ToUtf8(text.substr(at++, 2));
  } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
    AppendEscape(out, unit);
  } else {
    out += ToUtf8(text.substr(at, 1));
  }
}

}  // namespace

JsonWriter& JsonWriter::Key(std::string_view name) {
  Text(name);
  out_ += ": ";
  afterKey_ = true;
  return *this;
}

void JsonWriter::Text(UnicodeView text) {
  Separate();
  out_ += '"';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    if (unit >= 0x20 && unit < 0x7F && unit != u'"' && unit != u'\\') {
      out_ += static_cast<char>(unit);
    } else {
      AppendUnit(out_, text, i);
    }
  }
  out_ += '"';
}

void JsonWriter::Text(std::string_view utf8) {
  Text(UnicodeView(FromUtf8(utf8)));
}

void JsonWriter::Number(std::int64_t number) {
  Separate();
  out_ += std::to_string(number);
}

void JsonWriter::Bool(bool value) {
  Separate();
  out_ += value ? "true" : "false";
}

void JsonWriter::Separate() {
  if (!afterKey_) {
    if (!first_) out_ += ',';
    if (depth_ > 0) NewLine();
  }
  afterKey_ = false;
  first_ = false;
}

void JsonWriter::NewLine() {
  out_ += '\n';
  out_.append(depth_ * 2, ' ');
}

void JsonWriter::Open(char bracket) {
  Separate();
  out_ += bracket;
  ++depth_;
  first_ = true;
}

void JsonWriter::Close(char bracket) {
  --depth_;
  if (!first_) NewLine();
  out_ += bracket;
  first_ = false;
}

}  // namespace scrubwell::hosts
