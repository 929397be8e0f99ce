// Text operations of the access layer. Pure functions; safe on any thread.
#pragma once

#include "registry/types.h"

namespace scrubwell {

/// One UTF-16 unit upper-cased by the system's simple table: one unit to one unit, no locale.
char16_t UpCase(char16_t unit);
char16_t DownCase(char16_t unit);
UnicodeString UpperCase(UnicodeView text);
/// The same, in the memory that `out` has already.
void UpperCaseInto(UnicodeView text, UnicodeString& out);
UnicodeString LowerCase(UnicodeView text);
/// Equal when upper-cased unit by unit.
bool SameText(UnicodeView a, UnicodeView b);
/// Letter case counts. The same as ==, but quick for long texts.
bool SameUnits(UnicodeView a, UnicodeView b);
/// Order of the upper-cased units: negative, zero, positive.
int CompareUpCase(UnicodeView a, UnicodeView b);

/// Without blanks and control characters (up to U+0020) at both ends.
UnicodeView Trim(UnicodeView text);

/// The Index-th field of the text split at Separator, counting from 1; empty when there is none.
/// Blanks around a field are kept. A separator of 0 means the whole text is one field.
UnicodeString ParamX(UnicodeView text, char16_t separator, int index);
/// The number of fields; an empty text has none.
int ParamXCount(UnicodeView text, char16_t separator);
/// All fields in their order, in one pass.
TStringList ParamXAll(UnicodeView text, char16_t separator);
/// The text without the fields that equal `item`, letter case and surrounding blanks ignored, and
/// without the separators that went with them. Other fields keep their blanks.
UnicodeString RemoveParamX(UnicodeView text, char16_t separator, UnicodeView item);
/// Every occurrence replaced, from left to right; an empty `from` changes nothing.
UnicodeString Replace(UnicodeView text, UnicodeView from, UnicodeView to);
/// A menu text without its accelerator marks: "&File" becomes "File", "&&" becomes "&".
UnicodeString RemoveAccelChar(UnicodeView text);

/// Splits an indirect resource text ("@%SystemRoot%\x.dll,-123;v2") into file and number. False
/// when it names no resource; the outputs are then empty and 0.
bool ExtractResFileAndIDFromString(UnicodeView text, UnicodeString& file, std::uint32_t& id);
/// The text stored under that number in the file's string table; empty when it can't be read.
UnicodeString GetResourceString(UnicodeView file, std::uint32_t id);

/// "file:///C:/a%20b" style escapes taken out: %XX bytes read as UTF-8, or as the system's ANSI
/// page when they are not valid UTF-8.
UnicodeString UrlDecode(UnicodeView text);
/// A file address turned into a path; false when the text is no file address.
bool PathCreateFromUrl(UnicodeView url, UnicodeString& path);
/// Takes the icon index off an icon location ("file,3"): split at the last comma when a number
/// follows it. Returns the number, 0 when there is none.
std::int32_t PathParseIconLocation(UnicodeString& path);

/// File name part of a path: after the last backslash, slash or colon.
UnicodeView ExtractFileName(UnicodeView path);
/// Folder part without the trailing backslash; a drive root keeps it.
UnicodeView ExtractFilePath(UnicodeView path);
/// From the last dot of the file name on, the dot included; empty without one.
UnicodeView ExtractFileExt(UnicodeView path);
UnicodeString IncludeTrailingPathDelimiter(UnicodeView path);
UnicodeView ExcludeTrailingPathDelimiter(UnicodeView path);

/// Quoted-printable over UTF-8 without line breaks: bytes 33 to 60 and 62 to 126 stand for
/// themselves, every other byte is "=" and two upper-case hexadecimal digits. Lone surrogates are
/// kept as their three-byte form, so that decoding gives back the same units.
UnicodeString QuotedPrintableEncode(UnicodeView text);
/// A "=" that no two digits follow stands for itself.
UnicodeString QuotedPrintableDecode(UnicodeView text);

/// UTF-8 with lone surrogates as three bytes (WTF-8), both ways. Broken bytes become U+FFFD.
std::string ToUtf8(UnicodeView text);
UnicodeString FromUtf8(std::string_view bytes);

UnicodeString IntToStr(std::int64_t value);
/// The decimal number, or `fallback` when the text is none (surrounding blanks are no part of it).
std::int32_t StrToIntDef(UnicodeView text, std::int32_t fallback);
/// The template with its first "%s" replaced by the first text, the second by the second.
UnicodeString FormatText(UnicodeView pattern, std::initializer_list<UnicodeView> texts);

}  // namespace scrubwell
