// String-keyed hash containers. Keys compare exactly; callers upper-case them where they want
// look-ups that ignore letter case.
#pragma once

#include <unordered_map>

#include "registry/types.h"

namespace scrubwell {

namespace detail {
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(UnicodeView s) const noexcept { return std::hash<UnicodeView>{}(s); }
};
template <class V>
using TextMap = std::unordered_map<UnicodeString, V, TextHash, std::equal_to<>>;
}  // namespace detail

/// A map from a text to a pointer-sized value that it does not own. Null means absent.
class THashList {
 public:
  using Value = void*;

  /// Adds an entry, replacing one of the same key.
  void Add(UnicodeView key, Value value) { map_.insert_or_assign(UnicodeString(key), value); }
  void Put(UnicodeView key, Value value) { Add(key, value); }
  [[nodiscard]] Value Get(UnicodeView key) const {
    const auto it = map_.find(key);
    return it == map_.end() ? nullptr : it->second;
  }
  [[nodiscard]] bool Contains(UnicodeView key) const { return map_.find(key) != map_.end(); }
  /// Empties the map. `keepMemory` keeps what it has allocated for refilling.
  void Clear(bool keepMemory = false) {
    if (keepMemory)
      map_.clear();
    else
      detail::TextMap<Value>().swap(map_);
  }
  [[nodiscard]] std::size_t Count() const { return map_.size(); }

  /// Iteration in no particular order; null when there is no further entry. Changing the map ends
  /// the iteration's validity.
  Value First(UnicodeString* key = nullptr) {
    cursor_ = map_.begin();
    return Current(key);
  }
  Value Next(UnicodeString* key = nullptr) {
    if (cursor_ != map_.end()) ++cursor_;
    return Current(key);
  }

 private:
  Value Current(UnicodeString* key) const {
    if (cursor_ == map_.end()) return nullptr;
    if (key != nullptr) *key = cursor_->first;
    return cursor_->second;
  }
  detail::TextMap<Value> map_;
  detail::TextMap<Value>::const_iterator cursor_ = map_.end();
};

/// A map from a text to a text; empty means absent.
class THashStringList {
 public:
  void Put(UnicodeView key, UnicodeView value) {
    map_.insert_or_assign(UnicodeString(key), UnicodeString(value));
  }
  [[nodiscard]] UnicodeString Get(UnicodeView key) const {
    const auto it = map_.find(key);
    return it == map_.end() ? UnicodeString() : it->second;
  }

 private:
  detail::TextMap<UnicodeString> map_;
};

}  // namespace scrubwell
