#include "formats/regf/hive_builder.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

#include "formats/regf/cells.h"
#include "registry/Stringhelper.h"

namespace scrubwell::regf {
namespace {

constexpr std::size_t FileNameUnits = 31;

/// Administrators and the system: everything; everybody: read.
constexpr std::uint8_t DefaultDescriptor[] = {
    // Revision, control (self-relative, access list present), owner, group, no audit list, access
    // list at 52.
    0x01, 0x00, 0x04, 0x80, 20, 0, 0, 0, 36, 0, 0, 0, 0, 0, 0, 0, 52, 0, 0, 0,
    // Owner S-1-5-32-544, group S-1-5-18 (padded to the owner's length).
    1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x20, 2, 0, 0,  //
    1, 1, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0, 0, 0, 0, 0,
    // Access list of three entries, inherited by subkeys.
    2, 0, 72, 0, 3, 0, 0, 0,                                                            //
    0, 2, 24, 0, 0x3F, 0, 0x0F, 0, 1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x20, 2, 0, 0,  //
    0, 2, 20, 0, 0x3F, 0, 0x0F, 0, 1, 1, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0,                 //
    0, 2, 20, 0, 0x19, 0, 0x02, 0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};

/// The growing row of bins. Cells are laid one after another; what a bin has left over when the
/// next cell does not fit becomes a free cell.
class BinWriter {
 public:
  explicit BinWriter(std::uint64_t time) : image_(BaseBlockSize), time_(time) {}

  CellOffset Allocate(std::size_t contentSize) {
    const std::size_t size = (contentSize + 4 + 7) / 8 * 8;
    if (next_ + size > end_) AddBin(size);
    const std::size_t offset = next_;
    Put32(Bins(), offset, 0U - static_cast<std::uint32_t>(size));
    next_ += size;
    return static_cast<CellOffset>(offset);
  }
  CellOffset Store(ByteView content, std::size_t least = 0) {
    const CellOffset cell = Allocate(std::max(content.size(), least));
    std::ranges::copy(content, Content(cell).begin());
    return cell;
  }
  /// Good until the next allocation.
  std::span<std::uint8_t> Content(CellOffset cell) { return Bins().subspan(cell + 4U); }
  std::span<std::uint8_t> Bins() { return std::span(image_).subspan(BaseBlockSize); }
  Bytes Finish() {
    FreeRest();
    return std::move(image_);
  }

 private:
  void FreeRest() {
    if (next_ < end_) Put32(Bins(), next_, static_cast<std::uint32_t>(end_ - next_));
  }
  void AddBin(std::size_t cellSize) {
    FreeRest();
    const std::size_t size = (cellSize + BinHeaderSize + PageSize - 1) / PageSize * PageSize;
    if (end_ + size > LargestBins) throw std::length_error("registry too large for one hive");
    image_.resize(image_.size() + size);
    const std::span<std::uint8_t> bin = Bins().subspan(end_);
    std::copy_n("hbin", 4, bin.begin());
    Put32(bin, 4, static_cast<std::uint32_t>(end_));
    Put32(bin, 8, static_cast<std::uint32_t>(size));
    if (end_ == 0) Put64(bin, 20, time_);  // only the first bin bears the time
    next_ = end_ + BinHeaderSize;
    end_ += size;
  }

  Bytes image_;
  std::uint64_t time_;
  std::size_t next_ = 0;
  std::size_t end_ = 0;
};

}  // namespace

/// One run of HiveBuilder::Build. A key's cell is laid down together with those of its siblings;
/// what hangs on it follows when its turn comes.
class HiveWriter {
 public:
  explicit HiveWriter(const HiveBuilder& tree)
      : tree_(tree), bins_(tree.options_.time), cells_(tree.nodes_.size(), NoCell) {}

  Bytes Write() {
    AllocateKey(0);
    AllocateSecurity();
    std::vector<HiveBuilder::Key> open{0};
    while (!open.empty()) {
      const HiveBuilder::Key key = open.back();
      open.pop_back();
      WriteKey(key);
      const std::vector<HiveBuilder::Key> children = WriteChildren(key);
      open.insert(open.end(), children.rbegin(), children.rend());
    }
    return Finish();
  }

 private:
  using Node = HiveBuilder::Node;
  struct Child {
    UnicodeString upper;
    HiveBuilder::Key key = 0;
  };

  std::span<std::uint8_t> Cell(HiveBuilder::Key key) { return bins_.Content(cells_[key]); }

