#include "backends/offline/text_services.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>

#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

// The letters under the marks of U+00C0 to U+00DE, in upper case; "*" keeps its own place.
constexpr std::string_view kBaseLetters = "AAAAAAACEEEEIIIIDNOOOOO*OUUUUYT";

// A byte below it that has no character is a control character to Windows, any other one a unit of
// private use, so that every byte comes back.
constexpr unsigned kFirstPrintable = 0xA0;
constexpr unsigned kPrivateUse = 0xF800;

char16_t BaseLetter(char16_t unit) {
  const char16_t upper = UpCase(unit);
  if (upper == 0xDF) return u'S';
  if (upper < 0xC0 || upper >= 0xC0 + kBaseLetters.size()) return upper;
  const char base = kBaseLetters[upper - 0xC0U];
  return base == '*' ? upper : static_cast<char16_t>(base);
}

void* OpenConverter(const char* to, const std::string& from) {
  iconv_t converter = ::iconv_open(to, from.c_str());
  return converter == reinterpret_cast<iconv_t>(-1) ? nullptr : converter;
}

// Converts all of it; `skip` input bytes that have no counterpart become one question mark.
std::string Convert(void* converter, std::string_view input, std::size_t skip,
                    std::string_view question) {
  std::string result;
  std::string buffer(input.size() * 4 + 16, '\0');
  ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
  char* in = const_cast<char*>(input.data());
  std::size_t inLeft = input.size();
  while (inLeft > 0) {
    char* out = buffer.data();
    std::size_t outLeft = buffer.size();
    const bool whole =
        ::iconv(converter, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1);
    const bool full = !whole && errno == E2BIG;
    result.append(buffer.data(), buffer.size() - outLeft);
    if (whole || full) continue;
    result += question;
    const std::size_t step = std::min(skip, inLeft);
    in += step;
    inLeft -= step;
  }
  // Some pages hold the last character back, for a mark might have followed.
  char* out = buffer.data();
  std::size_t outLeft = buffer.size();
  ::iconv(converter, nullptr, nullptr, &out, &outLeft);
  result.append(buffer.data(), buffer.size() - outLeft);
  return result;
}

// The one unit that a byte stands for by itself. False for the first of several bytes.
bool UnitOfByte(void* converter, unsigned char byte, char16_t& unit) {
  char input = static_cast<char>(byte);
  char* in = &input;
  std::size_t inLeft = 1;
  std::array<char, 8> units{};
  char* out = units.data();
  std::size_t outLeft = units.size();
  ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
  if (::iconv(converter, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1)) {
    unit = static_cast<char16_t>(byte < kFirstPrintable ? byte : kPrivateUse + byte);
    return errno == EILSEQ;
  }
  ::iconv(converter, nullptr, nullptr, &out, &outLeft);
  unit = static_cast<char16_t>(static_cast<unsigned char>(units[0]) |
                               static_cast<unsigned char>(units[1]) << 8);
  return units.size() - outLeft == 2;
}

}  // namespace

TextServices::TextServices(unsigned codePage) : codePage_(codePage) {
  const auto name = [](unsigned page) {
    return page == 65001 ? std::string("UTF-8") : "CP" + std::to_string(page);
  };
  fromAnsi_ = OpenConverter("UTF-16LE", name(codePage_));
  if (fromAnsi_ == nullptr) {
    exact_ = false;
    codePage_ = 1252;
    fromAnsi_ = OpenConverter("UTF-16LE", name(codePage_));
  }
  toAnsi_ = OpenConverter(name(codePage_).c_str(), "UTF-16LE");
  FillTable();
}

// Pages of several bytes a character are left to the converter.
void TextServices::FillTable() {
  if (fromAnsi_ == nullptr) return;
  for (unsigned byte = 0; byte < table_.size(); ++byte) {
    if (!UnitOfByte(fromAnsi_, static_cast<unsigned char>(byte), table_[byte]))
      return bytes_.clear();
    bytes_.emplace(table_[byte], static_cast<char>(byte));
  }
}

TextServices::~TextServices() {
  for (void* const converter : {fromAnsi_, toAnsi_}) {
    if (converter != nullptr) ::iconv_close(converter);
  }
}

int TextServices::CompareText(UnicodeView a, UnicodeView b) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    const char16_t left = BaseLetter(a[i]);
    const char16_t right = BaseLetter(b[i]);
    if (left != right) return left < right ? -1 : 1;
  }
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return CompareUpCase(a, b);
}

UnicodeString TextServices::FromAnsi(std::string_view bytes) {
  UnicodeString text;
  if (!bytes_.empty()) {
    for (const char byte : bytes) text += table_[static_cast<unsigned char>(byte)];
    return text;
  }
  if (fromAnsi_ == nullptr) return UnicodeString(bytes.size(), u'?');
  const std::string units = Convert(fromAnsi_, bytes, 1, std::string_view("?\0", 2));
  for (std::size_t i = 0; i + 1 < units.size(); i += 2) {
    text.push_back(static_cast<char16_t>(static_cast<unsigned char>(units[i]) |
                                         static_cast<unsigned char>(units[i + 1]) << 8));
  }
  return text;
}

std::string TextServices::ToAnsi(UnicodeView text) {
  std::string units;
  if (!bytes_.empty()) {
    for (const char16_t unit : text) {
      const auto known = bytes_.find(unit);
      units += known == bytes_.end() ? '?' : known->second;
    }
    return units;
  }
  if (toAnsi_ == nullptr) return std::string(text.size(), '?');
  for (const char16_t unit : text) {
    units.push_back(static_cast<char>(unit & 0xFF));
    units.push_back(static_cast<char>(unit >> 8));
  }
  return Convert(toAnsi_, units, 2, "?");
}

}  // namespace scrubwell::offline
