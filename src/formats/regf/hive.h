// Reader of registry hive files (regf 1.3 to 1.6). Works on mapped memory, trusts nothing in it.
#pragma once

#include <array>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "formats/regf/cells.h"
#include "formats/regf/file_image.h"
#include "registry/types.h"

namespace scrubwell::regf {

/// What the base block and the logs told when the hive was opened.
struct HiveFacts {
  std::uint32_t minorVersion = 0;
  std::uint32_t primarySequence = 0;    ///< as found in the file, before any replay
  std::uint32_t secondarySequence = 0;  ///< differs from the primary after an unfinished write
  bool checksumRight = false;
  /// The last write was not finished: wrong checksum or unequal sequence numbers.
  bool dirty = false;
  /// Dirty, and the logs were applied to a private copy: what is read is up to date.
  bool replayed = false;
  /// Dirty, and no log could be applied: readable, but older than what the system last saw.
  bool stale = false;
  bool transactionPending = false;  ///< flag of the base block: a two-phase commit is under way
  std::uint32_t logEntriesApplied = 0;
  std::uint32_t newestSequence = 0;  ///< the highest sequence number seen in hive and logs
  std::uint64_t lastWritten = 0;     ///< FILETIME of the base block
  std::uint64_t fileSize = 0;        ///< of the hive file itself, in bytes
  std::uint64_t unreadable = 0;  ///< bytes that the medium did not give; what lies there is Corrupt
};

/// One key as it is stored.
struct KeyFacts {
  NameRef name;  ///< points into the hive: good as long as the hive
  std::uint32_t subkeyCount = 0;
  std::uint32_t valueCount = 0;
  std::uint64_t lastWritten = 0;  ///< FILETIME
  std::uint16_t flags = 0;        ///< KeyFlag bits
  CellOffset parent = NoCell;     ///< not meaningful for the root
  [[nodiscard]] bool IsLink() const { return (flags & KeyFlagLink) != 0; }
};

/// One value as it is stored; the data is fetched with Hive::Data.
struct ValueFacts {
  NameRef name;  ///< empty for the default value
  std::uint32_t type = REGT_NONE;
  std::uint32_t size = 0;  ///< of the data, in bytes
  CellOffset cell = NoCell;
  std::uint32_t place = 0;  ///< in the key's list, from 0
};

struct Subkey {
  CellOffset key = NoCell;
  KeyFacts facts;
};

class Hive;

/// Either a hive, or one sentence (UTF-8) that names the file and why it can't be read.
struct OpenedHive {
  std::unique_ptr<Hive> hive;
  std::string error;
};

/// A hive opened for reading. A key is named by the offset of its cell; such a handle may come from
/// anywhere, every use checks it.
///
/// Every operation answers Ok, Absent or Corrupt. Absent is proven: where a damaged list or cell
/// might have held what was asked for, the answer is Corrupt. An enumeration that answers Corrupt
/// has still delivered all that was readable, so one damaged place hides nothing else.
///
/// A key is accepted as a child only below the parent that it names itself, and the root never is
/// a child: so a walk downwards ends, whatever the file holds.
///
/// One thread at a time: look-ups remember which lists they have proven to be in order.
class Hive {
 public:
  /// Deepest level that Walk visits (the system's own limit), the start being level 0.
  static constexpr int MaxDepth = 512;

  /// Reads the file into memory. The logs (.LOG, .LOG1, .LOG2, in any order, those that there are)
  /// are only read when the hive is dirty; an unreadable log counts as none.
  static OpenedHive Open(const std::filesystem::path& file,
                         const std::vector<std::filesystem::path>& logs = {});
  /// The same over files that were read already; `name` stands for the path in an error sentence.
  static OpenedHive FromFile(FileImage file, const std::string& name,
                             const std::vector<FileImage>& logs);
  /// Whether the last write to a hive file was not finished, so that its logs are needed.
  static bool IsDirty(std::span<const std::uint8_t> file);
  /// The same over bytes in memory; `name` stands for the path in an error sentence.
  static OpenedHive FromBytes(Bytes image, const std::string& name,
                              const std::vector<Bytes>& logs = {});

  Hive(const Hive&) = delete;
  Hive& operator=(const Hive&) = delete;
  ~Hive();

  [[nodiscard]] const HiveFacts& Facts() const { return facts_; }
  [[nodiscard]] CellOffset Root() const { return root_; }
  /// The whole file as it is read, base block first; after a replay the private copy.
  [[nodiscard]] std::span<const std::uint8_t> Image() const { return image_; }

  Status Key(CellOffset key, KeyFacts& out) const;
  Status Name(CellOffset key, UnicodeString& out) const;
  /// The direct subkey of that name, by UpCase of each unit. Logarithmic; a list whose order can't
  /// be relied upon is walked instead.
  Status Child(CellOffset parent, UnicodeView name, CellOffset& out) const;
  /// `path` is split at backslashes, empty parts are skipped.
  Status Descend(CellOffset from, UnicodeView path, CellOffset& out) const;

  /// Calls visit(const Subkey&) for each subkey in stored order; nothing is allocated for a list
  /// that is in order.
  template <class Visit>
  Status ForEachSubkey(CellOffset key, Visit&& visit) const {
    return VisitSubkeys(key, SubkeyVisitor(visit));
  }
  Status Subkeys(CellOffset key, std::vector<Subkey>& out) const;

  /// Calls visit(const Subkey&, int level) for `start` and everything below it, parents first.
  /// Corrupt when some place could not be read or lies deeper than MaxDepth.
  template <class Visit>
  Status Walk(CellOffset start, Visit&& visit) const {
    return WalkKeys(start, WalkVisitor(visit));
  }

