// Texts of the autostart category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::autostart {

inline constexpr TText kCaption{u"Autostart", u"Autostart"};
inline constexpr TText kShortDescription{
    u"Einige inzwischen nicht mehr vorhandene Programme sollen beim Systemstart automatisch "
    u"geladen werden. Da Windows nach diesen Programmen vergeblich sucht, verlangsamt sich der "
    u"Systemstart.",
    u"Some programs that are no longer there are set to start with the system. Windows looks for "
    u"them in vain, which slows down the start of the system."};
inline constexpr TText kDescription{
    u"Viele Programme starten automatisch zusammen mit Windows (z.B. Virenscanner). Dies geschieht "
    u"über Einträge im Autostart-Bereich der Registrierung. Bei der Deinstallation solcher "
    u"Programme werden diese Einträge oftmals nicht gelöscht.",
    u"Many programs, virus scanners for example, start together with Windows. Entries in the "
    u"autostart area of the registry make them do so. When such programs are uninstalled, these "
    u"entries are often left behind."};

inline constexpr TText kEntryCaption{u"#caption#", u"#caption#"};
inline constexpr TText kEntryShort{
    u"Dieser Autostart-Eintrag verweist auf das fehlende Programm \"#missingfile#\".",
    u"This autostart entry refers to the missing program \"#missingfile#\"."};
inline constexpr TText kEntryDetail{
    u"Die Registrierung enthält im Schlüssel \"#existingkey:regjump#\" den Autostart-Eintrag "
    u"\"#caption#\", der auf das nicht mehr vorhandene Programm \"#missingfile#\" verweist. Dieser "
    u"ungültige Eintrag sollte gelöscht werden.",
    u"In the key \"#existingkey:regjump#\" the registry holds the autostart entry \"#caption#\", "
    u"which refers to the program \"#missingfile#\" that is no longer there. This invalid entry "
    u"should be deleted."};

inline constexpr TText kTaskCaption{u"Ungültiger geplanter Task \"#displayname#\"",
                                    u"Invalid scheduled task \"#displayname#\""};
inline constexpr TText kTaskShort{
    u"Dieser geplante Task verweist auf die fehlende Datei \"#missingfile#\".",
    u"This scheduled task refers to the missing file \"#missingfile#\"."};
inline constexpr TText kTaskDetail{
    u"Der geplante Task \"#displayname#\" verweist auf die nicht mehr vorhandene Datei "
    u"\"#missingfile#\". Dieser ungültige Eintrag kann entfernt werden.",
    u"The scheduled task \"#displayname#\" refers to the file \"#missingfile#\", which is no "
    u"longer there. This invalid entry can be removed."};

}  // namespace scrubwell::texts::autostart
