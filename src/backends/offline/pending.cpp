#include "backends/offline/pending.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "backends/common/content_digest.h"

namespace scrubwell::offline {
namespace {

using State = PendingCommit::State;
using Kind = CommitStep::Kind;

constexpr std::uint64_t kLargestRecord = std::uint64_t{1} << 28U;

std::string_view TextOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Who works with the rights of another by sudo keeps his sessions in his own folder.
bool IsUs(uid_t owner) {
  if (owner == ::geteuid()) return true;
  const char* const caller = ::geteuid() == 0 ? std::getenv("SUDO_UID") : nullptr;
  return caller != nullptr && std::to_string(owner) == caller;
}

DiskPlace In(const DiskPlace& session, std::string_view file) {
  return session / file.substr(1);
}

bool IsUnderWay(const DiskPlace& session) {
  return In(session, kCarryingOutFile).Exists() || In(session, kCarriedOutFile).Exists();
}

// Whether the session's record is the one on the disk. One that was only being prepared may be cut:
// it was not flushed yet, so that nothing has been written beside any file either.
bool HasRecord(const DiskPlace& session, const Bytes& found, bool isPreparing, Bytes& own) {
  if (ReadWholeFile(In(session, kRecordFile), own, kLargestRecord) != 0) return false;
  if (own == found) return true;
  return isPreparing && found.size() < own.size() &&
         std::equal(found.begin(), found.end(), own.begin());
}

// Reads the record as it lies on the disk. A larger one than ours can be is not ours.
bool ReadRecord(const DiskPlace& record, Bytes& out) {
  return ReadWholeFile(record, out, kLargestRecord) == 0;
}

// The folder that the record itself names as its session's, if it is one of the user's: then it is
// for him to say that it is to be trusted.
std::string OwnFolderElsewhere(const PendingQuestion& question, const Bytes& found) {
  JsonLines lines(TextOf(found));
  JsonValue head;
  if (!lines.Next(head)) return {};
  const std::string named = head.Raw("session");
  const std::size_t slash = named.rfind('/');
  if (!named.starts_with('/') || slash == 0 || named.find('\0') != std::string::npos) return {};
  DiskRoot root;
  if (OpenRoot(named.substr(0, slash), root) != 0) return {};
  if (question.backups != nullptr && root.path == question.backups->path) return {};
  for (char16_t letter = u'A'; letter <= u'Z'; ++letter) {
    const Drive* const drive = question.drives->Get(letter);
    if (drive != nullptr && (root.path + "/").starts_with(drive->root.path + "/")) return {};
  }
  const DiskPlace session(root, named.substr(slash + 1));
  Bytes own;
  const bool isOurs = WhyNotOurs(DiskPlace(root)).empty() && WhyNotOurs(session).empty() &&
                      IsUnderWay(session) && HasRecord(session, found, false, own);
  return isOurs ? root.path : std::string();
}

class Search {
 public:
  Search(const PendingQuestion& question, PendingCommit& out) : question_(question), out_(out) {}

  void Run(bool isPreparing) {
    isPreparing_ = isPreparing;
    out_.record = question_.config / (isPreparing ? kPreparingName : kPendingName);
    out_.plan.config = question_.config;
    out_.state = State::Foreign;
    Bytes found;
    if (!ReadRecord(out_.record, found)) return;
    if (question_.backups != nullptr && WhyNotOurs(DiskPlace(*question_.backups)).empty()) {
      LookThrough(found);
    }
    if (out_.state != State::Foreign) return;
    const std::string elsewhere = OwnFolderElsewhere(question_, found);
    if (elsewhere.empty()) return;
    out_.state = State::Elsewhere;
    out_.error = out_.record.Text() + ": the session of the interrupted clean lies in " +
                 elsewhere + "; name that folder as the backup folder";
  }

 private:
  void LookThrough(const Bytes& found) {
    std::vector<std::string> names;
    if (ListNames(DiskPlace(*question_.backups), names) != 0) return;
    for (const std::string& name : names) {
      const DiskPlace session(*question_.backups, name);
      Bytes own;
      if (!IsUnderWay(session) || !HasRecord(session, found, isPreparing_, own)) continue;
      if (WhyNotOurs(session).empty() && IsOfThisWindows(session)) return Take(session, own);
    }
  }
  bool IsOfThisWindows(const DiskPlace& session) const {
    const Journal journal = LoadJournal(session.Text());
    return journal.info.error.empty() && journal.identity == question_.identity;
  }
  void Take(const DiskPlace& session, const Bytes& record) {
    out_.plan.session = session;
    const bool good =
        ParseRecord(TextOf(record), *question_.drives, *question_.backups, out_.plan, out_.error);
    out_.state = !good ? State::Unreadable : isPreparing_ ? State::Preparing : State::Committed;
  }

