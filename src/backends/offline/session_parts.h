// What an open clean consists of. Not for use outside this folder.
#pragma once

#include "backends/common/journal.h"
#include "backends/offline/commit.h"
#include "backends/offline/offline_parts.h"

namespace scrubwell {

/// Writes down every change with the state before it, and turns them into a commit.
struct CleanSession::Parts final : IRegistryObserver, offline::IFileObserver {
  Parts(const CleanOptions& from, offline::IDisk* writer)
      : options(from), disk(writer != nullptr ? *writer : offline::RealDisk()) {}

  bool BeforeChange(const RegistryChange& change) override;
  bool BeforeFileChange(JournalAction action, const offline::FileTarget& target,
                        const Bytes* data) override;
  /// The change announced last was made, or not.
  void ChangeDone(Status status);
  JournalEntry& Add(JournalEntry entry);

  CleanOpenResult OpenBackend();
  CleanOpenResult ChooseBackupFolder();
  CleanOpenResult SettleInterrupted();
  std::string WhyNotSafe();
  void BeginRecording();
  CommitResult Commit();

  auto& World() { return offline::BackendAccess::Of(*backend); }

  CleanOptions options;
  offline::IDisk& disk;
  std::unique_ptr<OfflineBackend> backend;
  offline::UniqueFd lock;
  std::string backupFolder;
  std::string config;
  Journal journal;
  std::vector<JournalItem> items;
  std::size_t problem = JournalItem::NoProblem;
  bool isAnnounced = false;
  std::vector<offline::CommitStep> furtherSteps;

 private:
  std::string PlanHives(offline::CommitPlan& plan);
  std::string PlanHive(offline::RegfHive& hive, offline::CommitPlan& plan);
  std::string PlanFiles(offline::CommitPlan& plan);
  bool PlanFile(const std::string& local, const offline::FileChange& change,
                offline::CommitStep& step);
  std::string WhyNotRoom(const offline::CommitPlan& plan, std::size_t journalBytes);
  std::string WriteSession(offline::CommitPlan& plan, const std::string& text,
                           std::vector<std::string>& made);
  std::string CopyOriginals(const offline::CommitPlan& plan, std::vector<std::string>& made);
  std::string WriteInto(const std::string& file, std::span<const std::uint8_t> data,
                        std::vector<std::string>& made);
  std::string NewFolder(const std::string& folder, std::vector<std::string>& made);
  void TakeAway(const std::vector<std::string>& made);
  [[nodiscard]] std::string RelativeTo(const std::string& local, char16_t letter);
};

namespace offline {

/// What tells one Windows from another, whatever drive it is on.
UnicodeString IdentityOf(const Installation& installation);

}  // namespace offline

}  // namespace scrubwell
