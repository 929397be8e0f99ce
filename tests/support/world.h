// A Windows made of text, one plugin in it, and everything it found and changed as text again.
//
//   const Case kCases[] = {
//       {.name = "missing file",
//        .registry =
//        R"([HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Microsoft\Windows\CurrentVersion\SharedDLLs]
//   "C:\\gone.dll"=dword:1)",
//        .files = "C:\\here.dll",
//        .problems = {"1|existingkey:32:HKLM\\...|existingvalue:C:\\gone.dll|..."},
//        .journal = {"delete value HKLM\\SOFTWARE\\Wow6432Node\\... \"C:\\\\gone.dll\""}},
//   };
//   TEST(SharedFiles, Finds) { CheckCases<TRCPSharedFiles>(kCases); }
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "backends/memory/memory_backend.h"
#include "framework/Rc_baseplugin.h"

namespace scrubwell::test {

using Lines = std::vector<std::string>;

/// Starts the framework over a memory backend; at most one at a time. Everything is taken down in
/// the end, so that the next world begins fresh. A text that can't be understood fails the test.
class World {
 public:
  explicit World(std::string_view registry = {}, std::string_view files = {},
                 const MemoryOptions& options = {});
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  MemoryBackend& Backend() { return *backend_; }
  /// Services, tasks, links, environment.
  MemoryWorld& Windows() { return backend_->World(); }

  /// Creates the plugin (replacing one made before) without running it.
  template <class Plugin>
  Plugin& Create() {
    plugin_.reset();
    auto made = std::make_unique<Plugin>();
    Plugin& result = *made;
    plugin_ = std::move(made);
    return result;
  }
  /// Creates the plugin and runs Init and Scan; the problem list as Problems() gives it.
  template <class Plugin>
  Lines Run() {
    Create<Plugin>();
    return Scan();
  }
  /// Empties the problem list and runs Init and Scan of the plugin there is.
  Lines Scan();
  /// Runs InitClean and Clean over everything found; the journal of it.
  Lines CleanAll();

  TRCPlugin& Plugin() { return *plugin_; }
  /// The visible problems in the order found: kind and data items with "|" between them.
  [[nodiscard]] Lines Problems() const;
  /// Caption, short description and description of the visible problems, "|" between them.
  [[nodiscard]] Lines Texts() const;
  [[nodiscard]] Lines Captions() const;
  [[nodiscard]] const Lines& Journal() const { return backend_->Journal(); }
  /// All keys and values with physical paths.
  std::string Registry() { return backend_->DumpRegistry(); }

 private:
  std::unique_ptr<MemoryBackend> backend_;
  std::unique_ptr<TRCPlugin> plugin_;
};

/// One row: a world, and all that a plugin must find in it. With `journal` given everything found
/// is cleaned, and those must be all changes. `setup` furnishes what text can't say.
struct Case {
  std::string name{};
  std::string registry{};
  std::string files{};
  Lines problems{};
  std::optional<Lines> journal{};
  Lines left{};  ///< what a scan after the cleaning still finds
  MemoryOptions options{};
  std::function<void(World&)> setup{};
};

using CaseRunner = std::function<void(World&)>;
/// Runs all rows. Every row also scans a second time (same problems, nothing changed) and, when
/// cleaned, a third time (only what is `left`).
void CheckCases(std::span<const Case> cases, const CaseRunner& create);

template <class Plugin>
void CheckCases(std::span<const Case> cases) {
  CheckCases(cases, [](World& world) { world.Create<Plugin>(); });
}

/// Scans the world once for each primitive that a scan calls and lets that call fail: no run may
/// crash, and none may find anything beyond `problems`, what the sound scan finds.
void CheckFaults(const Case& row, const CaseRunner& create);

template <class Plugin>
void CheckFaults(const Case& row) {
  CheckFaults(row, [](World& world) { world.Create<Plugin>(); });
}

}  // namespace scrubwell::test
