#include <gtest/gtest.h>

#include "clean_world.h"
#include "formats/lnk/lnk_samples.h"
#include "formats/msiecf/msiecf_samples.h"
#include "registry/Stringhelper.h"
#include "support/ask.h"

namespace scrubwell::test {
namespace {

const std::string kHistory = "Users/anna/AppData/Local/Microsoft/Windows/History/History.IE5/";
const std::string kDays = kHistory + "MSHist012024010120240108/";
constexpr UnicodeView kGone = u"file:///C:/gone.txt";

std::string_view Chars(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Two files of addresses; the one address stands twice in the first and once in the second.
struct HistoryWorld : CleanWorld {
  Bytes first = msiecf::BuildFile({"Visited: anna@file:///C:/gone.txt", "Visited: anna@http://x/",
                                   "Visited: anna@file:///C:/gone.txt"});
  Bytes second = msiecf::BuildFile({":2024: anna@file:///C:/gone.txt", ":2024: anna@http://y/"});
  explicit HistoryWorld(const std::function<void(HistoryWorld&)>& damage = {}) {
    if (damage) damage(*this);
    Add(kHistory + "index.dat", Chars(first));
    Add(kDays + "index.dat", Chars(second));
  }
};

TEST(OfflineHistory, AnAddressGoesFromAllFilesAndComesBack) {
  const HistoryWorld world;
  const auto before = world.Content();
  {
    const CleanOpenResult opened = CleanSession::Open(world.Options());
    ASSERT_NE(opened.session, nullptr) << opened.error;
    IBrowserHistory& browser = opened.session->Backend().Platform().browser;
    TStringList urls;
    EXPECT_EQ(browser.Urls(urls), Status::Ok);
    EXPECT_EQ(urls, (TStringList{UnicodeString(kGone), u"http://x/", u"http://y/"}));
    EXPECT_EQ(browser.RemoveUrl(u"file:///C:/gone"), Status::Absent);
    EXPECT_EQ(browser.RemoveUrl(kGone), Status::Ok);
    EXPECT_EQ(browser.QueryUrl(kGone), Status::Absent);
    EXPECT_EQ(browser.RemoveUrl(kGone), Status::Absent);
    EXPECT_EQ(browser.Urls(urls), Status::Ok);
    EXPECT_EQ(urls, (TStringList{u"http://x/", u"http://y/"}));
    ASSERT_EQ(opened.session->Items().size(), 2U);
    EXPECT_EQ(opened.session->Items()[0].action, JournalAction::WriteFile);
    EXPECT_EQ(world.Content(), before) << "written before the commit";
    const CommitResult done = opened.session->Commit();
    ASSERT_EQ(done.failure, CleanFailure::None) << done.error;
  }
  Bytes first = world.first;
  Bytes second = world.second;
  for (int twice = 0; twice < 2; ++twice) {
    EXPECT_EQ(msiecf::EraseRecord(first, "Visited: anna@file:///C:/gone.txt"), Status::Ok);
  }
  EXPECT_EQ(msiecf::EraseRecord(second, ":2024: anna@file:///C:/gone.txt"), Status::Ok);
  EXPECT_EQ(world.Content().at(world.Folder() + "/" + kHistory + "index.dat"), Chars(first));
  EXPECT_EQ(world.Content().at(world.Folder() + "/" + kDays + "index.dat"), Chars(second));
  const UndoResult undone = Undo({world.Options().target, world.Backups(), {}, {}});
  EXPECT_EQ(undone.failure, CleanFailure::None) << undone.error;
  EXPECT_EQ(world.Content(), before);
}

TEST(OfflineHistory, NothingIsHalfRemoved) {
  const struct {
    const char* name;
    Status status;
    std::function<void(HistoryWorld&)> damage;
    bool known = true;  ///< the address is still told
  } rows[] = {
      {"a cached file belongs to the record", Status::Denied,
       [](HistoryWorld& world) { msiecf::Set(world.second, msiecf::Record(0) + 60, 110); }},
      {"a block of the record is free", Status::Corrupt,
       [](HistoryWorld& world) { msiecf::Set(world.second, 0x254, 0x0D, 1); }},
      {"the last record of the first file can't go", Status::Denied,
       [](HistoryWorld& world) { msiecf::Set(world.first, msiecf::Record(2) + 60, 110); }},
      {"a database holds the rest", Status::Unknown,
       [](HistoryWorld& world) {
         world.Add("Users/anna/AppData/Local/Microsoft/Windows/WebCache/WebCacheV01.dat");
       },
       false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const HistoryWorld world(row.damage);
    const CleanOpenResult opened = CleanSession::Open(world.Options());
    ASSERT_NE(opened.session, nullptr) << opened.error;
    IBrowserHistory& browser = opened.session->Backend().Platform().browser;
    EXPECT_EQ(browser.RemoveUrl(kGone), row.status);
    EXPECT_TRUE(opened.session->Items().empty());
    EXPECT_EQ(browser.QueryUrl(kGone), row.known ? Status::Ok : Status::Unknown);
    EXPECT_EQ(opened.session->Backend().Notes().empty(), row.known);
  }
  const HistoryWorld world;
  const OfflineOpenResult opened = OfflineBackend::Open(world.Options().target);
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  EXPECT_EQ(opened.backend->Platform().browser.RemoveUrl(kGone), Status::Denied) << "a scan";
  EXPECT_EQ(opened.backend->Platform().browser.QueryUrl(kGone), Status::Ok);
}

TEST(OfflineHistory, LinkTargets) {
  constexpr std::string_view wide = R"(
[HKEY_LOCAL_MACHINE\SYSTEM\ControlSet001\Control\Session Manager\Environment]
"PROCESSOR_ARCHITECTURE"="AMD64"
)";
  using lnk::BuildLink;
  const lnk::Parts both{.base = "C:\\local.exe", .environment = u"%ProgramFiles%\\both.exe"};
  const auto variable = [](UnicodeView path) { return BuildLink({.environment = path}); };
  const Bytes whole = BuildLink({.base = "C:\\local.exe"});
  // The target, or the status that there is none.
  const std::tuple<const char*, Bytes, std::string> rows[] = {
      {"local", whole, "C:\\local.exe"},
      {"variables come first", BuildLink(both), "C:\\Program Files (x86)\\both.exe"},
      {"one folder of two has it", variable(u"%ProgramFiles%\\64.exe"),
       "C:\\Program Files\\64.exe"},
      {"neither has it", variable(u"%ProgramFiles%\\no.exe"), "%ProgramFiles%\\no.exe"},
      {"one meaning", variable(u"%windir%\\no.exe"), "C:\\Windows\\no.exe"},
      {"nobody knows it", variable(u"%NOWHERE%\\no.exe"), "%NOWHERE%\\no.exe"},
      {"relative", BuildLink({.relativePath = u"..\\Old\\r.exe"}), "C:\\Users\\anna\\Old\\r.exe"},
      {"too far up", BuildLink({.relativePath = u"..\\..\\..\\..\\r.exe"}), "C:\\r.exe"},
      {"advertised", BuildLink({.base = "C:\\local.exe", .extraFlags = 0x1000}), "Absent"},
      {"virtual", BuildLink({.items = {lnk::kComputer, lnk::kControlPanel}}), "Absent"},
      {"empty", {}, "Corrupt"},
      {"cut", Bytes(whole.begin(), whole.end() - 8), "Corrupt"},
      {"huge", Bytes(lnk::kMaxFileSize + 1, 0x4C), "Corrupt"},
      {"a program's own settings", Bytes(0x171, 0x78), "Corrupt"},
  };
  CleanWorld world;
  world.Registry(wide, kCleanSid);
  world.WriteHives("Windows", "Users/anna", UnicodeString(kCleanSid));
  for (const char* file : {"Program Files/64.exe", "Program Files/both.exe",
                           "Program Files (x86)/both.exe", "Program Files (x86)/x.txt"}) {
    world.Add(file);
  }
  for (const auto& [name, file, wanted] : rows)
    world.Add(std::string("Users/anna/Links/") + name, Chars(file));
  const OfflineOpenResult opened = OfflineBackend::Open(world.Options().target);
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  IShell& shell = opened.backend->Platform().shell;
  UnicodeString target;
  for (const auto& [name, file, wanted] : rows) {
    const Status status = shell.LinkTarget(u"C:\\Users\\anna\\Links\\" + FromUtf8(name), target);
    EXPECT_EQ(status == Status::Ok ? ToUtf8(target) : StatusName(status), wanted) << name;
  }
  EXPECT_EQ(shell.LinkTarget(u"C:\\Users\\anna\\Links\\none.lnk", target), Status::Absent);
  EXPECT_EQ(shell.LinkTarget(u"C:\\Users\\anna\\Links", target), Status::Denied);
}

TEST(OfflineHistory, PathsOfItemLists) {
  const auto list = [](std::initializer_list<Bytes> items) {
    Bytes out;
    for (const Bytes& item : items) lnk::Append(out, item);
    lnk::Put(out, 0, 2);
    return out;
  };
  const Bytes file = lnk::FileItem("A~1.TXT", u"A long \u0416.txt");
  Bytes cut = list({lnk::kDriveC, file});
  cut.resize(cut.size() - 10);
  Bytes deep;
  for (int i = 0; i < 100'000; ++i) lnk::Append(deep, lnk::kComputer);
  const std::pair<Bytes, std::string> rows[] = {
      {list({lnk::kComputer, lnk::kDriveC, file}), "C:\\A long \u0416.txt"},
      {list({lnk::kComputer, lnk::kControlPanel}), "Absent"},
      {list({lnk::kComputer, file}), "Unknown"},
      {deep, "Absent"},
      {cut, "Corrupt"},
      {{}, "Absent"},
      {{1}, "Absent"},
      {{1, 0, 0}, "Corrupt"},
  };
  const CleanWorld world;
  const OfflineOpenResult opened = OfflineBackend::Open(world.Options().target);
  ASSERT_NE(opened.backend, nullptr) << opened.error;
  for (const auto& [items, expected] : rows) {
    UnicodeString path;
    const Status status = opened.backend->Platform().shell.ItemListPath(items, path);
    EXPECT_EQ(status == Status::Ok ? ToUtf8(path) : StatusName(status), expected);
  }
}

}  // namespace
}  // namespace scrubwell::test
