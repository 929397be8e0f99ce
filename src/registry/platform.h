// The seam between the package and Windows: small interfaces, cut by subject, that a backend
// implements. Everything that can be written on these primitives is written once, in the helper
// units beside this header.
//
// Rules for every implementation:
//  - Nothing is thrown for a miss; the Status says what was found out. Outputs are only
//    meaningful for Status::Ok, and outputs named `out` are replaced, not appended to.
//  - Absent is answered only when the absence is proven.
//  - Calls come from one thread at a time.
#pragma once

#include "registry/types.h"

namespace scrubwell {

enum class Access : std::uint8_t { Delete, Write };

/// The registry as the running system would show it: merged classes root, current user, both views.
class IRegistry {
 public:
  virtual ~IRegistry() = default;
  virtual Status OpenKey(const KeyRef& key, KeyInfo& out) = 0;
  /// Names of the direct subkeys.
  virtual Status EnumKeys(const KeyRef& key, TStringList& out) = 0;
  virtual Status EnumValues(const KeyRef& key, std::vector<RegValue>& out) = 0;
  /// The empty name is the default value. Absent also when the key is not there.
  virtual Status GetValue(const KeyRef& key, UnicodeView name, RegValue& out) = 0;
  /// Creates the key when it is missing.
  virtual Status SetValue(const KeyRef& key, const RegValue& value) = 0;
  /// Creates the key and its missing parents; Ok when it is there already.
  virtual Status CreateKey(const KeyRef& key) = 0;
  /// Deletes the key with its subtree, or nothing of it where the rights of any key in it forbid
  /// that. In the classes root exactly one physical key goes: the user's where there is one, else
  /// the machine's. With `force` the keys' rights are overridden.
  virtual Status DeleteKey(const KeyRef& key, bool force) = 0;
  virtual Status DeleteValue(const KeyRef& key, UnicodeView name) = 0;
  /// Ok when the user the scan runs for may delete or write the key on the running system.
  virtual Status CheckAccess(const KeyRef& key, Access access) = 0;
};

struct FileInfo {
  bool isFolder = false;
};

struct DirEntry {
  UnicodeString name;
  bool isFolder = false;
  std::uint64_t size = 0;
};

/// Files. Paths are absolute, drive letter first ("C:\x\y"), backslashes, no quotes, no variables.
class IFiles {
 public:
  virtual ~IFiles() = default;
  /// Fixed only for a drive that is attached and known to be a local fixed one.
  virtual DriveKind Drive(char16_t letter) = 0;
  virtual Status Stat(UnicodeView path, FsView view, FileInfo& out) = 0;
  /// A file's size in bytes, 0 of a folder. Apart from Stat, for a folder's listing may tell what
  /// is there, while the size means a look at the file itself.
  virtual Status Size(UnicodeView path, FsView view, std::uint64_t& out) = 0;
  /// The entries of a folder without "." and "..".
  virtual Status List(UnicodeView path, FsView view, std::vector<DirEntry>& out) = 0;
  /// At most `limit` bytes; a longer file is Corrupt.
  virtual Status Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) = 0;
  virtual Status Write(UnicodeView path, const Bytes& data) = 0;
  virtual Status EraseFile(UnicodeView path) = 0;
  /// Removes an empty folder.
  virtual Status EraseFolder(UnicodeView path) = 0;
  /// Keeps a copy of the file as it is now, so that a change can be taken back.
  virtual Status Backup(UnicodeView path) = 0;
};

/// Windows versions in ascending order; CurrentOS compares them. 7 is where the firewall service
/// changed its name.
enum class OsVersion : std::uint8_t {
  Unknown = 0,
  Win95 = 1,
  Win98 = 2,
  WinME = 3,
  WinNT4 = 4,
  Win2000 = 5,
  WinXP = 6,
  Vista = 7,
  Win7 = 8,
  Win8 = 9,
  Win81 = 10,
  Win10 = 11,
  Win11 = 12,
};

class ISystem {
 public:
  virtual ~ISystem() = default;
  /// Without a trailing backslash, for example "C:\Windows".
  virtual UnicodeString WindowsDir() = 0;
  /// One variable as a process of the given view would see it. The text is fully expanded.
  virtual Status Environment(UnicodeView name, View view, UnicodeString& out) = 0;
  virtual OsVersion Version() = 0;
  virtual bool IsAdmin() = 0;
  /// True when the scan runs as a 32-bit process on a 64-bit Windows, so that both views are
  /// scanned. A switched-off 64-bit Windows counts as that.
  virtual bool IsWow64() = 0;
  virtual bool FsRedirection() = 0;
  virtual void SetFsRedirection(bool enabled) = 0;
  /// Lets the host's user interface breathe during a long enumeration.
  virtual void PumpMessages() {}
};

class IShell {
 public:
  virtual ~IShell() = default;
  /// A special folder by its CSIDL number, without a trailing backslash.
  virtual Status SpecialFolder(int /*csidl*/, UnicodeString& /*out*/) { return Status::Unknown; }
  /// The target path of a shortcut. Absent when the link names no file (advertised, virtual).
  virtual Status LinkTarget(UnicodeView /*linkFile*/, UnicodeString& /*out*/) {
    return Status::Unknown;
  }
  /// The path that a list of shell items spells. Absent when it names no file or folder.
  virtual Status ItemListPath(const Bytes& /*list*/, UnicodeString& /*out*/) {
    return Status::Unknown;
  }
};

