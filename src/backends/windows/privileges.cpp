#include "backends/windows/privileges.h"

namespace scrubwell::windows {

Privileges::Privileges(std::span<const wchar_t* const> names) {
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, token_.Out()) ==
      FALSE)
    return;
  all_ = true;
  for (const wchar_t* const name : names) {
    TOKEN_PRIVILEGES wanted{};
    TOKEN_PRIVILEGES before{};
    wanted.PrivilegeCount = 1;
    wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    DWORD size = sizeof before;
    // Success alone does not tell: the function also succeeds with nothing done.
    const bool done =
        LookupPrivilegeValueW(nullptr, name, &wanted.Privileges[0].Luid) != FALSE &&
        AdjustTokenPrivileges(token_.Get(), FALSE, &wanted, size, &before, &size) != FALSE &&
        GetLastError() == ERROR_SUCCESS;
    all_ = all_ && done;
    if (done && before.PrivilegeCount != 0) before_.push_back(before);
  }
}

Privileges::~Privileges() {
  for (TOKEN_PRIVILEGES& before : before_)
    AdjustTokenPrivileges(token_.Get(), FALSE, &before, 0, nullptr, nullptr);
}

}  // namespace scrubwell::windows
