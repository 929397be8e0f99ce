// One planned change after the other: looked at again, written down, made.
#include "backends/common/content_digest.h"
#include "backends/common/undo_choice.h"
#include "backends/windows/live_parts.h"
#include "backends/windows/reg_force.h"
#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 28U;

Status Same(bool isSame) {
  return isSame ? Status::Ok : Status::Absent;
}

Status SameTree(LiveTools& tools, const JournalEntry& entry) {
  std::vector<KeyImage> now;
  const Status status = tools.places.TreeOf(entry.path, now);
  return status == Status::Ok ? Same(SameTrees(entry.tree, now)) : status;
}

Status SameValue(const JournalEntry& entry) {
  RegKey key;
  RegValue now;
  Status status = OpenPlace(entry.path, KEY_QUERY_VALUE, key);
  if (status != Status::Ok) return status;
  status = key.Value(entry.item.name, now);
  if (status == Status::Absent) return Same(!entry.before.has_value());
  if (status != Status::Ok) return status;
  return Same(entry.before && entry.before->type == now.type && entry.before->data == now.data);
}

Status NoKeyYet(const JournalEntry& entry) {
  RegKey key;
  const Status status = OpenPlace(entry.path, KEY_QUERY_VALUE, key);
  return status == Status::Absent ? Status::Ok : status == Status::Ok ? Status::Absent : status;
}

Status SameFile(LiveTools& tools, const JournalEntry& entry) {
  Bytes now;
  const Status status = tools.files.Read(entry.item.place, FsView::Physical, kLargestFile, now);
  if (status == Status::Absent) return Same(!entry.existed);
  if (status != Status::Ok) return status == Status::Corrupt ? Status::Absent : status;
  return Same(entry.existed && HasDigest(now, entry.digestBefore));
}

Status EmptyFolder(LiveTools& tools, const JournalEntry& entry) {
  std::vector<DirEntry> entries;
  const Status status = tools.files.List(entry.item.place, FsView::Physical, entries);
  return status == Status::Ok ? Same(entries.empty()) : status;
}

template <class Facts>
Status SameFacts(Status status, const Facts& now, const JournalEntry& entry) {
  return status == Status::Ok ? Same(now == entry.attributes.extended) : status;
}

// What can't be made again below its parent must not go.
Status CanComeBack(const JournalEntry& entry) {
  RegKey parent;
  const UnicodeView place = entry.path;
  const Status status = OpenPlace(place.substr(0, place.rfind(u'\\')), KEY_CREATE_SUB_KEY, parent);
  return status == Status::Absent ? Status::Ok : status;  // one that the plan itself makes
}

Status CompleteTask(LiveTools& tools, JournalEntry& entry) {
  Status status = tools.tasks.Connect();
  if (status == Status::Ok) status = tools.tasks.FileOf(entry.item.name, entry.item.place);
  if (status == Status::Ok)
    status = tools.files.Read(entry.item.place, FsView::Physical, kLargestFile, entry.content);
  if (status == Status::Ok) status = SaveMarks(entry.item.place, entry.attributes);
  entry.digestBefore = ContentDigest(entry.content);
  entry.item.bytes = entry.content.size();
  return status;
}

Status RemoveFromFirewall(LiveTools& tools, UnicodeView file) {
  Status status = tools.firewall.Connect();
  if (status == Status::Ok) status = tools.firewall.Remove(file);
  if (status == Status::Ok) return status;
  // Some entries are let go only when they are switched off.
  if (tools.firewall.SetEnabled(file, false) != Status::Ok) return status;
  const Status second = tools.firewall.Remove(file);
  if (second != Status::Ok) tools.firewall.SetEnabled(file, true);
  return second;
}

Status CarryRegistry(const PlannedChange& change) {
  const JournalEntry& entry = change.entry;
  const PlaceParts parts = PartsOf(entry.path);
  RegKey key;
  if (parts.root == nullptr) return Status::Unknown;
  if (entry.item.action == JournalAction::DeleteKey)
    return DeleteTree(parts.root, parts.path, kPlaceView, change.force);
  if (entry.item.action == JournalAction::CreateKey)
    return key.Create(parts.root, parts.path, KEY_QUERY_VALUE | kPlaceView);
  const Status status = OpenPlace(entry.path, KEY_SET_VALUE, key);
  if (status != Status::Ok) return status;
  if (entry.item.action == JournalAction::DeleteValue) return key.EraseValue(entry.item.name);
  return key.Put({entry.item.name, entry.after.type, entry.after.data});
}

}  // namespace

