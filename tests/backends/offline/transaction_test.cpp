#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include "backends/common/local_file.h"
#include "clean_world.h"
#include "registry/Stringhelper.h"

namespace scrubwell::test {
namespace {

namespace fs = std::filesystem;

void WriteFile(const std::string& path, const std::string& content) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << content;
}

TEST(Transaction, NothingChangesBeforeTheCommitAndUndoPutsAllBack) {
  const CleanWorld world;
  const auto before = world.Content();
  {
    CleanOptions dry = world.Options();
    dry.dryRun = true;
    const CleanOpenResult opened = CleanSession::Open(dry);
    ASSERT_NE(opened.session, nullptr) << opened.error;
    ChangeAll(*opened.session);
    IFiles& files = opened.session->Backend().Platform().files;
    FileInfo info;
    EXPECT_EQ(files.Stat(u"C:\\Users\\anna\\gone.lnk", FsView::Physical, info), Status::Absent);
    EXPECT_EQ(opened.session->Items()[0].subkeys, 1U);
    EXPECT_EQ(opened.session->Items()[0].values, 3U);
    EXPECT_EQ(opened.session->Items()[1].place,
              u"HKU\\" + UnicodeString(kCleanSid) + u"_Classes\\.x");
    EXPECT_EQ(opened.session->Commit().failure, CleanFailure::WrongUse);
  }
  EXPECT_EQ(world.Content(), before);
  EXPECT_TRUE(fs::is_empty(world.Backups()));

  const CommitResult cleaned = CleanAll(world);
  ASSERT_EQ(cleaned.failure, CleanFailure::None) << cleaned.error;
  const auto after = world.Content();
  EXPECT_NE(after, before);
  EXPECT_EQ(after.at(world.Folder() + "/Windows/win.ini"), "; kept\r\n[One]\r\nOther=3\r\n");
  EXPECT_FALSE(after.contains(world.Folder() + "/Users/anna/Old"));
  for (const auto& [path, text] : after) EXPECT_EQ(text.find("problem: "), text.npos) << path;
  const ExportResult exported = ExportSession(world.Backups(), {});
  EXPECT_NE(exported.bytes.find(std::string("T\0h\0r\0e\0a\0d\0i\0n\0g\0", 18)), std::string::npos);

  // Stopped, it changes nothing, even when all but the writing was done.
  const std::size_t items = ReadSession(world.Backups(), {}).items.size();
  for (const std::size_t last : {std::size_t{3}, items}) {
    UndoOptions options{world.Options().target, world.Backups(), {}, {}};
    options.progress = [last](std::size_t done, std::size_t) { return done < last; };
    EXPECT_EQ(Undo(options).failure, CleanFailure::Stopped);
    EXPECT_EQ(world.Content(), after);
  }

  // One item, then all.
  const UndoResult one = Undo({world.Options().target, world.Backups(), {}, {"aaa"}});
  ASSERT_EQ(one.failure, CleanFailure::None) << one.error;
  EXPECT_EQ(one.items.size(), 2U);
  EXPECT_EQ(ReadSession(world.Backups(), {}).info.undone, 2U);
  const UndoResult all = Undo({world.Options().target, world.Backups(), {}, {}});
  ASSERT_EQ(all.failure, CleanFailure::None) << all.error;
  for (const UndoItem& item : all.items) {
    const bool wasFirst = item.item.id == "1" || item.item.id == "2";
    EXPECT_EQ(wasFirst, item.outcome == UndoOutcome::AlreadyThere &&
                            item.item.action == JournalAction::DeleteKey)
        << item.item.id;
    EXPECT_EQ(item.why, "");
  }
  EXPECT_EQ(world.Content(), before);
}

TEST(Transaction, UndoRefusesWhatIsTaken) {
  const CleanWorld world;
  const CommitResult cleaned = CleanAll(world);
  ASSERT_EQ(cleaned.failure, CleanFailure::None) << cleaned.error;
  {
    const CleanOpenResult opened = CleanSession::Open(world.Options());
    ASSERT_NE(opened.session, nullptr) << opened.error;
    TPlatform& platform = opened.session->Backend().Platform();
    platform.registry.SetValue({RootKey::ClassesRoot, u"CLSID\\{1}"}, {u"", REGT_BINARY, {9}});
    platform.registry.SetValue({RootKey::CurrentUser, u"Software\\Vendor"},
                               {u"A", REGT_BINARY, {9}});
    platform.files.Write(u"C:\\Users\\anna\\gone.lnk", {9});
    ASSERT_EQ(opened.session->Commit().failure, CleanFailure::None);
  }
  const UndoResult undone = Undo({world.Options().target, world.Backups(), cleaned.session, {}});
  ASSERT_EQ(undone.failure, CleanFailure::None) << undone.error;
  std::string taken;
  for (const UndoItem& item : undone.items) {
    if (item.outcome != UndoOutcome::Restored) taken += item.why + "\n";
  }
  EXPECT_NE(taken.find("gone.lnk: its place has been taken"), taken.npos);
  EXPECT_NE(taken.find("Vendor, A: its place has been taken"), taken.npos) << taken;
  EXPECT_NE(taken.find("CLSID\\{1}: its place has been taken"), taken.npos) << taken;
}

TEST(Transaction, GuardsRefuse) {
  const std::string page(4096, '\0');
  const auto withMagic = [&](std::string magic) { return magic + page.substr(magic.size()); };
  const struct {
    std::string hiberfil;
    bool isRefused;
  } rows[] = {{withMagic("hibr"), true},  {withMagic("HIBR"), true}, {withMagic("RSTR"), true},
              {withMagic("????"), true},  {"short", true},           {page, false},
              {withMagic("wake"), false}, {withMagic("WAKE"), false}};
  const CleanWorld world;
  for (const auto& row : rows) {
    WriteFile(world.Folder() + "/hiberfil.sys", row.hiberfil);
    const CleanOpenResult opened = CleanSession::Open(world.Options());
    EXPECT_EQ(opened.failure, row.isRefused ? CleanFailure::Refused : CleanFailure::None)
        << row.hiberfil.substr(0, 5) << opened.error;
  }
  fs::remove(world.Folder() + "/hiberfil.sys");
  // Nobody will ever write into it.
  ASSERT_EQ(::mkfifo((world.Folder() + "/hiberfil.sys").c_str(), 0600), 0);
  EXPECT_EQ(CleanSession::Open(world.Options()).failure, CleanFailure::Refused);
  fs::remove(world.Folder() + "/hiberfil.sys");
  {
    const CleanOpenResult first = CleanSession::Open(world.Options());
    const CleanOpenResult second = CleanSession::Open(world.Options());
    EXPECT_EQ(second.failure, CleanFailure::Refused);
    EXPECT_NE(second.error.find("another Scrubwell"), std::string::npos);
  }
  const std::string system = world.Folder() + "/Windows/System32/config/SYSTEM";
  std::fstream(system, std::ios::in | std::ios::out | std::ios::binary).seekp(4).put('\x7F');
  EXPECT_EQ(CleanSession::Open(world.Options()).failure, CleanFailure::Refused);
}

TEST(Transaction, CutOrForeignJournalsAreRefused) {
  const CleanWorld world;
  const CommitResult cleaned = CleanAll(world);
  ASSERT_EQ(cleaned.failure, CleanFailure::None) << cleaned.error;
  const std::string file = cleaned.folder + "/journal.jsonl";
  Bytes bytes;
  ASSERT_EQ(ReadLocalFile(file, bytes), true);
  const std::string whole(bytes.begin(), bytes.end());
  const std::size_t secondLine = whole.find('\n') + 1;
  std::string swapped = whole;
  swapped[secondLine + 20] = '~';
  const std::string rows[] = {
      whole.substr(0, whole.size() / 2),
      whole.substr(0, whole.rfind("{\"end\"")),
      swapped,
      whole.substr(secondLine),
      whole.substr(0, secondLine) + whole.substr(whole.find('\n', secondLine) + 1),
      ""};
  const auto before = world.Content();
  for (const std::string& row : rows) {
    WriteFile(file, row);
    const UndoResult undone = Undo({world.Options().target, world.Backups(), cleaned.session, {}});
    EXPECT_EQ(undone.failure, CleanFailure::Unreadable);
    EXPECT_NE(undone.error.find("journal"), std::string::npos) << undone.error;
  }
  WriteFile(file, whole);
  CleanWorld other;
  regf::HiveBuilder& software = other.Hive(u"HKLM\\SOFTWARE");
  software.SetText(software.CreatePath(software.Root(), u"Microsoft\\Cryptography"), u"MachineGuid",
                   u"another");
  other.WriteHives("Windows", "Users/anna", UnicodeString(kCleanSid));
  const UndoResult foreign = Undo({other.Options().target, world.Backups(), cleaned.session, {}});
  EXPECT_EQ(foreign.failure, CleanFailure::WrongUse);
  const UndoResult item = Undo({world.Options().target, world.Backups(), {}, {"nothing"}});
  EXPECT_EQ(item.failure, CleanFailure::WrongUse);
  EXPECT_EQ(world.Content(), before);
}

// Every 5th key of a real registry's classes and every 3rd value of its settings.
std::size_t DeleteSome(IRegistry& registry) {
  std::size_t done = 0;
  TStringList names;
  for (const UnicodeView list : {u"CLSID", u"Interface", u""}) {
    registry.EnumKeys({RootKey::ClassesRoot, list, View::Bits64}, names);
    for (std::size_t i = 0; i < names.size(); i += 5) {
      const UnicodeString path = list.empty() ? names[i] : UnicodeString(list) + u'\\' + names[i];
      if (SameText(path, u"CLSID") || SameText(path, u"Interface")) continue;
      if (registry.DeleteKey({RootKey::ClassesRoot, path, View::Bits64}, true) == Status::Ok)
        ++done;
    }
  }
  std::vector<RegValue> values;
  const KeyRef fonts{RootKey::LocalMachine,
                     u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Fonts", View::Bits64};
  registry.EnumValues(fonts, values);
  for (std::size_t i = 0; i < values.size(); i += 3) {
    if (registry.DeleteValue(fonts, values[i].name) == Status::Ok) ++done;
  }
  return done;
}

TEST(Transaction, RealRegistriesComeBack) {
  const TempFolder folder;
  const TempFolder backups;
  const fs::path archive = folder.Path() / "wine.tar";
  if (!SharedFile("wine/wine-win7-x64.tar.xz", archive)) return;
  const std::string command =
      "tar -xf '" + archive.string() + "' -C '" + folder.Path().string() + "'";
  ASSERT_EQ(std::system(command.c_str()), 0);
  const std::string volume = (folder.Path() / "wine-win7-x64").string();
  const CleanOptions options{{volume, {}, {}}, backups.Path().string(), false};
  const auto before = ContentOf(volume, true);
  std::size_t deleted = 0;
  {
    const CleanOpenResult opened = CleanSession::Open(options);
    ASSERT_NE(opened.session, nullptr) << opened.error;
    deleted = DeleteSome(opened.session->Backend().Platform().registry);
    const CommitResult result = opened.session->Commit();
    ASSERT_EQ(result.failure, CleanFailure::None) << result.error;
  }
  EXPECT_GT(deleted, 100U);
  EXPECT_NE(ContentOf(volume, true), before);
  const UndoResult undone = Undo({options.target, options.backupFolder, {}, {}});
  ASSERT_EQ(undone.failure, CleanFailure::None) << undone.error;
  EXPECT_EQ(undone.items.size(), deleted);
  for (const UndoItem& item : undone.items) {
    EXPECT_EQ(item.outcome, UndoOutcome::Restored) << item.why;
  }
  EXPECT_TRUE(ContentOf(volume, true) == before);
}

}  // namespace
}  // namespace scrubwell::test
