// Makes a Windows of a given size for measurements: make_installation KIND SIZE DIR.
//
//   intact     SIZE times the registry of a machine with much installed (302,330 keys in SOFTWARE);
//              nearly everything it refers to is there
//   broken     the same with nothing there, on the disk and among the references
//   problems   SIZE values that name missing files, and nothing else
//   ignored    the same, all of them on the ignore list
//   classes    SIZE classes below one key
//   items      SIZE entries of one recently-used list
//   files      SIZE files in one folder, each of them named by a value
//   values     SIZE values of a program's settings in one key
//
// DIR becomes the drive C. What was made is said in one line.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "formats/regf/hive_builder.h"
#include "identifiers.h"
#include "registry/Stringhelper.h"

namespace {

namespace fs = std::filesystem;
using namespace scrubwell;
using regf::HiveBuilder;
using Key = HiveBuilder::Key;

constexpr UnicodeView kSid = u"S-1-5-21-1000000001-1000000002-1000000003-1001";

UnicodeString Numbered(UnicodeView text, std::size_t number, UnicodeView end = {}) {
  return UnicodeString(text).append(IntToStr(static_cast<std::int64_t>(number))).append(end);
}

/// The drive and its two hives.
class Installation {
 public:
  explicit Installation(fs::path drive) : drive_(std::move(drive)) {
    const Key version = Software(u"Microsoft\\Windows NT\\CurrentVersion");
    software.SetText(version, u"ProductName", u"Windows 10 Pro");
    software.SetText(version, u"CurrentVersion", u"6.3");
    software.SetText(version, u"CurrentBuild", u"19045");
    software.SetText(version, u"SystemRoot", u"C:\\Windows");
    software.SetText(
        Software(u"Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\" + UnicodeString(kSid)),
        u"ProfileImagePath", u"C:\\Users\\anna");
    const Key current = Software(u"Microsoft\\Windows\\CurrentVersion");
    software.SetText(current, u"ProgramFilesDir", u"C:\\Program Files");
    software.SetText(current, u"ProgramFilesDir (x86)", u"C:\\Program Files (x86)");
    system.SetNumber(system.Create(system.Root(), u"Select"), u"Current", 1);
    system.SetText(
        system.CreatePath(system.Root(), u"ControlSet001\\Control\\Session Manager\\Environment"),
        u"Path", u"%SystemRoot%\\system32;%SystemRoot%", REGT_EXPAND_SZ);
    system.SetText(
        system.CreatePath(system.Root(), u"ControlSet001\\Control\\Session Manager\\Environment"),
        u"PROCESSOR_ARCHITECTURE", u"AMD64");
    for (const char* folder : {"Windows/System32/config", "Windows/SysWOW64", "Users/anna",
                               "Program Files", "Program Files (x86)"}) {
      fs::create_directories(drive_ / folder);
    }
  }

  Key Software(UnicodeView path) { return software.CreatePath(software.Root(), path); }
  Key User(UnicodeView path) { return user.CreatePath(user.Root(), path); }

  /// An empty file, given as Windows names it.
  void AddFile(UnicodeView path) {
    fs::path place = drive_ / Replaced(path.substr(3));
    fs::create_directories(place.parent_path());
    std::ofstream(place).put('x');
    ++files_;
  }

  void Write(const char* kind) {
    std::size_t size = 0;
    const auto write = [&](const HiveBuilder& hive, const char* place) {
      const Bytes bytes = hive.Build();
      size += bytes.size();
      std::ofstream(drive_ / place, std::ios::binary)
          .write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    };
    write(software, "Windows/System32/config/SOFTWARE");
    write(system, "Windows/System32/config/SYSTEM");
    write(user, "Users/anna/NTUSER.DAT");
    std::printf("%s: %zu keys, %zu files, %zu bytes of hives\n", kind, keys, files_, size);
  }

  HiveBuilder software, system, user;
  std::size_t keys = 0;

 private:
  static std::string Replaced(UnicodeView path) { return ToUtf8(Replace(path, u"\\", u"/")); }
  fs::path drive_;
  std::size_t files_ = 0;
};

/// A machine with much installed. The shares of each kind of key are those of such machines: most
/// are classes and interfaces, in both views.
class Machine {
 public:
  Machine(Installation& installation, std::size_t scale, bool intact)
      : in_(installation), scale_(scale), intact_(intact) {}

