#include "hosts/report/json_writer.h"

#include <algorithm>
#include <array>

#include "hosts/report/problem_parts.h"
#include "hosts/report/surrogates.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

bool validText = false;

void AppendEscape(std::string& out, char16_t unit) {
  constexpr std::string_view digits = "0123456789abcdef";
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) {
    out += digits[static_cast<std::size_t>(unit >> shift & 0xF)];
  }
}

constexpr bool StandsForItself(char16_t unit) {
  return unit >= 0x20 && unit < 0x7F && unit != u'"' && unit != u'\\';
}

// Appends the units up to the first that can't stand as it is, and says how many those were.
// Reports are nearly all made of such: whole blocks are tested and copied without a branch a unit.
std::size_t AppendPlain(std::string& out, UnicodeView text) {
  constexpr std::size_t block = 16;
  std::array<char, block> narrow{};
  std::size_t done = 0;
  while (text.size() - done >= block) {
    unsigned plain = 1;
    for (std::size_t i = 0; i < block; ++i) {
      const char16_t unit = text[done + i];
      plain &= static_cast<unsigned>(StandsForItself(unit));
      narrow[i] = static_cast<char>(unit);
    }
    if (plain == 0) break;
    out.append(narrow.data(), block);
    done += block;
  }
  for (; done < text.size() && StandsForItself(text[done]); ++done) {
    out += static_cast<char>(text[done]);
  }
  return done;
}

// Everything but plain ASCII goes the slow way.
void AppendUnit(std::string& out, UnicodeView text, std::size_t& at, bool valid) {
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
  if (IsUnsafe(unit)) {
    // As they are they would act on the terminal that shows the report.
    AppendEscape(out, unit);
  } else if (IsHighSurrogate(unit) && at + 1 < text.size() && IsLowSurrogate(text[at + 1])) {
    out += ToUtf8(text.substr(at++, 2));
  } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
    AppendEscape(out, valid ? kReplacement : unit);
  } else if (unit < 0x800) {
    out += static_cast<char>(0xC0 | unit >> 6);
    out += static_cast<char>(0x80 | (unit & 0x3F));
  } else {
    out += ToUtf8(text.substr(at, 1));
  }
}

}  // namespace

void WriteValidJsonText(bool valid) {
  validText = valid;
}

JsonWriter::JsonWriter(std::string& out, JsonLayout layout)
    : out_(out), layout_(layout), valid_(validText || layout == JsonLayout::OneLine) {}

JsonWriter& JsonWriter::Key(std::string_view name) {
  Text(name);
  out_ += layout_ == JsonLayout::OneLine ? ":" : ": ";
  afterKey_ = true;
  return *this;
}

void JsonWriter::Text(UnicodeView text) {
  Separate();
  out_ += '"';
  for (std::size_t i = 0; i < text.size(); ++i) {
    i += AppendPlain(out_, text.substr(i));
    if (i < text.size()) AppendUnit(out_, text, i, valid_);
  }
  out_ += '"';
}

void JsonWriter::Text(std::string_view utf8) {
  const auto plain = [](char c) { return StandsForItself(static_cast<unsigned char>(c)); };
  if (std::all_of(utf8.begin(), utf8.end(), plain)) {
    Separate();
    out_.append(1, '"').append(utf8).append(1, '"');
    return;
  }
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

void JsonWriter::Raw(std::string_view value) {
  Separate();
  out_ += value;
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
  if (layout_ == JsonLayout::OneLine) return;
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
