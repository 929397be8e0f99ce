// One open registry key. Names are counted, so that those with a NUL inside are reached as well.
#pragma once

#include <optional>

#include "backends/windows/win32.h"

namespace scrubwell::windows {

/// The system's handle of a root; null for one that is not there to be opened.
HKEY RootHandle(RootKey root);

/// A key of the registry as it lies there: nothing is merged behind it.
class RegKey {
 public:
  /// Opens root\path. `access` holds rights and view. `asLink`: a symbolic link is opened itself.
  Status Open(HKEY root, UnicodeView path, REGSAM access, bool asLink = false);
  /// Opens what lies below an open key, in no view but this place itself.
  Status OpenBelow(const RegKey& parent, UnicodeView path, REGSAM access, bool asLink = false);
  /// Opens a link itself and, where the privilege to make backups is held, what rights forbid to
  /// read.
  Status OpenToSave(HKEY root, UnicodeView path, REGSAM access);
  Status OpenBelowToSave(const RegKey& parent, UnicodeView name, REGSAM access);
  /// Creates one key below an open one, which must not be there.
  Status CreateBelow(const RegKey& parent, UnicodeView name, UnicodeView className, bool asLink,
                     REGSAM access);
  /// Opens root\path and creates what is missing of it.
  Status Create(HKEY root, UnicodeView path, REGSAM access);

  [[nodiscard]] bool Good() const { return key_.Good(); }
  [[nodiscard]] HKEY Get() const { return key_.Get(); }

  /// The system's name of it, "\REGISTRY\MACHINE\SOFTWARE\..."; empty when it can't be told.
  [[nodiscard]] UnicodeString PhysicalName() const;
  Status Info(KeyInfo& out) const;
  Status ClassName(UnicodeString& out) const;
  /// A FILETIME; 0 when it can't be told.
  [[nodiscard]] std::uint64_t LastWritten() const;
  /// Not all systems let it be set.
  Status SetLastWritten(std::uint64_t time) const;
  /// The self-relative descriptor; empty when those parts of it can't be read.
  [[nodiscard]] Bytes Security(SECURITY_INFORMATION parts) const;
  [[nodiscard]] Status SetSecurity(SECURITY_INFORMATION parts, const void* descriptor) const;
  Status Subkeys(TStringList& out) const;
  Status Values(std::vector<RegValue>& out) const;
  Status Value(UnicodeView name, RegValue& out) const;
  Status Put(const RegValue& value) const;
  Status EraseValue(UnicodeView name) const;
  /// Deletes the key itself, which must have no subkeys.
  Status Erase() const;

 private:
  Status OpenAt(HKEY parent, UnicodeView path, REGSAM access, bool asLink, DWORD options = 0);
  Status OpenWith(HKEY root, UnicodeView path, REGSAM access, DWORD options);

  Owned<HKEY, &RegCloseKey> key_;
};

}  // namespace scrubwell::windows
