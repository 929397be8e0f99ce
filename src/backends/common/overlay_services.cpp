#include "backends/common/overlay_services.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell {

// ---- INI entries ---------------------------------------------------------------------------

IProfiles& OverlayProfiles::For(UnicodeView file) {
  if (changed_.contains(UpperCase(file))) return edited_;
  return base_;
}

Status OverlayProfiles::Get(UnicodeView file, UnicodeView section, UnicodeView key,
                            UnicodeString& out) {
  return For(file).Get(file, section, key, out);
}

Status OverlayProfiles::Entries(UnicodeView file, UnicodeView section, TStringList& out) {
  return For(file).Entries(file, section, out);
}

Status OverlayProfiles::Put(UnicodeView file, UnicodeView section, UnicodeView key,
                            UnicodeView value) {
  UnicodeString old;
  Status status = Get(file, section, key, old);  // what is not there is never made
  if (status == Status::Ok) status = edited_.Put(file, section, key, value);
  if (status == Status::Ok) changed_.insert(UpperCase(file));
  return status;
}

Status OverlayProfiles::Remove(UnicodeView file, UnicodeView section, UnicodeView key) {
  UnicodeString old;
  Status status = Get(file, section, key, old);
  if (status == Status::Ok) status = edited_.Remove(file, section, key);
  if (status == Status::Ok) changed_.insert(UpperCase(file));
  return status;
}

// ---- Tasks ---------------------------------------------------------------------------------

Status OverlayTasks::Names(TStringList& out) {
  const Status status = base_.Names(out);
  std::erase_if(out,
                [this](const UnicodeString& job) { return removed_.contains(UpperCase(job)); });
  return status;
}

Status OverlayTasks::Application(UnicodeView job, UnicodeString& out) {
  if (!removed_.contains(UpperCase(job))) return base_.Application(job, out);
  return out.clear(), Status::Absent;
}

Status OverlayTasks::Remove(UnicodeView job) {
  UnicodeString application;
  Status status = Application(job, application);
  if (status == Status::Absent) return status;
  PlannedChange change;
  change.entry.item.action = JournalAction::RemoveTask;
  change.entry.item.name = job;
  status = plan_.Add(std::move(change));
  if (status == Status::Ok) removed_.insert(UpperCase(job));
  return status;
}

// ---- Firewall ------------------------------------------------------------------------------

Status OverlayFirewall::Applications(std::vector<FirewallApplication>& out) {
  const Status status = base_.Applications(out);
  std::erase_if(out, [this](const FirewallApplication& application) {
    return removed_.contains(UpperCase(application.imageFile));
  });
  return status;
}

Status OverlayFirewall::Remove(UnicodeView imageFile) {
  std::vector<FirewallApplication> list;
  Status status = Applications(list);
  if (status != Status::Ok) return status;
  const auto found = std::find_if(list.begin(), list.end(), [imageFile](const auto& application) {
    return SameText(application.imageFile, imageFile);
  });
  if (found == list.end()) return Status::Absent;
  PlannedChange change;
  change.entry.item.action = JournalAction::RemoveFirewallApplication;
  change.entry.item.place = found->imageFile;
  change.entry.item.name = found->name;
  status = plan_.Add(std::move(change));
  if (status == Status::Ok) removed_.insert(UpperCase(imageFile));
  return status;
}

Status OverlayFirewall::SetEnabled(UnicodeView /*imageFile*/, bool /*enabled*/) {
  return Status::Denied;
}

// ---- Browser -------------------------------------------------------------------------------

Status OverlayBrowser::Urls(TStringList& out) {
  const Status status = base_.Urls(out);
  std::erase_if(out, [this](const UnicodeString& url) { return removed_.contains(url); });
  return status;
}

Status OverlayBrowser::QueryUrl(UnicodeView url) {
  return removed_.contains(UnicodeString(url)) ? Status::Absent : base_.QueryUrl(url);
}

Status OverlayBrowser::RemoveUrl(UnicodeView url) {
  Status status = QueryUrl(url);
  if (status != Status::Ok) return status;
  PlannedChange change;
  change.entry.item.action = JournalAction::RemoveUrl;
  change.entry.item.place = url;
  status = plan_.Add(std::move(change));
  if (status == Status::Ok) removed_.emplace(url);
  return status;
}

Status OverlayBrowser::CacheNames(TStringList& out) {
  const Status status = base_.CacheNames(out);
  if (removed_.empty()) return status;
  std::erase_if(out, [this](const UnicodeString& name) {
    // "Visited: user@address"
    const std::size_t at = name.find(u'@');
    return at != UnicodeString::npos && removed_.contains(name.substr(at + 1));
  });
  return status;
}

}  // namespace scrubwell
