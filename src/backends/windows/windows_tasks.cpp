#include "backends/windows/windows_tasks.h"

#include "backends/windows/windows_system.h"
#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

constexpr UnicodeView kService = u"Schedule";
constexpr UnicodeView kExtensions[] = {u"", u".exe", u".com", u".bat", u".cmd"};

// The enumeration names files, everything else wants the task's name.
UnicodeString TaskName(UnicodeView job) {
  constexpr UnicodeView kJob = u".job";
  const bool isFile =
      job.size() > kJob.size() && SameText(job.substr(job.size() - kJob.size()), kJob);
  return UnicodeString(isFile ? job.substr(0, job.size() - kJob.size()) : job);
}

}  // namespace

ComFactory<ITaskScheduler> SystemScheduler() {
  return [](ITaskScheduler** out) {
    return CoCreateInstance(CLSID_CTaskScheduler, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskScheduler,
                            reinterpret_cast<void**>(out));
  };
}

Status WindowsTasks::Connect() {
  scheduler_.Reset();
  // Its outcome decides nothing: what can be asked without the service is answered.
  EnsureServiceRuns(kService);
  HRESULT result = create_(scheduler_.Out());
  if (SUCCEEDED(result)) result = scheduler_->SetTargetComputer(nullptr);
  if (FAILED(result)) scheduler_.Reset();
  return StatusOfCom(result);
}

Status WindowsTasks::Names(TStringList& out) {
  out.clear();
  if (!scheduler_.Good()) return Status::Unknown;
  ComPtr<IEnumWorkItems> items;
  const HRESULT result = scheduler_->Enum(items.Out());
  if (FAILED(result)) return StatusOfCom(result);
  for (;;) {
    LPWSTR* names = nullptr;
    ULONG count = 0;
    const HRESULT next = items->Next(1, &names, &count);
    if (FAILED(next)) return StatusOfCom(next);
    if (next != S_OK || count == 0 || names == nullptr) return Status::Ok;
    out.push_back(FromWide(names[0]));
    CoTaskMemFree(names[0]);
    CoTaskMemFree(names);
  }
}

Status WindowsTasks::Application(UnicodeView job, UnicodeString& out) {
  out.clear();
  if (!scheduler_.Good()) return Status::Unknown;
  ComPtr<IUnknown> item;
  HRESULT result = scheduler_->Activate(Wide(TaskName(job)), IID_ITask, item.Out());
  if (FAILED(result)) return StatusOfCom(result);
  ComPtr<ITask> task;
  result = item->QueryInterface(IID_ITask, task.OutVoid());
  if (FAILED(result)) return StatusOfCom(result);
  TaskText name;
  result = task->GetApplicationName(name.Out());
  if (FAILED(result)) return StatusOfCom(result);
  out = name.Text();
  const bool isBare = out.find_first_of(u"\\/:%\"") == UnicodeString::npos && !out.empty();
  return isBare ? InWorkingFolder(*task.Get(), out) : Status::Ok;
}

Status WindowsTasks::InWorkingFolder(ITask& task, UnicodeString& application) {
  TaskText text;
  if (FAILED(task.GetWorkingDirectory(text.Out()))) return Status::Ok;
  const UnicodeString folder = text.Text();
  if (folder.empty()) return Status::Ok;
  if (files_.Drive(folder.front()) != DriveKind::Fixed) return Status::Unknown;
  FileInfo info;
  for (const UnicodeView extension : kExtensions) {
    const UnicodeString file =
        IncludeTrailingPathDelimiter(folder) + application + UnicodeString(extension);
    const Status status = files_.Stat(file, FsView::Physical, info);
    if (status == Status::Ok && !info.isFolder) return application = file, Status::Ok;
    if (status != Status::Ok && status != Status::Absent) return Status::Unknown;
  }
  return Status::Ok;
}

Status WindowsTasks::Remove(UnicodeView job) {
  if (!mayChange_) return Status::Denied;
  if (!scheduler_.Good()) return Status::Unknown;
  return StatusOfCom(scheduler_->Delete(Wide(TaskName(job))));
}

}  // namespace scrubwell::windows
