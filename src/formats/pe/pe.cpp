#include "formats/pe/pe.h"

#include <algorithm>
#include <functional>

#include "registry/Stringhelper.h"

namespace scrubwell::pe {
namespace {

using View = std::span<const std::uint8_t>;

constexpr std::uint16_t kDosSignature = 0x5A4D;
constexpr std::uint32_t kPeSignature = 0x00004550;
constexpr std::uint16_t kMagicNarrow = 0x10B;
constexpr std::uint16_t kMagicWide = 0x20B;
constexpr std::uint32_t kHeaderOffsetAt = 0x3C;
constexpr std::uint32_t kFileHeaderSize = 24;  // with the signature in front of it
constexpr std::uint32_t kSectionHeaderSize = 40;
constexpr std::uint32_t kResourceDirectory = 2;
constexpr std::uint32_t kPageSize = 0x1000;
constexpr std::uint32_t kSectorSize = 0x200;

constexpr std::uint32_t kDirectoryHeaderSize = 16;
constexpr std::uint32_t kDirectoryEntrySize = 8;
constexpr std::uint32_t kLeafSize = 16;
constexpr std::uint32_t kHighBit = 0x80000000U;
constexpr std::uint32_t kStringsPerBlock = 16;

// Far above what files have; they keep overlapping directories from costing their square.
constexpr std::uint32_t kMaxSections = 96;
constexpr std::size_t kMaxLanguages = 256;
constexpr std::size_t kMaxLanguageEntries = 1U << 20;

constexpr LangId kNeutral = 0;
constexpr LangId kEnglishUs = 0x0409;
constexpr std::uint32_t kPrimaryMask = 0x3FF;

constexpr std::uint32_t kFixedSignature = 0xFEEF04BD;
constexpr std::uint32_t kFixedSize = 52;
constexpr std::uint32_t kVersionNodeHeader = 6;

bool Holds(View data, std::uint64_t at, std::uint64_t size) {
  return at <= data.size() && size <= data.size() - at;
}

/// A number that was checked against what is in memory, as the memory counts.
constexpr std::size_t Index(std::uint64_t number) {
  return static_cast<std::size_t>(number);
}

/// Little-endian, the caller having checked the bounds.
std::uint16_t U16(View data, std::uint64_t at) {
  return static_cast<std::uint16_t>(data[Index(at)] | data[Index(at) + 1] << 8);
}

std::uint32_t U32(View data, std::uint64_t at) {
  return U16(data, at) | static_cast<std::uint32_t>(U16(data, at + 2)) << 16;
}

UnicodeString Units(View data, std::uint64_t at, std::uint64_t count) {
  UnicodeString out;
  out.reserve(Index(count));
  for (std::uint64_t i = 0; i < count; ++i) out.push_back(U16(data, at + 2 * i));
  return out;
}

struct DirectoryEntry {
  std::uint32_t id = 0, target = 0;
};

/// The entries of one directory level that are numbered; those with a name are skipped.
Status ReadDirectory(View resources, std::uint32_t at, std::vector<DirectoryEntry>& out) {
  out.clear();
  if (!Holds(resources, at, kDirectoryHeaderSize)) return Status::Corrupt;
  const std::uint32_t count = U16(resources, std::uint64_t{at} + 12) +
                              static_cast<std::uint32_t>(U16(resources, std::uint64_t{at} + 14));
  const std::uint64_t first = std::uint64_t{at} + kDirectoryHeaderSize;
  if (!Holds(resources, first, std::uint64_t{count} * kDirectoryEntrySize)) return Status::Corrupt;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t entry = first + std::uint64_t{i} * kDirectoryEntrySize;
    const std::uint32_t id = U32(resources, entry);
    if ((id & kHighBit) == 0) out.push_back({id, U32(resources, entry + 4)});
  }
  return Status::Ok;
}

/// The directory below the entry with this number.
Status Descend(View resources, std::uint32_t at, std::uint32_t id, std::uint32_t& child) {
  std::vector<DirectoryEntry> entries;
  const Status status = ReadDirectory(resources, at, entries);
  if (status != Status::Ok) return status;
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [id](const DirectoryEntry& entry) { return entry.id == id; });
  if (found == entries.end()) return Status::Absent;
  if ((found->target & kHighBit) == 0) return Status::Corrupt;
  child = found->target & ~kHighBit;
  return Status::Ok;
}

