// The smallest Windows that a host can show to the package: a registry of a few keys, a list of
// files, one user. It serves as the pattern for a backend of one's own.
#pragma once

#include <map>
#include <set>

#include "registry/platform.h"

namespace embed {

/// Orders names without regard to letter case; enough for the letters A to Z.
struct NoCase {
  bool operator()(const scrubwell::UnicodeString& a, const scrubwell::UnicodeString& b) const;
};

/// Full key paths ("HKLM\Software\...") with their values. What is not listed is proven absent:
/// the list is all there is.
class TinyRegistry final : public scrubwell::IRegistry {
 public:
  /// Adds a text value, and the key and its parents with it.
  void AddText(scrubwell::UnicodeView key, scrubwell::UnicodeView name,
               scrubwell::UnicodeView text);

  scrubwell::Status OpenKey(const scrubwell::KeyRef& key, scrubwell::KeyInfo& out) override;
  scrubwell::Status EnumKeys(const scrubwell::KeyRef& key, scrubwell::TStringList& out) override;
  scrubwell::Status EnumValues(const scrubwell::KeyRef& key,
                               std::vector<scrubwell::RegValue>& out) override;
  scrubwell::Status GetValue(const scrubwell::KeyRef& key, scrubwell::UnicodeView name,
                             scrubwell::RegValue& out) override;
  scrubwell::Status SetValue(const scrubwell::KeyRef& key,
                             const scrubwell::RegValue& value) override;
  scrubwell::Status CreateKey(const scrubwell::KeyRef& key) override;
  scrubwell::Status DeleteKey(const scrubwell::KeyRef& key, bool force) override;
  scrubwell::Status DeleteValue(const scrubwell::KeyRef& key, scrubwell::UnicodeView name) override;
  scrubwell::Status CheckAccess(const scrubwell::KeyRef& key, scrubwell::Access access) override;

 private:
  void Put(const scrubwell::UnicodeString& path, const scrubwell::RegValue& value);

  using Values = std::map<scrubwell::UnicodeString, scrubwell::RegValue, NoCase>;
  std::map<scrubwell::UnicodeString, Values, NoCase> keys_;
};

/// Files and folders of drive C:. No other drive is known, so nothing can be told of it.
class TinyFiles final : public scrubwell::IFiles {
 public:
  /// Adds a file and the folders above it.
  void Add(scrubwell::UnicodeView path);

  scrubwell::DriveKind Drive(char16_t letter) override;
  scrubwell::Status Stat(scrubwell::UnicodeView path, scrubwell::FsView view,
                         scrubwell::FileInfo& out) override;
  scrubwell::Status Size(scrubwell::UnicodeView path, scrubwell::FsView view,
                         std::uint64_t& out) override;
  scrubwell::Status List(scrubwell::UnicodeView path, scrubwell::FsView view,
                         std::vector<scrubwell::DirEntry>& out) override;
  scrubwell::Status Read(scrubwell::UnicodeView path, scrubwell::FsView view, std::size_t limit,
                         scrubwell::Bytes& out) override;
  scrubwell::Status Write(scrubwell::UnicodeView path, const scrubwell::Bytes& data) override;
  scrubwell::Status EraseFile(scrubwell::UnicodeView path) override;
  scrubwell::Status EraseFolder(scrubwell::UnicodeView path) override;
  scrubwell::Status Backup(scrubwell::UnicodeView path) override;

 private:
  std::map<scrubwell::UnicodeString, scrubwell::FileInfo, NoCase> entries_;
};

/// A 32-bit Windows 7, so that there is one registry view and no redirection.
class TinySystem final : public scrubwell::ISystem {
 public:
  scrubwell::UnicodeString WindowsDir() override { return u"C:\\Windows"; }
  scrubwell::Status Environment(scrubwell::UnicodeView name, scrubwell::View view,
                                scrubwell::UnicodeString& out) override;
  scrubwell::OsVersion Version() override { return scrubwell::OsVersion::Win7; }
  bool IsAdmin() override { return true; }
  bool IsWow64() override { return false; }
  bool FsRedirection() override { return false; }
  void SetFsRedirection(bool) override {}
};

class TinyText final : public scrubwell::ITextServices {
 public:
  int CompareText(scrubwell::UnicodeView a, scrubwell::UnicodeView b) override;
  scrubwell::UnicodeString FromAnsi(std::string_view bytes) override;
  std::string ToAnsi(scrubwell::UnicodeView text) override;
};

class TinyShell final : public scrubwell::IShell {
 public:
  scrubwell::Status SpecialFolder(int csidl, scrubwell::UnicodeString& out) override;
};

/// Holds what the package borrows. The interfaces that are not overridden answer that nothing is
/// known, which is always safe.
struct TinyWindows {
  TinyRegistry registry;
  TinyFiles files;
  TinySystem system;
  TinyText text;
  TinyShell shell;
  scrubwell::IFileResources resources;
  scrubwell::IProfiles profiles;
  scrubwell::IServices services;
  scrubwell::ITasks tasks;
  scrubwell::IFirewall firewall;
  scrubwell::IBrowserHistory browser;
  scrubwell::IImages images;
  scrubwell::INotes notes;
  scrubwell::TPlatform platform{registry, files,
                                system,   text,
                                shell,    resources,
                                profiles, services,
                                tasks,    firewall,
                                browser,  images,
                                notes,    {scrubwell::RootKey::LocalMachine, u"Software\\Example"}};
};

}  // namespace embed
