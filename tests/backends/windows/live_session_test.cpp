// A clean of the running system changes nothing before its commit, and all of it can be undone.
#include "backends/windows/live_session.h"

#include <filesystem>
#include <functional>
#include <map>
#include <sstream>

#include "backends/common/journal.h"
#include "backends/windows/live_marks.h"
#include "hosts/driver/clean_driver.h"
#include "own_com.h"
#include "plugins/package.h"
#include "registry/Stringhelper.h"
#include "scratch.h"

// After the general header.
#include <wininet.h>

namespace scrubwell::test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using windows::ComPtr;

const std::string kFolder = "C:/scrubwell-test/live";
const std::string kBackups = "C:/scrubwell-test/live-backups";
constexpr const wchar_t* kTask = L"Scrub live \u00e9";
constexpr const wchar_t* kVisited = L"Visited: tester@file:///C:/scrubgone/live.txt";
constexpr SECURITY_INFORMATION kParts =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
constexpr FILETIME kSeen = {0x12340000, 0x01D00000};

std::string Hex(const BYTE* data, DWORD size) {
  std::ostringstream out;
  for (DWORD i = 0; i < size; ++i) out << std::hex << int{data[i]} << ',';
  return out.str();
}

std::string SecurityText(HKEY key) {
  BYTE descriptor[4096];
  DWORD size = sizeof descriptor;
  if (RegGetKeySecurity(key, kParts, descriptor, &size) != ERROR_SUCCESS) return "?";
  LPSTR text = nullptr;
  ConvertSecurityDescriptorToStringSecurityDescriptorA(descriptor, SDDL_REVISION_1, kParts, &text,
                                                       nullptr);
  std::string result = text == nullptr ? "?" : text;
  LocalFree(text);
  return result;
}

