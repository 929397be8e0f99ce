// Putting back what a session changed on the running system, one item after the other.
#include <set>

#include "backends/common/content_digest.h"
#include "backends/common/local_file.h"
#include "backends/common/undo_choice.h"
#include "backends/windows/live_parts.h"
#include "backends/windows/reg_force.h"
#include "registry/Stringhelper.h"

namespace scrubwell {
namespace windows {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 28U;

UnicodeView ParentOf(UnicodeView place) {
  const std::size_t slash = place.rfind(u'\\');
  return slash == UnicodeView::npos ? UnicodeView() : place.substr(0, slash);
}

UnicodeView LastOf(UnicodeView place) {
  return place.substr(place.rfind(u'\\') + 1);
}

KeyImage NamedAfter(UnicodeView place) {
  KeyImage image;
  image.name = LastOf(place);
  return image;
}

/// One undo under way.
class LiveUndo {
 public:
  LiveUndo(LiveTools& tools, const Journal& from, std::string backupFolder)
      : tools_(tools), journal_(from), changed_(from), backupFolder_(std::move(backupFolder)) {
    own_.identity = from.identity;
    own_.info.product = from.info.product;
    own_.info.undoes = from.info.name;
  }

  UndoItem Restore(const JournalEntry& entry);
  /// Ends the journal; one sentence when it could not be written.
  std::string Finish();
  /// False when the journal can't be written: then nothing more is to be put back.
  [[nodiscard]] bool CanGoOn() const { return error_.empty(); }

 private:
  struct Answer {
    UndoOutcome outcome = UndoOutcome::Restored;
    std::string why = {};
  };

  Answer RestoreAny(const JournalEntry& entry);
  Answer RestoreKey(const JournalEntry& entry);
  Answer RestoreValue(const JournalEntry& entry);
  Answer TakeKeyAway(const JournalEntry& entry);
  Answer RestoreFile(const JournalEntry& entry);
  Answer RestoreFolder(const JournalEntry& entry);
  Answer RestoreTask(const JournalEntry& entry);
  Answer RestoreUrl(const JournalEntry& entry);
  Answer RestoreFirewall(const JournalEntry& entry);
  Answer WriteContent(const JournalEntry& entry);
  bool Conflicts(const JournalEntry& entry, bool& identical);
  bool KeyConflicts(const RegKey& there, const KeyImage& key, const UnicodeString& path,
                    bool& identical);
  Status EnsureKey(const UnicodeString& path);
  Status RestoreOne(const KeyImage& key, const UnicodeString& path);
  bool Note(const JournalEntry& entry, JournalAction action);
  static Answer Taken(const JournalEntry& entry) {
    return {UndoOutcome::Taken, TakenText(entry.item)};
  }
  static Answer Broken(const JournalEntry& entry, Status status) {
    return {UndoOutcome::Failed, BrokenText(entry.item, status)};
  }
  [[nodiscard]] Answer NotNoted() const { return {UndoOutcome::Failed, error_}; }

