#include "formats/regf/survey.h"

#include <algorithm>
#include <cstdio>

#include "formats/regf/check.h"
#include "formats/regf/key_cells.h"
#include "formats/regf/log.h"
#include "registry/Stringhelper.h"

namespace scrubwell::regf {
namespace {

std::string Hex(std::uint32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%X", number);
  return text;
}

/// Names are measured as UTF-16, however they are stored.
std::uint32_t NameBytes(const NameRef& name) {
  return static_cast<std::uint32_t>(name.Units() * 2);
}

class Surveyor {
 public:
  explicit Surveyor(const Hive& hive) : hive_(hive), cells_(hive.Image()) {}

  Survey Run() {
    const std::size_t size = cells_.Bins().size();
    for (CellSet* set : {&out_.used, &out_.owned, &out_.keys, &reached_, &shared_}) {
      set->Resize(size);
    }
    LayOut();
    const Status status =
        hive_.Walk(hive_.Root(), [this](const Subkey& key, int) { CheckKey(key); });
    if (status != Status::Ok) Report("Some keys can't be reached.");
    CheckRing();
    FindOwners();
    return std::move(out_);
  }

 private:
  void Report(std::string sentence) {
    if (out_.problems.size() < Survey::MostProblems) out_.problems.push_back(std::move(sentence));
  }
  /// Only for sentences: goes up the parents.
  void Report(CellOffset key, const char* what) {
    if (out_.problems.size() == Survey::MostProblems) return;
    std::string path;
    KeyFacts facts;
    for (int level = 0; key != hive_.Root() && level < Hive::MaxDepth; ++level) {
      if (hive_.Key(key, facts) != Status::Ok) break;
      path = "\\" + ToUtf8(facts.name.Text()) + path;
      key = facts.parent;
    }
    Report("Key " + (path.empty() ? "\\" : path) + ": " + what + ".");
  }

  /// Goes over all bins, cell by cell. Stops where they don't hang together.
  void LayOut() {
    const ByteView bins = cells_.Bins();
    for (std::size_t at = 0; at < bins.size();) {
      const std::uint32_t size = Get32(bins, at + 8);
      const bool good = bins[at] == 'h' && bins[at + 1] == 'b' && bins[at + 2] == 'i' &&
                        bins[at + 3] == 'n' && Get32(bins, at + 4) == at && size != 0 &&
                        size % PageSize == 0 && size <= bins.size() - at;
      out_.binsWhole = good && LayOutCells(at + BinHeaderSize, at + size);
      if (!out_.binsWhole)
        return Report("The bin at " + Hex(static_cast<std::uint32_t>(at)) + " is damaged.");
      at += size;
    }
  }
  bool LayOutCells(std::size_t at, std::size_t end) {
    const ByteView bins = cells_.Bins();
    while (at < end) {
      const std::uint32_t stored = Get32(bins, at);
      const bool used = stored > 0x7FFFFFFFU;
      const std::uint32_t size = used ? 0U - stored : stored;
      if (size < 8 || size % 8 != 0 || size > end - at) return false;
      const auto place = static_cast<CellOffset>(at);
      if (used) {
        out_.used.Add(place);
      } else {
        out_.free.Add({place, size});
      }
      at += size;
    }
    return true;
  }

  bool Use(CellOffset cell) {
    if (!out_.used.Has(cell)) {
      out_.dangling = true;
      return false;
    }
    if (reached_.Has(cell)) {
      // What hangs on it was told the first time.
      shared_.Add(cell);
      Report("The cell at " + Hex(cell) + " is used twice.");
      return false;
    }
    reached_.Add(cell);
    return true;
  }

  void CheckKey(const Subkey& key) {
    const auto use = [this](CellOffset cell) { return Use(cell); };
    const bool whole = VisitKeyCells(hive_, key.key, CellUse(use));
    if (out_.used.Has(key.key)) out_.keys.Add(key.key);
    CheckSecurity(key.key);
    if (!whole) return Report(key.key, "its class, lists or values can't be read");
    if (hive_.ClassName(key.key, name_) == Status::Corrupt)
      Report(key.key, "its class can't be read");
    CheckSubkeys(key);
    CheckValues(key.key);
  }

  void CheckSecurity(CellOffset key) {
    const CellOffset security = Get32(cells_.Content(key), nk::Security);
    if (security == NoCell) return;
    ByteView descriptor;
    if (!out_.used.Has(security) || hive_.Security(key, descriptor) != Status::Ok) {
      out_.dangling |= !out_.used.Has(security);
      return Report(key, "its security can't be read");
    }
    ++out_.securities[security];
  }

