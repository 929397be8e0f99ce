// The whole package on the running system: what is broken on purpose is found and repaired.
#include "plugins/package.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include "backends/windows/com.h"
#include "backends/windows/windows_tasks.h"
#include "hosts/driver/clean_driver.h"
#include "hosts/driver/problem_id.h"
#include "registry/Stringhelper.h"
#include "scratch.h"

// After the general header.
#include <mstask.h>
#include <wininet.h>

// Blocks that this program holds itself, exactly; what the system keeps for it is not among them.
static std::atomic<std::ptrdiff_t> ownBlocks{0};

void* operator new(std::size_t size) {
  void* const block = std::malloc(std::max<std::size_t>(size, 1));
  if (block == nullptr) throw std::bad_alloc();
  ++ownBlocks;
  return block;
}
void operator delete(void* block) noexcept {
  if (block != nullptr) --ownBlocks;
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

namespace scrubwell::test {
namespace {

using windows::ComPtr;

constexpr const char* kCurrent = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion";

/// Something broken: how to make it, what its problem's caption holds, what tells that it is gone.
struct Broken {
  const char* plugin;
  std::vector<std::string> make;
  const char* caption;
  const char* question;
  const char* answer;
  int problems = 1;  ///< two where both views lead to the same place
};

const Broken kBroken[] = {
    {"SharedFiles",
     {"set 64 {cv}\\SharedDLLs > C:\\scrubgone\\shared64.dll=x"},
     "shared64.dll",
     "get 64 {cv}\\SharedDLLs > C:\\scrubgone\\shared64.dll",
     "Absent"},
    {"SharedFiles",
     {"set 32 {cv}\\SharedDLLs > C:\\scrubgone\\shared32.dll=x"},
     "shared32.dll",
     "get 32 {cv}\\SharedDLLs > C:\\scrubgone\\shared32.dll",
     "Absent"},
    {"Fonts",
     {"set 64 HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Fonts > "
      "ScrubFont=scrubgone.ttf"},
     "ScrubFont",
     "get 64 HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Fonts > ScrubFont",
     "Absent",
     2},
    {"ActiveXCOM",
     {"set 64 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0001-0000-0000-0000-000000000064} > =Scrub64",
      "set 64 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0001-0000-0000-0000-000000000064}\\"
      "InprocServer32 > =C:\\scrubgone\\x.dll"},
     "Scrub64",
     "open 64 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0001-0000-0000-0000-000000000064}",
     "Absent"},
    {"ActiveXCOM",
     {"set 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0001-0000-0000-0000-000000000032} > =Scrub32",
      "set 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0001-0000-0000-0000-000000000032}\\"
      "InprocServer32 > =C:\\scrubgone\\x.dll"},
     "Scrub32",
     "open 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0001-0000-0000-0000-000000000032}",
     "Absent"},
    {"Uninstall",
     {"set 64 {cv}\\Uninstall\\Scrub > DisplayName=Scrub Tool",
      "set 64 {cv}\\Uninstall\\Scrub > UninstallString=C:\\scrubgone\\remove.exe"},
     "Scrub Tool",
     "open 64 {cv}\\Uninstall\\Scrub",
     "Absent"},
    {"Autostart",
     {"set 64 {cv}\\Run > ScrubRun=C:\\scrubgone\\run.exe"},
     "ScrubRun",
     "get 64 {cv}\\Run > ScrubRun",
     "Absent"},
};

std::string Full(std::string text) {
  const std::size_t at = text.find("{cv}");
  return at == std::string::npos ? text : text.replace(at, 4, kCurrent);
}

class LivePackage : public testing::Test {
 protected:
  void SetUp() override {
    for (const Broken& row : kBroken)
      for (const std::string& line : row.make)
        ASSERT_EQ(Ask(backend_.Platform().registry, Full(line)), "Ok") << line;
    SetPlatform(&backend_.Platform());
    LoadPackage();
    Choose();
  }
  void TearDown() override {
    UnloadPackage();
    SetPlatform(nullptr);
    for (const Broken& row : kBroken)
      for (const std::string& line : row.make) {
        const std::string place = Full(line).substr(4);
        Ask(backend_.Platform().registry, "drop " + place.substr(0, place.rfind('=')));
        if (std::string(row.question).starts_with("open"))
          Ask(backend_.Platform().registry, "force " + Full(row.question).substr(5));
      }
  }
  static void Choose(std::initializer_list<UnicodeString> ids = {}) {
    UnicodeString unknown;
    ASSERT_TRUE(ChoosePlugins(std::vector(ids), unknown)) << ToUtf8(unknown);
  }
  static TStringList Found() {
    TStringList captions;
    for (std::int32_t i = 0; i < SweepErrors->Count(); ++i)
      captions.push_back((*SweepErrors)[i].Caption);
    return captions;
  }
  static std::ptrdiff_t Count(const TStringList& captions, const char* part) {
    return std::ranges::count_if(captions, [part](const UnicodeString& caption) {
      return caption.find(FromUtf8(part)) != UnicodeString::npos;
    });
  }
  static CleanSelection Select(std::initializer_list<const char*> parts) {
    CleanSelection selection;
    const std::vector<std::string> ids = ProblemIds(*SweepErrors);
    const TStringList captions = Found();
    for (const char* part : parts)
      for (std::size_t i = 0; i < ids.size(); ++i)
        if (captions[i].find(FromUtf8(part)) != UnicodeString::npos)
          selection.ids.push_back(ids[i]);
    return selection;
  }
  static CleanResult Clean(const CleanSelection& selection) {
    return CleanDriver({}).Run(selection, false);
  }

  WindowsBackend backend_{MayChange()};
};

TEST_F(LivePackage, FindsAndRepairsWhatIsBroken) {
  ASSERT_EQ(ScanDriver().Scan(), RunOutcome::Complete);
  const TStringList before = Found();
  CleanSelection selection;
  std::size_t problems = 0;
  for (const Broken& row : kBroken) {
    EXPECT_EQ(Count(before, row.caption), row.problems) << row.caption;
    problems += static_cast<std::size_t>(row.problems);
    for (std::string& id : Select({row.caption}).ids) selection.ids.push_back(std::move(id));
  }
  ASSERT_EQ(selection.ids.size(), problems);
  const CleanResult result = Clean(selection);
  EXPECT_EQ(result.problems.size(), problems);
  EXPECT_EQ(result.Left(), 0U);
  for (const Broken& row : kBroken) {
    EXPECT_EQ(Ask(backend_.Platform().registry, Full(row.question)), row.answer) << row.question;
  }
  // Nothing else came or went.
  ScanDriver().Scan();
  EXPECT_EQ(static_cast<std::size_t>(SweepErrors->Count()), before.size() - problems);
}

TEST_F(LivePackage, FindsAndRemovesTasksAndAddresses) {
  ComPtr<ITaskScheduler> scheduler;
  ComPtr<IUnknown> item;
  ComPtr<ITask> task;
  ComPtr<IPersistFile> file;
  ASSERT_EQ(CoCreateInstance(CLSID_CTaskScheduler, nullptr, CLSCTX_INPROC_SERVER,
                             IID_ITaskScheduler, scheduler.OutVoid()),
            S_OK);
  scheduler->Delete(L"Scrub task \u00e9");
  ASSERT_EQ(scheduler->NewWorkItem(L"Scrub task \u00e9", CLSID_CTask, IID_ITask, item.Out()), S_OK);
  ASSERT_EQ(item->QueryInterface(IID_ITask, task.OutVoid()), S_OK);
  task->SetApplicationName(L"C:\\scrubgone\\task.exe");
  ASSERT_EQ(task->QueryInterface(IID_IPersistFile, file.OutVoid()), S_OK);
  ASSERT_EQ(file->Save(nullptr, TRUE), S_OK);
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  ASSERT_TRUE(CommitUrlCacheEntryW(L"Visited: tester@file:///C:/scrubgone/seen.txt", nullptr,
                                   FILETIME{}, now, URLHISTORY_CACHE_ENTRY, nullptr, 0, nullptr,
                                   nullptr));
  Choose({u"Autostart", u"History"});
  ScanDriver().Scan();
  const TStringList before = Found();
  EXPECT_EQ(Count(before, "Scrub task \u00e9"), 1);
  EXPECT_GE(Count(before, "seen.txt"), 1);
  const CleanResult result = Clean(Select({"Scrub task", "seen.txt"}));
  EXPECT_EQ(result.Left(), 0U);
  ScanDriver().Scan();
  EXPECT_EQ(Count(Found(), "Scrub task"), 0);
  EXPECT_EQ(Count(Found(), "seen.txt"), 0);
  item.Reset();
  EXPECT_NE(scheduler->Activate(L"Scrub task \u00e9", IID_ITask, item.Out()), S_OK);
}

// Bytes in blocks of the process's heaps that are in use.
std::size_t HeapInUse() {
  HANDLE heaps[64];
  const DWORD count = std::min<DWORD>(GetProcessHeaps(std::size(heaps), heaps), std::size(heaps));
  std::size_t bytes = 0;
  for (DWORD i = 0; i < count; ++i) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry) != FALSE) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
    }
    HeapUnlock(heaps[i]);
  }
  return bytes;
}

// A hundred scans in one process need no more of it than five.
TEST_F(LivePackage, LeaksNothingOverManyScans) {
  Choose({u"Autostart", u"Fonts", u"Sounds", u"SharedFiles"});
  DWORD before = 0;
  DWORD after = 0;
  for (int i = 0; i < 5; ++i) ScanDriver().Scan();
  GetProcessHandleCount(GetCurrentProcess(), &before);
  constexpr int kRounds = 100;
  const std::size_t heapBefore = HeapInUse();
  const std::ptrdiff_t ownBefore = ownBlocks;
  for (int i = 0; i < kRounds; ++i) ScanDriver().Scan();
  GetProcessHandleCount(GetCurrentProcess(), &after);
  EXPECT_LT(after, before + kRounds / 10);
  EXPECT_EQ(ownBlocks, ownBefore);
  // What the system holds for it grows a little, for its scheduler loses some bytes each time.
  EXPECT_LT(HeapInUse(), heapBefore + kRounds * 1024);
}

}  // namespace
}  // namespace scrubwell::test
