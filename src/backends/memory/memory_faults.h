// The journal and the faults that all parts of the memory backend share.
#pragma once

#include <string>

#include "registry/types.h"

namespace scrubwell {

/// What was changed, one line a change (UTF-8), in order.
struct MemoryJournal {
  std::vector<std::string> lines;
  void Add(UnicodeView line);
};

/// Makes primitives fail. Every call of a primitive passes through here with a text that says what
/// it is about: a path, a key with its short root name (and a backslash and the value's name), a
/// service, an address.
class MemoryFaults {
 public:
  /// The nth call from now on, counted from 1, fails with the status.
  void FailNth(std::uint64_t n, Status status);
  /// Every call whose text holds this, letter case ignored, fails with the status.
  void FailPath(UnicodeView part, Status status);
  void Clear();
  /// Primitives called so far.
  [[nodiscard]] std::uint64_t Calls() const { return calls_; }

  /// Counts a call; Ok when it may go on.
  Status Pass(UnicodeView what);
  Status Pass(const KeyRef& key, UnicodeView name = {});

 private:
  struct PathFault {
    UnicodeString part;  // upper-cased
    Status status;
  };
  bool Count(Status& status);

  std::uint64_t calls_ = 0;
  std::uint64_t failAt_ = 0;
  Status nthStatus_ = Status::Unknown;
  std::vector<PathFault> paths_;
};

}  // namespace scrubwell
