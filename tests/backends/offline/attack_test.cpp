// A disk, a record or a journal that somebody made to have us write where he can't.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <fstream>

#include "backends/common/content_digest.h"
#include "backends/common/local_file.h"
#include "backends/offline/commit.h"
#include "backends/offline/offline_files.h"
#include "clean_world.h"
#include "registry/Stringhelper.h"

namespace scrubwell::test {
namespace {

namespace fs = std::filesystem;
using Outcome = RecoverResult::Outcome;

constexpr const char* kConfig = "/Windows/System32/config/";

std::string Record(const std::string& session, offline::CommitStep::Kind kind,
                   const std::string& path) {
  Sha256Digest chain{};
  std::string text = JsonLine().Number("record", 2).Raw("session", session).Close(chain);
  JsonLine step;
  step.Number("step", static_cast<int>(kind)).Number("drive", 'C').Raw("path", path);
  step.Number("existed", 1).Raw("before", ContentDigest({})).Raw("after", "");
  text += step.Close(chain);
  return text + JsonLine().Number("end", 1).Close(chain);
}

void Write(const fs::path& file, const std::string& content) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

TEST(Attack, ARecordThatNoSessionKnowsIsSetAsideAndNothingElse) {
  using Plant = void (*)(const CleanWorld&, const fs::path& record);
  const std::pair<const char*, Plant> rows[] = {
      {"of no session",
       [](const CleanWorld&, const fs::path& record) {
         Write(record, Record("/b/session", offline::CommitStep::Kind::Erase, "Windows/win.ini"));
       }},
      {"with its session on the disk",
       [](const CleanWorld& world, const fs::path& record) {
         const std::string session = world.Folder() + "/b/20240101T000000Z";
         const std::string text =
             Record(session, offline::CommitStep::Kind::Erase, "Windows/win.ini");
         Write(record, text);
         Write(session + "/record.jsonl", text);
         Write(session + "/carrying-out", "");
       }},
      {"with a session without a journal",
       [](const CleanWorld& world, const fs::path& record) {
         const std::string session = world.Backups() + "/20240101T000000Z";
         const std::string text =
             Record(session, offline::CommitStep::Kind::Erase, "Windows/win.ini");
         Write(record, text);
         Write(session + "/record.jsonl", text);
         Write(session + "/carrying-out", "");
       }},
      {"a pipe", [](const CleanWorld&,
                    const fs::path& record) { ASSERT_EQ(::mkfifo(record.c_str(), 0600), 0); }},
      {"a folder", [](const CleanWorld&, const fs::path& record) { fs::create_directory(record); }},
      {"a link", [](const CleanWorld&,
                    const fs::path& record) { fs::create_symlink("/etc/passwd", record); }},
      {"of 8 TiB",
       [](const CleanWorld&, const fs::path& record) {
         Write(record, "{");
         ASSERT_EQ(::truncate(record.c_str(), off_t{1} << 43), 0);
       }},
  };
  for (const auto& [what, plant] : rows) {
    for (const std::string_view name : {offline::kPendingName, offline::kPreparingName}) {
      CleanWorld world;
      world.Add("Windows/win.ini.scrubwell-new", "planted");
      const fs::path record = world.Folder() + kConfig + std::string(name);
      plant(world, record);
      // A scan says it and goes on.
      const OfflineOpenResult scanned = OfflineBackend::Open(world.Options().target);
      ASSERT_NE(scanned.backend, nullptr) << what;
      fs::path aside = record;
      aside += ".set-aside";
      const auto before = fs::is_regular_file(record) && fs::file_size(record) < 4096
                              ? std::optional(world.Content())
                              : std::nullopt;
      const RecoverResult result = Recover(world.Options().target, world.Backups());
      EXPECT_EQ(result.outcome, Outcome::SetAside) << what << result.error;
      EXPECT_FALSE(result.notes.empty()) << what;
      EXPECT_TRUE(fs::exists(fs::symlink_status(aside))) << what;
      EXPECT_TRUE(fs::exists(world.Folder() + "/Windows/win.ini.scrubwell-new")) << what;
      if (!before) continue;
      fs::rename(aside, record);
      EXPECT_EQ(world.Content(), *before) << what;
    }
  }
}

// The disk of one Windows, with the record that a clean of another one left.
TEST(Attack, ARecordOfAnotherWindowsIsSetAside) {
  CleanWorld mine;
  CleanWorld other;
  regf::HiveBuilder& software = other.Hive(u"HKLM\\SOFTWARE");
  software.SetText(software.CreatePath(software.Root(), u"Microsoft\\Cryptography"), u"MachineGuid",
                   u"another");
  other.WriteHives("Windows", "Users/anna", UnicodeString(kCleanSid));
  CleanOptions options = other.Options();
  options.backupFolder = mine.Backups();
  {
    const CleanOpenResult opened = CleanSession::Open(options);
    ASSERT_NE(opened.session, nullptr) << opened.error;
    ChangeAll(*opened.session);
    const CommitResult done = opened.session->Commit();
    ASSERT_EQ(done.failure, CleanFailure::None) << done.error;
    fs::copy(done.folder + "/record.jsonl", mine.Folder() + kConfig + "scrubwell.pending");
  }
  // From a folder that is open to others nothing is taken, and nothing is given up for it either.
  fs::permissions(mine.Backups(), fs::perms::all);
  EXPECT_EQ(Recover(mine.Options().target, mine.Backups()).failure, CleanFailure::WrongUse);
  fs::permissions(mine.Backups(), fs::perms::owner_all);
  EXPECT_EQ(Recover(mine.Options().target, mine.Backups()).outcome, Outcome::SetAside);
}

// A session that says it made these changes on this Windows.
std::string Forge(const CleanWorld& world, const std::vector<JournalEntry>& entries) {
  const std::string folder = world.Backups() + "/20240101T000000Z";
  const CommitResult real = CleanAll(world);
  Journal journal = LoadJournal(real.folder);
  EXPECT_EQ(Undo({world.Options().target, world.Backups(), real.session, {}}).failure,
            CleanFailure::None);
  journal.problems.clear();
  journal.entries = entries;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    journal.entries[i].item.id = std::to_string(i + 1);
    Write(ContentFile(folder, journal.entries[i]), "#!");
  }
  Write(folder + "/journal.jsonl", FormatJournal(journal));
  Write(folder + "/carried-out", "");
  return "20240101T000000Z";
}

TEST(Attack, AJournalLeadsNowhereElseAndGivesNoRights) {
  const Bytes content{'#', '!'};
  JournalEntry entry;
  entry.item.action = JournalAction::EraseFile;
  entry.existed = true;
  entry.digestBefore = ContentDigest(content);
  entry.attributes = {
      06755, ::geteuid(), ::getegid(), 1,
      0,     0,           0,           {{"security.capability", Bytes(20, 1)}, {"trusted.x", {1}}}};
  const UnicodeView places[] = {u"\\\\?\\C:\\Users/../../../outside/new",
                                u"\\\\?\\C:\\Users\\..\\..\\outside",
                                u"\\\\?\\C:\\..\\outside",
                                u"C:\\Users\\anna\\x/../../../../outside",
                                u"C:\\out\\new",
                                u"\\??\\C:\\out\\new",
                                UnicodeView(u"C:\\Users\\new\0x", 14)};
  CleanWorld world;
  const TempFolder outside;
  world.Link("out", outside.Path().string());
  std::vector<JournalEntry> entries;
  for (const UnicodeView place : places) {
    entries.push_back(entry);
    entries.back().item.place = place;
  }
  JournalEntry folder = entry;
  folder.item.action = JournalAction::EraseFolder;
  folder.item.place = u"\\\\?\\C:\\Users/../../made";
  entries.push_back(folder);
  entry.item.place = u"C:\\Users\\anna\\gone.exe";
  entries.push_back(entry);
  const UndoResult result =
      Undo({world.Options().target, world.Backups(), Forge(world, entries), {}});
  ASSERT_EQ(result.failure, CleanFailure::None) << result.error;
  EXPECT_EQ(result.items.front().outcome, UndoOutcome::Restored) << result.items.front().why;
  const std::string inside = world.Folder() + "/Users/anna/gone.exe";
  struct stat info {};
  ASSERT_EQ(::stat(inside.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777U, 0755U);
  EXPECT_LT(::getxattr(inside.c_str(), "security.capability", nullptr, 0), 0);
  for (std::size_t i = 1; i < result.items.size(); ++i) {
    // Above the root there is nothing, so that some of them mean a file on the drive.
    EXPECT_TRUE(result.items[i].outcome == UndoOutcome::Failed ||
                ToUtf8(result.items[i].item.place).find("x/..") != std::string::npos)
        << ToUtf8(result.items[i].item.place);
  }
  EXPECT_TRUE(fs::is_empty(outside.Path()));
  EXPECT_FALSE(fs::exists(world.Folder() + "/../outside"));
  EXPECT_FALSE(fs::exists(world.Folder() + "/../made"));
}

TEST(Attack, DrivesThatTheDiskNamesAreOnlyRead) {
  Disk given;
  Disk named;
  given.Add("x");
  given.Link("junction", named.Folder());
  named.Add("x", "theirs");
  offline::DriveTree drives;
  std::string error;
  ASSERT_TRUE(drives.Add(u'C', given.Folder(), DriveKind::Fixed, error)) << error;
  ASSERT_TRUE(drives.Add(u'D', named.Folder(), DriveKind::Fixed, error, false)) << error;
  offline::OfflineFiles files(drives);
  Bytes content;
  EXPECT_EQ(files.Read(u"D:\\x", FsView::Physical, 100, content), Status::Ok);
  EXPECT_EQ(files.Read(u"C:\\junction\\x", FsView::Physical, 100, content), Status::Ok);
  const std::pair<UnicodeView, Status> rows[] = {{u"C:\\x", Status::Ok},
                                                 {u"C:\\new", Status::Ok},
                                                 {u"D:\\x", Status::Denied},
                                                 {u"D:\\new", Status::Denied},
                                                 {u"C:\\junction\\x", Status::Denied},
                                                 {u"C:\\junction\\new", Status::Denied}};
  for (const auto& [path, status] : rows) {
    offline::FileTarget target;
    EXPECT_EQ(files.Target(path, target), status) << ToUtf8(path);
  }
}

// Swaps something on the disk for a link just before the first change of a commit.
class SwappingDisk final : public offline::IDisk {
 public:
  SwappingDisk(fs::path place, fs::path target)
      : place_(std::move(place)), target_(std::move(target)) {}
  int Create(const offline::DiskPlace& file) override {
    if (file.Name() == offline::kPreparingName) {
      fs::rename(place_, place_.string() + ".was");
      fs::create_symlink(target_, place_);
    }
    return real_.Create(file);
  }
  int Append(const offline::DiskPlace& f, std::span<const std::uint8_t> d) override {
    return real_.Append(f, d);
  }
  int Sync(const offline::DiskPlace& p) override { return real_.Sync(p); }
  int SetAttributes(const offline::DiskPlace& p, const FileAttributes& a) override {
    return real_.SetAttributes(p, a);
  }
  int Rename(const offline::DiskPlace& a, const offline::DiskPlace& b) override {
    return real_.Rename(a, b);
  }
  int Truncate(const offline::DiskPlace& p) override { return real_.Truncate(p); }
  int EraseFile(const offline::DiskPlace& p) override { return real_.EraseFile(p); }
  int EraseFolder(const offline::DiskPlace& p) override { return real_.EraseFolder(p); }
  int MakeFolder(const offline::DiskPlace& p) override { return real_.MakeFolder(p); }
  int FreeSpace(const offline::DiskPlace& p, std::uint64_t& o) override {
    return real_.FreeSpace(p, o);
  }

 private:
  offline::IDisk& real_ = offline::RealDisk();
  fs::path place_;
  fs::path target_;
};

TEST(Attack, WhatIsSwappedForALinkMeanwhileLeadsNowhere) {
  for (const std::string swapped : {"Users/anna", "Users/anna/Old", "Users/anna/gone.lnk",
                                    "Windows/Tasks", "Windows/System32/config/SOFTWARE.LOG1"}) {
    CleanWorld world;
    world.Add("Windows/System32/config/SOFTWARE.LOG1", "log");
    const TempFolder outside;
    const fs::path target =
        fs::is_directory(world.Folder() + "/" + swapped) ? outside.Path() : outside.Path() / "file";
    for (const char* const file : {"file", "gone.lnk", "gone.job", "one.txt", "Old/one.txt"}) {
      Write(outside.Path() / file, "outside");
    }
    const auto before = ContentOf(outside.Path().string());
    SwappingDisk disk(world.Folder() + "/" + swapped, target);
    CleanAll(world, &disk);
    EXPECT_EQ(ContentOf(outside.Path().string()), before) << swapped;
  }
}

}  // namespace
}  // namespace scrubwell::test
