// The firewall of the running system.
#pragma once

#include <map>
#include <string>

#include "backends/windows/com.h"

// After the general header.
#include <netfw.h>

namespace scrubwell::windows {

ComFactory<INetFwMgr> SystemFirewall();
/// Makes an entry that is in no list yet.
ComFactory<INetFwAuthorizedApplication> SystemFirewallEntry();

/// All that an entry holds, as a session keeps it: by name.
using FirewallFacts = std::map<std::string, Bytes>;

class WindowsFirewall final : public IFirewall {
 public:
  WindowsFirewall(bool mayChange, ComFactory<INetFwMgr> create,
                  ComFactory<INetFwAuthorizedApplication> createEntry)
      : mayChange_(mayChange), create_(std::move(create)), createEntry_(std::move(createEntry)) {}
  Status Connect() override;
  /// A list that can't be walked to its end is no answer.
  Status Applications(std::vector<FirewallApplication>& out) override;
  Status Remove(UnicodeView imageFile) override;
  Status SetEnabled(UnicodeView imageFile, bool enabled) override;

  /// Absent when the list has no such entry.
  Status Save(UnicodeView imageFile, FirewallFacts& out);
  Status Restore(UnicodeView imageFile, UnicodeView name, const FirewallFacts& facts);

 private:
  HRESULT List(ComPtr<INetFwAuthorizedApplications>& out);

  bool mayChange_;
  ComFactory<INetFwMgr> create_;
  ComFactory<INetFwAuthorizedApplication> createEntry_;
  ComPtr<INetFwMgr> manager_;
};

}  // namespace scrubwell::windows
