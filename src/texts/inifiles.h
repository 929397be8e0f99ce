// Texts of the configuration files category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::inifiles {

inline constexpr TText kCaption{u"Konfigurationsdateien", u"Configuration files"};
inline constexpr TText kShortDescription{
    u"In den Konfigurationsdateien Ihres Systems befinden sich Fehler. Diese können "
    u"Fehlermeldungen beim Systemstart verursachen und sollten behoben werden.",
    u"There are errors in your system's configuration files. They can cause error messages when "
    u"the system starts and should be fixed."};
inline constexpr TText kDescription{
    u"Die Konfigurationsdateien WIN.INI und SYSTEM.INI im Windows-Verzeichnis enthalten Verweise "
    u"auf Programme und Treiber. Falls einige dieser Verweise ungültig sind, können "
    u"Fehlermeldungen beim Systemstart angezeigt werden.",
    u"The configuration files WIN.INI and SYSTEM.INI in the Windows folder refer to programs and "
    u"drivers. If some of these references are invalid, error messages can appear when the system "
    u"starts."};

inline constexpr TText kProgramCaption{u"Fehlendes auszuführendes Programm in WIN.INI",
                                       u"Missing program to run in WIN.INI"};
inline constexpr TText kProgramShort{
    u"Das Programm \"#missingfile#\" soll beim Windowsstart geladen werden, ist aber nicht "
    u"vorhanden.",
    u"The program \"#missingfile#\" is to be loaded when Windows starts, but does not exist."};
inline constexpr TText kProgramDetail{
    u"Die WIN.INI verweist in \"Run\" oder \"Load\" auf das fehlende Programm \"#missingfile#\". "
    u"Dieser ungültige Eintrag sollte gelöscht werden, da er zu einer Fehlermeldung beim "
    u"Windowsstart führt.",
    u"Under \"Run\" or \"Load\" WIN.INI refers to the missing program \"#missingfile#\". This "
    u"invalid entry should be deleted, because it leads to an error message when Windows starts."};

inline constexpr TText kExtensionCaption{u"Verwaiste Dateiendung \"#caption#\" in WIN.INI",
                                         u"Orphaned file extension \"#caption#\" in WIN.INI"};
inline constexpr TText kExtensionShort{
    u"Das dieser Dateiendung zugeordnete Programm \"#missingfile#\" ist nicht vorhanden.",
    u"The program assigned to this file extension, \"#missingfile#\", does not exist."};
inline constexpr TText kExtensionDetail{
    u"In der WIN.INI ist der Dateityp \"#caption#\" mit dem nicht mehr vorhandenen Programm "
    u"\"#missingfile#\" verknüpft. Der Eintrag kann gelöscht werden.",
    u"In WIN.INI the file type \"#caption#\" is associated with the program "
    u"\"#missingfile#\", which is no longer there. The entry can be deleted."};

inline constexpr TText kEmbeddingCaption{u"Ungültige Programmverknüpfung \"#caption#\" in WIN.INI",
                                         u"Invalid program link \"#caption#\" in WIN.INI"};
inline constexpr TText kEmbeddingShort{
    u"Die Verknüpfung verweist auf das fehlende Programm \"#missingfile#\".",
    u"The link refers to the missing program \"#missingfile#\"."};
inline constexpr TText kEmbeddingDetail{
    u"In der WIN.INI wird unter \"#caption#\" auf das nicht mehr vorhandene Programm "
    u"\"#missingfile#\" verwiesen.",
    u"Under \"#caption#\" WIN.INI refers to the program \"#missingfile#\", which is no longer "
    u"there."};

inline constexpr TText kDriverCaption{u"Fehlender Treiber in SYSTEM.INI",
                                      u"Missing driver in SYSTEM.INI"};
inline constexpr TText kDriverShort{
    u"Ein Eintrag im Abschnitt \"#section#\" der Datei System.ini verweist auf den nicht "
    u"vorhandenen Treiber \"#missingfile#\".",
    u"An entry in the section \"#section#\" of the file System.ini refers to the driver "
    u"\"#missingfile#\", which does not exist."};
inline constexpr TText kDriverDetail{
    u"Der Eintrag \"#subkey#\" im Abschnitt \"#section#\" der Datei System.ini verweist auf den "
    u"nicht vorhandenen Treiber \"#missingfile#\". Dieser ungültige Eintrag führt zu einer "
    u"Fehlermeldung beim Start und sollte daher unbedingt entfernt werden.",
    u"The entry \"#subkey#\" in the section \"#section#\" of the file System.ini refers to the "
    u"driver \"#missingfile#\", which does not exist. This invalid entry leads to an error message "
    u"at startup and should therefore certainly be removed."};

inline constexpr TText kEmptyCaption{u"Unvollständiger Treiber-Eintrag in SYSTEM.INI",
                                     u"Incomplete driver entry in SYSTEM.INI"};
inline constexpr TText kEmptyShort{
    u"Der Eintrag \"#subkey#\" im Abschnitt \"#section#\" der Datei System.ini enthält keine "
    u"Daten.",
    u"The entry \"#subkey#\" in the section \"#section#\" of the file System.ini holds no data."};
inline constexpr TText kEmptyDetail{
    u"In der Datei System.ini existiert im Abschnitt \"#section#\" der leere Eintrag \"#subkey#\". "
    u"Dieser Eintrag kann zu Problemen beim Start führen und sollte daher unbedingt entfernt "
    u"werden.",
    u"In the section \"#section#\" of the file System.ini there is the empty entry \"#subkey#\". "
    u"It can lead to problems at startup and should therefore certainly be removed."};

inline constexpr TText kSaverCaption{u"Fehlender Bildschirmschoner in SYSTEM.INI",
                                     u"Missing screen saver in SYSTEM.INI"};
inline constexpr TText kSaverShort{
    u"Der in der System.ini angegebene Bildschirmschoner \"#missingfile#\" ist nicht vorhanden.",
    u"The screen saver named in System.ini, \"#missingfile#\", does not exist."};
inline constexpr TText kSaverDetail{
    u"In der System.ini befindet sich ein Verweis auf den nicht mehr vorhandenen "
    u"Bildschirmschoner \"#missingfile#\".",
    u"System.ini holds a reference to the screen saver \"#missingfile#\", which is no longer "
    u"there."};

}  // namespace scrubwell::texts::inifiles
