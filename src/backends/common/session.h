// Changing a Windows: a clean that changes nothing before it is committed, and what is kept of it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "backends/common/target.h"

namespace scrubwell {

/// Why an operation was not done. Together with a failure there always is one sentence (UTF-8,
/// without a final full stop) for the user.
enum class CleanFailure : std::uint8_t {
  None,
  WrongUse,    ///< an option names what is not there: user, drive, session, item, backup folder
  Unreadable,  ///< no Windows, a hive that is needed, or the journal can't be read
  Refused,     ///< a guard: changing this Windows now would not be safe
  NotWritten,  ///< writing failed; everything is as it was before
  Unfinished,  ///< writing failed half way; Recover finishes it
  Stopped,     ///< it was asked to stop before anything was changed
};

struct CleanOptions {
  TargetOptions target;
  std::string backupFolder;  ///< empty: DefaultBackupFolder()
  /// Nothing is ever changed: Commit answers WrongUse. What else would refuse the clean becomes a
  /// note of the target.
  bool dryRun = false;
};

/// The problem that the following changes are made for.
struct JournalProblem {
  std::string id;
  UnicodeString plugin;
  std::int32_t kind = 0;
  UnicodeString caption;
  bool fixed = false;
};

enum class JournalAction : std::uint8_t {
  DeleteKey,
  DeleteValue,
  SetValue,
  CreateKey,
  WriteFile,  ///< new content for a file that may have been there
  EraseFile,
  EraseFolder,  ///< an empty one
  KeepFile,     ///< nothing changes: a copy was asked for
  RemoveTask,   ///< by its scheduler; the place is the task's file, the name the task's
  RemoveUrl,    ///< from the browser's history; the place is the address
  RemoveFirewallApplication,  ///< the place is the program's file, the name what the list calls it
};

/// What a change puts in place of what.
struct WrittenContent {
  std::optional<RegValue> before;  ///< of a value; none where there was none
  std::optional<RegValue> after;
  TStringList linesBefore;  ///< of a file of settings: the lines that change
  TStringList linesAfter;   ///< what stands in their place then
};

/// One change, as the user is shown it. The data to undo it is kept beside.
struct JournalItem {
  std::string id;  ///< "1", "2", ...: the order in which the changes are made
  JournalAction action = JournalAction::DeleteKey;
  /// Index into the problems of the same session; NoProblem when the change was made outside of
  /// BeginProblem and EndProblem.
  std::size_t problem = NoProblem;
  UnicodeString place;        ///< "HKLM\SOFTWARE\x" as it lies in the hives, or a file's path
  UnicodeString name;         ///< of the value where one changes; empty for the default value
  std::uint64_t subkeys = 0;  ///< below a key that goes, itself not counted
  std::uint64_t values = 0;   ///< in a key that goes and all below it
  std::uint64_t bytes = 0;    ///< of the value or file that goes
  bool undone = false;        ///< put back since; only in what ReadSession gives
  /// Null where nothing is written, or nothing that could be shown.
  std::shared_ptr<const WrittenContent> written = nullptr;

  static constexpr std::size_t NoProblem = static_cast<std::size_t>(-1);
};

struct CommitResult {
  CleanFailure failure = CleanFailure::None;
  std::string error;
  std::string session;  ///< its name, for Undo; empty when nothing had changed
  std::string folder;   ///< the session's own, in the backup folder
  std::vector<std::string> notes;
};

/// A target opened to be cleaned. All changes made through its platform stay in memory, where the
/// platform shows them as done, until Commit makes them all. Without a Commit nothing changes, so
/// what Items() says then is the plan. One thread at a time.
class ICleanSession {
 public:
  virtual ~ICleanSession() = default;

  /// Platform, target and notes; lives as long as the session.
  virtual ITarget& Backend() = 0;

  /// To be called before the first deletion of each round of scan and clean: within a round,
  /// deleting an entry that an earlier deletion has uncovered is Absent.
  virtual void BeginRound() = 0;
  /// The changes up to EndProblem belong to this problem. Not nested.
  virtual void BeginProblem(const JournalProblem& problem) = 0;
  virtual void EndProblem(bool fixed) = 0;

  [[nodiscard]] virtual const std::vector<JournalProblem>& Problems() const = 0;
  /// What was changed so far, failed attempts left out.
  [[nodiscard]] virtual const std::vector<JournalItem>& Items() const = 0;

