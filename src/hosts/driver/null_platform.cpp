#include "hosts/driver/null_platform.h"

#include "registry/Stringhelper.h"

namespace scrubwell {

namespace {

class NullRegistry final : public IRegistry {
 public:
  Status OpenKey(const KeyRef&, KeyInfo&) override { return Status::Unknown; }
  Status EnumKeys(const KeyRef&, TStringList&) override { return Status::Unknown; }
  Status EnumValues(const KeyRef&, std::vector<RegValue>&) override { return Status::Unknown; }
  Status GetValue(const KeyRef&, UnicodeView, RegValue&) override { return Status::Unknown; }
  Status SetValue(const KeyRef&, const RegValue&) override { return Status::Unknown; }
  Status CreateKey(const KeyRef&) override { return Status::Unknown; }
  Status DeleteKey(const KeyRef&, bool) override { return Status::Unknown; }
  Status DeleteValue(const KeyRef&, UnicodeView) override { return Status::Unknown; }
  Status CheckAccess(const KeyRef&, Access) override { return Status::Unknown; }
};

class NullFiles final : public IFiles {
 public:
  DriveKind Drive(char16_t) override { return DriveKind::Unknown; }
  Status Stat(UnicodeView, FsView, FileInfo&) override { return Status::Unknown; }
  Status Size(UnicodeView, FsView, std::uint64_t&) override { return Status::Unknown; }
  Status List(UnicodeView, FsView, std::vector<DirEntry>&) override { return Status::Unknown; }
  Status Read(UnicodeView, FsView, std::size_t, Bytes&) override { return Status::Unknown; }
  Status Write(UnicodeView, const Bytes&) override { return Status::Unknown; }
  Status EraseFile(UnicodeView) override { return Status::Unknown; }
  Status EraseFolder(UnicodeView) override { return Status::Unknown; }
  Status Backup(UnicodeView) override { return Status::Unknown; }
};

class NullSystem final : public ISystem {
 public:
  UnicodeString WindowsDir() override { return {}; }
  Status Environment(UnicodeView, View, UnicodeString&) override { return Status::Unknown; }
  OsVersion Version() override { return OsVersion::Unknown; }
  bool IsAdmin() override { return false; }
  bool IsWow64() override { return false; }
  bool FsRedirection() override { return false; }
  void SetFsRedirection(bool) override {}
};

class PlainText final : public ITextServices {
 public:
  int CompareText(UnicodeView a, UnicodeView b) override { return CompareUpCase(a, b); }
  UnicodeString FromAnsi(std::string_view bytes) override { return FromUtf8(bytes); }
  std::string ToAnsi(UnicodeView text) override { return ToUtf8(text); }
};

}  // namespace

struct NullPlatform::Parts {
  NullRegistry registry;
  NullFiles files;
  NullSystem system;
  PlainText text;
  IShell shell;
  IFileResources resources;
  IProfiles profiles;
  IServices services;
  ITasks tasks;
  IFirewall firewall;
  IBrowserHistory browser;
  IImages images;
  INotes notes;
  TPlatform platform{registry, files, system,   text,    shell,  resources, profiles,
                     services, tasks, firewall, browser, images, notes,     {}};
};

NullPlatform::NullPlatform() : parts_(std::make_unique<Parts>()) {}
NullPlatform::~NullPlatform() = default;

TPlatform& NullPlatform::Platform() {
  return parts_->platform;
}

}  // namespace scrubwell
