// A registry hive as a tree of keys: what the composed registry needs of a hive, wherever it lies.
#pragma once

#include "registry/types.h"

namespace scrubwell {

/// One hive. Key handles are the hive's own and stay good until a deletion takes their key.
/// Nothing is thrown for damage: the Status says Corrupt and the rest of the tree stays readable.
class IHive {
 public:
  using Key = std::uint32_t;
  static constexpr Key NoKey = 0xFFFFFFFFU;

  struct Subkey {
    UnicodeString name;
    Key key = NoKey;
  };

  virtual ~IHive() = default;
  virtual Status Root(Key& out) = 0;
  /// Names compare by UpCase, unit by unit.
  virtual Status Child(Key parent, UnicodeView name, Key& out) = 0;
  virtual Status Info(Key key, KeyInfo& out) = 0;
  /// In the hive's own order (ascending by upper-cased name).
  virtual Status Subkeys(Key key, std::vector<Subkey>& out) = 0;
  virtual Status Values(Key key, std::vector<RegValue>& out) = 0;
  virtual Status Value(Key key, UnicodeView name, RegValue& out) = 0;
  /// True for a symbolic link key, whose target is in its value "SymbolicLinkValue".
  virtual bool IsLink(Key key) = 0;
  /// The self-relative security descriptor; Absent when the key has none.
  virtual Status Security(Key key, Bytes& out) = 0;

  // Changes. A hive that was opened for reading answers Denied.
  virtual Status Create(Key parent, UnicodeView name, Key& out) = 0;
  /// The whole subtree; a link goes itself, never its target. The root is Denied.
  virtual Status Erase(Key key) = 0;
  virtual Status Put(Key key, const RegValue& value) = 0;
  virtual Status EraseValue(Key key, UnicodeView name) = 0;
};

}  // namespace scrubwell
