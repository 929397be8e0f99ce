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
inline constexpr TText LiveProgram(
    u"Findet Einträge der Registrierung dieses Windows, die auf nicht mehr Vorhandenes verweisen. "
    u"Erst eine Reinigung ändert etwas, und alles davon lässt sich zurücknehmen.",
    u"Finds entries of this Windows' registry that refer to things that are no longer there. Only "
    u"a clean changes anything, and all of it can be put back.");
inline constexpr TText ScanCommand(u"Eine Windows-Installation untersuchen",
                                   u"Scan a Windows installation");
inline constexpr TText CleanCommand(
    u"Gefundene Einträge entfernen; vorher wird alles gesichert und gezeigt",
    u"Remove what a scan finds; everything is backed up and shown first");
inline constexpr TText UndoCommand(
    u"Wiederherstellen, was eine Sitzung geändert hat (ohne Namen: die letzte Reinigung)",
    u"Put back what a session has changed (without a name: the last clean)");
inline constexpr TText RecoverCommand(u"Eine unterbrochene Reinigung abschließen oder zurücknehmen",
                                      u"Complete or roll back a clean that was interrupted");
inline constexpr TText SessionsCommand(
    u"Die Sitzungen im Ordner der Sicherungen: list zeigt sie, prune entfernt alte",
    u"The sessions in the folder of the backups: list shows them, prune removes old ones");
inline constexpr TText IgnoreCommand(u"Probleme für immer ausblenden: add ID, list oder remove ID",
                                     u"Hide problems for good: add ID, list or remove ID");
inline constexpr TText PluginsCommand(u"Die Kategorien auflisten, die untersucht werden können",
                                      u"List the categories that can be scanned");
inline constexpr TText ExplainCommand(
    u"Zeigen, woraus auf ein Problem geschlossen wurde und was eine Reinigung entfernt",
    u"Show what a problem was concluded from, and what a clean would remove");
inline constexpr TText RegCommand(
    u"Einen Schlüssel der Registrierung zeigen, wie die Suche ihn sieht, oder nach Text suchen",
    u"Show a registry key as the scan sees it, or search for text");
inline constexpr TText HelpFlag(u"Diese Hilfe zeigen und beenden", u"Show this help and exit");
inline constexpr TText VersionFlag(u"Die Version zeigen und beenden", u"Show the version and exit");
inline constexpr TText WindowsOption(
    u"Ordner, in dem das Windows-Laufwerk eingehängt ist (darin liegt der Ordner Windows)",
    u"Folder that the Windows volume is mounted on (the one that holds the Windows folder)");
inline constexpr TText LiveOption(
    u"Das laufende Windows, für den Benutzer, der das Programm ausführt; auch ohne Angabe",
    u"The running Windows, for the user who runs the program; so it is without this too");
inline constexpr TText UserOption(
    u"Benutzer: Profilordner, Kontoname oder SID; sonst der einzige oder zuletzt angemeldete. Bei "
    u"scan: all für alle",
    u"User: profile folder, account name or SID; else the only or most recently used one. With "
    u"scan: all for all of them");
inline constexpr TText DriveOptionText(
    u"Ordner eines weiteren Laufwerks, etwa E=/mnt/e; Art: fixed, removable, cdrom, network",
    u"Folder of a further drive, for example E=/mnt/e; kind: fixed, removable, cdrom, network");
inline constexpr TText PluginsOption(
    u"Nur diese Kategorien, durch Komma getrennt (siehe: scrubwell plugins)",
    u"Only these categories, separated by commas (see: scrubwell plugins)");
inline constexpr TText ExcludeOption(u"Diese Kategorien nicht, durch Komma getrennt",
                                     u"Leave out these categories, separated by commas");
inline constexpr TText KindOption(
    u"Von einer Kategorie nur diese Arten, etwa Fonts:1 (siehe: scrubwell plugins --kinds)",
    u"Only these kinds of a category, for example Fonts:1 (see: scrubwell plugins --kinds)");
