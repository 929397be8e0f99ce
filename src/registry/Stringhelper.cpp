#include "registry/Stringhelper.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "registry/platform.h"

namespace scrubwell {
namespace {

constexpr UnicodeView kPathDelimiters = u"\\/:";

// Nearly all units are ASCII: those are folded here, without a call.
char16_t Upper(char16_t unit) {
  if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
  return UpCase(unit);
}

bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

int HexDigit(char16_t c) {
  if (IsDigit(c)) return c - u'0';
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  return -1;
}

// The byte that two hexadecimal digits at `at` stand for, or -1.
int HexByte(UnicodeView text, std::size_t at) {
  if (at + 2 > text.size()) return -1;
  const int high = HexDigit(text[at]);
  const int low = HexDigit(text[at + 1]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

// Calls visit(first, length) for each field; stops when it answers false.
template <class Visit>
void ForEachField(UnicodeView text, char16_t separator, Visit visit) {
  if (text.empty()) return;
  std::size_t from = 0;
  while (true) {
    const std::size_t to = separator == 0 ? UnicodeView::npos : text.find(separator, from);
    const std::size_t end = to == UnicodeView::npos ? text.size() : to;
    if (!visit(from, end - from) || to == UnicodeView::npos) return;
    from = to + 1;
  }
}

bool IsHighSurrogate(char16_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}
bool IsLowSurrogate(char16_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

void AppendUtf8(std::string& out, std::uint32_t code) {
  const auto put = [&out](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | code >> 6);
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | code >> 12);
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | code >> 18);
    put(0x80 | (code >> 12 & 0x3F));
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  }
}

struct Decoded {
  std::uint32_t code = 0;
  std::size_t length = 0;  // 0: broken
};

// One sequence of UTF-8 that also admits the three-byte form of surrogates.
Decoded DecodeUtf8(std::string_view s, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(s[i]); };
  const std::uint8_t lead = byte(at);
  if (lead < 0x80) return {lead, 1};
  std::size_t length = 0;
  std::uint32_t code = 0;
  std::uint32_t least = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, code = lead & 0x1FU, least = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, code = lead & 0x0FU, least = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, code = lead & 0x07U, least = 0x10000;
  } else {
    return {};
  }
  if (at + length > s.size()) return {};
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return {};
    code = code << 6 | (byte(at + i) & 0x3FU);
  }
  if (code < least || code > 0x10FFFF) return {};
  return {code, length};
}

bool IsValidUtf8(std::string_view s) {
  for (std::size_t i = 0; i < s.size();) {
    const Decoded d = DecodeUtf8(s, i);
    if (d.length == 0) return false;
    i += d.length;
  }
  return true;
}

// The text with its %XX escapes turned into bytes; other units beyond ASCII as UTF-8.
std::string PercentBytes(UnicodeView text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size();) {
    const int value = text[i] == u'%' ? HexByte(text, i + 1) : -1;
    if (value >= 0) {
      bytes.push_back(static_cast<char>(value));
      i += 3;
      continue;
    }
    const std::size_t pair = IsHighSurrogate(text[i]) && i + 1 < text.size() ? 2 : 1;
    bytes += ToUtf8(text.substr(i, pair));
    i += pair;
  }
  return bytes;
}

}  // namespace

void UpperCaseInto(UnicodeView text, UnicodeString& out) {
  out = text;
  char16_t all = 0;
  for (const char16_t c : out) all = static_cast<char16_t>(all | c);
  if (all < 0x80) {
    // Nearly all text is ASCII, which needs no table: compilers make a few instructions of it.
    for (char16_t& c : out) c = static_cast<char16_t>(c - (c >= u'a' && c <= u'z' ? 32 : 0));
  } else {
    for (char16_t& c : out) c = Upper(c);
  }
}

UnicodeString UpperCase(UnicodeView text) {
  UnicodeString out;
  UpperCaseInto(text, out);
  return out;
}

UnicodeString LowerCase(UnicodeView text) {
  UnicodeString out(text);
  for (char16_t& c : out) c = DownCase(c);
  return out;
}

bool SameUnits(UnicodeView a, UnicodeView b) {
  // Memory is compared in blocks, which the standard's comparison of such texts is not.
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0);
}

bool SameText(UnicodeView a, UnicodeView b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(),
                    [](char16_t x, char16_t y) { return x == y || Upper(x) == Upper(y); });
}

