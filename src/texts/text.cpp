#include "texts/text.h"

namespace scrubwell {
namespace {

TLanguage language = TLanguage::German;

}  // namespace

void SetPackageLanguage(TLanguage chosen) {
  language = chosen;
}

TLanguage PackageLanguage() {
  return language;
}

UnicodeString LoadText(const TText& text) {
  return UnicodeString(text.In(language));
}

}  // namespace scrubwell
