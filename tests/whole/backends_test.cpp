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
  const DiskSample sample;
  const OfflineOpenResult opened = OfflineBackend::Open({sample.Windows(), {}, {}});
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  const Package package(opened.backend->Platform());
  const Findings onDisk = Package::Scan();
  EXPECT_GE(onDisk.size(), 100U);
  EXPECT_EQ(Difference(onDisk, inMemory), "");
}

}  // namespace
}  // namespace scrubwell::test
