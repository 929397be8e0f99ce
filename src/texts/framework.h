// Texts of the framework itself: progress of a repair, and names of shell verbs.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::framework {

inline constexpr TText kDeletingKey{u"Lösche Registrierungsschlüssel:", u"Deleting registry key:"};
inline constexpr TText kDeletingValue{u"Lösche Registrierungswert:", u"Deleting registry value:"};
inline constexpr TText kDefaultValue{u"Standardwert", u"Default value"};

/// What a shell verb is called when its key gives it no name.
struct TVerbName {
  UnicodeView verb;
  TText name;
};

inline constexpr std::array<TVerbName, 6> kVerbNames{{
    {u"open", {u"Öffnen", u"Open"}},
    {u"edit", {u"Bearbeiten", u"Edit"}},
    {u"print", {u"Drucken", u"Print"}},
    {u"explore", {u"Explorer", u"Explorer"}},
    {u"openas", {u"Öffnen mit...", u"Open with..."}},
    {u"find", {u"Suchen...", u"Search..."}},
}};

}  // namespace scrubwell::texts::framework
