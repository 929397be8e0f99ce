#include <gtest/gtest.h>

#include "backends/memory/memory_backend.h"
#include "support/ask.h"

namespace scrubwell::test {

TEST(MemoryBackend, RefusesTextsItDoesNotUnderstand) {
  MemoryBackend backend;
  EXPECT_EQ(backend.AddRegistry("[HKLM\\SOFTWARE]\n[HKEY_NOWHERE\\x]\n"),
            "registry, line 2: no hive holds this key");
  EXPECT_EQ(backend.AddRegistry("[K]\nx\n"), "registry, line 2: neither a key nor a value");
  const std::pair<const char*, const char*> files[] = {
      {"# fine\nx.dll", "files, line 2: a path begins with a drive"},
      {"drive D: floppy", "files, line 1: no such drive or kind of drive"},
      {"C:\\x | sise=1", "files, line 1: an option is size=N or text=..."},
      {"C:\\x | size=-1", "files, line 1: an option is size=N or text=..."},
      {"drive D: cdrom\nD:\\a\\\n\n C:\\a b.txt | text=x\\ny", ""},
  };
  for (const auto& [text, error] : files) EXPECT_EQ(backend.AddFiles(text), error);
  EXPECT_EQ(Ask(backend.Files(), "drive disk d:"), "3");
  EXPECT_EQ(Ask(backend.Files(), "read disk C:\\A B.TXT"), "x\r\ny");
}

TEST(MemoryBackend, FaultsHitEveryInterface) {
  MemoryBackend backend;
  backend.World().tasks.jobs = {{u"a.job", u"C:\\a.exe"}};
  backend.World().services.services[u"Svc"] = {};
  ASSERT_EQ(backend.AddFiles("C:\\x.ini | text=[s]\\nk=v"), "");
  TPlatform& platform = backend.Platform();
  MemoryFaults& faults = backend.Faults();
  UnicodeString text;
  TStringList list;
  ServiceInfo service;
  const std::pair<UnicodeView, std::function<Status()>> calls[] = {
      {u"hkcu\\software",
       [&] {
         return platform.registry.EnumKeys({RootKey::CurrentUser, u"Software"}, list);
       }},
      {u"x.ini", [&] { return platform.profiles.Get(u"C:\\x.ini", u"S", u"K", text); }},
      {u"SVC", [&] { return platform.services.Query(u"svc", service); }},
      {u"tasks", [&] { return platform.tasks.Names(list); }},
      {u"PATH", [&] { return platform.system.Environment(u"path", View::Native, text); }},
  };
  for (const auto& [part, call] : calls) {
    faults.Clear();
    const std::uint64_t before = faults.Calls();
    const Status sound = call();
    EXPECT_GT(faults.Calls(), before);
    faults.FailPath(part, Status::Corrupt);
    EXPECT_EQ(call(), Status::Corrupt);
    faults.Clear();
    faults.FailNth(1, Status::Denied);
    EXPECT_EQ(call(), Status::Denied);
    EXPECT_EQ(call(), sound);
  }
}

TEST(MemoryBackend, JournalNamesEveryChangeInOrder) {
  MemoryBackend backend;
  ASSERT_EQ(
      backend.AddFiles("C:\\l.lnk\nC:\\Windows\\win.ini | text=; c\\n[A]\\nx=1\\ny = \"2\"\\n[B]"),
      "");
  backend.World().firewall.applications = {{u"App", u"C:\\App.exe", true}};
  backend.World().firewall.removesDisabledOnly = true;
  backend.World().browser.urls = {u"file:///C:/a"};
  TPlatform& platform = backend.Platform();
  EXPECT_EQ(platform.files.Backup(u"C:\\L.lnk"), Status::Ok);
  EXPECT_EQ(platform.files.EraseFile(u"C:\\L.lnk"), Status::Ok);
  EXPECT_EQ(platform.profiles.Put(u"WIN.INI", u"a", u"X", u"3"), Status::Ok);
  EXPECT_EQ(platform.profiles.Put(u"win.ini", u"A", u"z", u"4"), Status::Ok);
  EXPECT_EQ(platform.profiles.Remove(u"win.ini", u"A", u"Y"), Status::Ok);
  EXPECT_EQ(platform.profiles.Remove(u"win.ini", u"B", u"x"), Status::Absent);
  EXPECT_EQ(platform.firewall.Remove(u"c:\\app.EXE"), Status::Denied);
  EXPECT_EQ(platform.firewall.SetEnabled(u"c:\\app.EXE", false), Status::Ok);
  EXPECT_EQ(platform.firewall.Remove(u"c:\\app.EXE"), Status::Ok);
  EXPECT_EQ(platform.browser.RemoveUrl(u"file:///C:/a"), Status::Ok);
  EXPECT_EQ(Ask(platform.registry, "set 64 HKCU\\New > v=1"), "Ok");
  const std::vector<std::string> expected{
      "backup C:\\L.lnk",
      "erase file C:\\L.lnk",
      "set entry C:\\Windows\\WIN.INI [a] X=3",
      "set entry C:\\Windows\\win.ini [A] z=4",
      "delete entry C:\\Windows\\win.ini [A] Y",
      "disable firewall C:\\App.exe",
      "remove firewall C:\\App.exe",
      "remove url file:///C:/a",
      "create key HKCU\\New",
      "set value HKCU\\New \"v\"=\"1\"",
  };
  EXPECT_EQ(backend.Journal(), expected);
  EXPECT_EQ(Ask(backend.Files(), "read disk C:\\Windows\\win.ini"),
            "; c\r\n[A]\r\nX=3\r\nz=4\r\n[B]\r\n");
}

}  // namespace scrubwell::test
