// A plan on top of a Windows: what it answers, what it records, and that nothing beneath moves.
#include "support/overlay.h"

#include <gtest/gtest.h>

#include "support/ask.h"
#include "support/disk.h"

namespace scrubwell::test {
namespace {

constexpr const char* kRegistry = R"(
[HKEY_LOCAL_MACHINE\SOFTWARE\Firm\Tool]
@="machine"
"Name"="64"
[HKEY_LOCAL_MACHINE\SOFTWARE\Firm\Tool\Sub\Deep]
"d"="1"
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Firm\Tool]
"Name"="32"
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\.abc]
@="machine"
"Only"="machine"
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\.abc\Both]
[HKEY_CURRENT_USER\Software\Classes\.abc]
@="user"
[HKEY_CURRENT_USER\Software\Classes\.abc\Both]
"u"="1"
[HKEY_CURRENT_USER\Software\Firm]
"x"="u"
; leads to SOFTWARE again
[HKEY_LOCAL_MACHINE\SOFTWARE\Loop]
"SymbolicLinkValue"=hex(6):5c,00,52,00,45,00,47,00,49,00,53,00,54,00,52,00,59,00,5c,00,4d,00,41,00,43,00,\
  48,00,49,00,4e,00,45,00,5c,00,53,00,4f,00,46,00,54,00,57,00,41,00,52,00,45,00
)";

// Asked one after the other, of a plan and of a registry that is really changed: both must answer
// alike, to these and to all that is there afterwards.
constexpr const char* kSteps[] = {
    "keys 32 HKLM\\SOFTWARE\\Loop\\Firm",
    "open 64 HKLM\\SOFTWARE\\Loop\\Loop",
    "set 64 HKLM\\SOFTWARE\\Loop\\Loop\\Firm > a=b",
    "delete 64 HKLM\\SOFTWARE\\Loop\\Loop\\Firm",
    "drop 64 HKLM\\SOFTWARE\\Firm\\Tool > Name",
    "get 64 HKLM\\SOFTWARE\\Firm\\Tool > Name",
    "set 64 HKLM\\SOFTWARE\\Firm\\Tool > name=again",
    "values 64 HKLM\\SOFTWARE\\Firm\\Tool",
    "delete 64 HKLM\\SOFTWARE\\Firm\\Tool\\Sub",
    "open 64 HKLM\\SOFTWARE\\Firm\\Tool\\Sub\\Deep",
    "open 64 HKLM\\SOFTWARE\\Firm\\Tool",
    "create 64 HKLM\\SOFTWARE\\Firm\\Tool\\Sub\\New",
    "keys 64 HKLM\\SOFTWARE\\Firm\\Tool\\Sub",
    "values 64 HKLM\\SOFTWARE\\Firm\\Tool\\Sub\\Deep",
    "delete 64 HKLM\\SOFTWARE\\Firm",
    "create 64 HKLM\\SOFTWARE\\Firm\\Other",
    "keys 64 HKLM\\SOFTWARE\\Firm",
    "delete 64 HKCR\\.abc\\Both",
    "delete 64 HKCR\\.abc\\Both",
    "values 64 HKCR\\.abc\\Both",
    "delete 64 HKCR\\.abc",
    "keys 64 HKCR\\.abc",
    "delete 32 HKCR\\.abc",
    "set 64 HKCR\\.abc > Only=changed",
    "get 64 HKLM\\SOFTWARE\\Classes\\.abc > Only",
    "set own HKCU\\Software\\Firm\\a\\b > n=v",
    "open own HKCU\\Software\\Firm",
    "canwrite own HKCU\\Software\\Firm\\a\\b",
    "force 64 HKLM\\SOFTWARE",
    "delete both HKLM\\SOFTWARE\\Firm",
};
constexpr const char* kAfterwards[] = {"keys 64 HKCR\\",         "keys 64 HKLM\\SOFTWARE",
                                       "keys 32 HKLM\\SOFTWARE", "values 64 HKCR\\.abc",
                                       "keys 64 HKCR\\.abc",     "keys own HKCU\\Software\\Firm",
                                       "open 64 HKLM\\SOFTWARE"};

TEST(Overlay, AnswersAsIfItWereDone) {
  MemoryBackend planned;
  MemoryBackend done;
  ASSERT_EQ(planned.AddRegistry(kRegistry), "");
  ASSERT_EQ(done.AddRegistry(kRegistry), "");
  const std::string before = planned.DumpRegistry();
  OverlayOfMemory overlay(planned);
  for (const char* step : kSteps)
    EXPECT_EQ(Ask(overlay.registry, step), Ask(done.Registry(), step)) << step;
  overlay.registry.ForgetDeletions();
  done.Registry().ForgetDeletions();
  for (const char* question : kAfterwards)
    EXPECT_EQ(Ask(overlay.registry, question), Ask(done.Registry(), question)) << question;
  EXPECT_EQ(Ask(overlay.registry, "delete 64 HKCR\\.abc"), "Ok");
  EXPECT_EQ(planned.DumpRegistry(), before);
}

