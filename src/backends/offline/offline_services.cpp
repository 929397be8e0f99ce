#include "backends/offline/offline_services.h"

#include <unordered_set>

#include "backends/offline/registry_read.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr UnicodeView kServices = u"SYSTEM\\CurrentControlSet\\Services\\";
constexpr UnicodeView kPolicy =
    u"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy\\";

struct FirewallList {
  UnicodeView key;
  bool isRules;  // else the value's name is the program
};
// The list of Windows XP, and the rules that take its place from Windows Vista on.
constexpr FirewallList kLists[] = {{u"StandardProfile\\AuthorizedApplications\\List", false},
                                   {u"FirewallRules", true}};
// What rules call the standard profile.
constexpr UnicodeView kStandardProfile = u"Private";

constexpr std::uint32_t kStopped = 1;
constexpr std::uint32_t kRunning = 4;
constexpr std::uint32_t kAutoStart = 2;

}  // namespace

Status OfflineServices::Query(UnicodeView service, ServiceInfo& out) {
  out = {};
  if (service.empty() || service.find(u'\\') != UnicodeView::npos) return Status::Absent;
  const UnicodeString path = UnicodeString(kServices) + UnicodeString(service);
  const KeyRef key{RootKey::LocalMachine, path};
  KeyInfo info;
  if (const Status status = registry_.OpenKey(key, info); status != Status::Ok) return status;
  RegValue start;
  const Status status = registry_.GetValue(key, u"Start", start);
  const auto number = status == Status::Ok ? NumberOf(start) : std::nullopt;
  if (!number) return Status::Unknown;
  out.startType = *number;
  out.state = *number <= kAutoStart ? kRunning : kStopped;
  out.displayName = RegistryText(registry_, key, u"DisplayName");
  return Status::Ok;
}

bool ParseFirewallEntry(UnicodeView name, UnicodeView data, FirewallApplication& out) {
  // The path holds a colon itself, so it can't be found by splitting.
  if (SameText(data.substr(0, name.size()), name)) {
    data.remove_prefix(name.size());
  } else {
    const std::size_t end = data.find(u':', data.size() > 1 && data[1] == u':' ? 2 : 0);
    if (end == UnicodeView::npos) return false;
    data.remove_prefix(end);
  }
  if (data.empty() || data.front() != u':') return false;
  data.remove_prefix(1);
  const std::size_t scope = data.find(u':');
  const std::size_t state = scope == UnicodeView::npos ? scope : data.find(u':', scope + 1);
  if (state == UnicodeView::npos) return false;
  out.imageFile = name;
  out.enabled = SameText(data.substr(scope + 1, state - scope - 1), u"Enabled");
  out.name = data.substr(state + 1);
  return !name.empty();
}

bool ParseFirewallRule(UnicodeView rule, FirewallApplication& out) {
  out = {};
  bool allows = false;
  bool incoming = false;
  bool isLimited = false;
  bool isStandard = false;
  while (!rule.empty()) {
    const std::size_t end = std::min(rule.find(u'|'), rule.size());
    const UnicodeView field = rule.substr(0, end);
    rule.remove_prefix(std::min(rule.size(), end + 1));
    const std::size_t equals = field.find(u'=');
    if (equals == UnicodeView::npos) continue;
    const UnicodeView name = field.substr(0, equals);
    const UnicodeView value = field.substr(equals + 1);
    if (SameText(name, u"Action")) allows = SameText(value, u"Allow");
    if (SameText(name, u"Dir")) incoming = SameText(value, u"In");
    if (SameText(name, u"Profile")) {
      isLimited = true;
      isStandard = isStandard || SameText(value, kStandardProfile);
    }
    if (SameText(name, u"Active")) out.enabled = SameText(value, u"TRUE");
    if (SameText(name, u"App")) out.imageFile = value;
    if (SameText(name, u"Name")) out.name = value;
    // Store apps and services are not allowed by their program file.
    if (SameText(name, u"AppPkgId") || SameText(name, u"Svc")) return false;
  }
  if (isLimited && !isStandard) return false;
  return allows && incoming && !out.imageFile.empty() && !SameText(out.imageFile, u"System");
}

Status OfflineFirewall::ReadEntries(std::vector<Entry>& out) {
  out.clear();
  std::vector<RegValue> values;
  for (const FirewallList& list : kLists) {
    const UnicodeString key = UnicodeString(kPolicy).append(list.key);
    const Status status = registry_.EnumValues({RootKey::LocalMachine, key}, values);
    if (status == Status::Absent) continue;
    if (status != Status::Ok) return status;
    for (const RegValue& value : values) {
      Entry entry{key, value.name, {}};
      const UnicodeString data = TextOf(value);
      const bool good = list.isRules ? ParseFirewallRule(data, entry.application)
                                     : ParseFirewallEntry(value.name, data, entry.application);
      if (!good) continue;
      entry.application.imageFile = system_.All(View::Bits64).Expand(entry.application.imageFile);
      out.push_back(std::move(entry));
    }
  }
  return Status::Ok;
}

UnicodeString OfflineFirewall::ResolveName(UnicodeView text) {
  UnicodeString file;
  std::uint32_t id = 0;
  if (!text.starts_with(u'@') || !ExtractResFileAndIDFromString(text, file, id)) {
    return UnicodeString(text);
  }
  file = system_.All(View::Bits64).Expand(file);
  UnicodeString name;
  if (file.find(u'\\') == UnicodeString::npos) file = system_.WindowsDir() + u"\\System32\\" + file;
  const bool found = resources_.StringResource(file, id, name) == Status::Ok;
  return found && !name.empty() ? name : UnicodeString(text);
}

Status OfflineFirewall::Applications(std::vector<FirewallApplication>& out) {
  out.clear();
  std::vector<Entry> entries;
  if (const Status status = ReadEntries(entries); status != Status::Ok) return status;
  std::unordered_set<UnicodeString> seen;
  for (Entry& entry : entries) {
    if (!seen.insert(UpperCase(entry.application.imageFile)).second) continue;
    entry.application.name = ResolveName(entry.application.name);
    out.push_back(std::move(entry.application));
  }
  return Status::Ok;
}

Status OfflineFirewall::Remove(UnicodeView imageFile) {
  std::vector<Entry> entries;
  if (const Status status = ReadEntries(entries); status != Status::Ok) return status;
  Status result = Status::Absent;
  for (const Entry& entry : entries) {
    if (!SameText(entry.application.imageFile, imageFile)) continue;
    result = registry_.DeleteValue({RootKey::LocalMachine, entry.key}, entry.valueName);
    if (result != Status::Ok) return result;
  }
  return result;
}

Status OfflineFirewall::SetEnabled(UnicodeView, bool) {
  return Status::Denied;
}

}  // namespace scrubwell::offline
