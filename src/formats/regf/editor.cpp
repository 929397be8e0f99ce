#include "formats/regf/editor.h"

#include <algorithm>

#include "formats/regf/key_cells.h"
#include "formats/regf/survey.h"
#include "registry/Stringhelper.h"

namespace scrubwell::regf {
namespace {

/// What a newer version means by its cells is not known.
constexpr std::uint32_t NewestChangeable = 5;
constexpr std::size_t FirstBinTime = 20;

std::string WhyUnchangeable(const Hive& hive) {
  const HiveFacts& facts = hive.Facts();
  if (facts.stale) return "its last write was not finished and no log completes it";
  if (facts.unreadable != 0) return "some of it can't be read from the disk";
  if (facts.minorVersion > NewestChangeable) {
    return "its version 1." + std::to_string(facts.minorVersion) + " is newer than known";
  }
  return {};
}

}  // namespace

OpenedEditor Editor::Open(const Hive& hive, const std::string& name, Clock clock) {
  const auto refused = [&name](const std::string& why) {
    return OpenedEditor{nullptr, name + " can't be changed: " + why + "."};
  };
  if (const std::string why = WhyUnchangeable(hive); !why.empty()) return refused(why);
  OpenedHive copy = Hive::FromBytes(Bytes(hive.Image().begin(), hive.Image().end()), name);
  if (!copy.hive) return {nullptr, copy.error};
  Survey survey = SurveyHive(*copy.hive);
  // Whatever is wrong may make a deletion take more than it was meant to, or less be put back.
  if (!survey.problems.empty()) return refused("it is damaged (" + survey.problems.front() + ")");
  std::unique_ptr<Editor> editor(new Editor);
  editor->hive_ = std::move(copy.hive);
  editor->source_ = hive.Facts();
  editor->clock_ = std::move(clock);
  editor->owned_ = std::move(survey.owned);
  editor->keys_ = std::move(survey.keys);
  editor->securities_ = std::move(survey.securities);
  // Where something points to a free cell, a new cell there would become part of it.
  if (!survey.dangling) editor->free_ = std::move(survey.free);
  return {std::move(editor), {}};
}

// ---- cells

std::span<std::uint8_t> Editor::Writable(CellOffset cell) {
  const std::size_t size = Content(cell).size();
  return hive_->Changeable().subspan(BaseBlockSize + cell + 4U, size);
}

void Editor::Set32(CellOffset cell, std::size_t field, std::uint32_t number) {
  Put32(Writable(cell), field, number);
}

/// Whether cells of that much content altogether fit a hive, however they have to be laid.
bool Editor::HasRoom(std::size_t contentSize, std::size_t cells) const {
  const std::uint64_t most = std::uint64_t{contentSize} * 2 + std::uint64_t{cells} * PageSize * 2;
  return hive_->Image().size() - BaseBlockSize + most <= LargestBins;
}

CellOffset Editor::Allocate(std::size_t contentSize) {
  const auto size = static_cast<std::uint32_t>((contentSize + 4 + 7) / 8 * 8);
  FreeSpace::Block block = free_.Take(size);
  if (block.size == 0) {
    AddBin(size);
    block = free_.Take(size);
  }
  if (block.size > size) Release({block.place + size, block.size - size});
  const std::span<std::uint8_t> bins = hive_->Changeable().subspan(BaseBlockSize);
  Put32(bins, block.place, 0U - size);
  std::ranges::fill(bins.subspan(block.place + 4U, size - 4U), std::uint8_t{0});
  owned_.Add(block.place);
  return block.place;
}

CellOffset Editor::Store(ByteView content) {
  const CellOffset cell = Allocate(content.size());
  std::ranges::copy(content, Writable(cell).begin());
  return cell;
}

void Editor::AddBin(std::uint32_t cellSize) {
  const std::size_t end = hive_->Image().size() - BaseBlockSize;
  const std::size_t size = (cellSize + BinHeaderSize + PageSize - 1) / PageSize * PageSize;
  hive_->Grow(BaseBlockSize + end + size);
  const std::span<std::uint8_t> image = hive_->Changeable();
  const std::span<std::uint8_t> bin = image.subspan(BaseBlockSize + end);
  std::copy_n("hbin", 4, bin.begin());
  Put32(bin, 4, static_cast<std::uint32_t>(end));
  Put32(bin, 8, static_cast<std::uint32_t>(size));
  Put32(image, base::BinsSize, static_cast<std::uint32_t>(end + size));
  owned_.Resize(end + size);
  keys_.Resize(end + size);
  Release({static_cast<CellOffset>(end + BinHeaderSize),
           static_cast<std::uint32_t>(size - BinHeaderSize)});
}

void Editor::Release(FreeSpace::Block block) {
  block = free_.Add(block);
  Put32(hive_->Changeable(), BaseBlockSize + block.place, block.size);
}

void Editor::Free(CellOffset cell) {
  const auto size = static_cast<std::uint32_t>(Content(cell).size() + 4);
  owned_.Remove(cell);
  hive_->owners_.erase(cell);
  // A stale handle must not find a cell in use inside the block that this one becomes part of.
  Put32(hive_->Changeable(), BaseBlockSize + cell, size);
  Release({cell, size});
}

void Editor::Free(const std::vector<CellOffset>& cells) {
  for (const CellOffset cell : cells) Free(cell);
}

// ---- keys

Status Editor::Sound(CellOffset key, KeyFacts& out) const {
  const bool known = keys_.Has(key) && owned_.Has(key);
  return known ? hive_->Key(key, out) : Status::Corrupt;
}

Status Editor::SoundLists(CellOffset key, const KeyFacts& facts,
                          std::vector<CellOffset>& cells) const {
  const auto use = [&](CellOffset cell) {
    cells.push_back(cell);
    return owned_.Has(cell);
  };
  if (hive_->OrderOf(key, facts) == Hive::Order::Damaged) return Status::Corrupt;
  return VisitListCells(*hive_, key, CellUse(use)) ? Status::Ok : Status::Corrupt;
}

void Editor::Touch(CellOffset key) {
  Put64(Writable(key), nk::Time, clock_());
  changed_ = true;
}

/// Whether a subkey would lie deeper than the system goes.
bool Editor::TooDeep(CellOffset parent) const {
  KeyFacts facts;
  int level = 1;
  for (; parent != hive_->Root() && level <= Hive::MaxDepth; ++level) {
    if (hive_->Key(parent, facts) != Status::Ok) return true;
    parent = facts.parent;
  }
  return level > Hive::MaxDepth;
}

CellOffset Editor::NewKey(CellOffset parent, UnicodeView name) {
  const bool latin1 = IsLatin1(name);
  const Bytes stored = EncodeName(name, latin1);
  const CellOffset key = Allocate(nk::Name + stored.size());
  const std::span<std::uint8_t> cell = Writable(key);
  std::copy_n("nk", 2, cell.begin());
  Put16(cell, nk::Flags, latin1 ? std::uint32_t{KeyFlagLatin1Name} : 0U);
  Put32(cell, nk::Parent, parent);
  for (const std::size_t field :
       {nk::SubkeyList, nk::VolatileList, nk::ValueList, nk::Security, nk::Class}) {
    Put32(cell, field, NoCell);
  }
  Put16(cell, nk::NameSize, static_cast<std::uint32_t>(stored.size()));
  std::ranges::copy(stored, cell.begin() + nk::Name);
  keys_.Add(key);
  Reference(key, Get32(Content(parent), nk::Security));
  return key;
}

Status Editor::Create(CellOffset parent, UnicodeView name, CellOffset& out) {
  KeyFacts facts;
  if (Sound(parent, facts) != Status::Ok) return Status::Corrupt;
  const bool nameFits = !name.empty() && name.size() <= LongestKeyName;
  if (!nameFits || name.find(u'\\') != UnicodeView::npos) return Status::Denied;
  const Status there = hive_->Child(parent, name, out);
  if (there != Status::Absent) return there;
  std::vector<CellOffset> lists;
  if (SoundLists(parent, facts, lists) != Status::Ok) return Status::Corrupt;
  const CellOffset security = Get32(Content(parent), nk::Security);
  if (security != NoCell && !securities_.contains(security)) return Status::Corrupt;
  // The list cells: the leaves, and the index of them.
  if (TooDeep(parent) || lists.size() > LargestList) return Status::Denied;
  if (!HasRoom(nk::Name + name.size() * 2 + LargestList * 16, 4)) return Status::Denied;
  out = NewKey(parent, name);
  InsertChild(parent, out, name);
  Raise(parent, nk::MaxName, name.size() * 2);
  Touch(out);
  Touch(parent);
  return Status::Ok;
}

Status Editor::CollectSubtree(CellOffset key, Doomed& out) const {
  bool whole = true;
  bool deletable = true;
  const auto use = [&](CellOffset cell) {
    out.cells.push_back(cell);
    return owned_.Has(cell);
  };
  const Status walk = hive_->Walk(key, [&](const Subkey& below, int) {
    out.keys.push_back(below.key);
    deletable &= (below.facts.flags & KeyFlagNoDelete) == 0;
    whole &= VisitKeyCells(*hive_, below.key, CellUse(use));
    const CellOffset security = Get32(Content(below.key), nk::Security);
    whole &= security == NoCell || securities_.contains(security);
  });
  if (walk != Status::Ok || !whole) return Status::Corrupt;
  return deletable ? Status::Ok : Status::Denied;
}

Status Editor::Erase(CellOffset key) {
  KeyFacts facts;
  KeyFacts parentFacts;
  if (Sound(key, facts) != Status::Ok) return Status::Corrupt;
  if (key == hive_->Root()) return Status::Denied;
  const CellOffset parent = facts.parent;
  if (Sound(parent, parentFacts) != Status::Ok) return Status::Corrupt;
  std::vector<CellOffset> lists;
  if (SoundLists(parent, parentFacts, lists) != Status::Ok) return Status::Corrupt;
  const Place place = Find(parent, key);
  if (place.leaf == NoCell) return Status::Corrupt;
  Doomed doomed;
  const Status status = CollectSubtree(key, doomed);
  if (status != Status::Ok) return status;

  Lower(parent, nk::MaxName, facts.name.Units() * 2);
  Lower(parent, nk::MaxClass, Get16(Content(key), nk::ClassSize));
  if (parentFacts.subkeyCount == 1) {
    Free(lists);
    Set32(parent, nk::SubkeyList, NoCell);
  } else {
    RemoveChild(parent, place);
  }
  Set32(parent, nk::SubkeyCount, parentFacts.subkeyCount - 1);
  for (const CellOffset gone : doomed.keys) {
    Dereference(Get32(Content(gone), nk::Security));
    keys_.Remove(gone);
    shrunk_.erase(gone);
    hive_->orders_.erase(gone);
  }
  Free(doomed.cells);
  Touch(parent);
  return Status::Ok;
}

// ---- maxima

void Editor::Raise(CellOffset key, std::size_t field, std::size_t size) {
  const std::span<std::uint8_t> cell = Writable(key);
  const auto number = static_cast<std::uint32_t>(size);
  if (field == nk::MaxName) {  // flags stand in the upper half
    if (number > Get16(cell, field)) Put16(cell, field, number);
  } else if (number > Get32(cell, field)) {
    Put32(cell, field, number);
  }
}

/// To be called when something of this size goes.
void Editor::Lower(CellOffset key, std::size_t field, std::size_t size) {
  const ByteView cell = Content(key);
  const std::uint32_t noted = field == nk::MaxName ? Get16(cell, field) : Get32(cell, field);
  if (size > 0 && size >= noted) shrunk_.insert(key);
}

void Editor::SettleMaxima(CellOffset key) {
  std::size_t name = 0, className = 0, valueName = 0, data = 0;
  const Status subkeys = hive_->ForEachSubkey(key, [&](const Subkey& child) {
    name = std::max(name, child.facts.name.Units() * 2);
    className = std::max<std::size_t>(className, Get16(Content(child.key), nk::ClassSize));
  });
  const Status values = hive_->ForEachValue(key, [&](const ValueFacts& value) {
    valueName = std::max(valueName, value.name.Units() * 2);
    data = std::max<std::size_t>(data, value.size);
  });
  const std::span<std::uint8_t> cell = Writable(key);
  if (subkeys == Status::Ok) {
    Put16(cell, nk::MaxName, static_cast<std::uint32_t>(name));
    Put32(cell, nk::MaxClass, static_cast<std::uint32_t>(className));
  }
  if (values == Status::Ok) {
    Put32(cell, nk::MaxValueName, static_cast<std::uint32_t>(valueName));
    Put32(cell, nk::MaxValueData, static_cast<std::uint32_t>(data));
  }
}

Bytes Editor::Finish(std::uint32_t newestLogSequence) {
  for (const CellOffset key : shrunk_) SettleMaxima(key);
  shrunk_.clear();
  Bytes image(hive_->Image().begin(), hive_->Image().end());
  const std::span<std::uint8_t> head(image);
  const std::uint32_t newest = std::max({source_.newestSequence, newestLogSequence,
                                         Get32(head, base::Primary), Get32(head, base::Secondary)});
  const std::uint64_t now = clock_();
  Put32(head, base::Primary, newest + 1);
  Put32(head, base::Secondary, newest + 1);
  Put64(head, base::Time, now);
  Put64(head, BaseBlockSize + FirstBinTime, now);
  if (IsTransactionPending(head)) {
    Put32(head, base::Flags, Get32(head, base::Flags) & ~base::TransactionPending);
  }
  Put32(head, base::Checksum, BaseBlockChecksum(head));
  return image;
}

}  // namespace scrubwell::regf