  void Make() {
    AddFiles();
    AddTypeLibraries();
    AddView(u"Classes", 20000, 25000);
    AddView(u"Classes\\Wow6432Node", 12000, 22000);
    AddFileTypes();
    AddInstalled();
    AddComponents();
  }

 private:
  static constexpr std::size_t kLibraries = 3000;
  static constexpr std::size_t kServers = 4000;
  static constexpr std::size_t kLibraryFiles = 2000;
  static constexpr std::size_t kPrograms = 600;
  static constexpr std::size_t kShared = 3300;
  static constexpr std::size_t kKeys = 302330;

  Key Add(Key parent, UnicodeView name) {
    ++keys_;
    return in_.software.Create(parent, name);
  }
  static bool Share(std::size_t number, std::size_t of100) { return number * 37 % 100 < of100; }
  /// One in a hundred references leads nowhere, as on every machine in use.
  [[nodiscard]] bool Leads(std::size_t number) const { return intact_ && number % 100 != 50; }
  UnicodeString Path(UnicodeView folder, std::size_t number, std::size_t count, UnicodeView end) {
    return Numbered(folder, number % count, Leads(number) ? end : u"-gone.dll");
  }

  void AddFiles() {
    in_.AddFile(u"C:\\Windows\\System32\\msiexec.exe");
    in_.AddFile(u"C:\\Windows\\explorer.exe");
    if (!intact_) return;
    for (std::size_t i = 0; i < kServers; ++i) {
      in_.AddFile(Numbered(u"C:\\Windows\\System32\\comp", i, u".dll"));
    }
    for (std::size_t i = 0; i < kLibraryFiles; ++i) {
      in_.AddFile(Numbered(u"C:\\Windows\\System32\\tl", i, u".dll"));
    }
    for (std::size_t i = 0; i < kPrograms; ++i) {
      in_.AddFile(Numbered(u"C:\\Program Files\\P", i, u"\\p.exe"));
    }
    for (std::size_t i = 0; i < kShared; ++i) in_.AddFile(SharedFile(i));
    for (std::size_t i = 0; i < 98; ++i) {
      in_.AddFile(Numbered(u"C:\\Windows\\Fonts\\font", i, u".ttf"));
    }
  }
  static UnicodeString SharedFile(std::size_t i) {
    return Numbered(Numbered(u"C:\\Program Files\\P", i % kPrograms, u"\\f"), i, u".dll");
  }

  void AddTypeLibraries() {
    const Key libraries = in_.Software(u"Classes\\TypeLib");
    for (std::size_t i = 0; i < kLibraries * scale_; ++i) {
      libraries_.push_back(ids_.Guid());
      const Key version = Add(Add(libraries, libraries_.back()), u"1.0");
      in_.software.SetText(version, u"", Numbered(u"Library ", i));
      in_.software.SetText(Add(Add(version, u"0"), u"win32"), u"",
                           Path(u"C:\\Windows\\System32\\tl", i, kLibraryFiles, u".dll"));
      in_.software.SetText(Add(version, u"FLAGS"), u"", u"0");
    }
  }
  UnicodeString Library(std::size_t number) {
    return Leads(number) ? libraries_[number % libraries_.size()] : ids_.Guid();
  }

  void AddView(const UnicodeString& place, std::size_t classes, std::size_t interfaces) {
    const Key clsid = in_.Software(place + u"\\CLSID");
    const UnicodeString marshaler = u"{00020424-0000-0000-C000-000000000046}";
    in_.software.SetText(in_.software.Create(clsid, marshaler), u"", u"PSOAInterface");
    for (std::size_t i = 0; i < classes * scale_; ++i) AddClass(clsid, i);
    const Key list = in_.Software(place + u"\\Interface");
    for (std::size_t i = 0; i < interfaces * scale_; ++i) {
      const Key key = Add(list, ids_.Guid());
      in_.software.SetText(key, u"", Numbered(u"IInterface", i));
      in_.software.SetText(Add(key, u"ProxyStubClsid32"), u"", Leads(i) ? marshaler : ids_.Guid());
      if (Share(i, 30)) in_.software.SetText(Add(key, u"NumMethods"), u"", u"12");
      if (!Share(i + 7, 50)) continue;
      const Key library = Add(key, u"TypeLib");
      in_.software.SetText(library, u"", Library(i));
      in_.software.SetText(library, u"Version", u"1.0");
    }
  }

