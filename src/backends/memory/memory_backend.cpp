#include "backends/memory/memory_backend.h"

#include "backends/common/access_check.h"
#include "backends/common/reg_places.h"
#include "formats/reg/reg_text.h"

namespace scrubwell {

namespace {

struct Variable {
  UnicodeView name;
  UnicodeView value;    // %U stands for the user's folder
  UnicodeView value32;  // what a 32-bit process sees; empty for the same
};
constexpr Variable kVariables[] = {
    {u"SystemRoot", u"C:\\Windows", {}},
    {u"windir", u"C:\\Windows", {}},
    {u"SystemDrive", u"C:", {}},
    {u"ProgramFiles", u"C:\\Program Files", u"C:\\Program Files (x86)"},
    {u"CommonProgramFiles", u"C:\\Program Files\\Common Files",
     u"C:\\Program Files (x86)\\Common Files"},
    {u"ProgramFiles(x86)", u"C:\\Program Files (x86)", {}},
    {u"CommonProgramFiles(x86)", u"C:\\Program Files (x86)\\Common Files", {}},
    {u"ProgramW6432", u"C:\\Program Files", {}},
    {u"CommonProgramW6432", u"C:\\Program Files\\Common Files", {}},
    {u"ProgramData", u"C:\\ProgramData", {}},
    {u"ALLUSERSPROFILE", u"C:\\ProgramData", {}},
    {u"PUBLIC", u"C:\\Users\\Public", {}},
    {u"USERPROFILE", u"%U", {}},
    {u"APPDATA", u"%U\\AppData\\Roaming", {}},
    {u"LOCALAPPDATA", u"%U\\AppData\\Local", {}},
    {u"TEMP", u"%U\\AppData\\Local\\Temp", {}},
    {u"PATH", u"C:\\Windows\\system32;C:\\Windows", {}},
    {u"PATHEXT", u".COM;.EXE;.BAT;.CMD", {}},
};

struct Folder {
  int csidl;
  UnicodeView path;
};
constexpr Folder kFolders[] = {
    {0, u"%U\\Desktop"},
    {2, u"%U\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs"},
    {5, u"%U\\Documents"},
    {6, u"%U\\Favorites"},
    {7, u"%U\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs\\Startup"},
    {8, u"%U\\AppData\\Roaming\\Microsoft\\Windows\\Recent"},
    {11, u"%U\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu"},
    {16, u"%U\\Desktop"},
    {20, u"C:\\Windows\\Fonts"},
    {22, u"C:\\ProgramData\\Microsoft\\Windows\\Start Menu"},
    {23, u"C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs"},
    {24, u"C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs\\Startup"},
    {25, u"C:\\Users\\Public\\Desktop"},
    {26, u"%U\\AppData\\Roaming"},
    {28, u"%U\\AppData\\Local"},
    {35, u"C:\\ProgramData"},
    {36, u"C:\\Windows"},
    {37, u"C:\\Windows\\System32"},
    {38, u"C:\\Program Files"},
};

ComposedSettings SettingsOf(const MemoryOptions& options) {
  return {options.userSid, options.is64Bit, options.rules};
}

UnicodeString JoinPath(UnicodeView mount, UnicodeView path) {
  UnicodeString full(mount);
  if (!path.empty()) (full += u'\\') += path;
  return full;
}

// A key's place as people read it: the user's hives under their names for him.
UnicodeString ShownPath(UnicodeView mount, UnicodeView path, UnicodeView userSid) {
  if (!userSid.empty()) {
    const UnicodeString own = u"HKU\\" + UnicodeString(userSid);
    if (SameText(mount, own)) return JoinPath(u"HKCU", path);
    if (SameText(mount, own + u"_Classes")) return JoinPath(u"HKCU\\Software\\Classes", path);
  }
  return JoinPath(mount, path);
}

UnicodeString ValueName(UnicodeView name) {
  return name.empty() ? u"@" : u"\"" + UnicodeString(name) + u"\"";
}

}  // namespace

// Lets every call pass the faults first.
class MemoryBackend::Gatekeeper final : public IRegistry {
 public:
  Gatekeeper(ComposedRegistry& inner, MemoryFaults& faults) : inner_(inner), faults_(faults) {}