// Class, rights and values of a key and all below it.
void Walk(HKEY parent, const std::wstring& name, const std::wstring& path,
          std::map<std::wstring, std::string>& out) {
  HKEY key = nullptr;
  const LSTATUS error =
      RegOpenKeyExW(parent, name.c_str(), REG_OPTION_OPEN_LINK, KEY_READ | KEY_WOW64_64KEY, &key);
  if (error != ERROR_SUCCESS) return void(out[path] = "error " + std::to_string(error));
  wchar_t text[16384];
  DWORD length = 256;
  if (RegQueryInfoKeyW(key, text, &length, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                       nullptr, nullptr, nullptr) != ERROR_SUCCESS)
    length = 0;
  std::string& line = out[path];
  line = ToUtf8(windows::FromWide(text, length)) + "|" + SecurityText(key);
  std::map<std::string, std::string> values;
  static std::vector<BYTE> data(1 << 20);
  for (DWORD i = 0;; ++i) {
    DWORD type = 0;
    DWORD size = static_cast<DWORD>(data.size());
    length = std::size(text);
    if (RegEnumValueW(key, i, text, &length, nullptr, &type, data.data(), &size) != ERROR_SUCCESS)
      break;
    values[ToUtf8(windows::FromWide(text, length))] =
        std::to_string(type) + ":" + Hex(data.data(), size);
  }
  for (const auto& [value, content] : values) line += "\n  " + value + "=" + content;
  for (DWORD i = 0;; ++i) {
    length = 256;
    if (RegEnumKeyExW(key, i, text, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
      break;
    const std::wstring child(text, length);
    Walk(key, child, path + L"\\" + child, out);
  }
  RegCloseKey(key);
}

using Registry = std::map<std::wstring, std::string>;

Registry Tree(HKEY root, const wchar_t* path) {
  Registry out;
  Walk(root, path, path, out);
  return out;
}

// The keys that differ; all of both would be too much to show.
std::string Difference(const Registry& a, const Registry& b) {
  std::ostringstream out;
  const auto list = [&out](const Registry& from, const Registry& in, char sign) {
    for (const auto& [key, text] : from) {
      const auto other = in.find(key);
      if (other == in.end() || other->second != text)
        out << sign << ToUtf8(windows::FromWide(key.c_str())) << ": " << text << "\n";
    }
  };
  list(a, b, '-');
  list(b, a, '+');
  return out.str();
}

std::string FileFacts(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data);
  return std::to_string(data.dwFileAttributes) + " " +
         std::to_string(data.ftLastWriteTime.dwLowDateTime) + " ";
}

std::string TaskText() {
  ComPtr<ITaskScheduler> scheduler;
  ComPtr<IUnknown> item;
  ComPtr<ITask> task;
  windows::SystemScheduler()(scheduler.Out());
  if (FAILED(scheduler->Activate(kTask, IID_ITask, item.Out()))) return "none";
  item->QueryInterface(IID_ITask, task.OutVoid());
  windows::TaskText text;
  windows::TaskText more;
  task->GetApplicationName(text.Out());
  task->GetParameters(more.Out());
  return ToUtf8(text.Text() + u" " + more.Text());
}

std::string VisitedText() {
  std::vector<INTERNET_CACHE_ENTRY_INFOW> buffer(32);
  auto size = static_cast<DWORD>(buffer.size() * sizeof buffer[0]);
  if (GetUrlCacheEntryInfoW(kVisited, buffer.data(), &size) == FALSE) return "none";
  return std::to_string(buffer[0].CacheEntryType) + " " +
         std::to_string(buffer[0].LastModifiedTime.dwLowDateTime);
}

/// One change through the platform, and what a host is told of it.
struct Change {
  const char* problem;
  std::function<Status(TPlatform&)> make;
  const char* line;  ///< action, place and name of the last item that it makes
};

constexpr KeyRef kClass{RootKey::ClassesRoot, u"CLSID\\{5C2B0002-L}", View::Bits32};
constexpr KeyRef kVendor{RootKey::CurrentUser, u"Software\\ScrubLive"};
constexpr KeyRef kMixed{RootKey::ClassesRoot, u".scrublive"};

const Change kChanges[] = {
    {"a", [](TPlatform& p) { return p.registry.DeleteKey(kClass, false); },
     "0 HKLM\\Software\\Classes\\Wow6432Node\\CLSID\\{5C2B0002-L}"},
    {"a", [](TPlatform& p) { return p.registry.DeleteKey(kMixed, true); },
     "0 HKU\\{sid}\\Software\\Classes\\.scrublive"},
    {"b", [](TPlatform& p) { return p.registry.DeleteValue(kVendor, u"A"); },
     "1 HKU\\{sid}\\Software\\ScrubLive A"},
    {"b",
     [](TPlatform& p) {
       return p.registry.SetValue(kVendor, {u"b", REGT_DWORD, {1, 0, 0, 0}});
     },
     "2 HKU\\{sid}\\Software\\ScrubLive B"},
    {"b",
     [](TPlatform& p) {
       return p.registry.SetValue({RootKey::CurrentUser, u"Software\\ScrubLive\\New\\Er"},
                                  {u"", REGT_SZ, {}});
     },
     "2 HKU\\{sid}\\Software\\ScrubLive\\New\\Er"},
    {"b",
     [](TPlatform& p) {
       return p.registry.DeleteKey({RootKey::CurrentUser, u"Software\\ScrubLive\\Link"}, false);
     },
     "0 HKU\\{sid}\\Software\\ScrubLive\\Link"},
    {"c",
     [](TPlatform& p) { return p.files.EraseFile(u"C:\\scrubwell-test\\live\\Old\\gone.lnk"); },
     "5 C:\\scrubwell-test\\live\\Old\\gone.lnk"},
    {"c", [](TPlatform& p) { return p.files.EraseFolder(u"C:\\scrubwell-test\\live\\Old"); },
     "6 C:\\scrubwell-test\\live\\Old"},
    {"c", [](TPlatform& p) { return p.files.Backup(u"C:\\scrubwell-test\\live\\kept.txt"); },
     "7 C:\\scrubwell-test\\live\\kept.txt"},
    {"d",
     [](TPlatform& p) {
       return p.profiles.Remove(u"C:\\scrubwell-test\\live\\x.ini", u"One", u"Two");
     },
     "4 C:\\scrubwell-test\\live\\x.ini"},
    {"d",
     [](TPlatform& p) {
       return p.tasks.Connect() == Status::Ok ? p.tasks.Remove(u"Scrub live \u00e9.job")
                                              : Status::Unknown;
     },
     "8 C:\\windows\\tasks\\Scrub live \u00e9.job Scrub live \u00e9.job"},
    {"d", [](TPlatform& p) { return p.browser.RemoveUrl(u"file:///C:/scrubgone/live.txt"); },
     "9 file:///C:/scrubgone/live.txt"},
    {"d",
     [](TPlatform& p) {
       return p.firewall.Connect() == Status::Ok ? p.firewall.Remove(u"C:\\hard.exe")
                                                 : Status::Unknown;
     },
     "10 C:\\hard.exe Hard"}};

class LiveClean : public testing::Test {
 protected:
  void SetUp() override {
    Clear();
    for (const char* line :
         {"set 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0002-L}\\InprocServer32 > =C:\\gone.dll",
          "set 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0002-L} > Name=x",
          "set own HKCU\\Software\\Classes\\.scrublive > =user",
          "set own HKLM\\SOFTWARE\\Classes\\.scrublive > =machine",
          "set own HKCU\\Software\\ScrubLive > A=1", "set own HKCU\\Software\\ScrubLive > B=2",
          "set own HKCU\\Software\\ScrubLive\\Target > t=1"})
      ASSERT_EQ(Ask(backend_.Platform().registry, line), "Ok") << line;
    MakeGuardedKey();
    MakeLink(HKEY_CURRENT_USER, L"Software\\ScrubLive\\Link",
             L"\\REGISTRY\\USER\\"s + windows::Wide(Sid()) + L"\\Software\\ScrubLive\\Target");
    WriteText(kFolder + "/Old/gone.lnk", "link");
    WriteText(kFolder + "/kept.txt", "kept");
    WriteText(kFolder + "/x.ini", "; kept\r\n[One]\r\nTwo=2\r\nThree=3\r\n");
    SetFileAttributesA((kFolder + "/Old/gone.lnk").c_str(), FILE_ATTRIBUTE_HIDDEN);
    MakeTask(kTask, L"C:\\scrubgone\\live.exe", L"", L"/x");
    ASSERT_TRUE(CommitUrlCacheEntryW(kVisited, nullptr, FILETIME{}, kSeen, URLHISTORY_CACHE_ENTRY,
                                     nullptr, 0, nullptr, nullptr));
    firewall_.entries = {{L"One", L"C:\\one.exe", true, false, NET_FW_SCOPE_ALL},
                         {L"Hard", L"C:\\hard.exe", true, true, NET_FW_SCOPE_LOCAL_SUBNET}};
  }
  void TearDown() override { Clear(); }

  void Clear() {
    for (const char* line :
         {"force own HKCU\\Software\\ScrubLive\\Link", "force own HKCU\\Software\\ScrubLive",
          "force 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0002-L}",
          "force own HKCU\\Software\\Classes\\.scrublive",
          "force own HKLM\\SOFTWARE\\Classes\\.scrublive"})
      Ask(backend_.Platform().registry, line);
    DeleteUrlCacheEntryW(kVisited);
    std::error_code ignored;
    fs::remove_all(kFolder, ignored);
    fs::remove_all(kBackups, ignored);
  }

  // A class and rights of its own.
  static void MakeGuardedKey() {
    HKEY key = nullptr;
    wchar_t className[] = L"a class";
    constexpr const wchar_t* kPath = L"Software\\Classes\\.scrublive\\Guarded";
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, className, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    RegSetValueExW(key, L"n", 0, REG_BINARY, nullptr, 0);
    RegCloseKey(key);
    SetRights(HKEY_CURRENT_USER, kPath, L"O:SYG:SYD:(A;;KA;;;BA)(A;;KR;;;WD)", kParts);
  }

  static UnicodeString Sid() { return WindowsBackend(WindowsOptions{}).Target().userSid; }

  // The system's own history has no answers here, so the cache index is asked.
  windows::ComFactories Objects() {
    windows::ComFactories factories = OwnObjects(firewall_, urls_);
    if (!hasOwnHistory_) factories.urlHistory = windows::SystemUrlHistory();
    return factories;
  }
  LiveOpenResult Open(bool dryRun = false) {
    return OpenLiveSession({{}, kBackups, dryRun}, Objects());
  }
  UndoResult Undo(const std::string& session = {}, std::vector<std::string> items = {}) {
    return UndoLive({{}, kBackups, session, std::move(items)}, Objects());
  }
  static void ChangeAll(ICleanSession& session) {
    std::string problem;
    for (const Change& change : kChanges) {
      if (problem != change.problem) {
        if (!problem.empty()) session.EndProblem(true);
        problem = change.problem;
        session.BeginProblem({problem, u"Test", 1, u"caption", false});
      }
      EXPECT_EQ(change.make(session.Backend().Platform()), Status::Ok) << change.line;
      const JournalItem& item = session.Items().back();
      std::string line = std::to_string(static_cast<int>(item.action)) + " " + ToUtf8(item.place);
      if (!item.name.empty()) line += " " + ToUtf8(item.name);
      std::string wanted = change.line;
      if (const std::size_t at = wanted.find("{sid}"); at != std::string::npos)
        wanted.replace(at, 5, ToUtf8(Sid()));
      EXPECT_TRUE(SameText(FromUtf8(line), FromUtf8(wanted))) << line << "\n" << wanted;
    }
    session.EndProblem(true);
  }
  CommitResult CleanAll() {
    const LiveOpenResult opened = Open();
    EXPECT_NE(opened.session, nullptr) << opened.error;
    if (opened.session == nullptr) return {};
    ChangeAll(*opened.session);
    return opened.session->Commit();
  }

  // All that the changes touch.
  std::string World() const {
    std::ostringstream out;
    for (const auto& [root, path] :
         {std::pair{HKEY_CURRENT_USER, L"Software\\ScrubLive"},
          {HKEY_CURRENT_USER, L"Software\\Classes\\.scrublive"},
          {HKEY_LOCAL_MACHINE, L"Software\\Classes\\.scrublive"},
          {HKEY_LOCAL_MACHINE, L"Software\\Classes\\Wow6432Node\\CLSID\\{5C2B0002-L}"}})
      for (const auto& [key, text] : Tree(root, path))
        out << ToUtf8(windows::FromWide(key.c_str())) << ": " << text << "\n";
    for (const char* file : {"/Old/gone.lnk", "/kept.txt"})
      out << file << " " << FileFacts(kFolder + file) << ReadText(kFolder + file) << "\n";
    out << ReadText(kFolder + "/x.ini") << TaskText() << "\n" << VisitedText() << "\n";
    std::set<std::wstring> entries;
    for (const FirewallEntry& entry : firewall_.entries)
      entries.insert(entry.name + entry.file + (entry.enabled ? L"+" : L"-") +
                     std::to_wstring(entry.scope));
    for (const std::wstring& entry : entries)
      out << ToUtf8(windows::FromWide(entry.c_str())) << "\n";
    return out.str();
  }

  WindowsBackend backend_{MayChange()};
  FirewallState firewall_;
  UrlList urls_;
  bool hasOwnHistory_ = false;
};

TEST_F(LiveClean, NothingChangesBeforeTheCommitAndUndoPutsAllBack) {
  const std::string before = World();
  const Registry guarded = Tree(HKEY_CURRENT_USER, L"Software\\Classes\\.scrublive");
  {
    const LiveOpenResult dry = Open(true);
    ASSERT_NE(dry.session, nullptr) << dry.error;
    ChangeAll(*dry.session);
    FileInfo info;
    TPlatform& platform = dry.session->Backend().Platform();
    EXPECT_EQ(platform.files.Stat(u"C:\\scrubwell-test\\live\\Old", FsView::Physical, info),
              Status::Absent);
    EXPECT_EQ(Ask(platform.registry, "get own HKCR\\.scrublive > "), "@=\"machine\"");
    EXPECT_EQ(dry.session->Commit().failure, CleanFailure::WrongUse);
  }
  EXPECT_EQ(World(), before);
  EXPECT_FALSE(fs::exists(kBackups));

  const CommitResult cleaned = CleanAll();
  ASSERT_EQ(cleaned.failure, CleanFailure::None) << cleaned.error;
  for (const std::string& note : cleaned.notes) ADD_FAILURE() << note;
  EXPECT_NE(World(), before);
  EXPECT_EQ(ReadText(kFolder + "/x.ini"), "; kept\r\n[One]\r\nThree=3\r\n");
  EXPECT_FALSE(fs::exists(kFolder + "/Old"));
  EXPECT_EQ(TaskText() + VisitedText(), "nonenone");
  EXPECT_EQ(firewall_.entries.size(), 1U);

  const UndoResult one = Undo({}, {"a"});
  ASSERT_EQ(one.failure, CleanFailure::None) << one.error;
  EXPECT_EQ(one.items.size(), 2U);
  EXPECT_EQ(ReadSession(kBackups, {}).info.undone, 2U);
  EXPECT_EQ(Tree(HKEY_CURRENT_USER, L"Software\\Classes\\.scrublive"), guarded);
  const UndoResult all = Undo(cleaned.session);
  ASSERT_EQ(all.failure, CleanFailure::None) << all.error;
  for (const UndoItem& item : all.items) {
    const bool isThere =
        item.item.id == "1" || item.item.id == "2" || item.item.action == JournalAction::KeepFile;
    EXPECT_EQ(item.outcome, isThere ? UndoOutcome::AlreadyThere : UndoOutcome::Restored)
        << item.item.id << item.why;
  }
  EXPECT_EQ(World(), before);
}

TEST_F(LiveClean, LeavesWhatHasChangedSinceThePlan) {
  const LiveOpenResult opened = Open();
  ASSERT_NE(opened.session, nullptr) << opened.error;
  EXPECT_EQ(Open().failure, CleanFailure::Refused);
  EXPECT_EQ(RecoverLive(kBackups).failure, CleanFailure::Refused);
  ChangeAll(*opened.session);
  for (const char* line :
       {"set 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0002-L}\\InprocServer32 > =C:\\new.dll",
        "set own HKCU\\Software\\ScrubLive > A=other"})
    Ask(backend_.Platform().registry, line);
  WriteText(kFolder + "/Old/gone.lnk", "other");
  firewall_.entries.back().scope = NET_FW_SCOPE_ALL;
  const CommitResult result = opened.session->Commit();
  ASSERT_EQ(result.failure, CleanFailure::None) << result.error;
  // Two in the registry, the file with its folder, the firewall's entry.
  EXPECT_EQ(result.notes.size(), 5U);
  for (const std::string& note : result.notes)
    EXPECT_NE(note.find("has changed since"), std::string::npos) << note;
  EXPECT_EQ(ReadText(kFolder + "/Old/gone.lnk"), "other");
  EXPECT_EQ(Ask(backend_.Platform().registry, "get own HKCU\\Software\\ScrubLive > A"),
            "\"A\"=\"other\"");
  EXPECT_EQ(firewall_.entries.size(), 2U);
  const SessionContent content = ReadSession(kBackups, {});
  EXPECT_EQ(content.items.size(), opened.session->Items().size() - 5);
}

TEST_F(LiveClean, UndoLeavesWhatIsTaken) {
  const CommitResult cleaned = CleanAll();
  ASSERT_EQ(cleaned.failure, CleanFailure::None) << cleaned.error;
  for (const char* line :
       {"set 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{5C2B0002-L} > Name=new",
        "set own HKCU\\Software\\ScrubLive > A=new", "set own HKCU\\Software\\ScrubLive > B=new"})
    Ask(backend_.Platform().registry, line);
  WriteText(kFolder + "/Old/gone.lnk", "new");
  WriteText(kFolder + "/x.ini", "new");
  firewall_.entries.push_back({L"New", L"C:\\hard.exe"});
  const UndoResult undone = Undo();
  ASSERT_EQ(undone.failure, CleanFailure::None) << undone.error;
  std::string taken;
  for (const UndoItem& item : undone.items)
    if (item.outcome == UndoOutcome::Taken) taken += item.item.id + " ";
  EXPECT_EQ(taken, "15 12 9 4 3 1 ") << taken;
  EXPECT_EQ(ReadText(kFolder + "/x.ini"), "new");
}

// Addresses that the system's index doesn't have, but its history.
TEST_F(LiveClean, AddressesComeBackWithTheirTitles) {
  hasOwnHistory_ = true;
  urls_ = {{L"file:///C:/scrubgone/own.txt", L"A \u00e9"}, {L"http://other/", L""}};
  const UrlList before = urls_;
  LiveOpenResult opened = Open();
  ASSERT_NE(opened.session, nullptr) << opened.error;
  IBrowserHistory& browser = opened.session->Backend().Platform().browser;
  EXPECT_EQ(browser.RemoveUrl(u"file:///C:/scrubgone/own.txt"), Status::Ok);
  EXPECT_EQ(browser.RemoveUrl(u"file:///C:/scrubgone/own.txt"), Status::Absent);
  EXPECT_EQ(urls_, before);
  ASSERT_EQ(opened.session->Commit().failure, CleanFailure::None);
  opened.session.reset();
  EXPECT_EQ(urls_.size(), 1U);
  for (const UndoOutcome outcome : {UndoOutcome::Restored, UndoOutcome::AlreadyThere}) {
    const UndoResult undone = Undo();
    ASSERT_EQ(undone.items.size(), 1U) << undone.error;
    EXPECT_EQ(undone.items[0].outcome, outcome);
    EXPECT_EQ(urls_, before);
  }
  urls_.begin()->second = L"new";
  EXPECT_EQ(Undo().items.at(0).outcome, UndoOutcome::Taken);
}

Status FindOne(std::vector<windows::FurtherStream>& out, UnicodeView name, std::int64_t size) {
  out.push_back({UnicodeString(name), size});
  return Status::Ok;
}

// A file that holds more than its content goes only when all of that can come back.
TEST_F(LiveClean, FurtherStreamsAreKeptOrTheFileStays) {
  using Streams = std::vector<windows::FurtherStream>;
  const UnicodeString path = u"C:\\scrubwell-test\\live\\kept.txt";
  const std::string stream = kFolder + "/kept.txt:s:$DATA";
  WriteText(stream, "abc");
  const std::pair<windows::StreamFinder*, Status> rows[] = {
      {[](const UnicodeString&, Streams& out) { return FindOne(out, u":s:$DATA", 4); },
       Status::Denied},  // there is less of it
      {[](const UnicodeString&, Streams& out) { return FindOne(out, u":s:$DATA", 1 << 21); },
       Status::Denied},
      {[](const UnicodeString&, Streams& out) { return FindOne(out, u":none:$DATA", 1); },
       Status::Denied},
      {[](const UnicodeString&, Streams&) { return Status::Denied; }, Status::Denied},
      {[](const UnicodeString&, Streams& out) { return FindOne(out, u":s:$DATA", 3); }, Status::Ok},
  };
  FileAttributes marks;
  for (const auto& [find, status] : rows)
    EXPECT_EQ(windows::SaveMarks(path, marks = {}, find), status);
  fs::remove(stream);
  marks.extended["stream:\\..\\evil.txt"] = {1};  // no name of a stream
  EXPECT_EQ(windows::RestoreMarks(path, marks), Status::Ok);
  EXPECT_EQ(ReadText(stream), "abc");
  EXPECT_FALSE(fs::exists(kFolder + "/evil.txt"));
}

// However much of the journal a crash has left, what it tells of can be put back.
TEST_F(LiveClean, CutJournalsAreStillOfUse) {
  const std::string before = World();
  const CommitResult cleaned = CleanAll();
  ASSERT_EQ(cleaned.failure, CleanFailure::None) << cleaned.error;
  const std::string file = cleaned.folder + "/journal.jsonl";
  const std::string whole = ReadText(file);
  const std::string unclosed = whole.substr(0, whole.rfind("{\"end\""));
  const std::size_t lastEntry = unclosed.rfind("{\"item\"");
  std::string changed = whole;
  changed[whole.find("{\"item\"") + 20] ^= 1;
  // 0 items: refused.
  const std::pair<std::string, std::size_t> rows[] = {{changed, 0},
                                                      {whole, 15},
                                                      {whole.substr(whole.find('\n') + 1), 0},
                                                      {whole + "{", 0},
                                                      {unclosed.substr(0, lastEntry), 14},
                                                      {unclosed.substr(0, lastEntry + 30), 14},
                                                      {unclosed, 15}};
  for (const auto& [text, items] : rows) {
    WriteText(file, text);
    fs::remove(cleaned.folder + "/carried-out");
    for (const bool isRecovered : {false, true}) {
      const SessionContent content = ReadSession(kBackups, cleaned.session);
      EXPECT_EQ(content.failure, items == 0 ? CleanFailure::Unreadable : CleanFailure::None);
      if (items != 0) {
        EXPECT_EQ(content.items.size(), items);
      }
      const RecoverResult result = RecoverLive(kBackups);
      const bool isLeft = items != 0 && !isRecovered;
      EXPECT_EQ(result.outcome,
                isLeft ? RecoverResult::Outcome::Completed : RecoverResult::Outcome::NothingToDo);
      EXPECT_EQ(result.notes.size(), isLeft || items == 0 ? 1U : 0U);
    }
  }
  EXPECT_EQ(RecoverLive(kFolder + "/none").failure, CleanFailure::WrongUse);
  const UndoResult undone = Undo(cleaned.session);
  ASSERT_EQ(undone.failure, CleanFailure::None) << undone.error;
  EXPECT_EQ(World(), before);
}

TEST_F(LiveClean, WhatCanNotBeDoneIsRefused) {
  const LiveOpenResult opened = Open();
  ASSERT_NE(opened.session, nullptr) << opened.error;
  TPlatform& platform = opened.session->Backend().Platform();
  SetFileAttributesA((kFolder + "/kept.txt").c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(platform.files.EraseFile(u"C:\\scrubwell-test\\live\\kept.txt"), Status::Denied);
  SetFileAttributesA((kFolder + "/kept.txt").c_str(), FILE_ATTRIBUTE_NORMAL);
  platform.firewall.Connect();
  EXPECT_EQ(platform.firewall.SetEnabled(u"C:\\one.exe", false), Status::Denied);
  EXPECT_EQ(platform.firewall.Remove(u"C:\\none.exe"), Status::Absent);
  EXPECT_EQ(platform.browser.RemoveUrl(u"http://never/"), Status::Absent);
  EXPECT_EQ(platform.files.EraseFolder(u"C:\\scrubwell-test\\live"), Status::Denied);
  for (const char* line : {"force own HKLM\\SOFTWARE", "force 64 HKLM\\SOFTWARE\\Wow6432Node"})
    EXPECT_EQ(Ask(platform.registry, line), "Denied") << line;
  ASSERT_TRUE(opened.session->Items().empty());
  EXPECT_EQ(opened.session->Commit().session, "");
  EXPECT_FALSE(fs::exists(kBackups));
  EXPECT_EQ(OpenLiveSession({{"/mnt", {}, {}}, kBackups, false}).failure, CleanFailure::WrongUse);
}

// All that the package finds, removed and put back.
TEST_F(LiveClean, TheWholePackageComesBack) {
  const Registry machine = Tree(HKEY_LOCAL_MACHINE, L"Software");
  const Registry user = Tree(HKEY_CURRENT_USER, L"Software");
  CommitResult cleaned;
  std::size_t planned = 0;
  {
    const LiveOpenResult opened = Open();
    ASSERT_NE(opened.session, nullptr) << opened.error;
    SetPlatform(&opened.session->Backend().Platform());
    LoadPackage();
    UnicodeString unknown;
    ChoosePlugins({}, unknown);
    CleanSelection selection;
    selection.all = true;
    CleanEvents events;
    events.roundBegins = [&] { opened.session->BeginRound(); };
    CleanDriver(events).Run(selection, false);
    UnloadPackage();
    SetPlatform(nullptr);
    EXPECT_EQ(Difference(machine, Tree(HKEY_LOCAL_MACHINE, L"Software")), "");
    planned = opened.session->Items().size();
    cleaned = opened.session->Commit();
  }
  ASSERT_EQ(cleaned.failure, CleanFailure::None) << cleaned.error;
  for (const std::string& note : cleaned.notes) ADD_FAILURE() << note;
  EXPECT_GT(planned, 3U);
  EXPECT_NE(Difference(machine, Tree(HKEY_LOCAL_MACHINE, L"Software")), "");
  const UndoResult undone = Undo();
  ASSERT_EQ(undone.failure, CleanFailure::None) << undone.error;
  EXPECT_EQ(undone.items.size(), planned);
  for (const UndoItem& item : undone.items) {
    EXPECT_EQ(item.outcome, UndoOutcome::Restored) << item.why;
  }
  EXPECT_EQ(Difference(machine, Tree(HKEY_LOCAL_MACHINE, L"Software")), "");
  EXPECT_EQ(Difference(user, Tree(HKEY_CURRENT_USER, L"Software")), "");
}

}  // namespace
}  // namespace scrubwell::test
