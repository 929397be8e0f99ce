// A hive in memory.
#pragma once

#include <deque>
#include <map>

#include "backends/common/hive.h"

namespace scrubwell {

/// Everything is found in logarithmic time; subkeys come in the order of their upper-cased names,
/// values in the order they were added. A key with a link value named "SymbolicLinkValue" is a
/// symbolic link.
class MemoryHive final : public IHive {
 public:
  MemoryHive();
  Status Root(Key& out) override;
  Status Child(Key parent, UnicodeView name, Key& out) override;
  Status Info(Key key, KeyInfo& out) override;
  Status Subkeys(Key key, std::vector<Subkey>& out) override;
  Status Values(Key key, std::vector<RegValue>& out) override;
  Status Value(Key key, UnicodeView name, RegValue& out) override;
  bool IsLink(Key key) override;
  Status Security(Key key, Bytes& out) override;
  Status Create(Key parent, UnicodeView name, Key& out) override;
  Status Erase(Key key) override;
  Status Put(Key key, const RegValue& value) override;
  Status EraseValue(Key key, UnicodeView name) override;

  /// The key of a path, created with its parents where it is missing.
  Key Make(UnicodeView path);
  /// The empty descriptor takes the key's own away.
  void SetSecurity(Key key, Bytes descriptor);
  /// Lets every look at the key answer with a fault; Ok takes it away.
  void SetFault(Key key, Status fault);

 private:
  struct UpCaseLess {
    using is_transparent = void;
    bool operator()(UnicodeView a, UnicodeView b) const;
  };
  template <class V>
  using NameMap = std::map<UnicodeString, V, UpCaseLess>;
  struct KeyNode {
    bool alive = true;
    Status fault = Status::Ok;
    Key parent = NoKey;
    UnicodeString name;
    NameMap<Key> children;
    NameMap<std::uint64_t> valueIndex;         // name to place in the order
    std::map<std::uint64_t, RegValue> values;  // by place in the order
    Bytes security;
  };
  Status Look(Key key, KeyNode*& out);

  std::deque<KeyNode> keys_;
  std::uint64_t nextValue_ = 0;
};

}  // namespace scrubwell
