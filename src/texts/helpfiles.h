// Texts of the help files category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::helpfiles {

inline constexpr TText kCaption{65359, u"Hilfedateien", u"Help files"};
inline constexpr TText kShortDescription{
    65328,
    u"In der Registrierung sind Hilfedateien eingetragen, die auf Ihrem System nicht mehr "
    u"vorhanden sind. Die Einträge können sicher entfernt werden.",
    u"The registry lists help files that are no longer on your system. The entries can safely be "
    u"removed."};
inline constexpr TText kDescription{
    65329,
    u"Viele Programme legen Einträge über den Speicherort ihrer Hilfedateien in der Registrierung "
    u"ab. Bei der Deinstallation solcher Programme werden diese Einträge oftmals nicht gelöscht.",
    u"Many programs record in the registry where their help files are. When such programs are "
    u"uninstalled, these entries are often left behind."};

inline constexpr TText kHelpCaption{65330, u"Fehlende Hilfedatei \"#missingfile:name#\"",
                                    u"Missing help file \"#missingfile:name#\""};
inline constexpr TText kHelpShort{
    65331, u"Die Datei konnte im angegebenen Ordner \"#missingfile:path#\" nicht gefunden werden.",
    u"The file was not found in the folder \"#missingfile:path#\" that the entry names."};
inline constexpr TText kHelpDetail{
    65332,
    u"Die Registrierung verweist im Schlüssel \"#existingkey:regjump#\" auf die nicht mehr "
    u"vorhandene Hilfedatei \"#missingfile#\". Der Eintrag kann entfernt werden.",
    u"In the key \"#existingkey:regjump#\" the registry refers to the help file "
    u"\"#missingfile#\", which is no longer there. The entry can be removed."};

inline constexpr TText kHtmlHelpCaption{65333, u"Fehlende HTML-Hilfedatei \"#missingfile:name#\"",
                                        u"Missing HTML help file \"#missingfile:name#\""};
inline constexpr TText kHtmlHelpShort{
    65334, u"Die Datei konnte im angegebenen Ordner \"#missingfile:path#\" nicht gefunden werden.",
    u"The file was not found in the folder \"#missingfile:path#\" that the entry names."};
inline constexpr TText kHtmlHelpDetail{
    65335,
    u"Die Registrierung verweist im Schlüssel \"#existingkey:regjump#\" auf die nicht mehr "
    u"vorhandene HTML-Hilfedatei \"#missingfile#\". Der Eintrag kann entfernt werden.",
    u"In the key \"#existingkey:regjump#\" the registry refers to the HTML help file "
    u"\"#missingfile#\", which is no longer there. The entry can be removed."};

inline constexpr TText kEmptyCaption{65336, u"Defekte Hilfedatei \"#existingfile:name#\"",
                                     u"Damaged help file \"#existingfile:name#\""};
inline constexpr TText kEmptyShort{65337, u"Die Datei \"#existingfile#\" ist 0 Byte groß.",
                                   u"The file \"#existingfile#\" has a size of 0 bytes."};
inline constexpr TText kEmptyDetail{
    65338,
    u"Die Registrierung verweist im Schlüssel \"#existingkey:regjump#\" auf die 0 Byte große "
    u"Hilfedatei \"#existingfile#\". Der Eintrag kann entfernt werden.",
    u"In the key \"#existingkey:regjump#\" the registry refers to the help file "
    u"\"#existingfile#\", which has a size of 0 bytes. The entry can be removed."};

}  // namespace scrubwell::texts::helpfiles
