// One line on the terminal that says how far the scan is.
#pragma once

#include <chrono>

#include "hosts/driver/scan_driver.h"

namespace scrubwell::hosts {

/// Shows itself on the standard error output when that is a terminal, else does nothing. The line
/// is gone again when the object is.
class ProgressLine {
 public:
  ProgressLine();
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void Show(const RunProgress& progress);

 private:
  bool terminal_ = false;
  bool shown_ = false;
  std::chrono::steady_clock::time_point last_;
};

}  // namespace scrubwell::hosts
