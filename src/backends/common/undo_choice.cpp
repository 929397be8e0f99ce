#include "backends/common/undo_choice.h"

#include <algorithm>

namespace scrubwell {
namespace {

UnicodeString KeyMark(UnicodeView hive, UnicodeView path) {
  return UpperCase(hive) + u'|' + UpperCase(path);
}

UnicodeString ValueMark(UnicodeView hive, UnicodeView path, UnicodeView name) {
  return KeyMark(hive, path) + UnicodeString(u"\\\0", 2) + UpperCase(name);
}

bool IsChosen(const Journal& journal, const JournalEntry& entry, const std::string& id) {
  return entry.item.id == id || (entry.item.problem != JournalItem::NoProblem &&
                                 journal.problems[entry.item.problem].id == id);
}

}  // namespace

std::vector<const JournalEntry*> ChooseEntries(const Journal& journal,
                                               const std::vector<std::string>& ids,
                                               std::string& unknown) {
  std::vector<const JournalEntry*> chosen;
  for (const std::string& id : ids) {
    const bool known =
        std::any_of(journal.entries.begin(), journal.entries.end(),
                    [&](const JournalEntry& entry) { return IsChosen(journal, entry, id); });
    if (!known) unknown = id;
  }
  for (auto entry = journal.entries.rbegin(); entry != journal.entries.rend(); ++entry) {
    const bool wanted =
        ids.empty() || std::any_of(ids.begin(), ids.end(), [&](const std::string& id) {
          return IsChosen(journal, *entry, id);
        });
    if (wanted) chosen.push_back(&*entry);
  }
  return chosen;
}

std::string PlaceText(const JournalItem& item) {
  std::string place = ToUtf8(item.place);
  const bool isValue =
      item.action == JournalAction::DeleteValue || item.action == JournalAction::SetValue;
  if (isValue) place += item.name.empty() ? ", (Default)" : ", " + ToUtf8(item.name);
  return place;
}

std::string TakenText(const JournalItem& item) {
  return PlaceText(item) + ": its place has been taken since";
}

std::string BrokenText(const JournalItem& item, Status status) {
  const std::string why = status == Status::Corrupt  ? ": the place is damaged"
                          : status == Status::Denied ? ": the place can't be changed"
                                                     : ": the place can't be reached";
  return ToUtf8(item.place) + why;
}

std::vector<std::string> UndoneIds(const std::vector<UndoItem>& items) {
  std::vector<std::string> ids;
  for (const UndoItem& item : items) {
    if (item.outcome == UndoOutcome::Restored || item.outcome == UndoOutcome::AlreadyThere)
      ids.push_back(item.item.id);
  }
  return ids;
}

ChangedPlaces::ChangedPlaces(const Journal& journal) {
  for (const JournalEntry& entry : journal.entries) {
    ForEachKey(entry, [&](const KeyImage& key, const UnicodeString& path) {
      images_[KeyMark(entry.hive, path)] = &key;
      touched_.insert(KeyMark(entry.hive, path));
      for (const RegValue& value : key.values)
        touched_.insert(ValueMark(entry.hive, path, value.name));
    });
    if (entry.item.action == JournalAction::CreateKey)
      touched_.insert(KeyMark(entry.hive, entry.path));
    touched_.insert(ValueMark(entry.hive, entry.path, entry.item.name));
  }
}

bool ChangedPlaces::HasKey(UnicodeView hive, UnicodeView path) const {
  return touched_.contains(KeyMark(hive, path));
}

bool ChangedPlaces::HasValue(UnicodeView hive, UnicodeView path, UnicodeView name) const {
  return touched_.contains(ValueMark(hive, path, name));
}

const KeyImage* ChangedPlaces::Image(UnicodeView hive, UnicodeView path) const {
  const auto it = images_.find(KeyMark(hive, path));
  return it == images_.end() ? nullptr : it->second;
}

bool ChangedPlaces::ValuesConflict(UnicodeView hive, UnicodeView path, const KeyImage& key,
                                   const std::vector<RegValue>& now, bool& identical) const {
  std::unordered_map<UnicodeString, const RegValue*> mine;
  for (const RegValue& value : key.values) mine[UpperCase(value.name)] = &value;
  std::size_t same = 0;
  for (const RegValue& value : now) {
    const auto it = mine.find(UpperCase(value.name));
    if (it == mine.end()) {
      if (!HasValue(hive, path, value.name)) return true;
    } else if (value.type != it->second->type || value.data != it->second->data) {
      return true;
    } else {
      ++same;
    }
  }
  identical = identical && same == key.values.size();
  return false;
}

}  // namespace scrubwell
