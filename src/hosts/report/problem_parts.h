// What the forms of a report take apart a problem into.
#pragma once

#include <string>
#include <vector>

#include "framework/Rc_common.h"

namespace scrubwell::hosts {

/// A piece of a problem's long text: words, or a registry key that the text links to.
struct TextPart {
  UnicodeString text;
  bool isKey = false;
};

/// A description with its links (`<a href="regjump:VIEW:KEY">KEY</a>`) taken out. Registry text
/// that only looks like a link stays text.
std::vector<TextPart> SplitLinks(UnicodeView description);

/// A description without links: each key stands as itself.
UnicodeString PlainText(UnicodeView description);

/// The entry that a problem lies in and what it looks for. Members are empty where a problem has
/// none of the kind. They look into the problem's data.
struct ProblemPlace {
  UnicodeView view;  ///< "32", "64", or empty for an entry that both views share
  UnicodeView key;   ///< with its root: "HKEY_LOCAL_MACHINE\..."
  bool hasValue = false;
  UnicodeView value;    ///< the value's name; empty for the default value too
  UnicodeView file;     ///< of a problem that lies in a file
  UnicodeView missing;  ///< the file, folder or key that is not there
};
ProblemPlace PlaceOf(const TSweepError& problem);

/// The item without its name, and a key without its view.
struct DataItem {
  UnicodeView name;
  UnicodeView value;
};
DataItem SplitItem(UnicodeView item);

/// Controls, and marks that turn the writing direction, join or hide.
bool IsUnsafe(char16_t unit);

/// Text for readers that show it as it comes: lone surrogates, control characters and marks that
/// turn or hide writing become U+FFFD. With `keepBreaks` line breaks and tabs stay.
UnicodeString Harmless(UnicodeView text, bool keepBreaks);

/// Lone surrogates become U+FFFD, everything else stays.
UnicodeString WellFormed(UnicodeView text);

}  // namespace scrubwell::hosts