inline constexpr TText FilterOption(
    u"Nur Probleme, in deren Name, Kurztext oder Daten dieser Text vorkommt",
    u"Only problems with this text in their name, short text or data");
inline constexpr TText SinceOption(u"Nur zeigen, was ein früherer JSON-Bericht nicht nennt",
                                   u"Show only what an earlier JSON report does not name");
inline constexpr TText FailOnOption(
    u"Wann der Rückgabewert 1 ist: bei neuen Problemen, bei allen oder nie",
    u"When the exit status is 1: on new problems, on any or never");
inline constexpr TText DetailsOption(u"Auch Erklärungen und die Daten der Probleme zeigen",
                                     u"Show explanations and the problems' data too");
inline constexpr TText LimitOption(
    u"Höchstens so viele Probleme je Kategorie auflisten, 0 für alle; ohne Angabe werden nur am "
    u"Terminal lange Listen gekürzt",
    u"List at most this many problems of a category, 0 for all; without it only long lists on a "
    u"terminal are cut short");
inline constexpr TText ListKindsOption(u"Auch die Arten von Problemen mit ihren Nummern auflisten",
                                       u"List the kinds of problems with their numbers too");
inline constexpr TText KeyArgument(
    u"Schlüssel, etwa HKLM\\SOFTWARE, auch mit 32: oder 64: davor; oder find TEXT",
    u"Key, for example HKLM\\SOFTWARE, also with 32: or 64: before it; or find TEXT");
inline constexpr TText ViewOption(u"Ansicht der Registrierung; sonst 64, wo es zwei gibt",
                                  u"View of the registry; else 64 where there are two");
inline constexpr TText FindKeyOption(u"Nur in diesem Schlüssel und darunter suchen",
                                     u"Search only this key and what lies below it");
inline constexpr TText FormatOption(u"Ausgabeformat", u"Format of the output");
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
inline constexpr TText LiveBackupOption(
    u"Ordner der Sicherungen; sonst %LOCALAPPDATA%\\Scrubwell\\Sessions",
    u"Folder of the backups; else %LOCALAPPDATA%\\Scrubwell\\Sessions");
inline constexpr TText UntilCleanOption(
    u"Suchen und reinigen, bis nichts Ausgewähltes mehr gefunden wird",
    u"Scan and clean until nothing selected is found any more");
inline constexpr TText SessionArgument(u"Name der Sitzung (siehe --list)",
                                       u"Name of the session (see --list)");
inline constexpr TText ItemOption(
    u"Nur diese Änderungen oder Probleme zurücknehmen, durch Komma getrennt",
    u"Put back only these changes or problems, separated by commas");
inline constexpr TText ListOption(
    u"Die Sitzungen auflisten, mit einem Namen die Änderungen dieser Sitzung",
    u"List the sessions, with a name the changes of that session");
inline constexpr TText ExportOption(
    u"Die Sitzung als Registrierungsdatei (.reg) schreiben, statt sie zurückzunehmen",
    u"Write the session as a registry file (.reg) instead of putting it back");
inline constexpr TText UndoWindowsOption(
    u"Ordner des Windows-Laufwerks; sonst der, den die Sitzung nennt",
    u"Folder of the Windows volume; else the one that the session names");
inline constexpr TText PlaceArgument(u"Ordner des Windows-Laufwerks, statt mit --windows",
                                     u"Folder of the Windows volume, in place of --windows");
inline constexpr TText SessionsAction(u"list oder prune", u"list or prune");
inline constexpr TText KeepOption(u"prune: die N neuesten Sitzungen behalten",
                                  u"prune: keep the N newest sessions");
inline constexpr TText OlderOption(u"prune: nur Sitzungen entfernen, die älter sind",
                                   u"prune: remove only sessions that are older");
inline constexpr TText DaysType(u"TAGE", u"DAYS");
inline constexpr TText PruneDryRunOption(u"Nur zeigen, was entfernt würde",
                                         u"Only show what would be removed");
inline constexpr TText ActionArgument(u"add, list oder remove", u"add, list or remove");
inline constexpr TText IdArgument(u"Kennung des Problems, wie die Suche sie zeigt",
                                  u"Id of the problem, as the scan shows it");
