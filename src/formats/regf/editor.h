// Changes a hive in memory: keys and values go, come and are set, every invariant of the format
// kept. What becomes of the finished image is the caller's business.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "formats/regf/cell_map.h"
#include "formats/regf/check.h"
#include "formats/regf/dump.h"
#include "formats/regf/hive.h"

namespace scrubwell::regf {

class Editor;

/// Either an editor, or one sentence (UTF-8) that names the hive and why it can't be changed.
struct OpenedEditor {
  std::unique_ptr<Editor> editor;
  std::string error;
};

/// A private copy of a hive that can be changed. A key is named by the offset of its cell; such a
/// handle stays good until its key is deleted, whatever else is changed.
///
/// Every change answers Ok, or changes nothing at all:
///   Absent   what was to be deleted is proven not to be there
///   Denied   not allowed: the root, a key marked undeletable, a name, a depth or a size that the
///            format or the system does not take
///   Corrupt  something that the change would have to touch, anywhere in a subtree that is to go,
///            is damaged or belongs to something else too; or the handle names no key
/// A change sets the changed key's time by the clock; a deleted or created key changes its parent.
/// Where memory runs out, std::bad_alloc is thrown and the editor must not be used any more.
///
/// One thread at a time.
class Editor {
 public:
  /// The current FILETIME.
  using Clock = std::function<std::uint64_t()>;

  /// The longest names that the system takes, in units.
  static constexpr std::size_t LongestKeyName = 255;
  static constexpr std::size_t LongestValueName = 16383;

  /// Copies the hive's image. Refused: a hive whose logs could not be replayed, of which some could
  /// not be read, in which the check finds any fault (check.h), or of a version newer than 1.5.
  /// Whether a hive with a pending transaction (HiveFacts) may be changed is for the caller to
  /// decide. `name` stands for the file in an error sentence.
  static OpenedEditor Open(const Hive& hive, const std::string& name, Clock clock);

  /// The hive as it is now, for reading: the same object as long as the editor lives. What it
  /// gives as views (names, data in place) is good until the next change. Its Facts() tell of the
  /// private copy, those of Source() of the hive as it was found.
  [[nodiscard]] const Hive& View() const { return *hive_; }
  [[nodiscard]] const HiveFacts& Source() const { return source_; }
  /// Whether anything was changed.
  [[nodiscard]] bool Changed() const { return changed_; }

  /// The subkey of that name; one that is there already is given and nothing changes. A new one
  /// has its parent's security. One name, no path: 1 to 255 units without a backslash.
  Status Create(CellOffset parent, UnicodeView name, CellOffset& out);
  /// The key with all below it. A link goes itself, its target stays.
  Status Erase(CellOffset key);
  /// Takes the place of a value of the same name, which keeps its spelling; else comes last.
  Status Put(CellOffset key, const RegValue& value);
  /// The empty name is the default value.
  Status EraseValue(CellOffset key, UnicodeView name);

  /// A value and where it goes in its key's list; a place behind the end is the end.
  struct PlacedValue {
    std::uint32_t place = 0;
    const RegValue* value = nullptr;
  };
  /// Many new values at once, as if one was put in after the other, each at its place in the list
  /// as it then is; in time that hardly grows faster than their number. None of the names may be
  /// there already: that is for the caller to know.
  Status InsertValues(CellOffset key, const std::vector<PlacedValue>& values);
  /// New type and data for a value that Hive::FindValue or ForEachValue gave since the last change
  /// to the key's values.
  Status Overwrite(CellOffset key, CellOffset value, const RegValue& content);

  // What else a key has, to put one back as it was. SetTime comes last: the others, and each new
  // subkey or value, set the time to now.

  /// The empty text takes the class away.
  Status SetClass(CellOffset key, UnicodeView className);
  /// A self-relative security descriptor; keys with equal ones share a cell.
  Status SetSecurity(CellOffset key, ByteView descriptor);
  /// Marks the key as a symbolic link or takes the mark away.
  Status SetLink(CellOffset key, bool link);
  Status SetTime(CellOffset key, std::uint64_t fileTime);

  /// The file's bytes: clean, no transaction pending, written now, with a sequence number above
  /// all of the source and of `newestLogSequence` (see NewestLogSequence, for logs that opening a
  /// clean hive did not read). May be called again after further changes.
  Bytes Finish(std::uint32_t newestLogSequence = 0);