  Status OpenKey(const KeyRef& key, KeyInfo& out) override {
    const Status status = faults_.Pass(key);
    return status != Status::Ok ? status : inner_.OpenKey(key, out);
  }
  Status EnumKeys(const KeyRef& key, TStringList& out) override {
    const Status status = faults_.Pass(key);
    return status != Status::Ok ? status : inner_.EnumKeys(key, out);
  }
  Status EnumValues(const KeyRef& key, std::vector<RegValue>& out) override {
    const Status status = faults_.Pass(key);
    return status != Status::Ok ? status : inner_.EnumValues(key, out);
  }
  Status GetValue(const KeyRef& key, UnicodeView name, RegValue& out) override {
    const Status status = faults_.Pass(key, name);
    return status != Status::Ok ? status : inner_.GetValue(key, name, out);
  }
  Status SetValue(const KeyRef& key, const RegValue& value) override {
    const Status status = faults_.Pass(key, value.name);
    return status != Status::Ok ? status : inner_.SetValue(key, value);
  }
  Status CreateKey(const KeyRef& key) override {
    const Status status = faults_.Pass(key);
    return status != Status::Ok ? status : inner_.CreateKey(key);
  }
  Status DeleteKey(const KeyRef& key, bool force) override {
    const Status status = faults_.Pass(key);
    return status != Status::Ok ? status : inner_.DeleteKey(key, force);
  }
  Status DeleteValue(const KeyRef& key, UnicodeView name) override {
    const Status status = faults_.Pass(key, name);
    return status != Status::Ok ? status : inner_.DeleteValue(key, name);
  }
  Status CheckAccess(const KeyRef& key, Access access) override {
    const Status status = faults_.Pass(key);
    return status != Status::Ok ? status : inner_.CheckAccess(key, access);
  }

 private:
  ComposedRegistry& inner_;
  MemoryFaults& faults_;
};

// Writes the journal.
class MemoryBackend::Watcher final : public IRegistryObserver {
 public:
  Watcher(MemoryJournal& journal, const UnicodeString& userSid)
      : journal_(journal), userSid_(userSid) {}

  bool BeforeChange(const RegistryChange& change) override {
    const UnicodeString key = ShownPath(change.mount, change.path, userSid_);
    switch (change.kind) {
      case ChangeKind::CreateKey:
        journal_.Add(u"create key " + key);
        break;
      case ChangeKind::DeleteKey:
        journal_.Add(u"delete key " + key);
        break;
      case ChangeKind::DeleteValue:
        journal_.Add(u"delete value " + key + u" " + ValueName(change.name));
        break;
      case ChangeKind::SetValue:
        journal_.Add(u"set value " + key + u" " + reg::FormatValue(*change.value));
        break;
    }
    return true;
  }

