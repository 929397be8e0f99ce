// What a scanner asked and was told before it reported a problem.
#pragma once

#include <memory>
#include <string>

#include "framework/Rc_common.h"
#include "registry/platform.h"

namespace scrubwell {

enum class RegistryQuestion : std::uint8_t { Key, Subkeys, Values, Value, Access };

struct RegistryAnswer {
  RegistryQuestion question = RegistryQuestion::Key;
  RootKey root = RootKey::None;
  UnicodeString path;
  View view = View::Native;
  UnicodeString name;  ///< of the value that was asked for
  Status status = Status::Unknown;
  std::vector<RegValue> values;  ///< of a key with many only those that bear on the problem
  KeyInfo counts;                ///< how many subkeys or values there are
};

enum class FileQuestion : std::uint8_t { Entry, Folder, Content };

struct FileAnswer {
  FileQuestion question = FileQuestion::Entry;
  UnicodeString path;
  FsView view = FsView::Physical;
  Status status = Status::Unknown;
  bool isFolder = false;
};

struct VariableAnswer {
  UnicodeString name;
  View view = View::Native;
  Status status = Status::Unknown;
  UnicodeString text;
};

/// How a text became paths.
struct PathStep {
  UnicodeString text;
  bool searched = false;  ///< a bare name: `results` are the folders that it is looked for in
  TStringList results;    ///< else the paths that it means; empty when a variable is not known
};

/// What else than the registry and folders was asked.
enum class SourceKind : std::uint8_t { IniEntry, Task, FirewallRule, Shortcut, Address };

struct SourceAnswer {
  SourceKind kind = SourceKind::IniEntry;
  UnicodeString asked;  ///< "FILE [SECTION] ENTRY", a task's, rule's or shortcut's name, an address
  Status status = Status::Unknown;
  UnicodeString text;  ///< the entry's text, or the file that the rest of them name
};

/// Each answer once, in the order it was given first; what concerns the problem's own keys before
/// what else was read for the same item.
struct Evidence {
  std::vector<RegistryAnswer> registry;
  std::vector<VariableAnswer> variables;
  std::vector<PathStep> paths;
  std::vector<FileAnswer> files;
  std::vector<SourceAnswer> sources;
  /// The problem was reported while it was listened to; else the lists are empty.
  bool complete = false;
};

/// Stands between the package and its platform. Everything is passed on; only during Record it is
/// listened to as well.
class EvidenceRecorder {
 public:
  explicit EvidenceRecorder(TPlatform& platform);
  ~EvidenceRecorder();
  EvidenceRecorder(const EvidenceRecorder&) = delete;
  EvidenceRecorder& operator=(const EvidenceRecorder&) = delete;

  /// What the package is to be loaded on. Good for as long as this and the platform live.
  TPlatform& Platform();

  /// Scans with the active plugins of the loaded package and keeps what led to the problem, which
  /// an earlier scan has found. SweepErrors holds the findings of this scan afterwards.
  Evidence Record(const TSweepError& problem);

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace scrubwell
