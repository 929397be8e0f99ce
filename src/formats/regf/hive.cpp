#include "formats/regf/hive.h"

#include <algorithm>
#include <unordered_set>

#include "formats/regf/log.h"
#include "registry/Stringhelper.h"

namespace scrubwell::regf {
namespace {

constexpr std::uint32_t OldestMinor = 3;
constexpr std::uint32_t NewestMinor = 6;

/// A shorter list is cheap, however many keys claim it.
constexpr std::uint32_t ManyValues = 16;

bool IsHive(ByteView file) {
  return file.size() >= 4 && file[0] == 'r' && file[1] == 'e' && file[2] == 'g' && file[3] == 'f';
}

/// A name in upper case. Look-ups are too many for each to ask for memory.
class UpperName {
 public:
  explicit UpperName(UnicodeView name) {
    if (name.size() > short_.size()) {
      long_ = UpperCase(name);
      view_ = long_;
      return;
    }
    std::transform(name.begin(), name.end(), short_.begin(), [](char16_t unit) {
      const bool ascii = unit < 0x80;
      return !ascii ? UpCase(unit) : unit >= u'a' && unit <= u'z' ? char16_t(unit - 32) : unit;
    });
    view_ = UnicodeView(short_.data(), name.size());
  }
  UpperName(const UpperName&) = delete;
  UpperName& operator=(const UpperName&) = delete;
  operator UnicodeView() const { return view_; }

 private:
  std::array<char16_t, 64> short_;
  UnicodeString long_;
  UnicodeView view_;
};

/// Tells keys that a list names twice. In a list that ascends strictly no key can come twice, so
/// nothing is remembered until the order breaks.
class RepeatGuard {
 public:
  RepeatGuard(const Cells& cells, ByteView list) : cells_(cells), list_(list) {}

  /// False when the key at this position of the list stood at an earlier one too.
  bool Accept(std::size_t position, CellOffset key, const NameRef& name) {
    if (ascending_ && (first_ || last_.Compare(name) < 0)) {
      last_ = name;
      first_ = false;
      return true;
    }
    if (ascending_) RememberBefore(position);
    ascending_ = false;
    return seen_.insert(key).second;
  }
  [[nodiscard]] bool Ascending() const { return ascending_; }

 private:
  void RememberBefore(std::size_t position) {
    cells_.ForEachEntry(list_, [&](CellOffset key) {
      if (position == 0) return false;
      --position;
      seen_.insert(key);
      return true;
    });
  }

