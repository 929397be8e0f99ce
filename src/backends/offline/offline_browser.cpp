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
  TStringList urls;
  const Status status = Urls(urls);
  if (status != Status::Ok) return status;
  return std::find(urls.begin(), urls.end(), url) == urls.end() ? Status::Absent : Status::Ok;
}

Status OfflineBrowser::CacheNames(TStringList& out) {
  const AddressIndex& index = Load();
  out = index.cached;
  out.insert(out.end(), index.visited.begin(), index.visited.end());
  return index.status;
}

Status OfflineBrowser::RemoveUrl(UnicodeView) {
  return Status::Denied;
}

}  // namespace scrubwell::offline