// What is recorded of a key is the key as the changes before have left it.
TEST(Overlay, RecordsTheStateBeforeEachChange) {
  MemoryBackend base;
  ASSERT_EQ(base.AddRegistry(kRegistry), "");
  OverlayOfMemory overlay(base);
  for (const char* step :
       {"drop 64 HKLM\\SOFTWARE\\Firm\\Tool > Name", "set 64 HKLM\\SOFTWARE\\Firm\\Tool > N2=x",
        "delete 64 HKLM\\SOFTWARE\\Firm\\Tool\\Sub\\Deep",
        "create 64 HKLM\\SOFTWARE\\Firm\\Tool\\Made", "delete 64 HKLM\\SOFTWARE\\Firm"})
    EXPECT_EQ(Ask(overlay.registry, step), "Ok") << step;
  ASSERT_EQ(overlay.plan.changes.size(), 5U);
  const JournalEntry& last = overlay.plan.changes.back().entry;
  std::string tree;
  for (const KeyImage& key : last.tree) {
    tree += std::to_string(key.level) + ToUtf8(key.name);
    for (const RegValue& value : key.values) tree += "," + ToUtf8(value.name);
    tree += " ";
  }
  EXPECT_EQ(tree, "0Firm 1Tool,,N2 2Sub 2Made ");
  EXPECT_EQ(last.item.subkeys, 3U);
  EXPECT_EQ(last.item.values, 2U);
  overlay.plan.answer = Status::Denied;
  EXPECT_EQ(Ask(overlay.registry, "delete 32 HKLM\\SOFTWARE\\Firm"), "Denied");
  EXPECT_EQ(Ask(overlay.registry, "keys 32 HKLM\\SOFTWARE\\Firm"), "Tool");
}

TEST(Overlay, HoldsBackFilesAndServices) {
  MemoryBackend base;
  ASSERT_EQ(base.AddFiles("C:\\a\\x.lnk\nC:\\Windows\\win.ini | text=[One]\\nTwo=2\\nThree=3\\n"),
            "");
  base.World().tasks.jobs = {{u"a.job", u"C:\\a.exe"}, {u"b.job", u"C:\\b.exe"}};
  base.World().firewall.applications = {{u"One", u"C:\\one.exe"}, {u"Two", u"C:\\two.exe"}};
  base.World().browser.urls = {u"http://x/", u"http://y/"};
  base.World().browser.cacheNames = {u"Visited: me@http://x/", u"http://x/"};
  OverlayOfMemory overlay(base);
  EXPECT_EQ(Ask(overlay.files, "erase disk C:\\A\\X.LNK"), "Ok");
  EXPECT_EQ(Ask(overlay.files, "list disk C:\\a"), "");
  EXPECT_EQ(overlay.profiles.Put(u"win.ini", u"One", u"None", u"x"), Status::Absent);
  EXPECT_EQ(overlay.profiles.Put(u"win.ini", u"One", u"Two", u"new"), Status::Ok);
  EXPECT_EQ(overlay.profiles.Remove(u"win.ini", u"One", u"Three"), Status::Ok);
  UnicodeString text;
  EXPECT_EQ(overlay.profiles.Get(u"win.ini", u"one", u"two", text), Status::Ok);
  EXPECT_EQ(text, u"new");
  const Bytes& written = overlay.plan.changes.back().data;
  EXPECT_EQ(std::string(written.begin(), written.end()), "[One]\r\nTwo=new\r\n");
  TStringList names;
  EXPECT_EQ(overlay.tasks.Remove(u"A.JOB"), Status::Ok);
  EXPECT_EQ(overlay.tasks.Remove(u"a.job"), Status::Absent);
  overlay.tasks.Names(names);
  EXPECT_EQ(names, TStringList{u"b.job"});
  EXPECT_EQ(overlay.firewall.Remove(u"C:\\ONE.exe"), Status::Ok);
  EXPECT_EQ(overlay.firewall.Remove(u"C:\\one.exe"), Status::Absent);
  EXPECT_EQ(overlay.browser.RemoveUrl(u"http://x/"), Status::Ok);
  EXPECT_EQ(overlay.browser.QueryUrl(u"http://x/"), Status::Absent);
  overlay.browser.CacheNames(names);
  EXPECT_EQ(names, TStringList{u"http://x/"});
  EXPECT_TRUE(base.Journal().empty());
}

// A journal that grows with the changes: cut at any place after its head it still tells what it
// has.
TEST(LiveJournalLines, MayBreakOffInTheLastLine) {
  const TempFolder folder;
  const auto load = [&folder](const std::string& text) {
    (void)folder.Store("journal.jsonl", {text.begin(), text.end()});
    return LoadJournal(folder.Path().string());
  };
  Journal journal;
  journal.live = true;
  JournalLines lines;
  const std::string head = lines.Head(journal);
  JournalEntry entry;
  entry.item.id = "1";
  entry.item.action = JournalAction::RemoveUrl;
  entry.attributes.extended[""] = {1};
  const std::string first = lines.Entry(entry);
  entry.item.id = "2";
  const std::string second = lines.Entry(entry);
  const std::string dropped = lines.Dropped(entry);
  const std::string whole = head + first + second + dropped + lines.End();
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    const Journal loaded = load(whole.substr(0, size));
    const std::size_t one = head.size() + first.size(), two = one + second.size();
    const bool hasSecond = size >= two && size < two + dropped.size();
    EXPECT_EQ(loaded.info.error.empty(), size >= head.size()) << size;
    EXPECT_EQ(loaded.entries.size(), (size >= one ? 1U : 0U) + (hasSecond ? 1U : 0U)) << size;
    EXPECT_EQ(loaded.closed, size == whole.size());
  }
  // Lines have an order.
  EXPECT_TRUE(load(head + second + first).entries.empty());
}

}  // namespace
}  // namespace scrubwell::test