  const Cells& cells_;
  ByteView list_;
  NameRef last_;
  bool first_ = true;
  bool ascending_ = true;
  std::unordered_set<CellOffset> seen_;
};

}  // namespace

namespace {

bool BeginsBin(ByteView bins, std::size_t at) {
  return at + BinHeaderSize <= bins.size() && bins[at] == 'h' && bins[at + 1] == 'b' &&
         bins[at + 2] == 'i' && bins[at + 3] == 'n' && Get32(bins, at + 4) == at;
}

/// Makes the cell that reaches into a part from before it no cell: who asks for it then gets
/// Corrupt, not zeros in place of its end. What lies in the part itself is zeros, and so no cell.
void BlankCellBefore(std::span<std::uint8_t> bins, std::size_t part) {
  std::size_t bin = part / PageSize * PageSize;
  while (bin > 0 && !BeginsBin(bins, bin)) bin -= PageSize;
  for (std::size_t at = bin + BinHeaderSize; at + 4 <= part;) {
    const std::uint32_t stored = Get32(bins, at);
    const std::uint32_t size = stored > 0x7FFFFFFFU ? 0U - stored : stored;
    if (size < 8 || size % 8 != 0) return;
    if (size > part - at) return Put32(bins, at, 0);
    at += size;
  }
}

std::uint64_t BlankUnreadable(std::span<std::uint8_t> image, const FileRanges& parts) {
  std::uint64_t sum = 0;
  for (const auto& [from, to] : parts) {
    sum += to - from;
    if (from > BaseBlockSize && from < image.size()) {
      BlankCellBefore(image.subspan(BaseBlockSize), from - BaseBlockSize);
    }
  }
  return sum;
}

}  // namespace

/// What keeps the image's bytes alive: a file read, or bytes of our own.
struct Hive::Source {
  FileImage file;
  Bytes bytes;
  [[nodiscard]] ByteView Content() const { return bytes.empty() ? file.Content() : bytes; }
};

Hive::Hive() = default;
Hive::~Hive() = default;

bool Hive::IsDirty(ByteView file) {
  return file.size() >= BaseBlockSize &&
         (!ChecksumRight(file) || Get32(file, base::Primary) != Get32(file, base::Secondary));
}

OpenedHive Hive::Open(const std::filesystem::path& file,
                      const std::vector<std::filesystem::path>& logs) {
  FileImage image;
  std::string reason;
  if (!image.Open(file, reason)) {
    return {nullptr, file.string() + " can't be read: " + reason + "."};
  }
  std::vector<FileImage> logFiles;
  for (const std::filesystem::path& log : logs) {
    FileImage content;
    if (IsDirty(image.Content()) && content.Open(log, reason))
      logFiles.push_back(std::move(content));
  }
  return FromFile(std::move(image), file.string(), logFiles);
}

OpenedHive Hive::FromFile(FileImage file, const std::string& name,
                          const std::vector<FileImage>& logs) {
  Source source;
  source.file = std::move(file);
  std::vector<ByteView> contents;
  for (const FileImage& log : logs) {
    if (log.Unreadable().empty()) contents.push_back(log.Content());
  }
  return Assemble(std::move(source), name, contents);
}

OpenedHive Hive::FromBytes(Bytes image, const std::string& name, const std::vector<Bytes>& logs) {
  Source source;
  source.bytes = std::move(image);
  return Assemble(std::move(source), name, std::vector<ByteView>(logs.begin(), logs.end()));
}

OpenedHive Hive::Assemble(Source source, const std::string& name,
                          const std::vector<ByteView>& logs) {
  std::unique_ptr<Hive> hive(new Hive);
  hive->source_ = std::make_unique<Source>(std::move(source));
  hive->image_ = hive->source_->Content();
  if (!IsHive(hive->image_)) {
    return {nullptr, name + " is not a registry hive: it does not begin with \"regf\"."};
  }
  if (hive->image_.size() < BaseBlockSize) {
    return {nullptr, name + " is cut: it ends inside its first block."};
  }
  hive->ReadBaseBlock(logs);
  std::string error = hive->WhyUnreadable(name);
  if (!error.empty()) return {nullptr, std::move(error)};
  hive->image_ = hive->image_.first(BaseBlockSize + Get32(hive->image_, base::BinsSize));
  hive->cells_ = Cells(hive->image_);
  hive->root_ = Get32(hive->image_, base::Root);
  KeyFacts root;
  if (hive->Key(hive->root_, root) != Status::Ok) {
    return {nullptr, name + " is damaged: its root key can't be read."};
  }
  return {std::move(hive), {}};
}

void Hive::ReadBaseBlock(const std::vector<ByteView>& logs) {
  facts_.fileSize = image_.size();
  facts_.primarySequence = Get32(image_, base::Primary);
  facts_.secondarySequence = Get32(image_, base::Secondary);
  facts_.checksumRight = ChecksumRight(image_);
  facts_.dirty = IsDirty(image_);
  facts_.newestSequence = std::max(facts_.primarySequence, facts_.secondarySequence);
  if (facts_.dirty) {
    for (const ByteView log : logs) {
      facts_.newestSequence = std::max(facts_.newestSequence, NewestLogSequence(log));
    }
    Replay replay = ReplayLogs(image_, logs);
    facts_.logEntriesApplied = replay.entries;
    facts_.replayed = replay.entries > 0;
    facts_.stale = !facts_.replayed;
    if (facts_.replayed) {
      source_->bytes = std::move(replay.image);
      image_ = source_->Content();
    }
  }
  const FileRanges& unreadable = source_->file.Unreadable();
  facts_.unreadable = BlankUnreadable(
      facts_.replayed ? std::span(source_->bytes) : source_->file.Changeable(), unreadable);
  facts_.minorVersion = Get32(image_, base::Minor);
  facts_.lastWritten = Get64(image_, base::Time);
  facts_.transactionPending = IsTransactionPending(image_);
}

std::string Hive::WhyUnreadable(const std::string& name) const {
  const std::uint32_t major = Get32(image_, base::Major);
  const std::uint32_t minor = facts_.minorVersion;
  if (major != 1 || minor < OldestMinor || minor > NewestMinor) {
    return name + " has the unsupported hive version " + std::to_string(major) + "." +
           std::to_string(minor) + ".";
  }
  if (Get32(image_, base::Type) != 0 || Get32(image_, base::Format) != 1) {
    return name + " is not a primary hive file but a log or of an unknown kind.";
  }
  const std::uint32_t binsSize = Get32(image_, base::BinsSize);
  if (binsSize == 0 || binsSize % PageSize != 0) {
    return name + " is damaged: its first block gives an impossible size.";
  }
  if (binsSize > image_.size() - BaseBlockSize) {
    return name + " is cut: " + std::to_string(BaseBlockSize + std::uint64_t{binsSize}) +
           " bytes are announced, " + std::to_string(image_.size()) + " are there.";
  }
  return {};
}

std::span<std::uint8_t> Hive::Changeable() {
  cursors_ = {};
  return source_->bytes;
}

void Hive::Grow(std::size_t imageSize) {
  source_->bytes.resize(imageSize);
  image_ = source_->bytes;
  cells_ = Cells(image_);
}

Status Hive::Key(CellOffset key, KeyFacts& out) const {
  const ByteView cell = cells_.Typed(key, "nk", nk::Name);
  if (cell.empty()) return Status::Corrupt;
  const std::size_t nameSize = Get16(cell, nk::NameSize);
  out.flags = Get16(cell, nk::Flags);
  const bool latin1 = (out.flags & KeyFlagLatin1Name) != 0;
  if (nameSize > cell.size() - nk::Name || (!latin1 && nameSize % 2 != 0)) return Status::Corrupt;
  out.name = NameRef(cell.subspan(nk::Name, nameSize), latin1);
  out.lastWritten = Get64(cell, nk::Time);
  out.parent = Get32(cell, nk::Parent);
  out.subkeyCount = Get32(cell, nk::SubkeyCount);
  out.valueCount = (out.flags & KeyFlagPredefined) != 0 ? 0 : Get32(cell, nk::ValueCount);
  // Callers may make room for that many, so the counts must be possible in a file of this size.
  const std::uint64_t bytes = cells_.Bins().size();
  const bool possible = out.subkeyCount <= bytes / nk::Name && out.valueCount <= bytes / 4;
  return possible ? Status::Ok : Status::Corrupt;
}

Status Hive::Name(CellOffset key, UnicodeString& out) const {
  KeyFacts facts;
  const Status status = Key(key, facts);
  if (status == Status::Ok) facts.name.CopyTo(out);
  return status;
}

Status Hive::ChildKey(CellOffset parent, CellOffset child, KeyFacts& out) const {
  if (child == root_ || Key(child, out) != Status::Ok) return Status::Corrupt;
  return out.parent == parent && !out.name.Empty() ? Status::Ok : Status::Corrupt;
}

Hive::Order Hive::ScanSubkeys(CellOffset key, const KeyFacts& facts, SubkeyVisitor visit) const {
  if (facts.subkeyCount == 0) return Order::Ascending;
  const ByteView list = cells_.List(Get32(cells_.Content(key), nk::SubkeyList));
  if (list.empty()) return Order::Damaged;
  RepeatGuard guard(cells_, list);
  // More entries than the file has room for keys can only be repetitions.
  const std::size_t most = cells_.Bins().size() / nk::Name;
  std::size_t position = 0;
  std::uint32_t delivered = 0;
  bool whole = true;
  Subkey subkey;
  const bool listWhole = cells_.ForEachEntry(list, [&](CellOffset entry) {
    if (position == most) return false;
    subkey.key = entry;
    const bool good = ChildKey(key, entry, subkey.facts) == Status::Ok &&
                      guard.Accept(position, entry, subkey.facts.name);
    ++position;
    whole &= good;
    if (!good) return true;
    ++delivered;
    visit(subkey);
    return true;
  });
  if (!listWhole || !whole || delivered != facts.subkeyCount) return Order::Damaged;
  return guard.Ascending() && !HasEmptyLeaf(list) ? Order::Ascending : Order::Loose;
}

// A leaf without entries gives a search no name to turn by, so that its miss would prove nothing.
bool Hive::HasEmptyLeaf(ByteView list) const {
  if (!HasSignature(list, "ri")) return false;
  const ListEntries leaves(list);
  for (std::size_t i = 0; i < leaves.Count(); ++i) {
    if (ListEntries(cells_.Leaf(leaves[i])).Count() == 0) return true;
  }
  return false;
}

Status Hive::VisitSubkeys(CellOffset key, SubkeyVisitor visit) const {
  KeyFacts facts;
  if (Key(key, facts) != Status::Ok) return Status::Corrupt;
  const Order order = ScanSubkeys(key, facts, visit);
  if (order == Order::Ascending && facts.subkeyCount > 1)
    CursorOf(key, facts.subkeyCount) = {key, 0, 0};
  return order == Order::Damaged ? Status::Corrupt : Status::Ok;
}

Status Hive::Subkeys(CellOffset key, std::vector<Subkey>& out) const {
  out.clear();
  return ForEachSubkey(key, [&out](const Subkey& subkey) { out.push_back(subkey); });
}

Status Hive::WalkKeys(CellOffset start, WalkVisitor visit) const {
  Subkey top{start, {}};
  if (Key(start, top.facts) != Status::Ok) return Status::Corrupt;
  visit(top, 0);
  return WalkBelow(top, 0, visit);
}

Status Hive::WalkBelow(const Subkey& parent, int level, WalkVisitor visit) const {
  if (parent.facts.subkeyCount == 0) return Status::Ok;
  if (level == MaxDepth) return Status::Corrupt;
  bool whole = true;
  const auto descend = [&](const Subkey& subkey) {
    visit(subkey, level + 1);
    whole &= WalkBelow(subkey, level + 1, visit) == Status::Ok;
  };
  whole &= ScanSubkeys(parent.key, parent.facts, SubkeyVisitor(descend)) != Order::Damaged;
  return whole ? Status::Ok : Status::Corrupt;
}

Hive::Order Hive::OrderOf(CellOffset key, const KeyFacts& facts) const {
  const auto known = orders_.find(key);
  if (known != orders_.end()) return known->second;
  const auto ignore = [](const Subkey&) {};
  const Order order = ScanSubkeys(key, facts, SubkeyVisitor(ignore));
  orders_.emplace(key, order);
  return order;
}

/// The entry of an `lh` leaf by the hashes beside its offsets, which lie close together while keys
/// are all over the file. Hashes may be wrong, so NoCell proves nothing.
CellOffset Hive::SearchHashes(Cursor& found, const ListEntries& entries, UnicodeView upper) const {
  const std::uint32_t hash = NameHash(upper);
  KeyFacts facts;
  for (std::size_t i = 0; (i = entries.FindHint(hash, i)) < entries.Count(); ++i) {
    if (ChildKey(found.parent, entries[i], facts) != Status::Ok ||
        facts.name.CompareUpper(upper) != 0)
      continue;
    found.entry = i + 1;
    return entries[i];
  }
  return NoCell;
}

/// The entry whose key has this name, or NoCell. What can't be read ends the search.
CellOffset Hive::SearchLeaf(Cursor& found, ByteView leaf, UnicodeView upper) const {
  const ListEntries entries(leaf);
  if (HasSignature(leaf, "lh")) {
    const CellOffset key = SearchHashes(found, entries, upper);
    if (key != NoCell) return key;
  }
  std::size_t low = 0;
  std::size_t high = entries.Count();
  KeyFacts facts;
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    if (ChildKey(found.parent, entries[middle], facts) != Status::Ok) return NoCell;
    const int order = facts.name.CompareUpper(upper);
    if (order == 0) return found.entry = middle + 1, entries[middle];
    (order < 0 ? low : high) = order < 0 ? middle + 1 : middle;
  }
  return NoCell;
}

