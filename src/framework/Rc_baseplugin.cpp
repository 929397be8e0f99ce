#include "framework/Rc_baseplugin.h"

#include <algorithm>
#include <stdexcept>

#include "registry/Stringhelper.h"
#include "registry/Zmgraphics.h"
#include "texts/framework.h"

namespace scrubwell {

TPluginList* Plugins = nullptr;
TPluginGroupList* PluginGroups = nullptr;

namespace {

constexpr UnicodeView kClassPrefix = u"TRCP";
constexpr UnicodeView kKeyItem = u"existingkey:";

std::unique_ptr<TPluginList> plugins;
int startUps = 0;

double PromillePerItem(std::int32_t count) {
  return count >= 1 ? 1000.0 / count : 0;
}

// Only the problem's first key counts, in whichever view it lies.
bool LiesOnProtectedKey(const TStringList& data) {
  const auto item = std::ranges::find_if(
      data, [](const UnicodeString& text) { return text.starts_with(kKeyItem); });
  if (item == data.end()) return false;
  UnicodeView key = UnicodeView(*item).substr(kKeyItem.size());
  if (key.starts_with(u"32:") || key.starts_with(u"64:")) key.remove_prefix(3);
  return IgnoredSystemProtectedKeys->Contains(UpperCase(Trim(key)));
}

bool IsIgnored(const TSweepError& problem) {
  // Most lists are empty, and the identification is dear to build.
  return IgnoredProblems->Count() != 0 &&
         IgnoredProblems->Contains(BuildErrorIdentificationString(problem));
}

}  // namespace

// ---- Plugin -------------------------------------------------------------------------------

TRCPlugin::TRCPlugin(const TCategory& category, std::span<const TProblemKind> kinds)
    : FPluginID(category.className.substr(kClassPrefix.size())),
      Caption(LoadText(category.caption)),
      Description(LoadText(category.description)),
      ImageIndex(category.imageIndex),
      IconFileName(FileNameByID(category.iconID, PluginGraphics)),
      ShortDescription(LoadText(category.shortDescription)),
      FKinds(kinds) {
  if (Plugins != nullptr) Plugins->Add(this);
}

TRCPlugin::~TRCPlugin() {
  if (Plugins != nullptr) Plugins->Remove(this);
}

void TRCPlugin::AddError(std::int32_t kind, const TStringList& data) {
  const auto known = std::ranges::find(FKinds, kind, &TProblemKind::kind);
  if (known == FKinds.end()) {
    AddErrorEx(kind, {}, {}, {}, {}, data);
    return;
  }
  AddErrorEx(kind, FileNameByID(known->iconID, PluginGraphics), LoadText(known->caption),
             LoadText(known->shortDescription), LoadText(known->description), data);
}

void TRCPlugin::AddErrorEx(std::int32_t errorType, UnicodeView iconID, UnicodeView caption,
                           UnicodeView shortDescription, UnicodeView description,
                           const TStringList& data) {
  if (LiesOnProtectedKey(data)) return;
  // A problem that was repaired and is found again is a new one.
  if (SweepErrors->HasUnfixed(FPluginID, errorType, data)) return;

  auto problem = std::make_unique<TSweepError>();
  problem->PluginID = FPluginID;
  problem->ErrorType = errorType;
  problem->IconID = UnicodeString(iconID);
  problem->Caption = InsertData(caption, data);
  problem->ShortDescription = InsertData(shortDescription, data);
  problem->Description = InsertData(description, data);
  problem->Data = data;
  // By design only the first item tells the view.
  problem->Is64Bit = !data.empty() && data.front().find(u":64:") != UnicodeString::npos;
  problem->Visible = !IsIgnored(*problem);
  if (problem->Visible) {
    ++CategoryErrors;
    ++RealSweepErrorCount;
    ++ErrorCount;
  }
  SweepErrors->Add(std::move(problem));
}

bool TRCPlugin::ShowScanItem(UnicodeView displayString, bool mustDisplay) {
  if (StopSearch) return false;
  ++FScanItemsDone;
  if (OnScanProgress)
    OnScanProgress(*this, RoundHalfEven(FScanItemsDone * FPromillePerItem), displayString,
                   mustDisplay);
  return true;
}

bool TRCPlugin::ShowCleanItem(UnicodeView actionCaption, UnicodeView subCaption, bool mustDisplay) {
  if (StopSearch) return false;
  if (OnCleanProgress)
    OnCleanProgress(*this, RoundHalfEven(FCleanItemsDone * FPromillePerItem), actionCaption,
                    subCaption, mustDisplay);
  return true;
}

// Every Init ends here, so that no scan answers from what an earlier one has looked up.
void TRCPlugin::SetFScanItemCount(std::int32_t count) {
  ForgetLookups();
  FScanItemsDone = 0;
  FScanItemCount = count;
  FPromillePerItem = PromillePerItem(count);
  ScanWeight = count;
}

void TRCPlugin::SetFCleanItemCount(std::int32_t count) {
  FCleanItemsDone = 0;
  FCleanItemCount = count;
  FPromillePerItem = PromillePerItem(count);
  CleanWeight = count;
}

void TRCPlugin::InitClean() {
  ForgetLookups();
  StopSearch = false;
  FCleanFailures = 0;
  std::int32_t count = 0;
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    if (SweepErrors->Get(i)->PluginID == FPluginID && IsErrorSelectedForCleaning(i)) ++count;
  }
  SetFCleanItemCount(count);
}

