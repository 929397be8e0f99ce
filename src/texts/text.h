// User-visible texts: every text carries all its languages, so that none can be missing, and its
// placeholders are compared when it is compiled.
#pragma once

#include <array>

#include "registry/types.h"

namespace scrubwell {

enum class TLanguage : std::uint8_t { German, English };

/// One resource string in all languages. The number is 0 where a text has none. A text whose
/// languages use different sets of placeholders (#name#, #name:modifier#, %s) does not compile.
struct TText {
  int id = 0;
  UnicodeView german;
  UnicodeView english;

  constexpr TText() = default;
  constexpr TText(int number, UnicodeView de, UnicodeView en)
      : id(number), german(de), english(en) {
    if (!Covers(de, en) || !Covers(en, de)) throw "placeholders differ between the languages";
  }
  constexpr TText(UnicodeView de, UnicodeView en) : TText(0, de, en) {}

  [[nodiscard]] constexpr UnicodeView In(TLanguage language) const {
    return language == TLanguage::English ? english : german;
  }

 private:
  // Every placeholder of `a` occurs in `b`. A lone "#" is text.
  static constexpr bool Covers(UnicodeView a, UnicodeView b) {
    std::size_t from = 0;
    while ((from = a.find(u'#', from)) != UnicodeView::npos) {
      const std::size_t to = a.find(u'#', from + 1);
      if (to == UnicodeView::npos) break;
      if (b.find(a.substr(from, to - from + 1)) == UnicodeView::npos) return false;
      from = to + 1;
    }
    return (a.find(u"%s") == UnicodeView::npos) == (b.find(u"%s") == UnicodeView::npos);
  }
};

/// The language of the package's texts. A host sets it before start-up; German is the default.
void SetPackageLanguage(TLanguage language);
TLanguage PackageLanguage();
/// The text in the package's language.
UnicodeString LoadText(const TText& text);

}  // namespace scrubwell
