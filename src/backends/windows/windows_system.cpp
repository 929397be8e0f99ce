#include "backends/windows/windows_system.h"

#include <algorithm>
#include <array>

#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

/// Variables that differ between the processes of the two widths: one kind sees the other's value
/// under another name.
struct WidthVariable {
  UnicodeView name;
  UnicodeView of64;  // as a 32-bit process calls the other's
  UnicodeView of32;  // as a 64-bit process calls the other's
};
constexpr WidthVariable kWidthVariables[] = {
    {u"ProgramFiles", u"ProgramW6432", u"ProgramFiles(x86)"},
    {u"CommonProgramFiles", u"CommonProgramW6432", u"CommonProgramFiles(x86)"},
    {u"PROCESSOR_ARCHITECTURE", u"PROCESSOR_ARCHITEW6432", u""},
};

Status Variable(const UnicodeString& name, UnicodeString& out) {
  DWORD size = 256;
  for (;;) {
    out.resize(size);
    SetLastError(ERROR_SUCCESS);
    const DWORD length = GetEnvironmentVariableW(Wide(name), WideBuffer(out), size);
    if (length >= size) {
      size = length + 1;
      continue;
    }
    out.resize(length);
    if (length > 0) return Status::Ok;
    const DWORD error = GetLastError();
    if (error == ERROR_ENVVAR_NOT_FOUND) return Status::Absent;
    return StatusOfError(error);
  }
}

// The name under which this process knows what a process of that view has; empty when it doesn't.
UnicodeView NameInView(UnicodeView name, View view) {
  const bool other = sizeof(void*) == 8 ? view != View::Bits64 : view == View::Bits64;
  if (!other || !Is64BitSystem()) return name;
  for (const WidthVariable& variable : kWidthVariables) {
    if (SameText(name, variable.name)) return sizeof(void*) == 8 ? variable.of32 : variable.of64;
  }
  return name;
}

}  // namespace

Status WindowsSystem::Environment(UnicodeView name, View view, UnicodeString& out) {
  if (name.empty() || HasNul(name)) return Status::Absent;
  if (view == View::Invalid) return Status::Unknown;
  const UnicodeView known = NameInView(name, view);
  return known.empty() ? Status::Unknown : Variable(UnicodeString(known), out);
}

VersionNumber SystemVersion() {
  using GetVersionFunction = LONG WINAPI(OSVERSIONINFOW*);
  auto* const get = SystemFunction<GetVersionFunction>(L"ntdll", "RtlGetVersion");
  OSVERSIONINFOW info{};
  info.dwOSVersionInfoSize = sizeof info;
  if (get == nullptr || get(&info) < 0) return {};
  return {info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber};
}

OsVersion VersionOf(const VersionNumber& number) {
  constexpr std::uint32_t kFirstWin11 = 22000;
  struct Known {
    std::uint32_t major;
    std::uint32_t minor;
    OsVersion version;
  };
  constexpr Known kKnown[] = {{4, 0, OsVersion::WinNT4}, {5, 0, OsVersion::Win2000},
                              {5, 1, OsVersion::WinXP},  {5, 2, OsVersion::WinXP},
                              {6, 0, OsVersion::Vista},  {6, 1, OsVersion::Win7},
                              {6, 2, OsVersion::Win8},   {6, 3, OsVersion::Win81}};
  for (const Known& known : kKnown)
    if (known.major == number.major && known.minor == number.minor) return known.version;
  if (number.major >= 10) return number.build >= kFirstWin11 ? OsVersion::Win11 : OsVersion::Win10;
  return OsVersion::Unknown;
}

OsVersion WindowsSystem::Version() {
  return VersionOf(SystemVersion());
}

bool WindowsSystem::IsAdmin() {
  std::array<std::uint8_t, SECURITY_MAX_SID_SIZE> sid{};
  DWORD size = static_cast<DWORD>(sid.size());
  BOOL member = FALSE;
  return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid.data(), &size) != FALSE &&
         CheckTokenMembership(nullptr, sid.data(), &member) != FALSE && member != FALSE;
}

void WindowsSystem::SetFsRedirection(bool enabled) {
  if (enabled != disabled_) return;
  if (!windows::IsWow64()) {
    disabled_ = !enabled;
    return;
  }
  using Disable = BOOL WINAPI(void**);
  using Revert = BOOL WINAPI(void*);
  auto* const disable = SystemFunction<Disable>(L"kernel32", "Wow64DisableWow64FsRedirection");
  auto* const revert = SystemFunction<Revert>(L"kernel32", "Wow64RevertWow64FsRedirection");
  if (disable == nullptr || revert == nullptr) return;
  if (enabled ? revert(before_) != FALSE : disable(&before_) != FALSE) disabled_ = !enabled;
}

