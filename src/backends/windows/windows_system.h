// The running system itself: folders, variables, version, rights, services, language.
#pragma once

#include "backends/windows/win32.h"

namespace scrubwell::windows {

/// Shown as a 32-bit process sees it, whatever this one is: the package's scanners know both views
/// from there.
class WindowsSystem final : public ISystem {
 public:
  WindowsSystem() = default;
  /// Redirection is left as it was found.
  ~WindowsSystem() override { SetFsRedirection(true); }
  WindowsSystem(const WindowsSystem&) = delete;
  WindowsSystem& operator=(const WindowsSystem&) = delete;

  UnicodeString WindowsDir() override { return WindowsFolder(); }
  Status Environment(UnicodeView name, View view, UnicodeString& out) override;
  OsVersion Version() override;
  bool IsAdmin() override;
  bool IsWow64() override { return Is64BitSystem(); }
  bool FsRedirection() override { return !disabled_; }
  /// Of the calling thread.
  void SetFsRedirection(bool enabled) override;
  void PumpMessages() override;

 private:
  bool disabled_ = false;
  void* before_ = nullptr;
};

/// The system's own number of its version, which no compatibility setting changes.
struct VersionNumber {
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t build = 0;
};
VersionNumber SystemVersion();
OsVersion VersionOf(const VersionNumber& number);

class WindowsServices final : public IServices {
 public:
  Status Query(UnicodeView service, ServiceInfo& out) override;
};

/// Starts a service and waits, at most a few seconds, until it runs. Ok when it runs.
Status EnsureServiceRuns(UnicodeView service);

class WindowsText final : public ITextServices {
 public:
  int CompareText(UnicodeView a, UnicodeView b) override;
  UnicodeString FromAnsi(std::string_view bytes) override;
  std::string ToAnsi(UnicodeView text) override;
};

}  // namespace scrubwell::windows