  void AllocateKey(HiveBuilder::Key key) {
    const UnicodeString& name = tree_.nodes_[key].name;
    const bool latin1 = IsLatin1(name);
    const Bytes stored = EncodeName(name, latin1);
    cells_[key] = bins_.Allocate(nk::Name + stored.size());
    const std::span<std::uint8_t> cell = Cell(key);
    std::ranges::copy(stored, cell.begin() + nk::Name);
    Put16(cell, nk::NameSize, static_cast<std::uint32_t>(stored.size()));
    Put16(cell, nk::Flags, latin1 ? std::uint32_t{KeyFlagLatin1Name} : 0U);
  }

  /// One sk cell for each descriptor in use, linked to a ring.
  void AllocateSecurity() {
    const std::vector<Node>& nodes = tree_.nodes_;
    security_.resize(nodes.size());
    std::vector<std::uint32_t> references(tree_.descriptors_.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      const bool inherited = nodes[i].security == HiveBuilder::Inherited;
      security_[i] = inherited ? security_[nodes[i].parent] : nodes[i].security;
      ++references[security_[i]];
    }
    std::vector<CellOffset> ring;
    for (std::size_t i = 0; i < references.size(); ++i) {
      descriptorCells_.push_back(NoCell);
      if (references[i] == 0) continue;
      const Bytes& descriptor = tree_.descriptors_[i];
      const CellOffset place = bins_.Allocate(sk::Descriptor + descriptor.size());
      const std::span<std::uint8_t> cell = bins_.Content(place);
      std::copy_n("sk", 2, cell.begin());
      Put32(cell, sk::References, references[i]);
      Put32(cell, sk::Size, static_cast<std::uint32_t>(descriptor.size()));
      std::ranges::copy(descriptor, cell.begin() + sk::Descriptor);
      descriptorCells_.back() = place;
      ring.push_back(place);
    }
    for (std::size_t i = 0; i < ring.size(); ++i) {
      Put32(bins_.Content(ring[i]), sk::Next, ring[(i + 1) % ring.size()]);
      Put32(bins_.Content(ring[i]), sk::Previous, ring[(i + ring.size() - 1) % ring.size()]);
    }
  }

  void WriteKey(HiveBuilder::Key key) {
    const Node& node = tree_.nodes_[key];
    const CellOffset values = WriteValues(node);
    const Bytes className = EncodeName(node.className, false);
    const CellOffset classCell = className.empty() ? NoCell : bins_.Store(className);
    const std::span<std::uint8_t> cell = Cell(key);
    std::copy_n("nk", 2, cell.begin());
    const bool root = key == 0;
    const std::uint32_t more =
        (root ? KeyFlagRoot | KeyFlagNoDelete : 0U) | (node.link ? std::uint32_t{KeyFlagLink} : 0U);
    Put16(cell, nk::Flags, Get16(cell, nk::Flags) | more);
    Put64(cell, nk::Time, node.time);
    Put32(cell, nk::Parent, root ? NoCell : cells_[node.parent]);
    Put32(cell, nk::SubkeyCount, static_cast<std::uint32_t>(node.children.size()));
    Put32(cell, nk::VolatileList, NoCell);
    Put32(cell, nk::ValueCount, static_cast<std::uint32_t>(node.values.size()));
    Put32(cell, nk::ValueList, values);
    Put32(cell, nk::Security, descriptorCells_[security_[key]]);
    Put32(cell, nk::Class, classCell);
    Put16(cell, nk::ClassSize, static_cast<std::uint32_t>(className.size()));
    WriteMaxima(node, cell);
  }

  /// Names are measured as UTF-16 here, however they are stored.
  void WriteMaxima(const Node& node, std::span<std::uint8_t> cell) const {
    std::size_t name = 0, className = 0, valueName = 0, data = 0;
    for (const HiveBuilder::Key child : node.children) {
      name = std::max(name, tree_.nodes_[child].name.size() * 2);
      className = std::max(className, tree_.nodes_[child].className.size() * 2);
    }
    for (const RegValue& value : node.values) {
      valueName = std::max(valueName, value.name.size() * 2);
      data = std::max(data, value.data.size());
    }
    Put16(cell, nk::MaxName, static_cast<std::uint32_t>(name));
    Put32(cell, nk::MaxClass, static_cast<std::uint32_t>(className));
    Put32(cell, nk::MaxValueName, static_cast<std::uint32_t>(valueName));
    Put32(cell, nk::MaxValueData, static_cast<std::uint32_t>(data));
  }