inline constexpr TText MachineOption(u"Die Liste für alle Benutzer statt die des Benutzers",
                                     u"The list of all users instead of the user's");
inline constexpr TText ReasonOption(u"Begründung, die mit gespeichert wird",
                                    u"A reason to store with it");
inline constexpr TText LangOption(u"Sprache: de oder en; sonst die der Umgebung",
                                  u"Language: de or en; else the environment's");
inline constexpr TText ExitCodes(
    u"Rückgabewert: 0 keine Probleme, 1 Probleme gefunden (siehe --fail-on), 2 falscher Aufruf "
    u"oder Ausgabe nicht schreibbar, 3 Ziel nicht lesbar, 130 abgebrochen.",
    u"Exit status: 0 no problems, 1 problems found (see --fail-on), 2 wrong use or output that "
    u"can't be written, 3 the target can't be read, 130 stopped.");
inline constexpr TText CleanExitCodes(
    u"Rückgabewert: 0 alles Ausgewählte behoben, 1 etwas blieb übrig, 2 falscher Aufruf oder "
    u"Sicherung oder Ausgabe nicht schreibbar, 3 Ziel nicht lesbar oder nicht änderbar, 130 "
    u"abgebrochen (dann ist nichts geändert).",
    u"Exit status: 0 all that was selected is fixed, 1 some is left, 2 wrong use or backup or "
    u"output that can't be written, 3 the target can't be read or changed, 130 stopped (nothing "
    u"is changed then).");
inline constexpr TText UndoExitCodes(
    u"Rückgabewert: 0 alles ist wieder da, 1 etwas ließ sich nicht wiederherstellen, 2 falscher "
    u"Aufruf, 3 Ziel oder Sicherung nicht lesbar oder nicht änderbar.",
    u"Exit status: 0 everything is back, 1 some of it could not be put back, 2 wrong use, 3 the "
    u"target or the backup can't be read or changed.");
inline constexpr TText OtherExitCodes(
    u"Rückgabewert: 0 gezeigt, 2 falscher Aufruf oder unbekannte Kennung, 3 Ziel nicht lesbar, 130 "
    u"abgebrochen.",
    u"Exit status: 0 shown, 2 wrong use or unknown id, 3 the target can't be read, 130 stopped.");
inline constexpr TText RegExitCodes(
    u"Rückgabewert: 0 gezeigt oder gefunden, 1 nicht vorhanden oder nichts gefunden, 2 falscher "
    u"Aufruf, 3 Ziel oder Schlüssel nicht lesbar, 130 abgebrochen.",
    u"Exit status: 0 shown or found, 1 not there or nothing found, 2 wrong use, 3 the target or "
    u"the key can't be read, 130 stopped.");
inline constexpr TText KeyType(u"SCHLÜSSEL", u"KEY");
inline constexpr TText UsageLabel(u"Aufruf", u"Usage");
inline constexpr TText OptionsLabel(u"Optionen", u"Options");
inline constexpr TText ArgumentsLabel(u"Argumente", u"Arguments");
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
inline constexpr TText UnknownCommand(u"%s: unbekannter Befehl", u"%s: unknown command");
inline constexpr TText DidYouMean(u"gemeint war vielleicht %s", u"did you mean %s?");
inline constexpr TText SeeHelp(u"(siehe: scrubwell --help)", u"(see: scrubwell --help)");
inline constexpr TText MissingFolder(
    u"Es fehlt der Ordner, in dem das Windows-Laufwerk eingehängt ist (%s ORDNER)",
    u"the folder that the Windows volume is mounted on is missing (%s DIR)");
inline constexpr TText EmptyFolder(u"%s nennt keinen Ordner", u"%s names no folder");
inline constexpr TText SecondFolder(
    u"%s: ein zweiter Ordner; auf einmal wird nur ein Windows untersucht",
    u"%s: a second folder; only one Windows is looked at at a time");
