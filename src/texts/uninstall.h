// Texts of the installed programs category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::uninstall {

inline constexpr TText kCaption{65246, u"Installierte Programme", u"Installed programs"};
inline constexpr TText kShortDescription{
    65247,
    u"Zu einigen der unter \"Software\" in der Systemsteuerung eingetragenen Programme fehlt das "
    u"Deinstallationsprogramm. Die entsprechenden Einträge können entfernt werden.",
    u"Some of the programs listed under \"Add or Remove Programs\" in the Control Panel lack their "
    u"uninstaller. Their entries can be removed."};
inline constexpr TText kDescription{
    65216,
    u"Jedes Programm hinterlegt einen Eintrag in diesem Bereich der Registrierung. Aus diesen "
    u"Einträgen wird die Liste aller Programme in der Systemsteuerung zusammengestellt. Bei der "
    u"Deinstallation der Programme werden diese Einträge oftmals nicht gelöscht und es entstehen "
    u"Inkonsistenzen in dieser Liste.",
    u"Every program leaves an entry in this area of the registry. The Control Panel builds its "
    u"list of all programs from these entries. When programs are uninstalled, their entries are "
    u"often left behind, and the list becomes inconsistent."};

inline constexpr TText kUninstallerCaption{65220, u"#caption#", u"#caption#"};
inline constexpr TText kUninstallerShort{
    65221, u"Das benötigte Deinstallationsprogramm \"#missingfile#\" konnte nicht gefunden werden.",
    u"The required uninstaller \"#missingfile#\" was not found."};
inline constexpr TText kUninstallerDetail{
    65222,
    u"Der Schlüssel \"#existingkey:regjump#\" verweist unter \"UninstallString\" auf die ungültige "
    u"Befehlszeile \"#missingfile#\" und kann daher gelöscht werden.",
    u"Under \"UninstallString\" the key \"#existingkey:regjump#\" refers to the invalid command "
    u"line \"#missingfile#\". The key can therefore be deleted."};

inline constexpr TText kLogCaption{65223, u"#caption#", u"#caption#"};
inline constexpr TText kLogShort{
    65224,
    u"Die Anwendung \"#caption#\" kann nicht deinstalliert werden, da das Installationsprotokoll "
    u"fehlt.",
    u"The application \"#caption#\" cannot be uninstalled, because its installation log is "
    u"missing."};
inline constexpr TText kLogDetail{
    65225,
    u"Der Schlüssel \"#existingkey:regjump#\" verweist im UninstallString \"#missingfile#\" auf "
    u"ein fehlendes Installationsprotokoll und kann daher gelöscht werden.",
    u"In its UninstallString \"#missingfile#\" the key \"#existingkey:regjump#\" refers to a "
    u"missing installation log. The key can therefore be deleted."};

inline constexpr TText kIncompleteCaption{65217, u"Unvollständiger Eintrag \"#caption#\"",
                                          u"Incomplete entry \"#caption#\""};
inline constexpr TText kIncompleteShort{
    65218,
    u"Dieser Deinstallationseintrag enthält keine der von Windows zur Deinstallation benötigten "
    u"Werte.",
    u"This uninstall entry holds none of the values that Windows needs to uninstall a program."};
inline constexpr TText kIncompleteDetail{
    65219,
    u"Der Schlüssel \"#existingkey:regjump#\" enthält keine der von Windows zur Deinstallation "
    u"benötigten Werte und kann daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" holds none of the values that Windows needs to uninstall "
    u"a program and can therefore be deleted."};

inline constexpr TText kSourceCaption{65226, u"#caption#", u"#caption#"};
inline constexpr TText kSourceShort{
    65227, u"Das benötigte Installationsprogramm \"#missingfile#\" konnte nicht gefunden werden.",
    u"The required installation program \"#missingfile#\" was not found."};
inline constexpr TText kSourceDetail{
    65228,
    u"Der Schlüssel \"#existingkey:regjump#\" verweist unter \"InstallSource\" auf die ungültige "
    u"Befehlszeile \"#missingfile#\" und kann daher gelöscht werden.",
    u"Under \"InstallSource\" the key \"#existingkey:regjump#\" refers to the invalid command "
    u"line \"#missingfile#\". The entry can therefore be deleted."};

inline constexpr TText kCacheCaption{65229, u"#caption#", u"#caption#"};
inline constexpr TText kCacheShort{
    65230, u"Dieser Eintrag verweist auf das nicht mehr installierte Programm \"#caption#\".",
    u"This entry refers to the program \"#caption#\", which is no longer installed."};
inline constexpr TText kCacheDetail{
    65231,
    u"Der Eintrag \"#existingkey:regjump#\" verweist auf das nicht mehr installierte Programm "
    u"\"#caption#\" und kann daher gelöscht werden. Der Eintrag enthält Informationen über die "
    u"Größe des Programms und die Nutzungshäufigkeit.",
    u"The entry \"#existingkey:regjump#\" refers to the program \"#caption#\", which is no longer "
    u"installed, and can therefore be deleted. It holds the program's size and how often it was "
    u"used."};

}  // namespace scrubwell::texts::uninstall
