// What a session changed, with all that is needed to put it back, as it lies in a file.
#pragma once

#include <map>
#include <optional>
#include <span>

#include "backends/common/json_line.h"
#include "backends/common/session.h"

namespace scrubwell {

/// What belongs to a file or folder beside its content.
struct FileAttributes {
  std::uint32_t mode = 0600;
  std::uint32_t owner = 0;
  std::uint32_t group = 0;
  std::int64_t modifiedSeconds = 0;  ///< with the next 0 too: the time of writing
  std::int64_t modifiedNanoseconds = 0;
  std::int64_t accessedSeconds = 0;  ///< likewise
  std::int64_t accessedNanoseconds = 0;
  std::map<std::string, Bytes> extended;  ///< among them what NTFS drivers show of its security
};

/// One key of a subtree that went. Parents stand before their children.
struct KeyImage {
  std::uint32_t level = 0;  ///< 0 for the key itself
  UnicodeString name;
  UnicodeString className;
  Bytes security;
  std::uint64_t time = 0;  ///< FILETIME
  bool link = false;
  std::vector<RegValue> values;
};

/// A change and the state before it.
struct JournalEntry {
  JournalItem item;
  UnicodeString hive;              ///< its file as Windows names it; empty on a running system
  UnicodeString path;              ///< of the key in that hive; on a running system its place
  std::vector<KeyImage> tree;      ///< DeleteKey
  std::optional<RegValue> before;  ///< DeleteValue, SetValue; none where there was no value
  RegValue after;                  ///< SetValue
  /// DeleteValue: its place among the key's values, from 0; NoPlace where that is not known.
  std::uint32_t valuePlace = NoPlace;
  std::uint64_t keyTime = 0;  ///< FILETIME of the key that changes, before; 0: not known
  bool existed = false;       ///< WriteFile: there was a file before
  std::string digestBefore;   ///< of a file's content, see ContentDigest
  std::string digestAfter;
  FileAttributes attributes;  ///< of the file before
  Bytes content;              ///< of the file before; the session keeps it in a file of its own

  static constexpr std::uint32_t NoPlace = 0xFFFFFFFFU;
};

/// A whole session.
struct Journal {
  SessionInfo info;
  UnicodeString identity;  ///< of the Windows it was made on
  /// Made on the running system: each entry was written just before its change was made, so that
  /// an end that is missing takes nothing from what stands before it.
  bool live = false;
  bool closed = false;  ///< the end is there
  std::vector<JournalProblem> problems;
  std::vector<JournalEntry> entries;
};

inline constexpr std::string_view kJournalFile = "/journal.jsonl";
inline constexpr std::string_view kRecordFile = "/record.jsonl";
inline constexpr std::string_view kCarriedOutFile = "/carried-out";
inline constexpr std::string_view kUndoneFile = "/undone.jsonl";
inline constexpr std::string_view kFilesFolder = "/files";
inline constexpr std::string_view kHivesFolder = "/hives";

std::string FormatJournal(const Journal& journal);

/// Formats a journal line by line, for one that grows with the changes it tells of: what a function
/// gives is to be written before the next one is called.
class JournalLines {
 public:
  /// All that stands before the first entry.
  std::string Head(const Journal& journal);
  std::string Entry(const JournalEntry& entry);
  /// The change of the last entry was not made after all: it counts no more.
  std::string Dropped(const JournalEntry& entry);
  std::string End();

 private:
  Sha256Digest chain_{};
  std::int64_t entries_ = 0;
};

/// Reads a session's folder; one sentence in `info.error` when the journal is not whole. A live one
/// may lack its end, and may break off in its last line. Contents of files are left where they are.
Journal LoadJournal(const std::string& folder);

/// A file's attributes as members of a line. What was taken is what the line says: who carries it
/// out has to bound it.
void PutAttributes(JsonLine& line, const FileAttributes& attributes);
bool TakeAttributes(const JsonValue& json, FileAttributes& out);

/// What its first line tells: whose it is, not what is in it.
Journal LoadJournalHead(const std::string& folder);

/// The file with the content that an entry's file had.
std::string ContentFile(const std::string& folder, const JournalEntry& entry);

/// The list of items put back so far, with some more.
std::string FormatUndone(const Journal& journal, const std::vector<std::string>& more);

}  // namespace scrubwell
