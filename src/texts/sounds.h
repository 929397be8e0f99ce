// Texts of the sounds category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::sounds {

inline constexpr TText kCaption{65261, u"Akustische Signale", u"Sounds"};
inline constexpr TText kShortDescription{
    65262,
    u"Einige Akustische Signale verweisen auf Klangdateien, die auf Ihrem System nicht mehr "
    u"vorhanden sind.",
    u"Some sounds refer to sound files that are no longer on your system."};
inline constexpr TText kDescription{
    65263,
    u"Bei bestimmten System- oder Programmereignissen (z.B. Fehlermeldungen) werden Klangdateien "
    u"als akustische Signale abgespielt. Dies geschieht über den Aufruf entsprechender Einträge in "
    u"der Registrierung, die ungültig werden, sobald die entsprechenden Klangdateien nicht mehr "
    u"existieren.",
    u"At certain events of the system or a program (error messages, for example) sound files are "
    u"played. Entries in the registry say which ones; they become invalid as soon as their sound "
    u"files no longer exist."};

inline constexpr TText kMissingCaption{65234,
                                       u"Ereignis \"#event#\" der Anwendung \"#application#\"",
                                       u"Event \"#event#\" of the application \"#application#\""};
inline constexpr TText kMissingShort{
    65235,
    u"Die zu diesem Akustischen Signal gehörende Datei \"#missingfile#\" des Audioschemas "
    u"\"#scheme#\" konnte nicht gefunden werden.",
    u"The file \"#missingfile#\" that the sound scheme \"#scheme#\" plays for this event was not "
    u"found."};
inline constexpr TText kMissingDetail{
    65236,
    u"Die Registrierung verweist im Schlüssel \"#existingkey:regjump#\" der Anwendung "
    u"\"#application#\" auf die fehlende Datei \"#missingfile#\". Dieser ungültige Verweis kann "
    u"entfernt werden.",
    u"In the key \"#existingkey:regjump#\" of the application \"#application#\" the registry "
    u"refers to the missing file \"#missingfile#\". This invalid reference can be removed."};

inline constexpr TText kOverwritingValue{65232, u"Überschreibe Registrierungswert:",
                                         u"Overwriting registry value:"};
/// The scheme that is in force.
inline constexpr TText kCurrentScheme{65233, u"Aktuell", u"Current"};

}  // namespace scrubwell::texts::sounds
