// The package's state, the problem list and the state of its problems, problem locators.
#include "framework/Rc_common.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "framework/Rc_baseplugin.h"
#include "framework/exclusions.h"
#include "registry/PathResolver.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell {

TSweepErrorList* SweepErrors = nullptr;
std::int32_t RealSweepErrorCount = 0;
std::int32_t CategoryErrors = 0;
THashList* IgnoredCLSIDs = nullptr;
THashList* IgnoredInterfaces = nullptr;
THashList* IgnoredLinkedCLSIDs = nullptr;
THashList* IgnoredTypeLibs = nullptr;
THashList* IgnoredAppIds = nullptr;
THashList* IgnoredSystemProtectedKeys = nullptr;
THashList* IgnoredProblems = nullptr;
TRCStatus RCStatus = RCS_NotScannedYet;
std::atomic<bool> StopSearch{false};
bool ShouldReSearch = false;

namespace {

// Everything that start-up creates and shut-down releases.
struct PackageState {
  TSweepErrorList sweepErrors;
  THashList clsids, interfaces, linkedClsids, typeLibs, appIds, protectedKeys;
  THashList ignoredProblems;
};

std::unique_ptr<PackageState> state;
int startUps = 0;

void FillTable(THashList& table, std::span<const UnicodeView> entries) {
  const auto marker = reinterpret_cast<THashList::Value>(std::uintptr_t{1});
  for (const UnicodeView entry : entries) table.Add(UpperCase(entry), marker);
}

void PublishState(PackageState* s) {
  SweepErrors = s ? &s->sweepErrors : nullptr;
  IgnoredCLSIDs = s ? &s->clsids : nullptr;
  IgnoredInterfaces = s ? &s->interfaces : nullptr;
  IgnoredLinkedCLSIDs = s ? &s->linkedClsids : nullptr;
  IgnoredTypeLibs = s ? &s->typeLibs : nullptr;
  IgnoredAppIds = s ? &s->appIds : nullptr;
  IgnoredSystemProtectedKeys = s ? &s->protectedKeys : nullptr;
  IgnoredProblems = s ? &s->ignoredProblems : nullptr;
  RealSweepErrorCount = 0;
  CategoryErrors = 0;
  RCStatus = RCS_NotScannedYet;
  StopSearch = false;
  ShouldReSearch = false;
}

std::uint32_t HashProblem(UnicodeView pluginID, std::int32_t errorType,
                          std::span<const UnicodeString> data) {
  const std::hash<UnicodeView> hash;
  std::uint64_t h = hash(pluginID) + static_cast<std::uint32_t>(errorType);
  // The order of the items counts.
  constexpr std::uint64_t kFactor = 1099511628211U;
  for (const UnicodeString& item : data) h = h * kFactor + hash(item);
  return static_cast<std::uint32_t>(h ^ h >> 32U);
}

TSweepError* ProblemAt(std::int32_t index) {
  if (SweepErrors == nullptr || index < 0 || index >= SweepErrors->Count()) return nullptr;
  return SweepErrors->Get(index);
}

// A problem came into sight (+1) or went out of it (-1). A problem of a plugin that is not there
// counts in the overall figure alone.
void CountVisible(const TSweepError& problem, std::int32_t change) {
  TRCPlugin* plugin = nullptr;
  if (GetPluginByID(problem.PluginID, plugin)) plugin->ErrorCount += change;
  RealSweepErrorCount += change;
}

}  // namespace

void InitialiseRcCommon() {
  if (startUps++ != 0) return;
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  state = std::make_unique<PackageState>();
  FillTable(state->clsids, exclusions::kIgnoredCLSIDs);
  FillTable(state->interfaces, exclusions::kIgnoredInterfaces);
  FillTable(state->linkedClsids, exclusions::kIgnoredLinkedCLSIDs);
  FillTable(state->typeLibs, exclusions::kIgnoredTypeLibs);
  FillTable(state->appIds, exclusions::kIgnoredAppIds);
  FillTable(state->protectedKeys, exclusions::kIgnoredSystemProtectedKeys);
  PublishState(state.get());
}

void FinaliseRcCommon() {
  if (startUps == 0 || --startUps != 0) return;
  ClearIgnoredProblems();
  PublishState(nullptr);
  state.reset();
}

// ---- Problem list -------------------------------------------------------------------------

void TSweepErrorList::Enter(std::int32_t index) {
  if (taken_ * 2 >= slots_.size()) Rebuild(std::max<std::size_t>(64, slots_.size() * 2));
  const TSweepError& record = *Get(index);
  const std::uint32_t hash = HashProblem(record.PluginID, record.ErrorType, record.Data);
  std::size_t at = hash & (slots_.size() - 1);
  while (slots_[at].record != kFree) at = (at + 1) & (slots_.size() - 1);
  slots_[at] = {hash, index};
  ++taken_;
}

void TSweepErrorList::Rebuild(std::size_t slots) {
  std::vector<Slot> old(slots);
  old.swap(slots_);
  taken_ = 0;
  for (const Slot& slot : old) {
    if (slot.record < 0) continue;
    std::size_t at = slot.hash & (slots_.size() - 1);
    while (slots_[at].record != kFree) at = (at + 1) & (slots_.size() - 1);
    slots_[at] = slot;
    ++taken_;
  }
}