  void AddClass(Key clsid, std::size_t i) {
    const UnicodeString id = ids_.Guid();
    const Key key = Add(clsid, id);
    in_.software.SetText(key, u"", Numbered(u"Class ", i));
    const Key server = Add(key, u"InprocServer32");
    in_.software.SetText(server, u"", Path(u"%SystemRoot%\\System32\\comp", i, kServers, u".dll"),
                         REGT_EXPAND_SZ);
    in_.software.SetText(server, u"ThreadingModel", u"Both");
    if (Share(i + 3, 30)) in_.software.SetText(Add(key, u"TypeLib"), u"", Library(i));
    // Where all is well a program identifier leads back, with keys of its own.
    if (!Share(i, intact_ ? 8 : 40)) return;
    const UnicodeString program = Numbered(u"Comp", programs_++, u".Class");
    in_.software.SetText(Add(key, u"ProgID"), u"", program + u".1");
    in_.software.SetText(Add(key, u"VersionIndependentProgID"), u"", program);
    if (!intact_) return;
    const Key classes = in_.Software(u"Classes");
    for (const UnicodeString& name : {program, program + u".1"}) {
      in_.software.SetText(Add(Add(classes, name), u"CLSID"), u"", id);
    }
  }

  void AddFileTypes() {
    const Key classes = in_.Software(u"Classes");
    for (std::size_t i = 0; i < 6000 * scale_; ++i) {
      const UnicodeString program = Numbered(u"prog", i, u".1");
      in_.software.SetText(Add(classes, Numbered(u".ex", i)), u"", program);
      const Key type = Add(classes, program);
      in_.software.SetText(type, u"", Numbered(u"Prog ", i, u" file"));
      const UnicodeString file =
          Numbered(Leads(i) ? u"C:\\Program Files\\P" : u"C:\\Program Files\\Gone", i % kPrograms,
                   u"\\p.exe");
      in_.software.SetText(Add(type, u"DefaultIcon"), u"", Numbered(file + u",", i % 9));
      const Key verb = Add(Add(type, u"shell"), u"open");
      in_.software.SetText(Add(verb, u"command"), u"", u"\"" + file + u"\" \"%1\"");
    }
  }

  void AddInstalled() {
    const Key current = in_.Software(u"Microsoft\\Windows\\CurrentVersion");
    const Key uninstall = in_.software.Create(current, u"Uninstall");
    for (std::size_t i = 0; i < 600 * scale_; ++i) {
      const Key key = Add(uninstall, ids_.Guid());
      in_.software.SetText(key, u"DisplayName", Numbered(u"Program ", i));
      in_.software.SetText(key, u"UninstallString", u"MsiExec.exe /X" + ids_.Guid(),
                           REGT_EXPAND_SZ);
      in_.software.SetText(
          key, u"InstallLocation",
          Numbered(Leads(i) ? u"C:\\Program Files\\P" : u"C:\\Gone\\P", i % kPrograms, u"\\"));
      in_.software.SetNumber(key, u"EstimatedSize", 5000);
    }
    const Key shared = in_.software.Create(current, u"SharedDLLs");
    for (std::size_t i = 0; i < 5000 * scale_; ++i) {
      const bool isShared = i % 5000 < kShared;
      UnicodeString file = isShared
                               ? SharedFile(i % 5000)
                               : Numbered(u"C:\\Windows\\System32\\comp", i % kServers, u".dll");
      if (!Leads(i)) file = Numbered(u"C:\\Program Files\\Gone\\f", i, u".dll");
      in_.software.SetNumber(shared, file, 1);
    }
    const Key run = in_.software.Create(current, u"Run");
    for (std::size_t i = 0; i < 200 * scale_; ++i) {
      in_.software.SetText(run, Numbered(u"r", i),
                           Numbered(Leads(i) ? u"C:\\Program Files\\P" : u"C:\\Gone\\P",
                                    i % kPrograms, u"\\p.exe /tray"));
    }
    const Key fonts = in_.Software(u"Microsoft\\Windows NT\\CurrentVersion\\Fonts");
    for (std::size_t i = 0; i < 700 * scale_; ++i) {
      in_.software.SetText(fonts, Numbered(u"Font ", i, u" (TrueType)"),
                           Path(u"font", i, 98, u".ttf"));
    }
    const Key big = in_.software.Create(current, u"BigData");
    in_.software.SetValue(big, {u"blob", REGT_BINARY, Bytes(100000 * scale_, 0x5A)});
  }

