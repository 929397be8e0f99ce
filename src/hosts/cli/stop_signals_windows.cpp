#include <windows.h>

#include <atomic>

#include "framework/Rc_common.h"
#include "hosts/cli/stop_signals.h"

namespace scrubwell::hosts {

namespace {

enum class Answer { Usual, Stop, None };

std::atomic<bool> requested{false};
std::atomic<Answer> answer{Answer::Usual};

// Runs on a thread of its own. With the window, or when the user logs off, the process ends as soon
// as this returns; it lets what has begun be ended in the seconds that the system grants.
BOOL WINAPI OnControl(DWORD event) {
  const bool interrupt = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  Answer now = Answer::Stop;
  // The first one only: the next has its usual effect.
  if (answer.compare_exchange_strong(now, Answer::Usual)) {
    requested = true;
    StopSearch = true;
    now = Answer::Stop;
  }
  if (now == Answer::Usual) return FALSE;
  if (!interrupt) Sleep(INFINITE);
  return TRUE;
}

void Install(Answer wanted) {
  static const BOOL installed = SetConsoleCtrlHandler(OnControl, TRUE);
  if (installed != FALSE) answer = wanted;
}

}  // namespace

void CatchStopSignals() {
  if (requested) {
    StopSearch = true;
    return;
  }
  Install(Answer::Stop);
}

bool StopRequested() {
  return requested;
}

UnstoppableSection::UnstoppableSection() {
  Install(Answer::None);
}

UnstoppableSection::~UnstoppableSection() {
  Install(Answer::Usual);
}

}  // namespace scrubwell::hosts
