// Texts of the database drivers category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::odbc {

inline constexpr TText kCaption{65295, u"Datenbanktreiber", u"Database drivers"};
inline constexpr TText kShortDescription{
    65264,
    u"Einige der unter \"ODBC\" in der Systemsteuerung eingetragenen Datenbank-Treiber und "
    u"Datenquellen sind ungültig. Die entsprechenden Einträge können entfernt werden.",
    u"Some of the database drivers and data sources listed under \"ODBC\" in the Control Panel are "
    u"invalid. Their entries can be removed."};
inline constexpr TText kDescription{
    65265,
    u"Manche Programme hinterlegen bei der Installation Einträge zu Datenbanktreibern und "
    u"Datenquellen in der Registrierung. Diese Einträge können z.B. durch die Deinstallation "
    u"dieser Programme oder das Verschieben oder Löschen einzelner Datenquellen ungültig werden. "
    u"Oftmals werden sogar schon bei der Installation ungültige Einträge angelegt.",
    u"Some programs register database drivers and data sources when they are installed. Such "
    u"entries can become invalid when the program is uninstalled, for example, or when a data "
    u"source is moved or deleted. Often they are even invalid from the start."};

// The German details hold two blanks before "auf": texts are kept as they have always been.
inline constexpr TText kDriverCaption{65266, u"Ungültiger Datenbanktreiber \"#missingdrv#\"",
                                      u"Invalid database driver \"#missingdrv#\""};
inline constexpr TText kDriverShort{
    65267,
    u"Dieser Eintrag enthält einen ungültigen Verweis zu einer nicht mehr existierenden Datei",
    u"This entry refers to a file that no longer exists"};
inline constexpr TText kDriverDetail{
    65268,
    u"Der Schlüssel \"#existingkey#\" verweist mit dem Wert \"#existingvalue#\"  auf die Datei "
    u"\"#missingfile#\", welche nicht existiert und kann daher gelöscht werden.",
    u"With its value \"#existingvalue#\" the key \"#existingkey#\" refers to the file "
    u"\"#missingfile#\", which does not exist. The key can therefore be deleted."};

inline constexpr TText kSourceDriverCaption{65269, u"Ungültiger Datenbanktreiber",
                                            u"Invalid database driver"};
inline constexpr TText kSourceDriverShort{
    65270,
    u"Dieser Eintrag enthält einen ungültigen Verweis zu einer nicht mehr existierenden Datei",
    u"This entry refers to a file that no longer exists"};
inline constexpr TText kSourceDriverDetail{
    65271,
    u"Der Schlüssel \"#existingkey#\" verweist mit dem Wert \"#existingvalue#\"  auf die Datei "
    u"\"#missingfile#\", welche nicht existiert und kann daher gelöscht werden.",
    u"With its value \"#existingvalue#\" the key \"#existingkey#\" refers to the file "
    u"\"#missingfile#\", which does not exist. The key can therefore be deleted."};

inline constexpr TText kNoKeyCaption{65272, u"Ungültiger ODBC-Datenquellen Eintrag",
                                     u"Invalid ODBC data source entry"};
inline constexpr TText kNoKeyShort{
    65273,
    u"Dieser Eintrag enthält einen ungültigen Verweis zu einer nicht mehr existierenden "
    u"ODBC-Datenquelle",
    u"This entry refers to an ODBC data source that no longer exists"};
inline constexpr TText kNoKeyDetail{
    65274,
    u"Der Schlüssel \"#existingkey#\" verweist mit dem Wert \"#existingvalue#\"  auf eine "
    u"ODBC-Datenquelle, welche nicht existiert, und kann daher gelöscht werden.",
    u"With its value \"#existingvalue#\" the key \"#existingkey#\" refers to an ODBC data source "
    u"that does not exist. The value can therefore be deleted."};

inline constexpr TText kUnregisteredCaption{
    65275, u"Ungültiger ODBC-Datenquellen Eintrag \"#existingvalue#\"",
    u"Invalid ODBC data source entry \"#existingvalue#\""};
inline constexpr TText kUnregisteredShort{
    65276,
    u"Dieser Eintrag enthält einen ungültigen Verweis zu einem nicht mehr existierenden "
    u"Datenbanktreiber",
    u"This entry refers to a database driver that no longer exists"};
inline constexpr TText kUnregisteredDetail{
    65277,
    u"Der Schlüssel \"#existingkey#\" verweist mit dem Wert \"#existingvalue#\"  auf den fehlenden "
    u"Datenbanktreiber \"#missingdrv#\" und kann daher gelöscht werden.",
    u"With its value \"#existingvalue#\" the key \"#existingkey#\" refers to the missing database "
    u"driver \"#missingdrv#\". The value can therefore be deleted."};

inline constexpr TText kInvalidDriverCaption{
    65278, u"Ungültiger ODBC-Datenquellen Eintrag \"#existingvalue#\"",
    u"Invalid ODBC data source entry \"#existingvalue#\""};
inline constexpr TText kInvalidDriverShort{
    65279,
    u"Dieser Eintrag verweist auf den bereits als ungültig erkannten Datenbanktreiber "
    u"\"#missingdrv#\"",
    u"This entry refers to the database driver \"#missingdrv#\", which was found to be invalid"};
inline constexpr TText kInvalidDriverDetail{
    65248,
    u"Der Schlüssel \"#existingkey#\" verweist mit dem Wert \"#existingvalue#\"  auf den zuvor als "
    u"ungültig erkannten Registry-Eintrag des Datenbanktreibers \"#missingdrv#\" und kann daher "
    u"gelöscht werden.",
    u"With its value \"#existingvalue#\" the key \"#existingkey#\" refers to the registry entry of "
    u"the database driver \"#missingdrv#\", which was found to be invalid. The value can therefore "
    u"be deleted."};

}  // namespace scrubwell::texts::odbc
