// The texts of the reports that are made for people outside the terminal, and for other programs.
#pragma once

#include "texts/text.h"

namespace scrubwell::hosts::texts {

// ---- Every report ---------------------------------------------------------------------------
inline constexpr TText ReportProgram(
    u"Findet Einträge einer Windows-Registrierung, die auf nicht mehr Vorhandenes verweisen.",
    u"Finds entries of a Windows registry that refer to things that are no longer there.");
inline constexpr TText ReportStopped(
    u"Die Suche wurde vorzeitig beendet; der Bericht enthält das bis dahin Gefundene.",
    u"The scan was stopped early; the report holds what had been found by then.");

// ---- SARIF ----------------------------------------------------------------------------------
inline constexpr TText SarifTaxonomy(
    u"Angriffstechniken, die Einträge dieser Art benutzen. Ein Fund ist kein Hinweis auf einen "
    u"Angriff.",
    u"Attack techniques that use entries of this kind. A finding is not a sign of an attack.");
inline constexpr TText SarifVolume(u"Der Ordner, in dem das Windows-Laufwerk eingehängt ist",
                                   u"The folder that the Windows volume is mounted on");
inline constexpr TText SarifIgnored(u"Steht auf der Liste der ausgeblendeten Probleme",
                                    u"Is on the list of hidden problems");

// ---- HTML: head -----------------------------------------------------------------------------
inline constexpr TText HtmlTitle(u"Bericht zur Windows-Registrierung", u"Windows registry report");
inline constexpr TText HtmlSkip(u"Zu den Ergebnissen", u"Skip to the results");
inline constexpr TText HtmlIntro(
    u"Dieser Bericht nennt Einträge der Registrierung, die auf nicht mehr Vorhandenes verweisen, "
    u"etwa auf Dateien entfernter Programme. Die Untersuchung hat nichts verändert.",
    u"This report lists entries of the registry that refer to things that are no longer there, "
    u"such as files of programs that were removed. The scan has changed nothing.");
inline constexpr TText HtmlFound(u"gefunden", u"found");
inline constexpr TText HtmlHidden(u"ausgeblendet", u"hidden");
inline constexpr TText HtmlLeftOut(u"nicht gezeigt", u"not shown");
inline constexpr TText HtmlChecked(u"Kategorien geprüft", u"categories checked");
inline constexpr TText HtmlCheckedOne(u"Kategorie geprüft", u"category checked");

inline constexpr TText HtmlTarget(u"Untersuchtes System", u"System examined");
inline constexpr TText HtmlWindows(u"Windows", u"Windows");
inline constexpr TText HtmlVersion(u"Version", u"Version");
inline constexpr TText HtmlBuild(u"%s (Build %s)", u"%s (build %s)");
inline constexpr TText HtmlKind(u"Art", u"Type");
inline constexpr TText HtmlUser(u"Benutzer", u"User");
inline constexpr TText HtmlUsers(u"Benutzer", u"Users");
inline constexpr TText HtmlSystemRoot(u"Windows-Ordner", u"Windows folder");
inline constexpr TText HtmlFolder(u"Eingehängt in", u"Mounted on");
inline constexpr TText HtmlState(u"Untersuchung", u"Scan");
inline constexpr TText HtmlComplete(u"vollständig", u"complete");
inline constexpr TText HtmlScanAgain(
    u"Reparaturen können Neues zutage gebracht haben; eine neue Suche ist ratsam.",
    u"Repairs may have brought new problems to light; a new scan is advisable.");

// ---- HTML: results --------------------------------------------------------------------------
inline constexpr TText HtmlCategories(u"Kategorien", u"Categories");
inline constexpr TText HtmlClean(u"Ohne Befund", u"Nothing found");
inline constexpr TText HtmlNotScanned(u"nicht untersucht", u"not scanned");
inline constexpr TText HtmlFilter(u"Ergebnisse filtern", u"Filter the results");
inline constexpr TText HtmlFilterHint(u"Name, Pfad, Schlüssel …", u"Name, path, key …");
inline constexpr TText HtmlHits(u"%s von %s gezeigt", u"%s of %s shown");
inline constexpr TText HtmlExpand(u"Alles aufklappen", u"Expand all");
inline constexpr TText HtmlCollapse(u"Alles zuklappen", u"Collapse all");
inline constexpr TText HtmlNothing(u"Es wurde nichts gefunden, was zu berichten wäre.",
                                   u"Nothing was found that needs reporting.");
inline constexpr TText HtmlOther(u"Weitere", u"Other");
inline constexpr TText HtmlNotes(u"Hinweise", u"Notes");
inline constexpr TText HtmlNotesIntro(
    u"Was sich nicht feststellen ließ, wird nicht als fehlend gemeldet.",
    u"What could not be determined is not reported as missing.");

// ---- HTML: one problem ----------------------------------------------------------------------
inline constexpr TText HtmlKey(u"Schlüssel", u"Key");
inline constexpr TText HtmlValue(u"Wert", u"Value");
inline constexpr TText HtmlDefaultValue(u"(Standard)", u"(default)");
inline constexpr TText HtmlMissingFile(u"Fehlend", u"Missing");
inline constexpr TText HtmlMissingKey(u"Fehlender Schlüssel", u"Missing key");
inline constexpr TText HtmlExistingFile(u"Datei", u"File");
inline constexpr TText HtmlAddress(u"Adresse", u"Address");
inline constexpr TText HtmlInvalidFile(u"Ungültig", u"Invalid");
inline constexpr TText HtmlServerType(u"Eingetragen als", u"Registered as");
inline constexpr TText HtmlEntry(u"Eintrag", u"Entry");
inline constexpr TText HtmlSection(u"Abschnitt", u"Section");
inline constexpr TText HtmlProgram(u"Programm", u"Program");
inline constexpr TText HtmlScheme(u"Schema", u"Scheme");
inline constexpr TText HtmlEvent(u"Ereignis", u"Event");
inline constexpr TText HtmlView32(u"32-Bit-Ansicht", u"32-bit view");
inline constexpr TText HtmlView64(u"64-Bit-Ansicht", u"64-bit view");
inline constexpr TText HtmlId(u"Kennung", u"Id");
inline constexpr TText HtmlMadeBy(u"Erstellt mit Scrubwell %s", u"Made with Scrubwell %s");

}  // namespace scrubwell::hosts::texts
