// The same world behind different backends.
#include <gtest/gtest.h>

#include "backends/offline/offline_backend.h"
#include "whole/sample.h"

namespace scrubwell::test {
namespace {

TEST(Whole, MemoryAndDiskGiveTheSameProblems) {
  Findings inMemory;
  {
    MemorySample sample;
    const Package package(sample.Platform());
    inMemory = Package::Scan();
    EXPECT_EQ(Difference(inMemory, Package::Scan()), "") << "a second scan differs";
    EXPECT_TRUE(sample.Backend().Journal().empty()) << "a scan changed something";
  }
  const TempFolder folder;
  const std::string disk = folder.Path().string();
  ASSERT_EQ(std::system((SCRUBWELL_MKSAMPLE " " SCRUBWELL_SOURCE_DIR "/samples " + disk).c_str()),
            0);
  const OfflineOpenResult opened = OfflineBackend::Open({disk + "/C", {}, {}});
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  const Package package(opened.backend->Platform());
  const Findings onDisk = Package::Scan();
  EXPECT_GE(onDisk.size(), 100U);
  EXPECT_EQ(Difference(onDisk, inMemory), "");
}

}  // namespace
}  // namespace scrubwell::test
