#include "backends/offline/offline_tasks.h"

#include "backends/offline/registry_read.h"
#include "formats/job/job.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {

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
    if (!entry.isFolder && SameText(ExtractFileExt(entry.name), u".job")) out.push_back(entry.name);
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
  out = task.application;
  return read;
}

Status OfflineTasks::Remove(UnicodeView) {
  return Status::Denied;
}

}  // namespace scrubwell::offline