void WindowsSystem::PumpMessages() {
  constexpr int kAtMost = 100;  // a window that keeps posting must not hold up the scan
  MSG message;
  for (int i = 0; i < kAtMost && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE; ++i) {
    if (message.message == WM_QUIT) {
      PostQuitMessage(static_cast<int>(message.wParam));  // the host's loop is to see it
      return;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

// ---- Services -----------------------------------------------------------------------------

namespace {

Status OpenOneService(UnicodeView name, DWORD rights, OwnedService& manager,
                      OwnedService& service) {
  if (name.empty() || HasNul(name)) return Status::Unknown;
  manager = OwnedService(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  if (!manager.Good()) return StatusOfError(GetLastError());
  service = OwnedService(OpenServiceW(manager.Get(), Wide(UnicodeString(name)), rights));
  if (service.Good()) return Status::Ok;
  const DWORD error = GetLastError();
  return error == ERROR_SERVICE_DOES_NOT_EXIST ? Status::Absent : StatusOfError(error);
}

}  // namespace

Status WindowsServices::Query(UnicodeView service, ServiceInfo& out) {
  out = {};
  OwnedService manager;
  OwnedService opened;
  const Status status =
      OpenOneService(service, SERVICE_QUERY_STATUS | SERVICE_QUERY_CONFIG, manager, opened);
  if (status != Status::Ok) return status;
  SERVICE_STATUS state;
  if (QueryServiceStatus(opened.Get(), &state) == FALSE) return StatusOfError(GetLastError());
  out.state = state.dwCurrentState;
  DWORD needed = 0;
  QueryServiceConfigW(opened.Get(), nullptr, 0, &needed);
  // The structure holds pointers, so it needs their alignment.
  std::vector<QUERY_SERVICE_CONFIGW> buffer(needed / sizeof(QUERY_SERVICE_CONFIGW) + 1);
  if (QueryServiceConfigW(opened.Get(), buffer.data(), needed, &needed) == FALSE)
    return StatusOfError(GetLastError());
  out.startType = buffer[0].dwStartType;
  out.displayName = FromWide(buffer[0].lpDisplayName);
  return Status::Ok;
}

Status EnsureServiceRuns(UnicodeView service) {
  OwnedService manager;
  OwnedService opened;
  SERVICE_STATUS state{};
  Status status = OpenOneService(service, SERVICE_QUERY_STATUS, manager, opened);
  if (status == Status::Ok && QueryServiceStatus(opened.Get(), &state) != FALSE &&
      state.dwCurrentState == SERVICE_RUNNING)
    return Status::Ok;
  status = OpenOneService(service, SERVICE_START | SERVICE_QUERY_STATUS, manager, opened);
  if (status != Status::Ok) return status;
  if (StartServiceW(opened.Get(), 0, nullptr) == FALSE &&
      GetLastError() != ERROR_SERVICE_ALREADY_RUNNING) {
    return StatusOfError(GetLastError());
  }
  constexpr DWORD kStepMilliseconds = 50;
  constexpr int kSteps = 100;
  for (int i = 0; i < kSteps; ++i) {
    if (QueryServiceStatus(opened.Get(), &state) == FALSE) return Status::Unknown;
    if (state.dwCurrentState == SERVICE_RUNNING) return Status::Ok;
    if (state.dwCurrentState != SERVICE_START_PENDING) return Status::Unknown;
    Sleep(kStepMilliseconds);
  }
  return Status::Unknown;
}

// ---- Text ---------------------------------------------------------------------------------

int WindowsText::CompareText(UnicodeView a, UnicodeView b) {
  const auto wide = [](UnicodeView text) { return reinterpret_cast<const wchar_t*>(text.data()); };
  const int order = CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, a.empty() ? L"" : wide(a),
                                   static_cast<int>(a.size()), b.empty() ? L"" : wide(b),
                                   static_cast<int>(b.size()));
  return order == 0 ? CompareUpCase(a, b) : order - CSTR_EQUAL;
}

UnicodeString WindowsText::FromAnsi(std::string_view bytes) {
  if (bytes.empty()) return {};
  const int size = static_cast<int>(bytes.size());
  const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0);
  UnicodeString out(static_cast<std::size_t>(std::max(length, 0)), u'\0');
  MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, WideBuffer(out), length);
  return out;
}

std::string WindowsText::ToAnsi(UnicodeView text) {
  if (text.empty()) return {};
  // A similar letter in a name's place would be another name. The page of UTF-8 takes neither
  // flags nor a substitute, and needs none.
  const bool exact = GetACP() == CP_UTF8;
  const DWORD flags = exact ? 0 : WC_NO_BEST_FIT_CHARS;
  const char* const substitute = exact ? nullptr : "?";
  const auto* const units = reinterpret_cast<const wchar_t*>(text.data());
  const int size = static_cast<int>(text.size());
  const int length =
      WideCharToMultiByte(CP_ACP, flags, units, size, nullptr, 0, substitute, nullptr);
  std::string out(static_cast<std::size_t>(std::max(length, 0)), '\0');
  WideCharToMultiByte(CP_ACP, flags, units, size, out.data(), length, substitute, nullptr);
  return out;
}

}  // namespace scrubwell::windows
