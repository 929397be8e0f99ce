// What a security descriptor of a registry key allows.
#pragma once

#include <span>

#include "registry/platform.h"

namespace scrubwell {

// Rights of registry keys, the system's numbers.
inline constexpr std::uint32_t kRightDelete = 0x00010000U;
inline constexpr std::uint32_t kRightSetValue = 0x00000002U;
inline constexpr std::uint32_t kRightCreateSubKey = 0x00000004U;
inline constexpr std::uint32_t kKeyAllAccess = 0x000F003FU;

/// Whether an administrator who is the user with this SID ("S-1-5-21-...", may be empty) gets the
/// rights on a key with this self-relative security descriptor. Ok or Denied; Unknown when the
/// descriptor is damaged. A null access list allows everything, an empty descriptor too. Rights
/// that would first have to be taken by becoming the owner are not counted.
Status CheckDescriptor(std::span<const std::uint8_t> descriptor, UnicodeView userSid,
                       std::uint32_t rights);
Status CheckDescriptor(std::span<const std::uint8_t> descriptor, UnicodeView userSid,
                       Access access);

/// The binary form of a SID text; empty when it is none.
Bytes SidFromText(UnicodeView text);

/// One entry of an access list to be built.
struct AccessEntry {
  bool allow = true;
  std::uint8_t flags = 0;  ///< inheritance flags; 8 is inherit-only
  std::uint32_t mask = 0;
  UnicodeString sid;
};
/// A self-relative descriptor with this owner and access list.
Bytes BuildDescriptor(UnicodeView ownerSid, std::span<const AccessEntry> entries);

}  // namespace scrubwell
