#include "backends/offline/clean_session.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

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

// Copies a key with all below it. Corrupt when any of it can't be read.
Status TakeKeyImage(const regf::Hive& hive, regf::CellOffset start, std::vector<KeyImage>& out) {
  out.clear();
  Status worst = Status::Ok;
  const auto note = [&worst](Status status) {
    if (status != Status::Ok && status != Status::Absent) worst = status;
  };
  note(hive.Walk(start, [&](const regf::Subkey& subkey, int level) {
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
  }));
  return out.empty() && worst == Status::Ok ? Status::Corrupt : worst;
}

bool IsBelow(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder.back() == '/' ? folder : folder + "/");
}

}  // namespace

UnicodeString offline::IdentityOf(const Installation& installation) {
  constexpr UnicodeView kNtKey = u"Microsoft\\Windows NT\\CurrentVersion";
  const regf::Hive& software = installation.software->Raw();
  UnicodeString text = HiveText(software, u"Microsoft\\Cryptography", u"MachineGuid");
  text += u'|' + HiveText(software, kNtKey, u"ProductId");
  text += u'|' + HiveText(software, kNtKey, u"SystemRoot");
  return text + u'|' + IntToStr(HiveNumber(software, kNtKey, u"InstallDate").value_or(0));
}

// ---- Recording ----------------------------------------------------------------------------

JournalEntry& CleanSession::Parts::Add(JournalEntry entry) {
  entry.item.id = std::to_string(journal.entries.size() + 1);
  entry.item.problem = problem;
  items.push_back(entry.item);
  journal.entries.push_back(std::move(entry));
  return journal.entries.back();
}

bool CleanSession::Parts::BeforeChange(const RegistryChange& change) {
  auto& hive = static_cast<offline::RegfHive&>(*change.hive);
  std::string why = offline::WhyHiveUnfit(hive);
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
    if (TakeKeyImage(hive.Raw(), change.key, entry.tree) != Status::Ok) return false;
    entry.item.subkeys = entry.tree.size() - 1;
    for (const KeyImage& key : entry.tree) entry.item.values += key.values.size();
  } else if (change.kind != ChangeKind::CreateKey) {
    entry.item.name = change.name;
    RegValue before;
    const Status status = hive.Value(change.key, change.name, before);
    if (status != Status::Ok && status != Status::Absent) return false;
    entry.item.bytes = before.data.size();
    if (status == Status::Ok) {
      // As it is spelled in the hive.
      entry.item.name = before.name;
      entry.before = std::move(before);
    }
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
    entry.hashBefore = ContentHash(entry.content);
  }
  if (data != nullptr) entry.hashAfter = ContentHash(*data);
  NoteWritten(entry, data, &World().world->text);
  if (offline::PathExists(target.local)) offline::ReadAttributes(target.local, entry.attributes);
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
  backupFolder = fs::weakly_canonical(fs::absolute(wanted), ignored).string();
  if (backupFolder.size() > 1 && backupFolder.back() == '/') backupFolder.pop_back();
  const auto& installation = World().installation;
  if (isDefault && IsBelow(backupFolder, World().drives.Get(installation.Letter())->canonical)) {
    return Failed(CleanFailure::WrongUse,
                  backupFolder + ": lies on the Windows volume itself; choose another folder");
  }
  std::string there = backupFolder;
  while (!offline::PathExists(there)) there = offline::FolderOf(there);
  if (!fs::is_directory(there, ignored) || ::access(there.c_str(), W_OK) != 0) {
    return Failed(CleanFailure::WrongUse, backupFolder + ": backups can't be written there");
  }
  return {};
}

CleanOpenResult CleanSession::Parts::SettleInterrupted() {
  offline::PendingCommit pending = offline::FindPending(config, World().drives);
  if (pending.state == offline::PendingCommit::State::None) return {};
  const bool isCommitted = pending.state == offline::PendingCommit::State::Committed;
  const offline::CommitOutcome outcome = offline::SettlePending(disk, pending);
  if (outcome.failure != CleanFailure::None) return Failed(outcome.failure, outcome.error);
  if (CleanOpenResult opened = OpenBackend(); opened.failure != CleanFailure::None) return opened;
  World().notes.Note(isCommitted ? u"An earlier clean that was interrupted has been finished"
                                 : u"An earlier clean that was interrupted has been taken back");
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

RecoverResult Recover(const TargetOptions& target, offline::IDisk* disk) {
  TargetOptions options = target;
  options.user.clear();
  RecoverResult result;
  OfflineOpenResult opened = offline::BackendAccess::OpenAsIs(options);
  if (opened.backend == nullptr) {
    result.failure = FailureOf(opened.failure);
    result.error = opened.error;
    return result;
  }
  auto& world = offline::BackendAccess::Of(*opened.backend);
  const std::string config = world.ConfigFolder();
  offline::UniqueFd lock;
  result.error = offline::LockFolder(config, lock);
  if (result.error.empty()) result.error = offline::WhyFolderUnfit(config);
  if (!result.error.empty()) {
    result.failure = CleanFailure::Refused;
    return result;
  }
  offline::PendingCommit pending = offline::FindPending(config, world.drives);
  offline::CommitOutcome outcome =
      offline::SettlePending(disk != nullptr ? *disk : offline::RealDisk(), pending);
  result.failure = outcome.failure;
  result.error = std::move(outcome.error);
  result.notes = std::move(outcome.notes);
  using State = offline::PendingCommit::State;
  result.outcome = pending.state == State::None        ? RecoverResult::Outcome::NothingToDo
                   : pending.state == State::Committed ? RecoverResult::Outcome::Completed
                                                       : RecoverResult::Outcome::RolledBack;
  return result;
}

}  // namespace scrubwell
