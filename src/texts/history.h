// Texts of the history lists category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::history {

inline constexpr TText kCaption{u"Verlaufslisten", u"History lists"};
inline constexpr TText kShortDescription{
    u"Einige Einträge in den Verlaufslisten von Windows oder Ihren Programmen verweisen auf nicht "
    u"mehr vorhandene Dateien und können gelöscht werden.",
    u"Some entries in the history lists of Windows or your programs refer to files that are no "
    u"longer there; they can be deleted."};
inline constexpr TText kDescription{
    u"Windows und viele Programme führen Verlaufslisten, die z.B. protokollieren, welche Dateien "
    u"Sie zuletzt bearbeitet haben. Diese werden als Verweise in der Registrierung hinterlegt. "
    u"Durch Löschen oder Verschieben der Dateien werden diese Einträge ungültig.",
    u"Windows and many programs keep history lists, for example of the files that you worked on "
    u"last. They are stored as references in the registry. When the files are deleted or moved, "
    u"these entries become invalid."};

/// Shown with most kinds: the file is not in its folder.
inline constexpr TText kFileShort{
    u"Die Datei konnte im angegebenen Ordner \"#missingfile:path#\" nicht gefunden werden.",
    u"The file was not found in the folder \"#missingfile:path#\" that the entry names."};

inline constexpr TText kFileDialogCaption{
    u"Datei-Verlaufsliste: Ungültiger Eintrag \"#missingfile:name#\"",
    u"File history: invalid entry \"#missingfile:name#\""};
inline constexpr TText kFileDialogDetail{
    u"Die Registrierung verweist im Schlüssel \"#existingkey:regjump#\" auf die nicht mehr "
    u"vorhandene Datei \"#missingfile#\". Dieser ungültige Verweis kann entfernt werden.",
    u"In the key \"#existingkey:regjump#\" the registry refers to the file \"#missingfile#\", "
    u"which is no longer there. This invalid reference can be removed."};

inline constexpr TText kOpenWithCaption{
    u"Explorer-Verlaufsliste: Überflüssiger Eintrag des Dateityps \"#caption#\"",
    u"Explorer history: unneeded entry for the file type \"#caption#\""};
inline constexpr TText kOpenWithShort{
    u"Der von der Windows-Funktion \"Öffnen mit\" angelegte Schlüssel dieses Dateityps enthält "
    u"keine Daten.",
    u"The key that the Windows function \"Open with\" created for this file type holds no data."};
inline constexpr TText kOpenWithDetail{
    u"Die Windows-Funktion \"Öffnen mit\" hat den Schlüssel \"#existingkey:regjump#\" angelegt, "
    u"als Sie eine Datei mit der Endung \"#existingkey:lastpart#\" öffnen wollten. Da keinerlei "
    u"Informationen im Schlüssel hinterlegt wurden, kann dieser gelöscht werden.",
    u"The Windows function \"Open with\" created the key \"#existingkey:regjump#\" when you wanted "
    u"to open a file with the extension \"#existingkey:lastpart#\". Nothing was ever stored in the "
    u"key, so it can be deleted."};

/// The name of a file type, from its description and extension.
inline constexpr TText kTypeAndExtension{u"%s (*%s)", u"%s (*%s)"};
inline constexpr TText kExtensionFile{u"%s-Datei (*%s)", u"%s file (*%s)"};

inline constexpr TText kWindowsCaption{
    u"Windows-Verlaufsliste: Ungültiger Eintrag \"#missingfile:name#\"",
    u"Windows history: invalid entry \"#missingfile:name#\""};
inline constexpr TText kWindowsDetail{
    u"Die Windows-Verlaufsliste verweist auf die nicht mehr vorhandene Datei \"#missingfile#\". "
    u"Dieser ungültige Verweis kann entfernt werden.",
    u"The Windows history refers to the file \"#missingfile#\", which is no longer there. This "
    u"invalid reference can be removed."};

inline constexpr TText kApplicationCaption{
    u"#traceapp#-Verlaufsliste: Ungültiger Eintrag \"#missingfile:name#\"",
    u"#traceapp# history: invalid entry \"#missingfile:name#\""};
inline constexpr TText kApplicationFileDetail{
    u"Eine Verlaufsliste der Anwendung \"#traceapp#\" verweist im Schlüssel "
    u"\"#existingkey:regjump#\" auf die nicht mehr vorhandene Datei \"#missingfile#\". Dieser "
    u"ungültige Verweis kann entfernt werden.",
    u"In the key \"#existingkey:regjump#\" a history list of the application \"#traceapp#\" refers "
    u"to the file \"#missingfile#\", which is no longer there. This invalid reference can be "
    u"removed."};
