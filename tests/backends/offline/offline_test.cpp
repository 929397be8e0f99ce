#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "backends/offline/offline_backend.h"
#include "registry/Stringhelper.h"
#include "support/ask.h"
#include "support/disk.h"

namespace scrubwell::test {
namespace {

namespace fs = std::filesystem;

constexpr UnicodeView kSid = u"S-1-5-21-1-2-3-1001";

// A 64-bit Windows 10 on D:, with a user.
constexpr std::string_view kMachine = R"(
[HKEY_LOCAL_MACHINE\SYSTEM\Select]
"Current"=dword:0
"Default"=dword:1
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Session Manager\Environment]
"PROCESSOR_ARCHITECTURE"="AMD64"
"Path"=hex(2):25,00,53,00,79,00,73,00,74,00,65,00,6d,00,52,00,6f,00,6f,00,74,00,25,00,00,00
"Base"="D:\\base"
"Deep"=hex(2):25,00,42,00,61,00,73,00,65,00,25,00,5c,00,78,00,00,00
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\MpsSvc]
"Start"=dword:2
"DisplayName"="Firewall"
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\Manual]
"Start"=dword:3
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\Odd]
[HKEY_LOCAL_MACHINE\SYSTEM\MountedDevices]
"\\DosDevices\\D:"=hex:01,02,03,04,00,00,10,00,00,00,00,00
"\\DosDevices\\F:"=hex:01,02,03,04,00,00,20,00,00,00,00,00
"\\DosDevices\\G:"=hex:5c,00,3f,00
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion]
"CurrentBuildNumber"="22631"
"CurrentMajorVersionNumber"=dword:a
"CurrentMinorVersionNumber"=dword:0
"ProductName"="Windows 10 Pro"
"SystemRoot"="D:\\WINDOWS"
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion\ProfileList\S-1-5-21-1-2-3-1001]
"ProfileImagePath"="%SystemDrive%\\Users\\anna"
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion\ProfileList\S-1-5-21-1-2-3-1002.bak]
"ProfileImagePath"="%SystemDrive%\\Users\\anna"
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Microsoft\Windows NT\CurrentVersion\IniFileMapping\win.ini]
"Mapped"="@SYS:Firm\\Mapped"
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Microsoft\Windows NT\CurrentVersion\IniFileMapping\win.ini\Parts]
"One"="#USR:Parts"
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Firm\Mapped]
"Key"="registry"
[HKEY_CURRENT_USER\Environment]
"Path"="D:\\mine"
"Base"="D:\\user"
[HKEY_CURRENT_USER\Parts]
"One"="one"
[HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders]
"Recent"=hex(2):25,00,41,00,50,00,50,00,44,00,41,00,54,00,41,00,25,00,5c,00,52,00,5c,00,00,00
"Desktop"="%NOWHERE%\\Desktop"
)";

// The machine above as a disk, in the letter case of an old installation.
struct Machine : Disk {
  Machine() {
    Registry(kMachine, kSid);
    WriteHives("windows", "Users/anna", UnicodeString(kSid));
    fs::rename(fs::path(Folder()) / "windows/System32", fs::path(Folder()) / "windows/SYSTEM32");
  }
  OfflineOpenResult Open(TargetOptions options = {}) const {
    options.folder = Folder();
    return OfflineBackend::Open(options);
  }
};

TEST(OfflineBackend, DescribesItsTarget) {
  const Machine machine;
  const OfflineOpenResult opened = machine.Open();
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  const TargetFacts& target = opened.backend->Target();
  EXPECT_EQ(ToUtf8(target.productName), "Windows 11 Pro");
  EXPECT_EQ(ToUtf8(target.version), "10.0");
  EXPECT_EQ(target.build, 22631U);
  EXPECT_TRUE(target.is64Bit);
  EXPECT_EQ(ToUtf8(target.userName), "anna");
  EXPECT_EQ(target.userSid, kSid);
  EXPECT_EQ(ToUtf8(target.systemRoot), "D:\\windows");
  EXPECT_EQ(target.controlSet, 1U);
  ASSERT_EQ(opened.backend->Notes().size(), 1U);
  EXPECT_TRUE(opened.backend->Notes()[0].ends_with(u"drive F:"));
}

