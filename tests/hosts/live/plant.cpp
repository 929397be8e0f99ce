// Furnishes the Windows it runs on with one entry of each kind that leads nowhere, through the
// system's own functions:
//
//   plant         makes them
//   plant show    prints of each whether it is there, word for word as it was made
#include "backends/windows/com.h"

// After the general headers.
#include <initguid.h>
#include <mstask.h>
#include <wininet.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

using namespace scrubwell::windows;

struct Value {
  const char* what;
  HKEY root;
  const wchar_t* key;
  REGSAM view;
  const wchar_t* name;
  const wchar_t* data;
};

constexpr wchar_t kEvent[] = L"AppEvents\\Schemes\\Apps\\.Default\\.Default\\.Current";
constexpr wchar_t kFonts[] = L"Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";
constexpr wchar_t kClass64[] =
    L"Software\\Classes\\CLSID\\{5C2B0E64-0000-4000-8000-000000000064}\\InprocServer32";
constexpr wchar_t kClass32[] =
    L"Software\\Classes\\CLSID\\{5C2B0E64-0000-4000-8000-000000000032}\\InprocServer32";
constexpr wchar_t kUninstall[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Scrubgone M\u00f6we";

const Value kValues[] = {
    {"sound", HKEY_CURRENT_USER, kEvent, 0, L"", L"C:\\scrubgone\\horn.wav"},
    {"font", HKEY_LOCAL_MACHINE, kFonts, KEY_WOW64_64KEY, L"Scrubgone (TrueType)",
     L"scrubgone.ttf"},
    {"class 64", HKEY_LOCAL_MACHINE, kClass64, KEY_WOW64_64KEY, L"", L"C:\\scrubgone\\class64.dll"},
    {"class 32", HKEY_LOCAL_MACHINE, kClass32, KEY_WOW64_32KEY, L"", L"C:\\scrubgone\\class32.dll"},
    {"uninstall", HKEY_LOCAL_MACHINE, kUninstall, KEY_WOW64_32KEY, L"UninstallString",
     L"C:\\scrubgone\\uninstall.exe"},
    {"uninstall name", HKEY_LOCAL_MACHINE, kUninstall, KEY_WOW64_32KEY, L"DisplayName",
     L"Scrubgone M\u00f6we"},
};

constexpr wchar_t kTask[] = L"Scrubgone t\u00e4sk";
constexpr wchar_t kTaskProgram[] = L"C:\\scrubgone\\task.exe";
constexpr wchar_t kVisited[] = L"Visited: tester@file:///C:/scrubgone/seen.txt";

bool Make(const Value& value) {
  HKEY key = nullptr;
  if (RegCreateKeyExW(value.root, value.key, 0, nullptr, 0, KEY_SET_VALUE | value.view, nullptr,
                      &key, nullptr) != ERROR_SUCCESS) {
    return false;
  }
  const auto size = static_cast<DWORD>((wcslen(value.data) + 1) * sizeof(wchar_t));
  const LSTATUS status =
      RegSetValueExW(key, value.name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.data), size);
  RegCloseKey(key);
  return status == ERROR_SUCCESS;
}

bool IsThere(const Value& value) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(value.root, value.key, 0, KEY_QUERY_VALUE | value.view, &key) !=
      ERROR_SUCCESS) {
    return false;
  }
  wchar_t data[MAX_PATH] = L"";
  DWORD size = sizeof(data) - sizeof(wchar_t);
  DWORD type = 0;
  const LSTATUS status =
      RegQueryValueExW(key, value.name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size);
  RegCloseKey(key);
  return status == ERROR_SUCCESS && type == REG_SZ && wcscmp(data, value.data) == 0;
}

ComPtr<ITaskScheduler> Scheduler() {
  ComPtr<ITaskScheduler> scheduler;
  CoCreateInstance(CLSID_CTaskScheduler, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskScheduler,
                   scheduler.OutVoid());
  return scheduler;
}

bool MakeTask() {
  ComPtr<IUnknown> item;
  ComPtr<ITask> task;
  ComPtr<IPersistFile> file;
  const ComPtr<ITaskScheduler> scheduler = Scheduler();
  if (!scheduler.Good()) return false;
  scheduler->Delete(kTask);
  return scheduler->NewWorkItem(kTask, CLSID_CTask, IID_ITask, item.Out()) == S_OK &&
         item->QueryInterface(IID_ITask, task.OutVoid()) == S_OK &&
         task->SetApplicationName(kTaskProgram) == S_OK &&
         task->QueryInterface(IID_IPersistFile, file.OutVoid()) == S_OK &&
         file->Save(nullptr, TRUE) == S_OK;
}

bool IsTaskThere() {
  ComPtr<IUnknown> item;
  ComPtr<ITask> task;
  TaskText program;
  const ComPtr<ITaskScheduler> scheduler = Scheduler();
  return scheduler.Good() && scheduler->Activate(kTask, IID_ITask, item.Out()) == S_OK &&
         item->QueryInterface(IID_ITask, task.OutVoid()) == S_OK &&
         task->GetApplicationName(program.Out()) == S_OK &&
         program.Text() == FromWide(kTaskProgram);
}

bool MakeVisited() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return CommitUrlCacheEntryW(kVisited, nullptr, FILETIME{}, now, URLHISTORY_CACHE_ENTRY, nullptr,
                              0, nullptr, nullptr) != FALSE;
}

bool IsVisitedThere() {
  DWORD size = 0;
  GetUrlCacheEntryInfoW(kVisited, nullptr, &size);
  return GetLastError() == ERROR_INSUFFICIENT_BUFFER;
}

}  // namespace

int main(int argc, char** argv) {
  const ComApartment apartment;
  const bool show = argc > 1 && std::strcmp(argv[1], "show") == 0;
  bool all = true;
  const auto report = [&all](const char* what, bool good) {
    std::printf("%s: %s\n", what, good ? "there" : "gone");
    all = all && good;
  };
  for (const Value& value : kValues) report(value.what, show ? IsThere(value) : Make(value));
  report("task", show ? IsTaskThere() : MakeTask());
  report("visited", show ? IsVisitedThere() : MakeVisited());
  return all || show ? 0 : 1;
}
