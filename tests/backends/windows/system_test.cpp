#include "backends/windows/com.h"
#include "backends/windows/windows_system.h"
#include "registry/Stringhelper.h"
#include "scratch.h"

// After the general header.
#include <shlobj.h>
#include <shlwapi.h>

// The system's header renames these, the package's own.
#undef PathCreateFromUrl
#undef PathParseIconLocation

namespace scrubwell::test {
namespace {

using windows::ComPtr;
using windows::OwnedService;

TEST(LiveSystem, Environment) {
  WindowsBackend backend{WindowsOptions{}};
  ISystem& system = backend.Platform().system;
  SetEnvironmentVariableW(L"SCRUB_EMPTY", L"");
  SetEnvironmentVariableW(L"SCRUB_LONG", std::wstring(5000, L'x').c_str());
  const UnicodeString wide = u"C:\\Program Files";
  const UnicodeString narrow = wide + u" (x86)";
  const std::tuple<UnicodeView, View, Status, UnicodeString> rows[] = {
      {u"SystemRoot", View::Native, Status::Ok, u"C:\\windows"},
      {u"programfiles", View::Native, Status::Ok, narrow},
      {u"ProgramFiles", View::Bits32, Status::Ok, narrow},
      {u"ProgramFiles", View::Bits64, Status::Ok, wide},
      {u"CommonProgramFiles", View::Bits32, Status::Ok, narrow + u"\\Common Files"},
      {u"CommonProgramFiles", View::Bits64, Status::Ok, wide + u"\\Common Files"},
      {u"SCRUB_EMPTY", View::Native, Status::Ok, u""},
      {u"SCRUB_LONG", View::Bits64, Status::Ok, UnicodeString(5000, u'x')},
      {u"SCRUB_NONE", View::Native, Status::Absent, u""},
      {u"SystemRoot", View::Invalid, Status::Unknown, u""},
  };
  for (const auto& [name, view, status, wanted] : rows) {
    UnicodeString text;
    EXPECT_EQ(system.Environment(name, view, text), status) << ToUtf8(name);
    if (status != Status::Ok) continue;
    EXPECT_TRUE(SameText(text, wanted)) << ToUtf8(name) << " = " << ToUtf8(text);
  }
  EXPECT_TRUE(SameText(system.WindowsDir(), u"C:\\windows"));
  EXPECT_TRUE(system.IsAdmin());
  EXPECT_TRUE(system.IsWow64());
  EXPECT_FALSE(backend.Target().userSid.empty());
  EXPECT_TRUE(backend.Target().is64Bit);
  PostQuitMessage(3);
  system.PumpMessages();
  MSG message;
  EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));  // the host's to see
}

TEST(LiveSystem, Versions) {
  const std::pair<windows::VersionNumber, OsVersion> rows[] = {
      {{5, 1, 2600}, OsVersion::WinXP},   {{5, 2, 3790}, OsVersion::WinXP},
      {{6, 0, 6002}, OsVersion::Vista},   {{6, 1, 7601}, OsVersion::Win7},
      {{6, 3, 9600}, OsVersion::Win81},   {{10, 0, 19045}, OsVersion::Win10},
      {{10, 0, 22000}, OsVersion::Win11}, {{0, 0, 0}, OsVersion::Unknown},
      {{7, 5, 0}, OsVersion::Unknown}};
  for (const auto& [number, version] : rows)
    EXPECT_EQ(windows::VersionOf(number), version) << number.major << "." << number.minor;
  EXPECT_NE(windows::VersionOf(windows::SystemVersion()), OsVersion::Unknown);
}

TEST(LiveServices, Query) {
  const OwnedService manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  const OwnedService service(
      CreateServiceW(manager.Get(), L"ScrubService", L"Scrub \u00e4 service", SERVICE_ALL_ACCESS,
                     SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE,
                     L"C:\\none.exe", nullptr, nullptr, nullptr, nullptr, nullptr));
  ASSERT_TRUE(service.Good()) << GetLastError();
  WindowsBackend backend{WindowsOptions{}};
  ServiceInfo info;
  EXPECT_EQ(backend.Platform().services.Query(u"scrubservice", info), Status::Ok);
  EXPECT_EQ(info.state, 1U);
  EXPECT_EQ(info.startType, 3U);
  EXPECT_EQ(info.displayName, u"Scrub \u00e4 service");
  EXPECT_NE(windows::EnsureServiceRuns(u"ScrubService"), Status::Ok);  // no such program
  DeleteService(service.Get());
  EXPECT_EQ(backend.Platform().services.Query(u"ScrubNone", info), Status::Absent);
  EXPECT_EQ(windows::EnsureServiceRuns(u"ScrubNone"), Status::Absent);
}

TEST(LiveText, CodePageAndOrder) {
  WindowsBackend backend{WindowsOptions{}};
  ITextServices& text = backend.Platform().text;
  EXPECT_EQ(text.FromAnsi("plain"), u"plain");
  EXPECT_EQ(text.ToAnsi(u"plain"), "plain");
  EXPECT_EQ(text.FromAnsi(""), u"");
  if (GetACP() == 1252) {
    EXPECT_EQ(text.FromAnsi("\xE4\x80"), u"\u00e4\u20ac");
    EXPECT_EQ(text.ToAnsi(u"\u00e4\u4e2d\u0100"), "\xE4??");  // no letter that merely looks alike
  }
  EXPECT_EQ(text.CompareText(u"abc", u"ABC"), 0);
  EXPECT_LT(text.CompareText(u"\u00e4b", u"b"), 0);
  EXPECT_GT(text.CompareText(u"b", u""), 0);
}

