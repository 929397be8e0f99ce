#include "backends/windows/windows_browser.h"

#include <wininet.h>

#include <cstring>
#include <unordered_set>

#include "registry/Stringhelper.h"

// In the system's library of numbers, but in none of its headers.
extern "C" const CLSID CLSID_CUrlHistory;

namespace scrubwell::windows {
namespace {

using OwnedSearch = Owned<HANDLE, &FindCloseUrlCache>;

constexpr UnicodeView kVisited = u"Visited:";
// The system's answer for an address that the history doesn't have.
constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80070002);

UnicodeView AddressOf(UnicodeView name) {
  const std::size_t at = name.find(u'@');
  return at == UnicodeView::npos ? UnicodeView() : name.substr(at + 1);
}

/// The pattern is a beginning of names; null is everything that was cached.
Status IndexNames(const wchar_t* pattern, TStringList& out) {
  std::vector<INTERNET_CACHE_ENTRY_INFOW> buffer(32);  // with room for the texts behind it
  OwnedSearch search;
  for (;;) {
    auto size = static_cast<DWORD>(buffer.size() * sizeof buffer[0]);
    const bool first = !search.Good();
    if (first) search = OwnedSearch(FindFirstUrlCacheEntryW(pattern, buffer.data(), &size));
    const bool found =
        first ? search.Good() : FindNextUrlCacheEntryW(search.Get(), buffer.data(), &size) != FALSE;
    if (found) {
      out.push_back(FromWide(buffer[0].lpszSourceUrlName));
      continue;
    }
    const DWORD error = GetLastError();
    if (error == ERROR_NO_MORE_ITEMS || (first && error == ERROR_FILE_NOT_FOUND)) return Status::Ok;
    if (error != ERROR_INSUFFICIENT_BUFFER || size <= buffer.size() * sizeof buffer[0])
      return Status::Unknown;
    buffer.resize(size / sizeof buffer[0] + 1);
  }
}

Status VisitedNames(TStringList& out) {
  out.clear();
  const Status status = IndexNames(L"Visited:", out);
  // Some systems take the pattern for nothing and list everything.
  std::erase_if(out, [](const UnicodeString& name) {
    return !SameText(UnicodeView(name).substr(0, kVisited.size()), kVisited);
  });
  return status;
}

}  // namespace

ComFactory<IUrlHistoryStg2> SystemUrlHistory() {
  return [](IUrlHistoryStg2** out) {
    return CoCreateInstance(CLSID_CUrlHistory, nullptr, CLSCTX_INPROC_SERVER, IID_IUrlHistoryStg2,
                            reinterpret_cast<void**>(out));
  };
}

int WindowsBrowser::BrowserVersion() {
  const KeyRef key{RootKey::LocalMachine, u"SOFTWARE\\Microsoft\\Internet Explorer",
                   Is64BitSystem() ? View::Bits64 : View::Native};
  // From 10 on the old value stays at 9 for the sake of old programs.
  for (const UnicodeView name : {UnicodeView(u"svcVersion"), UnicodeView(u"Version")}) {
    RegValue value;
    if (registry_.GetValue(key, name, value) != Status::Ok || value.type != REG_SZ) continue;
    UnicodeString text;
    for (std::size_t i = 0; i + 1 < value.data.size() && value.data[i] != '.'; i += 2)
      text += static_cast<char16_t>(value.data[i]);
    return StrToIntDef(text, 0);
  }
  return 0;
}

bool WindowsBrowser::Connect() {
  return history_.Good() || (SUCCEEDED(create_(history_.Out())) && history_.Good());
}

Status WindowsBrowser::Urls(TStringList& out) {
  out.clear();
  ComPtr<IEnumSTATURL> entries;
  if (Connect() && SUCCEEDED(history_->EnumUrls(entries.Out())) && entries.Good()) {
    for (;;) {
      STATURL entry{};
      entry.cbSize = sizeof entry;
      ULONG count = 0;
      const HRESULT next = entries->Next(1, &entry, &count);
      if (next != S_OK || count == 0) return FAILED(next) ? StatusOfCom(next) : Status::Ok;
      out.push_back(FromWide(entry.pwcsUrl));
      CoTaskMemFree(entry.pwcsUrl);
      CoTaskMemFree(entry.pwcsTitle);
    }
  }
  TStringList names;
  const Status status = VisitedNames(names);
  std::unordered_set<UnicodeView> seen;
  for (const UnicodeString& name : names) {
    const UnicodeView address = AddressOf(name);
    if (!address.empty() && seen.insert(address).second) out.emplace_back(address);
  }
  return status;
}

Status WindowsBrowser::QueryUrl(UnicodeView url) {
  const UnicodeString text(url);
  if (Connect()) {
    STATURL entry{};
    entry.cbSize = sizeof entry;
    const HRESULT result = history_->QueryUrl(Wide(text), STATURL_QUERYFLAG_NOTITLE, &entry);
    CoTaskMemFree(entry.pwcsUrl);
    CoTaskMemFree(entry.pwcsTitle);
    if (result == kNotFound) return Status::Absent;
    if (result != E_NOTIMPL) return result == S_OK ? Status::Ok : Status::Unknown;
  }
  TStringList names;
  const Status status = VisitedNames(names);
  if (status != Status::Ok) return status;
  for (const UnicodeString& name : names)
    if (AddressOf(name) == url) return Status::Ok;
  return Status::Absent;
}

Status WindowsBrowser::RemoveUrl(UnicodeView url) {
  if (!mayChange_) return Status::Denied;
  const UnicodeString text(url);
  if (Connect()) {
    const HRESULT result = history_->DeleteUrl(Wide(text), 0);
    if (result != E_NOTIMPL) return StatusOfCom(result);
  }
  TStringList names;
  const Status status = VisitedNames(names);
  if (status != Status::Ok) return status;
  Status removed = Status::Absent;
  for (const UnicodeString& name : names) {
    if (AddressOf(name) != url) continue;
    if (DeleteUrlCacheEntryW(Wide(name)) == FALSE) return StatusOfError(GetLastError());
    removed = Status::Ok;
  }
  return removed;
}

