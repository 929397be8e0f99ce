// The firewall of the running system.
#pragma once

#include "backends/windows/com.h"

// After the general header.
#include <netfw.h>

namespace scrubwell::windows {

ComFactory<INetFwMgr> SystemFirewall();

class WindowsFirewall final : public IFirewall {
 public:
  WindowsFirewall(bool mayChange, ComFactory<INetFwMgr> create)
      : mayChange_(mayChange), create_(std::move(create)) {}
  Status Connect() override;
  /// A list that can't be walked to its end is no answer.
  Status Applications(std::vector<FirewallApplication>& out) override;
  Status Remove(UnicodeView imageFile) override;
  Status SetEnabled(UnicodeView imageFile, bool enabled) override;

 private:
  HRESULT List(ComPtr<INetFwAuthorizedApplications>& out);

  bool mayChange_;
  ComFactory<INetFwMgr> create_;
  ComPtr<INetFwMgr> manager_;
};

}  // namespace scrubwell::windows
