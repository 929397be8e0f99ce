#include "backends/memory/memory_hive.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell {

bool MemoryHive::UpCaseLess::operator()(UnicodeView a, UnicodeView b) const {
  // Most names agree unit by unit as they stand; only where they part does case matter.
  std::size_t same = 0;
  const std::size_t shorter = std::min(a.size(), b.size());
  while (same < shorter && a[same] == b[same]) ++same;
  return CompareUpCase(a.substr(same), b.substr(same)) < 0;
}

MemoryHive::MemoryHive() {
  keys_.emplace_back();
}

Status MemoryHive::Look(Key key, KeyNode*& out) {
  if (key >= keys_.size() || !keys_[key].alive) return Status::Absent;
  out = &keys_[key];
  return out->fault;
}

Status MemoryHive::Root(Key& out) {
  out = 0;
  return keys_[0].fault;
}

Status MemoryHive::Child(Key parent, UnicodeView name, Key& out) {
  KeyNode* node = nullptr;
  const Status status = Look(parent, node);
  if (status != Status::Ok) return status;
  const auto it = node->children.find(name);
  if (it == node->children.end()) return Status::Absent;
  out = it->second;
  return keys_[out].fault;
}

Status MemoryHive::Info(Key key, KeyInfo& out) {
  KeyNode* node = nullptr;
  const Status status = Look(key, node);
  if (status != Status::Ok) return status;
  out.subkeyCount = static_cast<std::uint32_t>(node->children.size());
  out.valueCount = static_cast<std::uint32_t>(node->values.size());
  return Status::Ok;
}

Status MemoryHive::Subkeys(Key key, std::vector<Subkey>& out) {
  KeyNode* node = nullptr;
  const Status status = Look(key, node);
  if (status != Status::Ok) return status;
  out.clear();
  out.reserve(node->children.size());
  for (const auto& [name, child] : node->children) out.push_back({name, child});
  return Status::Ok;
}

Status MemoryHive::Values(Key key, std::vector<RegValue>& out) {
  KeyNode* node = nullptr;
  const Status status = Look(key, node);
  if (status != Status::Ok) return status;
  out.clear();
  out.reserve(node->values.size());
  for (const auto& [place, value] : node->values) out.push_back(value);
  return Status::Ok;
}

Status MemoryHive::Value(Key key, UnicodeView name, RegValue& out) {
  KeyNode* node = nullptr;
  const Status status = Look(key, node);
  if (status != Status::Ok) return status;
  const auto it = node->valueIndex.find(name);
  if (it == node->valueIndex.end()) return Status::Absent;
  out = node->values.at(it->second);
  return Status::Ok;
}

bool MemoryHive::IsLink(Key key) {
  RegValue value;
  return Value(key, u"SymbolicLinkValue", value) == Status::Ok && value.type == REGT_LINK;
}

Status MemoryHive::Security(Key key, Bytes& out) {
  KeyNode* node = nullptr;
  const Status status = Look(key, node);
  if (status != Status::Ok) return status;
  out = node->security;
  return out.empty() ? Status::Absent : Status::Ok;
}

Status MemoryHive::Create(Key parent, UnicodeView name, Key& out) {
  const Status found = Child(parent, name, out);
  if (found != Status::Absent) return found;
  if (parent >= keys_.size() || !keys_[parent].alive) return Status::Absent;
  out = static_cast<Key>(keys_.size());
  KeyNode& node = keys_.emplace_back();
  node.parent = parent;
  node.name = name;
  keys_[parent].children.emplace(name, out);
  return Status::Ok;
}

Status MemoryHive::Erase(Key key) {
  KeyNode* node = nullptr;
  const Status status = Look(key, node);
  if (status != Status::Ok) return status;
  if (key == 0) return Status::Denied;
  keys_[node->parent].children.erase(node->name);
  std::vector<Key> doomed{key};
  while (!doomed.empty()) {
    KeyNode& gone = keys_[doomed.back()];
    doomed.pop_back();
    for (const auto& [name, child] : gone.children) doomed.push_back(child);
    gone = {};
    gone.alive = false;
  }
  return Status::Ok;
}

Status MemoryHive::Put(Key key, const RegValue& value) {
  KeyNode* node = nullptr;
  const Status status = Look(key, node);
  if (status != Status::Ok) return status;
  const auto [it, added] = node->valueIndex.try_emplace(value.name, nextValue_);
  if (added) ++nextValue_;
  RegValue& stored = node->values[it->second];
  if (added) stored.name = value.name;  // a value that is there keeps its spelling
  stored.type = value.type;
  stored.data = value.data;
  return Status::Ok;
}

Status MemoryHive::EraseValue(Key key, UnicodeView name) {
  KeyNode* node = nullptr;
  const Status status = Look(key, node);
  if (status != Status::Ok) return status;
  const auto it = node->valueIndex.find(name);
  if (it == node->valueIndex.end()) return Status::Absent;
  node->values.erase(it->second);
  node->valueIndex.erase(it);
  return Status::Ok;
}

MemoryHive::Key MemoryHive::Make(UnicodeView path) {
  Key key = 0;
  for (std::size_t from = 0; from < path.size();) {
    const std::size_t to = std::min(path.find(u'\\', from), path.size());
    Key child = NoKey;
    if (to > from && Create(key, path.substr(from, to - from), child) != Status::Absent)
      key = child;
    from = to + 1;
  }
  return key;
}

void MemoryHive::SetSecurity(Key key, Bytes descriptor) {
  keys_[key].security = std::move(descriptor);
}

void MemoryHive::SetFault(Key key, Status fault) {
  keys_[key].fault = fault;
}

}  // namespace scrubwell
