#include "registry/Zmtracecleaner.h"

#include <algorithm>
#include <map>

#include "registry/Shelllink.h"
#include "registry/Stringhelper.h"
#include "registry/TraceForms.h"
#include "registry/Wildcards.h"
#include "registry/Zmregistry.h"

namespace scrubwell {
namespace {

using traces::Target;

constexpr UnicodeView kLetterOrder = u"MRUList";
constexpr UnicodeView kNumberOrder = u"MRUListEx";
constexpr UnicodeView kOpenSaveApplication = u"ComDlg32";
constexpr UnicodeView kAnyLevel = u"**";
constexpr std::size_t kMostKeys = 100000;
constexpr std::size_t kMostDigits = 9;

// A decimal number as it is counted in value names: no sign, no leading zero; -1 for anything else.
std::int32_t NumberOf(UnicodeView text) {
  if (text.empty() || text.size() > kMostDigits) return -1;
  if (text.size() > 1 && text.front() == u'0') return -1;
  std::int32_t number = 0;
  for (const char16_t c : text) {
    if (c < u'0' || c > u'9') return -1;
    number = number * 10 + (c - u'0');
  }
  return number;
}

bool IsNumbered(UnicodeView pattern) {
  return pattern.ends_with(u'#');
}

// The number of a value name of a numbered list; -1 when it is not one of them.
std::int32_t NumberIn(UnicodeView pattern, UnicodeView name) {
  const UnicodeView prefix = pattern.substr(0, pattern.size() - 1);
  if (!SameText(name.substr(0, prefix.size()), prefix)) return -1;
  return NumberOf(name.substr(prefix.size()));
}

bool IsEntryName(UnicodeView pattern, UnicodeView name) {
  if (IsNumbered(pattern)) return NumberIn(pattern, name) >= 0;
  return !SameText(name, kLetterOrder) && !SameText(name, kNumberOrder) &&
         MatchesMask(name, pattern);
}

UnicodeString Joined(UnicodeView key, UnicodeView name) {
  UnicodeString out(key);
  if (!out.empty()) out.push_back(u'\\');
  return out.append(name);
}

// All keys that a pattern stands for. Each level of the pattern is one pass over the keys found for
// the level above it.
TStringList KeysOf(const TTraceSource& source) {
  TStringList keys{UnicodeString()};
  TStringList names;
  for (const UnicodeString& level : ParamXAll(source.key, u'\\')) {
    if (level == kAnyLevel) {
      for (std::size_t i = 0; i < keys.size() && keys.size() < kMostKeys; ++i) {
        EnumRegKeysEx(source.root, keys[i], names, {});
        for (const UnicodeString& name : names) keys.push_back(Joined(keys[i], name));
      }
      break;
    }
    TStringList below;
    for (const UnicodeString& key : keys) {
      if (level.find(u'*') == UnicodeString::npos) {
        below.push_back(Joined(key, level));
        continue;
      }
      EnumRegKeysEx(source.root, key, names, {});
      for (const UnicodeString& name : names) {
        if (MatchesMask(name, level)) below.push_back(Joined(key, name));
      }
    }
    keys = std::move(below);
  }
  return keys;
}

bool MatchesKey(const TTraceSource& source, UnicodeView key) {
  const TStringList pattern = ParamXAll(source.key, u'\\');
  const TStringList levels = ParamXAll(key, u'\\');
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == kAnyLevel) return true;
    if (i >= levels.size() || !MatchesMask(levels[i], pattern[i])) return false;
  }
  return pattern.size() == levels.size();
}

bool ReadValues(RootKey root, UnicodeView key, std::vector<RegValue>& values) {
  return Platform().registry.EnumValues({root, key, View::Native}, values) == Status::Ok;
}

bool ReadValue(const TTraceSourceData& data, RegValue& value) {
  const KeyRef key{data.root, data.key, View::Native};
  return Platform().registry.GetValue(key, data.valueName, value) == Status::Ok;
}

// ---- Order lists --------------------------------------------------------------------------

void RepairLetters(RootKey root, UnicodeView key) {
  UnicodeString order;
  if (GetRegStringValue(root, key, kLetterOrder, order, {}) != ERRC_SUCCESS) return;
  const std::size_t before = order.size();
  std::erase_if(order, [&](char16_t letter) {
    return !RegValueExists(root, key, UnicodeView(&letter, 1), {});
  });
  if (order.size() != before) SetRegStringValue(root, key, kLetterOrder, order, {});
}

