#include "backends/offline/intent.h"

#include <algorithm>
#include <unordered_set>

#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

UnicodeString Mark(UnicodeView path, UnicodeView name) {
  return UpperCase(path) + UnicodeString(u"\\\0", 2) + UpperCase(name);
}

class Comparison {
 public:
  Comparison(const regf::Hive& before, const regf::Hive& after) : before_(before), after_(after) {}

  void Allow(const JournalEntry& entry) {
    switch (entry.item.action) {
      case JournalAction::DeleteKey:
      case JournalAction::CreateKey:
        keys_.insert(UpperCase(entry.path));
        break;
      case JournalAction::DeleteValue:
      case JournalAction::SetValue:
        values_.insert(Mark(entry.path, entry.item.name));
        break;
      default:
        break;
    }
  }

  bool Compare(regf::CellOffset a, regf::CellOffset b, int level) {
    return level <= regf::Hive::MaxDepth && SameHead(a, b) && SameValues(a, b) &&
           SameSubkeys(a, b, level);
  }
  [[nodiscard]] const UnicodeString& Path() const { return path_; }

 private:
  bool SameHead(regf::CellOffset a, regf::CellOffset b) {
    regf::KeyFacts facts[2];
    UnicodeString classes[2];
    regf::ByteView security[2];
    const Status left[] = {before_.Key(a, facts[0]), before_.ClassName(a, classes[0]),
                           before_.Security(a, security[0])};
    const Status right[] = {after_.Key(b, facts[1]), after_.ClassName(b, classes[1]),
                            after_.Security(b, security[1])};
    return std::equal(left, left + 3, right) && facts[0].flags == facts[1].flags &&
           classes[0] == classes[1] &&
           std::equal(security[0].begin(), security[0].end(), security[1].begin(),
                      security[1].end());
  }
  bool SameValues(regf::CellOffset a, regf::CellOffset b) {
    std::vector<RegValue> left;
    std::vector<RegValue> right;
    // A damaged place must read the same afterwards.
    if (before_.Values(a, left) != after_.Values(b, right)) return false;
    const auto isMeant = [this](const RegValue& value) {
      return values_.contains(Mark(path_, value.name));
    };
    std::erase_if(left, isMeant);
    std::erase_if(right, isMeant);
    return left == right;
  }
  bool SameSubkeys(regf::CellOffset a, regf::CellOffset b, int level) {
    std::vector<regf::Subkey> left;
    std::vector<regf::Subkey> right;
    if (before_.Subkeys(a, left) != after_.Subkeys(b, right)) return false;
    auto l = left.begin();
    auto r = right.begin();
    while (l != left.end() || r != right.end()) {
      const int order = l == left.end()    ? 1
                        : r == right.end() ? -1
                                           : l->facts.name.Compare(r->facts.name);
      const std::size_t length = path_.size();
      if (length != 0) path_ += u'\\';
      path_ += (order <= 0 ? l : r)->facts.name.Text();
      if (!keys_.contains(UpperCase(path_))) {
        if (order != 0 || !Compare(l->key, r->key, level + 1)) return false;
      }
      path_.resize(length);
      if (order <= 0) ++l;
      if (order >= 0) ++r;
    }
    return true;
  }

  const regf::Hive& before_;
  const regf::Hive& after_;
  std::unordered_set<UnicodeString> keys_;
  std::unordered_set<UnicodeString> values_;
  UnicodeString path_;
};

}  // namespace

std::string WhyNotAsIntended(const regf::Hive& before, const regf::Hive& after,
                             const std::vector<JournalEntry>& entries, UnicodeView hive) {
  Comparison comparison(before, after);
  for (const JournalEntry& entry : entries) {
    if (SameText(entry.hive, hive)) comparison.Allow(entry);
  }
  if (comparison.Compare(before.Root(), after.Root(), 0)) return {};
  return ToUtf8(hive) + ": " + ToUtf8(comparison.Path()) + ": would change without being meant to";
}

}  // namespace scrubwell::offline