 private:
  /// Where a key stands in its parent's lists, or would stand.
  struct Place {
    CellOffset index = NoCell;  ///< the ri; NoCell when the parent's list is a leaf
    std::size_t leafEntry = 0;  ///< of the leaf in the ri
    CellOffset leaf = NoCell;
    std::size_t entry = 0;  ///< of the key in the leaf
  };
  /// All that a deletion takes away.
  struct Doomed {
    std::vector<CellOffset> keys;
    std::vector<CellOffset> cells;  ///< those of the keys among them
  };

  Editor() = default;

  [[nodiscard]] Cells AllCells() const { return Cells(hive_->Image()); }
  [[nodiscard]] ByteView Content(CellOffset cell) const { return AllCells().Content(cell); }
  /// Good until the next allocation.
  std::span<std::uint8_t> Writable(CellOffset cell);
  void Set32(CellOffset cell, std::size_t field, std::uint32_t number);

  CellOffset Allocate(std::size_t contentSize);
  CellOffset Store(ByteView content);
  void Free(CellOffset cell);
  void Free(const std::vector<CellOffset>& cells);
  void AddBin(std::uint32_t cellSize);
  void Release(FreeSpace::Block block);
  [[nodiscard]] bool HasRoom(std::size_t contentSize, std::size_t cells) const;

  /// Ok when the handle names a key that may be changed.
  Status Sound(CellOffset key, KeyFacts& out) const;
  /// Ok when the key's lists of subkeys may be changed; then also gives their cells.
  Status SoundLists(CellOffset key, const KeyFacts& facts, std::vector<CellOffset>& cells) const;
  Status CollectSubtree(CellOffset key, Doomed& out) const;
  [[nodiscard]] bool TooDeep(CellOffset parent) const;
  void Touch(CellOffset key);

  // Lists of subkeys.
  [[nodiscard]] Place Locate(CellOffset parent, UnicodeView upper) const;
  [[nodiscard]] Place Find(CellOffset parent, CellOffset key) const;
  void InsertChild(CellOffset parent, CellOffset key, UnicodeView name);
  void RemoveChild(CellOffset parent, const Place& place);
  void InsertIntoLeaf(CellOffset parent, const Place& place, CellOffset key, UnicodeView name);
  CellOffset NewLeaf();
  void SplitLeaf(CellOffset parent, Place& place);
  CellOffset InsertEntry(CellOffset list, std::size_t at, CellOffset target, std::uint32_t hint);
  void RemoveEntry(CellOffset list, std::size_t at);

  // Security cells.
  void Reference(CellOffset key, CellOffset security);
  void Dereference(CellOffset security);
  [[nodiscard]] CellOffset EqualSecurity(ByteView descriptor) const;
  CellOffset NewSecurity(ByteView descriptor);

  CellOffset NewKey(CellOffset parent, UnicodeView name);
  Status Replace(CellOffset key, CellOffset value, const RegValue& content);
  Status Append(CellOffset key, const KeyFacts& facts, const RegValue& content);
  CellOffset NewValue(CellOffset key, const RegValue& content);
  [[nodiscard]] bool FitsKey(const KeyFacts& facts, const RegValue& value) const;
  void WriteData(CellOffset value, const Bytes& data);
  CellOffset StoreData(const Bytes& data);

  // The largest sizes that a key notes of its subkeys and values.
  void Raise(CellOffset key, std::size_t field, std::size_t size);
  void Lower(CellOffset key, std::size_t field, std::size_t size);
  void SettleMaxima(CellOffset key);

  std::unique_ptr<Hive> hive_;
  HiveFacts source_;
  Clock clock_;
  bool changed_ = false;
  CellSet owned_;  ///< cells that belong to exactly one thing; only these are changed
  CellSet keys_;
  FreeSpace free_;
  /// Security cells with the number of keys that really have them.
  std::unordered_map<CellOffset, std::uint32_t> securities_;
  /// Keys whose largest subkey or value may be gone. Looked through once, at the end: a pass at
  /// each deletion would make deleting all children quadratic.
  std::unordered_set<CellOffset> shrunk_;
};

}  // namespace scrubwell::regf