int CompareUpCase(UnicodeView a, UnicodeView b) {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    if (a[i] == b[i]) continue;
    const char16_t x = Upper(a[i]);
    const char16_t y = Upper(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

UnicodeView Trim(UnicodeView text) {
  while (!text.empty() && text.front() <= u' ') text.remove_prefix(1);
  while (!text.empty() && text.back() <= u' ') text.remove_suffix(1);
  return text;
}

UnicodeString ParamX(UnicodeView text, char16_t separator, int index) {
  UnicodeString field;
  int number = 0;
  ForEachField(text, separator, [&](std::size_t first, std::size_t length) {
    if (++number != index) return true;
    field = text.substr(first, length);
    return false;
  });
  return field;
}

int ParamXCount(UnicodeView text, char16_t separator) {
  int number = 0;
  ForEachField(text, separator, [&](std::size_t, std::size_t) { return ++number, true; });
  return number;
}

TStringList ParamXAll(UnicodeView text, char16_t separator) {
  TStringList fields;
  ForEachField(text, separator, [&](std::size_t first, std::size_t length) {
    fields.emplace_back(text.substr(first, length));
    return true;
  });
  return fields;
}

UnicodeString RemoveParamX(UnicodeView text, char16_t separator, UnicodeView item) {
  UnicodeString out;
  bool first = true;
  ForEachField(text, separator, [&](std::size_t at, std::size_t length) {
    const UnicodeView field = text.substr(at, length);
    if (SameText(Trim(field), Trim(item))) return true;
    if (!std::exchange(first, false)) out.push_back(separator);
    out.append(field);
    return true;
  });
  return out;
}

UnicodeString Replace(UnicodeView text, UnicodeView from, UnicodeView to) {
  if (from.empty()) return UnicodeString(text);
  UnicodeString out;
  std::size_t at = 0;
  while (true) {
    const std::size_t hit = text.find(from, at);
    out += text.substr(at, hit - at);
    if (hit == UnicodeView::npos) return out;
    out += to;
    at = hit + from.size();
  }
}

UnicodeString RemoveAccelChar(UnicodeView text) {
  UnicodeString out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'&') {
      if (i + 1 >= text.size() || text[i + 1] != u'&') continue;
      ++i;
    }
    out.push_back(text[i]);
  }
  return out;
}

bool ExtractResFileAndIDFromString(UnicodeView text, UnicodeString& file, std::uint32_t& id) {
  file.clear();
  id = 0;
  text = Trim(text);
  if (!text.empty() && text.front() == u'@') text.remove_prefix(1);
  // A packaged application's name ("@{package?resource}") lies in no program file.
  if (text.empty() || text.front() == u'{') return false;
  text = text.substr(0, text.find_first_of(u";#"));
  const std::size_t comma = text.rfind(u',');
  if (comma == UnicodeView::npos) return false;
  UnicodeView number = Trim(text.substr(comma + 1));
  if (!number.empty() && number.front() == u'-') number.remove_prefix(1);
  if (number.empty() || number.size() > 9 || !std::all_of(number.begin(), number.end(), IsDigit)) {
    return false;
  }
  UnicodeView name = Trim(text.substr(0, comma));
  if (name.size() >= 2 && name.front() == u'"' && name.back() == u'"') {
    name = name.substr(1, name.size() - 2);
  }
  if (name.empty()) return false;
  for (const char16_t c : number) id = id * 10 + static_cast<std::uint32_t>(c - u'0');
  file = name;
  return true;
}

UnicodeString UrlDecode(UnicodeView text) {
  const std::string bytes = PercentBytes(text);
  return IsValidUtf8(bytes) ? FromUtf8(bytes) : Platform().text.FromAnsi(bytes);
}

bool PathCreateFromUrl(UnicodeView url, UnicodeString& path) {
  constexpr UnicodeView scheme = u"file:";
  if (url.size() <= scheme.size() || !SameText(url.substr(0, scheme.size()), scheme)) return false;
  UnicodeView rest = url.substr(scheme.size());
  if (rest.starts_with(u"///") || rest.starts_with(u"\\\\\\")) {
    rest.remove_prefix(3);
  } else if (rest.starts_with(u"//localhost/")) {
    rest.remove_prefix(12);
  }
  path = Replace(UrlDecode(rest), u"/", u"\\");
  // "C|" is an old spelling of the drive.
  if (path.size() >= 2 && path[1] == u'|') path[1] = u':';
  return !path.empty();
}

