#include "backends/offline/commit.h"

#include <cerrno>
#include <cstring>
#include <map>

#include "backends/common/content_digest.h"

namespace scrubwell::offline {
namespace {

using Kind = CommitStep::Kind;

DiskPlace In(const DiskPlace& folder, std::string_view file) {
  return folder / file.substr(file.starts_with('/') ? 1 : 0);
}

DiskPlace Preparing(const CommitPlan& plan) {
  return plan.config / kPreparingName;
}

DiskPlace Pending(const CommitPlan& plan) {
  return plan.config / kPendingName;
}

std::span<const std::uint8_t> BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool HasContent(const DiskPlace& file, const std::string& digest) {
  Bytes bytes;
  return ReadWholeFile(file, bytes) == 0 && HasDigest(bytes, digest);
}

/// Folders in the order of their names, each once.
class Folders {
 public:
  void Add(const DiskPlace& place) { folders_.emplace(place.Text(), place); }
  /// 0, or the error of the first that can't be synced. Those that are gone are passed over.
  int Sync(IDisk& disk, DiskPlace& failed) const {
    for (const auto& [text, folder] : folders_) {
      const int error = folder.Exists() ? disk.Sync(folder) : 0;
      if (error != 0) return failed = folder, error;
    }
    return 0;
  }

 private:
  std::map<std::string, DiskPlace> folders_;
};

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
  bool Try(int error, const DiskPlace& place) {
    if (error != 0 && error_.empty()) error_ = ErrnoSentence(place.Text(), error);
    return error == 0;
  }
  bool TrySync(const Folders& folders) {
    DiskPlace failed;
    const int error = folders.Sync(disk_, failed);
    return error == 0 || Try(error, failed);
  }
  void LeftAlone(const CommitStep& step) {
    notes.push_back(step.place.Text() + ": was changed since and is left alone");
  }
  bool WriteSide(CommitStep& step);
  bool Finish(const CommitStep& step);
  bool PutInPlace(const CommitStep& step);
  bool IsUnchanged(const CommitStep& step);
  bool DressFolders();
  bool MarkCarriedOut();

  IDisk& disk_;
  CommitPlan& plan_;
  bool isRecovery_;
  std::string error_;
};

bool Run::WriteSide(CommitStep& step) {
  const DiskPlace side = step.Side();
  if (!Try(WriteNewFile(disk_, side, step.data), side)) return false;
  if (!Try(disk_.SetAttributes(side, step.attributes), side)) return false;
  Bytes written;
  if (!Try(ReadWholeFile(side, written), side)) return false;
  if (written != step.data) {
    error_ = side.Text() + ": what was written does not read back";
    return false;
  }
  step.data = {};
  return Try(disk_.Sync(side), side);
}

bool Run::Prepare() {
  const std::string record = FormatRecord(plan_);
  const DiskPlace copy = In(plan_.session, kRecordFile);
  const DiskPlace mark = In(plan_.session, kCarryingOutFile);
  if (!Try(WriteNewFile(disk_, copy, BytesOf(record)), copy)) return false;
  if (!Try(WriteNewFile(disk_, mark, {}), mark)) return false;
  if (!Try(disk_.Sync(plan_.session), plan_.session)) return false;
  if (!Try(WriteNewFile(disk_, Preparing(plan_), BytesOf(record)), Preparing(plan_))) return false;
  if (!Try(disk_.Sync(plan_.config), plan_.config)) return false;
  Folders folders;
  for (CommitStep& step : plan_.steps) {
    if (step.kind == Kind::MakeFolder && !Try(disk_.MakeFolder(step.place), step.place)) {
      return false;
    }
    if (step.kind == Kind::Replace && !WriteSide(step)) return false;
    folders.Add(step.place.Folder());
  }
  return TrySync(folders);
}

bool Run::Commit() {
  return Try(disk_.Rename(Preparing(plan_), Pending(plan_)), Pending(plan_));
}

// The machine may have been in use between the interruption and the recovery.
bool Run::IsUnchanged(const CommitStep& step) {
  if (!isRecovery_ || HasContent(step.place, step.digestBefore)) return true;
  if (step.place.Exists()) LeftAlone(step);
  return false;
}

bool Run::PutInPlace(const CommitStep& step) {
  const DiskPlace side = step.Side();
  if (isRecovery_) {
    if (!side.Exists()) {
      if (!HasContent(step.place, step.digestAfter)) LeftAlone(step);
      return true;
    }
    const bool isFree =
        step.existed ? HasContent(step.place, step.digestBefore) : !step.place.Exists();
    if (!HasContent(side, step.digestAfter) || !isFree) {
      LeftAlone(step);
      return Try(disk_.EraseFile(side), side);
    }
  }
  return Try(disk_.Rename(side, step.place), step.place);
}

bool Run::Finish(const CommitStep& step) {
  switch (step.kind) {
    case Kind::MakeFolder:
      return true;
    case Kind::Replace:
      return PutInPlace(step);
    case Kind::Erase:
      return !IsUnchanged(step) || Try(disk_.EraseFile(step.place), step.place);
    case Kind::EraseFolder: {
      const int error = disk_.EraseFolder(step.place);
      if (error == ENOTEMPTY || error == EEXIST) {
        notes.push_back(step.place.Text() + ": is not empty any more and stays");
      }
      return error == ENOENT || error == ENOTEMPTY || error == EEXIST || Try(error, step.place);
    }
    case Kind::Truncate:
      // A log that others have written since belongs to a newer state.
      return (isRecovery_ && !HasContent(step.place, step.digestBefore)) ||
             Try(disk_.Truncate(step.place), step.place);
  }
  return true;
}

// When all that goes into them is in them: the inner ones first, for each changes the outer's time.
bool Run::DressFolders() {
  for (auto step = plan_.steps.rbegin(); step != plan_.steps.rend(); ++step) {
    if (step->kind != Kind::MakeFolder || !step->place.Exists()) continue;
    if (!Try(disk_.SetAttributes(step->place, step->attributes), step->place)) return false;
  }
  return true;
}

bool Run::MarkCarriedOut() {
  const DiskPlace from = In(plan_.session, kCarryingOutFile);
  const DiskPlace to = In(plan_.session, kCarriedOutFile);
  if (!from.Exists()) {
    if (!to.Exists()) notes.push_back(plan_.session.Text() + ": the session's folder is not there");
    return true;
  }
  return Try(disk_.Rename(from, to), to) && Try(disk_.Sync(plan_.session), plan_.session);
}

bool Run::Complete() {
  if (!Try(disk_.Sync(plan_.config), plan_.config)) return false;
  Folders folders;
  for (const CommitStep& step : plan_.steps) {
    if (!Finish(step)) return false;
    folders.Add(step.place.Folder());
  }
  return DressFolders() && TrySync(folders) && MarkCarriedOut() &&
         Try(disk_.EraseFile(Pending(plan_)), Pending(plan_)) &&
         Try(disk_.Sync(plan_.config), plan_.config);
}

// The record goes last, so that an interruption here is taken up again.
void Run::RollBack() {
  std::string error;
  std::swap(error, error_);
  for (auto step = plan_.steps.rbegin(); step != plan_.steps.rend(); ++step) {
    if (step->kind == Kind::Replace && step->Side().Exists()) {
      Try(disk_.EraseFile(step->Side()), step->Side());
    }
    if (step->kind == Kind::MakeFolder) disk_.EraseFolder(step->place);
  }
  if (error_.empty() && Preparing(plan_).Exists()) {
    Try(disk_.EraseFile(Preparing(plan_)), Preparing(plan_));
    Try(disk_.Sync(plan_.config), plan_.config);
  }
  if (!error.empty()) error_ = error;
}

CommitOutcome OutcomeOf(Run& run) {
  const bool done = run.Error().empty();
  return {done ? CommitFailure::None : CommitFailure::Unfinished, run.Error(),
          std::move(run.notes)};
}

bool TakeStep(const JsonValue& line, const DriveTree& drives, const DiskRoot& backups,
              CommitStep& step) {
  step.kind = static_cast<Kind>(line.Count("step"));
  step.letter = static_cast<char16_t>(line.Count("drive"));
  step.existed = line.Count("existed") != 0;
  step.digestBefore = line.Raw("before");
  step.digestAfter = line.Raw("after");
  if (step.kind > Kind::Truncate || !TakeAttributes(line, step.attributes)) return false;
  step.attributes = WithinBounds(std::move(step.attributes));
  const std::string relative = line.Raw("path");
  const Drive* const drive = drives.Get(step.letter);
  if (relative.empty() || (step.letter != 0 && (drive == nullptr || !drive->isGiven))) return false;
  step.place = DiskPlace(step.letter == 0 ? backups : drive->root, relative);
  return true;
}

}  // namespace

