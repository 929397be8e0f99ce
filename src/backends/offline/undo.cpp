// Putting back what a session changed, through a session of its own.
#include <algorithm>
#include <filesystem>

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

}  // namespace

/// One undo under way.
struct UndoRun {
  UndoRun(CleanSession& session, const Journal& from)
      : parts(*session.parts_), journal(from), changed(from) {}

  UndoItem Restore(const JournalEntry& entry);

  CleanSession::Parts& parts;
  const Journal& journal;

 private:
  using Cell = regf::CellOffset;
  struct Answer {
    UndoOutcome outcome = UndoOutcome::Restored;
    std::string why = {};
  };

  Answer RestoreRegistry(const JournalEntry& entry);
  Answer RestoreKey(const JournalEntry& entry);
  Answer RestoreValue(const JournalEntry& entry);
  Answer TakeKeyAway(const JournalEntry& entry);
  Answer RestoreFile(const JournalEntry& entry);
  Answer RestoreFolder(const JournalEntry& entry);
  Answer WriteContent(const JournalEntry& entry);
  bool Conflicts(const JournalEntry& entry, bool& identical);
  bool KeyConflicts(const KeyImage& key, const UnicodeString& path, Cell cell, bool& identical);
  Status EnsureKey(const UnicodeString& path, Cell& out);
  Status Dress(Cell cell, const KeyImage& key);
  void Note(const JournalEntry& entry, JournalAction action);
  static Answer Taken(const JournalEntry& entry);
  static Answer Broken(const JournalEntry& entry, Status status);

  offline::RegfHive* hive = nullptr;
  regf::Editor* editor = nullptr;
  UnicodeString hivePath;
  ChangedPlaces changed;
};

UndoRun::Answer UndoRun::Taken(const JournalEntry& entry) {
  return {UndoOutcome::Taken, TakenText(entry.item)};
}

UndoRun::Answer UndoRun::Broken(const JournalEntry& entry, Status status) {
  return {UndoOutcome::Failed, BrokenText(entry.item, status)};
}

// The undo's own journal says what undo changes, so that its hives can be checked against it.
void UndoRun::Note(const JournalEntry& entry, JournalAction action) {
  JournalEntry note;
  note.item.action = action;
  note.item.place = entry.item.place;
  note.item.name = entry.item.name;
  note.hive = entry.hive;
  note.path = entry.path;
  note.after.name = entry.item.name;
  if (action == JournalAction::DeleteKey) note.tree.push_back({});
  RegValue now;
  Cell key = regf::NoCell;
  const bool isValue = action == JournalAction::SetValue || action == JournalAction::DeleteValue;
  if (isValue && hive->Raw().Descend(hive->Raw().Root(), entry.path, key) == Status::Ok &&
      hive->Raw().Value(key, entry.item.name, now) == Status::Ok) {
    note.before = std::move(now);
  }
  parts.Add(std::move(note));
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
      const KeyImage* const image = changed.Image(hivePath, created.path);
      const bool known = image != nullptr;
      status = editor->Create(parent, known ? UnicodeView(image->name) : name, out);
      if (status == Status::Ok && known) status = Dress(out, *image);
    }
    if (status != Status::Ok) return status;
    from = to + 1;
  }
  return Status::Ok;
}

bool UndoRun::KeyConflicts(const KeyImage& key, const UnicodeString& path, Cell cell,
                           bool& identical) {
  std::vector<RegValue> values;
  if (hive->Raw().Values(cell, values) != Status::Ok) return true;
  if (changed.ValuesConflict(hivePath, path, key, values, identical)) return true;
  bool foreign = false;
  const Status status = hive->Raw().ForEachSubkey(cell, [&](const regf::Subkey& subkey) {
    const UnicodeString name = subkey.facts.name.Text();
    foreign = foreign || !changed.HasKey(hivePath, PathBelow(path, name));
  });
  return status != Status::Ok || foreign;
}

// Whether something is there that the session did not take away.
bool UndoRun::Conflicts(const JournalEntry& entry, bool& identical) {
  bool conflict = false;
  identical = true;
  const regf::Hive& raw = hive->Raw();
  ForEachKey(entry, [&](const KeyImage& key, const UnicodeString& path) {
    Cell cell = regf::NoCell;
    const Status status = raw.Descend(raw.Root(), path, cell);
    if (status == Status::Absent) {
      identical = false;
    } else {
      conflict = conflict || status != Status::Ok || KeyConflicts(key, path, cell, identical);
    }
  });
  return conflict;
}