struct FileVersion {
  std::uint16_t major = 0, minor = 0, release = 0, build = 0;
};

/// What lies in the resources of program files.
class IFileResources {
 public:
  virtual ~IFileResources() = default;
  /// A string of the file's string table in the user's language.
  virtual Status StringResource(UnicodeView /*file*/, std::uint32_t /*id*/,
                                UnicodeString& /*out*/) {
    return Status::Unknown;
  }
  virtual Status Version(UnicodeView file, FileVersion& out) {
    return void(file), out = {}, Status::Unknown;
  }
};

/// Entries of INI files as the system's profile functions see them, files mapped to the registry
/// included. Text is decoded; the bytes of untouched lines are never changed.
class IProfiles {
 public:
  virtual ~IProfiles() = default;
  virtual Status Get(UnicodeView /*file*/, UnicodeView /*section*/, UnicodeView /*key*/,
                     UnicodeString& /*out*/) {
    return Status::Unknown;
  }
  virtual Status Put(UnicodeView /*file*/, UnicodeView /*section*/, UnicodeView /*key*/,
                     UnicodeView /*value*/) {
    return Status::Unknown;
  }
  virtual Status Remove(UnicodeView /*file*/, UnicodeView /*section*/, UnicodeView /*key*/) {
    return Status::Unknown;
  }
  /// The names of a section's entries.
  virtual Status Entries(UnicodeView /*file*/, UnicodeView /*section*/, TStringList& /*out*/) {
    return Status::Unknown;
  }
};

struct ServiceInfo {
  std::uint32_t state = 0;  ///< the service manager's number; 4 is running
  std::uint32_t startType = 0;
  UnicodeString displayName;
};

class IServices {
 public:
  virtual ~IServices() = default;
  virtual Status Query(UnicodeView service, ServiceInfo& out) {
    return void(service), out = {}, Status::Unknown;
  }
};

/// Scheduled tasks of the 1.0 scheduler, named as its enumeration names them ("x.job").
class ITasks {
 public:
  virtual ~ITasks() = default;
  /// Starts the scheduler where it is not running and connects to it.
  virtual Status Connect() { return Status::Unknown; }
  virtual Status Names(TStringList& /*out*/) { return Status::Unknown; }
  virtual Status Application(UnicodeView /*job*/, UnicodeString& /*out*/) {
    return Status::Unknown;
  }
  virtual Status Remove(UnicodeView /*job*/) { return Status::Unknown; }
};

struct FirewallApplication {
  UnicodeString name;
  UnicodeString imageFile;
  bool enabled = true;
};

/// The authorised applications of the firewall's current profile.
class IFirewall {
 public:
  virtual ~IFirewall() = default;
  virtual Status Connect() { return Status::Unknown; }
  virtual Status Applications(std::vector<FirewallApplication>& /*out*/) { return Status::Unknown; }
  virtual Status Remove(UnicodeView /*imageFile*/) { return Status::Unknown; }
  virtual Status SetEnabled(UnicodeView /*imageFile*/, bool /*enabled*/) { return Status::Unknown; }
};

/// The browser's address history and cache index.
class IBrowserHistory {
 public:
  virtual ~IBrowserHistory() = default;
  /// Major version of the browser; 0 when there is none.
  virtual int BrowserVersion() { return 0; }
  virtual Status Urls(TStringList& /*out*/) { return Status::Unknown; }
  virtual Status QueryUrl(UnicodeView /*url*/) { return Status::Unknown; }
  virtual Status RemoveUrl(UnicodeView /*url*/) { return Status::Unknown; }
  /// The names of the cache index's entries, "Visited: user@address" among them.
  virtual Status CacheNames(TStringList& /*out*/) { return Status::Unknown; }
};

/// Maps image numbers to the host's image files; empty where there is none.
class IImages {
 public:
  virtual ~IImages() = default;
  virtual UnicodeString FileName(int /*id*/, int /*category*/) { return {}; }
};

class ITextServices {
 public:
  virtual ~ITextServices() = default;
  /// Order of two texts by the user's locale, letter case ignored: negative, zero, positive.
  virtual int CompareText(UnicodeView a, UnicodeView b) = 0;
  /// The system's ANSI code page. Bytes or units without a counterpart become "?".
  virtual UnicodeString FromAnsi(std::string_view bytes) = 0;
  virtual std::string ToAnsi(UnicodeView text) = 0;
};

/// What the scan could not tell, for the host to show beside the findings.
class INotes {
 public:
  virtual ~INotes() = default;
  virtual void Note(UnicodeView /*text*/) {}
};

/// Where the host keeps its own data: the ignore lists lie below this key.
struct ProductKey {
  RootKey root = RootKey::LocalMachine;
  UnicodeString path = u"Software";
};

/// Everything the package knows of the world. Borrowed: the host keeps all of it alive from the
/// package's start-up until after its shut-down.
struct TPlatform {
  IRegistry& registry;
  IFiles& files;
  ISystem& system;
  ITextServices& text;
  IShell& shell;
  IFileResources& resources;
  IProfiles& profiles;
  IServices& services;
  ITasks& tasks;
  IFirewall& firewall;
  IBrowserHistory& browser;
  IImages& images;
  INotes& notes;
  ProductKey product;
};

/// The platform that the helper units work on. A host sets it before the package starts up; null
/// ends its use. Not to be changed while a scan runs.
void SetPlatform(TPlatform* platform);
TPlatform& Platform();
bool HasPlatform();

}  // namespace scrubwell
