// Texts of the history list entries category.
#pragma once

#include "texts/history.h"

namespace scrubwell::texts::appmru {

inline constexpr TText kCaption{u"Verlaufslisteneinträge", u"History list entries"};
inline constexpr TText kShortDescription{
    u"Einige Einträge in den Verlaufslisten von Windows verweisen auf nicht mehr vorhandene "
    u"Dateien und können gelöscht werden.",
    u"Some entries in the history lists of Windows refer to files that are no longer there; they "
    u"can be deleted."};

inline constexpr TText kEntryCaption{u"Ungültiger Eintrag \"#missingfile:name#\"",
                                     u"Invalid entry \"#missingfile:name#\""};

inline constexpr TText kOpenWithCaption{
    u"Überflüssiger Eintrag der Dateiendung \"#existingkey:lastpart#\"",
    u"Unneeded entry for the file extension \"#existingkey:lastpart#\""};
inline constexpr TText kOpenWithShort{
    u"Der von der Windows-Funktion \"Öffnen mit\" angelegte Schlüssel dieser Dateiendung enthält "
    u"keine Daten.",
    u"The key that the Windows function \"Open with\" created for this file extension holds no "
    u"data."};

// The rest is said in the same words by the history lists category.
inline constexpr const TText& kEntryShort = history::kFileShort;
inline constexpr const TText& kEntryDetail = history::kFileDialogDetail;
inline constexpr const TText& kOpenWithDetail = history::kOpenWithDetail;
inline constexpr const TText& kAddressDetail = history::kWindowsDetail;

}  // namespace scrubwell::texts::appmru