inline constexpr TText NoWindowsHere(
    u"%s: hier ist kein Windows (kein Ordner darin enthält System32/config/SOFTWARE)",
    u"%s: no Windows here (no folder in it holds System32/config/SOFTWARE)");
inline constexpr TText IsAnImage(
    u"%s: ist ein Datenträgerabbild (%s) und kein Ordner; es muss erst eingehängt werden",
    u"%s: is a disk image (%s) and no folder; it has to be mounted first");
inline constexpr TText IsADisk(
    u"%s: ist ein Datenträger und kein Ordner; er muss erst eingehängt werden, etwa mit mount -o "
    u"ro "
    u"%s /mnt",
    u"%s: is a disk and no folder; it has to be mounted first, for example with mount -o ro %s "
    u"/mnt");
inline constexpr TText IsAFile(u"%s: ist eine Datei und kein Ordner", u"%s: is a file, no folder");
inline constexpr TText NoSuchUser(u"%s: diesen Benutzer gibt es nicht (oder mehrfach); es gibt: %s",
                                  u"%s: there is no such user (or several); there are: %s");
inline constexpr TText NeedsLimit(u"prune braucht --keep N oder --older-than TAGE",
                                  u"prune needs --keep N or --older-than DAYS");
inline constexpr TText UnknownSessionsAction(u"%s: unbekannt, möglich sind list und prune",
                                             u"%s: unknown, must be list or prune");
inline constexpr TText NotLive(
    u"--live: hier wird ein ausgeschaltetes Windows untersucht, dessen Ordner --windows nennt; das "
    u"laufende untersucht scrubwell.exe",
    u"--live: here a switched-off Windows is looked at, whose folder --windows names; "
    u"scrubwell.exe "
    u"looks at the running one");
inline constexpr TText OnlyLive(
    u"%s: dieses Programm untersucht das laufende Windows; ein ausgeschaltetes untersucht das für "
    u"Linux",
    u"%s: this program looks at the running Windows; the one for Linux looks at a switched-off "
    u"one");
inline constexpr TText OnlyOwnUser(
    u"%s: das laufende Windows wird für den Benutzer untersucht, der das Programm ausführt",
    u"%s: the running Windows is looked at for the user who runs the program");
inline constexpr TText MissingValue(u"%s: dahinter fehlt etwas", u"%s: its value is missing");
inline constexpr TText MissingOption(u"%s fehlt", u"%s is missing");
inline constexpr TText Greeting(
    u"Scrubwell %s wird in einer Eingabeaufforderung benutzt und ändert nichts von selbst.\n\n"
    u"  scrubwell scan           sucht Einträge, die auf nicht mehr Vorhandenes verweisen\n"
    u"  scrubwell explain ID     zeigt, woraus auf ein Problem geschlossen wurde\n"
    u"  scrubwell clean --all    entfernt, was gefunden wird, und fragt vorher\n"
    u"  scrubwell undo           nimmt die letzte Reinigung zurück\n"
    u"  scrubwell --help         zeigt alles andere\n\n"
    u"Mit der Eingabetaste schließt sich dieses Fenster. ",
    u"Scrubwell %s is used from a command prompt and changes nothing on its own.\n\n"
    u"  scrubwell scan           finds entries that refer to things no longer there\n"
    u"  scrubwell explain ID     shows what a problem was concluded from\n"
    u"  scrubwell clean --all    removes what is found, and asks first\n"
    u"  scrubwell undo           puts back the last clean\n"
    u"  scrubwell --help         shows everything else\n\n"
    u"Press Enter to close this window. ");
inline constexpr TText MissingCommand(u"Es fehlt ein Befehl (siehe: scrubwell --help)",
                                      u"a command is missing (see: scrubwell --help)");
inline constexpr TText BadArguments(u"%s: der Aufruf ist nicht verständlich",
                                    u"%s: the command line can't be understood");
inline constexpr TText UnknownFormat(u"%s: unbekanntes Format, möglich sind %s",
                                     u"%s: unknown format, must be one of %s");
