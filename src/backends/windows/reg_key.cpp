#include "backends/windows/reg_key.h"

#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstring>

// Not in the headers for programs. All of it has been there, unchanged, since Windows 2000.
extern "C" {
NTSTATUS NTAPI NtOpenKey(PHANDLE key, ACCESS_MASK access, POBJECT_ATTRIBUTES attributes);
NTSTATUS NTAPI NtCreateKey(PHANDLE key, ACCESS_MASK access, POBJECT_ATTRIBUTES attributes,
                           ULONG titleIndex, PUNICODE_STRING className, ULONG options,
                           PULONG disposition);
NTSTATUS NTAPI NtDeleteKey(HANDLE key);
NTSTATUS NTAPI NtQueryKey(HANDLE key, int kind, PVOID data, ULONG size, PULONG needed);
NTSTATUS NTAPI NtQueryValueKey(HANDLE key, PUNICODE_STRING name, int kind, PVOID data, ULONG size,
                               PULONG needed);
NTSTATUS NTAPI NtSetValueKey(HANDLE key, PUNICODE_STRING name, ULONG titleIndex, ULONG type,
                             PVOID data, ULONG size);
NTSTATUS NTAPI NtDeleteValueKey(HANDLE key, PUNICODE_STRING name);
}

namespace scrubwell::windows {
namespace {

constexpr int kKeyNameInformation = 3;
constexpr int kValueFullInformation = 1;
constexpr ULONG kOpenLink = 0x100;  // of object attributes
constexpr NTSTATUS kBufferOverflow = static_cast<NTSTATUS>(0x80000005);
constexpr NTSTATUS kBufferTooSmall = static_cast<NTSTATUS>(0xC0000023);
constexpr std::size_t kMaxCountedUnits = 32767;
constexpr DWORD kMaxValueName = 16384;
// A value that grows at every look, or a provider that always wants more, must come to an end.
constexpr int kMaxTries = 8;

// The layout of a value's full information up to its name, which spells it as it is stored.
struct FullHeader {
  ULONG titleIndex;
  ULONG type;
  ULONG dataOffset;
  ULONG dataLength;
  ULONG nameLength;
};

bool Counted(UnicodeView text, UNICODE_STRING& out) {
  if (text.size() > kMaxCountedUnits) return false;
  out.Length = static_cast<USHORT>(text.size() * 2);
  out.MaximumLength = out.Length;
  out.Buffer = const_cast<wchar_t*>(reinterpret_cast<const wchar_t*>(text.data()));
  return true;
}

OBJECT_ATTRIBUTES Attributes(HKEY parent, UNICODE_STRING& name, bool asLink) {
  OBJECT_ATTRIBUTES attributes{};
  attributes.Length = sizeof attributes;
  attributes.RootDirectory = parent;
  attributes.ObjectName = &name;
  attributes.Attributes = OBJ_CASE_INSENSITIVE | (asLink ? kOpenLink : 0);
  return attributes;
}

Status StatusOfNt(NTSTATUS status) {
  return status >= 0 ? Status::Ok : StatusOfError(RtlNtStatusToDosError(status));
}

// Where the component begins that holds the first NUL; the path's end when there is none.
std::size_t CountedFrom(UnicodeView path) {
  const std::size_t nul = path.find(u'\0');
  if (nul == UnicodeView::npos) return path.size();
  const std::size_t slash = path.rfind(u'\\', nul);
  return slash == UnicodeView::npos ? 0 : slash + 1;
}

UnicodeString Before(UnicodeView path, std::size_t from) {
  return UnicodeString(path.substr(0, from == 0 ? 0 : from - (from < path.size() ? 1 : 0)));
}

}  // namespace

HKEY RootHandle(RootKey root) {
  switch (root) {
    case RootKey::CurrentUser:
      return HKEY_CURRENT_USER;
    case RootKey::LocalMachine:
      return HKEY_LOCAL_MACHINE;
    case RootKey::Users:
      return HKEY_USERS;
    case RootKey::CurrentConfig:
      return HKEY_CURRENT_CONFIG;
    default:
      return nullptr;
  }
}

// Since Windows 7.
using NtOpenKeyEx = NTSTATUS NTAPI(PHANDLE, ACCESS_MASK, POBJECT_ATTRIBUTES, ULONG);

Status RegKey::OpenAt(HKEY parent, UnicodeView path, REGSAM access, bool asLink, DWORD options) {
  static auto* const openEx = SystemFunction<NtOpenKeyEx>(L"ntdll", "NtOpenKeyEx");
  UNICODE_STRING name;
  if (!Counted(path, name)) return Status::Unknown;
  if (options != 0 && openEx == nullptr) return Status::Denied;
  OBJECT_ATTRIBUTES attributes = Attributes(parent, name, asLink);
  HANDLE opened = nullptr;
  const NTSTATUS status = options == 0 ? NtOpenKey(&opened, access, &attributes)
                                       : openEx(&opened, access, &attributes, options);
  key_ = Owned<HKEY, &RegCloseKey>(static_cast<HKEY>(opened));
  return StatusOfNt(status);
}

Status RegKey::OpenWith(HKEY root, UnicodeView path, REGSAM access, DWORD options) {
  const std::size_t counted = CountedFrom(path);
  const bool isWhole = counted == path.size();
  const UnicodeString plain = Before(path, counted);
  constexpr REGSAM kViews = KEY_WOW64_32KEY | KEY_WOW64_64KEY;
  const REGSAM wanted = isWhole ? access : KEY_ENUMERATE_SUB_KEYS | (access & kViews);
  Owned<HKEY, &RegCloseKey> opened;
  const LSTATUS error =
      RegOpenKeyExW(root, Wide(plain), isWhole ? options : 0, wanted, opened.Out());
  if (error != ERROR_SUCCESS) return StatusOfError(static_cast<DWORD>(error));
  const bool asLink = (options & REG_OPTION_OPEN_LINK) != 0;
  if (!isWhole) {
    return OpenAt(opened.Get(), path.substr(counted), access, asLink,
                  options & ~static_cast<DWORD>(REG_OPTION_OPEN_LINK));
  }
  key_ = std::move(opened);
  return Status::Ok;
}

Status RegKey::Open(HKEY root, UnicodeView path, REGSAM access, bool asLink) {
  return OpenWith(root, path, access, asLink ? REG_OPTION_OPEN_LINK : 0);
}

Status RegKey::OpenToSave(HKEY root, UnicodeView path, REGSAM access) {
  const Status status = OpenWith(root, path, access, REG_OPTION_OPEN_LINK);
  if (status != Status::Denied) return status;
  return OpenWith(root, path, access, REG_OPTION_OPEN_LINK | REG_OPTION_BACKUP_RESTORE);
}

Status RegKey::OpenBelowToSave(const RegKey& parent, UnicodeView name, REGSAM access) {
  const Status status = OpenAt(parent.Get(), name, access | KEY_WOW64_64KEY, true);
  if (status != Status::Denied) return status;
  return OpenAt(parent.Get(), name, access | KEY_WOW64_64KEY, true, REG_OPTION_BACKUP_RESTORE);
}

Status RegKey::CreateBelow(const RegKey& parent, UnicodeView name, UnicodeView className,
                           bool asLink, REGSAM access) {
  UNICODE_STRING counted;
  UNICODE_STRING countedClass;
  if (!Counted(name, counted) || !Counted(className, countedClass)) return Status::Unknown;
  OBJECT_ATTRIBUTES attributes = Attributes(parent.Get(), counted, asLink);
  HANDLE made = nullptr;
  ULONG disposition = 0;
  const NTSTATUS status = NtCreateKey(&made, access | KEY_WOW64_64KEY, &attributes, 0,
                                      className.empty() ? nullptr : &countedClass,
                                      asLink ? REG_OPTION_CREATE_LINK : 0, &disposition);
  key_ = Owned<HKEY, &RegCloseKey>(static_cast<HKEY>(made));
  if (status >= 0 && disposition != REG_CREATED_NEW_KEY) return Status::Denied;
  return StatusOfNt(status);
}

Status RegKey::OpenBelow(const RegKey& parent, UnicodeView path, REGSAM access, bool asLink) {
  return OpenAt(parent.Get(), path, access | KEY_WOW64_64KEY, asLink);
}

Status RegKey::Create(HKEY root, UnicodeView path, REGSAM access) {
  const std::size_t counted = CountedFrom(path);
  const UnicodeString plain = Before(path, counted);
  Owned<HKEY, &RegCloseKey> made;
  LSTATUS error = RegCreateKeyExW(root, Wide(plain), 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                  nullptr, made.Out(), nullptr);
  for (std::size_t from = counted; error == ERROR_SUCCESS && from < path.size();) {
    const std::size_t to = std::min(path.find(u'\\', from), path.size());
    UNICODE_STRING name;
    if (!Counted(path.substr(from, to - from), name)) return Status::Unknown;
    OBJECT_ATTRIBUTES attributes = Attributes(made.Get(), name, false);
    HANDLE child = nullptr;
    const NTSTATUS status =
        NtCreateKey(&child, access, &attributes, 0, nullptr, REG_OPTION_NON_VOLATILE, nullptr);
    if (status < 0) return StatusOfNt(status);
    made = Owned<HKEY, &RegCloseKey>(static_cast<HKEY>(child));
    from = to + 1;
  }
  if (error != ERROR_SUCCESS) return StatusOfError(static_cast<DWORD>(error));
  key_ = std::move(made);
  return Status::Ok;
}

UnicodeString RegKey::PhysicalName() const {
  ULONG needed = 0;
  NtQueryKey(Get(), kKeyNameInformation, nullptr, 0, &needed);
  if (needed <= sizeof(ULONG)) return {};
  std::vector<std::uint8_t> buffer(needed);
  if (NtQueryKey(Get(), kKeyNameInformation, buffer.data(), needed, &needed) < 0) return {};
  ULONG length = 0;  // in bytes, in front of the name
  std::memcpy(&length, buffer.data(), sizeof length);
  length = std::min<ULONG>(length, static_cast<ULONG>(buffer.size() - sizeof length));
  UnicodeString name(length / 2, u'\0');
  std::memcpy(name.data(), buffer.data() + sizeof length, name.size() * 2);
  return name;
}

Status RegKey::Info(KeyInfo& out) const {
  DWORD subkeys = 0;
  DWORD values = 0;
  const LSTATUS error = RegQueryInfoKeyW(Get(), nullptr, nullptr, nullptr, &subkeys, nullptr,
                                         nullptr, &values, nullptr, nullptr, nullptr, nullptr);
  out = {subkeys, values};
  return StatusOfError(static_cast<DWORD>(error));
}

Status RegKey::ClassName(UnicodeString& out) const {
  LSTATUS error = ERROR_MORE_DATA;
  for (DWORD size = 64; error == ERROR_MORE_DATA && size <= kMaxCountedUnits; size *= 4) {
    DWORD length = size;
    out.assign(size, u'\0');
    error = RegQueryInfoKeyW(Get(), WideBuffer(out), &length, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr);
    out.resize(std::min(length, size));
  }
  return StatusOfError(static_cast<DWORD>(error));
}

std::uint64_t RegKey::LastWritten() const {
  FILETIME time{};
  const LSTATUS error = RegQueryInfoKeyW(Get(), nullptr, nullptr, nullptr, nullptr, nullptr,
                                         nullptr, nullptr, nullptr, nullptr, nullptr, &time);
  if (error != ERROR_SUCCESS) return 0;
  return std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime;
}

Status RegKey::SetLastWritten(std::uint64_t time) const {
  LARGE_INTEGER value;
  value.QuadPart = static_cast<LONGLONG>(time);
  return StatusOfNt(NtSetInformationKey(Get(), KeyWriteTimeInformation, &value, sizeof value));
}

Bytes RegKey::Security(SECURITY_INFORMATION parts) const {
  DWORD size = 0;
  if (RegGetKeySecurity(Get(), parts, nullptr, &size) != ERROR_INSUFFICIENT_BUFFER) return {};
  Bytes descriptor(size);
  const LSTATUS error = RegGetKeySecurity(Get(), parts, descriptor.data(), &size);
  return error == ERROR_SUCCESS ? descriptor : Bytes();
}

Status RegKey::SetSecurity(SECURITY_INFORMATION parts, const void* descriptor) const {
  // The function only reads it, but its declaration does not say so.
  const LSTATUS error = RegSetKeySecurity(Get(), parts, const_cast<void*>(descriptor));
  return StatusOfError(static_cast<DWORD>(error));
}

Status RegKey::Subkeys(TStringList& out) const {
  out.clear();
  UnicodeString name(256, u'\0');
  for (DWORD index = 0;; ++index) {
    LSTATUS error = ERROR_MORE_DATA;
    DWORD length = 0;
    for (int tries = 0; error == ERROR_MORE_DATA && tries < kMaxTries; ++tries) {
      if (tries > 0) name.resize(name.size() * 2);
      length = static_cast<DWORD>(name.size());
      error = RegEnumKeyExW(Get(), index, WideBuffer(name), &length, nullptr, nullptr, nullptr,
                            nullptr);
    }
    if (error == ERROR_NO_MORE_ITEMS) return Status::Ok;
    // Some places answer with an error for ever; no later index is tried.
    if (error != ERROR_SUCCESS) return StatusOfError(static_cast<DWORD>(error));
    out.emplace_back(name, 0, length);
  }
}

Status RegKey::Values(std::vector<RegValue>& out) const {
  out.clear();
  UnicodeString name(kMaxValueName, u'\0');
  Bytes data(1024);
  for (DWORD index = 0;; ++index) {
    LSTATUS error = ERROR_MORE_DATA;
    DWORD length = 0;
    DWORD size = 0;
    DWORD type = 0;
    for (int tries = 0; error == ERROR_MORE_DATA && tries < kMaxTries; ++tries) {
      if (tries > 0) data.resize(std::max<std::size_t>(size, data.size() * 2));
      length = kMaxValueName;
      size = static_cast<DWORD>(data.size());
      error = RegEnumValueW(Get(), index, WideBuffer(name), &length, nullptr, &type, data.data(),
                            &size);
    }
    if (error == ERROR_NO_MORE_ITEMS) return Status::Ok;
    if (error != ERROR_SUCCESS) return StatusOfError(static_cast<DWORD>(error));
    out.push_back({UnicodeString(name, 0, length), type, Bytes(data.begin(), data.begin() + size)});
  }
}

Status RegKey::Value(UnicodeView name, RegValue& out) const {
  UNICODE_STRING counted;
  if (!Counted(name, counted)) return Status::Absent;  // no value's name is that long
  Bytes buffer(512);
  ULONG needed = 0;
  NTSTATUS status = kBufferOverflow;
  for (int tries = 0; tries < kMaxTries; ++tries) {
    if (tries > 0) buffer.resize(std::max<std::size_t>(needed, buffer.size() * 2));
    status = NtQueryValueKey(Get(), &counted, kValueFullInformation, buffer.data(),
                             static_cast<ULONG>(buffer.size()), &needed);
    if (status != kBufferOverflow && status != kBufferTooSmall) break;
  }
  if (status < 0) return StatusOfNt(status);
  FullHeader header{};
  std::memcpy(&header, buffer.data(), sizeof header);
  if (header.nameLength > buffer.size() - sizeof header || header.dataOffset > buffer.size() ||
      header.dataLength > buffer.size() - header.dataOffset)
    return Status::Corrupt;
  out.name.resize(header.nameLength / 2);
  std::memcpy(out.name.data(), buffer.data() + sizeof header, out.name.size() * 2);
  const auto begin = buffer.begin() + static_cast<std::ptrdiff_t>(header.dataOffset);
  out.type = header.type;
  out.data.assign(begin, begin + static_cast<std::ptrdiff_t>(header.dataLength));
  return Status::Ok;
}

Status RegKey::Put(const RegValue& value) const {
  UNICODE_STRING counted;
  if (!Counted(value.name, counted)) return Status::Denied;
  // The function only reads the bytes, but its declaration does not say so.
  return StatusOfNt(NtSetValueKey(Get(), &counted, 0, value.type,
                                  const_cast<std::uint8_t*>(value.data.data()),
                                  static_cast<ULONG>(value.data.size())));
}

Status RegKey::EraseValue(UnicodeView name) const {
  UNICODE_STRING counted;
  if (!Counted(name, counted)) return Status::Absent;
  return StatusOfNt(NtDeleteValueKey(Get(), &counted));
}

Status RegKey::Erase() const {
  return StatusOfNt(NtDeleteKey(Get()));
}

}  // namespace scrubwell::windows