std::string ErrnoSentence(const std::string& path, int error) {
  return path + ": " + std::strerror(error);
}

std::string FormatRecord(const CommitPlan& plan) {
  Sha256Digest chain{};
  JsonLine head;
  head.Number("record", 2).Raw("session", plan.session.Text());
  std::string text = head.Close(chain);
  for (const CommitStep& step : plan.steps) {
    JsonLine line;
    line.Number("step", static_cast<std::int64_t>(step.kind)).Number("drive", step.letter);
    line.Raw("path", step.place.Relative()).Number("existed", step.existed ? 1 : 0);
    line.Raw("before", step.digestBefore).Raw("after", step.digestAfter);
    if (step.kind == Kind::MakeFolder) PutAttributes(line, step.attributes);
    text += line.Close(chain);
  }
  JsonLine end;
  end.Number("end", static_cast<std::int64_t>(plan.steps.size()));
  return text + end.Close(chain);
}

bool ParseRecord(std::string_view text, const DriveTree& drives, const DiskRoot& backups,
                 CommitPlan& plan, std::string& error) {
  JsonLines lines(text);
  JsonValue line;
  bool good = lines.Next(line) && line["record"].number == 2;
  bool ended = false;
  while (good && lines.Next(line)) {
    if (ended) good = false;
    if (line.Has("end")) {
      ended = line.Count("end") == plan.steps.size();
    } else if (!TakeStep(line, drives, backups, plan.steps.emplace_back())) {
      error =
          plan.session.Text() + ": the interrupted clean also changes a drive that was not given";
      return false;
    }
  }
  if (good && ended && lines.Rest().empty()) return true;
  error = plan.session.Text() + ": the record of the interrupted clean is damaged";
  return false;
}

CommitOutcome RunCommit(IDisk& disk, CommitPlan& plan) {
  Run run(disk, plan, false);
  if (!run.Prepare() || !run.Commit()) {
    run.RollBack();
    return {CommitFailure::NotWritten, run.Error(), {}};
  }
  if (!run.Complete()) {
    return {CommitFailure::Unfinished, run.Error() + "; the rest is to be done by recover",
            std::move(run.notes)};
  }
  return {CommitFailure::None, {}, std::move(run.notes)};
}

CommitOutcome FinishCommit(IDisk& disk, CommitPlan& plan) {
  Run run(disk, plan, true);
  run.Complete();
  return OutcomeOf(run);
}

CommitOutcome TakeBackCommit(IDisk& disk, CommitPlan& plan) {
  Run run(disk, plan, true);
  run.RollBack();
  return OutcomeOf(run);
}

}  // namespace scrubwell::offline
