// Putting back what a session changed, through a session of its own.
#include <algorithm>
#include <ctime>
#include <filesystem>
#include <map>

#include "backends/common/content_digest.h"
#include "backends/common/local_file.h"
#include "backends/common/undo_choice.h"
#include "backends/offline/guards.h"
#include "backends/offline/session_parts.h"

namespace scrubwell {

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 30U;

UndoResult Failed(CleanFailure failure, std::string error) {
  UndoResult result;
  result.failure = failure;
  result.error = std::move(error);
  return result;
}

// A FILETIME of the second after a session was written; 0 when its time can't be read.
std::uint64_t EndOf(const SessionInfo& info) {
  constexpr std::uint64_t kUnixStart = 11'644'473'600U;
  std::tm parts{};
  if (::strptime(info.time.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts) == nullptr) return 0;
  return (kUnixStart + static_cast<std::uint64_t>(::timegm(&parts)) + 1) * 10'000'000U;
}

}  // namespace

/// One undo under way.
struct UndoRun {
  /// With `wholly` keys get back their times, too, where nobody has changed them since.
  UndoRun(CleanSession& session, const Journal& from, bool wholly)
      : parts(*session.parts_), journal(from), changed(from), end(wholly ? EndOf(from.info) : 0) {}

  UndoItem Restore(const JournalEntry& entry);
  /// Puts in place what was gathered: values, and the times of keys. To be called last; an item
  /// that fails here is told in `items`.
  void Finish(std::vector<UndoItem>& items);

  CleanSession::Parts& parts;
  const Journal& journal;

 private:
  using Cell = regf::CellOffset;
  using Node = ChangedPlaces::Node;
  struct Answer {
    UndoOutcome outcome = UndoOutcome::Restored;
    std::string why = {};
  };
  /// A key whose values are being put back. They are gathered and put in together: one after the
  /// other, each would have to look through all that are there.
  struct Gathered {
    std::unordered_map<UnicodeString, regf::ValueFacts> there;
    std::unordered_map<UnicodeString, std::size_t> fresh;  ///< where in `values`
    std::vector<regf::Editor::PlacedValue> values;
    std::vector<const JournalEntry*> entries;  ///< that they are of
  };
  using Gathering = std::map<std::pair<offline::RegfHive*, Cell>, Gathered>;

  Answer RestoreRegistry(const JournalEntry& entry);
  Answer RestoreKey(const JournalEntry& entry);
  Answer RestoreValue(const JournalEntry& entry);
  Answer TakeKeyAway(const JournalEntry& entry);
  Answer RestoreFile(const JournalEntry& entry);
  Answer RestoreFolder(const JournalEntry& entry);
  Answer WriteContent(const JournalEntry& entry);
  bool Conflicts(const JournalEntry& entry, bool& identical);
  bool KeyConflicts(const KeyImage& key, Node place, Cell cell, bool& identical);
  Status RestoreTree(const JournalEntry& entry);
  Status RestoreOne(const KeyImage& key, Cell parent, Cell& out);
  Status EnsureKey(const UnicodeString& path, Cell& out);
  Status Dress(Cell cell, const KeyImage& key);
  Status ValueNow(const Gathered& gathered, const UnicodeString& name, RegValue& out);
  Status PutBack(Gathered& gathered, Cell key, const JournalEntry& entry);
  Gathered* GatheredOf(Cell key);
  Status Flush(Gathering::iterator place);
  Status FlushKey(Cell key);
  void RememberTime(Cell key, std::uint64_t time, bool isNew);
  void Note(const JournalEntry& entry, JournalAction action, const RegValue* now = nullptr);
  static Answer Taken(const JournalEntry& entry);
  static Answer Broken(const JournalEntry& entry, Status status);

  offline::RegfHive* hive = nullptr;
  regf::Editor* editor = nullptr;
  UnicodeString hivePath;
  ChangedPlaces changed;
  std::uint64_t end;
  Gathering gathering;
  std::unordered_map<std::string, std::string> broken;  ///< items that failed when put in
  /// What keys' times are to be: those before the oldest change that is put back. 0 for a key that
  /// somebody has changed since.
  std::map<std::pair<offline::RegfHive*, Cell>, std::uint64_t> times;
};