/// The key that the cursor is at or the one behind it, when it has this name; the cursor then
/// moves on.
CellOffset Hive::NextInOrder(Cursor& cursor, ByteView list, UnicodeView upper) const {
  ByteView leaf = list;
  if (HasSignature(list, "ri")) {
    const ListEntries leaves(list);
    if (cursor.leaf >= leaves.Count()) return NoCell;
    leaf = cells_.Leaf(leaves[cursor.leaf]);
  }
  const ListEntries entries(leaf);
  KeyFacts facts;
  // Now and then one is left out.
  const std::size_t end = std::min(entries.Count(), cursor.entry + 2);
  for (std::size_t entry = cursor.entry; entry < end; ++entry) {
    const CellOffset key = entries[entry];
    if (ChildKey(cursor.parent, key, facts) != Status::Ok) return NoCell;
    if (facts.name.CompareUpper(upper) != 0) continue;
    cursor.misses = 0;
    cursor.entry = entry + 1;
    if (cursor.entry == entries.Count()) cursor = {cursor.parent, cursor.leaf + 1, 0};
    return key;
  }
  return NoCell;
}

/// Looks below found.parent; a hit leaves the rest of `found` behind it.
CellOffset Hive::Search(Cursor& found, ByteView list, UnicodeView upper) const {
  if (!HasSignature(list, "ri")) return SearchLeaf(found, list, upper);
  // The last leaf whose first key is not behind the name.
  const ListEntries leaves(list);
  std::size_t low = 0;
  std::size_t high = leaves.Count();
  KeyFacts facts;
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    const ListEntries leaf(cells_.Leaf(leaves[middle]));
    if (leaf.Count() == 0 || ChildKey(found.parent, leaf[0], facts) != Status::Ok) return NoCell;
    const int order = facts.name.CompareUpper(upper);
    if (order == 0) return found = {found.parent, middle, 1}, leaf[0];
    (order < 0 ? low : high) = order < 0 ? middle + 1 : middle;
  }
  if (low == 0) return NoCell;
  found.leaf = low - 1;
  return SearchLeaf(found, cells_.Leaf(leaves[found.leaf]), upper);
}