// Four bytes a number; all bits set ends the list, and nothing behind it counts.
void RepairNumbers(RootKey root, UnicodeView key) {
  RegValue order;
  if (!ReadValue({root, UnicodeString(key), UnicodeString(kNumberOrder)}, order)) return;
  const Bytes& old = order.data;
  Bytes kept;
  for (std::size_t at = 0; old.size() - at >= 4; at += 4) {
    const std::uint32_t number = traces::U32(old, at);
    const bool isEnd = number == 0xFFFFFFFFU;
    if (isEnd || RegValueExists(root, key, IntToStr(number), {})) {
      kept.insert(kept.end(), old.begin() + static_cast<std::ptrdiff_t>(at),
                  old.begin() + static_cast<std::ptrdiff_t>(at + 4));
    }
    if (isEnd) break;
  }
  if (kept.size() == old.size()) return;
  order.data = std::move(kept);
  Platform().registry.SetValue({root, key, View::Native}, order);
}

// Moves the values down until they count from the first number on without a gap. A value is only
// removed from its old name once all are at their new ones.
void Renumber(RootKey root, UnicodeView key, const std::map<std::int32_t, std::int32_t>& moves,
              UnicodeView prefix, std::int32_t first) {
  const KeyRef place{root, key, View::Native};
  std::vector<RegValue> values;
  if (!ReadValues(root, key, values)) return;
  std::map<std::int32_t, RegValue*> byNumber;
  for (RegValue& value : values) {
    if (!SameText(value.name.substr(0, prefix.size()), prefix)) continue;
    const std::int32_t number = NumberOf(UnicodeView(value.name).substr(prefix.size()));
    if (number >= first) byNumber.emplace(number, &value);
  }
  std::map<std::int32_t, bool> taken;
  for (const auto& [number, value] : byNumber) {
    const auto move = moves.find(number);
    if (move == moves.end()) continue;
    taken[move->second] = true;
    if (move->second == number) continue;
    const UnicodeString name = UnicodeString(prefix) + IntToStr(move->second);
    if (Platform().registry.SetValue(place, {name, value->type, value->data}) != Status::Ok) return;
  }
  for (const auto& [number, value] : byNumber) {
    if (!taken.contains(number)) Platform().registry.DeleteValue(place, value->name);
  }
}

void RepairConsecutive(const TTraceSource& source, RootKey root, UnicodeView key) {
  std::vector<RegValue> values;
  if (!ReadValues(root, key, values)) return;
  std::map<std::int32_t, std::int32_t> moves;
  for (const RegValue& value : values) {
    const std::int32_t number = NumberIn(source.value, value.name);
    if (number >= source.firstNumber) moves.emplace(number, 0);
  }
  std::int32_t next = source.firstNumber;
  bool changes = false;
  for (auto& [from, to] : moves) {
    to = next++;
    changes = changes || from != to;
  }
  const UnicodeView prefix = source.value.substr(0, source.value.size() - 1);
  if (changes) Renumber(root, key, moves, prefix, source.firstNumber);
  if (source.form != TraceForm::Address) return;
  // What is known of each address lies in keys beside it, under the same names.
  for (const UnicodeView companion : {UnicodeView(u"Time"), UnicodeView(u"VisitCount")}) {
    const UnicodeString beside = UnicodeString(key).append(companion);
    if (KeyExist(root, beside, {})) Renumber(root, beside, moves, prefix, source.firstNumber);
  }
}

}  // namespace

// ---- Plugin -------------------------------------------------------------------------------

void TTracePlugin::Search(const TZMMRU& scanner) {
  std::vector<RegValue> values;
  std::vector<Target> targets;
  for (const TTraceSource& source : sources_) {
    // An older system keeps no list, and one that is not there costs one look at its key.
    for (const UnicodeString& key : KeysOf(source)) {
      if (!ReadValues(source.root, key, values)) continue;
      for (const RegValue& value : values) {
        if (!IsEntryName(source.value, value.name)) continue;
        targets.clear();
        traces::ReadTargets(source, key, value, targets);
        const bool inParts = traces::HoldsParts(source.form);
        TTraceFlags flags = source.flags;
        if (inParts) flags = static_cast<TTraceFlags>(flags & ~(tfDeleteValue | tfEmptyValue));
        const TTraceSourceData data{source.root, key, value.name};
        for (const Target& target : targets) {
          const auto own = static_cast<TTraceFlags>(flags | (target.inStartMenu ? tfStartMenu : 0));
          scanner.OnScanTraceFound(*this, inParts ? tstRegPart : tstRegValue, data,
                                   source.targetType, own, target.name);
        }
      }
    }
  }
}

