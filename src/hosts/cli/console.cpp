#include "hosts/cli/console.h"

#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

bool MeansYes(std::string_view answer) {
  const UnicodeString word(Trim(FromUtf8(answer)));
  for (const UnicodeView yes : {u"y", u"yes", u"j", u"ja"}) {
    if (SameText(word, yes)) return true;
  }
  return false;
}

}  // namespace scrubwell::hosts
