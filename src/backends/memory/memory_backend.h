// A whole Windows in memory, built from text: every platform interface, for tests and trials.
#pragma once

#include <map>
#include <memory>
#include <optional>

#include "backends/common/composed_registry.h"
#include "backends/memory/memory_files.h"
#include "backends/memory/memory_hive.h"
#include "backends/memory/memory_world.h"

namespace scrubwell {

struct MemoryOptions {
  bool is64Bit = true;
  ViewRules rules = ViewRules::Windows7;
  OsVersion version = OsVersion::Win10;
  bool isAdmin = true;
  UnicodeString userSid = u"S-1-5-21-1-2-3-1001";
  UnicodeString userName = u"tester";
};

/// Reports every change into one ordered journal and can fail on demand. The hives of SOFTWARE,
/// SYSTEM, SAM, the default user and the user with its classes are there from the start, also
/// drive C: with a Windows folder; SECURITY is not mounted.
class MemoryBackend {
 public:
  explicit MemoryBackend(MemoryOptions options = {});
  ~MemoryBackend();
  MemoryBackend(const MemoryBackend&) = delete;
  MemoryBackend& operator=(const MemoryBackend&) = delete;

  /// Adds a registry text (.reg form in UTF-8, first line not needed) with the physical paths:
  /// 32-bit keys lie below Wow6432Node. Empty, or what is wrong with which line.
  [[nodiscard]] std::string AddRegistry(std::string_view text);
  /// Adds files, one a line; see MemoryFiles::Add. Empty, or what is wrong with which line.
  [[nodiscard]] std::string AddFiles(std::string_view text);

  TPlatform& Platform() { return *platform_; }
  ComposedRegistry& Registry() { return registry_; }
  MemoryFiles& Files() { return files_; }
  /// Services, tasks, links, environment and so on, to be filled by the test.
  MemoryWorld& World() { return world_; }
  MemoryFaults& Faults() { return faults_; }
  const MemoryOptions& Options() const { return options_; }

  /// Takes the right to delete or to write a key, named by its full physical path, away from
  /// everybody. The key is created when it is missing.
  void DenyDelete(UnicodeView fullPath) { Deny(fullPath, Access::Delete); }
  void DenyWrite(UnicodeView fullPath) { Deny(fullPath, Access::Write); }
  /// Lets the physical key answer with a fault whenever it is read.
  void BreakKey(UnicodeView fullPath, Status fault);
  /// The hive of a place ("HKLM\SOFTWARE"); created and mounted when it is missing.
  MemoryHive& Hive(UnicodeView mount);

  /// Every change in the order it was made, one line each, keys by their physical place:
  ///   delete key HKLM\SOFTWARE\X            set value HKCU\X "name"="text"
  ///   delete value HKLM\SOFTWARE\X "name"   create key HKCU\X
  ///   erase file C:\x.lnk, erase folder C:\y, write file C:\z, backup C:\x.lnk
  ///   set entry / delete entry C:\Windows\win.ini [section] key[=text]
  ///   remove task x.job, remove firewall C:\x.exe, disable firewall C:\x.exe, remove url U
  [[nodiscard]] const std::vector<std::string>& Journal() const { return journal_.lines; }
  void ClearJournal() { journal_.lines.clear(); }
  /// All keys and values as a registry text with physical paths: equal registries give equal
  /// texts.
  [[nodiscard]] std::string DumpRegistry();

 private:
  class Gatekeeper;
  class Watcher;
  void Deny(UnicodeView fullPath, Access access);
  IHive::Key KeyAt(UnicodeView fullPath, MemoryHive*& hive);
  void Furnish();

  MemoryOptions options_;
  MemoryJournal journal_;
  MemoryFaults faults_;
  std::map<UnicodeString, std::unique_ptr<MemoryHive>> hives_;
  ComposedRegistry registry_;
  MemoryFiles files_;
  MemoryWorld world_;
  std::unique_ptr<Gatekeeper> gate_;
  std::unique_ptr<Watcher> watcher_;
  std::unique_ptr<TPlatform> platform_;
};

}  // namespace scrubwell