/// How far behind a language stands in the order of choice; 0 is the first.
std::size_t LanguageRank(std::uint32_t language, std::span<const LangId> wanted) {
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (language == wanted[i]) return 2 * i;
    if ((language & kPrimaryMask) == (wanted[i] & kPrimaryMask)) {
      const bool exactLater = std::find(wanted.begin() + static_cast<std::ptrdiff_t>(i),
                                        wanted.end(), language) != wanted.end();
      if (!exactLater) return 2 * i + 1;
    }
  }
  const std::size_t behind = 2 * wanted.size();
  if (language == kNeutral) return behind;
  return language == kEnglishUs ? behind + 1 : behind + 2;
}

/// One block of the version tree: a length, a name, a value, children.
struct VersionNode {
  UnicodeString name;
  View value;
  View children;
};

std::uint64_t AlignTo4(std::uint64_t at) {
  return (at + 3) & ~std::uint64_t{3};
}

/// The node at the start of `data`; `length` is what it takes of it. False at the end of the list
/// and on damage. Alignment counts from the start of the outermost block, to which every node is
/// aligned itself.
bool ReadVersionNode(View data, VersionNode& out, std::uint64_t& length) {
  if (data.size() < kVersionNodeHeader) return false;
  length = U16(data, 0);
  if (length < kVersionNodeHeader || length > data.size()) return false;
  const View node = data.first(Index(length));
  const bool isText = U16(node, 4) == 1;
  std::uint64_t at = kVersionNodeHeader;
  out.name.clear();
  while (at + 2 <= length && U16(node, at) != 0) {
    out.name.push_back(U16(node, at));
    at += 2;
  }
  at = std::min(AlignTo4(at + 2), length);
  // A text's length is in units by the rules and in bytes by habit: its end is its NUL.
  const std::uint64_t declared = U16(node, 2) * (isText ? 2U : 1U);
  const std::uint64_t size = std::min(declared, length - at);
  out.value = node.subspan(Index(at), Index(size));
  out.children = node.subspan(Index(std::min(AlignTo4(at + size), length)));
  return true;
}

/// Calls `visit` for each node until it returns false.
void ForEachNode(View list, const std::function<bool(const VersionNode&)>& visit) {
  VersionNode node;
  std::uint64_t length = 0;
  while (ReadVersionNode(list, node, length)) {
    if (!visit(node)) return;
    list = list.subspan(Index(std::min<std::uint64_t>(AlignTo4(length), list.size())));
  }
}

bool FindNode(View list, UnicodeView name, VersionNode& out) {
  bool found = false;
  ForEachNode(list, [&](const VersionNode& node) {
    found = SameText(node.name, name);
    if (found) out = node;
    return !found;
  });
  return found;
}

/// "040904b0" of the translation entry; empty without one.
UnicodeString TranslationTable(View rootChildren) {
  VersionNode info;
  VersionNode translation;
  if (!FindNode(rootChildren, u"VarFileInfo", info) ||
      !FindNode(info.children, u"Translation", translation) || translation.value.size() < 4) {
    return {};
  }
  UnicodeString out;
  for (const std::uint16_t number : {U16(translation.value, 0), U16(translation.value, 2)}) {
    for (int shift = 12; shift >= 0; shift -= 4) {
      out.push_back(UnicodeView(u"0123456789abcdef")[number >> shift & 0xF]);
    }
  }
  return out;
}

bool TextOf(View versionBlock, UnicodeView name, UnicodeString& out) {
  VersionNode root;
  VersionNode strings;
  VersionNode table;
  VersionNode text;
  std::uint64_t length = 0;
  if (!ReadVersionNode(versionBlock, root, length) ||
      !FindNode(root.children, u"StringFileInfo", strings)) {
    return false;
  }
  if (!FindNode(strings.children, TranslationTable(root.children), table) &&
      !ReadVersionNode(strings.children, table, length)) {
    return false;
  }
  if (!FindNode(table.children, name, text)) return false;
  out = Units(text.value, 0, text.value.size() / 2);
  out.resize(std::min(out.find(u'\0'), out.size()));
  return true;
}

}  // namespace

