#include "backends/common/overlay_files.h"

#include <algorithm>

#include "backends/common/content_digest.h"
#include "registry/Stringhelper.h"

namespace scrubwell {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 28U;

// Without what the system takes off a component: blanks and dots at its end.
UnicodeView Trimmed(UnicodeView component) {
  const std::size_t end = component.find_last_not_of(u" .");
  return component.substr(0, end == UnicodeView::npos ? 0 : end + 1);
}

}  // namespace

UnicodeString OverlayFiles::Mark(UnicodeView path, FsView view) const {
  UnicodeString whole = UpperCase(physical_(path, view));
  std::replace(whole.begin(), whole.end(), u'/', u'\\');
  UnicodeString mark;
  for (std::size_t from = 0; from < whole.size();) {
    const std::size_t to = std::min(whole.find(u'\\', from), whole.size());
    const UnicodeView name = Trimmed(UnicodeView(whole).substr(from, to - from));
    if (!name.empty()) (mark += mark.empty() ? u"" : u"\\") += name;
    from = to + 1;
  }
  return mark;
}

const OverlayFiles::Planned* OverlayFiles::Find(UnicodeView path, FsView view) const {
  if (planned_.empty()) return nullptr;
  const auto it = planned_.find(Mark(path, view));
  return it == planned_.end() ? nullptr : &it->second;
}

Status OverlayFiles::Stat(UnicodeView path, FsView view, FileInfo& out) {
  const Planned* const planned = Find(path, view);
  if (planned == nullptr) return base_.Stat(path, view, out);
  if (planned->isGone) return Status::Absent;
  out = {false};
  return Status::Ok;
}

Status OverlayFiles::Size(UnicodeView path, FsView view, std::uint64_t& out) {
  const Planned* const planned = Find(path, view);
  if (planned == nullptr) return base_.Size(path, view, out);
  out = planned->data.size();
  return planned->isGone ? Status::Absent : Status::Ok;
}

Status OverlayFiles::List(UnicodeView path, FsView view, std::vector<DirEntry>& out) {
  const Planned* const planned = Find(path, view);
  if (planned != nullptr) return out.clear(), Status::Absent;
  const Status status = base_.List(path, view, out);
  if (status != Status::Ok || planned_.empty()) return status;
  const UnicodeString folder = Mark(path, view) + u"\\";
  std::map<UnicodeString, const Planned*> mine;
  for (auto it = planned_.lower_bound(folder);
       it != planned_.end() && it->first.starts_with(folder); ++it) {
    const UnicodeView name = UnicodeView(it->first).substr(folder.size());
    if (name.find(u'\\') == UnicodeView::npos) mine.emplace(name, &it->second);
  }
  std::erase_if(out,
                [&mine](const DirEntry& entry) { return mine.contains(UpperCase(entry.name)); });
  for (const auto& [upper, entry] : mine)
    if (!entry->isGone) out.push_back({entry->name, false, entry->data.size()});
  return status;
}

Status OverlayFiles::Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) {
  const Planned* const planned = Find(path, view);
  if (planned == nullptr) return base_.Read(path, view, limit, out);
  out.clear();
  if (planned->isGone) return Status::Absent;
  if (planned->data.size() > limit) return Status::Corrupt;
  out = planned->data;
  return Status::Ok;
}

// The change with the file as it is now; Absent when there is none.
Status OverlayFiles::Take(JournalAction action, UnicodeView path, PlannedChange& out) {
  out.entry.item.action = action;
  out.entry.item.place = path;
  FileInfo info;
  Status status = Stat(path, FsView::Physical, info);
  if (status == Status::Ok && info.isFolder) return Status::Denied;
  if (status == Status::Ok) status = Read(path, FsView::Physical, kLargestFile, out.entry.content);
  if (status != Status::Ok) return status == Status::Corrupt ? Status::Denied : status;
  out.entry.existed = true;
  out.entry.item.bytes = out.entry.content.size();
  out.entry.digestBefore = ContentDigest(out.entry.content);
  return Status::Ok;
}

Status OverlayFiles::Write(UnicodeView path, const Bytes& data) {
  PlannedChange change;
  Status status = Take(JournalAction::WriteFile, path, change);
  if (status != Status::Ok && status != Status::Absent) return status;
  change.entry.digestAfter = ContentDigest(data);
  change.data = data;
  status = plan_.Add(std::move(change));
  if (status == Status::Ok)
    planned_[Mark(path, FsView::Physical)] = {UnicodeString(ExtractFileName(path)), false, data};
  return status;
}

Status OverlayFiles::EraseFile(UnicodeView path) {
  PlannedChange change;
  Status status = Take(JournalAction::EraseFile, path, change);
  if (status == Status::Ok) status = plan_.Add(std::move(change));
  if (status == Status::Ok) planned_[Mark(path, FsView::Physical)] = {{}, true, {}};
  return status;
}

Status OverlayFiles::EraseFolder(UnicodeView path) {
  FileInfo info;
  std::vector<DirEntry> entries;
  Status status = Stat(path, FsView::Physical, info);
  if (status == Status::Ok && !info.isFolder) status = Status::Denied;
  if (status == Status::Ok) status = List(path, FsView::Physical, entries);
  if (status == Status::Ok && !entries.empty()) status = Status::Denied;
  if (status != Status::Ok) return status;
  PlannedChange change;
  change.entry.item.action = JournalAction::EraseFolder;
  change.entry.item.place = path;
  change.entry.existed = true;
  status = plan_.Add(std::move(change));
  if (status == Status::Ok) planned_[Mark(path, FsView::Physical)] = {{}, true, {}};
  return status;
}

Status OverlayFiles::Backup(UnicodeView path) {
  PlannedChange change;
  const Status status = Take(JournalAction::KeepFile, path, change);
  return status == Status::Ok ? plan_.Add(std::move(change)) : status;
}

}  // namespace scrubwell
