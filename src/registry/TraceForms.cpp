#include "registry/TraceForms.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "registry/CommandLine.h"
#include "registry/Shelllink.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell::traces {
namespace {

using Span = std::span<const std::uint8_t>;

constexpr int kRecentFolder = 8;
constexpr UnicodeView kDriveOfItem = u"C:\\";

void SetU32(Bytes& data, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) data[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

char16_t Unit(Span data, std::size_t at) {
  return static_cast<char16_t>(data[at] | data[at + 1] << 8);
}

// The text that a NUL ends, and where the bytes behind it begin; nothing when there is no NUL.
std::optional<UnicodeString> TextAt(Span data, std::size_t& at) {
  UnicodeString text;
  for (; data.size() - at >= 2; at += 2) {
    const char16_t unit = Unit(data, at);
    if (unit == 0) return at += 2, text;
    text.push_back(unit);
  }
  return std::nullopt;
}

// The long name of a single shell item, read as that of a file in a drive's root; empty when it
// can't be told.
UnicodeString NameOfItem(Span item) {
  static constexpr std::uint8_t drive[] = {0x19, 0, 0x2F, 'C', ':', '\\', 0, 0, 0, 0, 0, 0, 0,
                                           0,    0, 0,    0,   0,   0,    0, 0, 0, 0, 0, 0};
  Bytes list;
  list.reserve(std::size(drive) + item.size() + 2);
  std::copy(std::begin(drive), std::end(drive), std::back_inserter(list));
  std::copy(item.begin(), item.end(), std::back_inserter(list));
  list.resize(list.size() + 2);  // the end of the list
  UnicodeString path;
  if (Platform().shell.ItemListPath(list, path) != Status::Ok) return {};
  if (!path.starts_with(kDriveOfItem)) return {};
  return path.substr(kDriveOfItem.size());
}

// The shell item at the place; empty when it does not lie within the bytes.
Span ItemAt(Span data, std::size_t at) {
  if (at > data.size() || data.size() - at < 3) return {};
  const std::size_t size = Unit(data, at);
  return size >= 3 && size <= data.size() - at ? data.subspan(at, size) : Span();
}

// ---- Single targets -----------------------------------------------------------------------

UnicodeString OfficePath(UnicodeView text) {
  const std::size_t star = text.find(u'*');
  if (!text.starts_with(u'[') || star == UnicodeView::npos) return {};
  return UnicodeString(text.substr(star + 1));
}

// The program of a command that can't be run any more; empty for one that can, or that may, or that
// only lacks what its program is told to use.
UnicodeString MissingProgram(UnicodeView text) {
  if (text.ends_with(u"\\1")) text.remove_suffix(2);
  UnicodeString file;
  UnicodeString arguments;
  if (text.empty() || FindFileOrDir(text)) return {};
  if (FindFileAndVerifyArguments(text, file, arguments) != 1) return {};
  return UnicodeString(paths::ProgramOf(text));
}

UnicodeString LocalPath(UnicodeView text) {
  UnicodeString path;
  return PathCreateFromUrl(text, path) ? path : UnicodeString(text);
}

// Explorer follows an entry by way of its link in the Recent folder. With the link gone the entry
// leads nowhere, whatever became of the document.
UnicodeString RecentTarget(Span data) {
  std::size_t at = 0;
  if (!TextAt(data, at)) return {};
  const Span item = ItemAt(data, at);
  const UnicodeString name = item.empty() ? UnicodeString() : NameOfItem(item);
  const UnicodeString folder = GetFolderLocStr(kRecentFolder);
  if (name.empty() || folder.empty()) return {};
  const UnicodeString link = IncludeTrailingPathDelimiter(folder) + name;
  return ZMFileExists(link) ? RemoveQuotationMarks(GetShellLinkTarget(link)) : link;
}

// The bytes behind the name of the program; empty when no NUL ends it.
Span BehindProgram(Span data) {
  std::size_t at = 0;
  return TextAt(data, at) ? data.subspan(at) : Span();
}

UnicodeString LastFolder(Span data) {
  std::size_t at = 0;
  const std::optional<UnicodeString> folder = TextAt(BehindProgram(data), at);
  return folder ? *folder : UnicodeString();
}

UnicodeString PathOfItems(Span list) {
  UnicodeString path;
  const Bytes bytes(list.begin(), list.end());
  return Platform().shell.ItemListPath(bytes, path) == Status::Ok ? path : UnicodeString();
}

// ---- Usage counters -----------------------------------------------------------------------

struct KnownPlace {
  UnicodeView mark;
  UnicodeView path;  ///< empty: a folder of the Start menu
};
constexpr KnownPlace kKnownPlaces[] = {
    {u"%csidl2%", {}},
    {u"%csidl11%", {}},
    {u"%csidl22%", {}},
    {u"%csidl23%", {}},
    {u"{A77F5D77-2E2B-44C3-A6A2-ABA601054A51}", {}},
    {u"{0139D44E-6AFE-49F2-8690-3DAFCAE6FFB8}", {}},
    {u"{625B53C3-AB48-4EC1-BA1F-A1EF4146FC19}", {}},
    {u"{A4115719-D62E-491D-AA7C-E74B8BE3B067}", {}},
    {u"{F38BF404-1D43-42F2-9305-67DE0B28FC23}", u"%windir%"},
    {u"{1AC14E77-02E7-4E5D-B744-2EB1AE5198B7}", u"%windir%\\System32"},
    {u"{D65231B0-B2F1-4857-A4CE-A8E7C6EA7D27}", u"%windir%\\SysWOW64"},
    {u"{905E63B6-C1BF-494E-B29C-65B732D3D21A}", u"%ProgramFiles%"},
    {u"{6D809377-6AF0-444B-8957-A3773F02200E}", u"%ProgramW6432%"},
    {u"{7C5A40EF-A0FB-4BFC-874A-C0F2E0B9FA8E}", u"%ProgramFiles(x86)%"},
};
constexpr UnicodeView kRunMarks[] = {u"UEME_RUNPATH:", u"UEME_RUNPIDL:"};

UnicodeString TurnedBy13(UnicodeView text) {
  UnicodeString out(text);
  for (char16_t& c : out) {
    const char16_t first = c >= u'a' && c <= u'z' ? u'a' : u'A';
    if (c < first || c > first + 25) continue;
    c = static_cast<char16_t>(first + (c - first + 13) % 26);
  }
  return out;
}

// Names that say nothing of a place (programs known by an identifier, counters of whole groups)
// give no target.
Target UsageTarget(UnicodeView valueName) {
  const UnicodeString whole = TurnedBy13(valueName);
  UnicodeView text = whole;
  for (const UnicodeView mark : kRunMarks) {
    if (text.starts_with(mark)) text.remove_prefix(mark.size());
  }
  if (text.size() > 3 && text.substr(1, 2) == u":\\") return {UnicodeString(text), false};
  const std::size_t slash = text.find(u'\\');
  if (slash == UnicodeView::npos || slash + 1 == text.size()) return {};
  for (const KnownPlace& place : kKnownPlaces) {
    if (!SameText(text.substr(0, slash), place.mark)) continue;
    if (place.path.empty()) return {UnicodeString(text.substr(slash + 1)), true};
    return {UnicodeString(place.path).append(text.substr(slash)), false};
  }
  return {};
}

// ---- Values of many targets ---------------------------------------------------------------

struct Part {
  std::size_t at = 0;
  std::size_t size = 0;
  UnicodeString name;
};

// A text that no NUL ends is left out.
std::vector<Part> TextParts(Span data) {
  std::vector<Part> parts;
  for (std::size_t at = 0; at < data.size();) {
    const std::size_t first = at;
    std::optional<UnicodeString> text = TextAt(data, at);
    if (!text) break;
    parts.push_back({first, at - first, std::move(*text)});
  }
  return parts;
}

constexpr std::size_t kMenuSizeAt = 8;
constexpr std::size_t kMenuCountAt = 16;
constexpr std::size_t kMenuHeader = 20;
constexpr std::size_t kMenuPositionAt = 4;
constexpr std::size_t kMenuItemAt = 8;
constexpr std::size_t kAugmentedItemAt = 24;
constexpr std::uint32_t kAugmentedMark = 0x4D677541;  // "AugM", behind one more size

// Each part: its size, its position in the menu, its shell item. Where menus of all users and of
// the one are shown as one, a mark stands in between.
std::vector<Part> MenuParts(Span data) {
  std::vector<Part> parts;
  std::size_t at = kMenuHeader;
  while (at < data.size() && data.size() - at >= kMenuItemAt) {
    const std::size_t size = U32(data, at);
    if (size < kMenuItemAt || size > data.size() - at) break;
    const Span part = data.subspan(at, size);
    const bool augmented = U32(part, kMenuItemAt + 4) == kAugmentedMark;
    const Span item = ItemAt(part, augmented ? kAugmentedItemAt : kMenuItemAt);
    parts.push_back({at, size, item.empty() ? UnicodeString() : NameOfItem(item)});
    at += size;
  }
  return parts;
}

// The folder that the key of a menu's order stands for, seen from the Start menu, with a backslash.
// The first level below the menu is the Programs folder, which the search begins in; nothing for
// what else is ordered there, like the favourites.
std::optional<UnicodeString> MenuFolder(const TTraceSource& source, UnicodeView key) {
  const std::size_t own = source.key.size() - 3;  // without "\**"
  TStringList levels = ParamXAll(key.substr(std::min(own + 1, key.size())), u'\\');
  UnicodeString folder;
  const bool isPrograms =
      levels.empty() || SameText(levels[0], u"Programs") || SameText(levels[0], u"&Programs");
  if (!isPrograms) return std::nullopt;
  for (std::size_t i = 1; i < levels.size(); ++i) folder.append(levels[i]).push_back(u'\\');
  return folder;
}

std::vector<Part> PartsOf(const TTraceSource& source, UnicodeView key, Span data) {
  if (source.form == TraceForm::Texts) return TextParts(data);
  const std::optional<UnicodeString> folder = MenuFolder(source, key);
  if (!folder) return {};
  std::vector<Part> parts = MenuParts(data);
  for (Part& part : parts) {
    if (!part.name.empty()) part.name.insert(0, *folder);
  }
  return parts;
}

// After parts were taken out: the size and the number of parts, and positions without gaps.
void MendMenu(std::size_t sizeBefore, Bytes& data) {
  const std::vector<Part> parts = MenuParts(data);
  const auto removed = static_cast<std::uint32_t>(sizeBefore - data.size());
  SetU32(data, kMenuSizeAt, U32(data, kMenuSizeAt) - removed);
  SetU32(data, kMenuCountAt, static_cast<std::uint32_t>(parts.size()));
  std::vector<std::pair<std::uint32_t, std::size_t>> positions;
  for (const Part& part : parts) {
    const std::uint32_t position = U32(data, part.at + kMenuPositionAt);
    // Beyond that an item has no position of its own.
    if (position < 0x7FFFFFFF) positions.emplace_back(position, part.at + kMenuPositionAt);
  }
  std::ranges::sort(positions);
  std::uint32_t next = 0;
  for (const auto& [position, at] : positions) SetU32(data, at, next++);
}

}  // namespace

std::uint32_t U32(Span data, std::size_t at) {
  if (at > data.size() || data.size() - at < 4) return 0;
  return Unit(data, at) | static_cast<std::uint32_t>(Unit(data, at + 2)) << 16;
}

bool HoldsParts(TraceForm form) {
  return form == TraceForm::Texts || form == TraceForm::MenuOrder;
}

void ReadTargets(const TTraceSource& source, UnicodeView key, const RegValue& value,
                 std::vector<Target>& out) {
  const UnicodeString text = IsTextType(value.type) ? RegValueText(value) : UnicodeString();
  Target target;
  switch (source.form) {
    case TraceForm::Text:
      target.name = text;
      break;
    case TraceForm::TextToBar:
      target.name = text.substr(0, text.find(u'|'));
      break;
    case TraceForm::OfficeItem:
      target.name = OfficePath(text);
      break;
    case TraceForm::Command:
      target.name = MissingProgram(text);
      break;
    case TraceForm::Address:
      target.name = LocalPath(text);
      break;
    case TraceForm::ItemList:
      target.name = PathOfItems(value.data);
      break;
    case TraceForm::ProgramFolder:
      target.name = LastFolder(value.data);
      break;
    case TraceForm::ProgramItems:
      target.name = PathOfItems(BehindProgram(value.data));
      break;
    case TraceForm::RecentDocument:
      target.name = RecentTarget(value.data);
      break;
    case TraceForm::UsageCount:
      target = UsageTarget(value.name);
      break;
    case TraceForm::MenuOrder:
    case TraceForm::Texts:
      for (Part& part : PartsOf(source, key, value.data)) {
        if (!part.name.empty()) {
          out.push_back({std::move(part.name), source.form == TraceForm::MenuOrder});
        }
      }
      return;
  }
  if (!target.name.empty()) out.push_back(std::move(target));
}

bool RemoveParts(const TTraceSource& source, UnicodeView key, std::span<const UnicodeString> gone,
                 Bytes& data) {
  const std::vector<Part> parts = PartsOf(source, key, data);
  const bool isMenu = source.form == TraceForm::MenuOrder;
  if (isMenu && U32(data, kMenuCountAt) != parts.size()) return false;
  const std::size_t header = isMenu ? kMenuHeader : 0;
  const auto offset = [](std::size_t at) { return static_cast<std::ptrdiff_t>(at); };
  if (header > data.size()) return false;
  Bytes kept(data.begin(), data.begin() + offset(header));
  std::size_t end = header;
  for (const Part& part : parts) {
    end = part.at + part.size;
    if (std::ranges::binary_search(gone, part.name)) continue;
    kept.insert(kept.end(), data.begin() + offset(part.at), data.begin() + offset(end));
  }
  kept.insert(kept.end(), data.begin() + offset(end), data.end());
  if (kept.size() == data.size()) return false;
  if (isMenu) MendMenu(data.size(), kept);
  data = std::move(kept);
  return true;
}

}  // namespace scrubwell::traces