UndoRun::Answer UndoRun::Taken(const JournalEntry& entry) {
  return {UndoOutcome::Taken, TakenText(entry.item)};
}

UndoRun::Answer UndoRun::Broken(const JournalEntry& entry, Status status) {
  return {UndoOutcome::Failed, BrokenText(entry.item, status)};
}

// The undo's own journal says what undo changes, so that its hives can be checked against it.
void UndoRun::Note(const JournalEntry& entry, JournalAction action, const RegValue* now) {
  JournalEntry note;
  note.item.action = action;
  note.item.place = entry.item.place;
  note.item.name = entry.item.name;
  note.hive = entry.hive;
  note.path = entry.path;
  note.after.name = entry.item.name;
  if (action == JournalAction::DeleteKey) note.tree.push_back({});
  if (now != nullptr) note.before = *now;
  parts.Add(std::move(note));
}

// The entries come from the newest to the oldest, so the last word is the oldest time.
void UndoRun::RememberTime(Cell key, std::uint64_t time, bool isNew) {
  const auto [place, first] = times.try_emplace({hive, key}, 0);
  if (first && !isNew) {
    regf::KeyFacts facts;
    const bool isOurs = hive->Original().Key(key, facts) == Status::Ok && facts.lastWritten <= end;
    if (!isOurs) return;
  }
  if (first || place->second != 0) place->second = time;
}

Status UndoRun::Dress(Cell cell, const KeyImage& key) {
  Status status = Status::Ok;
  if (!key.className.empty()) status = editor->SetClass(cell, key.className);
  if (status == Status::Ok && !key.security.empty()) {
    status = editor->SetSecurity(cell, key.security);
  }
  if (status == Status::Ok && key.link) status = editor->SetLink(cell, true);
  return status;
}

// Keys on the way that went too come back as they were, without their values.
Status UndoRun::EnsureKey(const UnicodeString& path, Cell& out) {
  out = hive->Raw().Root();
  for (std::size_t from = 0; from < path.size();) {
    const std::size_t to = std::min(path.find(u'\\', from), path.size());
    const UnicodeView name = UnicodeView(path).substr(from, to - from);
    const Cell parent = out;
    Status status = hive->Raw().Child(parent, name, out);
    if (status == Status::Absent) {
      JournalEntry created;
      created.hive = hivePath;
      created.path = path.substr(0, to);
      created.item.place = hivePath + u": " + created.path;
      Note(created, JournalAction::CreateKey);
      const KeyImage* const image = changed.Image(changed.At(hivePath, created.path));
      const bool known = image != nullptr;
      status = editor->Create(parent, known ? UnicodeView(image->name) : name, out);
      if (status == Status::Ok && known) status = Dress(out, *image);
      if (status == Status::Ok && known) RememberTime(out, image->time, true);
    }
    if (status != Status::Ok) return status;
    from = to + 1;
  }
  return Status::Ok;
}

// ---- Keys ----------------------------------------------------------------------------------

bool UndoRun::KeyConflicts(const KeyImage& key, Node place, Cell cell, bool& identical) {
  std::vector<RegValue> values;
  if (FlushKey(cell) != Status::Ok || hive->Raw().Values(cell, values) != Status::Ok) return true;
  if (changed.ValuesConflict(place, key, values, identical)) return true;
  bool foreign = false;
  const Status status = hive->Raw().ForEachSubkey(cell, [&](const regf::Subkey& subkey) {
    foreign = foreign || !changed.HasKey(changed.Below(place, subkey.facts.name.Text()));
  });
  return status != Status::Ok || foreign;
}

