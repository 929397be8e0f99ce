#include "backends/offline/clean_session.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "backends/common/content_digest.h"
#include "backends/common/written.h"
#include "backends/offline/guards.h"
#include "backends/offline/registry_read.h"
#include "backends/offline/session_parts.h"

namespace scrubwell {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestFile = std::size_t{1} << 30U;

CleanOpenResult Failed(CleanFailure failure, std::string error) {
  return {nullptr, failure, std::move(error)};
}

CleanFailure FailureOf(OpenFailure failure) {
  return failure == OpenFailure::WrongUse ? CleanFailure::WrongUse : CleanFailure::Unreadable;
}

JournalAction ActionOf(ChangeKind kind) {
  switch (kind) {
    case ChangeKind::CreateKey:
      return JournalAction::CreateKey;
    case ChangeKind::SetValue:
      return JournalAction::SetValue;
    case ChangeKind::DeleteKey:
      return JournalAction::DeleteKey;
    case ChangeKind::DeleteValue:
      break;
  }
  return JournalAction::DeleteValue;
}

constexpr std::uint64_t kMostTimesTheHive = 4;
constexpr std::uint64_t kSmallHive = std::uint64_t{1} << 20U;

std::uint64_t SizeOf(const KeyImage& key) {
  std::uint64_t size = sizeof key + key.security.size() + 2 * key.className.size();
  for (const RegValue& value : key.values) size += sizeof value + value.data.size();
  return size;
}

// Copies a key with all below it. Corrupt when any of it can't be read.
Status TakeKeyImage(const regf::Hive& hive, regf::CellOffset start, std::vector<KeyImage>& out) {
  out.clear();
  Status worst = Status::Ok;
  const auto note = [&worst](Status status) {
    if (status != Status::Ok && status != Status::Absent) worst = status;
  };
  // Keys may share what they have; written down for each of them it must not outgrow the hive.
  std::uint64_t room = kMostTimesTheHive * hive.Image().size() + kSmallHive;
  note(hive.Walk(start, [&](const regf::Subkey& subkey, int level) {
    if (room == 0) return note(Status::Corrupt);
    KeyImage& key = out.emplace_back();
    key.level = static_cast<std::uint32_t>(level);
    key.name = subkey.facts.name.Text();
    key.time = subkey.facts.lastWritten;
    key.link = subkey.facts.IsLink();
    note(hive.ClassName(subkey.key, key.className));
    regf::ByteView security;
    note(hive.Security(subkey.key, security));
    key.security.assign(security.begin(), security.end());
    note(hive.Values(subkey.key, key.values));
    room -= std::min<std::uint64_t>(room, SizeOf(key));
  }));
  return out.empty() && worst == Status::Ok ? Status::Corrupt : worst;
}

std::uint64_t TimeOfParent(const regf::Hive& hive, regf::CellOffset key) {
  regf::KeyFacts facts;
  if (hive.Key(key, facts) != Status::Ok || hive.Key(facts.parent, facts) != Status::Ok) return 0;
  return facts.lastWritten;
}

// The value as it is spelled in the hive, and where it stands. False when that can't be read.
bool KeepValue(const regf::Hive& hive, regf::CellOffset key, JournalEntry& entry) {
  regf::KeyFacts facts;
  regf::ValueFacts found;
  if (hive.Key(key, facts) != Status::Ok) return false;
  entry.keyTime = facts.lastWritten;
  const Status status = hive.FindValue(key, entry.item.name, found);
  if (status != Status::Ok) return status == Status::Absent;
  RegValue before{found.name.Text(), found.type, {}};
  if (hive.Data(found, before.data) != Status::Ok) return false;
  entry.valuePlace = found.place;
  entry.item.bytes = before.data.size();
  entry.item.name = before.name;
  entry.before = std::move(before);
  return true;
}

bool IsBelow(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder.back() == '/' ? folder : folder + "/");
}

}  // namespace

// ---- Recording ----------------------------------------------------------------------------

JournalEntry& CleanSession::Parts::Add(JournalEntry entry) {
  entry.item.id = std::to_string(journal.entries.size() + 1);
  entry.item.problem = problem;
  items.push_back(entry.item);
  journal.entries.push_back(std::move(entry));
  return journal.entries.back();
}

