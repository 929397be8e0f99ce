// A hive file as the composed registry wants it.
#pragma once

#include <functional>
#include <string>
#include <unordered_map>

#include "backends/common/hive.h"
#include "backends/offline/disk_place.h"
#include "formats/regf/editor.h"

namespace scrubwell::offline {

/// Reading only, every change Denied, until AllowChanges. Then the first change makes a private
/// copy, which all further reading sees; the file is never written here.
class RegfHive final : public IHive {
 public:
  RegfHive(std::unique_ptr<regf::Hive> hive, UnicodeString path, DiskPlace place)
      : hive_(std::move(hive)), path_(std::move(path)), place_(std::move(place)) {}

  /// The hive as it is now. What it gives as views is good until the next change.
  [[nodiscard]] const regf::Hive& Raw() const { return editor_ ? editor_->View() : *hive_; }
  /// The hive as it is on the disk.
  [[nodiscard]] const regf::Hive& Original() const { return *hive_; }
  /// As Windows names the file.
  [[nodiscard]] const UnicodeString& Path() const { return path_; }
  void SetLetter(char16_t letter) { path_.front() = letter; }
  /// Where the file lies on this machine.
  [[nodiscard]] const DiskPlace& Place() const { return place_; }

  /// `done` hears the outcome of every change.
  void AllowChanges(std::function<void(Status)> done) { done_ = std::move(done); }
  /// For what the interface below has no word for; null and one sentence when this hive can't be
  /// changed.
  regf::Editor* Edit(std::string& error);
  [[nodiscard]] bool Changed() const { return editor_ != nullptr && editor_->Changed(); }
  /// The new file's bytes; only when Changed.
  Bytes Finish(std::uint32_t newestLogSequence) { return editor_->Finish(newestLogSequence); }

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
  /// The values of a key by their upper-cased names.
  struct ValueIndex {
    int asked = 0;
    bool built = false;
    Status whole = Status::Ok;
    std::unordered_map<UnicodeString, regf::ValueFacts> values;
  };

  template <class Operation>
  Status Change(Operation&& operation);
  ValueIndex* IndexOf(Key key);

  std::unique_ptr<regf::Hive> hive_;
  UnicodeString path_;
  DiskPlace place_;
  std::unique_ptr<regf::Editor> editor_;
  std::string editError_;
  std::function<void(Status)> done_;
  /// Of keys with many values that are asked for often; none survives a change.
  std::unordered_map<Key, ValueIndex> indexes_;
};

}  // namespace scrubwell::offline
