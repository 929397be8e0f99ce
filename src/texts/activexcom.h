// Texts of the program components category.
#pragma once

#include "texts/text.h"

namespace scrubwell::texts::activexcom {

inline constexpr TText kCaption{65533, u"Programmkomponenten", u"Program components"};
inline constexpr TText kShortDescription{
    65534,
    u"Es wurden ActiveX/COM-Objekte gefunden, die auf Bibliotheken basieren, die auf Ihrem System "
    u"nicht mehr vorhanden sind. Die verwaisten Objekte können gelöscht werden.",
    u"There are ActiveX/COM objects that rely on libraries which are no longer on your system. The "
    u"orphaned objects can be deleted."};
inline constexpr TText kDescription{
    65535,
    u"Viele Windows-Programme greifen über Einträge in diesem Bereich der Registrierung auf "
    u"ActiveX- und COM-Komponenten zu. Diese Einträge werden bei der Installation solcher "
    u"Programme angelegt, jedoch bei der Deinstallation oftmals nicht entfernt. Manche Programme "
    u"legen sogar schon bei der Installation ungültige Einträge an.",
    u"Many Windows programs use ActiveX and COM components through entries in this area of the "
    u"registry. These entries are created when such programs are installed, but are often left "
    u"behind when they are uninstalled. Some programs even create invalid entries when they are "
    u"installed."};

inline constexpr TText kScanClass{65504, u"CLSID: %s", u"CLSID: %s"};
inline constexpr TText kScanInterface{65505, u"Interface: %s", u"Interface: %s"};
inline constexpr TText kScanTypeLib{65506, u"Typbibliothek: %s", u"Type library: %s"};

inline constexpr TText kCaptionItem{u"#caption#", u"#caption#"};

inline constexpr TText kMissingServerShort{
    u"Dieses Objekt verweist auf den fehlenden #servertype# \"#missingfile#\".",
    u"This object refers to the missing #servertype# \"#missingfile#\"."};
inline constexpr TText kMissingServerDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" verweist auf den fehlenden #servertype# "
    u"\"#missingfile#\". Die betroffene CLSID kann gelöscht werden.",
    u"The key \"#existingkey:regjump#\" refers to the missing #servertype# \"#missingfile#\". The "
    u"CLSID concerned can be deleted."};
inline constexpr TText kMissingProgramShort{
    u"Dieses Objekt verweist im Kontextmenüeintrag \"#existingkey:action#\" auf das fehlende "
    u"Programm \"#missingfile#\".",
    u"In its context menu entry \"#existingkey:action#\" this object refers to the missing program "
    u"\"#missingfile#\"."};
inline constexpr TText kMissingProgramDetail{
    u"Das Objekt verweist im Schlüssel \"#existingkey:regjump#\" auf das fehlende Programm "
    u"\"#missingfile#\".",
    u"In the key \"#existingkey:regjump#\" the object refers to the missing program "
    u"\"#missingfile#\"."};
inline constexpr TText kMissingClassShort{
    u"Dieses Objekt verweist auf die fehlende CLSID \"#missingkey:lastpart#\".",
    u"This object refers to the missing CLSID \"#missingkey:lastpart#\"."};
inline constexpr TText kMissingClassDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" verweist auf die fehlende CLSID \"#missingkey#\".",
    u"The key \"#existingkey:regjump#\" refers to the missing CLSID \"#missingkey#\"."};
inline constexpr TText kMissingIconShort{
    u"Dieses Objekt verweist unter \"DefaultIcon\" auf das fehlende Symbol \"#missingfile#\".",
    u"Under \"DefaultIcon\" this object refers to the missing icon \"#missingfile#\"."};
inline constexpr TText kMissingIconDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" verweist auf das fehlende Symbol \"#missingfile#\". "
    u"Der Verweis sollte gelöscht werden, damit Windows nicht vergeblich nach dem Symbol suchen "
    u"muss.",
    u"The key \"#existingkey:regjump#\" refers to the missing icon \"#missingfile#\". The "
    u"reference should be deleted, so that Windows does not look for the icon in vain."};
inline constexpr TText kMissingTypeLibShort{
    u"Dieses Objekt verweist auf die fehlende Typbibliothek \"#missingkey:lastpart#\".",
    u"This object refers to the missing type library \"#missingkey:lastpart#\"."};
