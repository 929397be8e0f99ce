// Texts of the shared files category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::sharedfiles {

inline constexpr TText kCaption{65249, u"Gemeinsame Dateien", u"Shared files"};
inline constexpr TText kShortDescription{
    65250,
    u"Die Registrierung enthält Verweise auf Dateien, die zur Nutzung durch mehrere Anwendungen "
    u"vorgesehen waren, jetzt aber nicht mehr vorhanden sind.",
    u"The registry refers to files that several applications were meant to share but that are no "
    u"longer there."};
inline constexpr TText kDescription{
    65251,
    u"Dieser Bereich der Registrierung enthält Verweise auf Dateien und Programmbibliotheken "
    u"(DLLs), auf die in der Regel mehrere Programme zugreifen müssen. Bei der Deinstallation "
    u"solcher Programme werden diese Einträge oftmals nicht gelöscht.",
    u"This area of the registry refers to files and program libraries (DLLs) that several programs "
    u"usually need. When such programs are uninstalled, these entries are often left behind."};

inline constexpr TText kMissingCaption{65252,
                                       u"Fehlende gemeinsam genutzte Datei \"#missingfile:name#\"",
                                       u"Missing shared file \"#missingfile:name#\""};
inline constexpr TText kMissingShort{
    65253, u"Die Datei konnte im angegebenen Ordner \"#missingfile:path#\" nicht gefunden werden.",
    u"The file was not found in the folder \"#missingfile:path#\" that the entry names."};
inline constexpr TText kMissingDetail{
    65254,
    u"Die Registrierung verweist unter \"#existingkey:regjump#\" auf die fehlende gemeinsam "
    u"genutzte Datei \"#missingfile#\".",
    u"Under \"#existingkey:regjump#\" the registry refers to the missing shared file "
    u"\"#missingfile#\"."};

}  // namespace scrubwell::texts::sharedfiles
