// Resources of program files: texts, versions, languages.
#pragma once

#include <span>

#include "registry/types.h"

namespace scrubwell::pe {

/// A Windows language number, for example 0x0407 for German (Germany).
using LangId = std::uint16_t;

enum Machine : std::uint16_t {
  MachineI386 = 0x014C,
  MachineIa64 = 0x0200,
  MachineAmd64 = 0x8664,
  MachineArm64 = 0xAA64,
};

enum ResourceType : std::uint32_t {
  ResourceIcon = 3,
  ResourceString = 6,
  ResourceGroupIcon = 14,
  ResourceVersion = 16,
};

struct Version {
  std::uint16_t major = 0, minor = 0, release = 0, build = 0;
  friend bool operator==(const Version&, const Version&) = default;
};

/// One program file, 32-bit or 64-bit, looked at where it lies. The bytes are borrowed and must
/// outlive the image; no call reads outside them, whatever they hold. Safe for use by many threads
/// once opened.
///
/// Where a call takes languages, they are tried in that order, first exactly, then by their
/// primary language; after them language-neutral, English (United States), and whatever there is.
class Image {
 public:
  /// Unknown when the bytes are no PE file (a 16-bit or DOS program, a driver for another loader,
  /// an empty file), Corrupt when its headers run out of the file.
  Status Open(std::span<const std::uint8_t> file);

  [[nodiscard]] std::uint16_t MachineType() const { return machine_; }
  /// True for the wide format (PE32+), whatever the machine.
  [[nodiscard]] bool IsWide() const { return wide_; }
  /// The part of the file's bytes that holds the resources. Open looks at none of it, so that it
  /// may be read afterwards.
  [[nodiscard]] std::span<const std::uint8_t> Resources() const { return resources_; }

  /// A text of the string table. Absent when the file itself has no such text, which doesn't tell
  /// about its satellites; Corrupt when the tables lead nowhere.
  [[nodiscard]] Status String(std::uint32_t id, std::span<const LangId> languages,
                              UnicodeString& out) const;
  /// The file version of the fixed part, which no language changes.
  [[nodiscard]] Status FileVersion(Version& out) const;
  /// A text of the version information by its name ("CompanyName", letter case ignored), out of
  /// the table that the file's translation entry names, else the first.
  [[nodiscard]] Status VersionText(UnicodeView name, std::span<const LangId> languages,
                                   UnicodeString& out) const;
  /// The languages that the file has resources of this type in, ascending, each once.
  [[nodiscard]] Status Languages(ResourceType type, std::vector<LangId>& out) const;

 private:
  struct Section {
    std::uint32_t address = 0, size = 0, fileOffset = 0;
  };
  using View = std::span<const std::uint8_t>;

  Status ReadSections(std::uint64_t at, std::uint32_t count, bool sectorAligned);
  [[nodiscard]] View Map(std::uint32_t address) const;
  [[nodiscard]] Status Leaf(std::uint32_t at, View& out) const;
  [[nodiscard]] Status Find(ResourceType type, std::uint32_t id, std::span<const LangId> languages,
                            std::vector<View>& out) const;

  View file_;
  View resources_;  ///< from the resource root to the end of its section
  std::vector<Section> sections_;
  std::uint16_t machine_ = 0;
  bool wide_ = false;
};

/// Where the system looks for a file's texts in other languages, in the order of the language
/// names ("de-DE"): "<folder>\<language>\<file>.mui".
TStringList SatellitePaths(UnicodeView file, std::span<const UnicodeView> languageNames);

}  // namespace scrubwell::pe
