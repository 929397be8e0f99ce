#include "backends/offline/commit.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>

#include "backends/common/journal.h"
#include "backends/common/json_line.h"

namespace scrubwell::offline {
namespace {

using Kind = CommitStep::Kind;

constexpr std::string_view kCarryingOutFile = "/carrying-out";

std::string Preparing(const CommitPlan& plan) {
  return plan.config + std::string(kPreparingName);
}

std::string Pending(const CommitPlan& plan) {
  return plan.config + std::string(kPendingName);
}

std::string Sentence(const std::string& path, int error) {
  return path + ": " + std::strerror(error);
}

std::span<const std::uint8_t> BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string FormatRecord(const CommitPlan& plan) {
  std::uint64_t chain = 0;
  JsonLine head;
  head.Number("record", 1).Raw("session", plan.session);
  std::string text = head.Close(chain);
  for (const CommitStep& step : plan.steps) {
    JsonLine line;
    line.Number("step", static_cast<std::int64_t>(step.kind)).Number("drive", step.letter);
    line.Raw("path", step.letter == 0 ? step.local : step.relative);
    line.Number("existed", step.existed ? 1 : 0);
    line.Number("before", static_cast<std::int64_t>(step.hashBefore));
    line.Number("after", static_cast<std::int64_t>(step.hashAfter));
    text += line.Close(chain);
  }
  JsonLine end;
  end.Number("end", static_cast<std::int64_t>(plan.steps.size()));
  return text + end.Close(chain);
}

bool HasDots(const std::string& path) {
  return ("/" + path + "/").find("/../") != path.npos;
}

// The record lies on a disk that others may have written, and is carried out with our rights: it
// must not lead out of the drive, neither by its path nor by a link on the way. What we record
// ourselves has all links resolved.
bool IsOnDrive(const Drive& drive, const CommitStep& step) {
  if (step.relative.empty() || HasDots(step.relative)) return false;
  const std::filesystem::path local = drive.canonical + "/" + step.relative;
  std::error_code error;
  const std::filesystem::path folder = local.parent_path().lexically_normal();
  return std::filesystem::weakly_canonical(folder, error) == folder && !error &&
         !std::filesystem::is_symlink(local, error);
}

// The one kind of file outside of the drives that a commit changes: what the session beside its own
// notes of the items put back.
bool IsUndoneMark(const CommitPlan& plan, const CommitStep& step) {
  return step.kind == Kind::Replace && step.letter == 0 && step.relative.starts_with('/') &&
         !HasDots(step.relative) && !HasDots(plan.session) &&
         step.relative == FolderOf(step.relative) + std::string(kUndoneFile) &&
         FolderOf(FolderOf(step.relative)) == FolderOf(plan.session);
}

bool ParseRecord(const Bytes& bytes, const DriveTree& drives, CommitPlan& plan,
                 std::string& error) {
  std::vector<JsonValue> lines;
  const bool whole =
      ReadJsonLines({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, lines);
  if (!whole || lines.size() < 2 || lines.front()["record"].number != 1 ||
      lines.back().Count("end") != lines.size() - 2) {
    error = Pending(plan) + ": the record of an interrupted clean is damaged";
    return false;
  }
  plan.session = lines.front().Raw("session");
  for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
    CommitStep& step = plan.steps.emplace_back();
    step.kind = static_cast<Kind>(lines[i].Count("step"));
    step.letter = static_cast<char16_t>(lines[i].Count("drive"));
    step.relative = lines[i].Raw("path");
    step.existed = lines[i].Count("existed") != 0;
    step.hashBefore = lines[i].Count("before");
    step.hashAfter = lines[i].Count("after");
    if (IsUndoneMark(plan, step)) {
      step.local = step.relative;
      continue;
    }
    const Drive* const drive = drives.Get(step.letter);
    if (drive == nullptr || step.kind > Kind::Truncate || !IsOnDrive(*drive, step)) {
      error = Pending(plan) + ": an interrupted clean also changed a drive that was not given";
      return false;
    }
    step.local = drive->canonical + "/" + step.relative;
  }
  return true;
}

bool HasContent(const std::string& file, std::uint64_t hash) {
  Bytes bytes;
  return ReadWholeFile(file, bytes) == 0 && ContentHash(bytes) == hash;
}

// One run over a plan. The first error ends it.
class Run {
 public:
  Run(IDisk& disk, CommitPlan& plan, bool isRecovery)
      : disk_(disk), plan_(plan), isRecovery_(isRecovery) {}