std::string CleanSession::Parts::WhyNotChange(const offline::RegfHive& hive) {
  if (World().drives.IsGiven(hive.Place().Root())) return offline::WhyHiveUnfit(hive);
  return ToUtf8(hive.Path()) + ": lies on a drive that was not named, where nothing is changed";
}

bool CleanSession::Parts::BeforeChange(const RegistryChange& change) {
  auto& hive = static_cast<offline::RegfHive&>(*change.hive);
  std::string why = WhyNotChange(hive);
  if (!why.empty() || hive.Edit(why) == nullptr) {
    World().notes.Note(FromUtf8(why));
    return false;
  }
  JournalEntry entry;
  entry.hive = hive.Path();
  entry.path = change.path;
  entry.item.action = ActionOf(change.kind);
  entry.item.place = UnicodeString(change.mount);
  if (!change.path.empty()) entry.item.place += u'\\' + UnicodeString(change.path);
  if (change.kind == ChangeKind::DeleteKey) {
    entry.keyTime = TimeOfParent(hive.Raw(), change.key);
    if (TakeKeyImage(hive.Raw(), change.key, entry.tree) != Status::Ok) return false;
    entry.item.subkeys = entry.tree.size() - 1;
    for (const KeyImage& key : entry.tree) entry.item.values += key.values.size();
  } else if (change.kind != ChangeKind::CreateKey) {
    entry.item.name = change.name;
    if (!KeepValue(hive.Raw(), change.key, entry)) return false;
    if (change.value != nullptr) entry.after = *change.value;
  }
  // A deleted value that is put back as absent still has a name.
  if (change.kind == ChangeKind::DeleteValue) entry.after.name = change.name;
  NoteWritten(entry, nullptr, nullptr);
  Add(std::move(entry));
  isAnnounced = true;
  return true;
}

void CleanSession::Parts::ChangeDone(Status status) {
  if (isAnnounced && status != Status::Ok) {
    journal.entries.pop_back();
    items.pop_back();
  }
  isAnnounced = false;
}

bool CleanSession::Parts::BeforeFileChange(JournalAction action, const offline::FileTarget& target,
                                           const Bytes* data) {
  JournalEntry entry;
  entry.item.action = action;
  entry.item.place = target.path;
  entry.existed = target.exists;
  if (target.exists && !target.isFolder) {
    const Status status =
        World().files.Read(target.path, FsView::Physical, kLargestFile, entry.content);
    if (status != Status::Ok) return false;
    entry.item.bytes = entry.content.size();
    entry.digestBefore = ContentDigest(entry.content);
  }
  if (data != nullptr) entry.digestAfter = ContentDigest(*data);
  // What can't be read now could not be put back.
  const int error =
      target.place.Exists() ? offline::ReadAttributes(target.place, entry.attributes) : 0;
  if (error != 0) {
    World().notes.Note(FromUtf8(offline::ErrnoSentence(target.local, error)) +
                       u"; it is left as it is");
    return false;
  }
  NoteWritten(entry, data, &World().world->text);
  Add(std::move(entry));
  return true;
}

// ---- Opening ------------------------------------------------------------------------------

CleanOpenResult CleanSession::Parts::OpenBackend() {
  OfflineOpenResult opened = options.dryRun ? OfflineBackend::Open(options.target)
                                            : offline::BackendAccess::OpenAsIs(options.target);
  if (opened.backend == nullptr) return Failed(FailureOf(opened.failure), opened.error);
  backend = std::move(opened.backend);
  config = World().ConfigFolder();
  return {};
}

CleanOpenResult CleanSession::Parts::ChooseBackupFolder() {
  const bool isDefault = options.backupFolder.empty();
  const std::string wanted = isDefault ? DefaultBackupFolder() : options.backupFolder;
  if (wanted.empty()) return Failed(CleanFailure::WrongUse, "there is no folder for backups");
  std::error_code ignored;
  const fs::path whole = fs::absolute(wanted, ignored);
  if (!ignored) backupFolder = fs::weakly_canonical(whole, ignored).string();
  if (ignored) {
    return Failed(CleanFailure::WrongUse, wanted + ": " + ignored.message());
  }
  if (backupFolder.size() > 1 && backupFolder.back() == '/') backupFolder.pop_back();
  const auto& installation = World().installation;
  if (isDefault && IsBelow(backupFolder, World().drives.Get(installation.Letter())->root.path)) {
    return Failed(CleanFailure::WrongUse,
                  backupFolder + ": lies on the Windows volume itself; choose another folder");
  }
  fs::path there = backupFolder;
  while (!fs::exists(fs::symlink_status(there, ignored))) there = there.parent_path();
  if (!fs::is_directory(there, ignored) || ::access(there.c_str(), W_OK) != 0) {
    return Failed(CleanFailure::WrongUse, backupFolder + ": backups can't be written there");
  }
  if (offline::OpenRoot(backupFolder, backups) != 0) return {};
  // After an interruption nothing would be taken from there.
  const std::string why = offline::WhyNotOurs(offline::DiskPlace(backups));
  return why.empty() ? CleanOpenResult{}
                     : Failed(CleanFailure::WrongUse, why + "; choose another backup folder");
}

