// What the shell and the loader know of the running system's files.
#pragma once

#include "backends/windows/com.h"

namespace scrubwell::windows {

class WindowsShell final : public IShell {
 public:
  Status SpecialFolder(int csidl, UnicodeString& out) override;
  /// The target as the link has it, variables expanded. The shell is not let search for it: it
  /// would answer with what it thinks the likeliest file.
  Status LinkTarget(UnicodeView linkFile, UnicodeString& out) override;
  Status ItemListPath(const Bytes& list, UnicodeString& out) override;
};

class WindowsResources final : public IFileResources {
 public:
  Status StringResource(UnicodeView file, std::uint32_t id, UnicodeString& out) override;
  Status Version(UnicodeView file, FileVersion& out) override;
};

}  // namespace scrubwell::windows
