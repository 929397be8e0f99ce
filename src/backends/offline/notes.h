// What could not be told, collected for the host.
#pragma once

#include <unordered_set>

#include "registry/platform.h"

namespace scrubwell::offline {

/// Keeps each note once, in the order they came.
class NoteList final : public INotes {
 public:
  void Note(UnicodeView text) override {
    if (seen_.emplace(text).second) notes_.emplace_back(text);
  }
  [[nodiscard]] const std::vector<UnicodeString>& All() const { return notes_; }

 private:
  std::unordered_set<UnicodeString> seen_;
  std::vector<UnicodeString> notes_;
};

}  // namespace scrubwell::offline