std::int32_t PathParseIconLocation(UnicodeString& path) {
  std::int32_t index = 0;
  const std::size_t comma = path.rfind(u',');
  if (comma != UnicodeString::npos) {
    UnicodeView number = Trim(UnicodeView(path).substr(comma + 1));
    const bool negative = !number.empty() && number.front() == u'-';
    if (negative) number.remove_prefix(1);
    if (!number.empty() && number.size() <= 9 &&
        std::all_of(number.begin(), number.end(), IsDigit)) {
      index = StrToIntDef(number, 0) * (negative ? -1 : 1);
      path.resize(comma);
    }
  }
  UnicodeView name = Trim(path);
  if (name.size() >= 2 && name.front() == u'"' && name.back() == u'"') {
    name = name.substr(1, name.size() - 2);
  }
  path = UnicodeString(name);
  return index;
}

UnicodeView ExtractFileName(UnicodeView path) {
  const std::size_t at = path.find_last_of(kPathDelimiters);
  return at == UnicodeView::npos ? path : path.substr(at + 1);
}

UnicodeView ExtractFilePath(UnicodeView path) {
  const std::size_t at = path.find_last_of(kPathDelimiters);
  if (at == UnicodeView::npos) return {};
  const bool root = path[at] == u':' || at == 0 || path[at - 1] == u':';
  return path.substr(0, root ? at + 1 : at);
}

UnicodeView ExtractFileExt(UnicodeView path) {
  const UnicodeView name = ExtractFileName(path);
  const std::size_t dot = name.rfind(u'.');
  return dot == UnicodeView::npos ? UnicodeView() : name.substr(dot);
}

UnicodeString IncludeTrailingPathDelimiter(UnicodeView path) {
  UnicodeString out(path);
  if (out.empty() || out.back() != u'\\') out.push_back(u'\\');
  return out;
}

UnicodeView ExcludeTrailingPathDelimiter(UnicodeView path) {
  if (!path.empty() && path.back() == u'\\') path.remove_suffix(1);
  return path;
}

UnicodeString QuotedPrintableEncode(UnicodeView text) {
  static constexpr char16_t digits[] = u"0123456789ABCDEF";
  UnicodeString out;
  for (const char c : ToUtf8(text)) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (byte >= 33 && byte <= 126 && byte != u'=') {
      out.push_back(byte);
    } else {
      out.push_back(u'=');
      out.push_back(digits[byte >> 4]);
      out.push_back(digits[byte & 15]);
    }
  }
  return out;
}

UnicodeString QuotedPrintableDecode(UnicodeView text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int value = text[i] == u'=' ? HexByte(text, i + 1) : -1;
    if (value >= 0) {
      bytes.push_back(static_cast<char>(value));
      i += 2;
    } else {
      bytes += ToUtf8(text.substr(i, 1));
    }
  }
  return FromUtf8(bytes);
}

std::string ToUtf8(UnicodeView text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t code = text[i];
    if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      code = 0x10000 + ((code - 0xD800) << 10) + (text[++i] - 0xDC00U);
    }
    AppendUtf8(out, code);
  }
  return out;
}

UnicodeString FromUtf8(std::string_view bytes) {
  UnicodeString out;
  out.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size();) {
    const Decoded d = DecodeUtf8(bytes, i);
    if (d.length == 0) {
      out.push_back(0xFFFD);
      ++i;
    } else if (d.code >= 0x10000) {
      out.push_back(static_cast<char16_t>(0xD800 + ((d.code - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((d.code - 0x10000) & 0x3FF)));
      i += d.length;
    } else {
      out.push_back(static_cast<char16_t>(d.code));
      i += d.length;
    }
  }
  return out;
}

UnicodeString IntToStr(std::int64_t value) {
  const std::string digits = std::to_string(value);
  return {digits.begin(), digits.end()};
}

std::int32_t StrToIntDef(UnicodeView text, std::int32_t fallback) {
  const bool negative = !text.empty() && text.front() == u'-';
  if (negative || (!text.empty() && text.front() == u'+')) text.remove_prefix(1);
  if (text.empty() || text.size() > 10 || !std::all_of(text.begin(), text.end(), IsDigit)) {
    return fallback;
  }
  std::int64_t value = 0;
  for (const char16_t c : text) value = value * 10 + (c - u'0');
  if (negative) value = -value;
  return value < INT32_MIN || value > INT32_MAX ? fallback : static_cast<std::int32_t>(value);
}

UnicodeString FormatText(UnicodeView pattern, std::initializer_list<UnicodeView> texts) {
  UnicodeString out;
  const UnicodeView* next = texts.begin();
  std::size_t at = 0;
  while (true) {
    const std::size_t hit = next == texts.end() ? UnicodeView::npos : pattern.find(u"%s", at);
    out += pattern.substr(at, hit - at);
    if (hit == UnicodeView::npos) return out;
    out += *next++;
    at = hit + 2;
  }
}

}  // namespace scrubwell
