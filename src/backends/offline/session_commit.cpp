// From the changes in memory to a commit: new images, checks, backup, journal.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "backends/offline/guards.h"
#include "backends/offline/intent.h"
#include "backends/offline/session_parts.h"
#include "formats/regf/log.h"

namespace scrubwell {
namespace {

using offline::CommitPlan;
using offline::CommitStep;
using offline::FileChange;

constexpr std::string_view kLogEndings[] = {".LOG", ".LOG1", ".LOG2"};

std::string Sentence(const std::string& path, int error) {
  return path + ": " + std::strerror(error);
}

std::string TimeText(const char* format) {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm parts{};
  ::gmtime_r(&now, &parts);
  char text[32];
  return {text, std::strftime(text, sizeof text, format, &parts)};
}

std::vector<std::string> LogsOf(const std::string& hive) {
  std::vector<std::string> logs;
  const std::filesystem::path path(hive);
  std::error_code ignored;
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path.parent_path(), ignored)) {
    const UnicodeString name = FromUtf8(entry.path().filename().string());
    for (const std::string_view ending : kLogEndings) {
      if (SameText(name, FromUtf8(path.filename().string()) + FromUtf8(ending))) {
        logs.push_back(entry.path().string());
      }
    }
  }
  return logs;
}

std::uint32_t NewestOf(const std::vector<std::string>& logs) {
  std::uint32_t newest = 0;
  for (const std::string& log : logs) {
    Bytes bytes;
    if (offline::ReadWholeFile(log, bytes) == 0) {
      newest = std::max(newest, regf::NewestLogSequence(bytes));
    }
  }
  return newest;
}

// Damage that was there before may stay; none may be added.
bool IsAsSoundAs(const Bytes& image, const Bytes& before) {
  const std::vector<std::string> problems = regf::CheckImage(image);
  return problems.empty() || problems.size() <= regf::CheckImage(before).size();
}

}  // namespace

std::string CleanSession::Parts::RelativeTo(const std::string& local, char16_t letter) {
  const offline::Drive* const drive = World().drives.Get(letter);
  return drive == nullptr ? std::string() : local.substr(drive->canonical.size() + 1);
}

