// The switched-off system's folders, variables and version.
#pragma once

#include <array>
#include <map>

#include "backends/offline/installation.h"
#include "backends/offline/users.h"

namespace scrubwell::offline {

/// Environment variables, found by their upper-cased names.
class Variables {
 public:
  void Set(UnicodeView name, UnicodeView value);
  /// Null when there is none of that name.
  [[nodiscard]] const UnicodeString* Get(UnicodeView name) const;
  /// Puts in the variables that are known; an unknown "%x%" stays as it is.
  [[nodiscard]] UnicodeString Expand(UnicodeView text) const;

 private:
  std::map<UnicodeString, UnicodeString> values_;
};

/// Variables that only a logon session has, and that nothing on the disk tells for sure (USERNAME,
/// HOMEPATH and their like), are not there: what names them stays unresolved.
class OfflineSystem final : public ISystem {
 public:
  /// `user` may be null.
  OfflineSystem(IRegistry& registry, const Installation& installation, const UserProfile* user)
      : registry_(registry), installation_(installation), user_(user) {}

  UnicodeString WindowsDir() override { return installation_.systemRoot; }
  Status Environment(UnicodeView name, View view, UnicodeString& out) override;
  OsVersion Version() override { return installation_.os; }
  /// The disk of a switched-off system lies open.
  bool IsAdmin() override { return true; }
  bool IsWow64() override { return installation_.is64Bit; }
  bool FsRedirection() override { return redirection_; }
  void SetFsRedirection(bool enabled) override { redirection_ = enabled; }

  /// All variables as a process of that view has them.
  const Variables& All(View view);
  /// Folders lie where Windows Vista and later have them.
  [[nodiscard]] bool HasVistaFolders() const {
    return installation_.os == OsVersion::Unknown || installation_.os >= OsVersion::Vista;
  }

 private:
  Variables Build(bool wide);
  void AddMachineFolders(Variables& variables);
  void AddProgramFolders(Variables& variables, bool wide);
  void AddUserFolders(Variables& variables);
  void AddKey(Variables& variables, const KeyRef& key, bool appendPath);
  [[nodiscard]] UnicodeString Drive() const { return installation_.systemRoot.substr(0, 2); }

  IRegistry& registry_;
  const Installation& installation_;
  const UserProfile* user_;
  bool redirection_ = true;
  std::array<std::optional<Variables>, 2> variables_;
};

}  // namespace scrubwell::offline
