// Scheduled tasks of the switched-off system.
#pragma once

#include "backends/offline/offline_system.h"

namespace scrubwell::offline {

/// The .job files of the tasks folder. From Vista on they stand for tasks that the registry and a
/// second file describe; these go together.
class OfflineTasks final : public ITasks {
 public:
  OfflineTasks(IRegistry& registry, OfflineSystem& system, IFiles& files)
      : registry_(registry), system_(system), files_(files) {}
  Status Connect() override { return Status::Ok; }
  Status Names(TStringList& out) override;
  /// A bare name that the task's working folder holds is given with that folder; Unknown when the
  /// folder can't be looked into.
  Status Application(UnicodeView job, UnicodeString& out) override;
  Status Remove(UnicodeView job) override;

 private:
  UnicodeString Folder();
  Status InWorkingFolder(UnicodeView folder, UnicodeString& application);
  Status RemoveDescription(UnicodeView name);

  IRegistry& registry_;
  OfflineSystem& system_;
  IFiles& files_;
};

}  // namespace scrubwell::offline
