// The state of a 32-bit process on a 64-bit system.
#pragma once

namespace scrubwell {

/// True when the plugins must scan the 64-bit view beside the 32-bit one.
bool IsCurrentProcessWow64();

/// The system's file system redirection for this process.
class TZMFsRedirection {
 public:
  static TZMFsRedirection& GetInstance();
  [[nodiscard]] bool GetEnabled() const;
  void SetEnabled(bool enabled);
};

}  // namespace scrubwell
