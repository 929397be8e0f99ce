// COM objects of the tests' own: a firewall and an address history that hold what they are told.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "backends/windows/com_factories.h"

namespace scrubwell::test {

/// Objects that are alive, over all kinds.
inline long liveObjects = 0;

/// Counts references and answers to its own interface.
template <class Interface>
class Object : public Interface {
 public:
  Object() { ++liveObjects; }
  virtual ~Object() { --liveObjects; }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, __uuidof(Interface));
    *out = known ? this : nullptr;
    if (known) this->AddRef();
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 private:
  ULONG references_ = 1;
};

/// One that is nominally for scripts as well.
template <class Interface>
class ScriptObject : public Object<Interface> {
 public:
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }
};

struct FirewallEntry {
  std::wstring name;
  std::wstring file;
  bool enabled = true;
  /// The entry goes only after it was switched off.
  bool isStubborn = false;
  NET_FW_SCOPE scope = NET_FW_SCOPE_ALL;
};

/// What the firewall's objects share. They must not outlive it.
struct FirewallState {
  std::vector<FirewallEntry> entries;
  bool breaksOff = false;        ///< the walk fails in its middle
  bool holdsForeigners = false;  ///< an element that is no application stands in front

  std::vector<FirewallEntry>::iterator Find(const wchar_t* file) {
    return std::ranges::find_if(entries, [file](auto& entry) { return entry.file == file; });
  }
};