TEST(OfflineBackend, EnvironmentFoldersAndServices) {
  const Machine machine;
  const OfflineOpenResult opened = machine.Open();
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  TPlatform& platform = opened.backend->Platform();
  const std::tuple<UnicodeView, View, std::string> variables[] = {
      {u"windir", View::Native, "D:\\windows"},
      {u"PATH", View::Native, "D:\\windows;D:\\mine"},
      {u"base", View::Native, "D:\\user"},
      {u"Deep", View::Native, "D:\\base\\x"},
      {u"ProgramFiles", View::Native, "D:\\Program Files (x86)"},
      {u"ProgramFiles", View::Bits64, "D:\\Program Files"},
      {u"ProgramW6432", View::Bits32, "D:\\Program Files"},
      {u"PROCESSOR_ARCHITECTURE", View::Bits32, "x86"},
      {u"APPDATA", View::Native, "D:\\Users\\anna\\AppData\\Roaming"},
      {u"USERNAME", View::Native, "?"},
  };
  for (const auto& [name, view, wanted] : variables) {
    UnicodeString text = u"?";
    platform.system.Environment(name, view, text);
    EXPECT_EQ(ToUtf8(text), wanted) << ToUtf8(name);
  }
  const std::pair<int, std::string> folders[] = {
      {8, "D:\\Users\\anna\\AppData\\Roaming\\R"},
      {20, "D:\\windows\\Fonts"},
      {23, "D:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs"},
      {0, "?"},
      {4711, "?"}};
  for (const auto& [csidl, wanted] : folders) {
    UnicodeString text = u"?";
    platform.shell.SpecialFolder(csidl, text);
    EXPECT_EQ(ToUtf8(text), wanted) << csidl;
  }
  const std::tuple<UnicodeView, Status, std::uint32_t> services[] = {
      {u"mpssvc", Status::Ok, 4},
      {u"Manual", Status::Ok, 1},
      {u"Odd", Status::Unknown, 0},
      {u"None", Status::Absent, 0},
      {u"Odd\\Sub", Status::Absent, 0}};
  for (const auto& [name, status, state] : services) {
    ServiceInfo info;
    EXPECT_EQ(platform.services.Query(name, info), status) << ToUtf8(name);
    EXPECT_EQ(info.state, state) << ToUtf8(name);
  }
}

TEST(OfflineBackend, ProfilesGoThroughTheirMapping) {
  Machine machine;
  machine.Add("windows/win.ini",
              "[Mapped]\r\nKey=file\r\nOther=file\r\n[Parts]\r\nOne=file\r\nTwo=two\r\n"
              "[Plain]\r\n\xE4=\"\xF6\"\r\n");
  machine.Add("data/win.ini", "[Mapped]\nKey=elsewhere\n");
  const OfflineOpenResult opened = machine.Open();
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  const std::tuple<UnicodeView, UnicodeView, UnicodeView, std::string> rows[] = {
      {u"win.ini", u"mapped", u"key", "registry"},
      {u"WIN.INI", u"Mapped", u"Other", "?"},
      {u"D:\\Windows\\win.ini", u"Mapped", u"Key", "registry"},
      {u"D:\\data\\win.ini", u"Mapped", u"Key", "elsewhere"},
      {u"win.ini", u"Parts", u"One", "one"},
      {u"win.ini", u"Parts", u"Two", "two"},
      {u"win.ini", u"Plain", u"\u00C4", "\xC3\xB6"},
      {u"none.ini", u"a", u"b", "?"},
  };
  for (const auto& [file, section, key, wanted] : rows) {
    UnicodeString text = u"?";
    opened.backend->Platform().profiles.Get(file, section, key, text);
    EXPECT_EQ(ToUtf8(text), wanted) << ToUtf8(section) << " " << ToUtf8(key);
  }
}

