#include "hosts/report/language.h"

#include <algorithm>
#include <cstdlib>

#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

std::optional<TLanguage> LanguageByName(std::string_view name) {
  if (name == "de") return TLanguage::German;
  if (name == "en") return TLanguage::English;
  return std::nullopt;
}

namespace {

// "de", "de_AT.UTF-8", "de.UTF-8", "de@euro", but not "den_CA".
std::optional<TLanguage> LanguageOfLocale(std::string_view locale) {
  return LanguageByName(locale.substr(0, locale.find_first_of("_.@-")));
}

std::string_view Setting(const char* variable) {
  const char* value = std::getenv(variable);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

}  // namespace

std::optional<TLanguage> EnvironmentLanguage() {
  std::string_view locale;
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    locale = Setting(variable);
    if (!locale.empty()) break;
  }
  if (locale.empty()) return std::nullopt;
  if (locale == "C" || locale == "POSIX") return TLanguage::English;
  // A list in the order of preference.
  std::string_view wishes = Setting("LANGUAGE");
  while (!wishes.empty()) {
    const std::size_t end = std::min(wishes.find(':'), wishes.size());
    if (const auto language = LanguageOfLocale(wishes.substr(0, end))) return *language;
    wishes.remove_prefix(std::min(end + 1, wishes.size()));
  }
  return LanguageOfLocale(locale).value_or(TLanguage::English);
}

// Fills in UTF-8, so that paths of the host come out byte for byte, whatever their encoding.
std::string Say(const TText& text, std::initializer_list<std::string_view> values) {
  const std::string pattern = ToUtf8(LoadText(text));
  std::string result;
  std::size_t from = 0;
  for (const std::string_view value : values) {
    const std::size_t mark = pattern.find("%s", from);
    if (mark == std::string::npos) break;
    result.append(pattern, from, mark - from).append(value);
    from = mark + 2;
  }
  return result.append(pattern, from);
}

}  // namespace scrubwell::hosts
