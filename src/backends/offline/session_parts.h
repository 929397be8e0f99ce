// What an open clean consists of. Not for use outside this folder.
#pragma once

#include "backends/common/journal.h"
#include "backends/offline/clean_session.h"
#include "backends/offline/offline_parts.h"
#include "backends/offline/pending.h"

namespace scrubwell {

/// Writes down every change with the state before it, and turns them into a commit.
struct CleanSession::Parts final : IRegistryObserver, offline::IFileObserver {
  Parts(const CleanOptions& from, offline::IDisk* writer)
      : options(from), disk(writer != nullptr ? *writer : offline::RealDisk()) {}

  bool BeforeChange(const RegistryChange& change) override;
  bool BeforeFileChange(JournalAction action, const offline::FileTarget& target,
                        const Bytes* data) override;
  /// What keeps a hive from being changed; empty when nothing does.
  std::string WhyNotChange(const offline::RegfHive& hive);
  /// The change announced last was made, or not.
  void ChangeDone(Status status);
  JournalEntry& Add(JournalEntry entry);

  CleanOpenResult OpenBackend();
  CleanOpenResult ChooseBackupFolder();
  /// Makes the backup folder where it is missing and opens it. One sentence when that fails.
  std::string OpenBackups();
  CleanOpenResult SettleInterrupted();
  std::string WhyNotSafe();
  void BeginRecording();
  CommitResult Commit();
  RecoverResult Recover();

  auto& World() { return offline::BackendAccess::Of(*backend); }

  CleanOptions options;
  offline::IDisk& disk;
  std::unique_ptr<OfflineBackend> backend;
  offline::UniqueFd lock;
  std::string backupFolder;
  offline::DiskRoot backups;  ///< opened when it is there
  offline::DiskPlace config;
  Journal journal;
  std::vector<JournalItem> items;
  std::size_t problem = JournalItem::NoProblem;
  bool isAnnounced = false;
  std::vector<offline::CommitStep> furtherSteps;

 private:
  using Places = std::vector<offline::DiskPlace>;

  std::string PlanHives(offline::CommitPlan& plan);
  std::string PlanHive(offline::RegfHive& hive, offline::CommitPlan& plan);
  std::string PlanFiles(offline::CommitPlan& plan);
  static std::string PlanFile(const offline::FileChange& change, offline::CommitStep& step,
                              bool& needed);
  std::string WhyNotRoom(const offline::CommitPlan& plan, std::size_t journalBytes);
  std::string WriteSession(offline::CommitPlan& plan, const std::string& text, Places& made);
  std::string CopyOriginals(const offline::CommitPlan& plan, Places& made);
  std::string WriteInto(const offline::DiskPlace& file, std::span<const std::uint8_t> data,
                        Places& made);
  std::string NewFolder(const offline::DiskPlace& folder, Places& made);
  void TakeAway(const Places& made);
};

}  // namespace scrubwell