std::string CleanSession::Parts::PlanHive(offline::RegfHive& hive, CommitPlan& plan) {
  CommitStep step;
  step.kind = CommitStep::Kind::Replace;
  step.local = hive.File();
  step.letter = hive.Path().front();
  step.relative = RelativeTo(step.local, step.letter);
  step.existed = true;
  const std::vector<std::string> logs = LogsOf(step.local);
  Bytes before;
  int error = offline::ReadWholeFile(step.local, before);
  if (error == 0) error = offline::ReadAttributes(step.local, step.attributes);
  if (error != 0) return Sentence(step.local, error);
  step.attributes.modifiedSeconds = step.attributes.modifiedNanoseconds = 0;
  step.hashBefore = ContentHash(before);
  step.data = hive.Finish(NewestOf(logs));
  step.hashAfter = ContentHash(step.data);
  const regf::OpenedHive written = regf::Hive::FromBytes(step.data, step.local);
  if (written.hive == nullptr || !IsAsSoundAs(step.data, before)) {
    return step.local + ": the changed hive would not be sound";
  }
  const std::string why =
      offline::WhyNotAsIntended(hive.Original(), *written.hive, journal.entries, hive.Path());
  if (!why.empty()) return why;
  plan.steps.push_back(std::move(step));
  for (const std::string& log : logs) {
    Bytes bytes;
    error = offline::ReadWholeFile(log, bytes);
    if (error != 0) return Sentence(log, error);
    if (bytes.empty()) continue;
    CommitStep& cut = plan.steps.emplace_back();
    cut.kind = CommitStep::Kind::Truncate;
    cut.local = log;
    cut.letter = hive.Path().front();
    cut.relative = RelativeTo(log, cut.letter);
    cut.existed = true;
    cut.hashBefore = ContentHash(bytes);
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

// False when nothing is left to do for this file.
bool CleanSession::Parts::PlanFile(const std::string& local, const FileChange& change,
                                   CommitStep& step) {
  step.local = local;
  step.letter = change.path.front();
  step.relative = RelativeTo(local, step.letter);
  step.existed = offline::PathExists(local);
  Bytes before;
  if (step.existed && offline::ReadWholeFile(local, before) == 0) {
    step.hashBefore = ContentHash(before);
  }
  switch (change.kind) {
    case FileChange::Kind::FolderMade:
      step.kind = CommitStep::Kind::MakeFolder;
      return !step.existed;
    case FileChange::Kind::FolderErased:
      step.kind = CommitStep::Kind::EraseFolder;
      return step.existed;
    case FileChange::Kind::Erased:
      step.kind = CommitStep::Kind::Erase;
      return step.existed;
    case FileChange::Kind::Written:
      break;
  }
  step.kind = CommitStep::Kind::Replace;
  step.data = change.data;
  step.hashAfter = ContentHash(step.data);
  if (change.attributes) {
    step.attributes = *change.attributes;
  } else if (step.existed) {
    offline::ReadAttributes(local, step.attributes);
    step.attributes.modifiedSeconds = step.attributes.modifiedNanoseconds = 0;
  } else {
    step.attributes = {0600, ::geteuid(), ::getegid(), 0, 0, {}};
  }
  return true;
}

std::string CleanSession::Parts::PlanFiles(CommitPlan& plan) {
  std::vector<CommitStep> folders;
  std::vector<CommitStep> erased;
  for (const auto& [local, change] : World().files.Changes()) {
    CommitStep step;
    if (!PlanFile(local, change, step)) continue;
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
    return aFile != bFile ? aFile : a.local > b.local;
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
    std::error_code ignored;
    const auto size = std::filesystem::file_size(step.local, ignored);
    if (!ignored && step.existed) kept += size;
    if (!offline::PathExists(offline::FolderOf(step.local))) continue;
    const std::string why = offline::WhyFolderUnfit(offline::FolderOf(step.local));
    if (!why.empty()) return why;
  }
  for (const JournalEntry& entry : journal.entries) kept += entry.content.size();
  // Backup and hives may share one volume; then it needs room for both.
  const std::string why = offline::WhyTooFull(disk, config, fresh + kept);
  return why.empty() ? offline::WhyTooFull(disk, backupFolder, kept) : why;
}

std::string CleanSession::Parts::NewFolder(const std::string& folder,
                                           std::vector<std::string>& made) {
  if (const int error = disk.MakeFolder(folder); error != 0) return Sentence(folder, error);
  made.push_back(folder);
  return {};
}

std::string CleanSession::Parts::WriteInto(const std::string& file,
                                           std::span<const std::uint8_t> data,
                                           std::vector<std::string>& made) {
  made.push_back(file);
  const int error = offline::WriteNewFile(disk, file, data);
  return error == 0 ? std::string() : Sentence(file, error);
}

std::string CleanSession::Parts::CopyOriginals(const CommitPlan& plan,
                                               std::vector<std::string>& made) {
  const std::string folder = plan.session + std::string(kHivesFolder);
  if (std::string why = NewFolder(folder, made); !why.empty()) return why;
  std::size_t number = 0;
  for (const CommitStep& step : plan.steps) {
    if (step.letter == 0 || !step.existed) continue;
    if (step.kind != CommitStep::Kind::Replace && step.kind != CommitStep::Kind::Truncate) continue;
    Bytes bytes;
    if (const int error = offline::ReadWholeFile(step.local, bytes); error != 0) {
      return Sentence(step.local, error);
    }
    if (ContentHash(bytes) != step.hashBefore) {
      return step.local + ": was changed by others meanwhile";
    }
    const std::string name = std::filesystem::path(step.local).filename().string();
    const std::string copy = folder + "/" + std::to_string(++number) + "-" + name;
    if (std::string why = WriteInto(copy, bytes, made); !why.empty()) return why;
  }
  if (const int error = disk.Sync(folder); error != 0) return Sentence(folder, error);
  return {};
}

// Backup first, then the journal: with the journal whole, everything that it needs is there.
std::string CleanSession::Parts::WriteSession(CommitPlan& plan, const std::string& text,
                                              std::vector<std::string>& made) {
  if (std::string why = NewFolder(plan.session, made); !why.empty()) return why;
  if (std::string why = CopyOriginals(plan, made); !why.empty()) return why;
  const std::string files = plan.session + std::string(kFilesFolder);
  if (std::string why = NewFolder(files, made); !why.empty()) return why;
  for (const JournalEntry& entry : journal.entries) {
    if (entry.item.action < JournalAction::WriteFile || !entry.existed) continue;
    const std::string copy = ContentFile(plan.session, entry);
    if (std::string why = WriteInto(copy, entry.content, made); !why.empty()) return why;
  }
  if (const int error = disk.Sync(files); error != 0) return Sentence(files, error);
  const std::string file = plan.session + std::string(kJournalFile);
  const auto* const data = reinterpret_cast<const std::uint8_t*>(text.data());
  if (std::string why = WriteInto(file, {data, text.size()}, made); !why.empty()) return why;
  for (const std::string& folder : {plan.session, backupFolder}) {
    if (const int error = disk.Sync(folder); error != 0) return Sentence(folder, error);
  }
  return {};
}

// A session that never came to its commit is of no use to anybody.
void CleanSession::Parts::TakeAway(const std::vector<std::string>& made) {
  for (auto path = made.rbegin(); path != made.rend(); ++path) {
    if (std::filesystem::is_directory(*path)) {
      disk.EraseFolder(*path);
    } else if (offline::PathExists(*path)) {
      disk.EraseFile(*path);
    }
  }
}

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
  std::error_code wrong;
  std::filesystem::create_directories(backupFolder, wrong);
  if (wrong) return fail(CleanFailure::WrongUse, backupFolder + ": " + wrong.message());
  journal.info.time = TimeText("%Y-%m-%dT%H:%M:%SZ");
  const std::string text = FormatJournal(journal);
  if (std::string why = WhyNotRoom(plan, text.size()); !why.empty())
    return fail(CleanFailure::Refused, why);
  std::string name = TimeText("%Y%m%dT%H%M%SZ");
  for (int i = 2; offline::PathExists(backupFolder + "/" + name); ++i) {
    name = TimeText("%Y%m%dT%H%M%SZ") + (i < 10 ? "-0" : "-") + std::to_string(i);
  }
  plan.session = backupFolder + "/" + name;
  std::vector<std::string> made;
  if (std::string why = WriteSession(plan, text, made); !why.empty()) {
    TakeAway(made);
    return fail(CleanFailure::NotWritten, why);
  }
  made.push_back(plan.session + std::string(kRecordFile));
  made.push_back(plan.session + "/carrying-out");
  offline::CommitOutcome outcome = offline::RunCommit(disk, plan);
  if (outcome.failure == CleanFailure::NotWritten) {
    TakeAway(made);
  } else {
    result.session = name;
    result.folder = plan.session;
  }
  result.notes = std::move(outcome.notes);
  return fail(outcome.failure, outcome.error);
}

}  // namespace scrubwell
