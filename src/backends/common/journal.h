// What a session changed, with all that is needed to put it back, as it lies in a file.
#pragma once

#include <map>
#include <optional>
#include <span>

#include "backends/common/session.h"

namespace scrubwell {

/// What belongs to a file or folder beside its content.
struct FileAttributes {
  std::uint32_t mode = 0600;
  std::uint32_t owner = 0;
  std::uint32_t group = 0;
  std::int64_t modifiedSeconds = 0;  ///< with the next 0 too: the time of writing
  std::int64_t modifiedNanoseconds = 0;
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
  bool existed = false;            ///< WriteFile: there was a file before
  std::uint64_t hashBefore = 0;    ///< of a file's content
  std::uint64_t hashAfter = 0;
  FileAttributes attributes;  ///< of the file before
  Bytes content;              ///< of the file before; the session keeps it in a file of its own
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
  std::uint64_t chain_ = 0;
  std::int64_t entries_ = 0;
};

/// Reads a session's folder; one sentence in `info.error` when the journal is not whole. A live one
/// may lack its end, and may break off in its last line. Contents of files are left where they are.
Journal LoadJournal(const std::string& folder);
/// Tells contents apart that differ by accident (FNV-1a, 64 bits).
std::uint64_t ContentHash(std::span<const std::uint8_t> data,
                          std::uint64_t seed = 0xCBF29CE484222325U);

/// The file with the content that an entry's file had.
std::string ContentFile(const std::string& folder, const JournalEntry& entry);

/// The list of items put back so far, with some more.
std::string FormatUndone(const Journal& journal, const std::vector<std::string>& more);

}  // namespace scrubwell
