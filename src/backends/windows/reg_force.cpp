#include "backends/windows/reg_force.h"

#include <algorithm>
#include <array>
#include <functional>
#include <memory>

#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

constexpr int kMaxDepth = 512;  // the system's own limit
constexpr REGSAM kToDelete = DELETE | KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE;
constexpr SECURITY_INFORMATION kOwner = OWNER_SECURITY_INFORMATION;
constexpr SECURITY_INFORMATION kList = DACL_SECURITY_INFORMATION;

/// Switches privileges on and, in the end, back to what they were.
class Privileges {
 public:
  Privileges() {
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY,
                         token_.Out()) == FALSE)
      return;
    constexpr std::array<const wchar_t*, 2> kNames = {SE_TAKE_OWNERSHIP_NAME, SE_RESTORE_NAME};
    for (std::size_t i = 0; i < kNames.size(); ++i) {
      TOKEN_PRIVILEGES wanted{};
      wanted.PrivilegeCount = 1;
      wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
      if (LookupPrivilegeValueW(nullptr, kNames[i], &wanted.Privileges[0].Luid) == FALSE) continue;
      DWORD size = sizeof before_[i];
      AdjustTokenPrivileges(token_.Get(), FALSE, &wanted, size, &before_[i], &size);
    }
  }
  ~Privileges() {
    for (TOKEN_PRIVILEGES& before : before_) {
      if (before.PrivilegeCount != 0)
        AdjustTokenPrivileges(token_.Get(), FALSE, &before, 0, nullptr, nullptr);
    }
  }
  Privileges(const Privileges&) = delete;
  Privileges& operator=(const Privileges&) = delete;

 private:
  OwnedHandle token_;
  std::array<TOKEN_PRIVILEGES, 2> before_{};  // empty where nothing was changed
};

using Sid = std::array<std::uint8_t, SECURITY_MAX_SID_SIZE>;

bool Administrators(Sid& sid) {
  DWORD size = static_cast<DWORD>(sid.size());
  return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid.data(), &size) != FALSE;
}

Bytes SecurityOf(const RegKey& key, SECURITY_INFORMATION parts) {
  DWORD size = 0;
  if (RegGetKeySecurity(key.Get(), parts, nullptr, &size) != ERROR_INSUFFICIENT_BUFFER) return {};
  Bytes descriptor(size);
  const LSTATUS error = RegGetKeySecurity(key.Get(), parts, descriptor.data(), &size);
  return error == ERROR_SUCCESS ? descriptor : Bytes();
}

bool SetSecurity(const RegKey& key, SECURITY_INFORMATION parts, void* descriptor) {
  return RegSetKeySecurity(key.Get(), parts, descriptor) == ERROR_SUCCESS;
}

/// Opens the same place again and again with other rights.
using Opener = std::function<Status(REGSAM access, RegKey& out)>;

/// Makes one key deletable for as long as it lives.
class Takeover {
 public:
  explicit Takeover(Opener open) : open_(std::move(open)) {}
  ~Takeover() {
    if (!gone_) GiveBack();
  }
  Takeover(const Takeover&) = delete;
  Takeover& operator=(const Takeover&) = delete;

  bool Take() {
    RegKey key;
    if (open_(READ_CONTROL, key) == Status::Ok) {
      owner_ = SecurityOf(key, kOwner);
      list_ = SecurityOf(key, kList);
    }
    Sid sid;
    SECURITY_DESCRIPTOR descriptor;
    if (!Administrators(sid)) return false;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorOwner(&descriptor, sid.data(), FALSE);
    if (open_(WRITE_OWNER, key) == Status::Ok && SetSecurity(key, kOwner, &descriptor))
      ownerSet_ = true;
    if (open_(WRITE_DAC | READ_CONTROL, key) != Status::Ok) return false;
    if (list_.empty()) list_ = SecurityOf(key, kList);  // an owner may always read it
    return listSet_ = AllowAll(key, sid);
  }
  /// The key was deleted; there is nothing to give back.
  void Gone() { gone_ = true; }

