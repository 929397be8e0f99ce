#include "backends/common/written.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell {
namespace {

// More are no plan that anybody reads; the file's backup has them all.
constexpr std::size_t kMostLines = 100;
constexpr std::size_t kLargestShown = std::size_t{4} << 20U;

bool IsSettingsFile(UnicodeView place) {
  return SameText(ExtractFileExt(place), u".ini");
}

UnicodeString Decoded(const Bytes& data, ITextServices& text) {
  const bool isWide = data.size() >= 2 && data[0] == 0xFF && data[1] == 0xFE;
  if (!isWide) return text.FromAnsi({reinterpret_cast<const char*>(data.data()), data.size()});
  UnicodeString units;
  for (std::size_t i = 2; i + 1 < data.size(); i += 2)
    units += static_cast<char16_t>(data[i] | data[i + 1] << 8U);
  return units;
}

TStringList LinesOf(const Bytes& data, ITextServices& text) {
  const UnicodeString whole = Decoded(data, text);
  TStringList lines;
  for (std::size_t from = 0; from < whole.size();) {
    const std::size_t to = std::min(whole.find(u'\n', from), whole.size());
    lines.emplace_back(whole, from, to - from);
    if (lines.back().ends_with(u'\r')) lines.back().pop_back();
    from = to + 1;
  }
  return lines;
}

// Leaves of both what is between their common beginning and their common end.
void KeepDifference(TStringList& before, TStringList& after) {
  const auto [b, a] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
  after.erase(after.begin(), a);
  before.erase(before.begin(), b);
  while (!before.empty() && !after.empty() && before.back() == after.back()) {
    before.pop_back();
    after.pop_back();
  }
}

std::shared_ptr<WrittenContent> ChangedLines(const Bytes& before, const Bytes& after,
                                             ITextServices& text) {
  auto written = std::make_shared<WrittenContent>();
  written->linesBefore = LinesOf(before, text);
  written->linesAfter = LinesOf(after, text);
  KeepDifference(written->linesBefore, written->linesAfter);
  for (TStringList* lines : {&written->linesBefore, &written->linesAfter})
    if (lines->size() > kMostLines) lines->resize(kMostLines), lines->emplace_back(u"...");
  return written;
}

}  // namespace

void NoteWritten(JournalEntry& entry, const Bytes* data, ITextServices* text) {
  JournalItem& item = entry.item;
  if (item.action == JournalAction::SetValue) {
    auto written = std::make_shared<WrittenContent>();
    written->before = entry.before;
    written->after = entry.after;
    item.written = std::move(written);
  } else if (item.action == JournalAction::WriteFile && data != nullptr && text != nullptr &&
             IsSettingsFile(item.place) && data->size() <= kLargestShown &&
             entry.content.size() <= kLargestShown) {
    item.written = ChangedLines(entry.content, *data, *text);
  }
}

}  // namespace scrubwell
