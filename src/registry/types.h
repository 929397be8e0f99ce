// The vocabulary of the access layer: text, roots, views, outcomes, raw values.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace scrubwell {

/// Counted UTF-16 units. May hold NUL and lone surrogates; lengths count units.
using UnicodeString = std::u16string;
using UnicodeView = std::u16string_view;
using TStringList = std::vector<UnicodeString>;
using Bytes = std::vector<std::uint8_t>;

/// A predefined registry root. The number is the system's own handle value, which identification
/// strings carry.
enum class RootKey : std::uint32_t {
  None = 0,
  ClassesRoot = 0x80000000U,
  CurrentUser = 0x80000001U,
  LocalMachine = 0x80000002U,
  Users = 0x80000003U,
  PerformanceData = 0x80000004U,
  CurrentConfig = 0x80000005U,
  DynData = 0x80000006U,
};

// The usual spellings. Not defined where the system's headers have taken the names as macros.
#ifndef HKEY_CLASSES_ROOT
inline constexpr RootKey HKEY_CLASSES_ROOT = RootKey::ClassesRoot;
inline constexpr RootKey HKEY_CURRENT_USER = RootKey::CurrentUser;
inline constexpr RootKey HKEY_LOCAL_MACHINE = RootKey::LocalMachine;
inline constexpr RootKey HKEY_USERS = RootKey::Users;
inline constexpr RootKey HKEY_CURRENT_CONFIG = RootKey::CurrentConfig;
inline constexpr RootKey HKEY_DYN_DATA = RootKey::DynData;
#endif

enum TZmRegOption : std::uint8_t {
  zmreg64Bit = 0,    ///< open the key in the 64-bit view
  zmreg32Bit = 1,    ///< open the key in the 32-bit view
  zmregNative = 2,   ///< the view of the running process
  zmregOption3 = 3,  ///< unused
  zmregOption4 = 4,  ///< accepted and without effect
  zmregOption5 = 5,  ///< unused
  zmregOption6 = 6,  ///< unused
};

/// A set of TZmRegOption, one byte, passed by value. The empty set means the process's own view.
class TZmRegOptions {
 public:
  constexpr TZmRegOptions() = default;
  constexpr TZmRegOptions(std::initializer_list<TZmRegOption> members) {
    for (const TZmRegOption m : members) bits_ = static_cast<std::uint8_t>(bits_ | (1U << m));
  }
  [[nodiscard]] constexpr bool Contains(TZmRegOption m) const { return (bits_ >> m & 1U) != 0; }
  [[nodiscard]] constexpr std::uint8_t Bits() const { return bits_; }
  friend constexpr bool operator==(TZmRegOptions, TZmRegOptions) = default;

 private:
  std::uint8_t bits_ = 0;
};

/// What a primitive of the platform found out. Only Absent proves that something is not there;
/// every other failure leaves the question open and must never turn into a finding.
enum class Status : std::uint8_t {
  Ok,       ///< it is there, or it was done
  Absent,   ///< proven not to be there
  Denied,   ///< there may be something, but rights forbid the access
  Corrupt,  ///< the data that would tell is damaged
  Unknown,  ///< can't be told (unmapped drive, unreadable medium, no such service here)
};

/// Which registry view a key is opened in.
enum class View : std::uint8_t {
  Native,  ///< no view asked for: the process's own
  Bits32,
  Bits64,
  Invalid,  ///< both views asked for at once: no key can be opened
};

/// Which file system a path is looked up in: as it lies on the disk, or as a 32-bit process on a
/// 64-bit system sees it (System32 shown as SysWOW64).
enum class FsView : std::uint8_t { Physical, Redirected };

enum class DriveKind : std::uint8_t { Unknown, Fixed, Removable, CdRom, Network, RamDisk };

/// Registry value types, the system's numbers.
enum RegType : std::uint32_t {
  REGT_NONE = 0,
  REGT_SZ = 1,
  REGT_EXPAND_SZ = 2,
  REGT_BINARY = 3,
  REGT_DWORD = 4,
  REGT_DWORD_BE = 5,
  REGT_LINK = 6,
  REGT_MULTI_SZ = 7,
  REGT_QWORD = 11,
};

/// One registry value with its raw bytes as stored.
struct RegValue {
  UnicodeString name;
  std::uint32_t type = REGT_NONE;
  Bytes data;
  friend bool operator==(const RegValue&, const RegValue&) = default;
};

/// A key as the plugins name it: a root, a path below it without a leading backslash, a view.
struct KeyRef {
  RootKey root = RootKey::None;
  UnicodeView path;
  View view = View::Native;
};

struct KeyInfo {
  std::uint32_t subkeyCount = 0;
  std::uint32_t valueCount = 0;
};

}  // namespace scrubwell
