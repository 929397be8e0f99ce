// Tasks of the running system's 1.0 scheduler.
#pragma once

#include "backends/windows/com.h"

// After the general header.
#include <mstask.h>

namespace scrubwell::windows {

ComFactory<ITaskScheduler> SystemScheduler();

class WindowsTasks final : public ITasks {
 public:
  WindowsTasks(bool mayChange, IFiles& files, ComFactory<ITaskScheduler> create)
      : mayChange_(mayChange), files_(files), create_(std::move(create)) {}
  Status Connect() override;
  Status Names(TStringList& out) override;
  /// A bare name that the task's working folder holds is given with that folder; Unknown when the
  /// folder can't be looked into.
  Status Application(UnicodeView job, UnicodeString& out) override;
  Status Remove(UnicodeView job) override;

  /// The task's own file.
  Status FileOf(UnicodeView job, UnicodeString& out);
  /// Makes the scheduler know a task whose file was put back in its place.
  Status Register(UnicodeView job, UnicodeView file);

 private:
  /// The task of exactly that file, with the name that this scheduler knows it by.
  Status Activate(UnicodeView job, ComPtr<ITask>& out, UnicodeString& name);
  Status InWorkingFolder(ITask& task, UnicodeString& application);

  bool mayChange_;
  IFiles& files_;
  ComFactory<ITaskScheduler> create_;
  ComPtr<ITaskScheduler> scheduler_;
};

}  // namespace scrubwell::windows
