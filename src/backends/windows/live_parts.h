// What an open clean of the running system consists of. Not for use outside this folder.
#pragma once

#include "backends/common/overlay_services.h"
#include "backends/windows/com_factories.h"
#include "backends/windows/live_journal.h"
#include "backends/windows/live_marks.h"
#include "backends/windows/live_places.h"
#include "backends/windows/live_session.h"
#include "backends/windows/windows_files.h"
#include "backends/windows/windows_system.h"

namespace scrubwell::windows {

/// What the system is changed with, past all plans.
struct LiveTools {
  explicit LiveTools(ComFactories factories)
      : tasks(true, files, std::move(factories.scheduler)),
        firewall(true, std::move(factories.firewall), std::move(factories.firewallEntry)),
        browser(true, registry, std::move(factories.urlHistory)) {}

  ComApartment apartment;  // before everything that holds objects
  WindowsRegistry registry{true};
  LivePlaces places{registry};
  WindowsFiles files{true, {}};
  WindowsTasks tasks;
  WindowsFirewall firewall;
  WindowsBrowser browser;
};

/// What tells one Windows from another, whatever drive it is on.
UnicodeString IdentityOf(IRegistry& registry);

/// Completes a planned change with the state of what only the system knows. Denied for what could
/// not be put back.
Status Complete(LiveTools& tools, PlannedChange& change);
/// Ok when everything is as the plan has it, Absent when it is not; else it can't be told.
Status Unchanged(LiveTools& tools, const PlannedChange& change);
/// Makes one change.
Status Carry(LiveTools& tools, const PlannedChange& change);

/// A clean under way.
class LiveSession final : public ICleanSession, private IPlan {
 public:
  LiveSession(const CleanOptions& options, std::string backupFolder, LiveLock lock,
              ComFactories factories);

  ITarget& Backend() override { return target_; }
  void BeginRound() override { registry_.ForgetDeletions(); }
  void BeginProblem(const JournalProblem& problem) override;
  void EndProblem(bool fixed) override;
  [[nodiscard]] const std::vector<JournalProblem>& Problems() const override {
    return journal_.problems;
  }
  [[nodiscard]] const std::vector<JournalItem>& Items() const override { return items_; }
  CommitResult Commit() override;

 private:
  /// The running system with the plan on top.
  class PlannedSystem final : public ITarget {
   public:
    PlannedSystem(WindowsBackend& backend, TPlatform platform)
        : backend_(backend), platform_(std::move(platform)) {}
    TPlatform& Platform() override { return platform_; }
    [[nodiscard]] const TargetFacts& Target() const override { return backend_.Target(); }
    [[nodiscard]] const std::vector<UnicodeString>& Notes() const override {
      return backend_.Notes();
    }

   private:
    WindowsBackend& backend_;
    TPlatform platform_;
  };

  Status Add(PlannedChange change) override;
  TPlatform Composed();
  std::string MakeChange(PlannedChange& change, LiveJournal& writer, CommitResult& result);

  CleanOptions options_;
  std::string backupFolder_;
  LiveLock lock_;
  WindowsBackend backend_;
  LiveTools tools_;
  OverlayRegistry registry_;
  OverlayFiles files_;
  OverlayProfiles profiles_;
  OverlayTasks tasks_;
  OverlayFirewall firewall_;
  OverlayBrowser browser_;
  PlannedSystem target_;
  Journal journal_;  // without its entries
  std::vector<JournalItem> items_;
  std::vector<PlannedChange> plan_;
  std::size_t problem_ = JournalItem::NoProblem;
  bool isCommitted_ = false;
};

}  // namespace scrubwell::windows