std::int32_t TSweepErrorList::Add(std::unique_ptr<TSweepError> record) {
  const std::int32_t index = Count();
  records_.push_back(std::move(record));
  Enter(index);
  return index;
}

void TSweepErrorList::Put(std::int32_t index, std::unique_ptr<TSweepError> record) {
  std::unique_ptr<TSweepError>& place = records_[static_cast<std::size_t>(index)];
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = HashProblem(place->PluginID, place->ErrorType, place->Data) & mask;
  while (slots_[at].record != index && slots_[at].record != kFree) at = (at + 1) & mask;
  // A record that was changed in place is no longer where its data leads; its slot then stays,
  // and is compared with what is there now.
  if (slots_[at].record == index) slots_[at].record = kGone;
  place = std::move(record);
  Enter(index);
}

bool TSweepErrorList::HasUnfixed(UnicodeView pluginID, std::int32_t errorType,
                                 std::span<const UnicodeString> data) const {
  if (slots_.empty()) return false;
  const std::uint32_t hash = HashProblem(pluginID, errorType, data);
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t at = hash & mask; slots_[at].record != kFree; at = (at + 1) & mask) {
    if (slots_[at].record == kGone || slots_[at].hash != hash) continue;
    const TSweepError& e = *Get(slots_[at].record);
    if (!e.Fixed && e.ErrorType == errorType && e.PluginID == pluginID &&
        std::ranges::equal(e.Data, data)) {
      return true;
    }
  }
  return false;
}

void TSweepErrorList::Clear() {
  records_.clear();
  slots_.clear();
  taken_ = 0;
}

void ForgetLookups() {
  paths::ForgetLookups();
}

// ---- Problem state ------------------------------------------------------------------------

bool IsErrorVisible(std::int32_t index) {
  const TSweepError* e = ProblemAt(index);
  return e != nullptr && e->Visible && !e->Fixed;
}

bool IsErrorSelectedForCleaning(std::int32_t index) {
  return IsErrorVisible(index) && ProblemAt(index)->Selected;
}

void SetFixedState(std::int32_t index, bool fixed) {
  TSweepError* e = ProblemAt(index);
  if (e == nullptr || e->Fixed == fixed) return;
  if (e->Visible) CountVisible(*e, fixed ? -1 : 1);
  e->Fixed = fixed;
}

void SetVisibleState(std::int32_t index, bool visible) {
  TSweepError* e = ProblemAt(index);
  if (e == nullptr || e->Visible == visible) return;
  if (!e->Fixed) CountVisible(*e, visible ? 1 : -1);
  e->Visible = visible;
}

UnicodeString GetErrorStringValue(const TStringList& data, std::int32_t high, UnicodeView name) {
  const std::size_t count =
      std::min(data.size(), high < 0 ? 0 : static_cast<std::size_t>(high) + 1);
  for (std::size_t i = 0; i < count; ++i) {
    if (UnicodeView value; DataItemHasName(data[i], name, value)) return UnicodeString(value);
  }
  return {};
}

UnicodeString GetErrorStringValue(const TStringList& data, UnicodeView name) {
  return GetErrorStringValue(data, static_cast<std::int32_t>(data.size()) - 1, name);
}

bool DataItemHasName(UnicodeView item, UnicodeView name, UnicodeView& value) {
  // Names hold no colon, so the usual question is answered without a search for the item's first.
  if (!name.empty() && item.size() > name.size() && item[name.size()] != u':') {
    value = {};
    return false;
  }
  const std::size_t colon = item.find(u':');
  // An item without a colon has an empty name and is all value.
  const bool bare = colon == UnicodeView::npos;
  value = bare ? item : item.substr(colon + 1);
  return item.substr(0, bare ? 0 : colon) == name;
}

// ---- Locators -----------------------------------------------------------------------------

void GetErrorRegKey(const TSweepError& error, UnicodeView itemName, RootKey& root,
                    UnicodeString& key, TZmRegOptions& opts) {
  const UnicodeString text = GetErrorStringValue(error.Data, itemName);
  UnicodeView rest = text;
  opts = {zmregNative};
  if (rest.starts_with(u"32:") || rest.starts_with(u"64:")) {
    opts = rest.starts_with(u"64:") ? TZmRegOptions{zmreg64Bit} : TZmRegOptions{zmreg32Bit};
    rest.remove_prefix(3);
  }
  const std::size_t slash = rest.find(u'\\');
  root = GetMainKeyFromString(rest.substr(0, slash));
  key = slash == UnicodeView::npos ? UnicodeString() : UnicodeString(rest.substr(slash + 1));
}

void GetErrorRegValue(const TSweepError& error, UnicodeView keyItemName, UnicodeView valueItemName,
                      RootKey& root, UnicodeString& key, UnicodeString& valueName,
                      TZmRegOptions& opts) {
  GetErrorRegKey(error, keyItemName, root, key, opts);
  valueName = GetErrorStringValue(error.Data, valueItemName);
}

UnicodeString StripLastKey(UnicodeView path) {
  return UnicodeString(path.substr(0, path.rfind(u'\\')));
}

bool IsCLSIDKey(UnicodeView name) {
  return name.starts_with(u'{') && name.ends_with(u'}');
}

}  // namespace scrubwell
