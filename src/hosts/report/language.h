// The language the program speaks, and its texts ready for the terminal.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "texts/text.h"

namespace scrubwell::hosts {

/// "de" or "en"; nothing for any other name.
std::optional<TLanguage> LanguageByName(std::string_view name);

/// What the environment asks for. The first of LC_ALL, LC_MESSAGES and LANG that is set decides;
/// unless it is "C" or "POSIX", the languages in LANGUAGE come before it. English where none of
/// them is spoken here; nothing when none is set.
std::optional<TLanguage> EnvironmentLanguage();

/// A text in the package's language as UTF-8, its "%s" filled in order.
std::string Say(const TText& text, std::initializer_list<std::string_view> values = {});

}  // namespace scrubwell::hosts