inline constexpr TText UnknownView(u"%s: unbekannte Ansicht, möglich sind 32 und 64",
                                   u"%s: unknown view, must be 32 or 64");
inline constexpr TText UnknownFailOn(u"%s: unbekannt, möglich sind new, any und none",
                                     u"%s: unknown, must be new, any or none");
inline constexpr TText NeedsSince(u"%s braucht --since", u"%s needs --since");
inline constexpr TText BadNumber(u"%s: keine Zahl", u"%s: not a number");
inline constexpr TText BadKind(u"%s: nicht von der Form KATEGORIE:NUMMER",
                               u"%s: not of the form CATEGORY:NUMBER");
inline constexpr TText UnknownKind(u"%s: unbekannte Art (siehe: scrubwell plugins --kinds)",
                                   u"%s: unknown kind (see: scrubwell plugins --kinds)");
inline constexpr TText NoCategoryLeft(u"Es bleibt keine Kategorie übrig", u"no category is left");
inline constexpr TText AllUsersScanOnly(u"--user %s gibt es nur bei scan",
                                        u"--user %s is for scan only");
inline constexpr TText LeftOutProblem(u"%s: dieses Problem gehört nicht zur Auswahl",
                                      u"%s: this problem is not part of the selection");
inline constexpr TText CantRead(u"%s: kann nicht gelesen werden: %s", u"%s: can't be read: %s");
inline constexpr TText NotAReport(u"%s: ist kein JSON-Bericht einer Suche",
                                  u"%s: is not a JSON report of a scan");
inline constexpr TText ReportTooLarge(u"%s: ist zu groß für einen Bericht",
                                      u"%s: is too large for a report");
inline constexpr TText UnknownRoot(
    u"%s: kein Schlüssel (er beginnt mit HKLM, HKCU, HKCR, HKU oder HKCC)",
    u"%s: not a key (it begins with HKLM, HKCU, HKCR, HKU or HKCC)");
inline constexpr TText KeyAbsent(u"%s: diesen Schlüssel gibt es nicht",
                                 u"%s: there is no such key");
inline constexpr TText KeyUnreadable(u"%s: der Schlüssel kann nicht gelesen werden",
                                     u"%s: the key can't be read");
inline constexpr TText UnknownLanguage(u"%s: unbekannte Sprache, möglich sind de und en",
                                       u"%s: unknown language, must be de or en");
inline constexpr TText UnknownPlugin(u"%s: unbekannte Kategorie (siehe: scrubwell plugins)",
                                     u"%s: unknown category (see: scrubwell plugins)");
inline constexpr TText BadDrive(u"%s: kein Laufwerk der Form X=ORDNER oder X=ORDNER:ART",
                                u"%s: not a drive of the form X=DIR or X=DIR:KIND");
inline constexpr TText AllOrSelect(u"Genau eines von --all und --select muss angegeben sein",
                                   u"either --all or --select must be given");
inline constexpr TText NeedsYes(
    u"Ohne Terminal kann nicht nachgefragt werden, es braucht --yes oder --dry-run",
    u"without a terminal nobody can be asked, --yes or --dry-run is needed");
inline constexpr TText UnknownProblem(u"%s: kein Problem mit dieser Kennung gefunden",
                                      u"%s: no problem with this id was found");
inline constexpr TText HiddenProblem(u"%s: dieses Problem ist ausgeblendet",
                                     u"%s: this problem is hidden");
inline constexpr TText AmbiguousProblem(u"%s: diese Kennung trifft auf mehrere Probleme zu",
                                        u"%s: this id matches more than one problem");
inline constexpr TText UnknownAction(u"%s: unbekannt, möglich sind add, list und remove",
                                     u"%s: unknown, must be add, list or remove");
inline constexpr TText NotIgnored(u"%s: steht nicht auf der Liste", u"%s: is not on the list");
inline constexpr TText IgnoreNotStored(u"%s: die Liste lässt sich nicht ändern",
                                       u"%s: the list can't be changed");
inline constexpr TText NothingChanged(u"Abgebrochen, nichts wurde geändert",
                                      u"stopped, nothing was changed");
