#include "backends/offline/regf_hive.h"

#include <chrono>

#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

// Tenths of microseconds since 1601.
std::uint64_t FileTimeNow() {
  constexpr std::uint64_t kUnixStart = 116'444'736'000'000'000U;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto micro = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
  return kUnixStart + static_cast<std::uint64_t>(micro) * 10U;
}

}  // namespace

Status RegfHive::Root(Key& out) {
  out = Raw().Root();
  return Status::Ok;
}

Status RegfHive::Child(Key parent, UnicodeView name, Key& out) {
  return Raw().Child(parent, name, out);
}

Status RegfHive::Info(Key key, KeyInfo& out) {
  regf::KeyFacts facts;
  const Status status = Raw().Key(key, facts);
  out = {facts.subkeyCount, facts.valueCount};
  return status;
}

Status RegfHive::Subkeys(Key key, std::vector<Subkey>& out) {
  out.clear();
  return Raw().ForEachSubkey(key, [&out](const regf::Subkey& subkey) {
    out.push_back({subkey.facts.name.Text(), subkey.key});
  });
}

Status RegfHive::Values(Key key, std::vector<RegValue>& out) {
  return Raw().Values(key, out);
}

// A hive finds a value by going through all of the key's. Who asks for each of many values would
// do so in quadratic time; a few questions are cheaper without an index.
RegfHive::ValueIndex* RegfHive::IndexOf(Key key) {
  constexpr std::uint32_t many = 256;
  constexpr int often = 16;
  regf::KeyFacts facts;
  if (Raw().Key(key, facts) != Status::Ok || facts.valueCount < many) return nullptr;
  ValueIndex& index = indexes_[key];
  if (++index.asked < often) return nullptr;
  if (!index.built) {
    index.built = true;
    index.whole = Raw().ForEachValue(key, [&index](const regf::ValueFacts& value) {
      index.values.try_emplace(UpperCase(value.name.Text()), value);
    });
  }
  return &index;
}

Status RegfHive::Value(Key key, UnicodeView name, RegValue& out) {
  const ValueIndex* const index = IndexOf(key);
  if (index == nullptr) return Raw().Value(key, name, out);
  const auto found = index->values.find(UpperCase(name));
  if (found == index->values.end()) {
    return index->whole == Status::Ok ? Status::Absent : Status::Corrupt;
  }
  found->second.name.CopyTo(out.name);
  out.type = found->second.type;
  return Raw().Data(found->second, out.data);
}

bool RegfHive::IsLink(Key key) {
  regf::KeyFacts facts;
  return Raw().Key(key, facts) == Status::Ok && facts.IsLink();
}

Status RegfHive::Security(Key key, Bytes& out) {
  std::span<const std::uint8_t> bytes;
  const Status status = Raw().Security(key, bytes);
  out.assign(bytes.begin(), bytes.end());
  return status;
}

regf::Editor* RegfHive::Edit(std::string& error) {
  indexes_.clear();
  if (editor_ == nullptr && editError_.empty()) {
    regf::OpenedEditor opened = regf::Editor::Open(*hive_, ToUtf8(path_), FileTimeNow);
    editor_ = std::move(opened.editor);
    editError_ = std::move(opened.error);
    // It goes on as part of other sentences.
    if (editError_.ends_with('.')) editError_.pop_back();
  }
  if (editor_ == nullptr) error = editError_;
  return editor_.get();
}

template <class Operation>
Status RegfHive::Change(Operation&& operation) {
  if (!done_) return Status::Denied;
  std::string ignored;
  regf::Editor* const editor = Edit(ignored);
  const Status status = editor == nullptr ? Status::Denied : operation(*editor);
  done_(status);
  return status;
}

Status RegfHive::Create(Key parent, UnicodeView name, Key& out) {
  return Change([&](regf::Editor& editor) { return editor.Create(parent, name, out); });
}
Status RegfHive::Erase(Key key) {
  return Change([&](regf::Editor& editor) { return editor.Erase(key); });
}
Status RegfHive::Put(Key key, const RegValue& value) {
  return Change([&](regf::Editor& editor) { return editor.Put(key, value); });
}
Status RegfHive::EraseValue(Key key, UnicodeView name) {
  return Change([&](regf::Editor& editor) { return editor.EraseValue(key, name); });
}

}  // namespace scrubwell::offline
