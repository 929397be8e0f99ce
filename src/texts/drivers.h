// Texts of the device drivers category. "#value#" names no item of these problems and is shown as
// it stands; the item's name is fixed, for stored lists of ignored problems hold it.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::drivers {

inline constexpr TText kCaption{u"Gerätetreiber", u"Device drivers"};
inline constexpr TText kShortDescription{
    u"Einige der in der Registrierung eingetragenen Gerätetreiber sind nicht vorhanden. Diese "
    u"Einträge lösen Fehlermeldungen und \"Blaue Bildschirme\" aus.",
    u"Some of the device drivers listed in the registry do not exist. These entries cause error "
    u"messages and \"blue screens\"."};
inline constexpr TText kDescription{
    u"Die Registrierung enthält eine Liste der Gerätetreiber, die beim Systemstart geladen werden "
    u"sollen. Falls sich fehlerhafte Einträge in dieser Liste befinden, kann dies Fehlermeldungen "
    u"und \"Blaue Bildschirme\" auslösen.",
    u"The registry holds a list of the device drivers that are to be loaded when the system "
    u"starts. Faulty entries in this list can cause error messages and \"blue screens\"."};

inline constexpr TText kMissingCaption{u"Fehlender Gerätetreiber \"#missingfile#\"",
                                       u"Missing device driver \"#missingfile#\""};
inline constexpr TText kMissingShort{
    u"Dieser in der Registrierung unter \"#value#\" angegebene Gerätetreiber konnte nicht gefunden "
    u"werden.",
    u"This device driver, which the registry names under \"#value#\", was not found."};
inline constexpr TText kMissingDetail{
    u"Die Registrierung verweist im Schlüssel \"#existingkey:regjump#\" im Eintrag \"#value#\" auf "
    u"den nicht vorhandenen Gerätetreiber \"#missingfile#\". Dieser Verweis sollte unbedingt "
    u"entfernt werden, da er eine Fehlermeldung beim Windowsstart auslöst.",
    u"In the key \"#existingkey:regjump#\" the entry \"#value#\" refers to the device driver "
    u"\"#missingfile#\", which does not exist. The reference should certainly be removed, because "
    u"it causes an error message when Windows starts."};

inline constexpr TText kEmptyCaption{
    u"Unvollständiger Gerätetreiber-Eintrag in \"#existingkey:lastpart#\"",
    u"Incomplete device driver entry in \"#existingkey:lastpart#\""};
inline constexpr TText kEmptyShort{
    u"Der Eintrag \"#value#\", der auf einen Gerätetreiber verweisen sollte, enthält keine Daten.",
    u"The entry \"#value#\", which should refer to a device driver, holds no data."};
inline constexpr TText kEmptyDetail{
    u"Die Registrierung enthält im Schlüssel \"#existingkey:regjump#\" den leeren Eintrag "
    u"\"#value#\". Dieser Eintrag sollte unbedingt entfernt werden, da er eine Fehlermeldung beim "
    u"Windowsstart auslöst.",
    u"In the key \"#existingkey:regjump#\" the registry holds the empty entry \"#value#\". It "
    u"should certainly be removed, because it causes an error message when Windows starts."};

}  // namespace scrubwell::texts::drivers
