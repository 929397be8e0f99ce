// Problem records and the global problem list, text templates, problem locators, the ignore list,
// the built-in exclusion tables, progress and run status.
//
// None of it is locked: it belongs to the thread that scans and cleans, and to the host's user
// interface between runs. StopSearch alone may be set from another thread or a signal handler.
#pragma once

#include <atomic>
#include <memory>
#include <span>

#include "registry/Hashlist.h"
#include "registry/types.h"

namespace scrubwell {

/// One found problem. Plain data; the state flags change through SetFixedState and SetVisibleState
/// so that the counters follow, Selected is the host's to write.
struct TSweepError {
  UnicodeString PluginID;
  std::int32_t ErrorType = 0;
  UnicodeString IconID;
  UnicodeString Caption;
  UnicodeString ShortDescription;
  UnicodeString Description;
  TStringList Data;  ///< items of the form "name:value", as the plugin passed them
  bool Selected = true;
  bool Fixed = false;
  bool Visible = true;
  bool Is64Bit = false;  ///< the first data item lies in the 64-bit view
};

/// The problems in the order they were found. Owns its records; indices stay stable until Clear.
/// PluginID, ErrorType and Data of a record don't change once it is in the list.
class TSweepErrorList {
 public:
  [[nodiscard]] std::int32_t Count() const { return static_cast<std::int32_t>(records_.size()); }
  [[nodiscard]] TSweepError* Get(std::int32_t index) const {
    return records_[static_cast<std::size_t>(index)].get();
  }
  TSweepError& operator[](std::int32_t index) const { return *Get(index); }
  /// Replaces a record; the old one is released.
  void Put(std::int32_t index, std::unique_ptr<TSweepError> record);
  /// Appends a record and returns its index.
  std::int32_t Add(std::unique_ptr<TSweepError> record);
  /// Whether an unfixed record of the same plugin and kind has exactly the same data items.
  /// Constant time on average, however many records there are.
  [[nodiscard]] bool HasUnfixed(UnicodeView pluginID, std::int32_t errorType,
                                std::span<const UnicodeString> data) const;
  void Clear();

 private:
  // One slot for each record, found by the hash of what makes two records equal; at most half of
  // the slots, whose number is a power of two, were ever taken.
  struct Slot {
    std::uint32_t hash = 0;
    std::int32_t record = kFree;
  };
  static constexpr std::int32_t kFree = -1;
  static constexpr std::int32_t kGone = -2;

  void Enter(std::int32_t index);
  void Rebuild(std::size_t slots);

