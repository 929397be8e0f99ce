// Rights of the process that lie dormant until they are switched on.
#pragma once

#include <span>

#include "backends/windows/win32.h"

namespace scrubwell::windows {

/// Switches privileges on and, in the end, back to what they were. Those that the process was not
/// given stay off without a word.
class Privileges {
 public:
  explicit Privileges(std::span<const wchar_t* const> names);
  ~Privileges();
  Privileges(const Privileges&) = delete;
  Privileges& operator=(const Privileges&) = delete;

  /// True when all of them are held.
  [[nodiscard]] bool All() const { return all_; }

 private:
  OwnedHandle token_;
  std::vector<TOKEN_PRIVILEGES> before_;  // of those that were changed
  bool all_ = false;
};

}  // namespace scrubwell::windows