inline constexpr TText PlanOutdated(
    u"Inzwischen hat sich das Ziel geändert, und es ginge mehr verloren, als der Plan sagt; nichts "
    u"wurde geändert",
    u"the target has changed since, and more would be lost than the plan says; "
    u"nothing was changed");
inline constexpr TText CantWrite(u"%s: kann nicht geschrieben werden: %s",
                                 u"%s: can't be written: %s");
inline constexpr TText StandardOutput(u"Standardausgabe", u"standard output");
inline constexpr TText Unexpected(u"Unerwarteter Fehler: %s", u"unexpected error: %s");

// ---- Report ---------------------------------------------------------------------------------
inline constexpr TText UnnamedWindows(u"Windows", u"Windows");
inline constexpr TText TargetLine(u"%s in %s", u"%s in %s");
inline constexpr TText BuildWord(u"Build %s", u"build %s");
inline constexpr TText Bits64(u"64 Bit", u"64-bit");
inline constexpr TText Bits32(u"32 Bit", u"32-bit");
inline constexpr TText UserWord(u"Benutzer %s", u"user %s");
inline constexpr TText UsersWord(u"Benutzer", u"users");
inline constexpr TText NotesHeading(u"Hinweise", u"Notes");
inline constexpr TText OverviewHeading(u"Übersicht", u"Overview");
inline constexpr TText MoreInCategory(u"... und %s weitere; --plugins %s zeigt alle",
                                      u"... and %s more; --plugins %s shows them all");
inline constexpr TText MoreNotes(u"... und %s weitere; --limit 0 zeigt alle",
                                 u"... and %s more; --limit 0 shows them all");
inline constexpr TText FoundNone(u"Keine Probleme gefunden.", u"No problems found.");
inline constexpr TText FoundOne(u"1 Problem gefunden.", u"1 problem found.");
inline constexpr TText FoundMany(u"%s Probleme gefunden.", u"%s problems found.");
inline constexpr TText NewNone(u"Keine neuen Probleme gefunden.", u"No new problems found.");
inline constexpr TText NewOne(u"1 neues Problem gefunden.", u"1 new problem found.");
inline constexpr TText NewMany(u"%s neue Probleme gefunden.", u"%s new problems found.");
inline constexpr TText KnownNone(u"Im früheren Bericht stand keines davon.",
                                 u"None was in the earlier report.");
inline constexpr TText KnownOne(u"1 stand schon im früheren Bericht.",
                                u"1 was in the earlier report already.");
inline constexpr TText KnownMany(u"%s standen schon im früheren Bericht.",
                                 u"%s were in the earlier report already.");
inline constexpr TText HiddenNone(u"Keines ist ausgeblendet.", u"None is hidden.");
inline constexpr TText HiddenMark(u"(ausgeblendet)", u"(hidden)");
inline constexpr TText HiddenOne(u"1 weiteres ist ausgeblendet.", u"1 more is hidden.");
inline constexpr TText HiddenMany(u"%s weitere sind ausgeblendet.", u"%s more are hidden.");
inline constexpr TText LeftOutOne(u"1 weiteres gehört nicht zur Auswahl.",
                                  u"1 more is not part of the selection.");
inline constexpr TText LeftOutMany(u"%s weitere gehören nicht zur Auswahl.",
                                   u"%s more are not part of the selection.");
inline constexpr TText NotesOne(u"Ein Hinweis sagt, was offenblieb und warum.",
                                u"A note says what could not be determined and why.");
inline constexpr TText NotesMany(u"%s Hinweise sagen, was offenblieb und warum.",
                                 u"%s notes say what could not be determined and why.");
inline constexpr TText ScanTook(u"Die Suche dauerte %s.", u"The scan took %s.");
inline constexpr TText ScanStopped(
    u"Die Suche wurde abgebrochen; gezeigt ist, was bis dahin gefunden war.",
    u"The scan was stopped; what had been found by then is shown.");