Status Hive::Child(CellOffset parent, UnicodeView name, CellOffset& out) const {
  KeyFacts facts;
  if (Key(parent, facts) != Status::Ok) return Status::Corrupt;
  if (facts.subkeyCount == 0) return Status::Absent;
  const ByteView list = cells_.List(Get32(cells_.Content(parent), nk::SubkeyList));
  const UpperName upper(name);
  Cursor& cursor = CursorOf(parent, facts.subkeyCount);
  out = cursor.parent == parent ? NextInOrder(cursor, list, upper) : NoCell;
  if (out == NoCell) {
    Cursor found{parent};
    out = Search(found, list, upper);
    // A few look-ups out of order don't end a walk.
    if (out != NoCell && (cursor.parent != parent || ++cursor.misses == Cursor::MostMisses))
      cursor = found;
  }
  if (out != NoCell) return Status::Ok;
  // A search that misses proves nothing unless the list is in order. That is found out once.
  const Order order = OrderOf(parent, facts);
  if (order == Order::Ascending) return Status::Absent;
  const auto compare = [&](const Subkey& subkey) {
    if (out == NoCell && subkey.facts.name.CompareUpper(upper) == 0) out = subkey.key;
  };
  ScanSubkeys(parent, facts, SubkeyVisitor(compare));
  if (out != NoCell) return Status::Ok;
  return order == Order::Damaged ? Status::Corrupt : Status::Absent;
}

