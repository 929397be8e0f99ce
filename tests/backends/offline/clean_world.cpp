#include "clean_world.h"

#include <gtest/gtest.h>

#include "backends/common/local_file.h"
#include "formats/regf/editor.h"

namespace scrubwell::test {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kRegistry = R"(
[HKEY_LOCAL_MACHINE\SYSTEM\Select]
"Current"=dword:1
[HKEY_LOCAL_MACHINE\SYSTEM\ControlSet001\Services\Gone]
"ImagePath"="C:\\gone.sys"
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion]
"CurrentBuildNumber"="7601"
"ProductId"="1234"
"SystemRoot"="C:\\Windows"
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion\ProfileList\S-1-5-21-1-2-3-1001]
"ProfileImagePath"="C:\\Users\\anna"
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion\IniFileMapping\win.ini]
"Mapped"="SYS:Mapped"
[HKEY_LOCAL_MACHINE\SOFTWARE\Mapped]
"Key"="x"
"Other"="y"
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID\{1}]
@="gone"
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID\{1}\InprocServer32]
@="C:\\gone.dll"
"Threading"="Both"
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\.x]
@="xfile"
[HKEY_LOCAL_MACHINE\SOFTWARE\Vendor\Empty]
[HKEY_CURRENT_USER\Software\Classes\.x]
@="userfile"
[HKEY_CURRENT_USER\Software\Vendor]
"A"=dword:1
"B"=hex(7):41,00,00,00,00,00
)";

}  // namespace

CleanWorld::CleanWorld() {
  Registry(kRegistry, kCleanSid);
  regf::HiveBuilder& software = Hive(u"HKLM\\SOFTWARE");
  software.SetValue(software.CreatePath(software.Root(), u"Bulk"),
                    {u"Data", REGT_BINARY, Bytes(520'000, 7)});
  WriteHives("Windows", "Users/anna", UnicodeString(kCleanSid));
  Add("Windows/win.ini", "; kept\r\n[One]\r\nKey=1\r\nOther=2\r\n");
  Add("Windows/Tasks/gone.job", "job");
  Add("Users/anna/gone.lnk", "link");
  Add("Users/anna/Old/one.txt", "1");
}

CleanOptions CleanWorld::Options() const {
  return {{Folder(), {}, {}, Backups()}, Backups(), false};
}

std::map<std::string, std::string> ContentOf(const std::string& folder, bool times) {
  std::map<std::string, std::string> content;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    Bytes bytes;
    std::string& text = content[entry.path().string()];
    if (entry.is_directory() || !ReadLocalFile(entry.path().string(), bytes)) continue;
    text.assign(bytes.begin(), bytes.end());
    if (!text.starts_with("regf")) continue;
    const regf::OpenedHive hive = regf::Hive::FromBytes(bytes, "hive");
    text = hive.hive == nullptr ? hive.error : regf::DumpTree(*hive.hive, {.times = times});
    for (const std::string& problem : regf::CheckImage(bytes)) text += "\nproblem: " + problem;
  }
  return content;
}

void ChangeAll(CleanSession& session) {
  TPlatform& platform = session.Backend().Platform();
  session.BeginRound();
  session.BeginProblem({"aaa", u"COM", 1, u"Class", false});
  EXPECT_EQ(platform.registry.DeleteKey({RootKey::ClassesRoot, u"CLSID\\{1}"}, false), Status::Ok);
  EXPECT_EQ(platform.registry.DeleteKey({RootKey::ClassesRoot, u".x"}, false), Status::Ok);
  EXPECT_EQ(platform.registry.DeleteKey({RootKey::ClassesRoot, u".x"}, false), Status::Absent);
  session.EndProblem(true);
  session.BeginProblem({"bbb", u"Other", 2, u"Rest", false});
  EXPECT_EQ(platform.registry.DeleteValue({RootKey::CurrentUser, u"Software\\Vendor"}, u"a"),
            Status::Ok);
  EXPECT_EQ(platform.registry.SetValue({RootKey::CurrentUser, u"Software\\Vendor"},
                                       {u"B", REGT_BINARY, {1, 2, 3}}),
            Status::Ok);
  EXPECT_EQ(platform.registry.SetValue({RootKey::CurrentUser, u"Software\\New\\Sub"},
                                       {u"", REGT_BINARY, {1}}),
            Status::Ok);
  const KeyRef service{RootKey::LocalMachine, u"SYSTEM\\CurrentControlSet\\Services\\Gone"};
  EXPECT_EQ(platform.registry.DeleteValue(service, u"ImagePath"), Status::Ok);
  EXPECT_EQ(platform.registry.DeleteKey(service, true), Status::Ok);
  EXPECT_EQ(platform.profiles.Remove(u"win.ini", u"Mapped", u"Key"), Status::Ok);
  EXPECT_EQ(platform.files.Backup(u"C:\\Windows\\win.ini"), Status::Ok);
  EXPECT_EQ(platform.profiles.Remove(u"win.ini", u"One", u"Key"), Status::Ok);
  EXPECT_EQ(platform.profiles.Put(u"win.ini", u"One", u"Other", u"3"), Status::Ok);
  EXPECT_EQ(platform.tasks.Remove(u"gone.job"), Status::Ok);
  EXPECT_EQ(platform.files.EraseFile(u"c:\\users\\ANNA\\gone.lnk"), Status::Ok);
  EXPECT_EQ(platform.files.EraseFolder(u"C:\\Users\\anna\\Old"), Status::Denied);
  EXPECT_EQ(platform.files.EraseFile(u"C:\\Users\\anna\\Old\\one.txt"), Status::Ok);
  EXPECT_EQ(platform.files.EraseFolder(u"C:\\Users\\anna\\Old"), Status::Ok);
  session.EndProblem(true);
}

CommitResult CleanAll(const CleanWorld& world, offline::IDisk* disk) {
  const CleanOpenResult opened = CleanSession::Open(world.Options(), disk);
  if (opened.session == nullptr) return {opened.failure, opened.error, {}, {}, {}};
  ChangeAll(*opened.session);
  return opened.session->Commit();
}

}  // namespace scrubwell::test
