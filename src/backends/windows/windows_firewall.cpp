#include "backends/windows/windows_firewall.h"

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

}  // namespace scrubwell::windows
