// The index of the browser's cache.
#pragma once

#include <functional>

#include "registry/Zmregistry.h"

namespace scrubwell {

/// Walks the names of the cache index, those of visited addresses among them.
class TIECache {
 public:
  using TEntryEvent = std::function<void(TIECache& sender, const UnicodeString& name)>;

  /// The owner is kept for the caller's sake and never looked at.
  explicit TIECache(const void* owner) : owner_(owner) {}
  [[nodiscard]] const void* Owner() const { return owner_; }

  TEntryEvent OnIECacheEntry;
  /// Which entries the system is asked for. The platform has one enumeration, which tells all of
  /// them, so neither the mode nor the filter narrows it; callers look at the names.
  int Mode = 0;
  void SetFilterOptions(int options) { filterOptions_ = options; }
  [[nodiscard]] int FilterOptions() const { return filterOptions_; }

  /// Raises the event for each entry; none when the index can't be read.
  void RetrieveEntries() {
    TStringList names;
    if (Platform().browser.CacheNames(names) != Status::Ok || !OnIECacheEntry) return;
    for (const UnicodeString& name : names) OnIECacheEntry(*this, name);
  }

 private:
  const void* owner_;
  int filterOptions_ = 0;
};

}  // namespace scrubwell
