// What start-up entries need of the switched-off system: tasks, INI files, the ANSI page.
#include <gtest/gtest.h>

#include <set>

#include "backends/common/ini_profiles.h"
#include "backends/memory/memory_backend.h"
#include "backends/offline/offline_tasks.h"
#include "backends/offline/text_services.h"
#include "formats/job/job_samples.h"
#include "registry/Stringhelper.h"
#include "support/disk.h"

namespace scrubwell::offline {
namespace {

TEST(TextServices, GiveEveryByteBack) {
  for (const unsigned page :
       {1250U, 1251U, 1252U, 1253U, 1254U, 1255U, 1256U, 1257U, 1258U, 874U}) {
    TextServices text(page);
    ASSERT_TRUE(text.IsExact());
    std::set<UnicodeString> seen;
    for (int byte = 0; byte < 256; ++byte) {
      const std::string one(1, static_cast<char>(byte));
      const UnicodeString unit = text.FromAnsi(one);
      EXPECT_EQ(unit.size(), 1U) << page << " " << byte;
      EXPECT_TRUE(seen.insert(unit).second) << page << " " << byte;
      EXPECT_EQ(text.ToAnsi(unit), one) << page << " " << byte;
    }
    // A name as its UTF-8 bytes, every second byte of which these pages may lack.
    UnicodeString name = u"\xD83D\xDE00\xD800";
    for (char16_t unit = 0xC0; unit < 0x900; ++unit) name += unit;
    EXPECT_EQ(FromUtf8(text.ToAnsi(text.FromAnsi(ToUtf8(name)))), name) << page;
  }
  TextServices western(1252);
  EXPECT_EQ(western.FromAnsi("\x80\x81\xE4"), u"\u20AC\u0081\u00E4");
  EXPECT_EQ(western.ToAnsi(u"\u20AC\u0416\u0101"), "\x80??");  // no letter that merely looks alike
  EXPECT_EQ(TextServices(1255).FromAnsi("\xE0"), u"\u05D0");
}

Bytes Job(UnicodeView application, UnicodeView folder) {
  Bytes out(70);
  out[2] = 1, out[20] = 70;
  for (const UnicodeView text : {application, UnicodeView(), folder, UnicodeView(), UnicodeView()})
    job::PutText(out, text);
  out[22] = static_cast<std::uint8_t>(out.size());
  job::Put16(out, 0);
  return out;
}

TEST(OfflineTasks, ReadsAndRemovesByName) {
  MemoryBackend backend;
  const std::string cache =
      "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Schedule\\TaskCache\\";
  const std::string key = "[HKEY_LOCAL_MACHINE\\" + cache;
  ASSERT_EQ(backend.AddRegistry(key + "Tree\\new]\n\"Id\"=\"{1}\"\n" + key + "Tasks\\{1}]\n" + key +
                                "Tasks\\{2}]\n" + key + "Tree\\odd]\n\"Id\"=\"{2}\\\\x\"\n"),
            "");
  ASSERT_EQ(backend.AddFiles("C:\\Windows\\System32\\Tasks\\new\nC:\\app\\tool.exe\n"
                             "C:\\Windows\\Tasks\\desktop.ini\ndrive D: network\n"),
            "");
  const struct {
    UnicodeView name, application, folder;
    std::string answer;
  } rows[] = {{u"\u0416\u00E4 \xD83D\xDE00.job", u"C:\\gone.exe", u"C:\\app", "C:\\gone.exe"},
              {u"new.JOB", u"tool", u"\"C:\\app\\\"", "C:\\app\\tool.exe"},
              {u"odd.job", u"other.exe", u"C:\\app", "other.exe"},
              {u"far.job", u"tool.exe", u"D:\\app", "?"},
              {u"bad.job", u"", u"", "?"}};
  Installation installation;
  installation.systemRoot = u"C:\\Windows";
  OfflineSystem system(backend.Registry(), installation, nullptr);
  OfflineTasks tasks(backend.Registry(), system, backend.Files());
  for (const auto& row : rows) {
    Bytes bytes = Job(row.application, row.folder);
    if (row.application.empty()) bytes.pop_back();
    backend.Files().AddFile(u"C:\\Windows\\Tasks\\" + UnicodeString(row.name), bytes);
    UnicodeString application;
    const bool isRead = tasks.Application(row.name, application) == Status::Ok;
    EXPECT_EQ(isRead ? ToUtf8(application) : "?", row.answer) << ToUtf8(row.name);
  }
  TStringList names;
  ASSERT_EQ(tasks.Names(names), Status::Ok);
  EXPECT_EQ(names.size(), std::size(rows));
  for (const UnicodeView name : {u"none.job", u"desktop.ini", u"..\\Tasks\\far.job", u"C:far.job"})
    EXPECT_EQ(tasks.Remove(name), Status::Absent) << ToUtf8(name);
  EXPECT_EQ(tasks.Remove(rows[0].name), Status::Ok);
  EXPECT_EQ(tasks.Remove(u"new.job"), Status::Ok);
  EXPECT_EQ(tasks.Remove(u"odd.job"), Status::Corrupt);
  const std::string folder = "erase file C:\\Windows\\";
  const std::vector<std::string> changes = {folder + "Tasks\\" + ToUtf8(rows[0].name),
                                            folder + "Tasks\\new.job",
                                            "delete key HKLM\\" + cache + "Tasks\\{1}",
                                            "delete key HKLM\\" + cache + "Tree\\new",
                                            folder + "System32\\Tasks\\new",
                                            folder + "Tasks\\odd.job"};
  EXPECT_EQ(backend.Journal(), changes);
}

TEST(IniProfiles, ChangeNothingButTheEntry) {
  constexpr UnicodeView ini = u"C:\\Windows\\win.ini";
  constexpr std::string_view before =
      "; note\r\n[A]\nk = 1 ;2\r\nk=dup\r\n\xE4=\x81\r\n[Mapped]\r\nx=file\r\ny=file\r\nz=z\r\n[B]";
  const std::string mapping =
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows NT\\CurrentVersion\\"
      "IniFileMapping\\win.ini";
  const struct {
    UnicodeView section, key, value;
    bool remove;
    Status status;
    std::string from, to;  // what changes in the file
    std::string registry;  // what changes there
  } rows[] = {
      {u"a", u"K", u"", false, Status::Ok, "k = 1 ;2", "k = ", ""},
      {u"a", u"k", u"", true, Status::Ok, "k = 1 ;2\r\n", "", ""},
      {u"A", u"\u00C4", u"\u00F6", false, Status::Ok, "\x81", "\xF6", ""},
      {u"A", u"k", u"\u0416", false, Status::Denied, "", "", ""},
      {u"B", u"k", u"", true, Status::Absent, "", "", ""},
      {u"mapped", u"x", u"new", false, Status::Ok, "", "", "set value HKCU\\M \"x\"=\"new\""},
      {u"mapped", u"x", u"", true, Status::Ok, "", "", "delete value HKCU\\M \"x\""},
      {u"Mapped", u"y", u"", true, Status::Ok, "y=file\r\n", "", ""},
      {u"Mapped", u"z", u"n", false, Status::Ok, "z=z", "z=n", "set value HKCU\\Z \"z\"=\"n\""},
      {u"Only", u"k", u"", true, Status::Absent, "", "", ""},
  };
  for (const auto& row : rows) {
    MemoryBackend backend;
    ASSERT_EQ(backend.AddRegistry(mapping + "]\n\"Only\"=\"@USR:M\"\n" + mapping +
                                  "\\Mapped]\n@=\"USR:M\"\n\"z\"=\"!USR:Z\"\n"
                                  "[HKEY_CURRENT_USER\\M]\n\"x\"=\"old\"\n\"n\"=dword:1\n"
                                  "[HKEY_CURRENT_USER\\Z]\n\"z\"=\"z\"\n"),
              "");
    backend.Files().AddFile(ini, {before.begin(), before.end()});
    TextServices text(1252);
    IniProfiles profiles(backend.Registry(), backend.Files(), text, u"C:\\Windows");
    const Status status = row.remove ? profiles.Remove(ini, row.section, row.key)
                                     : profiles.Put(ini, row.section, row.key, row.value);
    EXPECT_EQ(status, row.status) << ToUtf8(row.key);
    std::string expected(before);
    if (!row.from.empty()) expected.replace(expected.find(row.from), row.from.size(), row.to);
    Bytes bytes;
    backend.Files().Read(ini, FsView::Physical, 1U << 20U, bytes);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), expected) << ToUtf8(row.key);
    std::string journal;
    for (const std::string& line : backend.Journal())
      if (!line.starts_with("write file")) journal += line;
    EXPECT_EQ(journal, row.registry) << ToUtf8(row.key);
    UnicodeString read;
    EXPECT_EQ(profiles.Get(ini, u"mapped", u"n", read), Status::Unknown);
    if (row.remove || status != Status::Ok) continue;
    EXPECT_EQ(profiles.Get(ini, row.section, row.key, read), Status::Ok);
    EXPECT_EQ(read, row.value);
  }
}

}  // namespace
}  // namespace scrubwell::offline