inline constexpr TText ScanAgain(u"Eine neue Suche ist ratsam.", u"A new scan is advisable.");
inline constexpr TText EarlierIncomplete(
    u"Der frühere Bericht ist unvollständig; was er nicht zeigt, gilt als neu",
    u"The earlier report is incomplete; what it does not show counts as new");

// ---- Registry at hand -----------------------------------------------------------------------
inline constexpr TText SubkeysHeading(u"Unterschlüssel (%s)", u"Subkeys (%s)");
inline constexpr TText ValuesHeading(u"Werte (%s)", u"Values (%s)");
inline constexpr TText KeysUnread(u"%s Schlüssel konnten nicht gelesen werden.",
                                  u"%s keys could not be read.");

// ---- Evidence -------------------------------------------------------------------------------
inline constexpr TText CategoryLine(u"%s (%s, Art %s)", u"%s (%s, kind %s)");
inline constexpr TText DataHeading(u"Daten des Problems", u"Data of the problem");
inline constexpr TText RegistryHeading(u"Was in der Registrierung steht",
                                       u"What the registry says");
inline constexpr TText PathsHeading(u"Wie daraus Pfade wurden", u"How paths were derived from it");
inline constexpr TText FilesHeading(u"Wo gesucht wurde", u"Where it was looked for");
inline constexpr TText SourcesHeading(u"Was sonst gelesen wurde", u"What else was read");
inline constexpr TText RemovalHeading(u"Was eine Reinigung ändert", u"What a clean would change");
inline constexpr TText NoEvidence(
    u"Aus den Daten des Problems selbst geschlossen, ohne weiter nachzusehen.",
    u"Concluded from the data of the problem itself, without looking any further.");
inline constexpr TText AnswerFound(u"vorhanden", u"found");
inline constexpr TText AnswerAbsent(u"fehlt", u"absent");
inline constexpr TText AnswerDenied(u"verweigert", u"denied");
inline constexpr TText AnswerCorrupt(u"beschädigt", u"corrupt");
inline constexpr TText AnswerUnknown(u"unbekannt", u"unknown");
inline constexpr TText SeenBy32(u"wie 32-Bit-Programme es sehen", u"as 32-bit programs see it");
inline constexpr TText SeenBy32Too(u"ebenso für 32-Bit-Programme", u"the same for 32-bit programs");
inline constexpr TText WithExtensions(u"auch mit %s", u"also with %s");
inline constexpr TText AFolder(u"ein Ordner", u"a folder");
inline constexpr TText ListedFolder(u"Inhalt von", u"contents of");
inline constexpr TText SearchOrder(u"Gesucht wird der Reihe nach in:", u"Searched in this order:");
inline constexpr TText UnknownVariable(u"unbekannte Variable", u"unknown variable");
inline constexpr TText KeyOnly(u"Schlüssel", u"key");
inline constexpr TText MoreOmitted(u"... und %s weitere", u"... and %s more");
inline constexpr TText HiddenStays(u"Es ist ausgeblendet; eine Reinigung lässt es stehen.",
                                   u"It is hidden; a clean leaves it alone.");
inline constexpr TText NotRepeated(
    u"Eine zweite Suche hat das Problem nicht wieder gefunden; hier fehlt daher der Weg dorthin.",
    u"A second scan did not find the problem again, so the way to it is missing here.");
inline constexpr TText NothingToRemove(u"nichts", u"nothing");

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
inline constexpr TText UndoHint(u"Zurücknehmen: %s", u"To put it back: %s");
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
inline constexpr TText ActionEraseFile(u"Datei löschen:", u"delete file");
inline constexpr TText ActionEraseFolder(u"Leeren Ordner löschen:", u"delete empty folder");
inline constexpr TText ActionKeepFile(u"Datei sichern:", u"keep a copy of file");
inline constexpr TText ActionRemoveTask(u"Aufgabe entfernen:", u"remove task");
inline constexpr TText ActionRemoveUrl(u"Adresse aus dem Verlauf entfernen:",
                                       u"remove from the history");
inline constexpr TText ActionRemoveFirewallApplication(u"Aus der Firewall entfernen:",
                                                       u"remove from the firewall");
