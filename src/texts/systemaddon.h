// Texts of the system add-ons category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::systemaddon {

inline constexpr TText kCaption{65237, u"Programmerweiterungen", u"Program add-ons"};
inline constexpr TText kShortDescription{
    65238,
    u"Einige Einträge in der Registrierung verweisen auf nicht mehr vorhandene Audio- und "
    u"Video-Codecs oder Internet Explorer-Add-Ons. Diese Einträge können gelöscht werden.",
    u"Some entries in the registry refer to audio and video codecs or Internet Explorer add-ons "
    u"that are no longer there. These entries can be deleted."};
inline constexpr TText kDescription{
    65239,
    u"Dieser Bereich der Registrierung enthält Verweise auf Erweiterungen wie Audio- und "
    u"Video-Codecs oder Internet Explorer-Add-Ons, die die Funktionalität einzelner Programme "
    u"erweitern (z.B. durch neue Menüeinträge oder neue Einträge in der Toolbar). Bei der "
    u"Deinstallation solcher Programme oder der Erweiterungen werden diese Einträge oftmals nicht "
    u"gelöscht.",
    u"This area of the registry refers to add-ons such as audio and video codecs or Internet "
    u"Explorer add-ons, which give programs further functions (new menu or toolbar items, for "
    u"example). When such programs or their add-ons are uninstalled, these entries are often left "
    u"behind."};

inline constexpr TText kCodecCaption{65240, u"#existingvalue#", u"#existingvalue#"};
inline constexpr TText kCodecShort{
    65241, u"Dieser Eintrag verweist auf das nicht vorhandene Ziel \"#missingfile#\".",
    u"This entry refers to the target \"#missingfile#\", which does not exist."};
inline constexpr TText kCodecDetail{
    65242,
    u"Der Eintrag \"#existingvalue#\" im Schlüssel \"#existingkey:regjump#\" verweist auf das "
    u"nicht vorhandene Ziel \"#missingfile#\" und kann daher gelöscht werden.",
    u"The entry \"#existingvalue#\" in the key \"#existingkey:regjump#\" refers to the target "
    u"\"#missingfile#\", which does not exist. It can therefore be deleted."};

inline constexpr TText kHelperCaption{65243, u"Internet Explorer-Add-On \"#caption#\"",
                                      u"Internet Explorer add-on \"#caption#\""};
inline constexpr TText kHelperShort{
    65244,
    u"Dieses Internet Explorer-Add-On verweist auf die fehlende CLSID \"#missingkey:lastpart#\".",
    u"This Internet Explorer add-on refers to the missing CLSID \"#missingkey:lastpart#\"."};
inline constexpr TText kHelperDetail{
    65245,
    u"Der Schlüssel \"#existingkey:regjump#\" verweist auf die nicht mehr vorhandene CLSID "
    u"\"#missingkey#\" und kann daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" refers to the CLSID \"#missingkey#\", which is no "
    u"longer there. It can therefore be deleted."};

}  // namespace scrubwell::texts::systemaddon
