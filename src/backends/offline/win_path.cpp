#include "backends/offline/win_path.h"

#include <algorithm>
#include <array>

#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

bool IsSeparator(char16_t unit, bool literal) {
  return unit == u'\\' || (unit == u'/' && !literal);
}

bool IsDigit(char16_t unit) {
  return unit >= u'0' && unit <= u'9';
}

bool StartsWithText(UnicodeView text, UnicodeView prefix) {
  return text.size() >= prefix.size() && SameText(text.substr(0, prefix.size()), prefix);
}

// A name with one of these proves nothing when it is not found: the text is no file name, but a
// command line, a mask, a list or a stream of a file.
bool HasForbiddenUnit(UnicodeView text) {
  return std::any_of(text.begin(), text.end(), [](char16_t unit) {
    return unit < 0x20 || UnicodeView(u"<>\"|?*:").find(unit) != UnicodeView::npos;
  });
}

// Takes the namespace prefixes off; false for a namespace that holds no drive letters.
bool TakePrefix(UnicodeView& text, bool& literal) {
  if (text.starts_with(u"\\\\?\\")) {
    literal = true;
    text.remove_prefix(4);
  } else if (text.starts_with(u"\\??\\")) {
    text.remove_prefix(4);
  } else if (StartsWithText(text, u"\\DosDevices\\")) {
    text.remove_prefix(12);
  } else if (!text.empty() && IsSeparator(text[0], false)) {
    return false;
  }
  return true;
}

// False for what can't be the name of a file. Written literally, "." and ".." are names, which no
// file has, and so is what has a slash in it; to this machine they would mean something else.
bool AddPart(UnicodeView part, WinPath& out) {
  const bool isDots = part == u"." || part == u"..";
  if (out.literal && (isDots || part.find(u'/') != UnicodeView::npos)) return false;
  if (part == u"..") {
    // Above the root there is nothing: the system stays at the root.
    if (!out.parts.empty()) out.parts.pop_back();
  } else if (!part.empty() && !isDots) {
    out.parts.emplace_back(part);
  }
  return true;
}

struct NameParts {
  UnicodeString stem;
  UnicodeString extension;
};

// The name as the short name generator sees it: upper case, no blanks, only the last dot counts.
NameParts ShortNameSource(UnicodeView name) {
  while (!name.empty() && name.front() == u'.') name.remove_prefix(1);
  const std::size_t dot = name.rfind(u'.');
  NameParts parts;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] == u' ' || name[i] == u'.') continue;
    const bool invalid = UnicodeView(u"+,;=[]").find(name[i]) != UnicodeView::npos;
    const char16_t unit = invalid ? u'_' : UpCase(name[i]);
    (dot != UnicodeView::npos && i > dot ? parts.extension : parts.stem).push_back(unit);
  }
  return parts;
}

bool FitsShortForm(UnicodeView name) {
  const std::size_t dot = name.find(u'.');
  const UnicodeView stem = name.substr(0, dot);
  const UnicodeView extension = dot == UnicodeView::npos ? UnicodeView() : name.substr(dot + 1);
  return !stem.empty() && stem.size() <= 8 && extension.size() <= 3 &&
         name.find_first_of(u" +,;=[]") == UnicodeView::npos &&
         extension.find(u'.') == UnicodeView::npos &&
         std::all_of(name.begin(), name.end(), [](char16_t unit) { return unit < 0x80; });
}

bool IsHashStem(UnicodeView stem) {
  return stem.size() == 6 && std::all_of(stem.begin() + 2, stem.end(), [](char16_t unit) {
           return IsDigit(unit) || (unit >= u'A' && unit <= u'F');
         });
}

}  // namespace

bool ParsePath(UnicodeView text, WinPath& out) {
  out = {};
  if (!TakePrefix(text, out.literal)) return false;
  if (text.size() < 2 || text[1] != u':') return false;
  out.letter = UpCase(text[0]);
  if (out.letter < u'A' || out.letter > u'Z') return false;
  text.remove_prefix(2);
  // "C:x" is relative to a current folder that a switched-off system does not have.
  if (!text.empty() && !IsSeparator(text[0], out.literal)) return false;
  if (HasForbiddenUnit(text)) return false;
  while (!text.empty()) {
    std::size_t end = 0;
    while (end < text.size() && !IsSeparator(text[end], out.literal)) ++end;
    if (!AddPart(text.substr(0, end), out)) return false;
    text.remove_prefix(std::min(text.size(), end + 1));
  }
  return true;
}

UnicodeString PathText(const WinPath& path) {
  UnicodeString text{path.letter, u':'};
  if (path.parts.empty()) text += u'\\';
  for (const UnicodeString& part : path.parts) text += u'\\' + part;
  return text;
}

UnicodeView StripComponent(UnicodeView part, bool last) {
  const UnicodeView stripped = last ? UnicodeView(u". ") : UnicodeView(u".");
  while (!part.empty() && stripped.find(part.back()) != UnicodeView::npos) part.remove_suffix(1);
  return part;
}

bool IsDeviceName(UnicodeView part) {
  static constexpr std::array<UnicodeView, 6> kNames = {u"CON", u"PRN",    u"AUX",
                                                        u"NUL", u"CONIN$", u"CONOUT$"};
  const UnicodeView stem = Trim(part.substr(0, part.find(u'.')));
  if (std::any_of(kNames.begin(), kNames.end(),
                  [&](UnicodeView name) { return SameText(stem, name); })) {
    return true;
  }
  return stem.size() == 4 && stem[3] >= u'1' && stem[3] <= u'9' &&
         (StartsWithText(stem, u"COM") || StartsWithText(stem, u"LPT"));
}

bool IsShortNameForm(UnicodeView part) {
  const std::size_t tilde = part.find(u'~');
  if (tilde == UnicodeView::npos || tilde == 0 || tilde > 6) return false;
  std::size_t end = tilde + 1;
  while (end < part.size() && IsDigit(part[end])) ++end;
  if (end == tilde + 1 || end > 8) return false;
  if (end == part.size()) return true;
  const UnicodeView extension = part.substr(end + 1);
  return part[end] == u'.' && !extension.empty() && extension.size() <= 3 &&
         extension.find(u'.') == UnicodeView::npos;
}

bool MayBeShortNameOf(UnicodeView shortName, UnicodeView longName) {
  if (FitsShortForm(longName)) return false;
  const std::size_t tilde = shortName.find(u'~');
  if (tilde == UnicodeView::npos) return false;
  const std::size_t dot = shortName.find(u'.');
  const UnicodeString stem = UpperCase(shortName.substr(0, tilde));
  const UnicodeString extension =
      dot == UnicodeView::npos ? UnicodeString() : UpperCase(shortName.substr(dot + 1));
  const NameParts source = ShortNameSource(longName);
  if (source.extension.substr(0, 3) != extension) return false;
  if (source.stem.starts_with(stem)) return true;
  // From the fifth name of one stem on, two letters and a hash of the name take its place.
  return IsHashStem(stem) && source.stem.starts_with(stem.substr(0, 2));
}

}  // namespace scrubwell::offline
