// Texts of the program settings category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::softwareinstalled {

inline constexpr TText kCaption{65255, u"Programmeinstellungen", u"Program settings"};
inline constexpr TText kShortDescription{
    65256,
    u"Einige Einstellungen von installierten Programmen verweisen auf nicht existierende Dateien "
    u"oder Ordner. Die Einträge können entfernt werden.",
    u"Some settings of installed programs refer to files or folders that do not exist. The entries "
    u"can be removed."};
inline constexpr TText kDescription{
    65257,
    u"Jedes auf dem Computer installierte Programm kann in der Registrierung Einträge mit "
    u"programmspezifischen Informationen (z.B. Daten- oder Programmpfade) ablegen. Bei der "
    u"Deinstallation der Programme werden diese Einträge oftmals nicht gelöscht.",
    u"Every program installed on the computer may keep information of its own in the registry "
    u"(paths to its data or program files, for example). When programs are uninstalled, these "
    u"entries are often left behind."};

inline constexpr TText kMissingCaption{65258,
                                       u"Ungültiger Verweis auf eine Datei oder einen Ordner",
                                       u"Invalid reference to a file or folder"};
inline constexpr TText kMissingShort{
    65259,
    u"Der Wert \"#existingvalue#\" verweist auf die nicht mehr existierende Datei oder Ordner "
    u"\"#missingfile:name#\"",
    u"The value \"#existingvalue#\" refers to the file or folder \"#missingfile:name#\", which no "
    u"longer exists"};
inline constexpr TText kMissingDetail{
    65260,
    u"Im Schlüssel \"#existingkey:regjump#\" verweist der Wert \"#existingvalue#\" auf eine Datei "
    u"oder einen Ordner, der nicht mehr existiert (#missingfile#). Der Wert kann daher gelöscht "
    u"werden.",
    u"In the key \"#existingkey:regjump#\" the value \"#existingvalue#\" refers to a file or "
    u"folder that no longer exists (#missingfile#). The value can therefore be deleted."};

}  // namespace scrubwell::texts::softwareinstalled