  const PendingQuestion& question_;
  PendingCommit& out_;
  bool isPreparing_ = false;
};

// A session's folder: files, and folders of files.
void EraseAll(IDisk& disk, const DiskPlace& folder, int level) {
  std::vector<std::string> names;
  if (level > 2 || ListNames(folder, names) != 0) return;
  for (const std::string& name : names) {
    struct stat info {};
    const DiskPlace place = folder / name;
    if (place.Stat(info) != 0) continue;
    if (S_ISDIR(info.st_mode)) {
      EraseAll(disk, place, level + 1);
    } else {
      disk.EraseFile(place);
    }
  }
  disk.EraseFolder(folder);
}

// A name beside the record's own that is free.
DiskPlace AsideOf(const DiskPlace& record) {
  DiskPlace aside = record.WithEnding(".set-aside");
  for (int i = 2; aside.Exists(); ++i) aside = record.WithEnding(".set-aside-" + std::to_string(i));
  return aside;
}

CommitOutcome SetAside(IDisk& disk, const DiskPlace& record) {
  const DiskPlace aside = AsideOf(record);
  int error = disk.Rename(record, aside);
  if (error == 0) error = disk.Sync(record.Folder());
  if (error != 0) {
    return {CommitFailure::Unfinished, ErrnoSentence(record.Text(), error), {}};
  }
  return {CommitFailure::None,
          {},
          {record.Text() +
           ": no session in the backup folder knows this record of an interrupted "
           "clean; it was set aside as " +
           aside.Name() + " and nothing of it was carried out"}};
}

}  // namespace

std::string WhyNotOurs(const DiskPlace& folder) {
  struct stat info {};
  const UniqueFd fd = folder.Open(O_PATH | O_DIRECTORY);
  if (!fd.Good() || ::fstat(fd.Get(), &info) != 0) return ErrnoSentence(folder.Text(), errno);
  if (!IsUs(info.st_uid)) return folder.Text() + ": the folder belongs to another user";
  const bool isOpen = (info.st_mode & (S_IWGRP | S_IWOTH)) != 0 && (info.st_mode & S_ISVTX) == 0;
  return isOpen ? folder.Text() + ": other users may write into the folder" : std::string();
}

PendingCommit FindPending(const PendingQuestion& question) {
  PendingCommit pending;
  Search search(question, pending);
  if ((question.config / kPendingName).Exists()) {
    search.Run(false);
  } else if ((question.config / kPreparingName).Exists()) {
    search.Run(true);
  }
  return pending;
}

bool FinishedView(const PendingCommit& pending, std::set<std::string>& hives,
                  FileChanges& changes) {
  for (const CommitStep& step : pending.plan.steps) {
    if (step.letter == 0) continue;
    FileChange change;
    switch (step.kind) {
      case Kind::Replace:
        if (!step.Side().Exists()) continue;
        if (ReadWholeFile(step.Side(), change.data) != 0 ||
            !HasDigest(change.data, step.digestAfter)) {
          return false;
        }
        hives.insert(step.place.Text());
        // Hives are only read through the replacements.
        if (change.data.size() >= 4 && std::memcmp(change.data.data(), "regf", 4) == 0) continue;
        break;
      case Kind::Erase:
        change.kind = FileChange::Kind::Erased;
        break;
      case Kind::EraseFolder:
        change.kind = FileChange::Kind::FolderErased;
        break;
      default:
        continue;
    }
    changes[step.place.Text()] = std::move(change);
  }
  return true;
}

CommitOutcome SettlePending(IDisk& disk, PendingCommit& pending) {
  switch (pending.state) {
    case State::None:
      break;
    case State::Preparing: {
      CommitOutcome outcome = TakeBackCommit(disk, pending.plan);
      // A session that never came to its commit is of no use to anybody.
      if (outcome.failure == CommitFailure::None) EraseAll(disk, pending.plan.session, 0);
      return outcome;
    }
    case State::Committed:
      return FinishCommit(disk, pending.plan);
    case State::Foreign:
      return SetAside(disk, pending.record);
    case State::Elsewhere:
    case State::Unreadable:
      return {CommitFailure::Unfinished, pending.error, {}};
  }
  return {};
}

}  // namespace scrubwell::offline