  std::vector<std::unique_ptr<TSweepError>> records_;
  std::vector<Slot> slots_;
  std::size_t taken_ = 0;
};

// ---- Globals: null or zero until the package starts up ------------------------------------

extern TSweepErrorList* SweepErrors;
/// Problems that are visible and not fixed. The host resets it with SweepErrors->Clear().
extern std::int32_t RealSweepErrorCount;
/// Problems added while not on the ignore list; only ever incremented here.
extern std::int32_t CategoryErrors;

// Keys are upper-case; a non-null value means that the table holds the key.
extern THashList* IgnoredCLSIDs;
extern THashList* IgnoredInterfaces;
extern THashList* IgnoredLinkedCLSIDs;
extern THashList* IgnoredTypeLibs;
extern THashList* IgnoredAppIds;
extern THashList* IgnoredSystemProtectedKeys;

/// One entry of the ignore list as the host stored it.
struct TIgnoredProblem {
  UnicodeString StoredName;
  UnicodeString Text1;
  UnicodeString Text2;
  UnicodeString Text3;
};
/// From identification string to TIgnoredProblem; the entries are released by
/// ClearIgnoredProblems.
extern THashList* IgnoredProblems;

enum TRCStatus : std::int32_t {
  RCS_NotScannedYet,
  RCS_WaitingForUser,
  RCS_Scanning,
  RCS_ScanAborted,
  RCS_Cleaning,
  RCS_Cleaned,
  RCS_NotAllCleaned,
};
extern TRCStatus RCStatus;
extern std::atomic<bool> StopSearch;
/// A repair may have produced new problems: a new scan is advisable. Never cleared in here.
extern bool ShouldReSearch;

// ---- Problem state ------------------------------------------------------------------------

bool IsErrorVisible(std::int32_t index);
bool IsErrorSelectedForCleaning(std::int32_t index);
void SetFixedState(std::int32_t index, bool fixed);
void SetVisibleState(std::int32_t index, bool visible);
/// Whether the item's name (the text before its first ":") is `name`, exactly. The value is what
/// follows that colon, and the whole item when there is none; it looks into the item's text.
bool DataItemHasName(UnicodeView item, UnicodeView name, UnicodeView& value);
/// The value of the first of data[0..high] whose name (before its first ":") is `name`, exactly;
/// empty when there is none. High is the index of the last item.
UnicodeString GetErrorStringValue(const TStringList& data, std::int32_t high, UnicodeView name);
UnicodeString GetErrorStringValue(const TStringList& data, UnicodeView name);

// ---- Memory -------------------------------------------------------------------------------

/// Forgets what was looked up so far: variables, the folders of the search order, which file a text
/// means. The package does so itself when a plugin counts its work anew and when a cleaning pass is
/// prepared; a host whose world has changed meanwhile may ask for it at any time.
void ForgetLookups();

// ---- Templates ----------------------------------------------------------------------------

/// Fills the placeholders of a template from the data items. A placeholder whose item is missing
/// stays as it stands.
UnicodeString InsertData(UnicodeView pattern, const TStringList& data);
/// The empty text is written as "-" in quotation marks, and back.
UnicodeString StrOrEmpty(UnicodeView text);
UnicodeString StrOrEmptyToStr(UnicodeView text);

// ---- Locators -----------------------------------------------------------------------------

void GetErrorRegKey(const TSweepError& error, UnicodeView itemName, RootKey& root,
                    UnicodeString& key, TZmRegOptions& opts);
void GetErrorRegValue(const TSweepError& error, UnicodeView keyItemName, UnicodeView valueItemName,
                      RootKey& root, UnicodeString& key, UnicodeString& valueName,
                      TZmRegOptions& opts);
/// The path without its last part; a path of one part as it is.
UnicodeString StripLastKey(UnicodeView path);
/// Begins with "{" and ends with "}"; what is between is not looked at.
bool IsCLSIDKey(UnicodeView name);

// ---- Ignore list --------------------------------------------------------------------------

UnicodeString BuildErrorIdentificationString(const TSweepError& error);
void AddIgnoredProblem(UnicodeView name, UnicodeView data);
/// Adds the stored entries of the host's product key and of the current user's; clears nothing.
void LoadIgnoredProblems();
void ClearIgnoredProblems();
/// The key path below which ignored problems are stored.
UnicodeString IgnoredProblemsKey();
/// The stored form of one entry, which AddIgnoredProblem parses.
UnicodeString BuildIgnoredProblemData(UnicodeView identification, UnicodeView text1,
                                      UnicodeView text2, UnicodeView text3);
/// Writes an entry for the problem, or replaces the one of the same StoredName: to the list of the
/// host's product key, which is the machine's, or to the current user's. IgnoredProblems stays as
/// it was loaded.
Status StoreIgnoredProblem(const TSweepError& error, const TIgnoredProblem& entry, bool machine);
/// Takes the entry of that name off one of the two lists; Absent when there is none.
Status RemoveIgnoredProblem(UnicodeView storedName, bool machine);

// ---- Progress -----------------------------------------------------------------------------

/// Half to even, like every rounding of progress and weights.
std::int32_t RoundHalfEven(double value);

/// Combines the per-mille progress of weighted work items into one figure and times them. The
/// operations are virtual so that a host of the loadable module can call them on a manager that the
/// module made.
class TProgressManager {
 public:
  TProgressManager() = default;
  virtual ~TProgressManager() = default;
  TProgressManager(const TProgressManager&) = delete;
  TProgressManager& operator=(const TProgressManager&) = delete;

  virtual void AddItem(UnicodeView name, std::int32_t count, std::int32_t weight);
  virtual void SetProgress(UnicodeView name, std::int32_t promille);
  virtual void BeginItem(UnicodeView name);
  virtual void EndItem(UnicodeView name);
  /// Releases the items; the timing log stays.
  virtual void Clear();
  [[nodiscard]] std::int32_t TotalItems() const { return FTotalItems; }
  [[nodiscard]] virtual std::int32_t GetDoneItems() const;
  [[nodiscard]] virtual std::int32_t GetTotalProgress() const;
  [[nodiscard]] const TStringList& TimingLog() const { return FTimingLog; }

 private:
  struct Item {
    std::int32_t count;
    std::int32_t weight;
    std::int32_t promille;
  };
  std::vector<std::unique_ptr<Item>> FItems;
  detail::TextMap<Item*> FByName;
  std::int32_t FTotalItems = 0;
  std::int64_t FTotalWeight = 0;
  TStringList FTimingLog;
  std::uint32_t FStart = 0;
};

// ---- Start-up -----------------------------------------------------------------------------

/// Unit start-up and shut-down; counted, so that each runs once however often it is called.
void InitialiseRcCommon();
void FinaliseRcCommon();

}  // namespace scrubwell