  bool Prepare();
  bool Commit();
  bool Complete();
  void RollBack();
  [[nodiscard]] const std::string& Error() const { return error_; }
  std::vector<std::string> notes;

 private:
  bool Try(int error, const std::string& path) {
    if (error != 0 && error_.empty()) error_ = Sentence(path, error);
    return error == 0;
  }
  bool WriteSide(CommitStep& step);
  bool Finish(const CommitStep& step);
  bool PutInPlace(const CommitStep& step);
  bool IsUnchanged(const CommitStep& step);
  bool MarkCarriedOut();

  IDisk& disk_;
  CommitPlan& plan_;
  bool isRecovery_;
  std::string error_;
};

bool Run::WriteSide(CommitStep& step) {
  const std::string side = step.Side();
  if (!Try(WriteNewFile(disk_, side, step.data), side)) return false;
  if (!Try(disk_.SetAttributes(side, step.attributes), side)) return false;
  Bytes written;
  if (!Try(ReadWholeFile(side, written), side)) return false;
  if (written != step.data) {
    error_ = side + ": what was written does not read back";
    return false;
  }
  step.data = {};
  return Try(disk_.Sync(side), side);
}

bool Run::Prepare() {
  const std::string record = FormatRecord(plan_);
  const std::string copy = plan_.session + std::string(kRecordFile);
  const std::string mark = plan_.session + std::string(kCarryingOutFile);
  if (!Try(WriteNewFile(disk_, copy, BytesOf(record)), copy)) return false;
  if (!Try(WriteNewFile(disk_, mark, {}), mark)) return false;
  if (!Try(disk_.Sync(plan_.session), plan_.session)) return false;
  if (!Try(WriteNewFile(disk_, Preparing(plan_), BytesOf(record)), Preparing(plan_))) return false;
  if (!Try(disk_.Sync(plan_.config), plan_.config)) return false;
  std::set<std::string> folders;
  for (CommitStep& step : plan_.steps) {
    if (step.kind == Kind::MakeFolder && !Try(disk_.MakeFolder(step.local), step.local)) {
      return false;
    }
    if (step.kind == Kind::Replace && !WriteSide(step)) return false;
    folders.insert(FolderOf(step.local));
  }
  for (const std::string& folder : folders) {
    if (PathExists(folder) && !Try(disk_.Sync(folder), folder)) return false;
  }
  return true;
}

bool Run::Commit() {
  return Try(disk_.Rename(Preparing(plan_), Pending(plan_)), Pending(plan_));
}

// The machine may have been in use between the interruption and the recovery.
bool Run::IsUnchanged(const CommitStep& step) {
  if (!isRecovery_ || HasContent(step.local, step.hashBefore)) return true;
  if (PathExists(step.local)) notes.push_back(step.local + ": was changed since and is left alone");
  return false;
}

bool Run::PutInPlace(const CommitStep& step) {
  const std::string side = step.Side();
  if (isRecovery_) {
    if (!PathExists(side)) {
      if (!HasContent(step.local, step.hashAfter)) {
        notes.push_back(step.local + ": was changed since and is left alone");
      }
      return true;
    }
    const bool isFree =
        step.existed ? HasContent(step.local, step.hashBefore) : !PathExists(step.local);
    if (!HasContent(side, step.hashAfter) || !isFree) {
      notes.push_back(step.local + ": was changed since and is left alone");
      return Try(disk_.EraseFile(side), side);
    }
  }
  return Try(disk_.Rename(side, step.local), step.local);
}

bool Run::Finish(const CommitStep& step) {
  switch (step.kind) {
    case Kind::MakeFolder:
      return true;
    case Kind::Replace:
      return PutInPlace(step);
    case Kind::Erase:
      return !IsUnchanged(step) || Try(disk_.EraseFile(step.local), step.local);
    case Kind::EraseFolder: {
      const int error = disk_.EraseFolder(step.local);
      if (error == ENOTEMPTY || error == EEXIST) {
        notes.push_back(step.local + ": is not empty any more and stays");
      }
      return error == ENOENT || error == ENOTEMPTY || error == EEXIST || Try(error, step.local);
    }
    case Kind::Truncate:
      // A log that others have written since belongs to a newer state.
      return (isRecovery_ && !HasContent(step.local, step.hashBefore)) ||
             Try(disk_.Truncate(step.local), step.local);
  }
  return true;
}

bool Run::MarkCarriedOut() {
  const std::string from = plan_.session + std::string(kCarryingOutFile);
  const std::string to = plan_.session + std::string(kCarriedOutFile);
  if (!PathExists(from)) {
    if (!PathExists(to)) notes.push_back(plan_.session + ": the session's folder is not there");
    return true;
  }
  return Try(disk_.Rename(from, to), to) && Try(disk_.Sync(plan_.session), plan_.session);
}

bool Run::Complete() {
  if (!Try(disk_.Sync(plan_.config), plan_.config)) return false;
  std::set<std::string> folders;
  for (const CommitStep& step : plan_.steps) {
    if (!Finish(step)) return false;
    folders.insert(FolderOf(step.local));
  }
  for (const std::string& folder : folders) {
    if (PathExists(folder) && !Try(disk_.Sync(folder), folder)) return false;
  }
  return MarkCarriedOut() && Try(disk_.EraseFile(Pending(plan_)), Pending(plan_)) &&
         Try(disk_.Sync(plan_.config), plan_.config);
}

// The record goes last, so that an interruption here is taken up again.
void Run::RollBack() {
  std::string error;
  std::swap(error, error_);
  for (auto step = plan_.steps.rbegin(); step != plan_.steps.rend(); ++step) {
    if (step->kind == Kind::Replace && PathExists(step->Side())) {
      Try(disk_.EraseFile(step->Side()), step->Side());
    }
    if (step->kind == Kind::MakeFolder) disk_.EraseFolder(step->local);
  }
  if (error_.empty() && PathExists(Preparing(plan_))) {
    Try(disk_.EraseFile(Preparing(plan_)), Preparing(plan_));
    Try(disk_.Sync(plan_.config), plan_.config);
  }
  if (!error.empty()) error_ = error;
}

}  // namespace

CommitOutcome RunCommit(IDisk& disk, CommitPlan& plan) {
  Run run(disk, plan, false);
  if (!run.Prepare() || !run.Commit()) {
    run.RollBack();
    return {CleanFailure::NotWritten, run.Error(), {}};
  }
  if (!run.Complete()) {
    return {CleanFailure::Unfinished, run.Error() + "; the rest is to be done by recover",
            std::move(run.notes)};
  }
  return {CleanFailure::None, {}, std::move(run.notes)};
}

PendingCommit FindPending(const std::string& config, const DriveTree& drives) {
  PendingCommit pending;
  pending.plan.config = config;
  Bytes bytes;
  if (PathExists(Pending(pending.plan))) {
    const int error = ReadWholeFile(Pending(pending.plan), bytes);
    if (error != 0) pending.error = Sentence(Pending(pending.plan), error);
    const bool good = error == 0 && ParseRecord(bytes, drives, pending.plan, pending.error);
    pending.state = good ? PendingCommit::State::Committed : PendingCommit::State::Unreadable;
  } else if (PathExists(Preparing(pending.plan))) {
    pending.state = PendingCommit::State::Preparing;
    // A record that is cut was never flushed, so nothing has been written beside any file yet.
    std::string ignored;
    if (ReadWholeFile(Preparing(pending.plan), bytes) != 0 ||
        !ParseRecord(bytes, drives, pending.plan, ignored)) {
      std::erase_if(pending.plan.steps, [](const CommitStep& step) { return step.local.empty(); });
    }
  }
  return pending;
}

bool FinishedView(const PendingCommit& pending, std::map<std::string, std::string>& replacements,
                  FileChanges& changes) {
  for (const CommitStep& step : pending.plan.steps) {
    FileChange change;
    switch (step.kind) {
      case Kind::Replace:
        if (!PathExists(step.Side())) continue;
        if (ReadWholeFile(step.Side(), change.data) != 0 ||
            ContentHash(change.data) != step.hashAfter) {
          return false;
        }
        replacements[step.local] = step.Side();
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
    changes[step.local] = std::move(change);
  }
  return true;
}

CommitOutcome SettlePending(IDisk& disk, PendingCommit& pending) {
  Run run(disk, pending.plan, true);
  if (pending.state == PendingCommit::State::Unreadable) {
    return {CleanFailure::Unreadable, pending.error, {}};
  }
  if (pending.state == PendingCommit::State::Preparing) {
    run.RollBack();
  } else if (pending.state == PendingCommit::State::Committed) {
    run.Complete();
  }
  const CleanFailure failure = run.Error().empty() ? CleanFailure::None : CleanFailure::Unfinished;
  return {failure, run.Error(), std::move(run.notes)};
}

}  // namespace scrubwell::offline
