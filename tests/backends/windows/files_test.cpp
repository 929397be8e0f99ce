#include "backends/windows/win32.h"
#include "registry/Stringhelper.h"
#include "scratch.h"

namespace scrubwell::test {
namespace {

using windows::RedirectionScope;

constexpr bool kIs32 = sizeof(void*) == 4;

void Make(const wchar_t* path, const std::string& text) {
  const RedirectionScope scope(FsView::Physical);
  const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(file, INVALID_HANDLE_VALUE) << GetLastError();
  DWORD written = 0;
  WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  CloseHandle(file);
}

class LiveFiles : public testing::Test {
 protected:
  void SetUp() override {
    for (const wchar_t* folder : {L"C:\\scrubwell-test", L"C:\\scrubwell-test\\Empty",
                                  L"C:\\scrubwell-test\\Data", L"C:\\scrubwell-test\\backup"})
      CreateDirectoryW(folder, nullptr);
    Make(L"C:\\scrubwell-test\\Data\\Readme.TXT", "hello");
    Make(L"C:\\Windows\\System32\\scrubboth.dll", "1");
    Make(L"C:\\Windows\\SysWOW64\\scrubboth.dll", "1234567");
    Make(L"C:\\Windows\\System32\\scrub64.dll", "1");
    Make(L"C:\\Windows\\SysWOW64\\scrub32.dll", "1");
  }
  void TearDown() override {
    const RedirectionScope scope(FsView::Physical);
    for (const wchar_t* file :
         {L"C:\\Windows\\System32\\scrubboth.dll", L"C:\\Windows\\SysWOW64\\scrubboth.dll",
          L"C:\\Windows\\System32\\scrub64.dll", L"C:\\Windows\\SysWOW64\\scrub32.dll",
          L"C:\\scrubwell-test\\backup\\C\\scrubwell-test\\Data\\Readme.TXT",
          L"C:\\scrubwell-test\\Data\\Readme.TXT"})
      DeleteFileW(file);
  }