Status Hive::Descend(CellOffset from, UnicodeView path, CellOffset& out) const {
  KeyFacts facts;
  if (Key(from, facts) != Status::Ok) return Status::Corrupt;
  out = from;
  while (!path.empty()) {
    const UnicodeView part = path.substr(0, path.find(u'\\'));
    path.remove_prefix(std::min(path.size(), part.size() + 1));
    if (part.empty()) continue;
    const CellOffset parent = out;
    const Status status = Child(parent, part, out);
    if (status != Status::Ok) return status;
  }
  return Status::Ok;
}

/// The offsets of a key's values, as many as can be read.
ByteView Hive::ValueList(CellOffset key, const KeyFacts& facts) const {
  if (facts.valueCount == 0) return {};
  const CellOffset place = Get32(cells_.Content(key), nk::ValueList);
  if ((facts.valueCount >= ManyValues || AsksForTooMuch()) && !Owns(key, place)) return {};
  const ByteView list = cells_.Content(place);
  return list.first(std::min<std::size_t>(facts.valueCount, list.size() / 4) * 4);
}

Status Hive::ReadValue(CellOffset cell, ValueFacts& out) const {
  const ByteView content = cells_.Typed(cell, "vk", vk::Name);
  if (content.empty()) return Status::Corrupt;
  const std::size_t nameSize = Get16(content, vk::NameSize);
  const bool latin1 = (Get16(content, vk::Flags) & vk::Latin1Name) != 0;
  if (nameSize > content.size() - vk::Name || (!latin1 && nameSize % 2 != 0)) {
    return Status::Corrupt;
  }
  out.name = NameRef(content.subspan(vk::Name, nameSize), latin1);
  out.type = Get32(content, vk::Type);
  out.size = Get32(content, vk::DataSize) & ~vk::Inline;
  out.cell = cell;
  return Status::Ok;
}

