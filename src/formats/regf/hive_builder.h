// Writes a whole new hive file from a tree of keys in memory.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "registry/types.h"

namespace scrubwell::regf {

/// Which list of subkeys is written: plain offsets, offsets with the name's first four characters,
/// or offsets with a hash of the name (what the system itself writes since version 1.5).
enum class ListKind : std::uint8_t { Index, Fast, Hash };

struct BuildOptions {
  std::uint32_t minorVersion = 5;  ///< 3 to 6; data is segmented from 4 on
  ListKind lists = ListKind::Hash;
  std::size_t leafEntries = 500;  ///< more children than this are split into leaves
  /// FILETIME of the file and of every key that is given none.
  std::uint64_t time = 0x01D0000000000000U;
  UnicodeString fileName = {};  ///< noted in the base block, the last 31 units of it
  UnicodeString rootName = u"ROOT";
};

/// Collects keys and values, then writes them in one go, in time linear to their number. Two equal
/// trees give equal bytes. Throws std::length_error where a name or the whole hive is too long for
/// the format. One thread at a time.
class HiveBuilder {
 public:
  /// A key of the tree under construction; never the offset of a cell.
  using Key = std::uint32_t;

  explicit HiveBuilder(BuildOptions options = {});

  [[nodiscard]] Key Root() const { return 0; }
  /// The subkey of that name, made when it is not there; names compare by UpCase.
  Key Create(Key parent, UnicodeView name);
  /// `path` is split at backslashes, empty parts are skipped.
  Key CreatePath(Key from, UnicodeView path);
  /// Takes the place of a value of the same name.
  void SetValue(Key key, const RegValue& value);
  /// A text with its closing NUL.
  void SetText(Key key, UnicodeView name, UnicodeView text, std::uint32_t type = REGT_SZ);
  void SetNumber(Key key, UnicodeView name, std::uint32_t value);
  void SetClass(Key key, UnicodeView name);
  /// A self-relative security descriptor. Keys without one have their parent's; the root's default
  /// lets administrators and the system do everything and everybody read.
  void SetSecurity(Key key, const Bytes& descriptor);
  void SetTime(Key key, std::uint64_t fileTime);
  /// Marks the key as a symbolic link; its target is the value "SymbolicLinkValue" (REG_LINK).
  void SetLink(Key key);

  /// The file's bytes.
  [[nodiscard]] Bytes Build() const;

 private:
  friend class HiveWriter;
  static constexpr std::uint32_t Inherited = 0xFFFFFFFFU;
  struct Node {
    UnicodeString name;
    UnicodeString className;
    std::vector<Key> children;
    std::vector<RegValue> values;
    std::uint64_t time = 0;
    std::uint32_t security = Inherited;  ///< index into descriptors_
    Key parent = 0;
    bool link = false;
  };
  /// A name below a key, upper-cased: what children and values are found by.
  struct Place {
    Key key = 0;
    UnicodeString name;
    friend bool operator==(const Place&, const Place&) = default;
  };
  struct PlaceHash {
    std::size_t operator()(const Place& place) const;
  };

  BuildOptions options_;
  std::vector<Node> nodes_;
  std::vector<Bytes> descriptors_;
  std::map<std::string, std::uint32_t> descriptorIndex_;
  std::unordered_map<Place, Key, PlaceHash> childIndex_;
  std::unordered_map<Place, std::size_t, PlaceHash> valueIndex_;
};

}  // namespace scrubwell::regf