  /// Writes the journal with everything that undoing needs, then makes the changes. May be called
  /// once; the platform is not to be used afterwards.
  virtual CommitResult Commit() = 0;
};

// ---- Sessions in a backup folder -----------------------------------------------------------

struct SessionInfo {
  std::string name;       ///< sorts by time
  std::string folder;     ///< its own folder, with path
  std::string time;       ///< when it was written: "2024-05-01T12:00:00Z"
  std::string target;     ///< the folder of the Windows it was made on, as it was given
  UnicodeString product;  ///< for example "Windows 7 Professional"
  std::string undoes;     ///< the session that this one put back something of; empty for a clean
  std::size_t items = 0;
  std::size_t undone = 0;  ///< how many of them were put back
  /// False: the changes were prepared but never made (or wait for Recover).
  bool carriedOut = false;
  std::string error;  ///< one sentence when the journal can't be used; the rest is then a guess
};

struct SessionContent {
  SessionInfo info;
  std::vector<JournalProblem> problems;
  std::vector<JournalItem> items;
  CleanFailure failure = CleanFailure::None;
  std::string error;
};

/// Where sessions are kept unless another folder is named: $XDG_STATE_HOME/scrubwell, else
/// ~/.local/state/scrubwell; on Windows %LOCALAPPDATA%\Scrubwell\Sessions. Empty when neither is
/// known.
std::string DefaultBackupFolder();

/// All sessions of a backup folder (empty: the default one), the oldest first.
std::vector<SessionInfo> ListSessions(const std::string& backupFolder);

/// The newest clean of that Windows (empty: of any) that was carried out; empty when there is none.
std::string NewestSession(const std::string& backupFolder, UnicodeView identity);

/// The bytes of all files in a session's folder.
std::uint64_t SessionSize(const SessionInfo& session);

/// Which sessions may go. Where both are given, both must allow it.
struct PruneLimits {
  std::optional<std::size_t> keep;     ///< the newest ones that stay
  std::optional<std::size_t> minDays;  ///< younger ones stay
};
/// Those of the sessions, oldest first, that may go. One that waits for Recover, or whose journal
/// can't be read, is never among them.
std::vector<SessionInfo> SessionsToPrune(const std::vector<SessionInfo>& sessions,
                                         const PruneLimits& limits);
/// Removes the session's folder with all that is in it: it can't be put back any more. Empty, or
/// one sentence that says why not.
std::string RemoveSession(const SessionInfo& session);

/// The folder of a session, or of the newest clean that was carried out; empty, with one sentence,
/// when there is none.
std::string SessionFolder(const std::string& backupFolder, const std::string& session,
                          std::string& error);

/// What a session says of itself, without a look at its items; `error` when there is none, and then
/// no name, or when it can't be read.
SessionInfo SessionHead(const std::string& backupFolder, const std::string& session);

/// One session; the empty name is the newest clean that was carried out. A journal that is cut or
/// was tampered with is Unreadable.
SessionContent ReadSession(const std::string& backupFolder, const std::string& session);

struct ExportResult {
  CleanFailure failure = CleanFailure::None;
  std::string error;
  std::string bytes;  ///< a registry text, UTF-16LE with its mark: importing it puts all back
};
/// The registry part of a session as a registry text.
ExportResult ExportSession(const std::string& backupFolder, const std::string& session);

struct UndoOptions {
  TargetOptions target;
  std::string backupFolder;
  std::string session;  ///< empty: the newest clean that was carried out
  /// Ids of items or of problems (all their items); empty: everything.
  std::vector<std::string> items;
  /// Is told before each item, and before what was put back is written, how many are done and how
  /// many there are; false stops. Offline nothing is changed then; on the running system, where
  /// each item is written at once, what was put back so far stays.
  std::function<bool(std::size_t done, std::size_t all)> progress = {};
};

enum class UndoOutcome : std::uint8_t {
  Restored,
  AlreadyThere,  ///< it is there, exactly as it was
  Taken,         ///< something else is in its place now; nothing of this item was put back
  Failed,        ///< its place can't be read or written
};

struct UndoItem {
  JournalItem item;
  UndoOutcome outcome = UndoOutcome::Restored;
  std::string why;  ///< one sentence naming the place for Taken and Failed
};

struct UndoResult {
  CleanFailure failure = CleanFailure::None;
  std::string error;
  std::string session;  ///< the one that was put back
  std::vector<UndoItem> items;
  std::vector<std::string> notes;
};

struct RecoverResult {
  CleanFailure failure = CleanFailure::None;
  std::string error;
  enum class Outcome : std::uint8_t { NothingToDo, Completed, RolledBack, SetAside };
  Outcome outcome = Outcome::NothingToDo;
  std::vector<std::string> notes;
};

}  // namespace scrubwell
