// The base of all scanner plugins, the plugin list and its groups.
#pragma once

#include <functional>
#include <span>

#include "framework/Rc_common.h"
#include "registry/Zmregistry.h"
#include "texts/text.h"

namespace scrubwell {

class TRCPlugin;

enum TRcpState : std::int32_t { rcpUnknown, rcpInited, rcpScanned, rcpCleaned };

/// Called on the scanning thread; must not block. Promille is 0 to 1000.
using TScanProgressEvent = std::function<void(TRCPlugin& sender, std::int32_t promille,
                                              UnicodeView displayString, bool mustDisplay)>;
using TCleanProgressEvent =
    std::function<void(TRCPlugin& sender, std::int32_t promille, UnicodeView actionCaption,
                       UnicodeView subCaption, bool mustDisplay)>;

/// Called on the cleaning thread just before and just after the repair of each problem, which is
/// named by its index in SweepErrors, so that a host can tell which changes belong to which.
using TCleanProblemEvent =
    std::function<void(TRCPlugin& sender, std::int32_t index, bool repaired)>;

/// What a plugin's constructor says of its category.
struct TCategory {
  UnicodeView className;  ///< "TRCP" and the identifier
  std::int32_t imageIndex = -1;
  int iconID = 0;
  TText caption;
  TText shortDescription;
  TText description;
};

/// What AddError says of one kind of problem.
struct TProblemKind {
  std::int32_t kind = 0;
  int iconID = 0;
  TText caption;
  TText shortDescription;
  TText description;
};

/// A key and the view it is opened in.
struct KeyPlace {
  RootKey root = RootKey::None;
  UnicodeView key;
  TZmRegOptions opts;
};

class TRCPlugin {
 public:
  /// Takes the texts and the kinds of the plugin and enrols it in Plugins. Both must outlive it;
  /// they are constexpr tables of the plugin's unit.
  TRCPlugin(const TCategory& category, std::span<const TProblemKind> kinds);
  virtual ~TRCPlugin();
  TRCPlugin(const TRCPlugin&) = delete;
  TRCPlugin& operator=(const TRCPlugin&) = delete;

  /// What the plugin says of each kind of problem, before any data is put in.
  [[nodiscard]] std::span<const TProblemKind> Kinds() const { return FKinds; }
  /// Repairs one problem; true on success.
  virtual bool CleanError(const TSweepError& error) = 0;
  /// Counts the work and prepares lists; ends in rcpInited.
  virtual void Init() = 0;
  /// Walks the area and reports problems; ends in rcpScanned unless it was stopped.
  virtual void Scan() = 0;
  virtual void InitClean();
  virtual void Clean();

  TScanProgressEvent OnScanProgress;
  TCleanProgressEvent OnCleanProgress;
  std::int32_t FScanItemCount = 0;
  std::int32_t FCleanItemCount = 0;
  std::int32_t FScanItemsDone = 0;
  std::int32_t FCleanItemsDone = 0;
  double FPromillePerItem = 0;
  bool Active = true;
  std::int32_t FCleanFailures = 0;
  UnicodeString FPluginID;
  TRcpState FState = rcpUnknown;
  UnicodeString Caption;
  UnicodeString Description;
  std::int32_t ImageIndex = -1;
  UnicodeString IconFileName;
  std::int32_t ErrorCount = 0;
  std::int32_t ScanWeight = 0;
  UnicodeString ShortDescription;
  std::int32_t CleanWeight = 0;
  std::int32_t GroupIndex = 0;
  bool StopRequested = false;
  TCleanProblemEvent OnBeforeRepair;  ///< `repaired` is false
  TCleanProblemEvent OnAfterRepair;   ///< `repaired` is what CleanError said

  /// The value part of a registry key item: the view, a colon, the full path. Throws
  /// std::logic_error for the native view: a problem must record which view it lies in.
  [[nodiscard]] UnicodeString BuildErrorRegKeyParameter(UnicodeView key, TZmRegOptions opts) const;
  /// Report and delete; true on success. A root key is never deleted.
  bool DeleteRegKeyWrapper(RootKey root, UnicodeView key, TZmRegOptions opts);
  bool DeleteRegValueWrapper(RootKey root, UnicodeView key, UnicodeView valueName,
                             TZmRegOptions opts);

