// The running Windows, asked and changed through its own functions.
#pragma once

#include <memory>

#include "backends/common/target.h"

namespace scrubwell {

namespace windows {
struct ComFactories;
}

struct WindowsOptions {
  /// False: every request for a change is answered Denied.
  bool mayChange = false;
  /// Files are copied below this folder before they are changed; empty: such changes are Denied.
  UnicodeString backupFolder;
  ProductKey product;
};

/// The system that this process runs on, for the user that it runs as. A process of either width
/// sees both registry views of a 64-bit system, and its files, as a 32-bit one does.
/// Takes part in COM and may switch file system redirection for the thread that makes it: to be
/// made, used and destroyed on the same one.
class WindowsBackend final : public ITarget {
 public:
  explicit WindowsBackend(const WindowsOptions& options);
  /// With COM objects of one's own in place of the system's.
  WindowsBackend(const WindowsOptions& options, windows::ComFactories factories);
  ~WindowsBackend() override;
  WindowsBackend(const WindowsBackend&) = delete;
  WindowsBackend& operator=(const WindowsBackend&) = delete;

  /// Good for as long as the backend lives.
  TPlatform& Platform() override;
  [[nodiscard]] const TargetFacts& Target() const override;
  /// What could not be told, in the order it came up and each once.
  [[nodiscard]] const std::vector<UnicodeString>& Notes() const override;
  /// A run of deletions begins: what was deleted through the classes root may be deleted again.
  void ForgetDeletions();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace scrubwell
