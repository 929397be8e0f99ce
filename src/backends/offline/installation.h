// Where Windows lies on its volume, which Windows it is, and its hive files.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>

#include "backends/offline/notes.h"
#include "backends/offline/offline_files.h"
#include "backends/offline/regf_hive.h"

namespace scrubwell::offline {

/// Opens hive files and keeps them. A note is made of a hive that is older than the last state of
/// the system.
class HiveStore {
 public:
  HiveStore(OfflineFiles& files, INotes& notes) : files_(files), notes_(notes) {}
  /// Null and `why` and one sentence when the hive can't be read. Each file is opened once.
  RegfHive* Open(UnicodeView path, Status& why, std::string& error);
  /// A file's content, with what can't be read of it. False and one sentence when there is none.
  static bool ReadImage(const DiskPlace& place, regf::FileImage& out, std::string& error);
  /// Every hive, also those opened from now on, may be changed; `done` hears each outcome.
  void AllowChanges(std::function<void(Status)> done);
  /// Hives, by the text of their place, in whose place the content beside them is to be read: an
  /// interrupted clean's finished work.
  void SetReplaced(std::set<std::string> hives) { replaced_ = std::move(hives); }
  /// All hives opened so far lie on the drive that has got this letter.
  void SetLetter(char16_t letter) {
    for (const auto& hive : hives_) hive->SetLetter(letter);
  }
  [[nodiscard]] const std::vector<std::unique_ptr<RegfHive>>& All() const { return hives_; }

 private:
  std::vector<regf::FileImage> LogsOf(UnicodeView path);
  void TellFaults(const RegfHive& hive);

  OfflineFiles& files_;
  INotes& notes_;
  std::vector<std::unique_ptr<RegfHive>> hives_;
  std::function<void(Status)> done_;
  std::set<std::string> replaced_;
};

/// One Windows on a volume.
struct Installation {
  UnicodeString systemRoot;  ///< "C:\Windows", the folder's name as it is on the disk
  RegfHive* software = nullptr;
  RegfHive* system = nullptr;
  bool is64Bit = false;
  UnicodeString productName;
  UnicodeString version;  ///< "6.1"
  std::uint32_t build = 0;
  OsVersion os = OsVersion::Unknown;
  std::uint32_t controlSet = 0;
  UnicodeString controlSetKey;  ///< "ControlSet001"

  [[nodiscard]] char16_t Letter() const { return systemRoot.front(); }
  [[nodiscard]] UnicodeString Config(UnicodeView hive) const;
  /// Puts in %SystemRoot%, %windir% and %SystemDrive%.
  [[nodiscard]] UnicodeString Expand(UnicodeView text) const;
  /// Windows 7 and later share more keys between the views and keep the driver store 64-bit.
  [[nodiscard]] bool IsWindows7OrLater() const { return build == 0 || build >= 7600; }
};

/// The volume is mapped to some letter on entry; it is moved to the letter that the installation
/// knows itself by. False and one sentence in `error` when there is no readable Windows.
bool FindInstallation(DriveTree& drives, char16_t letter, OfflineFiles& files, HiveStore& hives,
                      INotes& notes, Installation& out, std::string& error);

/// What tells one Windows from another, whatever drive it is on.
UnicodeString IdentityOf(const Installation& installation);

OsVersion OsVersionOf(std::uint32_t build, UnicodeView version);

}  // namespace scrubwell::offline