Status WindowsBrowser::CacheNames(TStringList& out) {
  out.clear();
  const Status status = IndexNames(nullptr, out);
  if (status != Status::Ok) return status;
  TStringList visited;
  const Status more = VisitedNames(visited);
  const std::unordered_set<UnicodeString> seen(out.begin(), out.end());
  for (UnicodeString& name : visited)
    if (!seen.contains(name)) out.push_back(std::move(name));
  return more;
}

namespace {

// What a session keeps of an entry; its header follows.
struct StoredEntry {
  std::uint32_t type;
  std::uint32_t useCount;
  std::uint32_t hitRate;
  FILETIME modified;
  FILETIME expires;
  FILETIME accessed;
};

Bytes StoredForm(const INTERNET_CACHE_ENTRY_INFOW& info) {
  const StoredEntry entry{info.CacheEntryType,   info.dwUseCount, info.dwHitRate,
                          info.LastModifiedTime, info.ExpireTime, info.LastAccessTime};
  const std::size_t header = info.lpHeaderInfo == nullptr ? 0 : info.dwHeaderInfoSize;
  Bytes bytes(sizeof entry + header * 2);
  std::memcpy(bytes.data(), &entry, sizeof entry);
  // The size is in units.
  if (header != 0) std::memcpy(bytes.data() + sizeof entry, info.lpHeaderInfo, header * 2);
  return bytes;
}

Status SaveEntry(const UnicodeString& name, UrlFacts& out) {
  std::vector<INTERNET_CACHE_ENTRY_INFOW> buffer(32);
  for (;;) {
    auto size = static_cast<DWORD>(buffer.size() * sizeof buffer[0]);
    if (GetUrlCacheEntryInfoW(Wide(name), buffer.data(), &size) != FALSE) break;
    const DWORD error = GetLastError();
    if (error != ERROR_INSUFFICIENT_BUFFER || size <= buffer.size() * sizeof buffer[0])
      return StatusOfError(error);
    buffer.resize(size / sizeof buffer[0] + 1);
  }
  // A file behind an entry would not come back with it.
  if (buffer[0].lpszLocalFileName != nullptr && buffer[0].lpszLocalFileName[0] != L'\0')
    return Status::Denied;
  out[ToUtf8(name)] = StoredForm(buffer[0]);
  return Status::Ok;
}

Status RestoreEntry(const UnicodeString& name, const Bytes& bytes) {
  StoredEntry entry{};
  if (bytes.size() < sizeof entry) return Status::Corrupt;
  std::memcpy(&entry, bytes.data(), sizeof entry);
  std::vector<wchar_t> header((bytes.size() - sizeof entry) / 2 + 1);
  std::memcpy(header.data(), bytes.data() + sizeof entry, (header.size() - 1) * 2);
  const auto units = static_cast<DWORD>(header.size() - 1);
  if (CommitUrlCacheEntryW(Wide(name), nullptr, entry.expires, entry.modified, entry.type,
                           units == 0 ? nullptr : header.data(), units, nullptr, nullptr) == FALSE)
    return StatusOfError(GetLastError());
  INTERNET_CACHE_ENTRY_INFOW info{};
  info.dwStructSize = sizeof info;
  info.dwHitRate = entry.hitRate;
  info.LastAccessTime = entry.accessed;
  info.LastModifiedTime = entry.modified;
  info.ExpireTime = entry.expires;
  // The entry is there; what can't be set of its counts is no reason to call it lost.
  SetUrlCacheEntryInfoW(Wide(name), &info,
                        CACHE_ENTRY_HITRATE_FC | CACHE_ENTRY_ACCTIME_FC | CACHE_ENTRY_MODTIME_FC |
                            CACHE_ENTRY_EXPTIME_FC);
  return Status::Ok;
}

}  // namespace

Status WindowsBrowser::Save(UnicodeView url, UrlFacts& out) {
  out.clear();
  TStringList names;
  Status status = VisitedNames(names);
  for (const UnicodeString& name : names)
    if (status == Status::Ok && AddressOf(name) == url) status = SaveEntry(name, out);
  if (status != Status::Ok || !out.empty()) return status;
  if (!Connect()) return Status::Absent;
  STATURL entry{};
  entry.cbSize = sizeof entry;
  const UnicodeString text(url);
  const HRESULT result = history_->QueryUrl(Wide(text), 0, &entry);
  const UnicodeString title = FromWide(entry.pwcsTitle);
  CoTaskMemFree(entry.pwcsUrl);
  CoTaskMemFree(entry.pwcsTitle);
  if (result == kNotFound || result == E_NOTIMPL) return Status::Absent;
  if (result != S_OK) return Status::Unknown;
  const std::string bytes = ToUtf8(title);
  out[""].assign(bytes.begin(), bytes.end());
  return Status::Ok;
}

Status WindowsBrowser::Restore(UnicodeView url, const UrlFacts& facts) {
  if (!mayChange_) return Status::Denied;
  Status status = Status::Unknown;
  for (const auto& [name, bytes] : facts) {
    if (!name.empty()) {
      status = RestoreEntry(FromUtf8(name), bytes);
    } else if (Connect()) {
      const UnicodeString title =
          FromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
      const UnicodeString text(url);
      status = StatusOfCom(history_->AddUrl(Wide(text), Wide(title), 0));
    }
    if (status != Status::Ok) return status;
  }
  return status;
}

}  // namespace scrubwell::windows
