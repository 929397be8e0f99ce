// Texts of the file types category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::filetypes {

inline constexpr TText kCaption{65405, u"Dateitypen", u"File types"};
inline constexpr TText kShortDescription{
    65406,
    u"Einige Dateitypen verweisen auf nicht mehr vorhandene Programme. Dies kann z.B. zu "
    u"Fehlermeldungen beim Öffnen von Dateien führen.",
    u"Some file types refer to programs that are no longer there. This can lead, for example, to "
    u"error messages when files are opened."};
inline constexpr TText kDescription{
    65407,
    u"Einträge in diesem Bereich der Registrierung verknüpfen eine oder mehrere Dateiendungen "
    u"(z.B. .txt oder .doc) mit verschiedenen Informationen (etwa dem Programm, mit dem sie "
    u"geöffnet werden). Solche Einträge können z.B. durch die Deinstallation von Programmen "
    u"ungültig werden.",
    u"Entries in this area of the registry connect one or more file extensions (.txt or .doc, for "
    u"example) with various information (such as the program that opens them). Such entries can "
    u"become invalid when programs are uninstalled, for example."};

inline constexpr TText kExtensionFile{65531, u"%s-Datei (*%s)", u"%s file (*%s)"};
inline constexpr TText kTypeAndExtension{65532, u"%s (*%s)", u"%s (*%s)"};
inline constexpr TText kAllFiles{65376, u"%s (Alle Dateien)", u"%s (all files)"};
inline constexpr TText kUnknownFiles{65377, u"%s (Alle Dateien unbekannten Typs)",
                                     u"%s (all files of unknown type)"};

inline constexpr TText kCaptionItem{u"#caption#", u"#caption#"};

inline constexpr TText kMissingProgramShort{
    u"Der Kontextmenüeintrag \"#existingkey:action#\" dieses Dateityps verweist auf das fehlende "
    u"Programm \"#missingfile#\".",
    u"The context menu entry \"#existingkey:action#\" of this file type refers to the missing "
    u"program \"#missingfile#\"."};
inline constexpr TText kMissingProgramDetail{
    u"Der Dateityp verweist im Schlüssel \"#existingkey:regjump#\" auf das fehlende Programm "
    u"\"#missingfile#\".",
    u"In the key \"#existingkey:regjump#\" the file type refers to the missing program "
    u"\"#missingfile#\"."};
inline constexpr TText kMissingTypeShort{
    u"Die Dateiendung \"#existingkey:ext#\" verweist auf den fehlenden Schlüssel "
    u"\"#missingkey:nomain#\".",
    u"The file extension \"#existingkey:ext#\" refers to the missing key \"#missingkey:nomain#\"."};
inline constexpr TText kMissingTypeDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" verweist auf den fehlenden Schlüssel "
    u"\"#missingkey#\".",
    u"The key \"#existingkey:regjump#\" refers to the missing key \"#missingkey#\"."};
inline constexpr TText kMissingClassShort{
    u"Der Dateityp verweist auf die fehlende CLSID \"#missingkey:lastpart#\".",
    u"The file type refers to the missing CLSID \"#missingkey:lastpart#\"."};
inline constexpr TText kMissingClassDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" verweist auf die fehlende CLSID \"#missingkey#\".",
    u"The key \"#existingkey:regjump#\" refers to the missing CLSID \"#missingkey#\"."};
inline constexpr TText kMissingIconShort{
    u"Dieser Dateityp verweist auf das fehlende Symbol \"#missingfile#\".",
    u"This file type refers to the missing icon \"#missingfile#\"."};
inline constexpr TText kMissingIconDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" verweist auf das fehlende Symbol \"#missingfile#\". "
    u"Der Verweis sollte gelöscht werden, damit Windows nicht vergeblich nach dem Symbol suchen "
    u"muss.",
    u"The key \"#existingkey:regjump#\" refers to the missing icon \"#missingfile#\". The "
    u"reference should be deleted, so that Windows does not look for the icon in vain."};
inline constexpr TText kMissingCommandShort{
    u"Dem Kontextmenüeintrag \"#existingkey:action#\" dieses Dateityps ist kein Programm "
    u"zugeordnet.",
    u"No program is assigned to the context menu entry \"#existingkey:action#\" of this file "
    u"type."};
inline constexpr TText kMissingCommandDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" ist unvollständig, da der Unterschlüssel \"command\" "
    u"fehlt. Die Aktion \"#existingkey:action#\" des Dateityps funktioniert daher nicht.",
    u"The key \"#existingkey:regjump#\" is incomplete, because its subkey \"command\" is missing. "
    u"The action \"#existingkey:action#\" of the file type therefore does not work."};
inline constexpr TText kMissingIdentifierShort{
    u"Im Schlüssel \"#existingkey:short#\" fehlt die Angabe der CLSID.",
    u"The key \"#existingkey:short#\" does not name a CLSID."};
inline constexpr TText kMissingIdentifierDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" ist unvollständig und enthält keine von Windows "
    u"benötigten Werte. Er kann daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" is incomplete and holds none of the values that Windows "
    u"needs. It can therefore be deleted."};
inline constexpr TText kEmptyIconShort{
    u"Im Schlüssel \"#existingkey:short#\" fehlt die Angabe des Standardsymbols.",
    u"The key \"#existingkey:short#\" does not name a default icon."};
inline constexpr TText kEmptyIconDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" ist unvollständig. Der Unterschlüssel "
    u"\"DefaultIcon\" wurde für die Angabe eines Symbols angelegt, es wurde jedoch kein Symbol "
    u"eingetragen.",
    u"The key \"#existingkey:regjump#\" is incomplete. The subkey \"DefaultIcon\" was created to "
    u"name an icon, but no icon was entered."};
inline constexpr TText kEmptyTypeShort{
    u"Der Schlüssel \"#existingkey:short#\" dieses Dateityps enthält keine Daten.",
    u"The key \"#existingkey:short#\" of this file type holds no data."};
inline constexpr TText kEmptyTypeDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" enthält keine Daten. Der betroffene Dateityp ist "
    u"damit nutzlos und kann gelöscht werden.",
    u"The key \"#existingkey:regjump#\" holds no data. The file type concerned is therefore of no "
    u"use and can be deleted."};
inline constexpr TText kNoVerbsShort{
    u"Der Schlüssel \"#existingkey:short#\" dieses Dateityps enthält keine Daten.",
    u"The key \"#existingkey:short#\" of this file type holds no data."};
inline constexpr TText kNoVerbsDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" enthält keine Daten. Der betroffene Schlüssel ist "
    u"damit nutzlos und kann gelöscht werden.",
    u"The key \"#existingkey:regjump#\" holds no data. The key concerned is therefore of no use "
    u"and can be deleted."};
inline constexpr TText kUnknownTypeShort{
    u"Der Schlüssel \"#existingkey:short#\" verweist auf einen unbekannten Dateityp.",
    u"The key \"#existingkey:short#\" refers to an unknown file type."};
inline constexpr TText kUnknownTypeDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" ist ungültig, da der Unterschlüssel \"Extension\" "
    u"auf einen nicht definierten Dateityp verweist.",
    u"The key \"#existingkey:regjump#\" is invalid, because its subkey \"Extension\" refers to a "
    u"file type that is not defined."};

}  // namespace scrubwell::texts::filetypes