  /// Calls visit(const ValueFacts&) for each value in stored order.
  template <class Visit>
  Status ForEachValue(CellOffset key, Visit&& visit) const {
    return VisitValues(key, ValueVisitor(visit));
  }
  Status Values(CellOffset key, std::vector<RegValue>& out) const;
  /// The empty name is the default value.
  Status FindValue(CellOffset key, UnicodeView name, ValueFacts& out) const;
  Status Value(CellOffset key, UnicodeView name, RegValue& out) const;
  /// The value's bytes, segmented data put together.
  Status Data(const ValueFacts& value, Bytes& out) const;
  /// The same without a copy: Absent when the data lies in several segments.
  Status DataInPlace(const ValueFacts& value, std::span<const std::uint8_t>& out) const;

  Status ClassName(CellOffset key, UnicodeString& out) const;
  /// The self-relative security descriptor, in place.
  Status Security(CellOffset key, std::span<const std::uint8_t>& out) const;

 private:
  using SubkeyVisitor = FunctionRef<void(const Subkey&)>;
  using WalkVisitor = FunctionRef<void(const Subkey&, int)>;
  using ValueVisitor = FunctionRef<void(const ValueFacts&)>;
  struct Source;

  /// What is known of a key's list of subkeys.
  enum class Order : std::uint8_t {
    Ascending,  ///< whole and in strictly ascending order: a search that misses proves absence
    Loose,      ///< whole, but not in order by our table
    Damaged,    ///< some entry can't be read, or the number of entries is not the key's
  };

  /// Where in a list of subkeys the last look-up ended. Who walks over a key's subkeys asks for
  /// them by name in the order of the list, so that the next one is found with one look.
  struct Cursor {
    CellOffset parent = NoCell;
    std::size_t leaf = 0;   ///< where the list has several
    std::size_t entry = 0;  ///< the next one
    int misses = 0;         ///< looks in a row that found another name there
    static constexpr int MostMisses = 4;
  };
  /// For keys with few subkeys and for those with many: the few that are walked over for each of
  /// many must not end the walk over the many.
  static constexpr std::size_t CursorCount = 16;
  static constexpr std::uint32_t ManySubkeys = 64;

  // An editor changes the bytes under a hive of its own, and takes care of orders_.
  friend class Editor;
  /// The image, when it lies in memory of our own.
  std::span<std::uint8_t> Changeable();
  void Grow(std::size_t imageSize);

  Hive();
  /// Takes over the source, replays the logs when there is need to, and checks the base block.
  static OpenedHive Assemble(Source source, const std::string& name,
                             const std::vector<ByteView>& logs);
  void ReadBaseBlock(const std::vector<ByteView>& logs);
  std::string WhyUnreadable(const std::string& name) const;
  Status ChildKey(CellOffset parent, CellOffset child, KeyFacts& out) const;
  Order ScanSubkeys(CellOffset key, const KeyFacts& facts, SubkeyVisitor visit) const;
  Order OrderOf(CellOffset key, const KeyFacts& facts) const;
  Status VisitSubkeys(CellOffset key, SubkeyVisitor visit) const;
  Status WalkKeys(CellOffset start, WalkVisitor visit) const;
  Status WalkBelow(const Subkey& parent, int level, WalkVisitor visit) const;
  Status ReadValue(CellOffset cell, ValueFacts& out) const;
  /// Calls visit(value) for each, until it answers false. Corrupt when some could not be read.
  template <class Visit>
  Status EachValue(CellOffset key, Visit&& visit) const;
  [[nodiscard]] ByteView ValueList(CellOffset key, const KeyFacts& facts) const;
  [[nodiscard]] bool AsksForTooMuch() const { return delivered_ >> 6U > image_.size(); }
  /// Whether the cell belongs to this owner alone, as far as that has been looked at.
  [[nodiscard]] bool Owns(CellOffset owner, CellOffset cell) const {
    return owners_.emplace(cell, owner).first->second == owner;
  }
  Status VisitValues(CellOffset key, ValueVisitor visit) const;
  Status ReadData(const ValueFacts& value, ByteView& whole, ByteView& segments) const;
  [[nodiscard]] bool HasEmptyLeaf(ByteView list) const;
  Cursor& CursorOf(CellOffset parent, std::uint32_t subkeyCount) const {
    return cursors_[subkeyCount > ManySubkeys ? 1 : 0][parent / 8 % CursorCount];
  }
  CellOffset NextInOrder(Cursor& cursor, ByteView list, UnicodeView upper) const;
  CellOffset Search(Cursor& found, ByteView list, UnicodeView upper) const;
  CellOffset SearchHashes(Cursor& found, const ListEntries& entries, UnicodeView upper) const;
  CellOffset SearchLeaf(Cursor& found, ByteView leaf, UnicodeView upper) const;

  std::unique_ptr<Source> source_;
  ByteView image_;
  Cells cells_{ByteView()};
  CellOffset root_ = NoCell;
  HiveFacts facts_;
  mutable std::unordered_map<CellOffset, Order> orders_;
  mutable std::array<std::array<Cursor, CursorCount>, 2> cursors_;
  /// Which key a list of values belongs to, and which value its data: the first that asked for it.
  /// What many share would let a small file ask for any amount of work, so it is looked at in long
  /// lists, and everywhere once more was delivered than any use of a hive in good order asks for.
  mutable std::unordered_map<CellOffset, CellOffset> owners_;
  mutable std::uint64_t delivered_ = 0;  ///< bytes of names and data
};

}  // namespace scrubwell::regf
