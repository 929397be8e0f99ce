// Scheduled tasks of the switched-off system.
#pragma once

#include "backends/offline/offline_system.h"

namespace scrubwell::offline {

/// The .job files of the tasks folder. Reading only: removal is Denied.
class OfflineTasks final : public ITasks {
 public:
  OfflineTasks(IRegistry& registry, OfflineSystem& system, OfflineFiles& files)
      : registry_(registry), system_(system), files_(files) {}
  Status Connect() override { return Status::Ok; }
  Status Names(TStringList& out) override;
  Status Application(UnicodeView job, UnicodeString& out) override;
  Status Remove(UnicodeView job) override;

 private:
  UnicodeString Folder();

  IRegistry& registry_;
  OfflineSystem& system_;
  OfflineFiles& files_;
};

}  // namespace scrubwell::offline
