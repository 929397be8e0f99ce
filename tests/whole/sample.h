// The sample installation with the whole package over it: in memory, and on a disk.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "backends/memory/memory_backend.h"
#include "hosts/driver/clean_driver.h"
#include "support/disk.h"

namespace scrubwell::test {

/// What was found: digest and, for the reader, plugin, kind and caption.
using Findings = std::map<std::string, std::string>;

/// The package over a platform, for as long as this lives; at most one at a time.
class Package {
 public:
  explicit Package(TPlatform& platform);
  ~Package();
  Package(const Package&) = delete;
  Package& operator=(const Package&) = delete;
  /// The visible problems of a scan with all plugins.
  static Findings Scan();
};

/// The visible problems there are.
Findings Found();

/// The sample in memory. Its tasks, shortcuts and address history, which a disk holds as files of
/// their own formats, are entries of the world's tables.
class MemorySample {
 public:
  MemorySample();
  MemoryBackend& Backend() { return backend_; }
  TPlatform& Platform() { return *platform_; }

 private:
  class Shell;
  MemoryBackend backend_;
  std::shared_ptr<IShell> shell_;
  std::unique_ptr<TPlatform> platform_;
};

/// What is in one and not in the other, a line each; empty when they are equal.
std::string Difference(const Findings& expected, const Findings& found);

}  // namespace scrubwell::test
