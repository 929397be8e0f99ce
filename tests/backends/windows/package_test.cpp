// The whole package on the running system, again and again.
#include "plugins/package.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include "hosts/driver/scan_driver.h"
#include "scratch.h"

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
TEST(LivePackage, LeaksNothingOverManyScans) {
  WindowsBackend backend{MayChange()};
  SetPlatform(&backend.Platform());
  LoadPackage();
  UnicodeString unknown;
  const UnicodeString chosen[] = {u"Autostart", u"Fonts", u"Sounds", u"SharedFiles"};
  ASSERT_TRUE(ChoosePlugins(chosen, unknown));
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
  UnloadPackage();
  SetPlatform(nullptr);
}

}  // namespace
}  // namespace scrubwell::test