  void CheckSubkeys(const Subkey& key) {
    const ByteView cell = cells_.Content(key.key);
    const CellOffset listCell = Get32(cell, nk::SubkeyList);
    if (key.facts.subkeyCount == 0) {
      if (listCell != NoCell) Report(key.key, "it has a list of subkeys, but none are counted");
      return;
    }
    std::uint32_t longestName = 0;
    std::uint32_t longestClass = 0;
    NameRef last;
    bool sorted = true;
    const Status status = hive_.ForEachSubkey(key.key, [&](const Subkey& child) {
      longestName = std::max(longestName, NameBytes(child.facts.name));
      const ByteView childCell = cells_.Content(child.key);
      longestClass = std::max<std::uint32_t>(longestClass, Get16(childCell, nk::ClassSize));
      sorted &= last.Empty() || last.Compare(child.facts.name) < 0;
      last = child.facts.name;
    });
    if (status != Status::Ok) Report(key.key, "its subkeys are not those that are counted");
    if (!sorted) Report(key.key, "its subkeys are out of order");
    if (longestName > Get16(cell, nk::MaxName) || longestClass > Get32(cell, nk::MaxClass)) {
      Report(key.key, "a subkey has a longer name or class than is noted");
    }
    CheckLists(key.key, listCell);
  }

  void CheckLists(CellOffset key, CellOffset listCell) {
    const ByteView list = cells_.List(listCell);
    if (!HasSignature(list, "ri")) return CheckLeaf(key, list);
    const ListEntries leaves(list);
    for (std::size_t i = 0; i < leaves.Count(); ++i) CheckLeaf(key, cells_.Leaf(leaves[i]));
  }
  void CheckLeaf(CellOffset key, ByteView leaf) {
    const ListEntries entries(leaf);
    if (entries.Count() == 0) Report(key, "a list of subkeys is empty");
    KeyFacts facts;
    bool right = true;
    for (std::size_t i = 0; i < entries.Count(); ++i) {
      if (entries.Stride() != 8 || hive_.Key(entries[i], facts) != Status::Ok) continue;
      facts.name.CopyTo(name_);
      const std::uint32_t hint = Get32(leaf, 8 + i * 8);
      right &= HasSignature(leaf, "lh") ? hint == NameHash(name_) : hint == NameHint(name_);
    }
    if (!right) Report(key, "a list of subkeys has a wrong hash or hint");
  }

  void CheckValues(CellOffset key) {
    const ByteView cell = cells_.Content(key);
    std::uint32_t longestName = 0;
    std::uint32_t mostData = 0;
    const Status status = hive_.ForEachValue(key, [&](const ValueFacts& value) {
      longestName = std::max(longestName, NameBytes(value.name));
      mostData = std::max(mostData, value.size);
    });
    if (status != Status::Ok) Report(key, "a value's name can't be read");
    if (longestName > Get32(cell, nk::MaxValueName) || mostData > Get32(cell, nk::MaxValueData)) {
      Report(key, "a value has a longer name or more data than is noted");
    }
  }

  /// Security cells hang on the ring, whether or not a key has them.
  void CheckRing() {
    std::unordered_map<CellOffset, std::uint32_t> ring;
    if (!out_.securities.empty()) {
      const CellOffset start = out_.securities.begin()->first;
      CellOffset at = start;
      do {
        const CellOffset next = Get32(cells_.Content(at), sk::Next);
        const ByteView cell = cells_.Typed(next, "sk", sk::Descriptor);
        out_.ringWhole = out_.used.Has(next) && !cell.empty() && Get32(cell, sk::Previous) == at &&
                         ring.emplace(next, 0).second;
        at = next;
      } while (out_.ringWhole && at != start);
    }
    for (const auto& [security, keys] : out_.securities) {
      const auto place = ring.find(security);
      out_.ringWhole &= place != ring.end();
      if (place != ring.end()) place->second = keys;
    }
    if (!out_.ringWhole) return Report("The ring of security cells is broken.");
    for (const auto& [security, keys] : ring) {
      Use(security);
      if (Get32(cells_.Content(security), sk::References) != keys) {
        Report("The security cell at " + Hex(security) + " counts the wrong number of keys.");
      }
    }
    out_.securities = std::move(ring);
  }

  void FindOwners() {
    const auto end = static_cast<CellOffset>(cells_.Bins().size());
    std::size_t lost = 0;
    for (CellOffset cell = 0; cell < end; cell += 8) {
      if (!out_.used.Has(cell)) continue;
      lost += !reached_.Has(cell);
      if (reached_.Has(cell) && !shared_.Has(cell)) out_.owned.Add(cell);
    }
    if (lost != 0) Report(std::to_string(lost) + " cells are in use but belong to nothing.");
  }

  const Hive& hive_;
  Cells cells_;
  Survey out_;
  CellSet reached_;
  CellSet shared_;
  UnicodeString name_;
};

}  // namespace

Survey SurveyHive(const Hive& hive) {
  return Surveyor(hive).Run();
}

std::vector<std::string> CheckImage(ByteView image) {
  const OpenedHive opened = Hive::FromBytes(Bytes(image.begin(), image.end()), "The file");
  if (!opened.hive) return {opened.error};
  std::vector<std::string> problems = SurveyHive(*opened.hive).problems;
  const HiveFacts& facts = opened.hive->Facts();
  if (!facts.checksumRight) problems.insert(problems.begin(), "The first block is damaged.");
  if (facts.primarySequence != facts.secondarySequence) {
    problems.insert(problems.begin(), "The last write was not finished.");
  }
  return problems;
}

}  // namespace scrubwell::regf
