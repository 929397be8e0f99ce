#include "hosts/report/problem_parts.h"

#include <array>

#include "hosts/report/surrogates.h"

namespace scrubwell::hosts {

namespace {

constexpr char16_t kReplacement = 0xFFFD;
constexpr UnicodeView kLinkStart = u"<a href=\"regjump:";
constexpr UnicodeView kLinkMiddle = u"\">";
constexpr UnicodeView kLinkEnd = u"</a>";
// A key name may itself hold the middle of a link. More than a few of them are no accident, and
// trying all would let an entry slow the report down.
constexpr int kMostTries = 8;

struct Range {
  char16_t first;
  char16_t last;
};
// Controls, and marks that turn the writing direction, join or hide.
constexpr std::array<Range, 11> kUnsafe{{{0x00, 0x1F},
                                         {0x7F, 0x9F},
                                         {0xAD, 0xAD},
                                         {0x61C, 0x61C},
                                         {0x180E, 0x180E},
                                         {0x200B, 0x200F},
                                         {0x2028, 0x202E},
                                         {0x2060, 0x206F},
                                         {0xFEFF, 0xFEFF},
                                         {0xFFF9, 0xFFFB},
                                         {0xFFFE, 0xFFFF}}};

bool IsBreak(char16_t unit) {
  return unit == u'\n' || unit == u'\r' || unit == u'\t';
}

template <class Keep>
UnicodeString Replace(UnicodeView text, Keep keep) {
  UnicodeString clean(text);
  for (std::size_t i = 0; i < clean.size(); ++i) {
    if (IsHighSurrogate(clean[i]) && i + 1 < clean.size() && IsLowSurrogate(clean[i + 1])) {
      ++i;
    } else if (IsHighSurrogate(clean[i]) || IsLowSurrogate(clean[i]) || !keep(clean[i])) {
      clean[i] = kReplacement;
    }
  }
  return clean;
}

// The key of a link whose part after kLinkStart is `rest`, and how long that part is; zero when it
// is no link.
std::size_t MatchLink(UnicodeView rest, UnicodeView& key) {
  constexpr std::size_t viewSize = 3;  // "32:"
  if (rest.size() < viewSize || rest[viewSize - 1] != u':') return 0;
  std::size_t middle = viewSize;
  for (int tries = 0; tries < kMostTries; ++tries) {
    middle = rest.find(kLinkMiddle, middle);
    if (middle == UnicodeView::npos) return 0;
    key = rest.substr(viewSize, middle - viewSize);
    const UnicodeView shown = rest.substr(middle + kLinkMiddle.size());
    if (shown.starts_with(key) && shown.substr(key.size()).starts_with(kLinkEnd)) {
      return middle + kLinkMiddle.size() + key.size() + kLinkEnd.size();
    }
    ++middle;
  }
  return 0;
}

}  // namespace

std::vector<TextPart> SplitLinks(UnicodeView description) {
  std::vector<TextPart> parts;
  const auto add = [&parts](UnicodeView text, bool isKey) {
    if (text.empty()) return;
    if (!isKey && !parts.empty() && !parts.back().isKey) {
      parts.back().text.append(text);
    } else {
      parts.push_back({UnicodeString(text), isKey});
    }
  };
  while (!description.empty()) {
    const std::size_t start = description.find(kLinkStart);
    add(description.substr(0, start), false);
    if (start == UnicodeView::npos) break;
    description.remove_prefix(start);
    UnicodeView key;
    const std::size_t length = MatchLink(description.substr(kLinkStart.size()), key);
    if (length == 0) {
      add(kLinkStart, false);
    } else {
      add(key, true);
    }
    description.remove_prefix(kLinkStart.size() + length);
  }
  return parts;
}

UnicodeString PlainText(UnicodeView description) {
  UnicodeString text;
  for (const TextPart& part : SplitLinks(description)) text.append(part.text);
  return text;
}

DataItem SplitItem(UnicodeView item) {
  const std::size_t colon = item.find(u':');
  if (colon == UnicodeView::npos) return {{}, item};
  DataItem parts{item.substr(0, colon), item.substr(colon + 1)};
  const bool isKey = parts.name == u"existingkey" || parts.name == u"missingkey";
  if (isKey && (parts.value.starts_with(u"32:") || parts.value.starts_with(u"64:"))) {
    parts.value.remove_prefix(3);
  }
  return parts;
}

ProblemPlace PlaceOf(const TSweepError& problem) {
  ProblemPlace place;
  for (const UnicodeString& text : problem.Data) {
    const DataItem item = SplitItem(text);
    if (item.name == u"existingkey" && place.key.empty()) {
      place.key = item.value;
      const UnicodeView whole = UnicodeView(text).substr(item.name.size() + 1);
      if (whole.size() != item.value.size()) place.view = whole.substr(0, 2);
    } else if (item.name == u"existingvalue" && !place.hasValue) {
      place.hasValue = true;
      place.value = item.value;
    } else if (item.name == u"existingfile") {
      place.file = item.value;
    } else if ((item.name == u"missingfile" || item.name == u"missingkey" ||
                item.name == u"invalidfile") &&
               place.missing.empty()) {
      place.missing = item.value;
    }
  }
  return place;
}

bool IsUnsafe(char16_t unit) {
  if (unit >= 0x20 && unit < 0x7F) return false;
  for (const Range& range : kUnsafe) {
    if (unit >= range.first && unit <= range.last) return true;
  }
  return false;
}

UnicodeString Harmless(UnicodeView text, bool keepBreaks) {
  return Replace(text, [keepBreaks](char16_t unit) {
    return !IsUnsafe(unit) || (keepBreaks && IsBreak(unit));
  });
}

UnicodeString WellFormed(UnicodeView text) {
  return Replace(text, [](char16_t) { return true; });
}

}  // namespace scrubwell::hosts