 private:
  MemoryJournal& journal_;
  const UnicodeString& userSid_;
};

MemoryBackend::MemoryBackend(MemoryOptions options)
    : options_(std::move(options)),
      registry_(SettingsOf(options_)),
      files_(journal_, faults_, options_.is64Bit, options_.version >= OsVersion::Win7),
      world_(MemoryShared{journal_, faults_, files_}),
      gate_(std::make_unique<Gatekeeper>(registry_, faults_)),
      watcher_(std::make_unique<Watcher>(journal_, options_.userSid)) {
  registry_.SetObserver(watcher_.get());
  Furnish();
  platform_ = std::make_unique<TPlatform>(
      TPlatform{*gate_, files_, world_.system, world_.text, world_.shell, world_.resources,
                world_.profiles, world_.services, world_.tasks, world_.firewall, world_.browser,
                world_.images, world_.notes, ProductKey{}});
}

MemoryBackend::~MemoryBackend() = default;

void MemoryBackend::Furnish() {
  const UnicodeString home = u"C:\\Users\\" + options_.userName;
  for (const Variable& variable : kVariables) {
    if (!options_.is64Bit && variable.name.find(u"6") != UnicodeView::npos) continue;
    const UnicodeString name(variable.name);
    world_.system.variables[name] = Replace(variable.value, u"%U", home);
    if (options_.is64Bit && !variable.value32.empty())
      world_.system.variables32[name] = variable.value32;
  }
  world_.system.variables[u"USERNAME"] = options_.userName;
  for (const Folder& folder : kFolders)
    world_.shell.folders[folder.csidl] = Replace(folder.path, u"%U", home);
  world_.system.version = options_.version;
  world_.system.isAdmin = options_.isAdmin;
  world_.system.isWow64 = options_.is64Bit;
  for (const UnicodeView mount : {u"HKLM\\SOFTWARE", u"HKLM\\SYSTEM", u"HKLM\\SAM"}) Hive(mount);
  Hive(u"HKU\\.DEFAULT");
  if (!options_.userSid.empty()) {
    Hive(u"HKU\\" + options_.userSid);
    Hive(u"HKU\\" + options_.userSid + u"_Classes");
  }
  MemoryHive& system = Hive(u"HKLM\\SYSTEM");
  system.Put(system.Make(u"Select"), {u"Current", REGT_DWORD, {1, 0, 0, 0}});
  system.Make(u"ControlSet001");
  files_.AddFolder(u"C:\\Windows\\System32");
  if (options_.is64Bit) files_.AddFolder(u"C:\\Windows\\SysWOW64");
}

MemoryHive& MemoryBackend::Hive(UnicodeView mount) {
  std::unique_ptr<MemoryHive>& hive = hives_[UpperCase(mount)];
  if (!hive) {
    hive = std::make_unique<MemoryHive>();
    registry_.Mount(mount, *hive);
  }
  return *hive;
}

std::string MemoryBackend::AddRegistry(std::string_view text) {
  const reg::Document document = reg::Parse(text, {.needsHeader = false});
  if (!document.Ok())
    return "registry, line " + std::to_string(document.errorLine) + ": " + document.error;
  registry_.Invalidate();
  for (const reg::KeyEntry& entry : document.keys) {
    HivePlace place;
    if (!HivePlaceOf(entry.path, options_.userSid, place))
      return "registry, line " + std::to_string(entry.line) + ": no hive holds this key";
    MemoryHive& hive = Hive(place.mount);
    const IHive::Key key = hive.Make(place.path);
    if (entry.remove) hive.Erase(key);
    if (entry.remove) continue;
    for (const reg::ValueEntry& value : entry.values) {
      if (value.remove)
        hive.EraseValue(key, value.value.name);
      else
        hive.Put(key, value.value);
    }
  }
  return {};
}

std::string MemoryBackend::AddFiles(std::string_view text) {
  return files_.Add(text);
}

IHive::Key MemoryBackend::KeyAt(UnicodeView fullPath, MemoryHive*& hive) {
  HivePlace place;
  hive = nullptr;
  if (!HivePlaceOf(fullPath, options_.userSid, place)) return IHive::NoKey;
  hive = &Hive(place.mount);
  registry_.Invalidate();
  return hive->Make(place.path);
}

void MemoryBackend::Deny(UnicodeView fullPath, Access access) {
  MemoryHive* hive = nullptr;
  const IHive::Key key = KeyAt(fullPath, hive);
  if (hive == nullptr) return;
  const std::uint32_t denied =
      access == Access::Delete ? kRightDelete : kRightSetValue | kRightCreateSubKey;
  const AccessEntry entries[] = {{false, 0, denied, u"S-1-1-0"},
                                 {true, 0, kKeyAllAccess, u"S-1-5-32-544"}};
  hive->SetSecurity(key, BuildDescriptor(u"S-1-5-18", entries));
}

void MemoryBackend::BreakKey(UnicodeView fullPath, Status fault) {
  MemoryHive* hive = nullptr;
  const IHive::Key key = KeyAt(fullPath, hive);
  if (hive != nullptr) hive->SetFault(key, fault);
}

std::string MemoryBackend::DumpRegistry() {
  std::string out;
  for (const auto& [mount, hive] : hives_) {
    std::vector<std::pair<IHive::Key, UnicodeString>> open{{0, {}}};
    while (!open.empty()) {
      const auto [key, path] = std::move(open.back());
      open.pop_back();
      out += ToUtf8(u"[" + ShownPath(mount, path, options_.userSid) + u"]\n");
      std::vector<RegValue> values;
      hive->Values(key, values);
      for (const RegValue& value : values) out += ToUtf8(reg::FormatValue(value)) + "\n";
      std::vector<IHive::Subkey> subkeys;
      hive->Subkeys(key, subkeys);
      for (auto it = subkeys.rbegin(); it != subkeys.rend(); ++it)
        open.emplace_back(it->key, path.empty() ? it->name : path + u"\\" + it->name);
    }
  }
  return out;
}

}  // namespace scrubwell