class FirewallEntryObject final : public ScriptObject<INetFwAuthorizedApplication> {
 public:
  FirewallEntryObject(FirewallState& state, FirewallEntry entry)
      : state_(state), entry_(std::move(entry)) {}
  [[nodiscard]] const FirewallEntry& Entry() const { return entry_; }
  HRESULT STDMETHODCALLTYPE get_Name(BSTR* out) override {
    return *out = SysAllocString(entry_.name.c_str()), S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Name(BSTR name) override { return entry_.name = name, S_OK; }
  HRESULT STDMETHODCALLTYPE get_ProcessImageFileName(BSTR* out) override {
    return *out = SysAllocString(entry_.file.c_str()), S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_ProcessImageFileName(BSTR file) override {
    return entry_.file = file, S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_IpVersion(NET_FW_IP_VERSION*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_IpVersion(NET_FW_IP_VERSION) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Scope(NET_FW_SCOPE* out) override {
    return *out = entry_.scope, S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Scope(NET_FW_SCOPE scope) override {
    return entry_.scope = scope, S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_RemoteAddresses(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_RemoteAddresses(BSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Enabled(VARIANT_BOOL* out) override {
    return *out = entry_.enabled ? VARIANT_TRUE : VARIANT_FALSE, S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Enabled(VARIANT_BOOL enabled) override {
    entry_.enabled = enabled != VARIANT_FALSE;
    const auto entry = state_.Find(entry_.file.c_str());
    if (entry != state_.entries.end()) entry->enabled = entry_.enabled;
    return S_OK;
  }

 private:
  FirewallState& state_;
  FirewallEntry entry_;
};

class FirewallWalk final : public Object<IEnumVARIANT> {
 public:
  explicit FirewallWalk(FirewallState& state) : state_(state) {}
  HRESULT STDMETHODCALLTYPE Next(ULONG, VARIANT* out, ULONG* count) override {
    *count = 0;
    if (state_.breaksOff && at_ == 1) return E_FAIL;
    if (state_.holdsForeigners && !foreigner_) {
      foreigner_ = true;
      out->vt = VT_I4;
      return *count = 1, S_OK;
    }
    if (at_ == state_.entries.size()) return S_FALSE;
    out->vt = VT_DISPATCH;
    out->pdispVal = new FirewallEntryObject(state_, state_.entries[at_++]);
    return *count = 1, S_OK;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reset() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT**) override { return E_NOTIMPL; }

 private:
  FirewallState& state_;
  std::size_t at_ = 0;
  bool foreigner_ = false;
};

class FirewallList final : public ScriptObject<INetFwAuthorizedApplications> {
 public:
  explicit FirewallList(FirewallState& state) : state_(state) {}
  HRESULT STDMETHODCALLTYPE get_Count(LONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Add(INetFwAuthorizedApplication* entry) override {
    return state_.entries.push_back(static_cast<FirewallEntryObject*>(entry)->Entry()), S_OK;
  }
  HRESULT STDMETHODCALLTYPE Remove(BSTR file) override {
    const auto entry = state_.Find(file);
    if (entry == state_.entries.end() || (entry->isStubborn && entry->enabled)) return E_FAIL;
    return state_.entries.erase(entry), S_OK;
  }
  HRESULT STDMETHODCALLTYPE Item(BSTR file, INetFwAuthorizedApplication** out) override {
    const auto entry = state_.Find(file);
    if (entry == state_.entries.end()) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    return *out = new FirewallEntryObject(state_, *entry), S_OK;
  }
  HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown** out) override {
    return *out = new FirewallWalk(state_), S_OK;
  }

 private:
  FirewallState& state_;
};

class FirewallProfile final : public ScriptObject<INetFwProfile> {
 public:
  explicit FirewallProfile(FirewallState& state) : state_(state) {}
  HRESULT STDMETHODCALLTYPE get_Type(NET_FW_PROFILE_TYPE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_FirewallEnabled(VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_FirewallEnabled(VARIANT_BOOL) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_ExceptionsNotAllowed(VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_ExceptionsNotAllowed(VARIANT_BOOL) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_NotificationsDisabled(VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_NotificationsDisabled(VARIANT_BOOL) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE
  get_UnicastResponsesToMulticastBroadcastDisabled(VARIANT_BOOL*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE
  put_UnicastResponsesToMulticastBroadcastDisabled(VARIANT_BOOL) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_RemoteAdminSettings(INetFwRemoteAdminSettings**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_IcmpSettings(INetFwIcmpSettings**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_GloballyOpenPorts(INetFwOpenPorts**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Services(INetFwServices**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE
  get_AuthorizedApplications(INetFwAuthorizedApplications** out) override {
    return *out = new FirewallList(state_), S_OK;
  }

 private:
  FirewallState& state_;
};

class FirewallPolicy final : public ScriptObject<INetFwPolicy> {
 public:
  explicit FirewallPolicy(FirewallState& state) : state_(state) {}
  HRESULT STDMETHODCALLTYPE get_CurrentProfile(INetFwProfile** out) override {
    return *out = new FirewallProfile(state_), S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetProfileByType(NET_FW_PROFILE_TYPE, INetFwProfile**) override {
    return E_NOTIMPL;
  }

 private:
  FirewallState& state_;
};

class FirewallManager final : public ScriptObject<INetFwMgr> {
 public:
  explicit FirewallManager(FirewallState& state) : state_(state) {}
  HRESULT STDMETHODCALLTYPE get_LocalPolicy(INetFwPolicy** out) override {
    return *out = new FirewallPolicy(state_), S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_CurrentProfileType(NET_FW_PROFILE_TYPE*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE RestoreDefaults() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE IsPortAllowed(BSTR, NET_FW_IP_VERSION, LONG, BSTR, NET_FW_IP_PROTOCOL,
                                          VARIANT*, VARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE IsIcmpTypeAllowed(NET_FW_IP_VERSION, BSTR, BYTE, VARIANT*,
                                              VARIANT*) override {
    return E_NOTIMPL;
  }

 private:
  FirewallState& state_;
};

/// Saves a task of that name; a name beyond ASCII must come back as it is.
inline void MakeTask(const wchar_t* name, const wchar_t* program, const wchar_t* folder,
                     const wchar_t* parameters = L"") {
  windows::ComPtr<ITaskScheduler> scheduler;
  windows::ComPtr<IUnknown> item;
  windows::ComPtr<ITask> task;
  windows::ComPtr<IPersistFile> file;
  ASSERT_EQ(windows::SystemScheduler()(scheduler.Out()), S_OK);
  scheduler->Delete(name);
  ASSERT_EQ(scheduler->NewWorkItem(name, CLSID_CTask, IID_ITask, item.Out()), S_OK);
  ASSERT_EQ(item->QueryInterface(IID_ITask, task.OutVoid()), S_OK);
  EXPECT_EQ(task->SetApplicationName(program), S_OK);
  EXPECT_EQ(task->SetWorkingDirectory(folder), S_OK);
  EXPECT_EQ(task->SetParameters(parameters), S_OK);
  ASSERT_EQ(task->QueryInterface(IID_IPersistFile, file.OutVoid()), S_OK);
  EXPECT_EQ(file->Save(nullptr, TRUE), S_OK);
}

using UrlList = std::map<std::wstring, std::wstring>;  // to their titles

inline wchar_t* TaskCopy(const std::wstring& text) {
  const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  void* const copy = CoTaskMemAlloc(bytes);
  std::copy_n(text.c_str(), text.size() + 1, static_cast<wchar_t*>(copy));
  return static_cast<wchar_t*>(copy);
}

class UrlWalk final : public Object<IEnumSTATURL> {
 public:
  explicit UrlWalk(UrlList& urls) : urls_(urls) {}
  HRESULT STDMETHODCALLTYPE Next(ULONG, STATURL* out, ULONG* count) override {
    *count = 0;
    if (at_ == urls_.end()) return S_FALSE;
    out->pwcsUrl = TaskCopy(at_->first);
    out->pwcsTitle = TaskCopy((at_++)->second);
    return *count = 1, S_OK;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reset() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IEnumSTATURL**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetFilter(LPCOLESTR, DWORD) override { return E_NOTIMPL; }

 private:
  UrlList& urls_;
  UrlList::iterator at_ = urls_.begin();
};

class UrlHistory final : public Object<IUrlHistoryStg2> {
 public:
  explicit UrlHistory(UrlList& urls) : urls_(urls) {}
  HRESULT STDMETHODCALLTYPE AddUrl(LPCOLESTR url, LPCOLESTR title, DWORD) override {
    return urls_[url] = title, S_OK;
  }
  HRESULT STDMETHODCALLTYPE DeleteUrl(LPCOLESTR url, DWORD) override {
    return urls_.erase(url) > 0 ? S_OK : HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  }
  HRESULT STDMETHODCALLTYPE QueryUrl(LPCOLESTR url, DWORD flags, STATURL* out) override {
    const auto found = urls_.find(url);
    if (found == urls_.end()) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    out->pwcsUrl = TaskCopy(url);
    if ((flags & STATURL_QUERYFLAG_NOTITLE) == 0) out->pwcsTitle = TaskCopy(found->second);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE BindToObject(LPCOLESTR, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumUrls(IEnumSTATURL** out) override {
    return *out = new UrlWalk(urls_), S_OK;
  }
  HRESULT STDMETHODCALLTYPE AddUrlAndNotify(LPCOLESTR, LPCOLESTR, DWORD, WINBOOL,
                                            IOleCommandTarget*, IUnknown*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE ClearHistory() override { return E_NOTIMPL; }

 private:
  UrlList& urls_;
};

/// The real scheduler, with a firewall and a history of the test's own.
inline windows::ComFactories OwnObjects(FirewallState& firewall, UrlList& urls) {
  windows::ComFactories factories;
  factories.firewall = [&firewall](INetFwMgr** out) {
    return *out = new FirewallManager(firewall), S_OK;
  };
  factories.firewallEntry = [&firewall](INetFwAuthorizedApplication** out) {
    return *out = new FirewallEntryObject(firewall, {}), S_OK;
  };
  factories.urlHistory = [&urls](IUrlHistoryStg2** out) {
    return *out = new UrlHistory(urls), S_OK;
  };
  return factories;
}

}  // namespace scrubwell::test
