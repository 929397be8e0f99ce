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

Status WindowsTasks::Activate(UnicodeView job, ComPtr<ITask>& out) {
  if (!scheduler_.Good()) return Status::Unknown;
  ComPtr<IUnknown> item;
  HRESULT result = scheduler_->Activate(Wide(TaskName(job)), IID_ITask, item.Out());
  if (SUCCEEDED(result)) result = item->QueryInterface(IID_ITask, out.OutVoid());
  return StatusOfCom(result);
}

Status WindowsTasks::Application(UnicodeView job, UnicodeString& out) {
  out.clear();
  ComPtr<ITask> task;
  if (const Status status = Activate(job, task); status != Status::Ok) return status;
  TaskText name;
  const HRESULT result = task->GetApplicationName(name.Out());
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

Status WindowsTasks::FileOf(UnicodeView job, UnicodeString& out) {
  ComPtr<ITask> task;
  if (const Status status = Activate(job, task); status != Status::Ok) return status;
  ComPtr<IPersistFile> file;
  TaskText name;
  HRESULT result = task->QueryInterface(IID_IPersistFile, file.OutVoid());
  if (SUCCEEDED(result)) result = file->GetCurFile(name.Out());
  out = name.Text();
  return result == S_OK && !out.empty() ? Status::Ok : Status::Unknown;
}

// Old schedulers are content with the file. Later ones keep lists of their own, which saving a task
// enters it in.
Status WindowsTasks::Register(UnicodeView job, UnicodeView file) {
  if (!mayChange_) return Status::Denied;
  ComPtr<ITask> task;
  if (const Status status = Activate(job, task); status != Status::Absent) return status;
  ComPtr<IUnknown> item;
  ComPtr<IPersistFile> stored;
  HRESULT result = scheduler_->NewWorkItem(Wide(TaskName(job)), CLSID_CTask, IID_ITask, item.Out());
  if (SUCCEEDED(result)) result = item->QueryInterface(IID_IPersistFile, stored.OutVoid());
  if (SUCCEEDED(result)) result = stored->Load(Wide(UnicodeString(file)), STGM_READ);
  if (SUCCEEDED(result)) result = stored->Save(nullptr, TRUE);
  return StatusOfCom(result);
}

Status WindowsTasks::Remove(UnicodeView job) {
  if (!mayChange_) return Status::Denied;
  if (!scheduler_.Good()) return Status::Unknown;
  return StatusOfCom(scheduler_->Delete(Wide(TaskName(job))));
}

}  // namespace scrubwell::windows
