#include "backends/offline/offline_tasks.h"

#include "backends/offline/registry_read.h"
#include "formats/job/job.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell::offline {
namespace {

constexpr UnicodeView kCache =
    u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Schedule\\TaskCache\\";
// The tasks by number, and the lists that say when they run.
constexpr UnicodeView kCacheLists[] = {u"Plain", u"Boot", u"Logon", u"Maintenance", u"Tasks"};
constexpr UnicodeView kExtensions[] = {u"", u".exe", u".com", u".bat", u".cmd"};

bool IsJobName(UnicodeView name) {
  return name.find_first_of(u"\\/:") == UnicodeView::npos &&
         SameText(ExtractFileExt(name), u".job");
}

bool IsTaskNumber(UnicodeView text) {
  return text.starts_with(u'{') && text.ends_with(u'}') && text.find(u'\\') == UnicodeView::npos;
}

}  // namespace

UnicodeString OfflineTasks::Folder() {
  const KeyRef key{RootKey::LocalMachine, u"SOFTWARE\\Microsoft\\SchedulingAgent", View::Bits64};
  const UnicodeString text = RegistryText(registry_, key, u"TasksFolder");
  return text.empty() ? system_.WindowsDir() + u"\\Tasks" : system_.All(View::Bits64).Expand(text);
}

Status OfflineTasks::Names(TStringList& out) {
  out.clear();
  std::vector<DirEntry> entries;
  const Status status = files_.List(Folder(), FsView::Physical, entries);
  for (const DirEntry& entry : entries) {
    if (!entry.isFolder && IsJobName(entry.name)) out.push_back(entry.name);
  }
  // Without the folder there are no tasks.
  return status == Status::Absent ? Status::Ok : status;
}

Status OfflineTasks::Application(UnicodeView name, UnicodeString& out) {
  Bytes bytes;
  const Status status = files_.Read(Folder() + u"\\" + UnicodeString(name), FsView::Physical,
                                    job::kMaxFileSize, bytes);
  if (status != Status::Ok) return status;
  job::Job task;
  const Status read = job::ReadJob(bytes, task);
  if (read != Status::Ok) return read;
  out = task.application;
  const bool isBare = out.find_first_of(u"\\/:%\"") == UnicodeString::npos && !out.empty();
  return isBare ? InWorkingFolder(task.workingDirectory, out) : Status::Ok;
}

Status OfflineTasks::InWorkingFolder(UnicodeView folder, UnicodeString& application) {
  const UnicodeString path = system_.All(View::Bits64).Expand(RemoveQuotationMarks(Trim(folder)));
  if (path.empty()) return Status::Ok;
  if (files_.Drive(UpCase(path.front())) != DriveKind::Fixed) return Status::Unknown;
  FileInfo info;
  for (const UnicodeView extension : kExtensions) {
    const UnicodeString file =
        IncludeTrailingPathDelimiter(path) + application + UnicodeString(extension);
    const Status status = files_.Stat(file, FsView::Physical, info);
    if (status == Status::Ok && !info.isFolder) return application = file, Status::Ok;
    if (status != Status::Ok && status != Status::Absent) return Status::Unknown;
  }
  return Status::Ok;
}

Status OfflineTasks::Remove(UnicodeView name) {
  if (!IsJobName(name)) return Status::Absent;
  const Status status = files_.EraseFile(Folder() + u"\\" + UnicodeString(name));
  if (status != Status::Ok) return status;
  return RemoveDescription(name.substr(0, name.size() - ExtractFileExt(name).size()));
}

// The scheduler of Vista and later would go on to run a task whose .job file alone is gone.
Status OfflineTasks::RemoveDescription(UnicodeView name) {
  const UnicodeString cache(kCache);
  const UnicodeString tree = cache + u"Tree\\" + UnicodeString(name);
  const KeyRef treeKey{RootKey::LocalMachine, tree, View::Bits64};
  RegValue id;
  Status status = registry_.GetValue(treeKey, u"Id", id);
  if (status != Status::Ok) return status == Status::Absent ? Status::Ok : status;
  const UnicodeString number = TextOf(id);
  if (!IsTaskNumber(number)) return Status::Corrupt;
  for (const UnicodeView list : kCacheLists) {
    const UnicodeString key = cache + UnicodeString(list) + u"\\" + number;
    status = registry_.DeleteKey({RootKey::LocalMachine, key, View::Bits64}, true);
    if (status != Status::Ok && status != Status::Absent) return status;
  }
  status = registry_.DeleteKey(treeKey, true);
  if (status != Status::Ok) return status;
  status = files_.EraseFile(system_.WindowsDir() + u"\\System32\\Tasks\\" + UnicodeString(name));
  return status == Status::Absent ? Status::Ok : status;
}

}  // namespace scrubwell::offline