Status Image::Open(View file) {
  *this = {};
  if (!Holds(file, 0, kHeaderOffsetAt + 4) || U16(file, 0) != kDosSignature) return Status::Unknown;
  const std::uint64_t header = U32(file, kHeaderOffsetAt);
  if (!Holds(file, header, kFileHeaderSize) || U32(file, header) != kPeSignature) {
    return Status::Unknown;
  }
  const std::uint32_t optionalSize = U16(file, header + 20);
  const std::uint64_t optional = header + kFileHeaderSize;
  if (!Holds(file, optional, optionalSize) || optionalSize < 96) return Status::Corrupt;
  const std::uint16_t magic = U16(file, optional);
  if (magic != kMagicNarrow && magic != kMagicWide) return Status::Corrupt;
  file_ = file;
  machine_ = U16(file, header + 4);
  wide_ = magic == kMagicWide;
  const bool sectorAligned = U32(file, optional + 32) >= kPageSize;
  const Status status = ReadSections(optional + optionalSize, U16(file, header + 6), sectorAligned);
  const std::uint32_t directories = wide_ ? 112 : 96;
  const std::uint32_t entry = directories + kResourceDirectory * 8;
  if (status != Status::Ok || optionalSize < entry + 8) return status;
  if (U32(file, optional + directories - 4) <= kResourceDirectory) return Status::Ok;
  if (const std::uint32_t root = U32(file, optional + entry); root != 0) {
    resources_ = Map(root);
    // The file goes on to be usable for what its headers tell.
    if (resources_.empty()) return Status::Corrupt;
  }
  return Status::Ok;
}

Status Image::ReadSections(std::uint64_t at, std::uint32_t count, bool sectorAligned) {
  if (count > kMaxSections || !Holds(file_, at, std::uint64_t{count} * kSectionHeaderSize)) {
    return Status::Corrupt;
  }
  for (std::uint32_t i = 0; i < count; ++i, at += kSectionHeaderSize) {
    Section section{U32(file_, at + 12), U32(file_, at + 16), U32(file_, at + 20)};
    // The loader takes the start of a section down to its sector.
    if (sectorAligned) section.fileOffset &= ~(kSectorSize - 1);
    sections_.push_back(section);
  }
  return Status::Ok;
}

/// The bytes from an address to the end of its section; empty when it lies in none.
Image::View Image::Map(std::uint32_t address) const {
  for (const Section& section : sections_) {
    if (address < section.address || address - section.address >= section.size) continue;
    const std::uint32_t inside = address - section.address;
    const std::uint64_t offset = std::uint64_t{section.fileOffset} + inside;
    if (offset >= file_.size()) return {};
    const std::size_t at = Index(offset);
    return file_.subspan(at, std::min<std::size_t>(section.size - inside, file_.size() - at));
  }
  return {};
}

Status Image::Leaf(std::uint32_t at, View& out) const {
  if (!Holds(resources_, at, kLeafSize)) return Status::Corrupt;
  const std::uint32_t size = U32(resources_, std::uint64_t{at} + 4);
  const View data = Map(U32(resources_, at));
  if (size > data.size()) return Status::Corrupt;
  out = data.first(size);
  return Status::Ok;
}

/// The resource in every language it has, the best first.
Status Image::Find(ResourceType type, std::uint32_t id, std::span<const LangId> languages,
                   std::vector<View>& out) const {
  out.clear();
  if (resources_.empty()) return Status::Absent;
  std::uint32_t names = 0;
  std::uint32_t versions = 0;
  std::vector<DirectoryEntry> entries;
  Status status = Descend(resources_, 0, type, names);
  if (status == Status::Ok) status = Descend(resources_, names, id, versions);
  if (status == Status::Ok) status = ReadDirectory(resources_, versions, entries);
  if (status != Status::Ok) return status;
  std::stable_sort(entries.begin(), entries.end(),
                   [&](const DirectoryEntry& a, const DirectoryEntry& b) {
                     return LanguageRank(a.id, languages) < LanguageRank(b.id, languages);
                   });
  entries.resize(std::min(entries.size(), kMaxLanguages));
  for (const DirectoryEntry& entry : entries) {
    View data;
    if ((entry.target & kHighBit) == 0 && Leaf(entry.target, data) == Status::Ok) {
      out.push_back(data);
    }
  }
  return out.empty() ? Status::Corrupt : Status::Ok;
}

