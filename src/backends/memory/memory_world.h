// The rest of a Windows in memory: plain tables that a test fills, behind the interfaces.
#pragma once

#include <map>
#include <optional>

#include "backends/memory/memory_files.h"
#include "registry/Stringhelper.h"

namespace scrubwell {

/// Finds names without regard to letter case.
struct IgnoreCaseLess {
  using is_transparent = void;
  bool operator()(UnicodeView a, UnicodeView b) const { return CompareUpCase(a, b) < 0; }
};
template <class V>
using NameTable = std::map<UnicodeString, V, IgnoreCaseLess>;

/// What the parts of a world share.
struct MemoryShared {
  MemoryJournal& journal;
  MemoryFaults& faults;
  MemoryFiles& files;
};

class MemorySystem final : public ISystem {
 public:
  UnicodeString windowsDir = u"C:\\Windows";
  OsVersion version = OsVersion::Win10;
  bool isAdmin = true;
  bool isWow64 = true;
  bool redirection = true;
  int pumped = 0;                        ///< how often the message queue was let run
  NameTable<UnicodeString> variables;    ///< as a 64-bit process sees them
  NameTable<UnicodeString> variables32;  ///< where a 32-bit process sees something else

  explicit MemorySystem(MemoryShared shared) : shared_(shared) {}
  UnicodeString WindowsDir() override { return windowsDir; }
  Status Environment(UnicodeView name, View view, UnicodeString& out) override;
  OsVersion Version() override { return version; }
  bool IsAdmin() override { return isAdmin; }
  bool IsWow64() override { return isWow64; }
  bool FsRedirection() override { return redirection; }
  void SetFsRedirection(bool enabled) override { redirection = enabled; }
  void PumpMessages() override { ++pumped; }

 private:
  MemoryShared shared_;
};

/// The locale's order is the upper-cased one; the ANSI page is Latin-1.
class MemoryText final : public ITextServices {
 public:
  int CompareText(UnicodeView a, UnicodeView b) override { return CompareUpCase(a, b); }
  UnicodeString FromAnsi(std::string_view bytes) override;
  std::string ToAnsi(UnicodeView text) override;
};

class MemoryShell final : public IShell {
 public:
  std::map<int, UnicodeString> folders;  ///< by CSIDL
  NameTable<UnicodeString> links;        ///< link file to target; an empty target is no file
  std::map<Bytes, UnicodeString> lists;  ///< shell item list to path; an empty path is no file

  explicit MemoryShell(MemoryShared shared) : shared_(shared) {}
  Status SpecialFolder(int csidl, UnicodeString& out) override;
  /// Unknown for a link that was not told.
  Status LinkTarget(UnicodeView linkFile, UnicodeString& out) override;
  /// Unknown for a list that was not told.
  Status ItemListPath(const Bytes& list, UnicodeString& out) override;

 private:
  MemoryShared shared_;
};

class MemoryResources final : public IFileResources {
 public:
  NameTable<std::map<std::uint32_t, UnicodeString>> strings;  ///< file to texts by number
  NameTable<FileVersion> versions;

  explicit MemoryResources(MemoryShared shared) : shared_(shared) {}
  Status StringResource(UnicodeView file, std::uint32_t id, UnicodeString& out) override;
  Status Version(UnicodeView file, FileVersion& out) override;

 private:
  MemoryShared shared_;
};

/// INI entries of the files in memory, which are read as UTF-8. A name without a folder lies in
/// the Windows folder.
class MemoryProfiles final : public IProfiles {
 public:
  explicit MemoryProfiles(MemoryShared shared) : shared_(shared) {}
  Status Get(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeString& out) override;
  Status Put(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeView value) override;
  Status Remove(UnicodeView file, UnicodeView section, UnicodeView key) override;
  Status Entries(UnicodeView file, UnicodeView section, TStringList& out) override;

 private:
  struct Text;
  Status Load(UnicodeView file, Text& out);
  Status Store(const Text& text, UnicodeView change);
  MemoryShared shared_;
};

class MemoryServices final : public IServices {
 public:
  NameTable<ServiceInfo> services;

  explicit MemoryServices(MemoryShared shared) : shared_(shared) {}
  Status Query(UnicodeView service, ServiceInfo& out) override;

 private:
  MemoryShared shared_;
};

class MemoryTasks final : public ITasks {
 public:
  Status connection = Status::Ok;
  std::vector<std::pair<UnicodeString, UnicodeString>> jobs;  ///< job and its application

  explicit MemoryTasks(MemoryShared shared) : shared_(shared) {}
  Status Connect() override;
  Status Names(TStringList& out) override;
  Status Application(UnicodeView job, UnicodeString& out) override;
  Status Remove(UnicodeView job) override;

 private:
  MemoryShared shared_;
};

class MemoryFirewall final : public IFirewall {
 public:
  Status connection = Status::Ok;
  std::vector<FirewallApplication> applications;
  /// While true, only an application that is switched off can be removed.
  bool removesDisabledOnly = false;

  explicit MemoryFirewall(MemoryShared shared) : shared_(shared) {}
  Status Connect() override;
  Status Applications(std::vector<FirewallApplication>& out) override;
  Status Remove(UnicodeView imageFile) override;
  Status SetEnabled(UnicodeView imageFile, bool enabled) override;

 private:
  FirewallApplication* Find(UnicodeView imageFile);
  MemoryShared shared_;
};

class MemoryBrowser final : public IBrowserHistory {
 public:
  int version = 11;
  TStringList urls;
  TStringList cacheNames;

  explicit MemoryBrowser(MemoryShared shared) : shared_(shared) {}
  int BrowserVersion() override { return version; }
  Status Urls(TStringList& out) override;
  Status QueryUrl(UnicodeView url) override;
  Status RemoveUrl(UnicodeView url) override;
  Status CacheNames(TStringList& out) override;

 private:
  MemoryShared shared_;
};

/// "icon<id>.svg" for every number.
class MemoryImages final : public IImages {
 public:
  UnicodeString FileName(int id, int category) override;
};

class MemoryNotes final : public INotes {
 public:
  TStringList notes;
  void Note(UnicodeView text) override { notes.emplace_back(text); }
};

/// All of it, for the test to fill: `world.services.services[u"MpsSvc"].state = 4`.
struct MemoryWorld {
  explicit MemoryWorld(MemoryShared shared)
      : system(shared),
        shell(shared),
        resources(shared),
        profiles(shared),
        services(shared),
        tasks(shared),
        firewall(shared),
        browser(shared) {}

  MemorySystem system;
  MemoryText text;
  MemoryShell shell;
  MemoryResources resources;
  MemoryProfiles profiles;
  MemoryServices services;
  MemoryTasks tasks;
  MemoryFirewall firewall;
  MemoryBrowser browser;
  MemoryImages images;
  MemoryNotes notes;
};

}  // namespace scrubwell