  std::vector<HiveBuilder::Key> WriteChildren(HiveBuilder::Key key) {
    const Node& node = tree_.nodes_[key];
    std::vector<Child> sorted;
    sorted.reserve(node.children.size());
    for (const HiveBuilder::Key child : node.children) {
      sorted.push_back({UpperCase(tree_.nodes_[child].name), child});
    }
    std::ranges::sort(sorted, std::less<>(), &Child::upper);
    std::vector<HiveBuilder::Key> keys;
    for (const Child& child : sorted) {
      keys.push_back(child.key);
      AllocateKey(child.key);
    }
    const CellOffset list = WriteList(sorted);
    Put32(Cell(key), nk::SubkeyList, list);
    return keys;
  }

  CellOffset WriteList(const std::vector<Child>& sorted) {
    if (sorted.empty()) return NoCell;
    const std::size_t most = std::clamp<std::size_t>(tree_.options_.leafEntries, 1, LargestList);
    std::vector<CellOffset> leaves;
    for (std::size_t i = 0; i < sorted.size(); i += most) {
      const std::size_t count = std::min(most, sorted.size() - i);
      leaves.push_back(WriteLeaf(std::span(sorted).subspan(i, count)));
    }
    if (leaves.size() == 1) return leaves.front();
    if (leaves.size() > LargestList) throw std::length_error("too many subkeys for one key");
    const CellOffset place = bins_.Allocate(4 + leaves.size() * 4);
    const std::span<std::uint8_t> cell = bins_.Content(place);
    std::copy_n("ri", 2, cell.begin());
    Put16(cell, 2, static_cast<std::uint32_t>(leaves.size()));
    for (std::size_t i = 0; i < leaves.size(); ++i) Put32(cell, 4 + i * 4, leaves[i]);
    return place;
  }

  CellOffset WriteLeaf(std::span<const Child> children) {
    const ListKind kind = tree_.options_.lists;
    const std::size_t stride = kind == ListKind::Index ? 4 : 8;
    const CellOffset place = bins_.Allocate(4 + children.size() * stride);
    const std::span<std::uint8_t> cell = bins_.Content(place);
    constexpr const char* signatures[] = {"li", "lf", "lh"};
    std::copy_n(signatures[static_cast<std::size_t>(kind)], 2, cell.begin());
    Put16(cell, 2, static_cast<std::uint32_t>(children.size()));
    std::size_t at = 4;
    for (const Child& child : children) {
      Put32(cell, at, cells_[child.key]);
      if (kind == ListKind::Fast) Put32(cell, at + 4, NameHint(tree_.nodes_[child.key].name));
      if (kind == ListKind::Hash) Put32(cell, at + 4, NameHash(child.upper));
      at += stride;
    }
    return place;
  }

  CellOffset WriteValues(const Node& node) {
    if (node.values.empty()) return NoCell;
    Bytes list(node.values.size() * 4);
    for (std::size_t i = 0; i < node.values.size(); ++i) {
      Put32(list, i * 4, WriteValue(node.values[i]));
    }
    return bins_.Store(list);
  }

  CellOffset WriteValue(const RegValue& value) {
    const bool latin1 = IsLatin1(value.name);
    const Bytes name = EncodeName(value.name, latin1);
    const bool inCell = value.data.size() <= 4;
    const CellOffset data = inCell ? 0 : WriteData(value.data);
    const CellOffset place = bins_.Allocate(vk::Name + name.size());
    const std::span<std::uint8_t> cell = bins_.Content(place);
    std::copy_n("vk", 2, cell.begin());
    Put16(cell, vk::NameSize, static_cast<std::uint32_t>(name.size()));
    Put32(cell, vk::DataSize,
          static_cast<std::uint32_t>(value.data.size()) | (inCell ? vk::Inline : 0U));
    Put32(cell, vk::Data, data);
    if (inCell) std::ranges::copy(value.data, cell.begin() + vk::Data);
    Put32(cell, vk::Type, value.type);
    Put16(cell, vk::Flags, latin1 && !name.empty() ? std::uint32_t{vk::Latin1Name} : 0U);
    std::ranges::copy(name, cell.begin() + vk::Name);
    return place;
  }

  CellOffset WriteData(const Bytes& data) {
    if (data.size() <= SegmentSize || tree_.options_.minorVersion < SegmentedSince) {
      if (data.size() > LargestBins) throw std::length_error("registry value too large for a hive");
      return bins_.Store(data);
    }
    const std::size_t count = (data.size() + SegmentSize - 1) / SegmentSize;
    if (count > LargestList) throw std::length_error("registry value too large for a hive");
    Bytes list(count * 4);
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t at = i * SegmentSize;
      const std::size_t size = std::min<std::size_t>(SegmentSize, data.size() - at);
      Put32(list, i * 4, bins_.Store(ByteView(data).subspan(at, size)));
    }
    const CellOffset listCell = bins_.Store(list);
    const CellOffset place = bins_.Allocate(db::HeaderSize);
    const std::span<std::uint8_t> cell = bins_.Content(place);
    std::copy_n("db", 2, cell.begin());
    Put16(cell, db::Count, static_cast<std::uint32_t>(count));
    Put32(cell, db::List, listCell);
    return place;
  }