UndoRun::Answer UndoRun::RestoreKey(const JournalEntry& entry) {
  bool identical = false;
  if (Conflicts(entry, identical)) return Taken(entry);
  if (identical) return {UndoOutcome::AlreadyThere};
  Note(entry, JournalAction::CreateKey);
  std::vector<std::pair<Cell, std::uint64_t>> times;
  Status status = Status::Ok;
  ForEachKey(entry, [&](const KeyImage& key, const UnicodeString& path) {
    Cell cell = regf::NoCell;
    if (status == Status::Ok) status = EnsureKey(path, cell);
    if (status == Status::Ok) status = Dress(cell, key);
    for (const RegValue& value : key.values) {
      if (status == Status::Ok) status = editor->Put(cell, value);
    }
    times.emplace_back(cell, key.time);
  });
  for (const auto& [cell, time] : times) {
    if (status == Status::Ok) status = editor->SetTime(cell, time);
  }
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

UndoRun::Answer UndoRun::RestoreValue(const JournalEntry& entry) {
  const UnicodeString& name = entry.item.name;
  Cell key = regf::NoCell;
  RegValue now;
  Status status = hive->Raw().Descend(hive->Raw().Root(), entry.path, key);
  if (status == Status::Ok) status = hive->Raw().Value(key, name, now);
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
  if (status != Status::Ok) return Broken(entry, status);
  Note(entry, entry.before ? JournalAction::SetValue : JournalAction::DeleteValue);
  status = entry.before ? editor->Put(key, *entry.before) : editor->EraseValue(key, name);
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

// A key that the session made goes again when nobody has put anything in it.
UndoRun::Answer UndoRun::TakeKeyAway(const JournalEntry& entry) {
  Cell key = regf::NoCell;
  regf::KeyFacts facts;
  Status status = hive->Raw().Descend(hive->Raw().Root(), entry.path, key);
  if (status == Status::Absent) return {UndoOutcome::AlreadyThere};
  if (status == Status::Ok) status = hive->Raw().Key(key, facts);
  if (status != Status::Ok) return Broken(entry, status);
  if (facts.subkeyCount != 0 || facts.valueCount != 0) return Taken(entry);
  Note(entry, JournalAction::DeleteKey);
  status = editor->Erase(key);
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

UndoRun::Answer UndoRun::RestoreRegistry(const JournalEntry& entry) {
  Status why = Status::Ok;
  std::string error;
  hivePath = entry.hive;
  hive = parts.World().hives.Open(entry.hive, why, error);
  if (hive != nullptr) error = offline::WhyHiveUnfit(*hive);
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

UndoRun::Answer UndoRun::WriteContent(const JournalEntry& entry) {
  Bytes content;
  if (offline::ReadWholeFile(ContentFile(journal.info.folder, entry), content) != 0 ||
      ContentHash(content) != entry.hashBefore) {
    return {UndoOutcome::Failed,
            ToUtf8(entry.item.place) + ": the copy in the session's folder can't be used"};
  }
  offline::OfflineFiles& files = parts.World().files;
  const Status status = files.Write(entry.item.place, content);
  offline::FileTarget target;
  if (status != Status::Ok || files.Target(entry.item.place, target) != Status::Ok) {
    return Broken(entry, status);
  }
  files.SetAttributes(target, entry.attributes);
  return {};
}

UndoRun::Answer UndoRun::RestoreFile(const JournalEntry& entry) {
  offline::OfflineFiles& files = parts.World().files;
  Bytes now;
  const Status status = files.Read(entry.item.place, FsView::Physical, kLargestFile, now);
  if (status != Status::Ok && status != Status::Absent) return Broken(entry, status);
  const bool isThere = status == Status::Ok;
  const std::uint64_t hash = ContentHash(now);
  if (isThere ? entry.existed && hash == entry.hashBefore : !entry.existed) {
    return {UndoOutcome::AlreadyThere};
  }
  const bool isOurs = entry.item.action == JournalAction::WriteFile && hash == entry.hashAfter;
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
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

UndoItem UndoRun::Restore(const JournalEntry& entry) {
  const Answer answer = entry.item.action == JournalAction::EraseFolder ? RestoreFolder(entry)
                        : entry.item.action >= JournalAction::WriteFile ? RestoreFile(entry)
                                                                        : RestoreRegistry(entry);
  return {entry.item, answer.outcome, answer.why};
}

namespace {

// The list of items put back changes together with the hives.
void AddUndoneMarks(const Journal& journal, const std::vector<UndoItem>& items,
                    std::vector<offline::CommitStep>& steps) {
  const std::string text = FormatUndone(journal, UndoneIds(items));
  offline::CommitStep& step = steps.emplace_back();
  step.kind = offline::CommitStep::Kind::Replace;
  step.local = journal.info.folder + std::string(kUndoneFile);
  step.existed = offline::PathExists(step.local);
  Bytes before;
  if (step.existed && offline::ReadWholeFile(step.local, before) == 0) {
    step.hashBefore = ContentHash(before);
  }
  step.data.assign(text.begin(), text.end());
  step.hashAfter = ContentHash(step.data);
  offline::ReadAttributes(journal.info.folder, step.attributes);
  step.attributes.mode = 0600;
  step.attributes.modifiedSeconds = step.attributes.modifiedNanoseconds = 0;
}

}  // namespace

UndoResult Undo(const UndoOptions& options, offline::IDisk* disk) {
  SessionContent content = ReadSession(options.backupFolder, options.session);
  if (content.failure != CleanFailure::None) return Failed(content.failure, content.error);
  std::error_code ignored;
  const std::string folder =
      std::filesystem::weakly_canonical(content.info.folder, ignored).string();
  const Journal journal = LoadJournal(folder);
  if (journal.live) {
    return Failed(CleanFailure::WrongUse, folder + ": the session was made on the running system");
  }
  std::string unknown;
  const std::vector<const JournalEntry*> chosen = ChooseEntries(journal, options.items, unknown);
  if (!unknown.empty()) {
    return Failed(CleanFailure::WrongUse, unknown + ": there is no such item in this session");
  }
  CleanOptions clean{options.target, offline::FolderOf(folder), false};
  clean.target.user.clear();
  CleanOpenResult opened = CleanSession::Open(clean, disk);
  if (opened.session == nullptr) return Failed(opened.failure, opened.error);
  UndoRun run(*opened.session, journal);
  if (run.parts.journal.identity != journal.identity) {
    return Failed(CleanFailure::WrongUse, folder + ": the session is of another Windows");
  }
  // Opening may have finished this very session.
  if (!offline::PathExists(folder + std::string(kCarriedOutFile))) {
    return Failed(CleanFailure::WrongUse, folder + ": the session's changes were never made");
  }
  UndoResult result;
  result.session = journal.info.name;
  for (const JournalEntry* entry : chosen) result.items.push_back(run.Restore(*entry));
  run.parts.journal.info.undoes = journal.info.name;
  AddUndoneMarks(journal, result.items, run.parts.furtherSteps);
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