 protected:
  /// Adds a problem of a kind of the plugin's table; an unknown kind has no icon and no texts.
  void AddError(std::int32_t kind, const TStringList& data);
  /// Deletes the value that the problem's first two items name, by the wrapper.
  bool DeleteErrorRegValue(const TSweepError& error);
  /// Adds a problem unless it lies on a protected key or stands in the list already.
  void AddErrorEx(std::int32_t errorType, UnicodeView iconID, UnicodeView caption,
                  UnicodeView shortDescription, UnicodeView description, const TStringList& data);
  /// Report progress; false means that the caller must stop at once.
  bool ShowScanItem(UnicodeView displayString, bool mustDisplay = false);
  bool ShowCleanItem(UnicodeView actionCaption, UnicodeView subCaption, bool mustDisplay = false);
  /// Set the number of items, the weight with it, and begin counting anew. The per-mille step is
  /// one for both: whichever was called last holds.
  void SetFScanItemCount(std::int32_t count);
  void SetFCleanItemCount(std::int32_t count);

  /// Announces and checks each value of a list that Init read from one key in one view. A key that
  /// the user may not write is passed over in silence, for nothing there could be repaired; its
  /// items stay counted, so that progress then ends short of the full weight. With `skipDefault`
  /// the default value is neither announced nor checked. False when a stop was requested: the
  /// caller must leave Scan at once.
  using TValueCheck = std::function<void(UnicodeView name, UnicodeView data)>;
  bool ScanValueList(const KeyPlace& place, const TStringList& names, const TStringList& data,
                     const TValueCheck& check, bool skipDefault = false);
  /// Deletes the key when it holds nothing at all; true when that was so, whatever came of the
  /// deletion. When the key was one directly below the classes root, other than a file extension's,
  /// a new scan is advised.
  bool DeleteKeyIfEmpty(RootKey root, UnicodeView key, TZmRegOptions opts);

 private:
  std::span<const TProblemKind> FKinds;
};

/// A list of plugins that it does not own.
class TPluginList {
 public:
  [[nodiscard]] std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }
  [[nodiscard]] TRCPlugin* Get(std::int32_t index) const {
    return items_[static_cast<std::size_t>(index)];
  }
  void Put(std::int32_t index, TRCPlugin* plugin) {
    items_[static_cast<std::size_t>(index)] = plugin;
  }
  TRCPlugin& operator[](std::int32_t index) const { return *Get(index); }
  void Add(TRCPlugin* plugin) { items_.push_back(plugin); }
  void Remove(TRCPlugin* plugin);
  /// By group, then by caption in the locale's order, letter case ignored.
  void Sort();
  [[nodiscard]] bool GetStopSearch() const;
  void SetStopSearch(bool stop);
  [[nodiscard]] auto begin() const { return items_.begin(); }
  [[nodiscard]] auto end() const { return items_.end(); }

 private:
  std::vector<TRCPlugin*> items_;
};

/// The host's groups, one list each; owns neither lists nor plugins.
class TPluginGroupList {
 public:
  [[nodiscard]] std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }
  [[nodiscard]] TPluginList* Get(std::int32_t index) const {
    return items_[static_cast<std::size_t>(index)];
  }
  void Put(std::int32_t index, TPluginList* list) {
    items_[static_cast<std::size_t>(index)] = list;
  }
  void Add(TPluginList* list) { items_.push_back(list); }

 private:
  std::vector<TPluginList*> items_;
};

/// Every plugin in the order of creation; null until start-up and after shut-down.
extern TPluginList* Plugins;
/// The host creates and fills it.
extern TPluginGroupList* PluginGroups;

void SetAllPluginStatus(bool active);
/// False when there is no such plugin. A negative group keeps the plugin's group.
bool SetPluginStatus(UnicodeView id, bool active, std::int32_t group);
/// Identifiers compare exactly. The output is null when there is none.
bool GetPluginByID(UnicodeView id, TRCPlugin*& plugin);
/// Sum of the error counts of the group's plugins.
std::int32_t GetGroupErrorCount(std::int32_t group);

void InitialiseRcBaseplugin();
void FinaliseRcBaseplugin();

/// Start-up and shut-down of one plugin's unit: its single instance, counted.
template <class Plugin>
struct TPluginUnit {
  static void Initialise() {
    if (count_++ == 0) instance_ = std::make_unique<Plugin>();
  }
  static void Finalise() {
    if (count_ > 0 && --count_ == 0) instance_.reset();
  }

 private:
  static inline int count_ = 0;
  static inline std::unique_ptr<Plugin> instance_;
};

}  // namespace scrubwell
