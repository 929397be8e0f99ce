#include "backends/windows/windows_backend.h"

#include <unordered_set>

#include "backends/windows/com_factories.h"
#include "backends/windows/live_parts.h"
#include "backends/windows/windows_files.h"
#include "backends/windows/windows_profiles.h"
#include "backends/windows/windows_registry.h"
#include "backends/windows/windows_shell.h"
#include "backends/windows/windows_system.h"
#include "registry/Stringhelper.h"

// After the general header.
#include <sddl.h>

namespace scrubwell {
namespace {

using namespace windows;

class NoteList final : public INotes {
 public:
  void Note(UnicodeView text) override {
    if (seen_.emplace(text).second) notes_.emplace_back(text);
  }
  [[nodiscard]] const std::vector<UnicodeString>& All() const { return notes_; }

 private:
  std::unordered_set<UnicodeString> seen_;
  std::vector<UnicodeString> notes_;
};

UnicodeString OwnSid() {
  OwnedHandle token;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Out()) == FALSE) return {};
  DWORD size = 0;
  GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &size);
  std::vector<TOKEN_USER> user(size / sizeof(TOKEN_USER) + 1);
  if (GetTokenInformation(token.Get(), TokenUser, user.data(), size, &size) == FALSE) return {};
  Owned<wchar_t*, &LocalFree> text;
  if (ConvertSidToStringSidW(user[0].User.Sid, text.Out()) == FALSE) return {};
  return FromWide(text.Get());
}

UnicodeString ProductName(IRegistry& registry) {
  RegValue value;
  const KeyRef key{RootKey::LocalMachine, u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion",
                   Is64BitSystem() ? View::Bits64 : View::Native};
  if (registry.GetValue(key, u"ProductName", value) != Status::Ok || value.type != REGT_SZ)
    return {};
  UnicodeString text;
  for (std::size_t i = 0; i + 1 < value.data.size(); i += 2)
    text += static_cast<char16_t>(value.data[i] | value.data[i + 1] << 8);
  return text.substr(0, text.find(u'\0'));
}

}  // namespace

struct WindowsBackend::Parts {
  Parts(const WindowsOptions& options, ComFactories factories)
      : registry(options.mayChange),
        files(options.mayChange, options.backupFolder),
        profiles(options.mayChange, files, system),
        tasks(options.mayChange, files, std::move(factories.scheduler)),
        firewall(options.mayChange, std::move(factories.firewall),
                 std::move(factories.firewallEntry)),
        browser(options.mayChange, registry, std::move(factories.urlHistory)),
        platform{registry, files, system,   text,    shell,  resources, profiles,
                 services, tasks, firewall, browser, images, notes,     options.product} {
    FillFacts();
  }

  void FillFacts() {
    const VersionNumber version = SystemVersion();
    facts.version = IntToStr(static_cast<std::int64_t>(version.major)) + u"." +
                    IntToStr(static_cast<std::int64_t>(version.minor));
    facts.build = version.build;
    facts.is64Bit = Is64BitSystem();
    facts.systemRoot = system.WindowsDir();
    if (!facts.systemRoot.empty()) facts.driveLetter = facts.systemRoot.front();
    facts.productName = ProductName(registry);
    facts.identity = IdentityOf(registry);
    facts.userSid = OwnSid();
    system.Environment(u"USERNAME", View::Native, facts.userName);
  }

  ComApartment apartment;  // before everything that holds objects
  NoteList notes;
  WindowsRegistry registry;
  WindowsFiles files;
  WindowsSystem system;
  WindowsText text;
  WindowsShell shell;
  WindowsResources resources;
  WindowsProfiles profiles;
  WindowsServices services;
  WindowsTasks tasks;
  WindowsFirewall firewall;
  WindowsBrowser browser;
  IImages images;
  TPlatform platform;
  TargetFacts facts;
};

WindowsBackend::WindowsBackend(const WindowsOptions& options)
    : WindowsBackend(options, ComFactories{}) {}
WindowsBackend::WindowsBackend(const WindowsOptions& options, ComFactories factories)
    : parts_(std::make_unique<Parts>(options, std::move(factories))) {}
WindowsBackend::~WindowsBackend() = default;

TPlatform& WindowsBackend::Platform() {
  return parts_->platform;
}

const TargetFacts& WindowsBackend::Target() const {
  return parts_->facts;
}

const std::vector<UnicodeString>& WindowsBackend::Notes() const {
  return parts_->notes.All();
}

void WindowsBackend::ForgetDeletions() {
  parts_->registry.ForgetDeletions();
}

}  // namespace scrubwell