template <class Visit>
Status Hive::EachValue(CellOffset key, Visit&& visit) const {
  KeyFacts facts;
  if (Key(key, facts) != Status::Ok) return Status::Corrupt;
  const ByteView list = ValueList(key, facts);
  bool whole = list.size() / 4 == facts.valueCount;
  // Values that take more room than the file has are one value named again and again.
  std::uint64_t room = image_.size();
  ValueFacts value;
  for (std::size_t at = 0; at < list.size(); at += 4) {
    const bool good = ReadValue(Get32(list, at), value) == Status::Ok;
    whole &= good;
    if (!good) continue;
    const std::uint64_t size = vk::Name + value.name.Units();
    if (size > room) return Status::Corrupt;
    room -= size;
    delivered_ += size;
    value.place = static_cast<std::uint32_t>(at / 4);
    if (!visit(value)) break;
  }
  return whole ? Status::Ok : Status::Corrupt;
}

Status Hive::VisitValues(CellOffset key, ValueVisitor visit) const {
  return EachValue(key, [&visit](const ValueFacts& value) { return visit(value), true; });
}

Status Hive::Values(CellOffset key, std::vector<RegValue>& out) const {
  out.clear();
  // Values that share their data could make a small file ask for any amount of memory.
  std::uint64_t room = image_.size();
  bool whole = true;
  const Status status = ForEachValue(key, [&](const ValueFacts& facts) {
    RegValue value;
    const std::uint64_t bytes = std::uint64_t{facts.size} + facts.name.Units();
    const bool good = bytes <= room && Data(facts, value.data) == Status::Ok;
    whole &= good;
    if (!good) return;
    room -= bytes;
    facts.name.CopyTo(value.name);
    value.type = facts.type;
    out.push_back(std::move(value));
  });
  return whole ? status : Status::Corrupt;
}

Status Hive::FindValue(CellOffset key, UnicodeView name, ValueFacts& out) const {
  const UpperName upper(name);
  bool found = false;
  // The first one counts. Who takes the values away in their order finds each at once.
  const Status status = EachValue(key, [&](const ValueFacts& value) {
    found = value.name.CompareUpper(upper) == 0;
    if (found) out = value;
    return !found;
  });
  if (found) return Status::Ok;
  return status == Status::Ok ? Status::Absent : Status::Corrupt;
}

Status Hive::Value(CellOffset key, UnicodeView name, RegValue& out) const {
  ValueFacts facts;
  const Status status = FindValue(key, name, facts);
  if (status != Status::Ok) return status;
  facts.name.CopyTo(out.name);
  out.type = facts.type;
  return Data(facts, out.data);
}

