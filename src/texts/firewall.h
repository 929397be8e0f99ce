// Texts of the firewall category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::firewall {

inline constexpr TText kCaption{65344, u"Windows-Firewall", u"Windows Firewall"};
inline constexpr TText kShortDescription{
    65345,
    u"Einige Einträge in der Liste der Anwendungen, denen es erlaubt ist, eingehende "
    u"Netzwerkverbindungen anzunehmen, verweisen auf nicht mehr vorhandene Dateien.",
    u"Some entries in the list of applications that may accept incoming network connections refer "
    u"to files that are no longer there."};
inline constexpr TText kDescription{
    65346,
    u"Die Windows-Firewall speichert, welche Programme eingehende Netzwerkverbindungen annehmen "
    u"dürfen und hinterlegt für jedes einen Eintrag in der Registrierung. Diese Einträge können "
    u"z.B. durch die Deinstallation eines solchen Programmes fehlerhaft oder ungültig werden.",
    u"Windows Firewall keeps an entry in the registry for each program that may accept incoming "
    u"network connections. Such an entry can become faulty or invalid, for example when its "
    u"program is uninstalled."};

inline constexpr TText kMissingCaption{65347,
                                       u"Windows-Firewall: Ungültiger Eintrag \"#displayname#\"",
                                       u"Windows Firewall: invalid entry \"#displayname#\""};
inline constexpr TText kMissingShort{
    65348,
    u"Eine Anwendung konnte im angegebenen Ordner \"#missingfile:path#\" nicht gefunden werden.",
    u"An application was not found in the folder \"#missingfile:path#\" that the entry names."};
inline constexpr TText kMissingDetail{
    65349,
    u"Eine Regel der Windows-Firewall verweist auf die nicht mehr vorhandene Anwendung "
    u"\"#missingfile:name#\". Diese ungültige Regel kann entfernt werden.",
    u"A rule of Windows Firewall refers to the application \"#missingfile:name#\", which is no "
    u"longer there. This invalid rule can be removed."};

}  // namespace scrubwell::texts::firewall
