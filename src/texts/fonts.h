// Texts of the fonts category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::fonts {

inline constexpr TText kCaption{65350, u"Schriftarten", u"Fonts"};
inline constexpr TText kShortDescription{
    65351,
    u"Einige der bei Windows eingetragenen Schriftarten sind nicht mehr vorhanden oder defekt. Da "
    u"bei jedem Start versucht wird, die Schriften zu laden, sollten diese Einträge entfernt "
    u"werden.",
    u"Some of the fonts registered with Windows are missing or damaged. As Windows tries to load "
    u"them at every start, these entries should be removed."};
inline constexpr TText kDescription{
    65352,
    u"Windows hinterlegt für alle auf Ihrem Computer installierten Schriftarten Einträge in diesem "
    u"Bereich der Registrierung. Da diese Einträge bei der Deinstallation von Schriftarten "
    u"oftmals nicht gelöscht werden, versucht Windows bei jedem Systemstart vergeblich, die "
    u"entsprechenden Schriftarten zu laden.",
    u"In this area of the registry Windows keeps an entry for every font installed on your "
    u"computer. These entries are often left behind when fonts are uninstalled, and Windows then "
    u"tries in vain to load those fonts at every start."};

inline constexpr TText kMissingCaption{65353, u"Fehlende Schriftart \"#caption#\"",
                                       u"Missing font \"#caption#\""};
inline constexpr TText kMissingShort{
    65354, u"Die mit dieser Schriftart verknüpfte Datei \"#missingfile#\" ist nicht vorhanden.",
    u"The file \"#missingfile#\" that belongs to this font does not exist."};
inline constexpr TText kMissingDetail{
    65355,
    u"In der Registrierung ist unter \"#existingkey:regjump#\" die Schriftart \"#caption#\" "
    u"eingetragen, die auf die nicht vorhandene Datei \"#missingfile#\" verweist.",
    u"Under \"#existingkey:regjump#\" the registry lists the font \"#caption#\", which refers to "
    u"the file \"#missingfile#\". That file does not exist."};

inline constexpr TText kEmptyCaption{65356, u"Defekte Schriftart \"#caption#\"",
                                     u"Damaged font \"#caption#\""};
inline constexpr TText kEmptyShort{
    65357, u"Die mit dieser Schriftart verknüpfte Datei \"#existingfile#\" ist 0 Byte groß.",
    u"The file \"#existingfile#\" that belongs to this font has a size of 0 bytes."};
inline constexpr TText kEmptyDetail{
    65358,
    u"In der Registrierung ist unter \"#existingkey:regjump#\" die Schriftart \"#caption#\" "
    u"eingetragen, die auf die 0 Byte große Datei \"#existingfile#\" verweist.",
    u"Under \"#existingkey:regjump#\" the registry lists the font \"#caption#\", which refers to "
    u"the file \"#existingfile#\". That file has a size of 0 bytes."};

}  // namespace scrubwell::texts::fonts