void MakeLink(const UnicodeString& file, const wchar_t* target) {
  ComPtr<IShellLinkW> link;
  ComPtr<IPersistFile> saved;
  ASSERT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                             link.OutVoid()),
            S_OK);
  EXPECT_TRUE(SUCCEEDED(link->SetPath(target)));
  ASSERT_EQ(link->QueryInterface(IID_IPersistFile, saved.OutVoid()), S_OK);
  EXPECT_EQ(saved->Save(windows::Wide(file), TRUE), S_OK);
}

TEST(LiveShell, FoldersLinksAndLists) {
  WindowsBackend backend{WindowsOptions{}};
  IShell& shell = backend.Platform().shell;
  UnicodeString text;
  EXPECT_EQ(shell.SpecialFolder(20, text), Status::Ok);
  EXPECT_TRUE(SameText(text, u"C:\\windows\\Fonts")) << ToUtf8(text);
  EXPECT_EQ(shell.SpecialFolder(1, text), Status::Unknown);
  const UnicodeString link = u"C:\\scrub-test.lnk";
  MakeLink(link, L"C:\\gone folder\\gone.txt");
  EXPECT_EQ(shell.LinkTarget(link, text), Status::Ok);
  EXPECT_TRUE(SameText(text, u"C:\\gone folder\\gone.txt")) << ToUtf8(text);
  DeleteFileW(windows::Wide(link));
  EXPECT_EQ(shell.LinkTarget(link, text), Status::Unknown);
  // An item that reaches beyond the bytes, and a list without an end.
  EXPECT_EQ(shell.ItemListPath({0x50, 0x00, 0x1f}, text), Status::Corrupt);
  EXPECT_EQ(shell.ItemListPath({0x03, 0x00, 0x1f}, text), Status::Corrupt);
  EXPECT_EQ(shell.ItemListPath({}, text), Status::Corrupt);
  PIDLIST_ABSOLUTE list = nullptr;
  ASSERT_EQ(SHParseDisplayName(L"C:\\windows\\system32", nullptr, &list, 0, nullptr), S_OK);
  const auto* const begin = reinterpret_cast<const std::uint8_t*>(list);
  EXPECT_EQ(shell.ItemListPath(Bytes(begin, begin + ILGetSize(list)), text), Status::Ok);
  EXPECT_TRUE(SameText(text, u"C:\\windows\\system32")) << ToUtf8(text);
  CoTaskMemFree(list);
}

TEST(LiveResources, StringsAndVersions) {
  WindowsBackend backend{WindowsOptions{}};
  IFileResources& resources = backend.Platform().resources;
  UnicodeString text;
  FileVersion version;
  const UnicodeString shell = u"C:\\Windows\\System32\\shell32.dll";
  // Whichever numbers this system has: the loader's own answer is the measure.
  int found = 0;
  for (std::uint32_t id = 1; id < 200; ++id) {
    wchar_t expected[512] = L"";
    LoadStringW(GetModuleHandleW(L"shell32"), id, expected, 512);
    const bool isThere = expected[0] != L'\0';
    EXPECT_EQ(resources.StringResource(shell, id, text), isThere ? Status::Ok : Status::Absent);
    EXPECT_EQ(text, windows::FromWide(expected));
    found += isThere ? 1 : 0;
  }
  EXPECT_GT(found, 0);
  EXPECT_EQ(resources.StringResource(u"C:\\none.dll", 1, text), Status::Absent);
  EXPECT_EQ(resources.StringResource(u"C:\\Windows\\win.ini", 1, text), Status::Unknown);
  EXPECT_EQ(resources.Version(shell, version), Status::Ok);
  EXPECT_GT(version.major, 0);
  EXPECT_EQ(resources.Version(u"C:\\none.dll", version), Status::Absent);
}

// The package has functions of its own for what the shell does; they must not drift from it.
TEST(LiveShell, AgreesOnAddressesAndIconPlaces) {
  for (const char16_t* url :
       {u"file:///C:/a/b.txt", u"file:///C:/with%20blank/x", u"file:///c|/old", u"file:C:/x",
        u"file://server/share/x", u"http://x/", u"C:\\plain", u"", u"file:///C:/%zz/x"}) {
    wchar_t buffer[MAX_PATH] = L"";
    DWORD size = MAX_PATH;
    const HRESULT result =
        PathCreateFromUrlW(reinterpret_cast<const wchar_t*>(url), buffer, &size, 0);
    UnicodeString path;
    const bool done = PathCreateFromUrl(url, path);
    EXPECT_EQ(done, result == S_OK) << ToUtf8(url);
    if (!done || result != S_OK) continue;
    EXPECT_EQ(path, windows::FromWide(buffer)) << ToUtf8(url);
  }
  // Commas within the path are left out: some systems take the first one for the icon's.
  for (const char16_t* place :
       {u"C:\\x.dll,3", u"C:\\x.dll", u"C:\\x.dll,-5", u"\"C:\\q.dll\",2", u""}) {
    wchar_t buffer[MAX_PATH] = L"";
    lstrcpynW(buffer, reinterpret_cast<const wchar_t*>(place), MAX_PATH);
    const int number = PathParseIconLocationW(buffer);
    UnicodeString path(place);
    EXPECT_EQ(PathParseIconLocation(path), number) << ToUtf8(place);
    EXPECT_EQ(path, windows::FromWide(buffer)) << ToUtf8(place);
  }
}

}  // namespace
}  // namespace scrubwell::test
