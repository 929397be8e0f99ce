// Ctrl-C and the like: a request to end early.
#pragma once

namespace scrubwell::hosts {

/// From now on the first signal sets StopSearch and is remembered; a second one has its usual
/// effect. Not before the package is loaded, which clears the stop request. A request that came in
/// earlier is set again.
void CatchStopSignals();

/// Whether a signal has come in since the first CatchStopSignals. Unlike StopSearch, which plugins
/// clear when they begin to clean, this stays.
bool StopRequested();

/// While this lives the signals are without effect: what has begun is to be ended.
class UnstoppableSection {
 public:
  UnstoppableSection();
  ~UnstoppableSection();
  UnstoppableSection(const UnstoppableSection&) = delete;
  UnstoppableSection& operator=(const UnstoppableSection&) = delete;
};

}  // namespace scrubwell::hosts