const TTraceSource* TTracePlugin::SourceOf(const TTraceSourceData& data) const {
  const auto found = std::ranges::find_if(sources_, [&](const TTraceSource& source) {
    return source.root == data.root && IsEntryName(source.value, data.valueName) &&
           MatchesKey(source, data.key);
  });
  return found == sources_.end() ? nullptr : &*found;
}

bool TTracePlugin::Holds(const TTraceSourceData& data, UnicodeView target) const {
  const TTraceSource* source = SourceOf(data);
  RegValue value;
  if (source == nullptr || !ReadValue(data, value)) return false;
  std::vector<Target> targets;
  traces::ReadTargets(*source, data.key, value, targets);
  return std::ranges::any_of(targets, [target](const Target& t) { return t.name == target; });
}

void TTracePlugin::NoteRemoval(const TTraceSourceData& source, UnicodeView target) {
  removals_.push_back({source, UnicodeString(target)});
}

void TTracePlugin::Repair() {
  std::vector<TTraceSourceData> lists;
  for (const Removal& removal : removals_) {
    const TTraceSource* source = SourceOf(removal.source);
    if (source == nullptr) continue;
    TTraceSourceData list = removal.source;
    // A list of values is mended once, a value of many traces once for each such value.
    if (!traces::HoldsParts(source->form)) list.valueName.clear();
    if (std::ranges::find(lists, list) != lists.end()) continue;
    lists.push_back(list);
    if (traces::HoldsParts(source->form))
      RepairParts(*source, removal.source);
    else
      RepairList(*source, removal.source);
  }
  removals_.clear();
}

void TTracePlugin::RepairList(const TTraceSource& source, const TTraceSourceData& data) const {
  switch (source.order) {
    case TraceOrder::None:
      break;
    case TraceOrder::Letters:
      RepairLetters(data.root, data.key);
      break;
    case TraceOrder::Numbers:
      RepairNumbers(data.root, data.key);
      break;
    case TraceOrder::Consecutive:
      RepairConsecutive(source, data.root, data.key);
      break;
  }
}

void TTracePlugin::RepairParts(const TTraceSource& source, const TTraceSourceData& data) const {
  TStringList gone;
  for (const Removal& removal : removals_) {
    if (removal.source == data) gone.push_back(removal.target);
  }
  std::ranges::sort(gone);
  RegValue value;
  if (!ReadValue(data, value)) return;
  if (!traces::RemoveParts(source, data.key, gone, value.data)) return;
  Platform().registry.SetValue({data.root, data.key, View::Native}, value);
}

// ---- List ---------------------------------------------------------------------------------

TTracePluginList::TTracePluginList(std::span<const TTraceSource> sources) {
  while (!sources.empty()) {
    const UnicodeView application = sources.front().application;
    std::size_t count = 1;
    while (count < sources.size() && sources[count].application == application) ++count;
    if (application == kOpenSaveApplication)
      items_.push_back(std::make_unique<TTCPComDlgOpenSave>(sources.first(count)));
    else
      items_.push_back(std::make_unique<TTracePlugin>(sources.first(count)));
    sources = sources.subspan(count);
  }
}

std::int32_t TTracePluginList::ReferenceOf(const TTracePlugin& plugin) const {
  const auto found = std::ranges::find(items_, &plugin, &std::unique_ptr<TTracePlugin>::get);
  return found == items_.end() ? 0 : static_cast<std::int32_t>(found - items_.begin()) + 1;
}

TTracePlugin* TTracePluginList::ByReference(std::int32_t reference) const {
  return reference >= 1 && reference <= Count() ? Get(reference - 1) : nullptr;
}

TTracePluginList& TracePlugins() {
  static TTracePluginList plugins(TraceSources());
  return plugins;
}

}  // namespace scrubwell
