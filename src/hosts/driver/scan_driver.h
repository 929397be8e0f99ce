// Drives the package through a run: choose plugins, scan, collect. Knows no backend: it works on
// whatever platform the host has set before it started the package up.
#pragma once

#include <span>

#include "framework/Rc_baseplugin.h"

namespace scrubwell {

/// One step of a run.
struct RunProgress {
  std::int32_t promille = 0;  ///< of the whole run, 0 to 1000
  const TRCPlugin* plugin = nullptr;
  UnicodeView item;
  bool mustDisplay = false;
};
/// Called on the scanning thread for every item; must not block.
using RunProgressEvent = std::function<void(const RunProgress&)>;

enum class RunOutcome : std::uint8_t { Complete, Stopped };

/// The plugin of that identifier, letter case ignored; null when there is none.
TRCPlugin* FindPlugin(UnicodeView id);

/// Makes exactly the named plugins active, all of them for an empty list. False when a name is
/// unknown; `unknown` then receives it and nothing has changed.
bool ChoosePlugins(std::span<const UnicodeString> ids, UnicodeString& unknown);

/// Runs the active plugins of the loaded package, one after another in list order.
///
/// A run ends early when StopSearch is set, from whichever thread or signal handler. It is the
/// host's to clear: a stop that comes in just before a run must not be lost.
class ScanDriver {
 public:
  explicit ScanDriver(RunProgressEvent onProgress = {});

  /// Forgets the problems of the run before, reads the ignore list and scans. Everything found is
  /// in SweepErrors afterwards, also when the run was stopped.
  RunOutcome Scan();

  [[nodiscard]] const TProgressManager& Progress() const { return progress_; }

 private:
  std::vector<TRCPlugin*> InitActivePlugins();
  void Attach(TRCPlugin& plugin);

  RunProgressEvent onProgress_;
  TProgressManager progress_;
};

}  // namespace scrubwell
