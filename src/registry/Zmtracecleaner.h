// Where Windows and programs keep their usage history in the registry: a table of declared sources,
// a plugin for each application of the table, and the scanner that receives what they find.
//
// Single-threaded, like everything that works on the current platform.
#pragma once

#include <functional>
#include <memory>
#include <span>

#include "registry/types.h"

namespace scrubwell {

enum TTraceSourceType : std::uint8_t {
  tstNone = 0,
  tstRegValue = 1,  ///< a value that holds this one trace
  tstRegPart = 2,   ///< one of several traces in a value
  tstFile = 3,
};

enum TTraceTargetType : std::uint8_t {
  tttNone = 0,
  tttFile = 1,
  tttFileOrFolder = 2,
  tttText = 3,     ///< no file: nothing that could be missing
  tttWindows = 4,  ///< a file or folder in one of Windows' own histories
};

/// Bits of TTraceFlags.
enum TTraceFlag : std::uint8_t {
  tfEmptyValue = 1,   ///< to remove the trace, its value is emptied
  tfDeleteValue = 2,  ///< traces can be removed singly, this one by deleting its value
  tfRepair = 4,       ///< the list needs a repair once traces were removed
  tfStartMenu = 16,   ///< the target is seen from the Start menu's folders
};
using TTraceFlags = std::uint8_t;

struct TTraceSourceData {
  RootKey root = RootKey::None;
  UnicodeString key;
  UnicodeString valueName;
  friend bool operator==(const TTraceSourceData&, const TTraceSourceData&) = default;
};

struct TTraceLocation {
  TTraceTargetType targetType = tttNone;
  TTraceFlags flags = 0;
};

/// How a value holds its targets.
enum class TraceForm : std::uint8_t {
  Text,            ///< the whole text
  TextToBar,       ///< the text in front of the first "|"
  OfficeItem,      ///< "[F00000000][T01CD0123456789AB][O00000000]*path"
  Command,         ///< a command line, "\1" at its end
  Address,         ///< a path or an address, of which only those of local files count
  ItemList,        ///< a shell item list
  ProgramFolder,   ///< a program's name, then the path of the folder that it looked into last
  ProgramItems,    ///< the same with the folder as a shell item list
  RecentDocument,  ///< a document's name, then the shell item of its link in the Recent folder
  MenuOrder,       ///< the order of a Start menu folder: many shell items
  UsageCount,      ///< a counter whose value name is the target, letters turned by 13
  Texts,           ///< many texts, each ended by a NUL
};

/// What keeps the entries of a list in order, and so what a repair has to mend.
enum class TraceOrder : std::uint8_t {
  None,
  Letters,      ///< "MRUList": the value names, one letter each
  Numbers,      ///< "MRUListEx": the value names as 32-bit numbers
  Consecutive,  ///< the numbers in the value names themselves, without gaps
};

/// One place of history lists. A source is added by adding a row.
struct TTraceSource {
  UnicodeView application;
  RootKey root = RootKey::CurrentUser;
  /// "*" stands for any part of a path's level, a last level "**" for the key so far and all below.
  UnicodeView key;
  /// A wildcard mask; "#" at its end stands for a decimal number.
  UnicodeView value;
  TraceForm form = TraceForm::Text;
  TraceOrder order = TraceOrder::None;
  TTraceTargetType targetType = tttFile;
  TTraceFlags flags = 0;
  std::uint8_t firstNumber = 1;  ///< where Consecutive begins
};

/// All sources; those of one application stand together.
std::span<const TTraceSource> TraceSources();

class TZMMRU;

/// The histories of one application.
class TTracePlugin {
 public:
  /// Borrows the rows, which must be of one application and at least one.
  explicit TTracePlugin(std::span<const TTraceSource> sources) : sources_(sources) {}
  virtual ~TTracePlugin() = default;
  TTracePlugin(const TTracePlugin&) = delete;
  TTracePlugin& operator=(const TTracePlugin&) = delete;

  [[nodiscard]] UnicodeView ApplicationName() const { return sources_.front().application; }
  [[nodiscard]] std::int32_t GetTraceLocationCount() const {
    return static_cast<std::int32_t>(sources_.size());
  }
  [[nodiscard]] TTraceLocation GetTraceLocation(std::int32_t index) const {
    const TTraceSource& source = sources_[static_cast<std::size_t>(index)];
    return {source.targetType, source.flags};
  }
  /// Reports every trace of all locations to the scanner. What can't be read is passed over.
  virtual void Search(const TZMMRU& scanner);

  /// Whether the place still names this target. A list may have been renumbered since it was
  /// searched, and another entry then has the name.
  [[nodiscard]] bool Holds(const TTraceSourceData& source, UnicodeView target) const;
  /// Remembers for the next repair that the trace was removed, or, in a value of many traces, that
  /// the repair is to remove it.
  void NoteRemoval(const TTraceSourceData& source, UnicodeView target);
  /// Mends the lists whose traces were noted as removed, and forgets the notes.
  virtual void Repair();

 private:
  struct Removal {
    TTraceSourceData source;
    UnicodeString target;
  };
  [[nodiscard]] const TTraceSource* SourceOf(const TTraceSourceData& data) const;
  void RepairList(const TTraceSource& source, const TTraceSourceData& data) const;
  void RepairParts(const TTraceSource& source, const TTraceSourceData& data) const;

  std::span<const TTraceSource> sources_;
  std::vector<Removal> removals_;
};

/// The lists of the Open and Save dialogs up to Windows XP.
class TTCPComDlgOpenSave : public TTracePlugin {
 public:
  using TTracePlugin::TTracePlugin;
};

/// Receives the traces that plugins find.
class TZMMRU {
 public:
  using TScanTraceFound = std::function<void(
      TTracePlugin& plugin, TTraceSourceType sourceType, const TTraceSourceData& sourceData,
      TTraceTargetType targetType, TTraceFlags flags, const UnicodeString& targetName)>;

  /// The owner is kept for the host's sake and never looked at.
  explicit TZMMRU(const void* owner) : owner_(owner) {}
  [[nodiscard]] const void* Owner() const { return owner_; }

  TScanTraceFound OnScanTraceFound;

 private:
  const void* owner_;
};

/// One plugin for each application of the table, in its order.
class TTracePluginList {
 public:
  explicit TTracePluginList(std::span<const TTraceSource> sources);
  [[nodiscard]] std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }
  [[nodiscard]] TTracePlugin* Get(std::int32_t index) const {
    return items_[static_cast<std::size_t>(index)].get();
  }
  /// A number above 0 that stands for the plugin, the same in every run.
  [[nodiscard]] std::int32_t ReferenceOf(const TTracePlugin& plugin) const;
  /// Null for a number that stands for no plugin.
  [[nodiscard]] TTracePlugin* ByReference(std::int32_t reference) const;

 private:
  std::vector<std::unique_ptr<TTracePlugin>> items_;
};

/// The plugins of all sources.
TTracePluginList& TracePlugins();

}  // namespace scrubwell
