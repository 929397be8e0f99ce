// Scheduled tasks of the 1.0 scheduler (".job" files).
#pragma once

#include <span>

#include "registry/types.h"

namespace scrubwell::job {

/// A larger file is no task.
inline constexpr std::size_t kMaxFileSize = std::size_t{1} << 20;

struct Job {
  UnicodeString application;  ///< as typed in: may be bare, quoted or hold variables
  UnicodeString parameters;
  UnicodeString workingDirectory;
  UnicodeString author;
  UnicodeString comment;
  std::uint32_t flags = 0;
  std::uint32_t status = 0;  ///< the scheduler's result code of the last change of state
  std::uint32_t exitCode = 0;
  std::uint16_t triggerCount = 0;
  bool disabled = false;
  bool hidden = false;
};

/// Corrupt when the fixed part, a text or the triggers run out of the file, or the format's version
/// is not 1. What follows the triggers (a signature over owner and application) is not looked at:
/// a task is deleted as a file, never edited.
Status ReadJob(std::span<const std::uint8_t> file, Job& out);

}  // namespace scrubwell::job