inline constexpr TText DefaultValueName(u"(Standard)", u"(default)");
inline constexpr TText NoValueBefore(u"(kein Wert)", u"(no value)");
inline constexpr TText LeftEmpty(u"nun leer", u"left empty");
inline constexpr TText Subkeys(u"Unterschlüssel: %s", u"subkeys: %s");
inline constexpr TText Values(u"Werte: %s", u"values: %s");
inline constexpr TText ByteCount(u"Bytes: %s", u"bytes: %s");

// ---- Undo, recover, ignore ------------------------------------------------------------------
inline constexpr TText NoSessions(u"Keine Sitzungen.", u"No sessions.");
inline constexpr TText SessionLine(u"%s  %s  Änderungen: %s, zurückgenommen: %s",
                                   u"%s  %s  changes: %s, put back: %s");
inline constexpr TText SessionSizeWord(u"Größe: %s", u"size: %s");
inline constexpr TText NothingToPrune(u"Nichts ist zu entfernen.", u"There is nothing to remove.");
inline constexpr TText AskPrune(
    u"Diese %s Sitzungen entfernen? Zurücknehmen lassen sie sich dann nicht mehr. [j/N] ",
    u"Remove these %s sessions? They can't be put back any more then. [y/N] ");
inline constexpr TText Pruned(u"Entfernt: %s.", u"Removed: %s.");
inline constexpr TText NoSessionOfIt(u"%s: von diesem Windows gibt es keine Reinigung",
                                     u"%s: there is no clean of this Windows");
inline constexpr TText OtherWindowsNow(
    u"%s: die letzte Reinigung galt einem anderen Windows, als jetzt in %s liegt; --windows nennt, "
    u"welches gemeint ist",
    u"%s: the last clean was of another Windows than the one in %s now; --windows says which one "
    u"is "
    u"meant");
inline constexpr TText SessionPending(u"nicht ausgeführt", u"not carried out");
inline constexpr TText SessionUndoes(u"nimmt %s zurück", u"undoes %s");
inline constexpr TText ItemUndone(u"zurückgenommen", u"put back");
inline constexpr TText UndoRestored(u"wiederhergestellt", u"put back");
inline constexpr TText UndoAlreadyThere(u"schon da", u"already there");
inline constexpr TText UndoTaken(u"belegt", u"taken");
inline constexpr TText UndoFailed(u"fehlgeschlagen", u"failed");
inline constexpr TText UndoSummary(u"Wiederhergestellt: %s. Schon da: %s. Nicht möglich: %s.",
                                   u"Put back: %s. Already there: %s. Not possible: %s.");
inline constexpr TText RecoverSetAside(
    u"Auf dem Datenträger liegt ein Vermerk, den keine Sitzung im Sicherungsordner kennt. Er ist "
    u"zur "
    u"Seite gelegt, ausgeführt ist nichts davon.",
    u"The disk bears a record that no session in the backup folder knows. It was set aside, and "
    u"nothing of it was carried out.");
inline constexpr TText UndoProgress(u"Zurücknehmen", u"Putting back");
inline constexpr TText JsonValidOption(
    u"in JSON halbe Zeichen (einzelne Surrogate) durch U+FFFD ersetzen, für strenge Leser",
    u"in JSON replace half characters (lone surrogates) by U+FFFD, for strict readers");
inline constexpr TText RecoverNothing(u"Nichts war unterbrochen.", u"Nothing was interrupted.");
inline constexpr TText RecoverCompleted(u"Die unterbrochene Änderung ist jetzt abgeschlossen.",
                                        u"The interrupted change was completed.");
inline constexpr TText RecoverRolledBack(u"Die unterbrochene Änderung ist zurückgenommen.",
                                         u"The interrupted change was rolled back.");
inline constexpr TText NoIgnored(u"Keine Probleme sind ausgeblendet.", u"No problems are hidden.");
inline constexpr TText OnMachineList(u"(für alle Benutzer)", u"(all users)");

}  // namespace scrubwell::hosts::texts
