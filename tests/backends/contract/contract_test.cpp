#include "contract.h"

#include "support/ask.h"

namespace scrubwell::test {

namespace {

const ContractText& Text() {
  static const ContractText text{.registry = R"(
[HKEY_LOCAL_MACHINE\SOFTWARE\Firm\Tool]
@="machine"
"Name"="64"
"Number"=dword:10
"Empty"=""
"Bytes"=hex:00,ff
[HKEY_LOCAL_MACHINE\SOFTWARE\Firm\Tool\Sub]
[HKEY_LOCAL_MACHINE\SOFTWARE\Firm\Kept\First]
[HKEY_LOCAL_MACHINE\SOFTWARE\Firm\Kept\Second\Guarded]
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Firm\Tool]
"Name"="32"
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\App Paths\x.exe]
@="C:\\x.exe"
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\SharedDLLs]
"a"=dword:1
[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Microsoft\Windows\CurrentVersion\SharedDLLs]
"b"=dword:1
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID\{A}\InprocServer32]
@="a64"
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\Wow6432Node\CLSID\{A}\InprocServer32]
@="a32"
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID\{B}]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\TypeLib\{T}]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\.abc]
@="machine"
"Only"="machine"
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\.abc\Machine]
[HKEY_CURRENT_USER\Software\Classes\.abc]
@="user"
"Mine"="user"
[HKEY_CURRENT_USER\Software\Classes\.abc\User]
[HKEY_CURRENT_USER\Software\Classes\.user]
[HKEY_CURRENT_USER\Software\Classes\CLSID\{a}]
"u"="64"
[HKEY_CURRENT_USER\Software\Classes\Wow6432Node\CLSID\{C}]
[HKEY_CURRENT_USER\Software\Firm]
"x"="u"
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\Thing]
"Start"=dword:2
)",
                                 .files = R"(
C:\Windows\System32\both.dll
C:\Windows\SysWOW64\both.dll | size=7
C:\Windows\System32\only64.dll
C:\Windows\SysWOW64\only32.dll
C:\Windows\System32\drivers\etc\hosts | text=127.0.0.1
C:\Data\Readme.TXT | text=hello
C:\Data\Empty\
)",
                                 .guarded = u"HKLM\\SOFTWARE\\Firm\\Kept\\Second\\Guarded"};
  return text;
}

constexpr const char* kSid = "S-1-5-21-1-2-3-1001";

