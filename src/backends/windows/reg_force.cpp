#include "backends/windows/reg_force.h"

#include <algorithm>
#include <array>
#include <functional>
#include <memory>

#include "backends/windows/privileges.h"
#include "registry/Stringhelper.h"

namespace scrubwell::windows {
namespace {

constexpr int kMaxDepth = 512;  // the system's own limit
constexpr REGSAM kToDelete = DELETE | KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE;
constexpr const wchar_t* kTakeOver[] = {SE_TAKE_OWNERSHIP_NAME, SE_RESTORE_NAME};
constexpr SECURITY_INFORMATION kOwner = OWNER_SECURITY_INFORMATION;
constexpr SECURITY_INFORMATION kList = DACL_SECURITY_INFORMATION;

using Sid = std::array<std::uint8_t, SECURITY_MAX_SID_SIZE>;

bool Administrators(Sid& sid) {
  DWORD size = static_cast<DWORD>(sid.size());
  return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid.data(), &size) != FALSE;
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
      owner_ = key.Security(kOwner);
      list_ = key.Security(kList);
    }
    Sid sid;
    SECURITY_DESCRIPTOR descriptor;
    if (!Administrators(sid)) return false;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorOwner(&descriptor, sid.data(), FALSE);
    if (open_(WRITE_OWNER, key) == Status::Ok && key.SetSecurity(kOwner, &descriptor) == Status::Ok)
      ownerSet_ = true;
    if (open_(WRITE_DAC | READ_CONTROL, key) != Status::Ok) return false;
    if (list_.empty()) list_ = key.Security(kList);  // an owner may always read it
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
           key.SetSecurity(kList, &descriptor) == Status::Ok;
  }

  void GiveBack() {
    RegKey key;
    if (listSet_ && !list_.empty() && open_(WRITE_DAC, key) == Status::Ok)
      (void)key.SetSecurity(kList, list_.data());
    if (ownerSet_ && !owner_.empty() && open_(WRITE_OWNER, key) == Status::Ok)
      (void)key.SetSecurity(kOwner, owner_.data());
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
    if (force) privileges_ = std::make_unique<Privileges>(kTakeOver);
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

// "\REGISTRY\MACHINE\SOFTWARE" is a hive: its root can't go, and its content must not, nor that of
// the key which stands for it in the 32-bit view.
bool LiesInHive(UnicodeView physicalName) {
  constexpr auto kSlashesOfHive = 3;
  constexpr UnicodeView kWow = u"\\Wow6432Node";
  const std::size_t size = physicalName.size();
  if (size > kWow.size() && SameText(physicalName.substr(size - kWow.size()), kWow)) return false;
  return std::count(physicalName.begin(), physicalName.end(), u'\\') > kSlashesOfHive;
}

Opener OpenerOf(HKEY root, UnicodeView path, REGSAM view) {
  return [root, path, view](REGSAM access, RegKey& out) {
    return out.Open(root, path, access | view, true);
  };
}

// Ok for a key that is no hive's root.
Status Check(const Opener& open) {
  RegKey key;
  // Any right is enough to ask for the name.
  Status status = Status::Denied;
  constexpr std::array<REGSAM, 4> kRights = {KEY_QUERY_VALUE, READ_CONTROL, DELETE, WRITE_OWNER};
  for (const REGSAM right : kRights) {
    if (status == Status::Denied) status = open(right, key);
  }
  if (status != Status::Ok) return status;
  return LiesInHive(key.PhysicalName()) ? Status::Ok : Status::Denied;
}

}  // namespace

Status DeleteTree(HKEY root, UnicodeView path, REGSAM view, bool force) {
  const Opener open = OpenerOf(root, path, view);
  TreeDeletion deletion(force);
  Status status = Check(open);
  if (status == Status::Ok && !force) status = TreeDeletion::Test(open, 0);
  return status == Status::Ok ? deletion.Delete(open, 0) : status;
}

Status MayDeleteTree(HKEY root, UnicodeView path, REGSAM view) {
  const Opener open = OpenerOf(root, path, view);
  const Status status = Check(open);
  return status == Status::Ok ? TreeDeletion::Test(open, 0) : status;
}

}  // namespace scrubwell::windows
