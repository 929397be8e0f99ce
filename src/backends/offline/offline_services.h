// Services and the firewall of the switched-off system, out of its registry.
#pragma once

#include "backends/offline/offline_system.h"

namespace scrubwell::offline {

/// A service that starts by itself is taken for running, for it would be.
class OfflineServices final : public IServices {
 public:
  explicit OfflineServices(IRegistry& registry) : registry_(registry) {}
  Status Query(UnicodeView service, ServiceInfo& out) override;

 private:
  IRegistry& registry_;
};

/// The programs that may accept connections in the standard profile, which private networks use:
/// the network that would choose another one is not there. Programs that are switched off are
/// listed as well, each program once. Names are those of its first entry.
class OfflineFirewall final : public IFirewall {
 public:
  OfflineFirewall(IRegistry& registry, OfflineSystem& system, IFileResources& resources)
      : registry_(registry), system_(system), resources_(resources) {}
  Status Connect() override { return Status::Ok; }
  /// A list that can't be read makes the whole answer unusable.
  Status Applications(std::vector<FirewallApplication>& out) override;
  /// Deletes all values that make up the program's entry, through the registry.
  Status Remove(UnicodeView imageFile) override;
  /// Denied: removing does not need it, and a program that is merely switched off is no repair.
  Status SetEnabled(UnicodeView imageFile, bool enabled) override;

 private:
  struct Entry {
    UnicodeString key;
    UnicodeString valueName;
    FirewallApplication application;
  };
  Status ReadEntries(std::vector<Entry>& out);
  UnicodeString ResolveName(UnicodeView text);

  IRegistry& registry_;
  OfflineSystem& system_;
  IFileResources& resources_;
};

/// One entry of the list that Windows XP keeps: the value's name is the program, its data
/// "program:scope:Enabled:name". False when the data is none.
bool ParseFirewallEntry(UnicodeView name, UnicodeView data, FirewallApplication& out);
/// One rule of Windows Vista and later ("v2.10|Action=Allow|..."). False for rules that allow no
/// incoming traffic to a program file, and for those of other profiles than the standard one.
bool ParseFirewallRule(UnicodeView rule, FirewallApplication& out);

}  // namespace scrubwell::offline