// Whether something is there that the session did not take away.
bool UndoRun::Conflicts(const JournalEntry& entry, bool& identical) {
  identical = true;
  const regf::Hive& raw = hive->Raw();
  std::vector<std::pair<Cell, Node>> way;
  for (const KeyImage& key : entry.tree) {
    way.resize(std::min<std::size_t>(key.level, way.size()));
    Cell cell = regf::NoCell;
    Status status = Status::Absent;
    Node place = ChangedPlaces::None;
    if (way.empty()) {
      status = raw.Descend(raw.Root(), entry.path, cell);
      place = changed.At(hivePath, entry.path);
    } else if (way.back().first != regf::NoCell) {
      status = raw.Child(way.back().first, key.name, cell);
      place = changed.Below(way.back().second, key.name);
    }
    if (status == Status::Absent) {
      identical = false;
      cell = regf::NoCell;
    } else if (status != Status::Ok || KeyConflicts(key, place, cell, identical)) {
      return true;
    }
    way.emplace_back(cell, place);
  }
  return false;
}

Status UndoRun::RestoreOne(const KeyImage& key, Cell parent, Cell& out) {
  Status status = editor->Create(parent, key.name, out);
  if (status == Status::Ok) status = Dress(out, key);
  std::vector<RegValue> now;
  if (status == Status::Ok) status = hive->Raw().Values(out, now);
  if (status != Status::Ok) return status;
  if (!now.empty()) {
    // Some of them are back already.
    for (const RegValue& value : key.values) {
      if (status == Status::Ok) status = editor->Put(out, value);
    }
    return status;
  }
  std::vector<regf::Editor::PlacedValue> values;
  for (const RegValue& value : key.values) {
    values.push_back({static_cast<std::uint32_t>(values.size()), &value});
  }
  return editor->InsertValues(out, values);
}

Status UndoRun::RestoreTree(const JournalEntry& entry) {
  const std::size_t slash = entry.path.rfind(u'\\');
  const bool isTop = slash == UnicodeString::npos;
  Cell parent = regf::NoCell;
  Status status = EnsureKey(isTop ? UnicodeString() : entry.path.substr(0, slash), parent);
  if (status != Status::Ok) return status;
  RememberTime(parent, entry.keyTime, false);
  std::vector<Cell> way;
  for (const KeyImage& key : entry.tree) {
    way.resize(std::min<std::size_t>(key.level, way.size()));
    Cell cell = regf::NoCell;
    status = RestoreOne(key, way.empty() ? parent : way.back(), cell);
    if (status != Status::Ok) return status;
    RememberTime(cell, key.time, true);
    way.push_back(cell);
  }
  return Status::Ok;
}