const AskRow kRegistryRows[] = {
    {"open 64 HKLM\\SOFTWARE\\Firm\\Tool", "1 5"},
    {"open own hklm", "Unknown"},
    {"open 64 HKLM\\SOFTWARE\\FIRM\\tOOL\\sub", "0 0"},
    {"open 64 HKLM\\SOFTWARE\\Firm\\Nothing\\Below", "Absent"},
    {"open both HKLM\\SOFTWARE\\Firm", "Unknown"},
    {"get 64 HKLM\\SOFTWARE\\Firm\\Tool > ", "@=\"machine\""},
    {"get 64 HKLM\\SOFTWARE\\Firm\\Tool > nAME", "\"Name\"=\"64\"", kStoredNames},
    {"get 64 HKLM\\SOFTWARE\\Firm\\Tool > Empty", "\"Empty\"=\"\""},
    {"get 64 HKLM\\SOFTWARE\\Firm\\Tool > Bytes", "\"Bytes\"=hex:00,ff"},
    {"get 64 HKLM\\SOFTWARE\\Firm\\Tool > nothing", "Absent"},
    {"get 32 HKLM\\SOFTWARE\\Firm\\Tool > Name", "\"Name\"=\"32\""},
    {"get own HKLM\\SOFTWARE\\Firm\\Tool > Name", "\"Name\"=\"32\""},
    {"get 64 HKLM\\SOFTWARE\\Wow6432Node\\Firm\\Tool > Name", "\"Name\"=\"32\""},
    {"get 32 HKLM\\SOFTWARE\\Wow6432Node\\Firm\\Tool > Name", "\"Name\"=\"32\""},
    {"open 32 HKLM\\SOFTWARE\\Firm\\Tool\\Sub", "Absent"},
    // Redirected and shared places.
    {"values 64 HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs",
     "\"a\"=dword:00000001"},
    {"values 32 HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs",
     "\"b\"=dword:00000001"},
    {"keys 32 HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths", "x.exe"},
    {"keys 64 HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths", "x.exe"},
    {"get 64 HKLM\\SOFTWARE\\Classes\\CLSID\\{A}\\InprocServer32 > ", "@=\"a64\""},
    {"get 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{A}\\InprocServer32 > ", "@=\"a32\""},
    {"get 64 HKLM\\SOFTWARE\\Wow6432Node\\Classes\\CLSID\\{A}\\InprocServer32 > ", "@=\"a32\""},
    {"open 32 HKLM\\SOFTWARE\\Classes\\TypeLib\\{T}", "0 0"},
    {"open 64 HKCR\\Wow6432Node\\TypeLib\\{T}", "0 0"},
    {"open 64 HKCR\\Wow6432Node\\CLSID\\{A}", "1 0"},
    // The merged classes root.
    {"keys 64 HKCR\\CLSID", "{a},{B}"},
    {"keys 32 HKCR\\CLSID", "{A},{C}"},
    {"open 64 HKCR\\CLSID\\{A}", "1 1"},
    {"get 32 HKCR\\CLSID\\{A}\\InprocServer32 > ", "@=\"a32\""},
    {"values 64 HKCR\\.abc", "@=\"user\",\"Mine\"=\"user\",\"Only\"=\"machine\""},
    {"get 32 HKCR\\.abc > Only", "\"Only\"=\"machine\""},
    {"get 32 HKCR\\.abc > ", "@=\"user\""},
    {"keys 32 HKCR\\.abc", "Machine,User"},
    {"open 64 HKCR\\.abc", "2 3"},
    {"open 64 HKCR\\.none", "Absent"},
    // Users and control sets.
    {"get 64 HKCU\\Software\\Firm > x", "\"x\"=\"u\""},
    {"keys 64 HKCU\\Software\\Classes\\.abc", "User"},
    {"keys 32 HKCU\\Software\\Classes\\CLSID", "{C}"},
    {"get 64 HKLM\\SYSTEM\\CurrentControlSet\\Services\\Thing > Start", "\"Start\"=dword:00000002"},
    {"open 64 HKLM\\SYSTEM\\ControlSet001\\Services\\Thing", "0 1"},
    {"open 64 HKLM\\SYSTEM\\ControlSet007", "Absent"},
    {"open 64 HKLM\\HARDWARE\\DESCRIPTION", "Unknown", kHivesUnknown},
    {"open 64 HKU\\S-1-5-21-9-9-9-9\\Software", "Unknown", kHivesUnknown},
    {"canwrite 64 HKCU\\Software\\Firm", "Ok"},
    {"candelete 64 HKCU\\Software\\Nothing", "Absent"},
};

const AskRow kFileRows[] = {
    {"stat disk C:\\Windows\\System32\\both.dll", "file 1"},
    {"stat 32 C:\\Windows\\System32\\both.dll", "file 7"},
    {"stat 32 C:\\windows\\SYSTEM32\\only64.dll", "Absent"},
    {"stat 32 C:\\Windows\\System32\\only32.dll", "file 1"},
    {"stat disk C:\\Windows\\System32\\only32.dll", "Absent"},
    {"stat 32 C:\\Windows\\Sysnative\\only64.dll", "file 1"},
    {"stat disk C:\\Windows\\Sysnative\\only64.dll", "Absent", kNoSysnative},
    {"read 32 C:\\Windows\\System32\\drivers\\etc\\hosts", "127.0.0.1"},
    {"read disk c:\\DATA\\readme.txt", "hello"},
    {"stat disk C:/Data/.\\x\\..\\readme.txt", "file 5"},
    {"stat disk C:\\Data\\readme.txt. ", "file 5"},
    {"stat disk C:\\Data\\", "folder"},
    {"list disk C:\\Data", "Empty\\,Readme.TXT"},
    {"list disk C:\\Data\\Empty", ""},
    {"list disk C:\\Data\\None", "Absent"},
    {"stat disk C:\\Data\\None\\Below", "Absent"},
    {"stat disk C:\\Data\\READM~9.TXT", "Unknown"},
    {"stat disk Q:\\x", "Unknown"},
    {"stat disk \\\\server\\share\\x", "Unknown"},
    {"stat disk C:\\Data\\NUL", "file Unknown"},
    {"drive disk C", "1"},
    {"drive disk Q", "0"},
};