  LiveTools& tools_;
  const Journal& journal_;
  ChangedPlaces changed_;
  std::string backupFolder_;
  Journal own_;  // of the undo itself, without its entries
  LiveJournal writer_;
  std::string error_;
  std::size_t noted_ = 0;
  std::vector<std::pair<UnicodeString, KeyImage>> toDress_;  // parents first, without values
  std::vector<const JournalEntry*> folders_;
};

// What undo is about to change stands in its own journal first.
bool LiveUndo::Note(const JournalEntry& entry, JournalAction action) {
  JournalEntry note;
  note.item.id = std::to_string(++noted_);
  note.item.action = action;
  note.item.place = entry.item.place;
  note.item.name = entry.item.name;
  note.path = entry.path;
  note.after.name = entry.item.name;
  if (entry.before) note.after = *entry.before;
  note.digestAfter = entry.digestBefore;
  RegKey key;
  RegValue now;
  if (action == JournalAction::DeleteKey) note.tree.push_back(NamedAfter(entry.path));
  if ((action == JournalAction::SetValue || action == JournalAction::DeleteValue) &&
      OpenPlace(entry.path, KEY_QUERY_VALUE, key) == Status::Ok &&
      key.Value(entry.item.name, now) == Status::Ok)
    note.before = std::move(now);
  if (error_.empty() && !writer_.IsOpen()) error_ = writer_.Open(backupFolder_, own_);
  if (error_.empty()) error_ = writer_.Add(note);
  return error_.empty();
}

// ---- Keys and values -----------------------------------------------------------------------

bool LiveUndo::KeyConflicts(const RegKey& there, const KeyImage& key, const UnicodeString& path,
                            bool& identical) {
  std::vector<RegValue> values;
  TStringList names;
  if (there.Values(values) != Status::Ok || there.Subkeys(names) != Status::Ok) return true;
  if (changed_.ValuesConflict(changed_.At({}, path), key, values, identical)) return true;
  return !std::all_of(names.begin(), names.end(), [&](const UnicodeString& name) {
    return changed_.HasKey(changed_.Below(changed_.At({}, path), name));
  });
}

// Whether something is there that the session did not take away.
bool LiveUndo::Conflicts(const JournalEntry& entry, bool& identical) {
  bool conflict = false;
  identical = true;
  ForEachKey(entry, [&](const KeyImage& key, const UnicodeString& path) {
    RegKey there;
    const Status status = OpenPlace(path, KEY_READ, there);
    if (status == Status::Absent) {
      identical = false;
    } else {
      conflict = conflict || status != Status::Ok || KeyConflicts(there, key, path, identical);
    }
  });
  return conflict;
}

// Keys on the way that went too come back as they were, without their values.
Status LiveUndo::EnsureKey(const UnicodeString& path) {
  std::vector<UnicodeString> missing;
  for (UnicodeView place = path;; place = ParentOf(place)) {
    RegKey there;
    const Status status = OpenPlace(place, KEY_QUERY_VALUE, there);
    if (status == Status::Ok || status == Status::Denied) break;
    if (status != Status::Absent || ParentOf(place).empty()) return status;
    missing.emplace_back(place);
  }
  for (auto place = missing.rbegin(); place != missing.rend(); ++place) {
    JournalEntry created;
    created.item.place = created.path = *place;
    KeyImage like = NamedAfter(*place);
    if (const KeyImage* const image = changed_.Image(changed_.At({}, *place))) like = *image;
    like.values.clear();
    if (!Note(created, JournalAction::CreateKey)) return Status::Unknown;
    RegKey made;
    if (const Status status = CreateLike(*place, like, made); status != Status::Ok) return status;
    toDress_.emplace_back(*place, std::move(like));
  }
  return Status::Ok;
}

Status LiveUndo::RestoreOne(const KeyImage& key, const UnicodeString& path) {
  RegKey opened;
  Status status = OpenPlace(path, KEY_SET_VALUE, opened);
  if (status == Status::Absent) status = CreateLike(path, key, opened);
  for (const RegValue& value : key.values)
    if (status == Status::Ok) status = opened.Put(value);
  if (status != Status::Ok) return status;
  KeyImage look;
  look.security = key.security;
  look.time = key.time;
  toDress_.emplace_back(path, std::move(look));
  return Status::Ok;
}

LiveUndo::Answer LiveUndo::RestoreKey(const JournalEntry& entry) {
  bool identical = false;
  if (Conflicts(entry, identical)) return Taken(entry);
  if (identical) return {UndoOutcome::AlreadyThere};
  if (!Note(entry, JournalAction::CreateKey)) return NotNoted();
  Status status = EnsureKey(UnicodeString(ParentOf(entry.path)));
  ForEachKey(entry, [&](const KeyImage& key, const UnicodeString& path) {
    if (status == Status::Ok) status = RestoreOne(key, path);
  });
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

LiveUndo::Answer LiveUndo::RestoreValue(const JournalEntry& entry) {
  const UnicodeString& name = entry.item.name;
  RegKey key;
  RegValue now;
  Status status = OpenPlace(entry.path, KEY_QUERY_VALUE, key);
  if (status == Status::Ok) status = key.Value(name, now);
  if (status != Status::Ok && status != Status::Absent) return Broken(entry, status);
  const bool isThere = status == Status::Ok;
  const auto holds = [&now](const RegValue& value) {
    return value.type == now.type && value.data == now.data;
  };
  if (isThere ? entry.before && holds(*entry.before) : !entry.before)
    return {UndoOutcome::AlreadyThere};
  const bool isOurs = entry.item.action == JournalAction::SetValue && holds(entry.after);
  if (isThere && !isOurs) return Taken(entry);
  status = EnsureKey(entry.path);
  if (status == Status::Ok &&
      !Note(entry, entry.before ? JournalAction::SetValue : JournalAction::DeleteValue))
    return NotNoted();
  if (status == Status::Ok) status = OpenPlace(entry.path, KEY_SET_VALUE, key);
  if (status == Status::Ok) status = entry.before ? key.Put(*entry.before) : key.EraseValue(name);
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

// A key that the session made goes again when nobody has put anything in it.
LiveUndo::Answer LiveUndo::TakeKeyAway(const JournalEntry& entry) {
  RegKey key;
  KeyInfo info;
  Status status = OpenPlace(entry.path, KEY_QUERY_VALUE, key);
  if (status == Status::Absent) return {UndoOutcome::AlreadyThere};
  if (status == Status::Ok) status = key.Info(info);
  if (status != Status::Ok) return Broken(entry, status);
  if (info.subkeyCount != 0 || info.valueCount != 0) return Taken(entry);
  if (!Note(entry, JournalAction::DeleteKey)) return NotNoted();
  key = {};
  const PlaceParts parts = PartsOf(entry.path);
  status = DeleteTree(parts.root, parts.path, kPlaceView, false);
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

// ---- Files and the rest --------------------------------------------------------------------

LiveUndo::Answer LiveUndo::WriteContent(const JournalEntry& entry) {
  Bytes content;
  if (!ReadLocalFile(ContentFile(journal_.info.folder, entry), content) ||
      !HasDigest(content, entry.digestBefore)) {
    return {UndoOutcome::Failed,
            PlaceText(entry.item) + ": the copy in the session's folder can't be used"};
  }
  if (!Note(entry, JournalAction::WriteFile)) return NotNoted();
  Status status = tools_.files.Write(entry.item.place, content);
  if (status == Status::Ok) status = RestoreMarks(entry.item.place, entry.attributes);
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

LiveUndo::Answer LiveUndo::RestoreFile(const JournalEntry& entry) {
  Bytes now;
  const Status status = tools_.files.Read(entry.item.place, FsView::Physical, kLargestFile, now);
  if (status == Status::Corrupt) return Taken(entry);  // larger than anything that is kept
  if (status != Status::Ok && status != Status::Absent) return Broken(entry, status);
  const bool isThere = status == Status::Ok;
  if (isThere ? entry.existed && HasDigest(now, entry.digestBefore) : !entry.existed)
    return {UndoOutcome::AlreadyThere};
  const bool isOurs =
      entry.item.action == JournalAction::WriteFile && HasDigest(now, entry.digestAfter);
  if (isThere && !isOurs) return Taken(entry);
  if (entry.existed) return WriteContent(entry);
  const Status erased = tools_.files.EraseFile(entry.item.place);
  return erased == Status::Ok ? Answer{} : Broken(entry, erased);
}

LiveUndo::Answer LiveUndo::RestoreFolder(const JournalEntry& entry) {
  FileInfo info;
  Status status = tools_.files.Stat(entry.item.place, FsView::Physical, info);
  if (status == Status::Ok) return info.isFolder ? Answer{UndoOutcome::AlreadyThere} : Taken(entry);
  if (status == Status::Absent) status = MakeFolder(entry.item.place);
  if (status != Status::Ok) return Broken(entry, status);
  folders_.push_back(&entry);
  return {};
}

LiveUndo::Answer LiveUndo::RestoreTask(const JournalEntry& entry) {
  Answer answer = RestoreFile(entry);
  // The scheduler looks at every file that appears there, and holds it for a moment.
  for (int tries = 0; answer.outcome == UndoOutcome::Failed && CanGoOn() && tries < 10; ++tries) {
    Sleep(100);
    answer = RestoreFile(entry);
  }
  if (answer.outcome != UndoOutcome::Restored && answer.outcome != UndoOutcome::AlreadyThere)
    return answer;
  Status status = tools_.tasks.Connect();
  if (status == Status::Ok) status = tools_.tasks.Register(entry.item.name, entry.item.place);
  return status == Status::Ok ? answer : Broken(entry, status);
}

LiveUndo::Answer LiveUndo::RestoreUrl(const JournalEntry& entry) {
  UrlFacts now;
  Status status = tools_.browser.Save(entry.item.place, now);
  if (status == Status::Ok)
    return now == entry.attributes.extended ? Answer{UndoOutcome::AlreadyThere} : Taken(entry);
  if (status == Status::Absent)
    status = tools_.browser.Restore(entry.item.place, entry.attributes.extended);
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

LiveUndo::Answer LiveUndo::RestoreFirewall(const JournalEntry& entry) {
  FirewallFacts now;
  const JournalItem& item = entry.item;
  Status status = tools_.firewall.Connect();
  if (status == Status::Ok) status = tools_.firewall.Save(item.place, now);
  if (status == Status::Ok)
    return now == entry.attributes.extended ? Answer{UndoOutcome::AlreadyThere} : Taken(entry);
  if (status == Status::Absent)
    status = tools_.firewall.Restore(item.place, item.name, entry.attributes.extended);
  return status == Status::Ok ? Answer{} : Broken(entry, status);
}

LiveUndo::Answer LiveUndo::RestoreAny(const JournalEntry& entry) {
  switch (entry.item.action) {
    case JournalAction::DeleteKey:
      return RestoreKey(entry);
    case JournalAction::CreateKey:
      return TakeKeyAway(entry);
    case JournalAction::DeleteValue:
    case JournalAction::SetValue:
      return RestoreValue(entry);
    case JournalAction::EraseFolder:
      return RestoreFolder(entry);
    case JournalAction::RemoveTask:
      return RestoreTask(entry);
    case JournalAction::RemoveUrl:
      return RestoreUrl(entry);
    case JournalAction::RemoveFirewallApplication:
      return RestoreFirewall(entry);
    default:
      return RestoreFile(entry);
  }
}

UndoItem LiveUndo::Restore(const JournalEntry& entry) {
  toDress_.clear();
  Answer answer = RestoreAny(entry);
  // From the innermost out: what is below a key needs no right to it any more.
  for (auto key = toDress_.rbegin(); key != toDress_.rend(); ++key) {
    const Status status = Dress(key->first, key->second);
    if (status != Status::Ok && answer.outcome == UndoOutcome::Restored)
      answer = {UndoOutcome::Failed, PlaceText(entry.item) + ": its rights can't be set again"};
  }
  return {entry.item, answer.outcome, answer.why};
}

std::string LiveUndo::Finish() {
  // What was put into them meanwhile has touched their times.
  for (const JournalEntry* const folder : folders_)
    (void)RestoreMarks(folder->item.place, folder->attributes);
  if (!writer_.IsOpen()) return error_;
  const std::string why = writer_.Close();
  return error_.empty() ? why : error_;
}

}  // namespace
}  // namespace windows

namespace {

UndoResult Failed(CleanFailure failure, std::string error) {
  UndoResult result;
  result.failure = failure;
  result.error = std::move(error);
  return result;
}

// Empty when the session can be put back on this system.
std::string WhyNotUndo(const Journal& journal, IRegistry& registry) {
  if (!journal.live)
    return journal.info.folder + ": the session was made on a Windows that was switched off";
  if (journal.identity != windows::IdentityOf(registry))
    return journal.info.folder + ": the session is of another Windows";
  return {};
}

}  // namespace

UndoResult UndoLive(const UndoOptions& options) {
  return UndoLive(options, windows::ComFactories{});
}

UndoResult UndoLive(const UndoOptions& options, windows::ComFactories factories) {
  std::string error;
  const std::string folder = SessionFolder(options.backupFolder, options.session, error);
  if (folder.empty()) return Failed(CleanFailure::WrongUse, error);
  const Journal journal = LoadJournal(folder);
  if (!journal.info.error.empty()) return Failed(CleanFailure::Unreadable, journal.info.error);
  std::string unknown;
  const auto chosen = ChooseEntries(journal, options.items, unknown);
  if (!unknown.empty())
    return Failed(CleanFailure::WrongUse, unknown + ": there is no such item in this session");
  windows::LiveTools tools(std::move(factories));
  const std::string why = WhyNotUndo(journal, tools.registry);
  if (!why.empty()) return Failed(CleanFailure::WrongUse, why);
  windows::LiveLock lock;
  if (!lock.Take())
    return Failed(CleanFailure::Refused, "another Scrubwell is at work on this system");
  UndoResult result;
  result.session = journal.info.name;
  const std::string backups = folder.substr(0, folder.rfind('/'));
  windows::LiveUndo undo(tools, journal, backups);
  bool isStopped = false;
  for (const JournalEntry* entry : chosen) {
    isStopped =
        isStopped || (options.progress && !options.progress(result.items.size(), chosen.size()));
    if (isStopped) break;
    if (undo.CanGoOn()) result.items.push_back(undo.Restore(*entry));
  }
  result.error = undo.Finish();
  const std::string marked = windows::WriteUndone(journal, UndoneIds(result.items));
  if (result.error.empty()) result.error = marked;
  if (!result.error.empty()) result.failure = CleanFailure::Unfinished;
  if (result.error.empty() && isStopped) {
    result.failure = CleanFailure::Stopped;
    result.error = "stopped; what had been put back until then stays";
  }
  return result;
}

}  // namespace scrubwell
