#include "backends/windows/windows_firewall.h"

#include <optional>

namespace scrubwell::windows {
namespace {

/// One element of an enumeration, of whatever kind.
class Element {
 public:
  Element() { VariantInit(&value_); }
  ~Element() { VariantClear(&value_); }
  Element(const Element&) = delete;
  Element& operator=(const Element&) = delete;

  VARIANT* Out() {
    VariantClear(&value_);
    return &value_;
  }
  [[nodiscard]] IUnknown* Object() const {
    return value_.vt == VT_DISPATCH || value_.vt == VT_UNKNOWN ? value_.punkVal : nullptr;
  }

 private:
  VARIANT value_;
};

HRESULT Read(IUnknown* object, FirewallApplication& out) {
  ComPtr<INetFwAuthorizedApplication> application;
  if (object == nullptr) return E_NOINTERFACE;
  HRESULT result =
      object->QueryInterface(__uuidof(INetFwAuthorizedApplication), application.OutVoid());
  BasicText name;
  BasicText file;
  VARIANT_BOOL enabled = VARIANT_FALSE;
  if (SUCCEEDED(result)) result = application->get_ProcessImageFileName(file.Out());
  if (FAILED(result)) return result;
  // Entries without a name, or without the switch, are entries all the same.
  application->get_Name(name.Out());
  application->get_Enabled(&enabled);
  out = {name.Text(), file.Text(), enabled != VARIANT_FALSE};
  return S_OK;
}

}  // namespace

ComFactory<INetFwMgr> SystemFirewall() {
  return [](INetFwMgr** out) {
    CLSID id;
    const HRESULT known = CLSIDFromProgID(L"HNetCfg.FwMgr", &id);
    if (FAILED(known)) return known;
    return CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(INetFwMgr),
                            reinterpret_cast<void**>(out));
  };
}

ComFactory<INetFwAuthorizedApplication> SystemFirewallEntry() {
  return [](INetFwAuthorizedApplication** out) {
    CLSID id;
    const HRESULT known = CLSIDFromProgID(L"HNetCfg.FwAuthorizedApplication", &id);
    if (FAILED(known)) return known;
    return CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER,
                            __uuidof(INetFwAuthorizedApplication), reinterpret_cast<void**>(out));
  };
}

Status WindowsFirewall::Connect() {
  const HRESULT result = create_(manager_.Out());
  if (FAILED(result)) manager_.Reset();
  return StatusOfCom(result);
}

// Asked for anew each time: the current profile changes with the network.
HRESULT WindowsFirewall::List(ComPtr<INetFwAuthorizedApplications>& out) {
  if (!manager_.Good()) return E_FAIL;
  ComPtr<INetFwPolicy> policy;
  ComPtr<INetFwProfile> profile;
  HRESULT result = manager_->get_LocalPolicy(policy.Out());
  if (SUCCEEDED(result)) result = policy->get_CurrentProfile(profile.Out());
  if (SUCCEEDED(result)) result = profile->get_AuthorizedApplications(out.Out());
  return SUCCEEDED(result) && !out.Good() ? E_FAIL : result;
}

Status WindowsFirewall::Applications(std::vector<FirewallApplication>& out) {
  out.clear();
  ComPtr<INetFwAuthorizedApplications> list;
  ComPtr<IUnknown> walker;
  ComPtr<IEnumVARIANT> elements;
  HRESULT result = List(list);
  if (SUCCEEDED(result)) result = list->get__NewEnum(walker.Out());
  if (SUCCEEDED(result) && !walker.Good()) result = E_FAIL;
  if (SUCCEEDED(result)) result = walker->QueryInterface(IID_IEnumVARIANT, elements.OutVoid());
  while (SUCCEEDED(result)) {
    Element element;
    ULONG count = 0;
    result = elements->Next(1, element.Out(), &count);
    if (FAILED(result)) break;
    if (result != S_OK || count == 0) return Status::Ok;
    FirewallApplication application;
    // One entry that can't be read hides nothing of the others.
    if (SUCCEEDED(Read(element.Object(), application))) out.push_back(std::move(application));
  }
  out.clear();
  return StatusOfCom(result);
}

Status WindowsFirewall::Remove(UnicodeView imageFile) {
  if (!mayChange_) return Status::Denied;
  ComPtr<INetFwAuthorizedApplications> list;
  HRESULT result = List(list);
  if (SUCCEEDED(result)) result = list->Remove(BasicText(imageFile).Get());
  return StatusOfCom(result);
}

Status WindowsFirewall::SetEnabled(UnicodeView imageFile, bool enabled) {
  if (!mayChange_) return Status::Denied;
  ComPtr<INetFwAuthorizedApplications> list;
  ComPtr<INetFwAuthorizedApplication> application;
  HRESULT result = List(list);
  if (SUCCEEDED(result)) result = list->Item(BasicText(imageFile).Get(), application.Out());
  if (SUCCEEDED(result) && !application.Good()) result = E_FAIL;
  if (SUCCEEDED(result)) result = application->put_Enabled(enabled ? VARIANT_TRUE : VARIANT_FALSE);
  return StatusOfCom(result);
}

