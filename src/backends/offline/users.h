// The user profiles of an installation.
#pragma once

#include <functional>

#include "backends/offline/installation.h"

namespace scrubwell::offline {

struct UserProfile {
  UnicodeString sid;
  bool sidKnown = true;        ///< false: no profile list names this folder, the SID is a stand-in
  UnicodeString folder;        ///< "C:\Users\anna"
  UnicodeString name;          ///< the folder's last component
  UnicodeString hive;          ///< NTUSER.DAT or NTUSER.MAN with its path; empty when there is none
  UnicodeString classes;       ///< UsrClass.dat with its path; empty when it is proven absent
  std::uint64_t lastUsed = 0;  ///< FILETIME of the last sign that the profile was used
  bool isService = false;      ///< LocalService and NetworkService
};

/// From the profile list and the profile folders.
std::vector<UserProfile> FindUsers(OfflineFiles& files, const Installation& installation,
                                   INotes& notes);

/// The SID's last number for a local account name; nothing when it can't be told.
using AccountNumber = std::function<std::optional<std::uint32_t>(UnicodeView account)>;

/// The user with that folder name, SID or account name; null when there is none or several. With no
/// name the only one, else the one last used. Service accounts can only be asked for by name.
const UserProfile* ChooseUser(const std::vector<UserProfile>& users, UnicodeView wanted,
                              const AccountNumber& accountNumber);

}  // namespace scrubwell::offline
