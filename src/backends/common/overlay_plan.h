// What is held back of a running Windows: changes that are planned, in their order.
#pragma once

#include "backends/common/journal.h"

namespace scrubwell {

struct PlannedChange {
  JournalEntry entry;  ///< the state before it, with all changes that were planned earlier
  bool force = false;  ///< DeleteKey: in spite of the rights
  Bytes data;          ///< WriteFile: the new content
};

class IPlan {
 public:
  virtual ~IPlan() = default;
  /// Completes the entry with what only the system knows and takes the change over. Anything but
  /// Ok refuses it: then it is not planned, and who asked for it gets that answer.
  virtual Status Add(PlannedChange change) = 0;
};

}  // namespace scrubwell
