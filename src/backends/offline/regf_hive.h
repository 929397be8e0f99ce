// A hive file as the composed registry wants it.
#pragma once

#include "backends/common/hive.h"
#include "formats/regf/hive.h"

namespace scrubwell::offline {

/// Reading only: every change is Denied.
class RegfHive final : public IHive {
 public:
  explicit RegfHive(std::unique_ptr<regf::Hive> hive) : hive_(std::move(hive)) {}
  [[nodiscard]] const regf::Hive& Raw() const { return *hive_; }

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

 private:
  std::unique_ptr<regf::Hive> hive_;
};

}  // namespace scrubwell::offline
