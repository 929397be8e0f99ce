#include "backends/offline/journal.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>

#include "backends/offline/json_line.h"
#include "formats/reg/reg_text.h"
#include "registry/Stringhelper.h"

namespace scrubwell {
namespace offline {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kFormat = 1;

void PutValue(JsonLine& line, const RegValue& value) {
  line.Text("value", value.name).Number("type", value.type).Data("data", value.data);
}

bool TakeValue(const JsonValue& json, RegValue& out) {
  out.name = json["value"].text;
  out.type = static_cast<std::uint32_t>(json.Count("type"));
  return json.Data("data", out.data);
}

void PutTree(JsonLine& line, const std::vector<KeyImage>& tree) {
  line.BeginList("tree");
  for (const KeyImage& key : tree) {
    line.BeginItem().Number("level", key.level).Text("name", key.name);
    if (!key.className.empty()) line.Text("class", key.className);
    line.Data("security", key.security).Number("time", static_cast<std::int64_t>(key.time));
    if (key.link) line.Number("link", 1);
    line.BeginList("values");
    for (const RegValue& value : key.values) {
      line.BeginItem();
      PutValue(line, value);
      line.EndItem();
    }
    line.EndList().EndItem();
  }
  line.EndList();
}

bool TakeTree(const JsonValue& json, std::vector<KeyImage>& out) {
  for (const JsonValue& item : json["tree"].items) {
    KeyImage& key = out.emplace_back();
    key.level = static_cast<std::uint32_t>(item.Count("level"));
    // A key hangs below the one before it or below one of that one's parents.
    const bool fits = out.size() == 1 ? key.level == 0
                                      : key.level > 0 && key.level <= out[out.size() - 2].level + 1;
    key.name = item["name"].text;
    key.className = item["class"].text;
    key.time = item.Count("time");
    key.link = item.Count("link") != 0;
    if (!fits || !item.Data("security", key.security)) return false;
    for (const JsonValue& value : item["values"].items) {
      if (!TakeValue(value, key.values.emplace_back())) return false;
    }
  }
  return true;
}

void PutFile(JsonLine& line, const JournalEntry& entry) {
  const FileAttributes& file = entry.attributes;
  line.Number("existed", entry.existed ? 1 : 0)
      .Number("hashBefore", static_cast<std::int64_t>(entry.hashBefore))
      .Number("hashAfter", static_cast<std::int64_t>(entry.hashAfter))
      .Number("mode", file.mode)
      .Number("owner", file.owner)
      .Number("group", file.group)
      .Number("seconds", file.modifiedSeconds)
      .Number("nanoseconds", file.modifiedNanoseconds)
      .BeginList("extended");
  for (const auto& [name, data] : file.extended) {
    line.BeginItem().Raw("name", name).Data("data", data).EndItem();
  }
  line.EndList();
}

bool TakeFile(const JsonValue& json, JournalEntry& entry) {
  entry.existed = json.Count("existed") != 0;
  entry.hashBefore = json.Count("hashBefore");
  entry.hashAfter = json.Count("hashAfter");
  FileAttributes& file = entry.attributes;
  file.mode = static_cast<std::uint32_t>(json.Count("mode"));
  file.owner = static_cast<std::uint32_t>(json.Count("owner"));
  file.group = static_cast<std::uint32_t>(json.Count("group"));
  file.modifiedSeconds = json["seconds"].number;
  file.modifiedNanoseconds = json["nanoseconds"].number;
  for (const JsonValue& item : json["extended"].items) {
    if (!item.Data("data", file.extended[item.Raw("name")])) return false;
  }
  return true;
}

bool IsFileAction(JournalAction action) {
  return action >= JournalAction::WriteFile;
}

void PutEntry(JsonLine& line, const JournalEntry& entry) {
  const JournalItem& item = entry.item;
  line.Raw("item", item.id).Number("action", static_cast<std::int64_t>(item.action));
  if (item.problem != JournalItem::NoProblem) {
    line.Number("of", static_cast<std::int64_t>(item.problem));
  }
  line.Text("place", item.place).Text("name", item.name);
  line.Number("subkeys", static_cast<std::int64_t>(item.subkeys))
      .Number("values", static_cast<std::int64_t>(item.values))
      .Number("bytes", static_cast<std::int64_t>(item.bytes));
  if (IsFileAction(item.action)) {
    PutFile(line, entry);
    return;
  }
  line.Text("hive", entry.hive).Text("path", entry.path);
  PutTree(line, entry.tree);
  line.BeginList("before");
  if (entry.before) {
    line.BeginItem();
    PutValue(line, *entry.before);
    line.EndItem();
  }
  line.EndList().BeginList("after").BeginItem();
  PutValue(line, entry.after);
  line.EndItem().EndList();
}

bool TakeEntry(const JsonValue& json, JournalEntry& entry) {
  JournalItem& item = entry.item;
  item.id = json.Raw("item");
  if (json.Count("action") > static_cast<std::uint64_t>(JournalAction::KeepFile)) return false;
  item.action = static_cast<JournalAction>(json.Count("action"));
  if (json.Has("of")) item.problem = static_cast<std::size_t>(json.Count("of"));
  item.place = json["place"].text;
  item.name = json["name"].text;
  item.subkeys = json.Count("subkeys");
  item.values = json.Count("values");
  item.bytes = json.Count("bytes");
  if (IsFileAction(item.action)) return TakeFile(json, entry);
  entry.hive = json["hive"].text;
  entry.path = json["path"].text;
  if (!TakeTree(json, entry.tree)) return false;
  if (const auto& before = json["before"].items; !before.empty()) {
    if (!TakeValue(before.front(), entry.before.emplace())) return false;
  }
  const auto& after = json["after"].items;
  return !after.empty() && TakeValue(after.front(), entry.after) &&
         (item.action != JournalAction::DeleteKey || !entry.tree.empty());
}

bool TakeLine(const JsonValue& json, Journal& out, bool& closed) {
  if (closed) return false;
  if (json.Has("journal")) {
    out.info.time = json.Raw("time");
    out.info.target = json.Raw("target");
    out.info.product = json["product"].text;
    out.info.undoes = json.Raw("undoes");
    out.identity = json["identity"].text;
    return json["journal"].number == kFormat;
  }
  if (json.Has("problem")) {
    JournalProblem& problem = out.problems.emplace_back();
    problem.id = json.Raw("id");
    problem.plugin = json["plugin"].text;
    problem.kind = static_cast<std::int32_t>(json["kind"].number);
    problem.caption = json["caption"].text;
    problem.fixed = json.Count("fixed") != 0;
    return true;
  }
  if (json.Has("end")) {
    closed = true;
    return json.Count("end") == out.entries.size();
  }
  return TakeEntry(json, out.entries.emplace_back()) &&
         (out.entries.back().item.problem == JournalItem::NoProblem ||
          out.entries.back().item.problem < out.problems.size());
}

void LoadUndone(const std::string& folder, Journal& journal) {
  Bytes bytes;
  std::vector<JsonValue> lines;
  if (ReadWholeFile(folder + std::string(kUndoneFile), bytes) != 0) return;
  ReadJsonLines({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, lines);
  std::unordered_set<std::string> undone;
  for (const JsonValue& line : lines) undone.insert(line.Raw("undone"));
  for (JournalEntry& entry : journal.entries) {
    entry.item.undone = undone.contains(entry.item.id);
    if (entry.item.undone) ++journal.info.undone;
  }
}

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

}  // namespace

Status TakeKeyImage(const regf::Hive& hive, regf::CellOffset start, std::vector<KeyImage>& out) {
  out.clear();
  Status worst = Status::Ok;
  const auto note = [&worst](Status status) {
    if (status != Status::Ok && status != Status::Absent) worst = status;
  };
  note(hive.Walk(start, [&](const regf::Subkey& subkey, int level) {
    KeyImage& key = out.emplace_back();
    key.level = static_cast<std::uint32_t>(level);
    key.name = subkey.facts.name.Text();
    key.time = subkey.facts.lastWritten;
    key.link = subkey.facts.IsLink();
    note(hive.ClassName(subkey.key, key.className));
    regf::ByteView security;
    note(hive.Security(subkey.key, security));
    key.security.assign(security.begin(), security.end());
    note(hive.Values(subkey.key, key.values));
  }));
  return out.empty() && worst == Status::Ok ? Status::Corrupt : worst;
}

std::string FormatJournal(const Journal& journal) {
  std::uint64_t chain = 0;
  JsonLine head;
  head.Number("journal", kFormat).Raw("time", journal.info.time);
  head.Raw("target", journal.info.target).Text("product", journal.info.product);
  head.Raw("undoes", journal.info.undoes).Text("identity", journal.identity);
  std::string text = head.Close(chain);
  for (std::size_t i = 0; i < journal.problems.size(); ++i) {
    const JournalProblem& problem = journal.problems[i];
    JsonLine line;
    line.Number("problem", static_cast<std::int64_t>(i)).Raw("id", problem.id);
    line.Text("plugin", problem.plugin).Number("kind", problem.kind);
    line.Text("caption", problem.caption).Number("fixed", problem.fixed ? 1 : 0);
    text += line.Close(chain);
  }
  for (const JournalEntry& entry : journal.entries) {
    JsonLine line;
    PutEntry(line, entry);
    text += line.Close(chain);
  }
  JsonLine end;
  end.Number("end", static_cast<std::int64_t>(journal.entries.size()));
  return text + end.Close(chain);
}

Journal LoadJournal(const std::string& folder) {
  Journal journal;
  journal.info.folder = folder;
  journal.info.name = fs::path(folder).filename().string();
  journal.info.carriedOut = PathExists(folder + std::string(kCarriedOutFile));
  Bytes bytes;
  if (ReadWholeFile(folder + std::string(kJournalFile), bytes) != 0) {
    journal.info.error = folder + ": the session's journal can't be read";
    return journal;
  }
  std::vector<JsonValue> lines;
  bool closed = false;
  bool good = ReadJsonLines({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, lines) &&
              !lines.empty() && lines.front().Has("journal");
  for (const JsonValue& line : lines) good = good && TakeLine(line, journal, closed);
  if (!good || !closed) {
    journal.info.error = folder + ": the session's journal is cut off or was changed";
  }
  journal.info.items = journal.entries.size();
  LoadUndone(folder, journal);
  return journal;
}

std::string ContentFile(const std::string& folder, const JournalEntry& entry) {
  return folder + std::string(kFilesFolder) + "/" + entry.item.id;
}

std::string FormatUndone(const Journal& journal, const std::vector<std::string>& more) {
  std::uint64_t chain = 0;
  std::string text;
  for (const JournalEntry& entry : journal.entries) {
    if (!entry.item.undone && std::find(more.begin(), more.end(), entry.item.id) == more.end()) {
      continue;
    }
    JsonLine line;
    line.Raw("undone", entry.item.id);
    text += line.Close(chain);
  }
  return text;
}

}  // namespace offline

namespace {

std::string FolderOrDefault(const std::string& backupFolder) {
  return backupFolder.empty() ? DefaultBackupFolder() : backupFolder;
}

}  // namespace

std::vector<SessionInfo> ListSessions(const std::string& backupFolder) {
  std::vector<SessionInfo> sessions;
  std::error_code ignored;
  for (const auto& entry :
       std::filesystem::directory_iterator(FolderOrDefault(backupFolder), ignored)) {
    const std::string folder = entry.path().string();
    if (!offline::PathExists(folder + std::string(offline::kJournalFile))) continue;
    sessions.push_back(offline::LoadJournal(folder).info);
  }
  std::sort(sessions.begin(), sessions.end(),
            [](const SessionInfo& a, const SessionInfo& b) { return a.name < b.name; });
  return sessions;
}

SessionContent ReadSession(const std::string& backupFolder, const std::string& session) {
  SessionContent content;
  std::string name = session;
  if (name.empty()) {
    for (const SessionInfo& info : ListSessions(backupFolder)) {
      if (info.carriedOut && info.undoes.empty()) name = info.name;
    }
  }
  const std::string folder = FolderOrDefault(backupFolder) + "/" + name;
  if (name.empty() || name.find('/') != std::string::npos ||
      !offline::PathExists(folder + std::string(offline::kJournalFile))) {
    content.failure = CleanFailure::WrongUse;
    content.error = session.empty() ? FolderOrDefault(backupFolder) + ": there is no session"
                                    : folder + ": there is no such session";
    return content;
  }
  offline::Journal journal = offline::LoadJournal(folder);
  content.info = std::move(journal.info);
  content.problems = std::move(journal.problems);
  for (offline::JournalEntry& entry : journal.entries) {
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
  const offline::Journal journal = offline::LoadJournal(content.info.folder);
  std::vector<reg::KeyEntry> keys;
  for (auto entry = journal.entries.rbegin(); entry != journal.entries.rend(); ++entry) {
    const UnicodeString path = offline::RootedPath(entry->item.place);
    switch (entry->item.action) {
      case JournalAction::DeleteKey:
        offline::AddTree(*entry, keys);
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