TEST(OfflineFiles, FollowLinksInsideTheDrivesOnly) {
  Machine machine;
  const TempFolder data;
  const TempFolder outside;
  std::ofstream(outside.Path() / "secret.txt") << "x";
  std::ofstream(data.Path() / "on e.txt") << "x";
  machine.Add("real/sub/file.txt", "12345");
  machine.Add("real/ends.", "x");
  machine.Add("twin/a.txt");
  machine.Add("TWIN/b.txt");
  machine.Add("Some Long Name/in.txt");
  machine.Add("Progress One/in.txt");
  machine.Add("Progress Two/in.txt");
  machine.Add("foreign/\xFF.txt");
  const std::string own = machine.Folder();
  const std::pair<const char*, std::string> links[] = {
      {"raw", "\\??\\D:\\real\\sub"},
      {"other", "/\?\?/E:/"},
      {"up", "real/../real/sub"},
      {"whole", own + "/real"},
      {"out", outside.Path().string()},
      {"climb", "../../../etc"},
      {"loop", "loop"},
      {"self", "."},
      {"gone", "\\??\\D:\\nothing"},
      {"unmapped", "\\??\\X:\\real"},
      {"odd", "unsupported reparse tag 0x8000001b"},
      {"etc", "/etc"},
      {"volume", "\\??\\Volume{1}\\x"}};
  for (const auto& [name, target] : links) machine.Link(name, target);
  ASSERT_EQ(::mkfifo((own + "/pipe").c_str(), 0600), 0);
  const OfflineOpenResult opened = machine.Open({{}, {}, {{u'e', data.Path().string()}}});
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  const AskRow rows[] = {
      {"stat disk D:\\RAW\\FILE.txt", "file 5"},
      {"stat disk D:\\raw\\none.txt", "Absent"},
      {"stat disk D:\\other\\on e.txt", "file 1"},
      {"stat disk D:\\up\\file.txt", "file 5"},
      {"stat disk D:\\whole\\sub\\file.txt", "file 5"},
      {"stat disk D:\\self\\self\\real\\sub\\file.txt", "file 5"},
      {"stat disk D:\\gone\\x", "Absent"},
      {"stat disk D:\\out\\secret.txt", "Unknown"},
      {"stat disk D:\\etc\\passwd", "Unknown"},
      {"stat disk D:\\climb\\passwd", "Unknown"},
      {"stat disk D:\\loop\\x", "Unknown"},
      {"stat disk D:\\unmapped\\sub", "Unknown"},
      {"stat disk D:\\odd", "Unknown"},
      {"stat disk D:\\volume\\x", "Unknown"},
      // Both folders of one name, and names as they are written.
      {"stat disk D:\\Twin\\a.txt", "file 1"},
      {"stat disk D:\\Twin\\b.txt", "file 1"},
      {"stat disk D:\\Twin\\c.txt", "Absent"},
      {"stat disk D:\\real\\ends.", "file 1"},
      {"stat disk D:\\real\\sub. .\\file.txt. .", "Absent"},
      {"stat disk D:\\real\\sub.\\file.txt. .", "file 5"},
      {"stat disk D:\\real\\sub\\file.txt\\below", "Absent"},
      // Short names: one candidate, two, none.
      {"stat disk D:\\SOMELO~1\\in.txt", "file 1"},
      {"stat disk D:\\SOMELO~1\\no.txt", "Absent"},
      {"stat disk D:\\PROGRE~1\\in.txt", "Unknown"},
      {"stat disk D:\\NOTHIN~1\\in.txt", "Unknown"},
      // A name that this machine shows wrongly may be any.
      {"stat disk D:\\foreign\\\xC3\xA4.txt", "Unknown"},
      {"stat disk D:\\foreign\\a.txt", "Absent"},
      {"read disk D:\\pipe", "Unknown"},
      {"read disk D:\\out\\secret.txt", "Unknown"},
      {"erase disk D:\\real\\sub\\file.txt", "Denied"},
      {"drive disk E", "1"},
      {"drive disk C", "0"},
  };
  for (int round = 0; round < 2; ++round) CheckRows(opened.backend->Platform().files, rows);
}

