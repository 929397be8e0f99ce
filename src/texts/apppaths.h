// Texts of the application paths category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::apppaths {

inline constexpr TText kCaption{65439, u"Programmpfade", u"Program paths"};
inline constexpr TText kShortDescription{
    65408,
    u"In der Registrierung sind für einige Programme ungültige Suchpfade eingetragen. Diese können "
    u"gelöscht werden.",
    u"For some programs the registry holds invalid search paths. They can be deleted."};
inline constexpr TText kDescription{
    65409,
    u"Die Installationsordner einiger Programme werden in der Registrierung gespeichert, damit sie "
    u"eine direkte Ausführung dieser Programme über \"Start -> Ausführen\" ermöglichen. Bei der "
    u"Deinstallation solcher Programme werden diese Einträge oftmals nicht gelöscht.",
    u"The registry stores where some programs are installed, so that they can be started directly "
    u"through \"Start -> Run\". When such programs are uninstalled, these entries are often left "
    u"behind."};

inline constexpr TText kMissingCaption{65410, u"#caption#", u"#caption#"};
inline constexpr TText kMissingShort{
    65411,
    u"Der angegebene Anwendungspfad \"#missingfile#\" zum Programm \"#caption#\" konnte nicht "
    u"gefunden werden.",
    u"The path \"#missingfile#\" that is given for the program \"#caption#\" was not found."};
inline constexpr TText kMissingDetail{
    65412,
    u"In der Registrierung ist unter \"#existingkey:regjump#\" ein Anwendungspfad zu \"#caption#\" "
    u"eingetragen. Dieser verweist auf das nicht mehr vorhandene Ziel \"#missingfile#\" und kann "
    u"daher gelöscht werden.",
    u"Under \"#existingkey:regjump#\" the registry holds a path for \"#caption#\". It refers to "
    u"\"#missingfile#\", which is no longer there, and can therefore be deleted."};

inline constexpr TText kNoPathCaption{65413, u"#caption#", u"#caption#"};
inline constexpr TText kNoPathShort{
    65414, u"Es wurde kein Anwendungspfad zum Programm \"#caption#\" angegeben.",
    u"No path is given for the program \"#caption#\"."};
inline constexpr TText kNoPathDetail{
    65415,
    u"In der Registrierung ist unter \"#existingkey:regjump#\" kein Anwendungspfad zu "
    u"\"#caption#\" eingetragen. Der Schlüssel kann daher gelöscht werden.",
    u"Under \"#existingkey:regjump#\" the registry holds no path for \"#caption#\". The key can "
    u"therefore be deleted."};

inline constexpr TText kEmptyCaption{65416, u"#caption#", u"#caption#"};
inline constexpr TText kEmptyShort{
    65417,
    u"Dieser für einen Anwendungspfad vorgesehene Schlüssel enthält keine Daten und ist damit "
    u"nutzlos.",
    u"This key is meant for a program's path, but it holds no data and is of no use."};
inline constexpr TText kEmptyDetail{
    65418,
    u"In der Registrierung sollte unter \"#existingkey:regjump#\" ein Anwendungspfad eingetragen "
    u"sein. Der Schlüssel enthält jedoch keine Daten und kann daher gelöscht werden.",
    u"Under \"#existingkey:regjump#\" the registry should hold a program's path. The key holds no "
    u"data, however, and can therefore be deleted."};

}  // namespace scrubwell::texts::apppaths
