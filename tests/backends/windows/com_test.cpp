#include "own_com.h"
#include "scratch.h"

// After the general header.
#include <wininet.h>

// Has no identifier of its own in the headers.
__CRT_UUID_DECL(ITaskScheduler, 0x148BD527, 0xA2AB, 0x11CE, 0xB1, 0x1F, 0x00, 0xAA, 0x00, 0x53,
                0x05, 0x03)

namespace scrubwell::test {
namespace {

using windows::ComPtr;

UnicodeString Show(const std::vector<FirewallApplication>& applications) {
  UnicodeString text;
  for (const FirewallApplication& each : applications)
    text += each.name + u"=" + each.imageFile + (each.enabled ? u"+" : u"-") + u" ";
  return text;
}

TEST(LiveFirewall, ListsAndRemoves) {
  FirewallState state;
  state.entries = {{L"One", L"C:\\one.exe", true, false},
                   {L"Two", L"C:\\two.exe", false, false},
                   {L"Hard", L"C:\\hard.exe", true, true}};
  state.holdsForeigners = true;
  UrlList urls;
  WindowsBackend backend(MayChange(), OwnObjects(state, urls));
  IFirewall& firewall = backend.Platform().firewall;
  std::vector<FirewallApplication> list;
  EXPECT_EQ(firewall.Applications(list), Status::Unknown);  // not connected
  ASSERT_EQ(firewall.Connect(), Status::Ok);
  EXPECT_EQ(firewall.Applications(list), Status::Ok);
  EXPECT_EQ(Show(list), u"One=C:\\one.exe+ Two=C:\\two.exe- Hard=C:\\hard.exe+ ");
  EXPECT_EQ(firewall.Remove(u"C:\\one.exe"), Status::Ok);
  EXPECT_NE(firewall.Remove(u"C:\\one.exe"), Status::Ok);
  // Let go only after it was switched off.
  EXPECT_NE(firewall.Remove(u"C:\\hard.exe"), Status::Ok);
  EXPECT_EQ(firewall.SetEnabled(u"C:\\hard.exe", false), Status::Ok);
  EXPECT_EQ(firewall.Remove(u"C:\\hard.exe"), Status::Ok);
  EXPECT_EQ(firewall.SetEnabled(u"C:\\none.exe", false), Status::Absent);
  EXPECT_EQ(firewall.Applications(list), Status::Ok);
  EXPECT_EQ(Show(list), u"Two=C:\\two.exe- ");
  state.entries.push_back({L"Three", L"C:\\three.exe", true, false});
  state.breaksOff = true;
  EXPECT_NE(firewall.Applications(list), Status::Ok);
  WindowsBackend reader(WindowsOptions{}, OwnObjects(state, urls));
  ASSERT_EQ(reader.Platform().firewall.Connect(), Status::Ok);
  EXPECT_EQ(reader.Platform().firewall.Remove(u"C:\\two.exe"), Status::Denied);
}

TEST(LiveBrowser, AsksTheHistoryObject) {
  FirewallState state;
  UrlList urls = {{L"file:///C:/a.txt", L""}, {L"http://x/", L"title"}};
  {
    WindowsBackend backend(MayChange(), OwnObjects(state, urls));
    IBrowserHistory& browser = backend.Platform().browser;
    TStringList found;
    EXPECT_EQ(browser.Urls(found), Status::Ok);
    EXPECT_EQ(found, (TStringList{u"file:///C:/a.txt", u"http://x/"}));
    EXPECT_EQ(browser.QueryUrl(u"http://x/"), Status::Ok);
    EXPECT_EQ(browser.QueryUrl(u"http://y/"), Status::Absent);
    EXPECT_EQ(browser.RemoveUrl(u"http://x/"), Status::Ok);
    EXPECT_EQ(browser.RemoveUrl(u"http://x/"), Status::Absent);
    EXPECT_EQ(urls.size(), 1U);
  }
  EXPECT_EQ(liveObjects, 0);
}

// The system's own history object has no answers here, so the cache index is asked.
TEST(LiveBrowser, AsksTheCacheIndex) {
  const UnicodeString url = u"file:///C:/scrubwell-test/gone.txt";
  const UnicodeString name = u"Visited: tester@" + url;
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  ASSERT_TRUE(CommitUrlCacheEntryW(windows::Wide(name), nullptr, FILETIME{}, now,
                                   URLHISTORY_CACHE_ENTRY, nullptr, 0, nullptr, nullptr))
      << GetLastError();
  WindowsBackend backend(MayChange());
  IBrowserHistory& browser = backend.Platform().browser;
  TStringList names;
  EXPECT_EQ(browser.CacheNames(names), Status::Ok);
  EXPECT_EQ(std::ranges::count(names, name), 1);
  EXPECT_EQ(browser.Urls(names), Status::Ok);
  EXPECT_EQ(std::ranges::count(names, url), 1);
  EXPECT_EQ(browser.QueryUrl(url), Status::Ok);
  EXPECT_EQ(browser.QueryUrl(u"file:///C:/other"), Status::Absent);
  WindowsBackend reader{WindowsOptions{}};
  EXPECT_EQ(reader.Platform().browser.RemoveUrl(url), Status::Denied);
  EXPECT_EQ(browser.RemoveUrl(url), Status::Ok);
  EXPECT_EQ(browser.RemoveUrl(url), Status::Absent);
  EXPECT_EQ(browser.QueryUrl(url), Status::Absent);
}

// A scheduler that takes names as its enumeration gives them, on top of one that adds ".job".
class PlainNames final : public Object<ITaskScheduler> {
 public:
  PlainNames() { windows::SystemScheduler()(base_.Out()); }
  HRESULT STDMETHODCALLTYPE SetTargetComputer(LPCWSTR name) override {
    return base_->SetTargetComputer(name);
  }
  HRESULT STDMETHODCALLTYPE GetTargetComputer(LPWSTR* out) override {
    return base_->GetTargetComputer(out);
  }
  HRESULT STDMETHODCALLTYPE Enum(IEnumWorkItems** out) override { return base_->Enum(out); }
  HRESULT STDMETHODCALLTYPE Activate(LPCWSTR name, REFIID id, IUnknown** out) override {
    return base_->Activate(Bare(name).c_str(), id, out);
  }
  HRESULT STDMETHODCALLTYPE Delete(LPCWSTR name) override {
    return base_->Delete(Bare(name).c_str());
  }
  HRESULT STDMETHODCALLTYPE NewWorkItem(LPCWSTR name, REFCLSID type, REFIID id,
                                        IUnknown** out) override {
    return base_->NewWorkItem(Bare(name).c_str(), type, id, out);
  }
  HRESULT STDMETHODCALLTYPE AddWorkItem(LPCWSTR, IScheduledWorkItem*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE IsOfType(LPCWSTR, REFIID) override { return E_NOTIMPL; }

 private:
  static std::wstring Bare(std::wstring name) {
    if (name.ends_with(L".job")) name.resize(name.size() - 4);
    return name;
  }
  ComPtr<ITaskScheduler> base_;
};

TEST(LiveTasks, AreToldApartByTheirWholeName) {
  const windows::ComApartment apartment;
  for (const bool plain : {false, true}) {
    MakeTask(L"Scrub a", L"C:\\gone\\a.exe", L"");
    windows::ComFactories factories;
    if (plain) factories.scheduler = [](auto** out) { return *out = new PlainNames, S_OK; };
    WindowsBackend backend(MayChange(), std::move(factories));
    ITasks& tasks = backend.Platform().tasks;
    ASSERT_EQ(tasks.Connect(), Status::Ok);
    UnicodeString application;
    EXPECT_EQ(tasks.Application(u"Scrub a.job.job", application), Status::Absent) << plain;
    EXPECT_EQ(tasks.Remove(u"Scrub a.job.job"), Status::Absent) << plain;
    EXPECT_EQ(tasks.Application(u"Scrub a.job", application), Status::Ok) << plain;
    EXPECT_EQ(application, u"C:\\gone\\a.exe");
    EXPECT_EQ(tasks.Remove(u"Scrub a.job"), Status::Ok) << plain;
  }
}

TEST(LiveTasks, FindsReadsAndRemoves) {
  WindowsBackend backend(MayChange());
  ITasks& tasks = backend.Platform().tasks;
  MakeTask(L"Scrub \u00e4\u4e2d", L"C:\\gone\\program.exe", L"");
  MakeTask(L"Scrub bare", L"notepad", L"C:\\Windows");
  TStringList names;
  EXPECT_EQ(tasks.Names(names), Status::Unknown);  // not connected
  ASSERT_EQ(tasks.Connect(), Status::Ok);
  ASSERT_EQ(tasks.Names(names), Status::Ok);
  const UnicodeString job = u"Scrub \u00e4\u4e2d.job";
  EXPECT_EQ(std::ranges::count(names, job), 1);
  UnicodeString application;
  EXPECT_EQ(tasks.Application(job, application), Status::Ok);
  EXPECT_EQ(application, u"C:\\gone\\program.exe");
  EXPECT_EQ(tasks.Application(u"Scrub bare.job", application), Status::Ok);
  EXPECT_EQ(application, u"C:\\Windows\\notepad.exe");
  EXPECT_EQ(tasks.Application(u"Scrub none.job", application), Status::Absent);
  WindowsBackend reader{WindowsOptions{}};
  ASSERT_EQ(reader.Platform().tasks.Connect(), Status::Ok);
  EXPECT_EQ(reader.Platform().tasks.Remove(job), Status::Denied);
  EXPECT_EQ(tasks.Remove(job), Status::Ok);
  EXPECT_EQ(tasks.Remove(job), Status::Absent);
  EXPECT_EQ(tasks.Remove(u"Scrub bare.job"), Status::Ok);
  ASSERT_EQ(tasks.Names(names), Status::Ok);
  EXPECT_EQ(std::ranges::count(names, job), 0);
}

// Allocations of the process that are in use.
std::size_t UsedBlocks() {
  std::size_t blocks = 0;
  PROCESS_HEAP_ENTRY entry{};
  const HANDLE heap = GetProcessHeap();
  HeapLock(heap);
  while (HeapWalk(heap, &entry) != FALSE)
    if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) ++blocks;
  HeapUnlock(heap);
  return blocks;
}

void AskEverything(FirewallState& state, UrlList& urls) {
  WindowsBackend backend(MayChange(), OwnObjects(state, urls));
  TPlatform& platform = backend.Platform();
  TStringList names;
  UnicodeString text;
  std::vector<FirewallApplication> applications;
  std::vector<DirEntry> entries;
  FileVersion version;
  ServiceInfo service;
  Bytes bytes;
  platform.firewall.Connect();
  platform.firewall.Applications(applications);
  platform.firewall.Remove(u"none");
  platform.firewall.SetEnabled(u"C:\\one.exe", true);
  platform.browser.Urls(names);
  platform.browser.QueryUrl(u"http://x/");
  platform.browser.CacheNames(names);
  platform.tasks.Connect();
  platform.tasks.Names(names);
  platform.tasks.Application(u"Scrub leak.job", text);
  platform.files.List(u"C:\\Windows", FsView::Physical, entries);
  platform.files.Read(u"C:\\Windows\\win.ini", FsView::Physical, 100000, bytes);
  platform.resources.Version(u"C:\\Windows\\System32\\kernel32.dll", version);
  platform.resources.StringResource(u"C:\\Windows\\System32\\shell32.dll", 1, text);
  platform.services.Query(u"Schedule", service);
  platform.shell.SpecialFolder(20, text);
  platform.shell.LinkTarget(u"C:\\none.lnk", text);
  platform.profiles.Entries(u"win.ini", u"fonts", names);
  for (const char* question : {"keys 64 HKLM\\SOFTWARE", "values 64 HKCU\\Environment",
                               "create 64 HKCU\\ScrubLeak\\a", "force 64 HKCU\\ScrubLeak"})
    Ask(platform.registry, question);
}

TEST(LiveBackend, LeaksNothing) {
  FirewallState state;
  state.entries = {{L"One", L"C:\\one.exe", true, false}, {L"Two", L"C:\\two.exe", true, false}};
  UrlList urls = {{L"http://x/", L"title"}};
  const windows::ComApartment apartment;  // so that libraries stay loaded between the rounds
  MakeTask(L"Scrub leak", L"C:\\gone.exe", L"");
  for (int i = 0; i < 5; ++i) AskEverything(state, urls);
  DWORD before = 0;
  DWORD after = 0;
  ASSERT_TRUE(GetProcessHandleCount(GetCurrentProcess(), &before));
  const std::size_t blocks = UsedBlocks();
  constexpr int kRounds = 100;
  for (int i = 0; i < kRounds; ++i) AskEverything(state, urls);
  GetProcessHandleCount(GetCurrentProcess(), &after);
  EXPECT_LT(after, before + kRounds / 2);
  EXPECT_LT(UsedBlocks(), blocks + kRounds / 2);
  EXPECT_EQ(liveObjects, 0);
  ComPtr<ITaskScheduler> scheduler;
  windows::SystemScheduler()(scheduler.Out());
  scheduler->Delete(L"Scrub leak");
}

}  // namespace
}  // namespace scrubwell::test