/// Finds the data: all of it in `whole`, or the list of its segments.
Status Hive::ReadData(const ValueFacts& value, ByteView& whole, ByteView& segments) const {
  const ByteView cell = cells_.Typed(value.cell, "vk", vk::Name);
  if (cell.empty()) return Status::Corrupt;
  const std::uint32_t stored = Get32(cell, vk::DataSize);
  const std::uint32_t size = stored & ~vk::Inline;
  whole = segments = {};
  if ((stored & vk::Inline) != 0) {
    whole = cell.subspan(vk::Data, std::min(size, 4U));
    return size <= 4 ? Status::Ok : Status::Corrupt;
  }
  if (size == 0) return Status::Ok;
  const CellOffset place = Get32(cell, vk::Data);
  if (AsksForTooMuch() && !Owns(value.cell, place)) return Status::Corrupt;
  delivered_ += size;
  const ByteView data = cells_.Content(place);
  if (data.size() >= size) {
    whole = data.first(size);
    return Status::Ok;
  }
  const bool segmented = facts_.minorVersion >= SegmentedSince && size > SegmentSize &&
                         HasSignature(data, "db") && data.size() >= db::HeaderSize;
  if (!segmented || size > cells_.Bins().size()) return Status::Corrupt;
  const std::size_t count = Get16(data, db::Count);
  const ByteView list = cells_.Content(Get32(data, db::List));
  const bool enough = list.size() / 4 >= count && std::uint64_t{count} * SegmentSize >= size;
  segments = enough ? list.first(count * 4) : ByteView();
  return enough ? Status::Ok : Status::Corrupt;
}

Status Hive::Data(const ValueFacts& value, Bytes& out) const {
  out.clear();
  ByteView whole;
  ByteView segments;
  const Status status = ReadData(value, whole, segments);
  if (status != Status::Ok) return status;
  if (segments.empty()) {
    out.assign(whole.begin(), whole.end());
    return Status::Ok;
  }
  std::uint32_t left = value.size;
  out.reserve(left);
  for (std::size_t i = 0; left > 0 && i < segments.size() / 4; ++i) {
    const ByteView segment = cells_.Content(Get32(segments, i * 4));
    const std::uint32_t size = std::min(left, SegmentSize);
    if (segment.size() < size) return Status::Corrupt;
    out.insert(out.end(), segment.begin(), segment.begin() + size);
    left -= size;
  }
  return left == 0 ? Status::Ok : Status::Corrupt;
}

Status Hive::DataInPlace(const ValueFacts& value, ByteView& out) const {
  ByteView segments;
  const Status status = ReadData(value, out, segments);
  return status == Status::Ok && !segments.empty() ? Status::Absent : status;
}

Status Hive::ClassName(CellOffset key, UnicodeString& out) const {
  const ByteView cell = cells_.Typed(key, "nk", nk::Name);
  if (cell.empty()) return Status::Corrupt;
  const std::size_t size = Get16(cell, nk::ClassSize);
  if (size == 0) return Status::Absent;
  const ByteView text = cells_.Content(Get32(cell, nk::Class));
  if (text.size() < size || size % 2 != 0) return Status::Corrupt;
  NameRef(text.first(size), false).CopyTo(out);
  return Status::Ok;
}

Status Hive::Security(CellOffset key, ByteView& out) const {
  const ByteView cell = cells_.Typed(key, "nk", nk::Name);
  if (cell.empty()) return Status::Corrupt;
  const CellOffset place = Get32(cell, nk::Security);
  if (place == NoCell) return Status::Absent;
  const ByteView security = cells_.Typed(place, "sk", sk::Descriptor);
  if (security.empty()) return Status::Corrupt;
  const std::uint32_t size = Get32(security, sk::Size);
  if (size > security.size() - sk::Descriptor) return Status::Corrupt;
  out = security.subspan(sk::Descriptor, size);
  return Status::Ok;
}

}  // namespace scrubwell::regf
