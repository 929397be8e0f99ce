// Every text that the command line program says on its own account.
#pragma once

#include "texts/text.h"

namespace scrubwell::hosts::texts {

// ---- Help -----------------------------------------------------------------------------------
inline constexpr TText Program(
    u"Findet Einträge einer Windows-Registrierung, die auf nicht mehr Vorhandenes verweisen. "
    u"Untersucht ein ausgeschaltetes Windows; erst eine Reinigung ändert etwas, und alles davon "
    u"lässt sich zurücknehmen.",
    u"Finds entries of a Windows registry that refer to things that are no longer there. Looks at "
    u"a switched-off Windows; only a clean changes anything, and all of it can be put back.");
inline constexpr TText ScanCommand(u"Eine Windows-Installation untersuchen",
                                   u"Scan a Windows installation");
inline constexpr TText CleanCommand(
    u"Gefundene Einträge entfernen; vorher wird alles gesichert und gezeigt",
    u"Remove what a scan finds; everything is backed up and shown before");
inline constexpr TText UndoCommand(
    u"Zurücklegen, was eine Sitzung geändert hat (ohne Namen: die letzte Reinigung)",
    u"Put back what a session has changed (without a name: the last clean)");
inline constexpr TText RecoverCommand(
    u"Eine unterbrochene Reinigung zu Ende führen oder zurücknehmen",
    u"Finish or take back a clean that was interrupted");
inline constexpr TText IgnoreCommand(u"Probleme für immer ausblenden: add ID, list oder remove ID",
                                     u"Hide problems for good: add ID, list or remove ID");
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
inline constexpr TText AllHiddenOption(u"Auch die ausgeblendeten Probleme auflisten",
                                       u"List the hidden problems too");
inline constexpr TText AllOption(u"Alle gefundenen Probleme nehmen, die nicht ausgeblendet sind",
                                 u"Take all problems found that are not hidden");
inline constexpr TText SelectOption(u"Nur diese Probleme nehmen, durch Komma getrennt",
                                    u"Take only these problems, separated by commas");
inline constexpr TText DryRunOption(u"Nur den Plan zeigen und nichts ändern",
                                    u"Only show the plan and change nothing");
inline constexpr TText YesOption(u"Nicht nachfragen", u"Don't ask");
inline constexpr TText BackupOption(
    u"Ordner der Sicherungen; sonst scrubwell im Zustandsordner des Benutzers",
    u"Folder of the backups; else scrubwell in the user's state folder");
inline constexpr TText UntilCleanOption(
    u"Suchen und reinigen, bis nichts Ausgewähltes mehr gefunden wird",
    u"Scan and clean until nothing selected is found any more");
inline constexpr TText SessionArgument(u"Name der Sitzung (siehe --list)",
                                       u"Name of the session (see --list)");
inline constexpr TText ItemOption(
    u"Nur diese Änderungen oder Probleme zurücklegen, durch Komma getrennt",
    u"Put back only these changes or problems, separated by commas");
inline constexpr TText ListOption(
    u"Die Sitzungen auflisten, mit einem Namen die Änderungen dieser Sitzung",
    u"List the sessions, with a name the changes of that session");
inline constexpr TText ExportOption(
    u"Die Sitzung als Registrierungsdatei (.reg) schreiben statt sie zurückzulegen",
    u"Write the session as a registry file (.reg) instead of putting it back");
inline constexpr TText UndoWindowsOption(
    u"Ordner des Windows-Laufwerks; sonst der, den die Sitzung nennt",
    u"Folder of the Windows volume; else the one that the session names");
inline constexpr TText ActionArgument(u"add, list oder remove", u"add, list or remove");
inline constexpr TText IdArgument(u"Kennung des Problems, wie die Suche sie zeigt",
                                  u"Id of the problem, as the scan shows it");
inline constexpr TText MachineOption(u"Die Liste für alle Benutzer statt die des Benutzers",
                                     u"The list of all users instead of the user's");
inline constexpr TText ReasonOption(u"Begründung, die dabei aufgehoben wird",
                                    u"A reason to keep with it");
inline constexpr TText LangOption(u"Sprache: de oder en; sonst die der Umgebung",
                                  u"Language: de or en; else the environment's");
inline constexpr TText ExitCodes(
    u"Rückgabewert: 0 keine Probleme, 1 Probleme gefunden, 2 falscher Aufruf oder Ausgabe nicht "
    u"schreibbar, 3 Ziel nicht lesbar, 130 abgebrochen.",
    u"Exit status: 0 no problems, 1 problems found, 2 wrong use or output that can't be written, "
    u"3 the target can't be read, 130 stopped.");
inline constexpr TText CleanExitCodes(
    u"Rückgabewert: 0 alles Ausgewählte behoben, 1 etwas blieb übrig, 2 falscher Aufruf oder "
    u"Sicherung oder Ausgabe nicht schreibbar, 3 Ziel nicht lesbar oder nicht änderbar, 130 "
    u"abgebrochen (dann ist nichts geändert).",
    u"Exit status: 0 all that was selected is fixed, 1 some is left, 2 wrong use or backup or "
    u"output that can't be written, 3 the target can't be read or changed, 130 stopped (nothing "
    u"is changed then).");
inline constexpr TText UndoExitCodes(
    u"Rückgabewert: 0 alles ist wieder da, 1 etwas konnte nicht zurückgelegt werden, 2 falscher "
    u"Aufruf, 3 Ziel oder Sicherung nicht lesbar oder nicht änderbar.",
    u"Exit status: 0 everything is back, 1 some of it could not be put back, 2 wrong use, 3 the "
    u"target or the backup can't be read or changed.");
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
inline constexpr TText MissingOption(u"%s fehlt", u"%s is missing");
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
inline constexpr TText AllOrSelect(u"Es muss entweder --all oder --select angegeben sein",
                                   u"either --all or --select must be given");
inline constexpr TText NeedsYes(
    u"Ohne Terminal kann nicht nachgefragt werden, es braucht --yes oder --dry-run",
    u"without a terminal nobody can be asked, --yes or --dry-run is needed");
inline constexpr TText UnknownProblem(u"%s: kein Problem mit dieser Kennung gefunden",
                                      u"%s: no problem of this id was found");
inline constexpr TText HiddenProblem(u"%s: dieses Problem ist ausgeblendet",
                                     u"%s: this problem is hidden");
inline constexpr TText AmbiguousProblem(u"%s: diese Kennung trifft auf mehrere Probleme zu",
                                        u"%s: this id fits more than one problem");
inline constexpr TText UnknownAction(u"%s: unbekannt, möglich sind add, list und remove",
                                     u"%s: unknown, known are add, list and remove");
inline constexpr TText NotIgnored(u"%s: steht nicht auf der Liste", u"%s: is not on the list");
inline constexpr TText IgnoreNotStored(u"%s: die Liste lässt sich nicht ändern",
                                       u"%s: the list can't be changed");
inline constexpr TText NothingChanged(u"Abgebrochen, nichts wurde geändert",
                                      u"stopped, nothing was changed");
inline constexpr TText PlanOutdated(
    u"Inzwischen hat sich das Ziel geändert, und es ginge mehr verloren, als der Plan sagt; nichts "
    u"wurde geändert",
    u"the target has changed since, and more would go than the plan says; nothing was changed");
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
inline constexpr TText HiddenNone(u"Keines ist ausgeblendet.", u"None is hidden.");
inline constexpr TText HiddenMark(u"(ausgeblendet)", u"(hidden)");
inline constexpr TText HiddenOne(u"1 weiteres ist ausgeblendet.", u"1 more is hidden.");
inline constexpr TText HiddenMany(u"%s weitere sind ausgeblendet.", u"%s more are hidden.");
inline constexpr TText ScanStopped(
    u"Die Suche wurde abgebrochen; das bis dahin Gefundene steht oben.",
    u"The scan was stopped; what had been found by then stands above.");
inline constexpr TText ScanAgain(u"Eine neue Suche ist ratsam.", u"A new scan is advisable.");

// ---- Plan and result of a clean -------------------------------------------------------------
inline constexpr TText PlanHeading(u"Plan: %s Änderungen", u"Plan: %s changes");
inline constexpr TText RoundHeading(u"Runde %s", u"Round %s");
inline constexpr TText FurtherChanges(u"Weitere Änderungen", u"Further changes");
inline constexpr TText Ask(u"Diese Änderungen ausführen? [j/N] ", u"Make these changes? [y/N] ");
inline constexpr TText NothingSelected(u"Es gibt nichts zu reinigen.", u"Nothing to clean.");
inline constexpr TText DryRunEnd(u"Nichts wurde geändert.", u"Nothing was changed.");
inline constexpr TText FixedCount(u"Behoben: %s.", u"Fixed: %s.");
inline constexpr TText LeftCount(u"Übrig: %s.", u"Left: %s.");
inline constexpr TText GoneCount(u"Nicht mehr vorhanden: %s.", u"No longer there: %s.");
inline constexpr TText HiddenCount(u"Ausgeblendet: %s.", u"Hidden: %s.");
inline constexpr TText UndoHint(u"Zurücknehmen: scrubwell undo %s",
                                u"To put it back: scrubwell undo %s");
inline constexpr TText BackupLine(u"Sicherung: %s", u"Backup: %s");
inline constexpr TText OutcomeFixed(u"behoben", u"fixed");
inline constexpr TText OutcomeFailed(u"nicht behoben", u"not fixed");
inline constexpr TText OutcomeStillFound(u"noch immer da", u"still found");
inline constexpr TText OutcomeGone(u"nicht mehr da, übersprungen", u"no longer there, skipped");

inline constexpr TText ActionDeleteKey(u"Schlüssel löschen:", u"delete key");
inline constexpr TText ActionDeleteValue(u"Wert löschen:", u"delete value");
inline constexpr TText ActionSetValue(u"Wert setzen:", u"set value");
inline constexpr TText ActionCreateKey(u"Schlüssel anlegen:", u"create key");
inline constexpr TText ActionWriteFile(u"Datei schreiben:", u"write file");
inline constexpr TText ActionEraseFile(u"Datei löschen:", u"erase file");
inline constexpr TText ActionEraseFolder(u"Leeren Ordner löschen:", u"erase empty folder");
inline constexpr TText ActionKeepFile(u"Datei sichern:", u"keep a copy of file");
inline constexpr TText DefaultValueName(u"(Standard)", u"(default)");
inline constexpr TText LeftEmpty(u"nun leer", u"left empty");
inline constexpr TText Subkeys(u"Unterschlüssel: %s", u"subkeys: %s");
inline constexpr TText Values(u"Werte: %s", u"values: %s");
inline constexpr TText ByteCount(u"Bytes: %s", u"bytes: %s");

// ---- Undo, recover, ignore ------------------------------------------------------------------
inline constexpr TText NoSessions(u"Keine Sitzungen.", u"No sessions.");
inline constexpr TText SessionLine(u"%s  %s  Änderungen: %s, zurückgelegt: %s",
                                   u"%s  %s  changes: %s, put back: %s");
inline constexpr TText SessionPending(u"nicht ausgeführt", u"not carried out");
inline constexpr TText SessionUndoes(u"nimmt %s zurück", u"takes %s back");
inline constexpr TText ItemUndone(u"zurückgelegt", u"put back");
inline constexpr TText UndoRestored(u"zurückgelegt", u"put back");
inline constexpr TText UndoAlreadyThere(u"schon da", u"already there");
inline constexpr TText UndoTaken(u"besetzt", u"taken");
inline constexpr TText UndoFailed(u"misslungen", u"failed");
inline constexpr TText UndoSummary(u"Zurückgelegt: %s. Schon da: %s. Nicht möglich: %s.",
                                   u"Put back: %s. Already there: %s. Not possible: %s.");
inline constexpr TText RecoverNothing(u"Nichts war unterbrochen.", u"Nothing was interrupted.");
inline constexpr TText RecoverCompleted(u"Die unterbrochene Änderung ist zu Ende geführt.",
                                        u"The interrupted change was completed.");
inline constexpr TText RecoverRolledBack(u"Die unterbrochene Änderung ist zurückgenommen.",
                                         u"The interrupted change was taken back.");
inline constexpr TText NoIgnored(u"Keine Probleme sind ausgeblendet.", u"No problems are hidden.");
inline constexpr TText OnMachineList(u"(für alle Benutzer)", u"(all users)");

}  // namespace scrubwell::hosts::texts
