// What an undo puts back, and what it may find in the way without being hindered by it.
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "backends/common/journal.h"
#include "registry/Stringhelper.h"

namespace scrubwell {

/// The entries to put back, the newest first: those whose id, or whose problem's id, is named, or
/// all. An id that the session does not know is then in `unknown`.
std::vector<const JournalEntry*> ChooseEntries(const Journal& journal,
                                               const std::vector<std::string>& ids,
                                               std::string& unknown);

/// "HKLM\SOFTWARE\x, Name", as sentences name what an entry changed.
std::string PlaceText(const JournalItem& item);
/// Why an entry was not put back: something else is there.
std::string TakenText(const JournalItem& item);
/// Why a place could not be read or changed.
std::string BrokenText(const JournalItem& item, Status status);

/// Ids of the items that are as they were, for the list of them.
std::vector<std::string> UndoneIds(const std::vector<UndoItem>& items);

inline UnicodeString PathBelow(UnicodeView path, UnicodeView name) {
  return path.empty() ? UnicodeString(name) : UnicodeString(path) + u'\\' + UnicodeString(name);
}

/// Calls use(key, its path) for each key of a subtree that went, parents first.
template <class Use>
void ForEachKey(const JournalEntry& entry, Use&& use) {
  std::vector<UnicodeString> paths;
  for (const KeyImage& key : entry.tree) {
    paths.resize(std::min<std::size_t>(key.level, paths.size()));
    paths.push_back(paths.empty() ? entry.path : PathBelow(paths.back(), key.name));
    use(key, paths.back());
  }
}

/// The keys and values that a session changed. They don't stand in an undo's way, whatever of them
/// is back already. Kept as a tree, so that deep keys take no more room than their names do.
class ChangedPlaces {
 public:
  /// A key on the way to something that was changed.
  using Node = std::uint32_t;
  static constexpr Node None = 0xFFFFFFFFU;

  explicit ChangedPlaces(const Journal& journal);

  /// None where nothing was changed there or below.
  [[nodiscard]] Node At(UnicodeView hive, UnicodeView path) const;
  [[nodiscard]] Node Below(Node parent, UnicodeView name) const;
  /// Whether the key itself went or came.
  [[nodiscard]] bool HasKey(Node key) const { return key != None && nodes_[key].changed; }
  /// A key as it was before it went; null for one that did not go.
  [[nodiscard]] const KeyImage* Image(Node key) const {
    return key == None ? nullptr : nodes_[key].image;
  }

  /// Whether values that are there now keep the key from coming back. `identical` is cleared when
  /// they are not just those that it had.
  [[nodiscard]] bool ValuesConflict(Node place, const KeyImage& key,
                                    const std::vector<RegValue>& now, bool& identical) const;

 private:
  struct Entry {
    const KeyImage* image = nullptr;
    bool changed = false;
  };
  struct Name {
    Node parent;
    UnicodeString upper;
    bool operator==(const Name&) const = default;
  };
  struct NameHash {
    std::size_t operator()(const Name& name) const {
      return std::hash<UnicodeString>()(name.upper) ^ (std::size_t{name.parent} * 0x9E3779B1U);
    }
  };
  Node Make(Node parent, UnicodeView name);
  Node MakePath(UnicodeView hive, UnicodeView path);
  void AddTree(const JournalEntry& entry, Node top);

  std::vector<Entry> nodes_;
  std::unordered_map<Name, Node, NameHash> keys_;  // a hive hangs below None
  std::unordered_set<Name, NameHash> values_;
};

}  // namespace scrubwell
