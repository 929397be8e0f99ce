#include "backends/common/undo_choice.h"

#include <algorithm>

namespace scrubwell {
namespace {

// An item by its own id or by that of its problem.
const std::string& ProblemId(const Journal& journal, const JournalEntry& entry) {
  static const std::string kNone;
  return entry.item.problem == JournalItem::NoProblem ? kNone
                                                      : journal.problems[entry.item.problem].id;
}

}  // namespace

std::vector<const JournalEntry*> ChooseEntries(const Journal& journal,
                                               const std::vector<std::string>& ids,
                                               std::string& unknown) {
  std::unordered_map<std::string_view, bool> wanted;  // and whether something has it
  for (const std::string& id : ids) wanted.emplace(id, false);
  std::vector<const JournalEntry*> chosen;
  for (auto entry = journal.entries.rbegin(); entry != journal.entries.rend(); ++entry) {
    bool isWanted = ids.empty();
    for (const std::string& id : {entry->item.id, ProblemId(journal, *entry)}) {
      const auto place = wanted.find(id);
      if (place != wanted.end()) place->second = isWanted = true;
    }
    if (isWanted) chosen.push_back(&*entry);
  }
  for (const std::string& id : ids) {
    if (!wanted[id]) unknown = id;
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
    const Node key = MakePath(entry.hive, entry.path);
    if (!entry.tree.empty()) AddTree(entry, key);
    if (entry.item.action == JournalAction::CreateKey) nodes_[key].changed = true;
    values_.insert({key, UpperCase(entry.item.name)});
  }
}

ChangedPlaces::Node ChangedPlaces::Make(Node parent, UnicodeView name) {
  const auto [place, fresh] =
      keys_.try_emplace({parent, UpperCase(name)}, static_cast<Node>(nodes_.size()));
  if (fresh) nodes_.emplace_back();
  return place->second;
}

ChangedPlaces::Node ChangedPlaces::MakePath(UnicodeView hive, UnicodeView path) {
  Node at = Make(None, hive);
  for (std::size_t from = 0; from < path.size();) {
    const std::size_t to = std::min(path.find(u'\\', from), path.size());
    at = Make(at, path.substr(from, to - from));
    from = to + 1;
  }
  return at;
}

void ChangedPlaces::AddTree(const JournalEntry& entry, Node top) {
  std::vector<Node> way;
  for (const KeyImage& key : entry.tree) {
    way.resize(std::min<std::size_t>(key.level, way.size()));
    const Node node = way.empty() ? top : Make(way.back(), key.name);
    way.push_back(node);
    nodes_[node] = {&key, true};
    for (const RegValue& value : key.values) values_.insert({node, UpperCase(value.name)});
  }
}

ChangedPlaces::Node ChangedPlaces::Below(Node parent, UnicodeView name) const {
  if (parent == None) return None;
  const auto place = keys_.find({parent, UpperCase(name)});
  return place == keys_.end() ? None : place->second;
}

ChangedPlaces::Node ChangedPlaces::At(UnicodeView hive, UnicodeView path) const {
  const auto top = keys_.find({None, UpperCase(hive)});
  Node at = top == keys_.end() ? None : top->second;
  for (std::size_t from = 0; at != None && from < path.size();) {
    const std::size_t to = std::min(path.find(u'\\', from), path.size());
    at = Below(at, path.substr(from, to - from));
    from = to + 1;
  }
  return at;
}

bool ChangedPlaces::ValuesConflict(Node place, const KeyImage& key,
                                   const std::vector<RegValue>& now, bool& identical) const {
  std::unordered_map<UnicodeString, const RegValue*> mine;
  for (const RegValue& value : key.values) mine[UpperCase(value.name)] = &value;
  std::size_t same = 0;
  for (const RegValue& value : now) {
    UnicodeString upper = UpperCase(value.name);
    const auto it = mine.find(upper);
    if (it == mine.end()) {
      if (!values_.contains({place, std::move(upper)})) return true;
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