inline constexpr TText kMissingTypeLibDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieses Objekts verweist auf die fehlende "
    u"Typbibliothek \"#missingkey#\". Dieser Unterschlüssel des Objekts kann daher gelöscht "
    u"werden.",
    u"The key \"#existingkey:regjump#\" of this object refers to the missing type library "
    u"\"#missingkey#\". This subkey of the object can therefore be deleted."};
inline constexpr TText kMissingBitmapShort{
    u"Dieses Objekt verweist unter \"ToolboxBitmap32\" auf die fehlende Datei \"#missingfile#\".",
    u"Under \"ToolboxBitmap32\" this object refers to the missing file \"#missingfile#\"."};
inline constexpr TText kMissingBitmapDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieses Objekts verweist auf die fehlende Datei "
    u"\"#missingfile#\". Der Verweis kann daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" of this object refers to the missing file "
    u"\"#missingfile#\". The reference can therefore be deleted."};
inline constexpr TText kMissingHandlerShort{
    u"Dieses Objekt verweist auf den fehlenden PersistentHandler \"#missingkey:lastpart#\".",
    u"This object refers to the missing PersistentHandler \"#missingkey:lastpart#\"."};
inline constexpr TText kMissingHandlerDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieses Objekts verweist auf den fehlenden "
    u"PersistentHandler \"#missingkey#\". Dieser Unterschlüssel des Objekts kann daher gelöscht "
    u"werden.",
    u"The key \"#existingkey:regjump#\" of this object refers to the missing PersistentHandler "
    u"\"#missingkey#\". This subkey of the object can therefore be deleted."};
inline constexpr TText kMissingAppIDShort{
    u"Dieses Objekt verweist auf die fehlende AppID \"#missingkey:lastpart#\".",
    u"This object refers to the missing AppID \"#missingkey:lastpart#\"."};
inline constexpr TText kMissingAppIDDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" verweist auf die fehlende AppID \"#missingkey#\". "
    u"Der Verweis kann daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" refers to the missing AppID \"#missingkey#\". The "
    u"reference can therefore be deleted."};
inline constexpr TText kInterfaceMissingClassShort{
    u"Dieses Interface verweist in \"#stubtype#\" auf die fehlende CLSID "
    u"\"#missingkey:lastpart#\".",
    u"In \"#stubtype#\" this interface refers to the missing CLSID \"#missingkey:lastpart#\"."};
inline constexpr TText kInterfaceMissingClassDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieses Interfaces verweist auf die fehlende CLSID "
    u"\"#missingkey#\". Dieser Unterschlüssel des Interfaces kann daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" of this interface refers to the missing CLSID "
    u"\"#missingkey#\". This subkey of the interface can therefore be deleted."};
inline constexpr TText kInterfaceMissingInterfaceShort{
    u"Dieses Interface verweist auf das fehlende Interface \"#missingkey:lastpart#\".",
    u"This interface refers to the missing interface \"#missingkey:lastpart#\"."};
inline constexpr TText kInterfaceMissingInterfaceDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieses Interfaces verweist auf das fehlende "
    u"Interface \"#missingkey#\". Dieser Unterschlüssel des Interfaces kann daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" of this interface refers to the missing interface "
    u"\"#missingkey#\". This subkey of the interface can therefore be deleted."};
inline constexpr TText kInterfaceMissingTypeLibShort{
    u"Dieses Interface verweist auf die fehlende Typbibliothek \"#missingkey:lastpart#\".",
    u"This interface refers to the missing type library \"#missingkey:lastpart#\"."};
inline constexpr TText kInterfaceMissingTypeLibDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieses Interfaces verweist auf die fehlende "
    u"Typbibliothek \"#missingkey#\". Dieser Unterschlüssel des Interfaces kann daher gelöscht "
    u"werden.",
    u"The key \"#existingkey:regjump#\" of this interface refers to the missing type library "
    u"\"#missingkey#\". This subkey of the interface can therefore be deleted."};
inline constexpr TText kTypeLibMissingFileShort{
    u"Diese Typbibliothek verweist in \"#subkey#\" auf die fehlende Datei \"#missingfile#\".",
    u"In \"#subkey#\" this type library refers to the missing file \"#missingfile#\"."};
inline constexpr TText kTypeLibMissingFileDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieser Typbibliothek verweist auf die fehlende Datei "
    u"\"#missingfile#\". Dieser Unterschlüssel der Typbibliothek kann daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" of this type library refers to the missing file "
    u"\"#missingfile#\". This subkey of the type library can therefore be deleted."};
