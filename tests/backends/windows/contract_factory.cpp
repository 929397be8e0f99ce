// The contract's world, laid out in the private Windows itself: what lies where, and which view
// leads there, is the system's answer.
#include <algorithm>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "backends/contract/contract.h"
#include "backends/windows/live_session.h"
#include "backends/windows/reg_force.h"
#include "formats/reg/reg_text.h"
#include "registry/Stringhelper.h"
#include "scratch.h"

namespace scrubwell::test {
namespace {

using windows::Wide;

// What the text makes of keys, and what the changes make; places as they lie in the hives.
constexpr std::pair<RootKey, UnicodeView> kOurs[] = {
    {RootKey::LocalMachine, u"SOFTWARE\\Firm"},
    {RootKey::LocalMachine, u"SOFTWARE\\Wow6432Node\\Firm"},
    {RootKey::LocalMachine, u"SOFTWARE\\Wow6432Node\\Made"},
    {RootKey::LocalMachine, u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\x.exe"},
    {RootKey::LocalMachine, u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs"},
    {RootKey::LocalMachine,
     u"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs"},
    {RootKey::LocalMachine, u"SOFTWARE\\Classes\\CLSID\\{A}"},
    {RootKey::LocalMachine, u"SOFTWARE\\Classes\\CLSID\\{B}"},
    {RootKey::LocalMachine, u"SOFTWARE\\Classes\\Wow6432Node\\CLSID\\{A}"},
    {RootKey::LocalMachine, u"SOFTWARE\\Classes\\TypeLib\\{T}"},
    {RootKey::LocalMachine, u"SOFTWARE\\Classes\\.abc"},
    {RootKey::LocalMachine, u"SYSTEM\\CurrentControlSet\\Services\\Thing"},
    {RootKey::CurrentUser, u"Software\\Classes\\.abc"},
    {RootKey::CurrentUser, u"Software\\Classes\\.user"},
    {RootKey::CurrentUser, u"Software\\Classes\\CLSID\\{A}"},
    {RootKey::CurrentUser, u"Software\\Classes\\Wow6432Node\\CLSID\\{C}"},
    {RootKey::CurrentUser, u"Software\\Firm"},
};

HKEY Handle(RootKey root) {
  return root == RootKey::CurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

void RemoveKey(RootKey root, UnicodeView path) {
  HKEY key = nullptr;
  const UnicodeString whole(path);
  const auto error =
      RegOpenKeyExW(Handle(root), Wide(whole), 0, KEY_ALL_ACCESS | KEY_WOW64_64KEY, &key);
  if (error != ERROR_SUCCESS) return;
  RegDeleteTreeW(key, nullptr);
  RegCloseKey(key);
  RegDeleteKeyExW(Handle(root), Wide(whole), KEY_WOW64_64KEY, 0);
}

void MakeKey(const reg::KeyEntry& entry) {
  const std::size_t slash = entry.path.find(u'\\');
  const bool isUser = entry.path.starts_with(u"HKEY_CURRENT_USER");
  const UnicodeString path = entry.path.substr(slash + 1);
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(isUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, Wide(path), 0, nullptr,
                            0, KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, &key, nullptr),
            ERROR_SUCCESS)
      << ToUtf8(path);
  for (const auto& [value, remove] : entry.values)
    RegSetValueExW(key, Wide(value.name), 0, value.type, value.data.data(),
                   static_cast<DWORD>(value.data.size()));
  RegCloseKey(key);
}

// Nobody may delete the key, or everybody may do everything with it.
void Guard(const UnicodeString& place, bool isGuarded) {
  const UnicodeString path = place.substr(place.find(u'\\') + 1);
  windows::RegKey key;
  if (key.Open(HKEY_LOCAL_MACHINE, path, WRITE_DAC | KEY_WOW64_64KEY) != Status::Ok) return;
  SetRights(HKEY_LOCAL_MACHINE, Wide(path),
            isGuarded ? L"D:(D;;SD;;;WD)(A;;KA;;;WD)" : L"D:(A;;KA;;;WD)");
}

/// Hides what the system's own lists hold beside, and gives the user the name that the text has.
class OursOnly final : public IRegistry {
 public:
  OursOnly(IRegistry& all, UnicodeString sid, UnicodeString textSid)
      : all_(all), sid_(std::move(sid)), textSid_(std::move(textSid)) {
    for (const KeyRef& list : kLists) {
      TStringList& names = others_.emplace_back();
      EXPECT_EQ(all_.EnumKeys(list, names), Status::Ok);
    }
  }

  Status OpenKey(const KeyRef& key, KeyInfo& out) override { return all_.OpenKey(Real(key), out); }
  Status EnumKeys(const KeyRef& key, TStringList& out) override {
    const Status status = all_.EnumKeys(Real(key), out);
    for (std::size_t i = 0; i < std::size(kLists); ++i) {
      if (key.root != kLists[i].root || key.view != kLists[i].view || key.path != kLists[i].path)
        continue;
      std::erase_if(out, [&](const auto& name) { return std::ranges::count(others_[i], name); });
    }
    return status;
  }
  Status EnumValues(const KeyRef& key, std::vector<RegValue>& out) override {
    return all_.EnumValues(Real(key), out);
  }
  Status GetValue(const KeyRef& key, UnicodeView name, RegValue& out) override {
    return all_.GetValue(Real(key), name, out);
  }
  Status SetValue(const KeyRef& key, const RegValue& value) override {
    return all_.SetValue(Real(key), value);
  }
  Status CreateKey(const KeyRef& key) override { return all_.CreateKey(Real(key)); }
  Status DeleteKey(const KeyRef& key, bool force) override {
    return all_.DeleteKey(Real(key), force);
  }
  Status DeleteValue(const KeyRef& key, UnicodeView name) override {
    return all_.DeleteValue(Real(key), name);
  }
  Status CheckAccess(const KeyRef& key, Access access) override {
    return all_.CheckAccess(Real(key), access);
  }

 private:
  static constexpr UnicodeView kAppPaths =
      u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths";
  static constexpr KeyRef kLists[] = {{RootKey::ClassesRoot, u"CLSID", View::Bits64},
                                      {RootKey::ClassesRoot, u"CLSID", View::Bits32},
                                      {RootKey::LocalMachine, kAppPaths, View::Bits64},
                                      {RootKey::LocalMachine, kAppPaths, View::Bits32}};

  KeyRef Real(KeyRef key) {
    if (key.root == RootKey::Users && key.path.starts_with(textSid_)) {
      path_ = sid_ + UnicodeString(key.path.substr(textSid_.size()));
      key.path = path_;
    }
    return key;
  }

  IRegistry& all_;
  UnicodeString sid_;
  UnicodeString textSid_;
  UnicodeString path_;
  std::vector<TStringList> others_;
};

constexpr REGSAM kRead = KEY_QUERY_VALUE | KEY_WOW64_64KEY;
const UnicodeString kControlSet = u"SYSTEM\\ControlSet001";
constexpr const char* kHosts = "C:\\Windows\\System32\\drivers\\etc\\hosts";

class PrivateWindows final : public ContractWorld {
 public:
  PrivateWindows(const ContractText& text, bool isPlanned) : guarded_(text.guarded) {
    // Nobody's own Windows is furnished and cleared like this.
    if (windows::SystemFunction<void()>(L"ntdll", "wine_get_version") == nullptr)
      throw std::runtime_error("for the tests' private Windows alone");
    Clear();
    session_ = OpenLiveSession({{}, {}, true});
    platform_ = isPlanned ? &session_.session->Backend().Platform() : &backend_.Platform();
    registry_ =
        std::make_unique<OursOnly>(platform_->registry, backend_.Target().userSid, text.userSid);
    for (const reg::KeyEntry& entry : reg::Parse(text.registry, {false}).keys) MakeKey(entry);
    Guard(guarded_, true);
    // Wine's current control set may be a set of its own; elsewhere it is the link.
    if (windows::RegKey set; set.Open(HKEY_LOCAL_MACHINE, kControlSet, kRead, true) != Status::Ok)
      MakeLink(HKEY_LOCAL_MACHINE, Wide(kControlSet),
               L"\\Registry\\Machine\\SYSTEM\\CurrentControlSet");
    const windows::RedirectionScope scope(FsView::Physical);
    hosts_ = ReadText(kHosts);
    std::istringstream lines(text.files);
    for (std::string line; std::getline(lines, line);) AddFile(line);
  }
  ~PrivateWindows() override {
    Clear();
    const windows::RedirectionScope scope(FsView::Physical);
    WriteText(kHosts, hosts_);
  }
  IRegistry& Registry() override { return *registry_; }
  IFiles& Files() override { return platform_->files; }

 private:
  void AddFile(const std::string& line) {
    const std::size_t bar = line.find(" | ");
    const std::string path = line.substr(0, bar);
    const std::string option = bar == line.npos ? "" : line.substr(bar + 3);
    if (path.ends_with('\\')) {
      std::filesystem::create_directories(path);
    } else if (!path.empty()) {
      const bool isText = option.starts_with("text=");
      const bool isSize = option.starts_with("size=");
      const std::size_t size = isSize ? std::stoul(option.substr(5)) : 1;
      WriteText(path, isText ? option.substr(5) : std::string(size, '\0'));
      if (path != kHosts) files_.push_back(path);
    }
  }
  void Clear() {
    Guard(guarded_, false);
    windows::RegKey set;
    RegValue target;
    if (set.Open(HKEY_LOCAL_MACHINE, kControlSet, kRead, true) == Status::Ok &&
        set.Value(u"SymbolicLinkValue", target) == Status::Ok)
      windows::DeleteTree(HKEY_LOCAL_MACHINE, kControlSet, KEY_WOW64_64KEY, false);
    for (const auto& [root, path] : kOurs) RemoveKey(root, path);
    const windows::RedirectionScope scope(FsView::Physical);
    for (const std::string& file : files_) DeleteFileA(file.c_str());
    std::filesystem::remove_all("C:\\Data");
  }

  UnicodeString guarded_;
  std::string hosts_;
  std::vector<std::string> files_;
  WindowsBackend backend_{MayChange()};
  LiveOpenResult session_;
  TPlatform* platform_ = nullptr;
  std::unique_ptr<OursOnly> registry_;
};

template <bool isPlanned>
std::unique_ptr<ContractWorld> Make(const ContractText& text) {
  return std::make_unique<PrivateWindows>(text, isPlanned);
}

// Hives that aren't loaded belong to nobody here. Wine gives a value the name it was asked for by,
// and shows its 32-bit programs "Sysnative" even when nothing is redirected.
constexpr unsigned kLacks = kHivesUnknown | kStoredNames | (sizeof(void*) == 4 ? kNoSysnative : 0U);

}  // namespace

INSTANTIATE_TEST_SUITE_P(Windows, BackendContract,
                         testing::Values(ContractBackend{"windows", true, Make<false>, kLacks},
                                         ContractBackend{"planned", true, Make<true>, kLacks}));

}  // namespace scrubwell::test