std::string CleanSession::Parts::OpenBackups() {
  if (backups.folder.Good()) return {};
  std::vector<fs::path> missing;
  std::error_code ignored;
  for (fs::path folder = backupFolder; !fs::exists(folder, ignored);
       folder = folder.parent_path()) {
    missing.push_back(folder);
  }
  for (auto folder = missing.rbegin(); folder != missing.rend(); ++folder) {
    if (::mkdir(folder->c_str(), 0700) != 0) return offline::ErrnoSentence(*folder, errno);
    const offline::UniqueFd parent(
        ::open(folder->parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (parent.Good()) ::fsync(parent.Get());
  }
  const int error = offline::OpenRoot(backupFolder, backups);
  return error == 0 ? std::string() : offline::ErrnoSentence(backupFolder, error);
}

namespace {

CleanFailure FailureOf(const offline::PendingCommit& pending, offline::CommitFailure failure) {
  using State = offline::PendingCommit::State;
  if (failure == offline::CommitFailure::None) return CleanFailure::None;
  if (pending.state == State::Elsewhere) return CleanFailure::WrongUse;
  return pending.state == State::Unreadable ? CleanFailure::Unreadable : CleanFailure::Unfinished;
}

}  // namespace

CleanOpenResult CleanSession::Parts::SettleInterrupted() {
  using State = offline::PendingCommit::State;
  offline::PendingCommit pending =
      offline::FindPending({config, &World().drives, backups.folder.Good() ? &backups : nullptr,
                            offline::IdentityOf(World().installation)});
  if (pending.state == State::None) return {};
  const offline::CommitOutcome outcome = offline::SettlePending(disk, pending);
  const CleanFailure failure = FailureOf(pending, outcome.failure);
  if (failure != CleanFailure::None) return Failed(failure, outcome.error);
  if (pending.state != State::Foreign) {
    if (CleanOpenResult opened = OpenBackend(); opened.failure != CleanFailure::None) return opened;
    World().notes.Note(pending.state == State::Committed
                           ? u"An earlier clean that was interrupted has been finished"
                           : u"An earlier clean that was interrupted has been taken back");
  }
  for (const std::string& note : outcome.notes) World().notes.Note(FromUtf8(note));
  return {};
}

std::string CleanSession::Parts::WhyNotSafe() {
  auto& world = World();
  std::string why = offline::WhyNotHibernated(
      world.files, UnicodeView(world.installation.systemRoot).substr(0, 2));
  if (why.empty()) why = offline::WhyFolderUnfit(config);
  for (const auto& hive : world.hives.All()) {
    if (why.empty()) why = offline::WhyHiveUnfit(*hive);
  }
  return why;
}

void CleanSession::Parts::BeginRecording() {
  auto& world = World();
  world.world->registry.SetObserver(this);
  world.files.AllowChanges(*this);
  world.hives.AllowChanges([this](Status status) { ChangeDone(status); });
  journal.identity = offline::IdentityOf(world.installation);
  // An undo may be asked for from anywhere.
  std::error_code error;
  const auto target = std::filesystem::absolute(options.target.folder, error);
  journal.info.target = error ? options.target.folder : target.lexically_normal().string();
  journal.info.product = world.installation.productName;
}

CleanOpenResult CleanSession::Open(const CleanOptions& options, offline::IDisk* disk) {
  auto parts = std::make_unique<Parts>(options, disk);
  CleanOpenResult result = parts->OpenBackend();
  if (result.failure != CleanFailure::None) return result;
  if (!options.dryRun) {
    const std::string why = offline::LockFolder(parts->config, parts->lock);
    if (!why.empty()) return Failed(CleanFailure::Refused, why);
    result = parts->ChooseBackupFolder();
    // Nobody may write to what is mounted read-only, not even to finish something.
    const std::string unfit = offline::WhyFolderUnfit(parts->config);
    if (!unfit.empty()) return Failed(CleanFailure::Refused, unfit);
    if (result.failure == CleanFailure::None) result = parts->SettleInterrupted();
    if (result.failure != CleanFailure::None) return result;
  }
  const std::string why = parts->WhyNotSafe();
  if (!why.empty() && !options.dryRun) return Failed(CleanFailure::Refused, why);
  if (!why.empty()) parts->World().notes.Note(u"A clean would be refused: " + FromUtf8(why));
  parts->BeginRecording();
  return {
      std::unique_ptr<CleanSession>(new CleanSession(std::move(parts))), CleanFailure::None, {}};
}

CleanSession::CleanSession(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}
CleanSession::~CleanSession() = default;

OfflineBackend& CleanSession::Backend() {
  return *parts_->backend;
}
void CleanSession::BeginRound() {
  parts_->World().world->registry.ForgetDeletions();
}
void CleanSession::BeginProblem(const JournalProblem& problem) {
  parts_->problem = parts_->journal.problems.size();
  parts_->journal.problems.push_back(problem);
}
void CleanSession::EndProblem(bool fixed) {
  if (parts_->problem != JournalItem::NoProblem) {
    parts_->journal.problems[parts_->problem].fixed = fixed;
  }
  parts_->problem = JournalItem::NoProblem;
}
const std::vector<JournalProblem>& CleanSession::Problems() const {
  return parts_->journal.problems;
}
const std::vector<JournalItem>& CleanSession::Items() const {
  return parts_->items;
}
CommitResult CleanSession::Commit() {
  return parts_->Commit();
}

RecoverResult CleanSession::Parts::Recover() {
  RecoverResult result;
  const auto fail = [&result](CleanFailure failure, std::string error) {
    result.failure = failure;
    result.error = std::move(error);
    return result;
  };
  config = World().ConfigFolder();
  std::string why = offline::LockFolder(config, lock);
  if (why.empty()) why = offline::WhyFolderUnfit(config);
  if (!why.empty()) return fail(CleanFailure::Refused, why);
  const std::string folder =
      options.backupFolder.empty() ? DefaultBackupFolder() : options.backupFolder;
  const int error = offline::OpenRoot(folder, backups);
  if (error != 0 && !options.backupFolder.empty()) {
    return fail(CleanFailure::WrongUse, offline::ErrnoSentence(folder, error));
  }
  offline::PendingCommit pending =
      offline::FindPending({config, &World().drives, error == 0 ? &backups : nullptr,
                            offline::IdentityOf(World().installation)});
  using State = offline::PendingCommit::State;
  if (pending.state == State::Foreign && error == 0) {
    // Its session may lie there all the same, and must not be lost for that.
    why = offline::WhyNotOurs(offline::DiskPlace(backups));
    if (!why.empty()) return fail(CleanFailure::WrongUse, why + "; choose another backup folder");
  }
  offline::CommitOutcome outcome = offline::SettlePending(disk, pending);
  result.notes = std::move(outcome.notes);
  using Outcome = RecoverResult::Outcome;
  result.outcome = pending.state == State::Committed   ? Outcome::Completed
                   : pending.state == State::Preparing ? Outcome::RolledBack
                   : pending.state == State::Foreign   ? Outcome::SetAside
                                                       : Outcome::NothingToDo;
  return fail(FailureOf(pending, outcome.failure), outcome.error);
}

RecoverResult Recover(const TargetOptions& target, const std::string& backupFolder,
                      offline::IDisk* disk) {
  TargetOptions options = target;
  options.user.clear();
  RecoverResult result;
  OfflineOpenResult opened = offline::BackendAccess::OpenAsIs(options);
  if (opened.backend == nullptr) {
    result.failure = FailureOf(opened.failure);
    result.error = opened.error;
    return result;
  }
  CleanSession::Parts parts({options, backupFolder, false}, disk);
  parts.backend = std::move(opened.backend);
  return parts.Recover();
}

}  // namespace scrubwell
