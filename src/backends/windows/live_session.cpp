#include "backends/windows/live_session.h"

#include <filesystem>
#include <set>

#include "backends/common/local_file.h"
#include "backends/common/written.h"
#include "backends/windows/live_parts.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell {
namespace windows {
namespace {

WindowsOptions ForReading() {
  return {};
}

UnicodeString TextAt(IRegistry& registry, UnicodeView path, UnicodeView name) {
  const View view = Is64BitSystem() ? View::Bits64 : View::Native;
  RegValue value;
  const bool isThere =
      registry.GetValue({RootKey::LocalMachine, path, view}, name, value) == Status::Ok;
  return isThere ? RegValueText(value) : UnicodeString();
}

// What a 32-bit program finds under a path, by the path that it has on the disk.
UnicodeString OnDisk(UnicodeView path, FsView view) {
  return LongPath(view == FsView::Redirected ? RedirectedPath(path) : UnicodeString(path));
}

}  // namespace

UnicodeString IdentityOf(IRegistry& registry) {
  constexpr UnicodeView kNtKey = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
  UnicodeString text = TextAt(registry, u"SOFTWARE\\Microsoft\\Cryptography", u"MachineGuid");
  text += u'|' + TextAt(registry, kNtKey, u"ProductId");
  text += u'|' + TextAt(registry, kNtKey, u"SystemRoot");
  const UnicodeString installed = TextAt(registry, kNtKey, u"InstallDate");
  return text + u'|' + (installed.empty() ? u"0" : installed);
}

LiveSession::LiveSession(const CleanOptions& options, std::string backupFolder, LiveLock lock,
                         ComFactories factories)
    : options_(options),
      backupFolder_(std::move(backupFolder)),
      lock_(std::move(lock)),
      backend_(ForReading(), factories),
      tools_(std::move(factories)),
      registry_(tools_.registry, tools_.places, *this),
      files_(backend_.Platform().files, *this, OnDisk),
      profiles_(backend_.Platform().profiles, files_, registry_, backend_.Platform().text,
                backend_.Platform().system.WindowsDir()),
      tasks_(backend_.Platform().tasks, *this),
      firewall_(backend_.Platform().firewall, *this),
      browser_(backend_.Platform().browser, *this),
      target_(backend_, Composed()) {
  journal_.identity = IdentityOf(tools_.registry);
  journal_.info.product = backend_.Target().productName;
}

TPlatform LiveSession::Composed() {
  TPlatform& base = backend_.Platform();
  return {registry_,     files_, base.system, base.text, base.shell,  base.resources, profiles_,
          base.services, tasks_, firewall_,   browser_,  base.images, base.notes,     base.product};
}

void LiveSession::BeginProblem(const JournalProblem& problem) {
  problem_ = journal_.problems.size();
  journal_.problems.push_back(problem);
}

void LiveSession::EndProblem(bool fixed) {
  if (problem_ != JournalItem::NoProblem) journal_.problems[problem_].fixed = fixed;
  problem_ = JournalItem::NoProblem;
}

Status LiveSession::Add(PlannedChange change) {
  if (isCommitted_) return Status::Denied;
  const Status status = Complete(tools_, change);
  if (status != Status::Ok) return status;
  change.entry.item.id = std::to_string(plan_.size() + 1);
  change.entry.item.problem = problem_;
  NoteWritten(change.entry, &change.data, &backend_.Platform().text);
  items_.push_back(change.entry.item);
  plan_.push_back(std::move(change));
  return Status::Ok;
}

}  // namespace windows

namespace {

LiveOpenResult Failed(CleanFailure failure, std::string error) {
  return {nullptr, failure, std::move(error)};
}

// Empty with a sentence in `why` when there is none.
std::string UsableFolder(const std::string& wanted, std::string& why) {
  namespace fs = std::filesystem;
  std::error_code error;
  const std::string folder = wanted.empty() ? DefaultBackupFolder() : wanted;
  if (folder.empty()) return why = "there is no folder for backups", std::string();
  const fs::path whole = fs::absolute(LocalPath(folder), error).lexically_normal();
  if (error) return why = folder + ": is no folder for backups", std::string();
  fs::path there = whole;
  while (!fs::exists(there, error) && there.has_relative_path()) there = there.parent_path();
  if (!fs::is_directory(there, error))
    return why = folder + ": backups can't be written there", std::string();
  const std::u8string text = whole.u8string();
  std::string result = WithSlashes({text.begin(), text.end()});
  if (result.size() > 3 && result.back() == '/') result.pop_back();
  return result;
}

}  // namespace

LiveOpenResult OpenLiveSession(const CleanOptions& options) {
  return OpenLiveSession(options, windows::ComFactories{});
}

LiveOpenResult OpenLiveSession(const CleanOptions& options, windows::ComFactories factories) {
  if (!options.target.folder.empty() || !options.target.drives.empty())
    return Failed(CleanFailure::WrongUse, "the running system has no folder and no further drives");
  windows::LiveLock lock;
  std::string folder;
  if (!options.dryRun) {
    std::string why;
    folder = UsableFolder(options.backupFolder, why);
    if (folder.empty()) return Failed(CleanFailure::WrongUse, std::move(why));
    if (!lock.Take())
      return Failed(CleanFailure::Refused, "another Scrubwell is at work on this system");
  }
  return {std::make_unique<windows::LiveSession>(options, std::move(folder), std::move(lock),
                                                 std::move(factories)),
          CleanFailure::None,
          {}};
}

namespace {

// The folders of sessions that nobody has ended, the oldest first. False when there is no such
// folder at all.
bool LeftOpen(const std::string& backupFolder, std::set<std::string>& out) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(LocalPath(backupFolder), error)) {
    std::string folder = backupFolder + "/" + NameOf(entry.path());
    if (!IsLocalFile(folder + std::string(kJournalFile))) continue;
    if (!IsLocalFile(folder + std::string(kCarriedOutFile))) out.insert(std::move(folder));
  }
  return !error;
}

}  // namespace

RecoverResult RecoverLive(const std::string& backupFolder) {
  RecoverResult result;
  windows::LiveLock lock;
  const auto fail = [&result](CleanFailure failure, std::string error) {
    result.failure = failure;
    result.error = std::move(error);
    return result;
  };
  if (!lock.Take())
    return fail(CleanFailure::Refused, "another Scrubwell is at work on this system");
  std::set<std::string> folders;
  if (!LeftOpen(backupFolder.empty() ? DefaultBackupFolder() : backupFolder, folders) &&
      !backupFolder.empty())
    return fail(CleanFailure::WrongUse, backupFolder + ": there is no such folder of backups");
  for (const std::string& folder : folders) {
    const Journal journal = LoadJournal(folder);
    if (!journal.info.error.empty()) {
      result.notes.push_back(journal.info.error);
    } else if (journal.live) {
      std::string why = windows::CloseLeftOpen(journal);
      if (!why.empty()) return fail(CleanFailure::NotWritten, std::move(why));
      result.outcome = RecoverResult::Outcome::Completed;
      result.notes.push_back(journal.info.name +
                             ": was interrupted; what it had changed by then can be put back");
    }
  }
  return result;
}

}  // namespace scrubwell
