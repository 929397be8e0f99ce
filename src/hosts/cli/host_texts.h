// Every text that the command line program says on its own account.
#pragma once

#include "texts/text.h"

namespace scrubwell::cli::texts {

// ---- Help -----------------------------------------------------------------------------------
inline constexpr TText Program(
    u"Findet Einträge einer Windows-Registrierung, die auf nicht mehr Vorhandenes verweisen. "
    u"Untersucht ein ausgeschaltetes Windows und ändert dabei nichts.",
    u"Finds entries of a Windows registry that refer to things that are no longer there. Looks at "
    u"a switched-off Windows and changes nothing.");
inline constexpr TText ScanCommand(u"Eine Windows-Installation untersuchen",
                                   u"Scan a Windows installation");
inline constexpr TText PluginsCommand(u"Die Kategorien auflisten, die untersucht werden können",
                                      u"List the categories that can be scanned");
inline constexpr TText HelpFlag(u"Diese Hilfe zeigen und beenden", u"Show this help and exit");
inline constexpr TText VersionFlag(u"Die Version zeigen und beenden", u"Show the version and exit");
inline constexpr TText WindowsOption(
    u"Ordner, in dem das Windows-Laufwerk eingehängt ist (darin liegt der Ordner Windows)",
    u"Folder that the Windows volume is mounted on (the one that holds the Windows folder)");
inline constexpr TText UserOption(
    u"Benutzer: Profilordner, Kontoname oder SID; sonst der einzige oder zuletzt angemeldete",
    u"User: profile folder, account name or SID; else the only or most recently used one");
inline constexpr TText DriveOptionText(
    u"Ordner eines weiteren Laufwerks, etwa E=/mnt/e; Art: fixed, removable, cdrom, network",
    u"Folder of a further drive, for example E=/mnt/e; kind: fixed, removable, cdrom, network");
inline constexpr TText PluginsOption(
    u"Nur diese Kategorien, durch Komma getrennt (siehe: scrubwell plugins)",
    u"Only these categories, separated by commas (see: scrubwell plugins)");
inline constexpr TText FormatOption(u"Ausgabeformat: text oder json", u"Output: text or json");
inline constexpr TText OutputOption(u"In diese Datei statt auf die Standardausgabe schreiben",
                                    u"Write to this file instead of the standard output");
inline constexpr TText LangOption(u"Sprache: de oder en; sonst die der Umgebung",
                                  u"Language: de or en; else the environment's");
inline constexpr TText ExitCodes(
    u"Rückgabewert: 0 keine Probleme, 1 Probleme gefunden, 2 falscher Aufruf oder Ausgabe nicht "
    u"schreibbar, 3 Ziel nicht lesbar, 130 abgebrochen.",
    u"Exit status: 0 no problems, 1 problems found, 2 wrong use or output that can't be written, "
    u"3 the target can't be read, 130 stopped.");
inline constexpr TText UsageLabel(u"Aufruf", u"Usage");
inline constexpr TText OptionsLabel(u"Optionen", u"Options");
inline constexpr TText OptionsUsage(u"[OPTIONEN]", u"[OPTIONS]");
inline constexpr TText CommandUsage(u"BEFEHL", u"COMMAND");
inline constexpr TText CommandsLabel(u"Befehle", u"Commands");
inline constexpr TText RequiredLabel(u"(nötig)", u"(required)");
inline constexpr TText FolderType(u"ORDNER", u"DIR");
inline constexpr TText NameType(u"NAME", u"NAME");
inline constexpr TText DriveType(u"X=ORDNER[:ART]", u"X=DIR[:KIND]");
inline constexpr TText FileType(u"DATEI", u"FILE");

// ---- Wrong use ------------------------------------------------------------------------------
inline constexpr TText UnknownArgument(u"%s: unbekanntes Argument", u"%s: unknown argument");
inline constexpr TText MissingOption(u"%s: diese Option fehlt", u"%s: this option is missing");
inline constexpr TText MissingCommand(u"Es fehlt ein Befehl (siehe: scrubwell --help)",
                                      u"a command is missing (see: scrubwell --help)");
inline constexpr TText BadArguments(u"%s: der Aufruf ist nicht verständlich",
                                    u"%s: the command line can't be understood");
inline constexpr TText UnknownFormat(u"%s: unbekanntes Format, möglich sind text und json",
                                     u"%s: unknown format, known are text and json");
inline constexpr TText UnknownLanguage(u"%s: unbekannte Sprache, möglich sind de und en",
                                       u"%s: unknown language, known are de and en");
inline constexpr TText UnknownPlugin(u"%s: unbekannte Kategorie (siehe: scrubwell plugins)",
                                     u"%s: unknown category (see: scrubwell plugins)");
inline constexpr TText BadDrive(u"%s: kein Laufwerk der Form X=ORDNER oder X=ORDNER:ART",
                                u"%s: not a drive of the form X=DIR or X=DIR:KIND");
inline constexpr TText CantWrite(u"%s: kann nicht geschrieben werden: %s",
                                 u"%s: can't be written: %s");
inline constexpr TText StandardOutput(u"Standardausgabe", u"standard output");
inline constexpr TText Unexpected(u"Unerwarteter Fehler: %s", u"unexpected failure: %s");

// ---- Report ---------------------------------------------------------------------------------
inline constexpr TText UnnamedWindows(u"Windows", u"Windows");
inline constexpr TText TargetLine(u"%s in %s", u"%s in %s");
inline constexpr TText BuildWord(u"Build %s", u"build %s");
inline constexpr TText Bits64(u"64 Bit", u"64-bit");
inline constexpr TText Bits32(u"32 Bit", u"32-bit");
inline constexpr TText UserWord(u"Benutzer %s", u"user %s");
inline constexpr TText NotesHeading(u"Hinweise", u"Notes");
inline constexpr TText FoundNone(u"Keine Probleme gefunden.", u"No problems found.");
inline constexpr TText FoundOne(u"1 Problem gefunden.", u"1 problem found.");
inline constexpr TText FoundMany(u"%s Probleme gefunden.", u"%s problems found.");
inline constexpr TText HiddenOne(u"1 weiteres ist ausgeblendet.", u"1 more is hidden.");
inline constexpr TText HiddenMany(u"%s weitere sind ausgeblendet.", u"%s more are hidden.");
inline constexpr TText ScanStopped(
    u"Die Suche wurde abgebrochen; das bis dahin Gefundene steht oben.",
    u"The scan was stopped; what had been found by then stands above.");
inline constexpr TText ScanAgain(u"Eine neue Suche ist ratsam.", u"A new scan is advisable.");

}  // namespace scrubwell::cli::texts