// In this order: each begins where the one before has left off.
const AskRow kChanges[] = {
    {"drop 64 HKCR\\.abc > ", "Ok"},
    {"get 64 HKCR\\.abc > ", "@=\"machine\""},
    // The machine's value that came to light is no longer the one that was meant.
    {"drop 64 HKCR\\.abc > ", "Absent"},
    {"delete 64 HKCR\\CLSID\\{A}", "Ok"},
    {"open 64 HKCU\\Software\\Classes\\CLSID\\{A}", "Absent"},
    {"open 64 HKLM\\SOFTWARE\\Classes\\CLSID\\{A}", "1 0"},
    {"delete 64 HKCR\\CLSID\\{A}\\InprocServer32", "Absent"},
    {"delete 64 HKCR\\CLSID\\{A}", "Absent"},
    {"delete 32 HKCR\\CLSID\\{A}", "Ok"},
    {"open 32 HKLM\\SOFTWARE\\Classes\\CLSID\\{A}", "Absent"},
    {"delete 64 HKCR\\CLSID\\{B}", "Ok"},
    {"set 64 HKCR\\.abc > New=1", "Ok"},
    {"values 64 HKCU\\Software\\Classes\\.abc", "\"Mine\"=\"user\",\"New\"=\"1\""},
    {"create 64 HKCR\\.abc\\User\\Fresh", "Ok"},
    {"keys 64 HKLM\\SOFTWARE\\Classes\\.abc", "Machine,User"},
    {"set 32 HKLM\\SOFTWARE\\Made > v=1", "Ok"},
    {"get 64 HKLM\\SOFTWARE\\Wow6432Node\\Made > v", "\"v\"=\"1\""},
    {"delete 64 HKLM\\SYSTEM\\CurrentControlSet\\Services\\Thing", "Ok"},
    {"open 64 HKLM\\SYSTEM\\ControlSet001\\Services\\Thing", "Absent"},
    {"delete 64 HKLM\\SOFTWARE", "Denied"},
    {"delete 64 HKCU\\", "Denied"},
    // One key that may not go keeps all of them.
    {"delete 64 HKLM\\SOFTWARE\\Firm\\Kept", "Denied"},
    {"keys 64 HKLM\\SOFTWARE\\Firm\\Kept", "First,Second"},
    {"force 64 HKLM\\SOFTWARE\\Firm\\Kept", "Ok"},
    {"open 64 HKLM\\SOFTWARE\\Firm\\Kept", "Absent"},
};

const AskRow kFileChanges[] = {
    {"rmdir disk C:\\Data", "Denied"},
    {"erase disk C:\\Data\\Readme.txt", "Ok"},
    {"erase disk C:\\Data\\Readme.txt", "Absent"},
    {"rmdir disk C:\\Data\\Empty", "Ok"},
    {"rmdir disk C:\\Data", "Ok"},
    {"stat disk C:\\Data", "Absent"},
};

}  // namespace

TEST_P(BackendContract, Registry) {
  const auto world = GetParam().make(Text());
  for (int round = 0; round < 2; ++round)  // the second time from what was kept of the first
    CheckRows(world->Registry(), kRegistryRows, GetParam().lacks);
  const std::string user = std::string("get 64 HKU\\") + kSid + "\\Software\\Firm > x";
  EXPECT_EQ(Ask(world->Registry(), user), "\"x\"=\"u\"");
}

TEST_P(BackendContract, Files) {
  const auto world = GetParam().make(Text());
  CheckRows(world->Files(), kFileRows, GetParam().lacks);
}

TEST_P(BackendContract, Changes) {
  if (!GetParam().writes) return;
  const auto world = GetParam().make(Text());
  CheckRows(world->Registry(), kChanges, GetParam().lacks);
  CheckRows(world->Files(), kFileChanges, GetParam().lacks);
}

}  // namespace scrubwell::test