  Bytes Finish() {
    Bytes image = bins_.Finish();
    const BuildOptions& options = tree_.options_;
    const std::span<std::uint8_t> head(image);
    std::copy_n("regf", 4, head.begin());
    Put32(head, base::Primary, 1);
    Put32(head, base::Secondary, 1);
    Put64(head, base::Time, options.time);
    Put32(head, base::Major, 1);
    Put32(head, base::Minor, options.minorVersion);
    Put32(head, base::Format, 1);
    Put32(head, base::Root, cells_[0]);
    Put32(head, base::BinsSize, static_cast<std::uint32_t>(image.size() - BaseBlockSize));
    Put32(head, base::Clustering, 1);
    const UnicodeView name = options.fileName;
    const UnicodeView kept = name.substr(name.size() - std::min(name.size(), FileNameUnits));
    for (std::size_t i = 0; i < kept.size(); ++i) Put16(head, base::FileName + i * 2, kept[i]);
    Put32(head, base::Checksum, BaseBlockChecksum(head));
    return image;
  }

  const HiveBuilder& tree_;
  BinWriter bins_;
  std::vector<CellOffset> cells_;        // of each key
  std::vector<std::uint32_t> security_;  // descriptor of each key
  std::vector<CellOffset> descriptorCells_;
};

std::size_t HiveBuilder::PlaceHash::operator()(const Place& place) const {
  return std::hash<UnicodeString>()(place.name) * 31 + place.key;
}

HiveBuilder::HiveBuilder(BuildOptions options) : options_(std::move(options)) {
  Node root;
  root.name = options_.rootName;
  root.time = options_.time;
  nodes_.push_back(std::move(root));
  SetSecurity(0, Bytes(std::begin(DefaultDescriptor), std::end(DefaultDescriptor)));
}

HiveBuilder::Key HiveBuilder::Create(Key parent, UnicodeView name) {
  const Key fresh = static_cast<Key>(nodes_.size());
  const auto [place, added] = childIndex_.try_emplace({parent, UpperCase(name)}, fresh);
  if (!added) return place->second;
  Node node;
  node.name = name;
  node.time = options_.time;
  node.parent = parent;
  nodes_.push_back(std::move(node));
  nodes_[parent].children.push_back(fresh);
  return fresh;
}

HiveBuilder::Key HiveBuilder::CreatePath(Key from, UnicodeView path) {
  while (!path.empty()) {
    const UnicodeView part = path.substr(0, path.find(u'\\'));
    path.remove_prefix(std::min(path.size(), part.size() + 1));
    if (!part.empty()) from = Create(from, part);
  }
  return from;
}

void HiveBuilder::SetValue(Key key, const RegValue& value) {
  std::vector<RegValue>& values = nodes_[key].values;
  const auto [place, added] = valueIndex_.try_emplace({key, UpperCase(value.name)}, values.size());
  if (added) {
    values.push_back(value);
  } else {
    values[place->second] = value;
  }
}

void HiveBuilder::SetText(Key key, UnicodeView name, UnicodeView text, std::uint32_t type) {
  Bytes data(text.size() * 2 + 2);
  for (std::size_t i = 0; i < text.size(); ++i) Put16(data, i * 2, text[i]);
  SetValue(key, {UnicodeString(name), type, std::move(data)});
}

void HiveBuilder::SetNumber(Key key, UnicodeView name, std::uint32_t value) {
  Bytes data(4);
  Put32(data, 0, value);
  SetValue(key, {UnicodeString(name), REGT_DWORD, std::move(data)});
}

void HiveBuilder::SetClass(Key key, UnicodeView name) {
  nodes_[key].className = name;
}

void HiveBuilder::SetSecurity(Key key, const Bytes& descriptor) {
  const auto fresh = static_cast<std::uint32_t>(descriptors_.size());
  const auto [place, added] =
      descriptorIndex_.try_emplace(std::string(descriptor.begin(), descriptor.end()), fresh);
  if (added) descriptors_.push_back(descriptor);
  nodes_[key].security = place->second;
}

void HiveBuilder::SetTime(Key key, std::uint64_t fileTime) {
  nodes_[key].time = fileTime;
}

void HiveBuilder::SetLink(Key key) {
  nodes_[key].link = true;
}

Bytes HiveBuilder::Build() const {
  return HiveWriter(*this).Write();
}

}  // namespace scrubwell::regf
