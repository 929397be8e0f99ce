// What an undo puts back, and what it may find in the way without being hindered by it.
#pragma once

#include <algorithm>
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
/// is back already.
class ChangedPlaces {
 public:
  explicit ChangedPlaces(const Journal& journal);

  [[nodiscard]] bool HasKey(UnicodeView hive, UnicodeView path) const;
  [[nodiscard]] bool HasValue(UnicodeView hive, UnicodeView path, UnicodeView name) const;
  /// A key as it was before it went; null for one that did not go.
  [[nodiscard]] const KeyImage* Image(UnicodeView hive, UnicodeView path) const;

  /// Whether values that are there now keep the key from coming back. `identical` is cleared when
  /// they are not just those that it had.
  [[nodiscard]] bool ValuesConflict(UnicodeView hive, UnicodeView path, const KeyImage& key,
                                    const std::vector<RegValue>& now, bool& identical) const;

 private:
  std::unordered_map<UnicodeString, const KeyImage*> images_;
  std::unordered_set<UnicodeString> touched_;
};

}  // namespace scrubwell
