// The sessions that a backup folder holds.
#include <algorithm>
#include <filesystem>

#include "backends/common/journal.h"
#include "backends/common/local_file.h"
#include "backends/common/written.h"
#include "formats/reg/reg_text.h"
#include "registry/Stringhelper.h"

namespace scrubwell {
namespace {

UnicodeString RootedPath(UnicodeView place) {
  const std::size_t slash = std::min(place.find(u'\\'), place.size());
  const bool user = SameText(place.substr(0, slash), u"HKU");
  return UnicodeString(user ? u"HKEY_USERS" : u"HKEY_LOCAL_MACHINE").append(place.substr(slash));
}

void AddTree(const JournalEntry& entry, std::vector<reg::KeyEntry>& out) {
  std::vector<UnicodeString> paths;
  for (const KeyImage& key : entry.tree) {
    paths.resize(key.level);
    paths.push_back(key.level == 0 ? RootedPath(entry.item.place)
                                   : paths.back() + u'\\' + key.name);
    reg::KeyEntry& text = out.emplace_back();
    text.path = paths.back();
    for (const RegValue& value : key.values) text.values.push_back({value, false});
  }
}

// The folders that hold a journal, the oldest first.
std::vector<std::string> SessionNames(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  std::filesystem::directory_iterator entry(LocalPath(folder), error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    std::string name = NameOf(entry->path());
    if (IsLocalFile(folder + "/" + name + std::string(kJournalFile))) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool IsDoneClean(const SessionInfo& info) {
  return info.carriedOut && info.undoes.empty() && info.error.empty();
}

std::string FolderOrDefault(const std::string& backupFolder) {
  return backupFolder.empty() ? DefaultBackupFolder() : backupFolder;
}

}  // namespace

std::string DefaultBackupFolder() {
#ifdef _WIN32
  const std::string local = LocalVariable("LOCALAPPDATA");
  return local.empty() ? local : WithSlashes(local) + "/Scrubwell/Sessions";
#else
  const std::string state = LocalVariable("XDG_STATE_HOME");
  if (state.starts_with('/')) return state + "/scrubwell";
  const std::string home = LocalVariable("HOME");
  return home.starts_with('/') ? home + "/.local/state/scrubwell" : std::string();
#endif
}

std::vector<SessionInfo> ListSessions(const std::string& backupFolder) {
  std::vector<SessionInfo> sessions;
  for (const std::string& name : SessionNames(FolderOrDefault(backupFolder))) {
    sessions.push_back(LoadJournal(FolderOrDefault(backupFolder) + "/" + name).info);
  }
  return sessions;
}

std::string NewestSession(const std::string& backupFolder, UnicodeView identity) {
  const std::string folder = FolderOrDefault(backupFolder);
  const std::vector<std::string> names = SessionNames(folder);
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    const Journal journal = LoadJournalHead(folder + "/" + *name);
    if (IsDoneClean(journal.info) && (identity.empty() || journal.identity == identity)) {
      return *name;
    }
  }
  return {};
}

std::string SessionFolder(const std::string& backupFolder, const std::string& session,
                          std::string& error) {
  const std::string all = FolderOrDefault(backupFolder);
  const std::string name = session.empty() ? NewestSession(backupFolder, {}) : session;
  const std::string folder = all + "/" + name;
  if (!name.empty() && name.find_first_of("/\\") == std::string::npos &&
      IsLocalFile(folder + std::string(kJournalFile))) {
    return folder;
  }
  error = session.empty() ? all + ": there is no session" : folder + ": there is no such session";
  return {};
}

SessionInfo SessionHead(const std::string& backupFolder, const std::string& session) {
  SessionInfo info;
  const std::string folder = SessionFolder(backupFolder, session, info.error);
  return folder.empty() ? info : LoadJournalHead(folder).info;
}

SessionContent ReadSession(const std::string& backupFolder, const std::string& session) {
  SessionContent content;
  const std::string folder = SessionFolder(backupFolder, session, content.error);
  if (folder.empty()) {
    content.failure = CleanFailure::WrongUse;
    return content;
  }
  Journal journal = LoadJournal(folder);
  content.info = std::move(journal.info);
  content.problems = std::move(journal.problems);
  for (JournalEntry& entry : journal.entries) {
    NoteWritten(entry, nullptr, nullptr);
    content.items.push_back(std::move(entry.item));
  }
  content.error = content.info.error;
  if (!content.error.empty()) content.failure = CleanFailure::Unreadable;
  return content;
}

// What went first comes back last, so that importing the text ends with the oldest state.
ExportResult ExportSession(const std::string& backupFolder, const std::string& session) {
  const SessionContent content = ReadSession(backupFolder, session);
  ExportResult result{content.failure, content.error, {}};
  if (result.failure != CleanFailure::None) return result;
  const Journal journal = LoadJournal(content.info.folder);
  std::vector<reg::KeyEntry> keys;
  for (auto entry = journal.entries.rbegin(); entry != journal.entries.rend(); ++entry) {
    const UnicodeString path = RootedPath(entry->item.place);
    switch (entry->item.action) {
      case JournalAction::DeleteKey:
        AddTree(*entry, keys);
        break;
      case JournalAction::DeleteValue:
      case JournalAction::SetValue: {
        RegValue value = entry->before.value_or(entry->after);
        keys.push_back({path, false, 0, {{std::move(value), !entry->before.has_value()}}});
        break;
      }
      default:
        break;
    }
  }
  result.bytes = reg::EncodeUtf16(reg::Format(keys));
  return result;
}

}  // namespace scrubwell