Status Image::String(std::uint32_t id, std::span<const LangId> languages,
                     UnicodeString& out) const {
  out.clear();
  std::vector<View> blocks;
  const Status status = Find(ResourceString, id / kStringsPerBlock + 1, languages, blocks);
  if (status != Status::Ok) return status;
  bool damaged = false;
  for (const View block : blocks) {
    std::uint64_t at = 0;
    for (std::uint32_t i = 0; i < id % kStringsPerBlock && Holds(block, at, 2); ++i) {
      at += 2 + std::uint64_t{U16(block, at)} * 2;
    }
    const std::uint64_t count = Holds(block, at, 2) ? U16(block, at) : 0;
    damaged = damaged || !Holds(block, at, 2 + count * 2);
    // A language that lacks this one text leaves it to the next.
    if (count == 0 || !Holds(block, at, 2 + count * 2)) continue;
    out = Units(block, at + 2, count);
    return Status::Ok;
  }
  return damaged ? Status::Corrupt : Status::Absent;
}

Status Image::FileVersion(Version& out) const {
  out = {};
  std::vector<View> blocks;
  const Status status = Find(ResourceVersion, 1, {}, blocks);
  if (status != Status::Ok) return status;
  VersionNode root;
  std::uint64_t length = 0;
  for (const View block : blocks) {
    if (!ReadVersionNode(block, root, length) || root.value.size() < kFixedSize ||
        U32(root.value, 0) != kFixedSignature) {
      continue;
    }
    out = {U16(root.value, 10), U16(root.value, 8), U16(root.value, 14), U16(root.value, 12)};
    return Status::Ok;
  }
  return Status::Absent;
}

Status Image::VersionText(UnicodeView name, std::span<const LangId> languages,
                          UnicodeString& out) const {
  out.clear();
  std::vector<View> blocks;
  const Status status = Find(ResourceVersion, 1, languages, blocks);
  if (status != Status::Ok) return status;
  for (const View block : blocks) {
    if (TextOf(block, name, out)) return Status::Ok;
  }
  return Status::Absent;
}

Status Image::Languages(ResourceType type, std::vector<LangId>& out) const {
  out.clear();
  if (resources_.empty()) return Status::Absent;
  std::uint32_t names = 0;
  std::vector<DirectoryEntry> entries;
  Status status = Descend(resources_, 0, type, names);
  if (status == Status::Ok) status = ReadDirectory(resources_, names, entries);
  if (status != Status::Ok) return status;
  for (const DirectoryEntry& entry : entries) {
    std::vector<DirectoryEntry> languages;
    if ((entry.target & kHighBit) == 0 ||
        ReadDirectory(resources_, entry.target & ~kHighBit, languages) != Status::Ok) {
      continue;
    }
    if (out.size() + languages.size() > kMaxLanguageEntries) return Status::Corrupt;
    for (const DirectoryEntry& language : languages) {
      out.push_back(static_cast<LangId>(language.id));
    }
  }
  std::sort(out.begin(), out.end());
  out.erase(std::unique(out.begin(), out.end()), out.end());
  return Status::Ok;
}

TStringList SatellitePaths(UnicodeView file, std::span<const UnicodeView> languageNames) {
  const UnicodeView name = ExtractFileName(file);
  const UnicodeView folder = file.substr(0, file.size() - name.size());
  TStringList out;
  for (const UnicodeView language : languageNames) {
    UnicodeString path(folder);
    path.append(language).append(u"\\").append(name).append(u".mui");
    out.push_back(std::move(path));
  }
  return out;
}

}  // namespace scrubwell::pe
