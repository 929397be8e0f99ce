#include "hosts/report/language.h"

#include <cstdlib>

#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

std::optional<TLanguage> LanguageByName(std::string_view name) {
  if (name == "de") return TLanguage::German;
  if (name == "en") return TLanguage::English;
  return std::nullopt;
}

TLanguage EnvironmentLanguage() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    const std::string_view locale(value);
    // "de", "de_AT.UTF-8", "de.UTF-8", "de@euro", but not "den_CA".
    const bool german =
        locale.starts_with("de") &&
        (locale.size() == 2 || std::string_view("_.@-").find(locale[2]) != std::string_view::npos);
    return german ? TLanguage::German : TLanguage::English;
  }
  return TLanguage::English;
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