namespace {

constexpr const char* kName = "name";
constexpr const char* kEnabled = "enabled";
constexpr const char* kIpVersion = "ipVersion";
constexpr const char* kScope = "scope";
constexpr const char* kAddresses = "addresses";

Bytes BytesOf(UnicodeView text) {
  Bytes bytes;
  for (const char16_t unit : text) {
    bytes.push_back(static_cast<std::uint8_t>(unit & 0xFFU));
    bytes.push_back(static_cast<std::uint8_t>(unit >> 8U));
  }
  return bytes;
}

UnicodeString TextIn(const FirewallFacts& facts, const char* name) {
  UnicodeString text;
  const auto it = facts.find(name);
  for (std::size_t i = 0; it != facts.end() && i + 1 < it->second.size(); i += 2)
    text += static_cast<char16_t>(it->second[i] | it->second[i + 1] << 8);
  return text;
}

// Small numbers only; nothing where the entry did not tell.
std::optional<int> NumberIn(const FirewallFacts& facts, const char* name) {
  const auto it = facts.find(name);
  if (it == facts.end() || it->second.size() != 1) return std::nullopt;
  return it->second[0];
}

template <class Number>
void Keep(FirewallFacts& facts, const char* name, HRESULT result, Number number) {
  if (SUCCEEDED(result)) facts[name] = {static_cast<std::uint8_t>(number)};
}

}  // namespace

Status WindowsFirewall::Save(UnicodeView imageFile, FirewallFacts& out) {
  out.clear();
  ComPtr<INetFwAuthorizedApplications> list;
  ComPtr<INetFwAuthorizedApplication> entry;
  HRESULT result = List(list);
  if (SUCCEEDED(result)) result = list->Item(BasicText(imageFile).Get(), entry.Out());
  if (FAILED(result)) return StatusOfCom(result);
  if (!entry.Good()) return Status::Unknown;
  BasicText name;
  BasicText addresses;
  VARIANT_BOOL enabled = VARIANT_FALSE;
  NET_FW_IP_VERSION version = NET_FW_IP_VERSION_ANY;
  NET_FW_SCOPE scope = NET_FW_SCOPE_ALL;
  result = entry->get_Enabled(&enabled);
  if (FAILED(result)) return StatusOfCom(result);
  Keep(out, kEnabled, result, enabled != VARIANT_FALSE ? 1 : 0);
  if (SUCCEEDED(entry->get_Name(name.Out()))) out[kName] = BytesOf(name.Text());
  result = entry->get_IpVersion(&version);
  Keep(out, kIpVersion, result, version);
  result = entry->get_Scope(&scope);
  Keep(out, kScope, result, scope);
  if (SUCCEEDED(entry->get_RemoteAddresses(addresses.Out())))
    out[kAddresses] = BytesOf(addresses.Text());
  return Status::Ok;
}

Status WindowsFirewall::Restore(UnicodeView imageFile, UnicodeView name,
                                const FirewallFacts& facts) {
  if (!mayChange_) return Status::Denied;
  ComPtr<INetFwAuthorizedApplications> list;
  ComPtr<INetFwAuthorizedApplication> entry;
  HRESULT result = List(list);
  if (SUCCEEDED(result)) result = createEntry_(entry.Out());
  if (SUCCEEDED(result) && !entry.Good()) result = E_FAIL;
  if (SUCCEEDED(result)) result = entry->put_ProcessImageFileName(BasicText(imageFile).Get());
  const UnicodeString stored = TextIn(facts, kName);
  if (SUCCEEDED(result))
    result = entry->put_Name(BasicText(stored.empty() ? name : UnicodeView(stored)).Get());
  const auto version = NumberIn(facts, kIpVersion);
  if (SUCCEEDED(result) && version) entry->put_IpVersion(static_cast<NET_FW_IP_VERSION>(*version));
  // Addresses of one's own are a scope of their own: setting them sets it.
  const auto scope = NumberIn(facts, kScope);
  if (SUCCEEDED(result) && scope && *scope == NET_FW_SCOPE_CUSTOM) {
    result = entry->put_RemoteAddresses(BasicText(TextIn(facts, kAddresses)).Get());
  } else if (SUCCEEDED(result) && scope) {
    result = entry->put_Scope(static_cast<NET_FW_SCOPE>(*scope));
  }
  const bool enabled = NumberIn(facts, kEnabled).value_or(0) != 0;
  if (SUCCEEDED(result)) result = entry->put_Enabled(enabled ? VARIANT_TRUE : VARIANT_FALSE);
  if (SUCCEEDED(result)) result = list->Add(entry.Get());
  return StatusOfCom(result);
}

}  // namespace scrubwell::windows