void TRCPlugin::Clean() {
  FCleanItemsDone = 0;
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    const TSweepError& problem = *SweepErrors->Get(i);
    if (problem.PluginID != FPluginID || !IsErrorSelectedForCleaning(i)) continue;
    if (StopSearch) return;
    ++FCleanItemsDone;
    if (OnBeforeRepair) OnBeforeRepair(*this, i, false);
    const bool repaired = CleanError(problem);
    if (repaired)
      SetFixedState(i, true);
    else
      ++FCleanFailures;
    if (OnAfterRepair) OnAfterRepair(*this, i, repaired);
  }
}

UnicodeString TRCPlugin::BuildErrorRegKeyParameter(UnicodeView key, TZmRegOptions opts) const {
  if (opts.Contains(zmregNative))
    throw std::logic_error(
        "[RC_BasePlugin: BuildErrorRegKeyParameter] RegOpts may not contain zmregNative! "
        "(FPluginID=\"" +
        ToUtf8(FPluginID) + "\")");
  return UnicodeString(opts.Contains(zmreg64Bit) ? u"64:" : u"32:").append(key);
}

bool TRCPlugin::DeleteRegKeyWrapper(RootKey root, UnicodeView key, TZmRegOptions opts) {
  // A path of nothing but backslashes would name the root key as well as an empty one.
  if (key.find_first_not_of(u'\\') == UnicodeView::npos) return false;
  ShowCleanItem(LoadText(texts::framework::kDeletingKey), key);
  return DeleteRegKey(root, key, opts) == ERRC_SUCCESS;
}

bool TRCPlugin::DeleteRegValueWrapper(RootKey root, UnicodeView key, UnicodeView valueName,
                                      TZmRegOptions opts) {
  UnicodeString shown(key);
  if (valueName.empty())
    shown.append(u" - (").append(LoadText(texts::framework::kDefaultValue)).append(u")");
  else
    shown.append(u" - ").append(valueName);
  ShowCleanItem(LoadText(texts::framework::kDeletingValue), shown);
  return DeleteRegValue(root, key, valueName, opts) == ERRC_SUCCESS;
}

bool TRCPlugin::DeleteErrorRegValue(const TSweepError& error) {
  RootKey root = RootKey::None;
  UnicodeString key;
  UnicodeString valueName;
  TZmRegOptions opts;
  GetErrorRegValue(error, u"existingkey", u"existingvalue", root, key, valueName, opts);
  return DeleteRegValueWrapper(root, key, valueName, opts);
}

bool TRCPlugin::ScanValueList(const KeyPlace& place, const TStringList& names,
                              const TStringList& data, const TValueCheck& check, bool skipDefault) {
  if (names.empty() || !KeyIsWriteable(place.root, place.key, place.opts)) return true;
  for (std::size_t i = 0; i < names.size() && i < data.size(); ++i) {
    if (skipDefault && names[i].empty()) continue;
    if (!ShowScanItem(names[i])) return false;
    check(names[i], data[i]);
  }
  return true;
}

bool TRCPlugin::DeleteKeyIfEmpty(RootKey root, UnicodeView key, TZmRegOptions opts) {
  if (!KeyEmptyExEx(root, key, opts)) return false;
  // What refers to a class or file type that goes as a whole is broken from now on.
  const bool topLevel = key.find(u'\\') == UnicodeView::npos && !key.starts_with(u'.');
  if (root == HKEY_CLASSES_ROOT && topLevel) ShouldReSearch = true;
  DeleteRegKeyWrapper(root, key, opts);
  return true;
}

// ---- Lists --------------------------------------------------------------------------------

void TPluginList::Remove(TRCPlugin* plugin) {
  std::erase(items_, plugin);
}

void TPluginList::Sort() {
  std::ranges::stable_sort(items_, [](const TRCPlugin* a, const TRCPlugin* b) {
    if (a->GroupIndex != b->GroupIndex) return a->GroupIndex < b->GroupIndex;
    return Platform().text.CompareText(a->Caption, b->Caption) < 0;
  });
}

bool TPluginList::GetStopSearch() const {
  return std::ranges::any_of(items_, &TRCPlugin::StopRequested);
}

void TPluginList::SetStopSearch(bool stop) {
  for (TRCPlugin* plugin : items_) plugin->StopRequested = stop;
}

void SetAllPluginStatus(bool active) {
  if (Plugins == nullptr) return;
  for (TRCPlugin* plugin : *Plugins) plugin->Active = active;
}

bool SetPluginStatus(UnicodeView id, bool active, std::int32_t group) {
  TRCPlugin* plugin = nullptr;
  if (!GetPluginByID(id, plugin)) return false;
  plugin->Active = active;
  if (group >= 0) plugin->GroupIndex = group;
  return true;
}

bool GetPluginByID(UnicodeView id, TRCPlugin*& plugin) {
  plugin = nullptr;
  if (Plugins == nullptr) return false;
  const auto found = std::ranges::find(*Plugins, id, &TRCPlugin::FPluginID);
  if (found == Plugins->end()) return false;
  plugin = *found;
  return true;
}

std::int32_t GetGroupErrorCount(std::int32_t group) {
  std::int32_t count = 0;
  if (Plugins == nullptr) return count;
  for (const TRCPlugin* plugin : *Plugins) {
    if (plugin->GroupIndex == group) count += plugin->ErrorCount;
  }
  return count;
}

void InitialiseRcBaseplugin() {
  if (startUps++ != 0) return;
  plugins = std::make_unique<TPluginList>();
  Plugins = plugins.get();
}

void FinaliseRcBaseplugin() {
  if (startUps == 0 || --startUps != 0) return;
  Plugins = nullptr;
  plugins.reset();
}

}  // namespace scrubwell
