#include "backends/common/json_line.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "backends/common/content_digest.h"

namespace scrubwell {
namespace {

constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::string_view kSumName = ",\"sum\":\"";
constexpr int kMaxDepth = 16;

std::string Hex(std::uint64_t value, int digits) {
  std::string text;
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) text += kDigits[value >> shift & 15U];
  return text;
}

int DigitOf(char16_t unit) {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
  return -1;
}

Sha256Digest LineSum(std::string_view body, const Sha256Digest& chain) {
  return Sha256().Add(chain).Add(body).Finish();
}

// Exactly the JSON that JsonLine writes: no blanks, no fractions, no other escapes than \u.
class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}
  bool Parse(JsonValue& out) { return Value(out, 0) && at_ == text_.size(); }

 private:
  bool Take(char c) {
    if (at_ >= text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }
  bool Value(JsonValue& out, int depth) {
    if (depth > kMaxDepth || at_ >= text_.size()) return false;
    if (text_[at_] == '"') return Quoted(out.text);
    if (Take('{')) return Members(out, depth);
    if (Take('[')) return Items(out, depth);
    const char* const begin = text_.data() + at_;
    const auto [end, error] = std::from_chars(begin, text_.data() + text_.size(), out.number);
    at_ += static_cast<std::size_t>(end - begin);
    return error == std::errc();
  }
  bool Members(JsonValue& out, int depth) {
    if (Take('}')) return true;
    do {
      UnicodeString name;
      JsonValue value;
      if (!Quoted(name) || !Take(':') || !Value(value, depth + 1)) return false;
      out.names.emplace_back(name.begin(), name.end());
      out.items.push_back(std::move(value));
    } while (Take(','));
    return Take('}');
  }
  bool Items(JsonValue& out, int depth) {
    if (Take(']')) return true;
    do {
      if (!Value(out.items.emplace_back(), depth + 1)) return false;
    } while (Take(','));
    return Take(']');
  }
  bool Quoted(UnicodeString& out) {
    if (!Take('"')) return false;
    for (;;) {
      if (at_ >= text_.size()) return false;
      const char c = text_[at_++];
      if (c == '"') return true;
      if (c != '\\') {
        out += static_cast<char16_t>(static_cast<unsigned char>(c));
      } else if (!Escape(out)) {
        return false;
      }
    }
  }
  bool Escape(UnicodeString& out) {
    if (!Take('u') || text_.size() - at_ < 4) return false;
    unsigned unit = 0;
    for (int i = 0; i < 4; ++i) {
      const int digit = DigitOf(static_cast<char16_t>(text_[at_++]));
      if (digit < 0) return false;
      unit = unit << 4U | static_cast<unsigned>(digit);
    }
    out += static_cast<char16_t>(unit);
    return true;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace

void JsonLine::Name(std::string_view name) {
  if (text_.back() != '{' && text_.back() != '[') text_ += ',';
  text_ += '"';
  text_ += name;
  text_ += "\":";
}

void JsonLine::Quote(UnicodeView text) {
  text_ += '"';
  for (const char16_t unit : text) {
    if (unit >= 0x20 && unit < 0x7F && unit != u'"' && unit != u'\\') {
      text_ += static_cast<char>(unit);
    } else {
      text_ += "\\u" + Hex(unit, 4);
    }
  }
  text_ += '"';
}

JsonLine& JsonLine::Text(std::string_view name, UnicodeView text) {
  Name(name);
  Quote(text);
  return *this;
}

JsonLine& JsonLine::Raw(std::string_view name, std::string_view bytes) {
  UnicodeString text;
  for (const char c : bytes) text += static_cast<char16_t>(static_cast<unsigned char>(c));
  return Text(name, text);
}

JsonLine& JsonLine::Number(std::string_view name, std::int64_t number) {
  Name(name);
  text_ += std::to_string(number);
  return *this;
}

JsonLine& JsonLine::Data(std::string_view name, const Bytes& bytes) {
  Name(name);
  text_ += '"';
  for (const std::uint8_t byte : bytes) {
    text_ += kDigits[byte >> 4U];
    text_ += kDigits[byte & 15U];
  }
  text_ += '"';
  return *this;
}

JsonLine& JsonLine::BeginList(std::string_view name) {
  Name(name);
  text_ += '[';
  return *this;
}

JsonLine& JsonLine::EndList() {
  text_ += ']';
  return *this;
}

JsonLine& JsonLine::BeginItem() {
  if (text_.back() == '}') text_ += ',';
  text_ += '{';
  return *this;
}

JsonLine& JsonLine::EndItem() {
  text_ += '}';
  return *this;
}

std::string JsonLine::Close(Sha256Digest& chain) const {
  chain = LineSum(text_, chain);
  return text_ + std::string(kSumName) + ToHex(chain) + "\"}\n";
}

const JsonValue& JsonValue::operator[](std::string_view name) const {
  static const JsonValue kNothing;
  const auto it = std::find(names.begin(), names.end(), name);
  return it == names.end() ? kNothing : items[static_cast<std::size_t>(it - names.begin())];
}

bool JsonValue::Has(std::string_view name) const {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string JsonValue::Raw(std::string_view name) const {
  std::string bytes;
  for (const char16_t unit : (*this)[name].text) bytes += static_cast<char>(unit);
  return bytes;
}

std::uint64_t JsonValue::Count(std::string_view name) const {
  return static_cast<std::uint64_t>((*this)[name].number);
}

bool JsonValue::Data(std::string_view name, Bytes& out) const {
  const UnicodeString& digits = (*this)[name].text;
  out.clear();
  if (digits.size() % 2 != 0) return false;
  out.reserve(digits.size() / 2);
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const int high = DigitOf(digits[i]);
    const int low = DigitOf(digits[i + 1]);
    if (high < 0 || low < 0) return false;
    out.push_back(static_cast<std::uint8_t>(high << 4 | low));
  }
  return true;
}

bool JsonLines::IsRight(std::string_view body, std::string_view sum) {
  constexpr std::size_t kFnvDigits = 16;
  if (kind_ == Sum::NotKnown) kind_ = sum.size() == kFnvDigits ? Sum::Fnv : Sum::Sha256;
  if (kind_ == Sum::Fnv) {
    const auto* const data = reinterpret_cast<const std::uint8_t*>(body.data());
    fnv_ = Fnv1a({data, body.size()}, FnvStart ^ fnv_);
    return sum == Hex(fnv_, kFnvDigits);
  }
  chain_ = LineSum(body, chain_);
  return sum == ToHex(chain_);
}

bool JsonLines::Next(JsonValue& out) {
  constexpr std::string_view kEnd = "\"}";
  out = {};
  const std::size_t end = rest_.find('\n');
  if (end == std::string_view::npos) return false;
  const std::string_view line = rest_.substr(0, end);
  const std::size_t name = line.rfind(kSumName);
  if (name == std::string_view::npos || !line.ends_with(kEnd)) return false;
  const std::size_t from = name + kSumName.size();
  if (line.size() < from + kEnd.size()) return false;
  const std::string_view sum = line.substr(from, line.size() - kEnd.size() - from);
  if (!IsRight(line.substr(0, name), sum) || !Parser(line).Parse(out)) return false;
  rest_.remove_prefix(end + 1);
  return true;
}

}  // namespace scrubwell
