#include "backends/offline/regf_hive.h"

namespace scrubwell::offline {

Status RegfHive::Root(Key& out) {
  out = hive_->Root();
  return Status::Ok;
}

Status RegfHive::Child(Key parent, UnicodeView name, Key& out) {
  return hive_->Child(parent, name, out);
}

Status RegfHive::Info(Key key, KeyInfo& out) {
  regf::KeyFacts facts;
  const Status status = hive_->Key(key, facts);
  out = {facts.subkeyCount, facts.valueCount};
  return status;
}

Status RegfHive::Subkeys(Key key, std::vector<Subkey>& out) {
  out.clear();
  return hive_->ForEachSubkey(key, [&out](const regf::Subkey& subkey) {
    out.push_back({subkey.facts.name.Text(), subkey.key});
  });
}

Status RegfHive::Values(Key key, std::vector<RegValue>& out) {
  return hive_->Values(key, out);
}

Status RegfHive::Value(Key key, UnicodeView name, RegValue& out) {
  return hive_->Value(key, name, out);
}

bool RegfHive::IsLink(Key key) {
  regf::KeyFacts facts;
  return hive_->Key(key, facts) == Status::Ok && facts.IsLink();
}

Status RegfHive::Security(Key key, Bytes& out) {
  std::span<const std::uint8_t> bytes;
  const Status status = hive_->Security(key, bytes);
  out.assign(bytes.begin(), bytes.end());
  return status;
}

Status RegfHive::Create(Key, UnicodeView, Key&) {
  return Status::Denied;
}
Status RegfHive::Erase(Key) {
  return Status::Denied;
}
Status RegfHive::Put(Key, const RegValue&) {
  return Status::Denied;
}
Status RegfHive::EraseValue(Key, UnicodeView) {
  return Status::Denied;
}

}  // namespace scrubwell::offline
