#include "backends/common/journal.h"

#include <algorithm>
#include <unordered_set>

#include "backends/common/json_line.h"
#include "backends/common/local_file.h"

namespace scrubwell {
namespace {

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

// All others keep what they need as a file does: content, marks, and what else belongs to it.
bool IsRegistryAction(JournalAction action) {
  return action < JournalAction::WriteFile;
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
  if (!IsRegistryAction(item.action)) {
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
  constexpr auto kLast = static_cast<std::uint64_t>(JournalAction::RemoveFirewallApplication);
  if (json.Count("action") > kLast) return false;
  item.action = static_cast<JournalAction>(json.Count("action"));
  if (json.Has("of")) item.problem = static_cast<std::size_t>(json.Count("of"));
  item.place = json["place"].text;
  item.name = json["name"].text;
  item.subkeys = json.Count("subkeys");
  item.values = json.Count("values");
  item.bytes = json.Count("bytes");
  if (!IsRegistryAction(item.action)) return TakeFile(json, entry);
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

bool TakeLine(const JsonValue& json, Journal& out) {
  if (out.closed) return false;
  if (json.Has("journal")) {
    out.info.time = json.Raw("time");
    out.info.target = json.Raw("target");
    out.info.product = json["product"].text;
    out.info.undoes = json.Raw("undoes");
    out.identity = json["identity"].text;
    out.live = json.Count("live") != 0;
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
  if (json.Has("dropped")) {
    if (out.entries.empty() || out.entries.back().item.id != json.Raw("dropped")) return false;
    out.entries.pop_back();
    return true;
  }
  if (json.Has("end")) {
    out.closed = true;
    return json.Count("end") == out.entries.size();
  }
  return TakeEntry(json, out.entries.emplace_back()) &&
         (out.entries.back().item.problem == JournalItem::NoProblem ||
          out.entries.back().item.problem < out.problems.size());
}

void LoadUndone(const std::string& folder, Journal& journal) {
  Bytes bytes;
  std::vector<JsonValue> lines;
  if (!ReadLocalFile(folder + std::string(kUndoneFile), bytes)) return;
  ReadJsonLines({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, lines);
  std::unordered_set<std::string> undone;
  for (const JsonValue& line : lines) undone.insert(line.Raw("undone"));
  for (JournalEntry& entry : journal.entries) {
    entry.item.undone = undone.contains(entry.item.id);
    if (entry.item.undone) ++journal.info.undone;
  }
}

}  // namespace

std::uint64_t ContentHash(std::span<const std::uint8_t> data, std::uint64_t seed) {
  for (const std::uint8_t byte : data) seed = (seed ^ byte) * 0x100000001B3U;
  return seed;
}

std::string JournalLines::Head(const Journal& journal) {
  JsonLine head;
  head.Number("journal", kFormat).Raw("time", journal.info.time);
  head.Raw("target", journal.info.target).Text("product", journal.info.product);
  head.Raw("undoes", journal.info.undoes).Text("identity", journal.identity);
  if (journal.live) head.Number("live", 1);
  std::string text = head.Close(chain_);
  for (std::size_t i = 0; i < journal.problems.size(); ++i) {
    const JournalProblem& problem = journal.problems[i];
    JsonLine line;
    line.Number("problem", static_cast<std::int64_t>(i)).Raw("id", problem.id);
    line.Text("plugin", problem.plugin).Number("kind", problem.kind);
    line.Text("caption", problem.caption).Number("fixed", problem.fixed ? 1 : 0);
    text += line.Close(chain_);
  }
  return text;
}

std::string JournalLines::Entry(const JournalEntry& entry) {
  JsonLine line;
  PutEntry(line, entry);
  ++entries_;
  return line.Close(chain_);
}

std::string JournalLines::Dropped(const JournalEntry& entry) {
  JsonLine line;
  line.Raw("dropped", entry.item.id);
  --entries_;
  return line.Close(chain_);
}

std::string JournalLines::End() {
  JsonLine end;
  end.Number("end", entries_);
  return end.Close(chain_);
}

std::string FormatJournal(const Journal& journal) {
  JournalLines lines;
  std::string text = lines.Head(journal);
  for (const JournalEntry& entry : journal.entries) text += lines.Entry(entry);
  text += lines.End();
  return text;
}

Journal LoadJournal(const std::string& folder) {
  Journal journal;
  journal.info.folder = folder;
  journal.info.name = NameOf(LocalPath(folder));
  journal.info.carriedOut = IsLocalFile(folder + std::string(kCarriedOutFile));
  Bytes bytes;
  if (!ReadLocalFile(folder + std::string(kJournalFile), bytes)) {
    journal.info.error = folder + ": the session's journal can't be read";
    return journal;
  }
  std::vector<JsonValue> lines;
  std::string_view rest;
  ReadJsonLines({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, lines, &rest);
  bool good = !lines.empty() && lines.front().Has("journal");
  for (const JsonValue& line : lines) good = good && TakeLine(line, journal);
  // A crash cuts the line that was being written and none before it.
  const bool isCut = rest.find('\n') >= rest.size() - std::min<std::size_t>(rest.size(), 1);
  if (!good || !(journal.live ? isCut && (rest.empty() || !journal.closed)
                              : rest.empty() && journal.closed)) {
    journal.info.error = folder + ": the session's journal is cut off or was changed";
  } else if (journal.live) {
    journal.info.carriedOut = true;
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

}  // namespace scrubwell
