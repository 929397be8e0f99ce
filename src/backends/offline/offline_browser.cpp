#include "backends/offline/offline_browser.h"

#include <algorithm>
#include <unordered_set>

#include "backends/offline/registry_read.h"
#include "formats/msiecf/msiecf.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr int kCacheFolder = 32;
constexpr int kHistoryFolder = 34;
constexpr int kLocalAppData = 28;

}  // namespace

UnicodeView AddressOfName(UnicodeView name) {
  const std::size_t at = name.find(u'@');
  return at == UnicodeView::npos ? UnicodeView() : name.substr(at + 1);
}

int OfflineBrowser::BrowserVersion() {
  const KeyRef key{RootKey::LocalMachine, u"SOFTWARE\\Microsoft\\Internet Explorer", View::Bits64};
  // From 10 on the old value stays at 9 for the sake of old programs.
  UnicodeString text = RegistryText(registry_, key, u"svcVersion");
  if (text.empty()) text = RegistryText(registry_, key, u"Version");
  return StrToIntDef(text.substr(0, text.find(u'.')), 0);
}

void OfflineBrowser::ReadFile(UnicodeView file, TStringList& names, AddressIndex& index) {
  Bytes bytes;
  Status status = files_.Read(file, FsView::Physical, msiecf::kMaxFileSize, bytes);
  if (status == Status::Absent) return;
  std::vector<msiecf::UrlRecord> records;
  if (status == Status::Ok) status = msiecf::ReadUrls(bytes, records);
  if (status != Status::Ok) {
    notes_.Note(UnicodeString(file) + u": the address file can't be read");
    return;
  }
  index.status = Status::Ok;
  if (&names == &index.visited) index.files.emplace_back(file);
  for (const msiecf::UrlRecord& record : records) {
    names.push_back(text_.FromAnsi(record.location));
  }
}

// The folder's own file, and those of the folders of days and weeks below it.
void OfflineBrowser::ReadFolder(UnicodeView folder, TStringList& names, AddressIndex& index) {
  const UnicodeString base(folder);
  ReadFile(base + u"\\index.dat", names, index);
  std::vector<DirEntry> entries;
  if (files_.List(base, FsView::Physical, entries) != Status::Ok) return;
  for (const DirEntry& entry : entries) {
    if (entry.isFolder && SameText(entry.name.substr(0, 6), u"MSHist")) {
      ReadFile(base + u"\\" + entry.name + u"\\index.dat", names, index);
    }
  }
}

const AddressIndex& OfflineBrowser::Load() {
  if (index_) return *index_;
  AddressIndex& index = index_.emplace();
  UnicodeString folder;
  if (shell_.SpecialFolder(kHistoryFolder, folder) == Status::Ok) {
    for (const UnicodeView below :
         {UnicodeView(u"\\History.IE5"), UnicodeView(u"\\Low\\History.IE5")}) {
      ReadFolder(folder + UnicodeString(below), index.visited, index);
    }
  }
  if (shell_.SpecialFolder(kCacheFolder, folder) == Status::Ok) {
    ReadFolder(folder + u"\\Content.IE5", index.cached, index);
  }
  FileInfo info;
  if (shell_.SpecialFolder(kLocalAppData, folder) == Status::Ok &&
      files_.Stat(folder + u"\\Microsoft\\Windows\\WebCache\\WebCacheV01.dat", FsView::Physical,
                  info) != Status::Absent) {
    index.status = Status::Unknown;
    notes_.Note(u"The browser keeps its addresses in a database; they are not checked");
  }
  for (const UnicodeString& name : index.visited) {
    const UnicodeView address = AddressOfName(name);
    if (!address.empty()) index.addresses.emplace(address);
  }
  return index;
}

Status OfflineBrowser::Urls(TStringList& out) {
  out.clear();
  const AddressIndex& index = Load();
  std::unordered_set<UnicodeView> seen;
  for (const UnicodeString& name : index.visited) {
    const UnicodeView address = AddressOfName(name);
    if (!address.empty() && seen.insert(address).second) out.emplace_back(address);
  }
  return index.status;
}

Status OfflineBrowser::QueryUrl(UnicodeView url) {
  const AddressIndex& index = Load();
  if (index.status != Status::Ok) return index.status;
  return index.addresses.contains(UnicodeString(url)) ? Status::Ok : Status::Absent;
}

Status OfflineBrowser::CacheNames(TStringList& out) {
  const AddressIndex& index = Load();
  out = index.cached;
  out.insert(out.end(), index.visited.begin(), index.visited.end());
  return index.status;
}

// Every record of the address goes, from whichever file holds it. All files are worked out before
// the first is written, so that a damaged one leaves the others as they were.
Status OfflineBrowser::RemoveUrl(UnicodeView url) {
  const Status known = QueryUrl(url);
  if (known != Status::Ok) return known;
  std::vector<std::pair<UnicodeView, Bytes>> changed;
  for (const UnicodeString& file : index_->files) {
    Bytes bytes;
    std::vector<msiecf::UrlRecord> records;
    Status status = files_.Read(file, FsView::Physical, msiecf::kMaxFileSize, bytes);
    if (status == Status::Ok) status = msiecf::ReadUrls(bytes, records);
    if (status != Status::Ok) return status;
    bool holds = false;
    for (const msiecf::UrlRecord& record : records) {
      if (AddressOfName(text_.FromAnsi(record.location)) != url) continue;
      status = msiecf::EraseRecord(bytes, record.location);
      if (status != Status::Ok) return status;
      holds = true;
    }
    if (holds) changed.emplace_back(file, std::move(bytes));
  }
  for (const auto& [file, bytes] : changed) {
    const Status status = files_.Write(file, bytes);
    if (status != Status::Ok) return status;
  }
  std::erase_if(index_->visited,
                [url](const UnicodeString& name) { return AddressOfName(name) == url; });
  index_->addresses.erase(UnicodeString(url));
  return changed.empty() ? Status::Absent : Status::Ok;
}

}  // namespace scrubwell::offline