  /// What the installer notes of its components makes the number full.
  void AddComponents() {
    const Key components = in_.Software(
        u"Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\Components");
    for (std::size_t i = 0; keys_ < kKeys * scale_; ++i) {
      in_.software.SetText(Add(components, ids_.Hex(32)), ids_.Hex(32), SharedFile(i % kShared));
    }
    in_.keys = keys_;
  }

  Installation& in_;
  std::size_t scale_;
  bool intact_;
  std::size_t keys_ = 0;
  std::size_t programs_ = 0;
  std::vector<UnicodeString> libraries_;
  Identifiers ids_;
};

// ---- One kind of thing, many times ----------------------------------------------------------

constexpr UnicodeView kShared = u"Microsoft\\Windows\\CurrentVersion\\SharedDLLs";

void AddProblems(Installation& in, std::size_t size) {
  const Key shared = in.Software(kShared);
  for (std::size_t i = 0; i < size; ++i) {
    in.software.SetNumber(shared, Numbered(u"C:\\Gone\\f", i, u".dll"), 1);
  }
}

void AddIgnored(Installation& in, std::size_t size) {
  AddProblems(in, size);
  const Key list = in.User(u"Software\\Scrubwell\\IgnoredProblems");
  const UnicodeString none = u"\x1D\"-\"";
  for (std::size_t i = 0; i < size; ++i) {
    const UnicodeString key = QuotedPrintableEncode(u"Software\\" + UnicodeString(kShared));
    const UnicodeString value = QuotedPrintableEncode(Numbered(u"C:\\Gone\\f", i, u".dll"));
    in.user.SetText(list, Numbered(u"", i + 1),
                    u"64:2147483650\x1D" + key + u"\x1D" + value + none + none + u"\x1D\x1D\x1D" +
                        u"1\x1D" + u"a\x1D" + u"b");
  }
}

void AddClasses(Installation& in, std::size_t size) {
  const Key classes = in.Software(u"Classes\\CLSID");
  in.AddFile(u"C:\\Windows\\System32\\comp.dll");
  for (std::size_t i = 0; i < size; ++i) {
    UnicodeString number = IntToStr(static_cast<std::int64_t>(i));
    number.insert(0, 12 - number.size(), u'0');
    const Key key = in.software.Create(classes, u"{12345678-0000-0000-0000-" + number + u"}");
    in.software.SetText(in.software.Create(key, u"InprocServer32"), u"",
                        u"C:\\Windows\\System32\\comp.dll");
  }
}

void AddItems(Installation& in, std::size_t size) {
  const Key list =
      in.User(u"Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Paint\\Recent File List");
  for (std::size_t i = 1; i <= size; ++i) {
    in.user.SetText(list, Numbered(u"File", i), Numbered(u"C:\\Gone\\p", i, u".png"));
  }
}

void AddFolder(Installation& in, std::size_t size) {
  const Key shared = in.Software(kShared);
  for (std::size_t i = 0; i < size; ++i) {
    const UnicodeString file = Numbered(u"C:\\Many\\f", i, u".dll");
    in.AddFile(file);
    in.software.SetNumber(shared, file, 1);
  }
}

void AddValues(Installation& in, std::size_t size) {
  const Key settings = in.User(u"Software\\Mozilla\\Settings");
  for (std::size_t i = 0; i < size; ++i) {
    in.user.SetText(settings, Numbered(u"v", i, u"Path"), Numbered(u"C:\\Gone\\s", i, u".ini"));
  }
}

bool Make(std::string_view kind, std::size_t size, const fs::path& folder) {
  constexpr std::pair<std::string_view, void (*)(Installation&, std::size_t)> kKinds[] = {
      {"problems", &AddProblems}, {"ignored", &AddIgnored}, {"classes", &AddClasses},
      {"items", &AddItems},       {"files", &AddFolder},    {"values", &AddValues},
  };
  Installation installation(folder);
  if (kind == "intact" || kind == "broken") {
    Machine(installation, size, kind == "intact").Make();
    installation.Write(kind.data());
    return true;
  }
  for (const auto& [name, add] : kKinds) {
    if (name != kind) continue;
    add(installation, size);
    installation.Write(name.data());
    return true;
  }
  return false;
}

}  // namespace

int main(int count, char** arguments) {
  if (count == 4 && Make(arguments[1], std::strtoul(arguments[2], nullptr, 10), arguments[3])) {
    return 0;
  }
  std::fputs("usage: make_installation KIND SIZE DIR\n", stderr);
  return 2;
}