inline constexpr TText kApplicationFolderShort{
    u"Der Ordner oder die Datei konnte im angegebenen Ordner \"#missingfile:path#\" nicht gefunden "
    u"werden.",
    u"The folder or file was not found in the folder \"#missingfile:path#\" that the entry names."};
inline constexpr TText kApplicationFolderDetail{
    u"Eine Verlaufsliste der Anwendung \"#traceapp#\" verweist im Schlüssel "
    u"\"#existingkey:regjump#\" auf den nicht mehr vorhandenen Ordner oder die Datei "
    u"\"#missingfile#\". Dieser ungültige Verweis kann entfernt werden.",
    u"In the key \"#existingkey:regjump#\" a history list of the application \"#traceapp#\" refers "
    u"to the folder or file \"#missingfile#\", which is no longer there. This invalid reference "
    u"can be removed."};

inline constexpr TText kMenuLinkCaption{
    u"Startmenü-Verlaufsliste: Ungültiger Verweis auf Verknüpfung \"#missingfile:namenoext#\"",
    u"Start menu history: invalid reference to the shortcut \"#missingfile:namenoext#\""};
inline constexpr TText kMenuLinkShort{
    u"Die Verknüpfung konnte im angegebenen Startmenü-Ordner \"#missingfile:path#\" nicht gefunden "
    u"werden.",
    u"The shortcut was not found in the Start menu folder \"#missingfile:path#\" that the entry "
    u"names."};
inline constexpr TText kMenuLinkDetail{
    u"Die Windows-Verlaufsliste verweist auf die im Startmenü nicht mehr vorhandene Datei "
    u"\"#missingfile#\". Dieser ungültige Verweis kann entfernt werden.",
    u"The Windows history refers to the file \"#missingfile#\", which is no longer in the Start "
    u"menu. This invalid reference can be removed."};
inline constexpr TText kMenuRootLinkShort{
    u"Die Verknüpfung konnte im Startmenü nicht gefunden werden.",
    u"The shortcut was not found in the Start menu."};
inline constexpr TText kMenuFolderCaption{
    u"Startmenü-Verlaufsliste: Ungültiger Verweis auf Ordner \"#missingfile:name#\"",
    u"Start menu history: invalid reference to the folder \"#missingfile:name#\""};
inline constexpr TText kMenuFolderShort{
    u"Der Startmenü-Ordner \"#missingfile#\" konnte nicht gefunden werden.",
    u"The Start menu folder \"#missingfile#\" was not found."};
inline constexpr TText kMenuFolderDetail{
    u"Die Windows-Verlaufsliste verweist auf den im Startmenü nicht mehr vorhandenen Ordner "
    u"\"#missingfile#\". Dieser ungültige Verweis kann entfernt werden.",
    u"The Windows history refers to the folder \"#missingfile#\", which is no longer in the Start "
    u"menu. This invalid reference can be removed."};

inline constexpr TText kRecentCaption{
    u"Zuletzt verwendete Dokumente: Ungültiger Verweis auf \"#missingfile:name#\"",
    u"Recent documents: invalid reference to \"#missingfile:name#\""};
inline constexpr TText kRecentDetail{
    u"Eine Verknüpfung bei den zuletzt verwendeten Dokumenten verweist auf die nicht mehr "
    u"vorhandene Datei \"#missingfile#\". Dieser ungültige Verweis kann entfernt werden.",
    u"A shortcut among the recent documents refers to the file \"#missingfile#\", which is no "
    u"longer there. This invalid reference can be removed."};
inline constexpr TText kOfficeRecentCaption{
    u"Zuletzt verwendete Office-Dokumente: Ungültiger Verweis auf \"#missingfile:name#\"",
    u"Recent Office documents: invalid reference to \"#missingfile:name#\""};
inline constexpr TText kOfficeRecentDetail{
    u"Eine Verknüpfung bei den zuletzt verwendeten Office-Dokumenten verweist auf die nicht mehr "
    u"vorhandene Datei \"#missingfile#\". Dieser ungültige Verweis kann entfernt werden.",
    u"A shortcut among the recent Office documents refers to the file \"#missingfile#\", which is "
    u"no longer there. This invalid reference can be removed."};

inline constexpr TText kDeletingLink{u"Lösche Verknüpfung:", u"Deleting shortcut:"};

}  // namespace scrubwell::texts::history
