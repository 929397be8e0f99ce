// One line on the terminal that says how far the scan is.
#pragma once

#include <chrono>
#include <string_view>

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
  /// So many of all are done.
  void Show(std::string_view what, std::size_t done, std::size_t all);

 private:
  bool IsDue(bool must);
  void Write(int percent, std::string_view text);

  bool terminal_ = false;
  bool shown_ = false;
  std::chrono::steady_clock::time_point last_;
};

}  // namespace scrubwell::hosts
