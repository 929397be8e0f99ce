#include <atomic>
#include <csignal>

#include "framework/Rc_common.h"
#include "hosts/cli/stop_signals.h"

namespace scrubwell::hosts {

namespace {

std::atomic<bool> requested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

extern "C" void RequestStop(int) {
  requested = true;
  StopSearch = true;
}

void Install(void (*handler)(int), int flags) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

}  // namespace

void CatchStopSignals() {
  if (requested) {
    StopSearch = true;
    return;
  }
  // Without SA_RESTART, so that a question is not waited for any longer.
  Install(RequestStop, static_cast<int>(SA_RESETHAND));
}

bool StopRequested() {
  return requested;
}

UnstoppableSection::UnstoppableSection() {
  Install(SIG_IGN, 0);
}

UnstoppableSection::~UnstoppableSection() {
  Install(SIG_DFL, 0);
}

}  // namespace scrubwell::hosts