  WindowsBackend backend_{MayChange()};
  IFiles& files_ = backend_.Platform().files;
};

TEST_F(LiveFiles, Reads) {
  const AskRow rows[] = {
      {"list disk C:\\scrubwell-test\\Data\\Readme.txt", "Absent"},
      {"stat 32 C:/Windows/System32/scrub64.dll", "Absent"},
      {"stat 32 C:\\Windows\\System32\\drivers\\etc", "folder"},
      {"stat disk relative.txt", "Unknown"},
  };
  CheckRows(files_, rows);
  const std::u16string deep = u"C:\\scrubwell-test\\" + std::u16string(250, u'x') + u"\\y";
  FileInfo info;
  EXPECT_EQ(files_.Stat(deep, FsView::Physical, info), Status::Absent);
  Bytes bytes;
  EXPECT_EQ(files_.Read(u"C:\\scrubwell-test\\Data\\Readme.txt", FsView::Physical, 4, bytes),
            Status::Corrupt);
}

TEST_F(LiveFiles, Changes) {
  const UnicodeString file = u"C:\\scrubwell-test\\Data\\Readme.txt";
  EXPECT_EQ(files_.Backup(file), Status::Ok);
  EXPECT_EQ(files_.Write(file, {'n', 'e', 'w'}), Status::Ok);
  EXPECT_EQ(files_.Backup(file), Status::Ok);  // the first copy stays
  const AskRow rows[] = {
      {"read disk C:\\scrubwell-test\\Data\\Readme.txt", "new"},
      {"read disk C:\\scrubwell-test\\backup\\C\\scrubwell-test\\Data\\Readme.txt", "hello"},
  };
  CheckRows(files_, rows);
  WindowsBackend reader{WindowsOptions{}};
  IFiles& readOnly = reader.Platform().files;
  EXPECT_EQ(readOnly.Write(file, {}), Status::Denied);
  EXPECT_EQ(readOnly.EraseFile(file), Status::Denied);
  EXPECT_EQ(readOnly.Backup(file), Status::Denied);
}

// What this thread sees at a path that is redirected where there is redirection.
bool SeesOnly64() {
  return GetFileAttributesW(L"C:\\Windows\\System32\\scrub64.dll") != INVALID_FILE_ATTRIBUTES;
}

TEST_F(LiveFiles, RedirectionIsPutBack) {
  ISystem& system = backend_.Platform().system;
  EXPECT_TRUE(system.IsWow64());
  const bool before = SeesOnly64();
  EXPECT_EQ(before, !kIs32);
  for (const bool enabled : {true, false, true}) {
    system.SetFsRedirection(enabled);
    EXPECT_EQ(system.FsRedirection(), enabled);
    const bool seen = SeesOnly64();
    EXPECT_EQ(seen, !kIs32 || !enabled);
    for (const FsView view : {FsView::Physical, FsView::Redirected}) {
      FileInfo info;
      Bytes bytes;
      std::vector<DirEntry> entries;
      files_.Stat(u"C:\\Windows\\System32\\none", view, info);
      files_.Read(u"C:\\Windows\\System32\\none", view, 1, bytes);
      files_.List(u"C:\\Windows\\System32\\none", view, entries);
      EXPECT_EQ(SeesOnly64(), seen);
    }
  }
  {
    WindowsBackend other{WindowsOptions{}};
    other.Platform().system.SetFsRedirection(false);
  }
  EXPECT_EQ(SeesOnly64(), before);
}

TEST_F(LiveFiles, ProfileStrings) {
  IProfiles& profiles = backend_.Platform().profiles;
  const UnicodeString file = u"C:\\scrubwell-test\\test.ini";
  const std::string text = "; note\r\n[one]\r\na=1\r\nempty=\r\n[two]\r\nb=2\r\n";
  const UnicodeString copy = u"C:\\scrubwell-test\\backup\\C\\scrubwell-test\\test.ini";
  DeleteFileW(windows::Wide(copy));
  Make(windows::Wide(file), text);
  UnicodeString value;
  EXPECT_EQ(profiles.Get(file, u"one", u"A", value), Status::Ok);
  EXPECT_EQ(value, u"1");
  EXPECT_EQ(profiles.Get(file, u"one", u"empty", value), Status::Ok);
  EXPECT_EQ(value, u"");
  EXPECT_EQ(profiles.Get(file, u"one", u"b", value), Status::Absent);
  EXPECT_EQ(profiles.Get(u"C:\\none.ini", u"one", u"b", value), Status::Absent);
  TStringList names;
  EXPECT_EQ(profiles.Entries(file, u"one", names), Status::Ok);
  EXPECT_EQ(names, (TStringList{u"a", u"empty"}));
  // What is not there is not made.
  EXPECT_EQ(profiles.Put(file, u"one", u"new", u"x"), Status::Absent);
  EXPECT_EQ(profiles.Put(file, u"two", u"b", u"long text, with blanks"), Status::Ok);
  EXPECT_EQ(profiles.Get(file, u"two", u"b", value), Status::Ok);
  EXPECT_EQ(value, u"long text, with blanks");
  EXPECT_EQ(profiles.Remove(file, u"one", u"a"), Status::Ok);
  EXPECT_EQ(profiles.Remove(file, u"one", u"a"), Status::Absent);
  EXPECT_EQ(profiles.Entries(file, u"one", names), Status::Ok);
  EXPECT_EQ(names, TStringList{u"empty"});
  Bytes saved;
  EXPECT_EQ(files_.Read(copy, FsView::Physical, 1000, saved), Status::Ok);
  EXPECT_EQ(std::string(saved.begin(), saved.end()), text);
  Bytes bytes;
  EXPECT_EQ(files_.Read(file, FsView::Physical, 1000, bytes), Status::Ok);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()).rfind("; note\r\n", 0), 0U);
  DeleteFileW(windows::Wide(file));
  DeleteFileW(windows::Wide(copy));

  // Long lists and texts are not cut.
  std::string many = "[s]\r\n";
  for (int i = 0; i < 2000; ++i) many += "entry" + std::to_string(i) + "=x\r\n";
  Make(windows::Wide(file), many);
  EXPECT_EQ(profiles.Entries(file, u"s", names), Status::Ok);
  EXPECT_EQ(names.size(), 2000U);
  DeleteFileW(windows::Wide(file));
}

}  // namespace
}  // namespace scrubwell::test