inline constexpr TText kTypeLibEmptyShort{
    u"Der Unterschlüssel \"#subkey#\" dieser Typbibliothek enthält keine Daten.",
    u"The subkey \"#subkey#\" of this type library holds no data."};
inline constexpr TText kTypeLibEmptyDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieser Typbibliothek enthält keine Daten. Dieser "
    u"Unterschlüssel der Typbibliothek kann daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" of this type library holds no data. This subkey of the "
    u"type library can therefore be deleted."};
inline constexpr TText kTypeLibMissingFolderShort{
    u"Diese Typbibliothek verweist in \"#subkey#\" auf den fehlenden Ordner \"#missingfile#\".",
    u"In \"#subkey#\" this type library refers to the missing folder \"#missingfile#\"."};
inline constexpr TText kTypeLibMissingFolderDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieser Typbibliothek verweist auf den fehlenden "
    u"Ordner \"#missingfile#\". Dieser Unterschlüssel der Typbibliothek kann daher gelöscht "
    u"werden.",
    u"The key \"#existingkey:regjump#\" of this type library refers to the missing folder "
    u"\"#missingfile#\". This subkey of the type library can therefore be deleted."};
inline constexpr TText kTypeLibEmptyHelpShort{
    u"Der Unterschlüssel \"#subkey#\" dieser Typbibliothek enthält keine Daten.",
    u"The subkey \"#subkey#\" of this type library holds no data."};
inline constexpr TText kTypeLibEmptyHelpDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" dieser Typbibliothek dient der Angabe eines "
    u"Hilfeverzeichnisses, enthält aber keine Daten. Dieser Unterschlüssel der Typbibliothek kann "
    u"daher gelöscht werden.",
    u"The key \"#existingkey:regjump#\" of this type library is meant to name a help folder, but "
    u"holds no data. This subkey of the type library can therefore be deleted."};
inline constexpr TText kEmptyProgIDShort{
    u"Der ProgID-Schlüssel dieses Objektes enthält keine Daten.",
    u"The ProgID key of this object holds no data."};
inline constexpr TText kEmptyProgIDDetail{
    u"Der ProgID-Schlüssel \"#existingkey:regjump#\" enthält keine Daten. Dieser Unterschlüssel "
    u"des Objektes kann daher gelöscht werden.",
    u"The ProgID key \"#existingkey:regjump#\" holds no data. This subkey of the object can "
    u"therefore be deleted."};
inline constexpr TText kInvalidProgramCaption{u"Blaah", u"Blaah"};
inline constexpr TText kInvalidProgramShort{
    u"Dieses Objekt verweist im Kontextmenüeintrag \"#existingkey:action#\" auf das ungültige "
    u"Programm \"#invalidfile#\".",
    u"In its context menu entry \"#existingkey:action#\" this object refers to the invalid program "
    u"\"#invalidfile#\"."};
inline constexpr TText kInvalidProgramDetail{
    u"Das Objekt verweist im Schlüssel \"#existingkey:regjump#\" auf das ungültige Programm "
    u"\"#invalidfile#\".",
    u"In the key \"#existingkey:regjump#\" the object refers to the invalid program "
    u"\"#invalidfile#\"."};
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
inline constexpr TText kMissingCommandShort{
    u"Dem Kontextmenüeintrag \"#existingkey:action#\" dieses Objektes ist kein Programm "
    u"zugeordnet.",
    u"No program is assigned to the context menu entry \"#existingkey:action#\" of this object."};
inline constexpr TText kMissingCommandDetail{
    u"Der Schlüssel \"#existingkey:regjump#\" ist unvollständig, da der Unterschlüssel \"command\" "
    u"fehlt. Der Kontextmenüeintrag \"#existingkey:action#\" des Objektes funktioniert daher "
    u"nicht.",
    u"The key \"#existingkey:regjump#\" is incomplete, because its subkey \"command\" is missing. "
    u"The context menu entry \"#existingkey:action#\" of the object therefore does not work."};
inline constexpr TText kEmptyKeyShort{u"Der #key#-Schlüssel dieses Objektes enthält keine Daten.",
                                      u"The #key# key of this object holds no data."};
inline constexpr TText kEmptyKeyDetail{
    u"Der #key#-Schlüssel \"#existingkey:regjump#\" enthält keine Daten. Dieser Unterschlüssel des "
    u"Objektes kann daher gelöscht werden.",
    u"The #key# key \"#existingkey:regjump#\" holds no data. This subkey of the object can "
    u"therefore be deleted."};

}  // namespace scrubwell::texts::activexcom