UndoRun::Answer UndoRun::RestoreKey(const JournalEntry& entry) {
  bool identical = false;
  if (Conflicts(entry, identical)) return Taken(entry);
  if (identical) return {UndoOutcome::AlreadyThere};
  Note(entry, JournalAction::CreateKey);
  const Status status = RestoreTree(entry);
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

// A key that the session made goes again when nobody has put anything in it.
UndoRun::Answer UndoRun::TakeKeyAway(const JournalEntry& entry) {
  Cell key = regf::NoCell;
  regf::KeyFacts facts;
  Status status = hive->Raw().Descend(hive->Raw().Root(), entry.path, key);
  if (status == Status::Absent) return {UndoOutcome::AlreadyThere};
  if (status == Status::Ok) status = FlushKey(key);
  if (status == Status::Ok) status = hive->Raw().Key(key, facts);
  if (status != Status::Ok) return Broken(entry, status);
  if (facts.subkeyCount != 0 || facts.valueCount != 0) return Taken(entry);
  Note(entry, JournalAction::DeleteKey);
  RememberTime(facts.parent, entry.keyTime, false);
  status = editor->Erase(key);
  times.erase({hive, key});
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

// ---- Values --------------------------------------------------------------------------------

// What is known of a key's values; null when they can't be read.
UndoRun::Gathered* UndoRun::GatheredOf(Cell key) {
  const auto [place, first] = gathering.try_emplace({hive, key});
  Gathered& gathered = place->second;
  if (!first) return &gathered;
  const Status status = hive->Raw().ForEachValue(key, [&](const regf::ValueFacts& value) {
    // The names are views, which the next change may move.
    regf::ValueFacts facts = value;
    facts.name = {};
    gathered.there.try_emplace(UpperCase(value.name.Text()), facts);
  });
  if (status == Status::Ok) return &gathered;
  gathering.erase(place);
  return nullptr;
}

Status UndoRun::ValueNow(const Gathered& gathered, const UnicodeString& name, RegValue& out) {
  const UnicodeString upper = UpperCase(name);
  if (const auto fresh = gathered.fresh.find(upper); fresh != gathered.fresh.end()) {
    out = *gathered.values[fresh->second].value;
    return Status::Ok;
  }
  const auto there = gathered.there.find(upper);
  if (there == gathered.there.end()) return Status::Absent;
  out.name = name;
  out.type = there->second.type;
  return hive->Raw().Data(there->second, out.data);
}

Status UndoRun::PutBack(Gathered& gathered, Cell key, const JournalEntry& entry) {
  const UnicodeString upper = UpperCase(entry.item.name);
  const auto there = gathered.there.find(upper);
  const auto fresh = gathered.fresh.find(upper);
  if (entry.before && there == gathered.there.end()) {
    if (fresh != gathered.fresh.end()) {
      gathered.values[fresh->second].value = &*entry.before;
      return Status::Ok;
    }
    gathered.fresh.emplace(upper, gathered.values.size());
    gathered.values.push_back({entry.valuePlace, &*entry.before});
    gathered.entries.push_back(&entry);
    return Status::Ok;
  }
  if (entry.before) {
    regf::ValueFacts& facts = there->second;
    const Status status = editor->Overwrite(key, facts.cell, *entry.before);
    facts.type = entry.before->type;
    facts.size = static_cast<std::uint32_t>(entry.before->data.size());
    return status;
  }
  // Places are counted among all values, so those gathered have to stand there before one goes.
  const Status status = FlushKey(key);
  return status == Status::Ok ? editor->EraseValue(key, entry.item.name) : status;
}

Status UndoRun::Flush(Gathering::iterator place) {
  const auto& [where, gathered] = *place;
  Status status = Status::Denied;
  std::string ignored;
  if (regf::Editor* const into = where.first->Edit(ignored)) {
    status = into->InsertValues(where.second, gathered.values);
  }
  for (const JournalEntry* const entry : gathered.entries) {
    if (status != Status::Ok) broken[entry->item.id] = BrokenText(entry->item, status);
  }
  gathering.erase(place);
  return status;
}

Status UndoRun::FlushKey(Cell key) {
  const auto place = gathering.find({hive, key});
  return place == gathering.end() ? Status::Ok : Flush(place);
}

UndoRun::Answer UndoRun::RestoreValue(const JournalEntry& entry) {
  Cell key = regf::NoCell;
  RegValue now;
  Status status = hive->Raw().Descend(hive->Raw().Root(), entry.path, key);
  if (status == Status::Ok) {
    const Gathered* const gathered = GatheredOf(key);
    status = gathered == nullptr ? Status::Corrupt : ValueNow(*gathered, entry.item.name, now);
  }
  if (status != Status::Ok && status != Status::Absent) return Broken(entry, status);
  const bool isThere = status == Status::Ok;
  const auto holds = [&](const RegValue& value) {
    return value.type == now.type && value.data == now.data;
  };
  if (isThere ? entry.before && holds(*entry.before) : !entry.before) {
    return {UndoOutcome::AlreadyThere};
  }
  const bool isOurs = entry.item.action == JournalAction::SetValue && holds(entry.after);
  if (isThere && !isOurs) return Taken(entry);
  status = EnsureKey(entry.path, key);
  Gathered* const gathered = status == Status::Ok ? GatheredOf(key) : nullptr;
  if (gathered == nullptr) return Broken(entry, status == Status::Ok ? Status::Corrupt : status);
  Note(entry, entry.before ? JournalAction::SetValue : JournalAction::DeleteValue,
       isThere ? &now : nullptr);
  RememberTime(key, entry.keyTime, false);
  status = PutBack(*gathered, key, entry);
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

UndoRun::Answer UndoRun::RestoreRegistry(const JournalEntry& entry) {
  Status why = Status::Ok;
  std::string error;
  hivePath = entry.hive;
  hive = parts.World().hives.Open(entry.hive, why, error);
  if (hive != nullptr) error = parts.WhyNotChange(*hive);
  editor = hive == nullptr || !error.empty() ? nullptr : hive->Edit(error);
  if (editor == nullptr) return {UndoOutcome::Failed, error};
  switch (entry.item.action) {
    case JournalAction::DeleteKey:
      return RestoreKey(entry);
    case JournalAction::CreateKey:
      return TakeKeyAway(entry);
    default:
      return RestoreValue(entry);
  }
}

// ---- Files ---------------------------------------------------------------------------------

UndoRun::Answer UndoRun::WriteContent(const JournalEntry& entry) {
  Bytes content;
  offline::DiskRoot session;
  const bool good =
      offline::OpenRoot(journal.info.folder, session) == 0 &&
      offline::ReadWholeFile(offline::DiskPlace(session) / kFilesFolder.substr(1) / entry.item.id,
                             content, kLargestFile) == 0 &&
      HasDigest(content, entry.digestBefore);
  if (!good) {
    return {UndoOutcome::Failed,
            ToUtf8(entry.item.place) + ": the copy in the session's folder can't be used"};
  }
  offline::OfflineFiles& files = parts.World().files;
  const Status status = files.Write(entry.item.place, content);
  offline::FileTarget target;
  if (status != Status::Ok || files.Target(entry.item.place, target) != Status::Ok) {
    return Broken(entry, status);
  }
  files.SetAttributes(target, offline::WithinBounds(entry.attributes));
  return {};
}

UndoRun::Answer UndoRun::RestoreFile(const JournalEntry& entry) {
  offline::OfflineFiles& files = parts.World().files;
  Bytes now;
  const Status status = files.Read(entry.item.place, FsView::Physical, kLargestFile, now);
  if (status != Status::Ok && status != Status::Absent) return Broken(entry, status);
  const bool isThere = status == Status::Ok;
  if (isThere ? entry.existed && HasDigest(now, entry.digestBefore) : !entry.existed) {
    return {UndoOutcome::AlreadyThere};
  }
  const bool isOurs =
      entry.item.action == JournalAction::WriteFile && HasDigest(now, entry.digestAfter);
  if (isThere && !isOurs) return Taken(entry);
  if (entry.existed) return WriteContent(entry);
  const Status erased = files.EraseFile(entry.item.place);
  return erased == Status::Ok ? Answer{} : Broken(entry, erased);
}

UndoRun::Answer UndoRun::RestoreFolder(const JournalEntry& entry) {
  offline::FileTarget target;
  offline::OfflineFiles& files = parts.World().files;
  Status status = files.Target(entry.item.place, target);
  if (status == Status::Ok && target.exists) {
    return target.isFolder ? Answer{UndoOutcome::AlreadyThere} : Taken(entry);
  }
  if (status == Status::Ok) status = files.MakeFolder(entry.item.place);
  if (status != Status::Ok) return Broken(entry, status);
  files.SetAttributes(target, offline::WithinBounds(entry.attributes));
  return {};
}

UndoItem UndoRun::Restore(const JournalEntry& entry) {
  const Answer answer = entry.item.action == JournalAction::EraseFolder ? RestoreFolder(entry)
                        : entry.item.action >= JournalAction::WriteFile ? RestoreFile(entry)
                                                                        : RestoreRegistry(entry);
  return {entry.item, answer.outcome, answer.why};
}

void UndoRun::Finish(std::vector<UndoItem>& items) {
  while (!gathering.empty()) Flush(gathering.begin());
  for (const auto& [where, time] : times) {
    std::string ignored;
    regf::Editor* const into = time == 0 ? nullptr : where.first->Edit(ignored);
    if (into != nullptr) into->SetTime(where.second, time);
  }
  if (broken.empty()) return;
  for (UndoItem& item : items) {
    const auto why = broken.find(item.item.id);
    if (why != broken.end()) item = {item.item, UndoOutcome::Failed, why->second};
  }
}

namespace {

// The list of items put back changes together with the hives.
std::string AddUndoneMarks(const Journal& journal, const std::vector<UndoItem>& items,
                           const offline::DiskRoot& backups,
                           std::vector<offline::CommitStep>& steps) {
  const std::string text = FormatUndone(journal, UndoneIds(items));
  const offline::DiskPlace session(backups, journal.info.name);
  offline::CommitStep step;
  step.kind = offline::CommitStep::Kind::Replace;
  step.place = session / kUndoneFile.substr(1);
  step.existed = step.place.Exists();
  Bytes before;
  int error = step.existed ? offline::ReadWholeFile(step.place, before) : 0;
  if (error == 0) error = offline::ReadAttributes(session, step.attributes);
  if (error != 0) return offline::ErrnoSentence(step.place.Text(), error);
  if (step.existed) step.digestBefore = ContentDigest(before);
  step.data.assign(text.begin(), text.end());
  step.digestAfter = ContentDigest(step.data);
  step.attributes.mode = 0600;
  step.attributes.modifiedSeconds = step.attributes.modifiedNanoseconds = 0;
  steps.push_back(std::move(step));
  return {};
}

// Empty when the session can be put back on the Windows that is open.
std::string WhyNotUndo(const Journal& journal, const UnicodeString& identity) {
  const std::string& folder = journal.info.folder;
  if (journal.live) return folder + ": the session was made on the running system";
  if (journal.identity != identity) return folder + ": the session is of another Windows";
  // Opening may have finished this very session.
  if (!IsLocalFile(folder + std::string(kCarriedOutFile))) {
    return folder + ": the session's changes were never made";
  }
  return {};
}

}  // namespace

UndoResult Undo(const UndoOptions& options, offline::IDisk* disk) {
  std::string error;
  const std::string named = SessionFolder(options.backupFolder, options.session, error);
  if (named.empty()) return Failed(CleanFailure::WrongUse, error);
  std::error_code ignored;
  const std::filesystem::path folder = std::filesystem::weakly_canonical(named, ignored);
  const Journal journal = LoadJournal(folder.string());
  if (!journal.info.error.empty()) return Failed(CleanFailure::Unreadable, journal.info.error);
  std::string unknown;
  const std::vector<const JournalEntry*> chosen = ChooseEntries(journal, options.items, unknown);
  if (!unknown.empty()) {
    return Failed(CleanFailure::WrongUse, unknown + ": there is no such item in this session");
  }
  CleanOptions clean{options.target, folder.parent_path().string(), false};
  clean.target.user.clear();
  CleanOpenResult opened = CleanSession::Open(clean, disk);
  if (opened.session == nullptr) return Failed(opened.failure, opened.error);
  UndoRun run(*opened.session, journal, options.items.empty());
  std::string why = WhyNotUndo(journal, run.parts.journal.identity);
  if (!why.empty()) return Failed(CleanFailure::WrongUse, why);
  UndoResult result;
  result.session = journal.info.name;
  const auto goesOn = [&] {
    return !options.progress || options.progress(result.items.size(), chosen.size());
  };
  for (const JournalEntry* entry : chosen) {
    if (!goesOn()) break;
    result.items.push_back(run.Restore(*entry));
  }
  run.Finish(result.items);
  if (result.items.size() < chosen.size() || !goesOn()) {
    return Failed(CleanFailure::Stopped, "stopped; nothing was changed");
  }
  run.parts.journal.info.undoes = journal.info.name;
  why = AddUndoneMarks(journal, result.items, run.parts.backups, run.parts.furtherSteps);
  if (!why.empty()) return Failed(CleanFailure::NotWritten, why);
  CommitResult committed = opened.session->Commit();
  result.failure = committed.failure;
  result.error = std::move(committed.error);
  for (const UnicodeString& note : opened.session->Backend().Notes()) {
    result.notes.push_back(ToUtf8(note));
  }
  result.notes.insert(result.notes.end(), committed.notes.begin(), committed.notes.end());
  return result;
}

}  // namespace scrubwell