 private:
  static bool AllowAll(const RegKey& key, Sid& sid) {
    std::array<std::uint8_t, 256> buffer{};
    auto* const list = reinterpret_cast<ACL*>(buffer.data());
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    return InitializeAcl(list, static_cast<DWORD>(buffer.size()), ACL_REVISION) != FALSE &&
           AddAccessAllowedAce(list, ACL_REVISION, KEY_ALL_ACCESS, sid.data()) != FALSE &&
           SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE) != FALSE &&
           SetSecurity(key, kList, &descriptor);
  }

  void GiveBack() {
    RegKey key;
    if (listSet_ && !list_.empty() && open_(WRITE_DAC, key) == Status::Ok)
      SetSecurity(key, kList, list_.data());
    if (ownerSet_ && !owner_.empty() && open_(WRITE_OWNER, key) == Status::Ok)
      SetSecurity(key, kOwner, owner_.data());
  }

  Opener open_;
  Bytes owner_;
  Bytes list_;
  bool ownerSet_ = false;
  bool listSet_ = false;
  bool gone_ = false;
};

/// One run over a subtree.
class TreeDeletion {
 public:
  explicit TreeDeletion(bool force) : force_(force) {
    if (force) privileges_ = std::make_unique<Privileges>();
  }

  /// Deletes what `open` opens, with all below.
  Status Delete(const Opener& open, int depth) {
    if (depth > kMaxDepth) return Status::Unknown;
    RegKey key;
    Takeover takeover(open);
    Status status = open(kToDelete, key);
    if (status == Status::Denied && force_ && takeover.Take()) status = open(kToDelete, key);
    if (status != Status::Ok) return status;
    TStringList names;
    status = key.Subkeys(names);
    for (const UnicodeString& name : names) {
      if (status != Status::Ok) return status;
      status = Delete(Below(key, name), depth + 1);
      if (status == Status::Absent) status = Status::Ok;  // somebody else was faster
    }
    if (status == Status::Ok) status = key.Erase();
    if (status == Status::Ok) takeover.Gone();
    return status;
  }

  /// Whether Delete would be let do all of it.
  static Status Test(const Opener& open, int depth) {
    RegKey key;
    if (depth > kMaxDepth) return Status::Unknown;
    Status status = open(kToDelete, key);
    TStringList names;
    if (status == Status::Ok) status = key.Subkeys(names);
    for (auto name = names.begin(); status == Status::Ok && name != names.end(); ++name) {
      status = Test(Below(key, *name), depth + 1);
      if (status == Status::Absent) status = Status::Ok;
    }
    return status;
  }

 private:
  static Opener Below(const RegKey& parent, const UnicodeString& name) {
    return [&parent, &name](REGSAM access, RegKey& out) {
      return out.OpenBelow(parent, name, access, true);
    };
  }

  bool force_;
  std::unique_ptr<Privileges> privileges_;
};

// "\REGISTRY\MACHINE\SOFTWARE" is a hive: its root can't go, and its content must not.
bool LiesInHive(UnicodeView physicalName) {
  constexpr auto kSlashesOfHive = 3;
  return std::count(physicalName.begin(), physicalName.end(), u'\\') > kSlashesOfHive;
}

}  // namespace

Status DeleteTree(HKEY root, UnicodeView path, REGSAM view, bool force) {
  const Opener open = [root, path, view](REGSAM access, RegKey& out) {
    return out.Open(root, path, access | view, true);
  };
  TreeDeletion deletion(force);
  RegKey key;
  // Any right is enough to ask for the name.
  Status status = Status::Denied;
  constexpr std::array<REGSAM, 4> kRights = {KEY_QUERY_VALUE, READ_CONTROL, DELETE, WRITE_OWNER};
  for (const REGSAM right : kRights) {
    if (status == Status::Denied) status = open(right, key);
  }
  if (status != Status::Ok) return status;
  if (!LiesInHive(key.PhysicalName())) return Status::Denied;
  if (!force) status = TreeDeletion::Test(open, 0);
  return status == Status::Ok ? deletion.Delete(open, 0) : status;
}

}  // namespace scrubwell::windows