TEST(OfflineBackend, SaysWhyItCannotOpen) {
  const auto damage = [](const char* file, std::string_view bytes) {
    return [file, bytes](Machine& machine) { machine.Add(file, bytes); };
  };
  // The part is of the error, or of a note where it opens.
  const std::tuple<const char*, std::function<void(Machine&)>, TargetOptions, OpenFailure,
                   const char*>
      rows[] = {
          {"no Windows",
           [](Machine& m) { fs::remove_all(m.Folder() + "/windows"); },
           {},
           OpenFailure::Unreadable,
           "no Windows on this volume"},
          {"no system hive",
           [](Machine& m) { fs::remove(m.Folder() + "/windows/SYSTEM32/config/SYSTEM"); },
           {},
           OpenFailure::Unreadable,
           "SYSTEM: there is no such file"},
          {"software is no hive",
           damage("windows/SYSTEM32/config/SOFTWARE", "no hive"),
           {},
           OpenFailure::Unreadable,
           "SOFTWARE"},
          {"user's hive is none",
           damage("Users/anna/NTUSER.DAT", "no hive"),
           {},
           OpenFailure::None,
           "NTUSER.DAT"},
          {"unknown user", [](Machine&) {}, {{}, "nobody", {}}, OpenFailure::WrongUse, "nobody"},
          {"drive without folder",
           [](Machine&) {},
           {{}, {}, {{u'E', "/no/such/folder"}}},
           OpenFailure::WrongUse,
           "/no/such/folder: No such file"},
          {"drive taken", [](Machine&) {}, {{}, {}, {{u'd', "/"}}}, OpenFailure::WrongUse, "taken"},
      };
  for (const auto& [name, change, options, failure, part] : rows) {
    Machine machine;
    change(machine);
    const OfflineOpenResult opened = machine.Open(options);
    EXPECT_EQ(opened.failure, failure) << name;
    std::string told = opened.error;
    if (opened.backend != nullptr) {
      for (const UnicodeString& note : opened.backend->Notes()) told += ToUtf8(note) + "\n";
      // What can't be read is never Absent.
      EXPECT_EQ(Ask(opened.backend->Platform().registry, "open 64 HKCU\\Software\\None"),
                "Corrupt");
    }
    EXPECT_NE(told.find(part), told.npos) << name << ": " << told;
  }
  EXPECT_EQ(OfflineBackend::Open({"/no/such/folder", {}, {}}).failure, OpenFailure::Unreadable);
}

TEST(OfflineBackend, OpensRealInstallations) {
  const TempFolder folder;
  const fs::path archive = folder.Path() / "wine.tar";
  if (!SharedFile("wine/wine-win7-x64.tar.xz", archive)) return;
  const std::string command =
      "tar -xf '" + archive.string() + "' -C '" + folder.Path().string() + "'";
  ASSERT_EQ(std::system(command.c_str()), 0);
  const std::string volume = (folder.Path() / "wine-win7-x64").string();
  OfflineOpenResult opened = OfflineBackend::Open({volume, {}, {}});
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  EXPECT_TRUE(opened.backend->Target().is64Bit);
  EXPECT_EQ(ToUtf8(opened.backend->Target().userName), "tester");
  IRegistry& registry = opened.backend->Platform().registry;
  for (const View view : {View::Bits32, View::Bits64}) {
    TStringList names;
    EXPECT_EQ(registry.EnumKeys({RootKey::ClassesRoot, u"CLSID", view}, names), Status::Ok);
    EXPECT_EQ(names.size(), 602U);
  }
  EXPECT_EQ(Ask(opened.backend->Platform().files, "stat disk C:\\Windows\\System32\\acledit.dll"),
            "file 1");
  EXPECT_EQ(Ask(registry, "get own HKLM\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage > ACP"),
            "\"ACP\"=\"1252\"");
  // Other real hives in the same places.
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"hives/win7-SYSTEM.xz", "windows/system32/config/SYSTEM",
       "open own HKLM\\SYSTEM\\CurrentControlSet\\Services\\Tcpip"},
      {"hives/win10-dirty-NTUSER.DAT.xz", "users/tester/NTUSER.DAT", "open own HKCU\\Software"},
      {"hives/win81-UsrClass.dat.xz", "users/tester/AppData/Local/Microsoft/Windows/UsrClass.dat",
       "open own HKCU\\Software\\Classes"},
      {"hives/winme-SOFTWARE.xz", "windows/system32/config/SOFTWARE",
       "open 32 HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs"},
  };
  for (const auto& [hive, place, question] : rows) {
    ASSERT_TRUE(SharedFile(hive, fs::path(volume) / place));
    opened = OfflineBackend::Open({volume, {}, {}});
    ASSERT_NE(opened.backend, nullptr) << opened.error;
    const std::string answer = Ask(opened.backend->Platform().registry, question);
    EXPECT_TRUE(answer.find(' ') != answer.npos) << hive << ": " << answer;
    if (std::string_view(hive).find("dirty") == std::string_view::npos) continue;
    bool stale = false;
    for (const UnicodeString& note : opened.backend->Notes()) {
      stale = stale || note.find(u"stale") != note.npos;
    }
    EXPECT_TRUE(stale);
  }
}

}  // namespace
}  // namespace scrubwell::test
