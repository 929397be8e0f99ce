#include "formats/ini/ini.h"

#include <algorithm>
#include <utility>

#include "registry/Stringhelper.h"

namespace scrubwell::ini {
namespace {

constexpr char16_t kDosFileEnd = 0x1A;
constexpr UnicodeView kDosLineEnd = u"\r\n";

bool IsBlank(char16_t unit) {
  return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == kDosFileEnd;
}

bool IsLineBreak(char16_t unit) {
  return unit == u'\r' || unit == u'\n';
}

/// The length of the line end at the position, 0 when there is none.
std::size_t LineEndLength(UnicodeView text, std::size_t at) {
  if (at >= text.size() || !IsLineBreak(text[at])) return 0;
  return text[at] == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n' ? 2 : 1;
}

UnicodeView TrimBlanks(UnicodeView text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

UnicodeView WithoutQuotes(UnicodeView value) {
  if (value.size() >= 2 && value.front() == value.back() &&
      (value.front() == u'"' || value.front() == u'\'')) {
    return value.substr(1, value.size() - 2);
  }
  return value;
}

bool IsAscii(UnicodeView text) {
  return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

/// True for a text that survives as it is between its neighbours on one line.
bool IsOneLine(UnicodeView text) {
  return std::none_of(text.begin(), text.end(),
                      [](char16_t unit) { return unit == 0 || IsLineBreak(unit); });
}

bool IsUsableKey(UnicodeView key) {
  return !key.empty() && key.front() != u';' && key.front() != u'[' &&
         key.find(u'=') == UnicodeView::npos && TrimBlanks(key).size() == key.size() &&
         IsOneLine(key);
}

bool IsUsableSection(UnicodeView name) {
  return name.find(u']') == UnicodeView::npos && TrimBlanks(name).size() == name.size() &&
         IsOneLine(name);
}

}  // namespace

Status Document::Parse(const scrubwell::Bytes& data, Codec codec) {
  codec_ = std::move(codec);
  units_.clear();
  oddByte_.clear();
  sections_.clear();
  utf16_ = data.size() >= 2 && data[0] == 0xFF && data[1] == 0xFE;
  if (data.size() > kMaxFileSize) return Status::Corrupt;
  if (data.size() >= 2 && data[0] == 0xFE && data[1] == 0xFF) return Status::Unknown;
  if (utf16_) {
    units_.reserve(data.size() / 2);
    for (std::size_t i = 2; i + 1 < data.size(); i += 2) {
      units_.push_back(static_cast<char16_t>(data[i] | data[i + 1] << 8));
    }
    if (data.size() % 2 != 0) oddByte_.push_back(data.back());
  } else {
    units_.assign(data.begin(), data.end());
  }
  Index();
  return Status::Ok;
}

Status Document::Get(UnicodeView section, UnicodeView key, UnicodeString& out) const {
  out.clear();
  const Entry* entry = FindEntry(section, key);
  if (entry == nullptr) return Status::Absent;
  out = Decode(WithoutQuotes(Text(entry->value)));
  return Status::Ok;
}

Status Document::Entries(UnicodeView section, TStringList& out) const {
  out.clear();
  const Section* found = FindSection(section);
  if (found == nullptr) return Status::Absent;
  out.reserve(found->entries.size());
  for (const Entry& entry : found->entries) out.push_back(Decode(Text(entry.name)));
  return Status::Ok;
}

Status Document::Set(UnicodeView section, UnicodeView key, UnicodeView value) {
  UnicodeString rawSection;
  UnicodeString rawKey;
  UnicodeString rawValue;
  if (!IsUsableSection(section) || !IsUsableKey(key) || !IsOneLine(value) ||
      !Encode(section, rawSection) || !Encode(key, rawKey) || !Encode(value, rawValue)) {
    return Status::Denied;
  }
  if (const Entry* entry = FindEntry(section, key)) {
    const Range old = entry->value;
    units_.replace(old.begin, old.end - old.begin, rawValue);
  } else if (const Section* found = FindSection(section)) {
    InsertLine(found->insertAt, rawKey + u"=" + rawValue);
  } else {
    InsertLine(units_.size(), u"[" + rawSection + u"]");
    InsertLine(units_.size(), rawKey + u"=" + rawValue);
  }
  Index();
  return Status::Ok;
}

Status Document::Remove(UnicodeView section, UnicodeView key) {
  const Entry* entry = FindEntry(section, key);
  if (entry == nullptr) return Status::Absent;
  const Range line = entry->line;
  units_.erase(line.begin, line.end - line.begin);
  Index();
  return Status::Ok;
}

scrubwell::Bytes Document::Bytes() const {
  scrubwell::Bytes out;
  if (!utf16_) {
    out.reserve(units_.size());
    for (const char16_t unit : units_) out.push_back(static_cast<std::uint8_t>(unit));
    return out;
  }
  out.reserve(units_.size() * 2 + 3);
  out = {0xFF, 0xFE};
  for (const char16_t unit : units_) {
    out.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    out.push_back(static_cast<std::uint8_t>(unit >> 8));
  }
  out.insert(out.end(), oddByte_.begin(), oddByte_.end());
  return out;
}

void Document::Index() {
  sections_.clear();
  Section* current = nullptr;
  std::size_t begin = 0;
  while (begin < units_.size()) {
    std::size_t end = begin;
    while (end < units_.size() && !IsLineBreak(units_[end])) ++end;
    end += LineEndLength(units_, end);
    IndexLine({static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end)}, current);
    begin = end;
  }
}

void Document::IndexLine(Range line, Section*& current) {
  const UnicodeView content = TrimBlanks(Text(line));
  if (content.empty()) return;
  const auto begin = static_cast<std::uint32_t>(content.data() - units_.data());
  const Range inner{begin, begin + static_cast<std::uint32_t>(content.size())};
  if (content.front() == u'[') {
    // A header that never closes is no header, as a line of the section before it.
    const UnicodeString header = Decode(content);
    const std::size_t close = header.find(u']');
    if (close != UnicodeString::npos) {
      current = OpenSection(TrimBlanks(UnicodeView(header).substr(1, close - 1)));
    }
  } else if (content.front() != u';' && current != nullptr) {
    IndexEntry(line, inner, *current);
  }
  if (current != nullptr) current->insertAt = line.end;
}

/// Null when an earlier section has the name: what follows can't be reached.
Document::Section* Document::OpenSection(UnicodeView header) {
  const auto [place, isNew] = sections_.try_emplace(UpperCase(header));
  return isNew ? &place->second : nullptr;
}

void Document::IndexEntry(Range line, Range content, Section& section) {
  const UnicodeView text = Text(content);
  const std::size_t equals = text.find(u'=');
  if (equals == UnicodeView::npos) return;
  const UnicodeView name = TrimBlanks(text.substr(0, equals));
  if (name.empty()) return;
  const auto [place, isNew] = section.byName.try_emplace(UpperCase(Decode(name)), 0U);
  if (!isNew) return;
  Range value{content.begin + static_cast<std::uint32_t>(equals) + 1, content.end};
  while (value.begin < value.end && IsBlank(units_[value.begin])) ++value.begin;
  place->second = section.entries.size();
  section.entries.push_back(
      {line, {content.begin, content.begin + static_cast<std::uint32_t>(name.size())}, value});
}

UnicodeView Document::Text(Range range) const {
  return UnicodeView(units_).substr(range.begin, range.end - range.begin);
}

UnicodeString Document::Decode(UnicodeView units) const {
  if (utf16_ || IsAscii(units)) return UnicodeString(units);
  return codec_.decode(std::string(units.begin(), units.end()));
}

bool Document::Encode(UnicodeView text, UnicodeString& units) const {
  if (utf16_ || IsAscii(text)) {
    units = text;
    return true;
  }
  const std::string bytes = codec_.encode(text);
  units.clear();
  for (const char byte : bytes) units.push_back(static_cast<unsigned char>(byte));
  return codec_.decode(bytes) == text;
}

const Document::Section* Document::FindSection(UnicodeView name) const {
  const auto found = sections_.find(UpperCase(TrimBlanks(name)));
  return found == sections_.end() ? nullptr : &found->second;
}

const Document::Entry* Document::FindEntry(UnicodeView section, UnicodeView key) const {
  const Section* found = FindSection(section);
  if (found == nullptr) return nullptr;
  const auto entry = found->byName.find(UpperCase(TrimBlanks(key)));
  return entry == found->byName.end() ? nullptr : &found->entries[entry->second];
}

/// The style of the line before the position, else of the file's first line, else that of Windows.
UnicodeView Document::LineEndBefore(std::size_t position) const {
  std::size_t at = position;
  while (at > 0 && IsLineBreak(units_[at - 1]) && position - at < kDosLineEnd.size()) --at;
  if (position - at == 2 && LineEndLength(units_, at) != 2) ++at;
  if (at == position) at = std::min(units_.find_first_of(kDosLineEnd), units_.size());
  const std::size_t length = LineEndLength(units_, at);
  return length == 0 ? kDosLineEnd : UnicodeView(units_).substr(at, length);
}

/// A last line without a line end gets one in front of the new line, which then has none itself.
void Document::InsertLine(std::size_t position, const UnicodeString& line) {
  const UnicodeString lineEnd(LineEndBefore(position));
  const bool openEnd = position > 0 && !IsLineBreak(units_[position - 1]);
  units_.insert(position, openEnd ? lineEnd + line : line + lineEnd);
}

}  // namespace scrubwell::ini
