#include "backends/windows/windows_tasks.h"

#include "backends/windows/windows_system.h"
#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

constexpr UnicodeView kService = u"Schedule";
constexpr UnicodeView kExtensions[] = {u"", u".exe", u".com", u".bat", u".cmd"};

// What a scheduler may want to be asked by for a task that its enumeration names so. Most take the
// name as it is, some add ".job" to whatever they are given.
TStringList Spellings(UnicodeView job) {
  constexpr UnicodeView kJob = u".job";
  TStringList spellings = {UnicodeString(job)};
  if (job.size() > kJob.size() && SameText(job.substr(job.size() - kJob.size()), kJob))
    spellings.emplace_back(job.substr(0, job.size() - kJob.size()));
  return spellings;
}

Status FileName(ITask& task, UnicodeString& out) {
  ComPtr<IPersistFile> file;
  TaskText name;
  HRESULT result = task.QueryInterface(IID_IPersistFile, file.OutVoid());
  if (SUCCEEDED(result)) result = file->GetCurFile(name.Out());
  out = name.Text();
  return result == S_OK && !out.empty() ? Status::Ok : Status::Unknown;
}

// Whether the object is the task that the enumeration names so, and not the one of "a.job" in place
// of "a.job.job". One that doesn't tell its file is believed.
bool IsTaskOf(UnicodeView job, ITask& task) {
  UnicodeString file;
  if (FileName(task, file) != Status::Ok) return true;
  return SameText(UnicodeView(file).substr(file.rfind(u'\\') + 1), job);
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

Status WindowsTasks::Activate(UnicodeView job, ComPtr<ITask>& out, UnicodeString& name) {
  if (!scheduler_.Good()) return Status::Unknown;
  Status answer = Status::Absent;
  for (const UnicodeString& spelling : Spellings(job)) {
    ComPtr<IUnknown> item;
    HRESULT result = scheduler_->Activate(Wide(spelling), IID_ITask, item.Out());
    if (SUCCEEDED(result)) result = item->QueryInterface(IID_ITask, out.OutVoid());
    if (SUCCEEDED(result) && IsTaskOf(job, *out.Get())) return name = spelling, Status::Ok;
    // A spelling that the scheduler doesn't take names no task of it.
    if (SUCCEEDED(result) || result == E_INVALIDARG) continue;
    if (StatusOfCom(result) != Status::Absent) answer = StatusOfCom(result);
  }
  out.Reset();
  return answer;
}

Status WindowsTasks::Application(UnicodeView job, UnicodeString& out) {
  out.clear();
  ComPtr<ITask> task;
  UnicodeString name;
  if (const Status status = Activate(job, task, name); status != Status::Ok) return status;
  TaskText text;
  const HRESULT result = task->GetApplicationName(text.Out());
  if (FAILED(result)) return StatusOfCom(result);
  out = text.Text();
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
  UnicodeString name;
  const Status status = Activate(job, task, name);
  return status == Status::Ok ? FileName(*task.Get(), out) : status;
}

// Old schedulers are content with the file. Later ones keep lists of their own, which saving a task
// enters it in.
Status WindowsTasks::Register(UnicodeView job, UnicodeView file) {
  if (!mayChange_) return Status::Denied;
  ComPtr<ITask> task;
  UnicodeString name;
  if (const Status status = Activate(job, task, name); status != Status::Absent) return status;
  Status answer = Status::Unknown;
  for (const UnicodeString& spelling : Spellings(job)) {
    ComPtr<IUnknown> item;
    ComPtr<IPersistFile> stored;
    HRESULT result = scheduler_->NewWorkItem(Wide(spelling), CLSID_CTask, IID_ITask, item.Out());
    if (SUCCEEDED(result)) result = item->QueryInterface(IID_ITask, task.OutVoid());
    if (SUCCEEDED(result) && !IsTaskOf(job, *task.Get())) continue;
    if (SUCCEEDED(result)) result = item->QueryInterface(IID_IPersistFile, stored.OutVoid());
    if (SUCCEEDED(result)) result = stored->Load(Wide(UnicodeString(file)), STGM_READ);
    if (SUCCEEDED(result)) result = stored->Save(nullptr, TRUE);
    answer = StatusOfCom(result);
    if (answer == Status::Ok) break;
  }
  return answer;
}

Status WindowsTasks::Remove(UnicodeView job) {
  if (!mayChange_) return Status::Denied;
  ComPtr<ITask> task;
  UnicodeString name;
  const Status status = Activate(job, task, name);
  if (status != Status::Ok) return status;
  task.Reset();
  return StatusOfCom(scheduler_->Delete(Wide(name)));
}

}  // namespace scrubwell::windows
