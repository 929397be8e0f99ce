// From the changes in memory to a commit: new images, checks, backup, journal.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>

#include "backends/common/content_digest.h"
#include "backends/offline/guards.h"
#include "backends/offline/intent.h"
#include "backends/offline/session_parts.h"
#include "formats/regf/check.h"
#include "formats/regf/log.h"

namespace scrubwell {
namespace {

using offline::CommitPlan;
using offline::CommitStep;
using offline::FileChange;

constexpr std::string_view kLogEndings[] = {".LOG", ".LOG1", ".LOG2"};

std::string Sentence(const offline::DiskPlace& place, int error) {
  return offline::ErrnoSentence(place.Text(), error);
}

std::string TimeText(const char* format) {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm parts{};
  ::gmtime_r(&now, &parts);
  char text[32];
  return {text, std::strftime(text, sizeof text, format, &parts)};
}

std::vector<offline::DiskPlace> LogsOf(const offline::DiskPlace& hive) {
  std::vector<offline::DiskPlace> logs;
  std::vector<std::string> names;
  offline::ListNames(hive.Folder(), names);
  for (const std::string& name : names) {
    for (const std::string_view ending : kLogEndings) {
      if (SameText(FromUtf8(name), FromUtf8(hive.Name()) + FromUtf8(ending))) {
        logs.push_back(hive.Folder() / name);
      }
    }
  }
  return logs;
}

std::uint32_t NewestOf(const std::vector<offline::DiskPlace>& logs) {
  std::uint32_t newest = 0;
  for (const offline::DiskPlace& log : logs) {
    Bytes bytes;
    if (offline::ReadWholeFile(log, bytes) == 0) {
      newest = std::max(newest, regf::NewestLogSequence(bytes));
    }
  }
  return newest;
}

}  // namespace

std::string CleanSession::Parts::PlanHive(offline::RegfHive& hive, CommitPlan& plan) {
  CommitStep step;
  step.kind = CommitStep::Kind::Replace;
  step.place = hive.Place();
  step.letter = hive.Path().front();
  step.existed = true;
  const std::string name = step.place.Text();
  const std::vector<offline::DiskPlace> logs = LogsOf(step.place);
  Bytes before;
  int error = offline::ReadWholeFile(step.place, before);
  if (error == 0) error = offline::ReadAttributes(step.place, step.attributes);
  if (error != 0) return Sentence(step.place, error);
  step.attributes.modifiedSeconds = step.attributes.modifiedNanoseconds = 0;
  step.digestBefore = ContentDigest(before);
  step.data = hive.Finish(NewestOf(logs));
  step.digestAfter = ContentDigest(step.data);
  const regf::OpenedHive written = regf::Hive::FromBytes(step.data, name);
  if (written.hive == nullptr || !regf::CheckImage(step.data).empty()) {
    return name + ": the changed hive would not be sound";
  }
  const std::string why =
      offline::WhyNotAsIntended(hive.Original(), *written.hive, journal.entries, hive.Path());
  if (!why.empty()) return why;
  const char16_t letter = step.letter;
  plan.steps.push_back(std::move(step));
  for (const offline::DiskPlace& log : logs) {
    Bytes bytes;
    error = offline::ReadWholeFile(log, bytes);
    if (error != 0) return Sentence(log, error);
    if (bytes.empty()) continue;
    CommitStep& cut = plan.steps.emplace_back();
    cut.kind = CommitStep::Kind::Truncate;
    cut.place = log;
    cut.letter = letter;
    cut.existed = true;
    cut.digestBefore = ContentDigest(bytes);
  }
  return {};
}

std::string CleanSession::Parts::PlanHives(CommitPlan& plan) {
  for (const auto& hive : World().hives.All()) {
    if (!hive->Changed()) continue;
    if (const std::string why = PlanHive(*hive, plan); !why.empty()) return why;
  }
  return {};
}

namespace {

CommitStep::Kind StepOf(FileChange::Kind change) {
  switch (change) {
    case FileChange::Kind::FolderMade:
      return CommitStep::Kind::MakeFolder;
    case FileChange::Kind::FolderErased:
      return CommitStep::Kind::EraseFolder;
    case FileChange::Kind::Erased:
      return CommitStep::Kind::Erase;
    case FileChange::Kind::Written:
      break;
  }
  return CommitStep::Kind::Replace;
}

}  // namespace

// `needed` is false when nothing is left to do for this file.
std::string CleanSession::Parts::PlanFile(const FileChange& change, CommitStep& step,
                                          bool& needed) {
  step.kind = StepOf(change.kind);
  step.place = change.place;
  step.letter = change.path.front();
  step.existed = step.place.Exists();
  step.attributes = {0600, ::geteuid(), ::getegid(), 0, 0, 0, 0, {}};
  const bool isFolder =
      change.kind == FileChange::Kind::FolderMade || change.kind == FileChange::Kind::FolderErased;
  const bool makes =
      change.kind == FileChange::Kind::FolderMade || change.kind == FileChange::Kind::Written;
  needed = change.kind == FileChange::Kind::FolderMade ? !step.existed : makes || step.existed;
  Bytes before;
  int error = step.existed && !isFolder ? offline::ReadWholeFile(step.place, before) : 0;
  if (error == 0 && step.existed && makes && !change.attributes) {
    error = offline::ReadAttributes(step.place, step.attributes);
    step.attributes.modifiedSeconds = step.attributes.modifiedNanoseconds = 0;
  }
  if (error != 0) return Sentence(step.place, error);
  if (step.existed && !isFolder) step.digestBefore = ContentDigest(before);
  if (isFolder && !change.attributes) step.attributes.mode = 0700;
  if (change.attributes) step.attributes = *change.attributes;
  if (step.kind != CommitStep::Kind::Replace) return {};
  step.data = change.data;
  step.digestAfter = ContentDigest(step.data);
  return {};
}

std::string CleanSession::Parts::PlanFiles(CommitPlan& plan) {
  std::vector<CommitStep> folders;
  std::vector<CommitStep> erased;
  for (const auto& [text, change] : World().files.Changes()) {
    CommitStep step;
    bool needed = false;
    if (std::string why = PlanFile(change, step, needed); !why.empty()) return why;
    if (!needed) continue;
    if (step.kind == CommitStep::Kind::MakeFolder) {
      folders.push_back(std::move(step));
    } else if (step.kind == CommitStep::Kind::Replace) {
      plan.steps.push_back(std::move(step));
    } else {
      erased.push_back(std::move(step));
    }
  }
  // Made from the outermost in, erased from the innermost out.
  plan.steps.insert(plan.steps.begin(), std::make_move_iterator(folders.begin()),
                    std::make_move_iterator(folders.end()));
  std::sort(erased.begin(), erased.end(), [](const CommitStep& a, const CommitStep& b) {
    const bool aFile = a.kind == CommitStep::Kind::Erase;
    const bool bFile = b.kind == CommitStep::Kind::Erase;
    return aFile != bFile ? aFile : a.place.Text() > b.place.Text();
  });
  plan.steps.insert(plan.steps.end(), std::make_move_iterator(erased.begin()),
                    std::make_move_iterator(erased.end()));
  plan.steps.insert(plan.steps.end(), std::make_move_iterator(furtherSteps.begin()),
                    std::make_move_iterator(furtherSteps.end()));
  return {};
}

std::string CleanSession::Parts::WhyNotRoom(const CommitPlan& plan, std::size_t journalBytes) {
  std::uint64_t fresh = 0;
  std::uint64_t kept = journalBytes;
  for (const CommitStep& step : plan.steps) {
    fresh += step.data.size();
    struct stat info {};
    if (step.existed && step.place.Stat(info) == 0)
      kept += static_cast<std::uint64_t>(info.st_size);
    const offline::DiskPlace folder = step.place.Folder();
    if (!folder.Exists()) continue;
    if (std::string why = offline::WhyFolderUnfit(folder); !why.empty()) return why;
  }
  for (const JournalEntry& entry : journal.entries) kept += entry.content.size();
  // Backup and hives may share one volume; then it needs room for both.
  const std::string why = offline::WhyTooFull(disk, config, fresh + kept);
  return why.empty() ? offline::WhyTooFull(disk, offline::DiskPlace(backups), kept) : why;
}

std::string CleanSession::Parts::NewFolder(const offline::DiskPlace& folder, Places& made) {
  if (const int error = disk.MakeFolder(folder); error != 0) return Sentence(folder, error);
  made.push_back(folder);
  return {};
}

std::string CleanSession::Parts::WriteInto(const offline::DiskPlace& file,
                                           std::span<const std::uint8_t> data, Places& made) {
  made.push_back(file);
  const int error = offline::WriteNewFile(disk, file, data);
  return error == 0 ? std::string() : Sentence(file, error);
}

std::string CleanSession::Parts::CopyOriginals(const CommitPlan& plan, Places& made) {
  const offline::DiskPlace folder = plan.session / kHivesFolder.substr(1);
  if (std::string why = NewFolder(folder, made); !why.empty()) return why;
  std::size_t number = 0;
  for (const CommitStep& step : plan.steps) {
    if (step.letter == 0 || !step.existed) continue;
    if (step.kind != CommitStep::Kind::Replace && step.kind != CommitStep::Kind::Truncate) continue;
    Bytes bytes;
    if (const int error = offline::ReadWholeFile(step.place, bytes); error != 0) {
      return Sentence(step.place, error);
    }
    if (!HasDigest(bytes, step.digestBefore)) {
      return step.place.Text() + ": was changed by others meanwhile";
    }
    const std::string name = std::to_string(++number) + "-" + step.place.Name();
    if (std::string why = WriteInto(folder / name, bytes, made); !why.empty()) return why;
  }
  if (const int error = disk.Sync(folder); error != 0) return Sentence(folder, error);
  return {};
}

// Backup first, then the journal: with the journal whole, everything that it needs is there.
std::string CleanSession::Parts::WriteSession(CommitPlan& plan, const std::string& text,
                                              Places& made) {
  if (std::string why = NewFolder(plan.session, made); !why.empty()) return why;
  if (std::string why = CopyOriginals(plan, made); !why.empty()) return why;
  const offline::DiskPlace files = plan.session / kFilesFolder.substr(1);
  if (std::string why = NewFolder(files, made); !why.empty()) return why;
  for (const JournalEntry& entry : journal.entries) {
    if (entry.item.action < JournalAction::WriteFile || !entry.existed) continue;
    if (std::string why = WriteInto(files / entry.item.id, entry.content, made); !why.empty()) {
      return why;
    }
  }
  if (const int error = disk.Sync(files); error != 0) return Sentence(files, error);
  const auto* const data = reinterpret_cast<const std::uint8_t*>(text.data());
  const offline::DiskPlace file = plan.session / kJournalFile.substr(1);
  if (std::string why = WriteInto(file, {data, text.size()}, made); !why.empty()) return why;
  for (const offline::DiskPlace& folder : {plan.session, plan.session.Folder()}) {
    if (const int error = disk.Sync(folder); error != 0) return Sentence(folder, error);
  }
  return {};
}

// A session that never came to its commit is of no use to anybody.
void CleanSession::Parts::TakeAway(const Places& made) {
  for (auto place = made.rbegin(); place != made.rend(); ++place) {
    struct stat info {};
    if (place->Stat(info) != 0) continue;
    if (S_ISDIR(info.st_mode)) {
      disk.EraseFolder(*place);
    } else {
      disk.EraseFile(*place);
    }
  }
}

namespace {

CleanFailure FailureOf(offline::CommitFailure failure) {
  switch (failure) {
    case offline::CommitFailure::NotWritten:
      return CleanFailure::NotWritten;
    case offline::CommitFailure::Unfinished:
      return CleanFailure::Unfinished;
    case offline::CommitFailure::None:
      break;
  }
  return CleanFailure::None;
}

// A name that no session has yet.
offline::DiskPlace NewSession(const offline::DiskRoot& backups) {
  const std::string stem = TimeText("%Y%m%dT%H%M%SZ");
  offline::DiskPlace session(backups, stem);
  for (int i = 2; session.Exists(); ++i) {
    session = offline::DiskPlace(backups, stem + (i < 10 ? "-0" : "-") + std::to_string(i));
  }
  return session;
}

}  // namespace

CommitResult CleanSession::Parts::Commit() {
  CommitResult result;
  const auto fail = [&result](CleanFailure failure, std::string error) {
    result.failure = failure;
    result.error = std::move(error);
    return result;
  };
  if (options.dryRun) return fail(CleanFailure::WrongUse, "a dry run can't be committed");
  if (journal.entries.empty()) return result;
  CommitPlan plan;
  plan.config = config;
  if (std::string why = PlanHives(plan); !why.empty()) return fail(CleanFailure::NotWritten, why);
  if (std::string why = PlanFiles(plan); !why.empty()) return fail(CleanFailure::NotWritten, why);
  if (std::string why = OpenBackups(); !why.empty()) return fail(CleanFailure::WrongUse, why);
  journal.info.time = TimeText("%Y-%m-%dT%H:%M:%SZ");
  const std::string text = FormatJournal(journal);
  if (std::string why = WhyNotRoom(plan, text.size()); !why.empty())
    return fail(CleanFailure::Refused, why);
  plan.session = NewSession(backups);
  Places made;
  if (std::string why = WriteSession(plan, text, made); !why.empty()) {
    TakeAway(made);
    return fail(CleanFailure::NotWritten, why);
  }
  made.push_back(plan.session / kRecordFile.substr(1));
  made.push_back(plan.session / offline::kCarryingOutFile.substr(1));
  offline::CommitOutcome outcome = offline::RunCommit(disk, plan);
  if (outcome.failure == offline::CommitFailure::NotWritten) {
    TakeAway(made);
  } else {
    result.session = plan.session.Name();
    result.folder = plan.session.Text();
  }
  result.notes = std::move(outcome.notes);
  return fail(FailureOf(outcome.failure), outcome.error);
}

}  // namespace scrubwell