Status Complete(LiveTools& tools, PlannedChange& change) {
  JournalEntry& entry = change.entry;
  switch (entry.item.action) {
    case JournalAction::DeleteKey:
      return CanComeBack(entry);
    case JournalAction::EraseFile:
    case JournalAction::EraseFolder:
    case JournalAction::WriteFile:
    case JournalAction::KeepFile: {
      const Status status = SaveMarks(entry.item.place, entry.attributes);
      // A file that an earlier change of the plan makes is not there yet.
      if (status == Status::Absent) return Status::Ok;
      if (status != Status::Ok || entry.item.action == JournalAction::KeepFile) return status;
      return MayErase(entry.item.place);
    }
    case JournalAction::RemoveTask:
      entry.existed = true;
      return CompleteTask(tools, entry);
    case JournalAction::RemoveUrl:
      return tools.browser.Save(entry.item.place, entry.attributes.extended);
    case JournalAction::RemoveFirewallApplication: {
      const Status status = tools.firewall.Connect();
      return status == Status::Ok ? tools.firewall.Save(entry.item.place, entry.attributes.extended)
                                  : status;
    }
    default:
      return Status::Ok;
  }
}

Status Unchanged(LiveTools& tools, const PlannedChange& change) {
  const JournalEntry& entry = change.entry;
  switch (entry.item.action) {
    case JournalAction::DeleteKey:
      return SameTree(tools, entry);
    case JournalAction::DeleteValue:
    case JournalAction::SetValue:
      return SameValue(entry);
    case JournalAction::CreateKey:
      return NoKeyYet(entry);
    case JournalAction::EraseFolder:
      return EmptyFolder(tools, entry);
    case JournalAction::RemoveUrl: {
      UrlFacts now;
      const Status status = tools.browser.Save(entry.item.place, now);
      return SameFacts(status, now, entry);
    }
    case JournalAction::RemoveFirewallApplication: {
      FirewallFacts now;
      const Status status = tools.firewall.Save(entry.item.place, now);
      return SameFacts(status, now, entry);
    }
    default:
      return SameFile(tools, entry);
  }
}

Status Carry(LiveTools& tools, const PlannedChange& change) {
  const JournalItem& item = change.entry.item;
  switch (item.action) {
    case JournalAction::WriteFile:
      return tools.files.Write(item.place, change.data);
    case JournalAction::EraseFile:
      return tools.files.EraseFile(item.place);
    case JournalAction::EraseFolder:
      return tools.files.EraseFolder(item.place);
    case JournalAction::KeepFile:
      return Status::Ok;
    case JournalAction::RemoveTask:
      return tools.tasks.Remove(item.name);
    case JournalAction::RemoveUrl:
      return tools.browser.RemoveUrl(item.place);
    case JournalAction::RemoveFirewallApplication:
      return RemoveFromFirewall(tools, item.place);
    default:
      return CarryRegistry(change);
  }
}

// One sentence when the journal can't be written, so that nothing more may be changed.
std::string LiveSession::MakeChange(PlannedChange& change, LiveJournal& writer,
                                    CommitResult& result) {
  const JournalItem& item = change.entry.item;
  const auto note = [&](const char* what) { result.notes.push_back(PlaceText(item) + what); };
  const Status before = Unchanged(tools_, change);
  if (before != Status::Ok) {
    if (before == Status::Absent) note(": has changed since it was looked at, and was left alone");
    if (before != Status::Absent) result.notes.push_back(BrokenText(item, before));
    return {};
  }
  if (std::string why = writer.Add(change.entry); !why.empty()) return why;
  const Status status = Carry(tools_, change);
  if (status == Status::Ok) return {};
  // Of a key some may be gone; that must be there to be put back.
  if (Unchanged(tools_, change) != Status::Ok) {
    note(": only a part of it could be removed");
    return {};
  }
  result.notes.push_back(BrokenText(item, status));
  return writer.Drop(change.entry);
}

CommitResult LiveSession::Commit() {
  CommitResult result;
  if (options_.dryRun || isCommitted_) {
    result.failure = CleanFailure::WrongUse;
    result.error = options_.dryRun ? "a dry run can't be committed" : "it was committed before";
    return result;
  }
  isCommitted_ = true;
  if (plan_.empty()) return result;
  LiveJournal writer;
  result.error = writer.Open(backupFolder_, journal_);
  if (!result.error.empty()) {
    result.failure = CleanFailure::NotWritten;
    if (writer.IsOpen()) writer.Close();
    return result;
  }
  for (PlannedChange& change : plan_) {
    result.error = MakeChange(change, writer, result);
    if (!result.error.empty()) break;
    change = {};  // large contents are needed no longer
  }
  if (result.error.empty()) result.error = writer.Close();
  if (writer.Entries() != 0) {
    result.session = writer.Name();
    result.folder = writer.Folder();
  }
  if (!result.error.empty())
    result.failure = writer.Entries() == 0 ? CleanFailure::NotWritten : CleanFailure::Unfinished;
  return result;
}

}  // namespace scrubwell::windows
