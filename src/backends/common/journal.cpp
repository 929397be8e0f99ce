#include "backends/common/journal.h"

#include <algorithm>
#include <unordered_set>

#include "backends/common/content_digest.h"
#include "backends/common/local_file.h"

namespace scrubwell {
namespace {

// The first format had weaker checksums and told less of what went; it is still read.
constexpr std::int64_t kFirstFormat = 1;
constexpr std::int64_t kFormat = 2;
// The system's own limit of how deep keys lie.
constexpr std::uint32_t kMostLevels = 512;

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
                                      : key.level > 0 && key.level <= kMostLevels &&
                                            key.level <= out[out.size() - 2].level + 1;
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
  line.Number("existed", entry.existed ? 1 : 0)
      .Raw("digestBefore", entry.digestBefore)
      .Raw("digestAfter", entry.digestAfter);
  PutAttributes(line, entry.attributes);
}

// A number where the first format has FNV-1a.
std::string TakeDigest(const JsonValue& json, std::string_view name, std::string_view before) {
  if (json.Has(before)) return FnvDigest(json.Count(before));
  return json.Raw(name);
}

bool TakeFile(const JsonValue& json, JournalEntry& entry) {
  entry.existed = json.Count("existed") != 0;
  entry.digestBefore = TakeDigest(json, "digestBefore", "hashBefore");
  entry.digestAfter = TakeDigest(json, "digestAfter", "hashAfter");
  return TakeAttributes(json, entry.attributes);
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
  if (entry.valuePlace != JournalEntry::NoPlace) line.Number("at", entry.valuePlace);
  if (entry.keyTime != 0) line.Number("keyTime", static_cast<std::int64_t>(entry.keyTime));
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
  // It also names the file with the content.
  if (item.id.empty() || item.id.find_first_not_of("0123456789") != std::string::npos) return false;
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
  if (json.Has("at")) entry.valuePlace = static_cast<std::uint32_t>(json.Count("at"));
  entry.keyTime = json.Count("keyTime");
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
    const std::int64_t format = json["journal"].number;
    return format == kFormat || format == kFirstFormat;
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

std::string_view TextOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void LoadUndone(const std::string& folder, Journal& journal) {
  Bytes bytes;
  if (!ReadLocalFile(folder + std::string(kUndoneFile), bytes)) return;
  JsonLines lines(TextOf(bytes));
  std::unordered_set<std::string> undone;
  for (JsonValue line; lines.Next(line);) undone.insert(line.Raw("undone"));
  for (JournalEntry& entry : journal.entries) {
    entry.item.undone = undone.contains(entry.item.id);
    if (entry.item.undone) ++journal.info.undone;
  }
}

}  // namespace

void PutAttributes(JsonLine& line, const FileAttributes& attributes) {
  line.Number("mode", attributes.mode)
      .Number("owner", attributes.owner)
      .Number("group", attributes.group)
      .Number("seconds", attributes.modifiedSeconds)
      .Number("nanoseconds", attributes.modifiedNanoseconds)
      .Number("accessed", attributes.accessedSeconds)
      .Number("accessedNanoseconds", attributes.accessedNanoseconds)
      .BeginList("extended");
  for (const auto& [name, data] : attributes.extended) {
    line.BeginItem().Raw("name", name).Data("data", data).EndItem();
  }
  line.EndList();
}

bool TakeAttributes(const JsonValue& json, FileAttributes& out) {
  out.mode = static_cast<std::uint32_t>(json.Count("mode"));
  out.owner = static_cast<std::uint32_t>(json.Count("owner"));
  out.group = static_cast<std::uint32_t>(json.Count("group"));
  out.modifiedSeconds = json["seconds"].number;
  out.modifiedNanoseconds = json["nanoseconds"].number;
  out.accessedSeconds = json["accessed"].number;
  out.accessedNanoseconds = json["accessedNanoseconds"].number;
  for (const JsonValue& item : json["extended"].items) {
    if (!item.Data("data", out.extended[item.Raw("name")])) return false;
  }
  return true;
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

namespace {

Journal JournalOf(const std::string& folder) {
  Journal journal;
  journal.info.folder = folder;
  journal.info.name = NameOf(LocalPath(folder));
  journal.info.carriedOut = IsLocalFile(folder + std::string(kCarriedOutFile));
  return journal;
}

}  // namespace

Journal LoadJournalHead(const std::string& folder) {
  constexpr std::size_t kLongest = std::size_t{1} << 20U;
  Journal journal = JournalOf(folder);
  Bytes bytes;
  JsonValue line;
  ReadLocalFile(folder + std::string(kJournalFile), bytes, kLongest);
  if (!JsonLines(TextOf(bytes)).Next(line) || !line.Has("journal") || !TakeLine(line, journal)) {
    journal.info.error = folder + ": the session's journal can't be read";
  }
  if (journal.live) journal.info.carriedOut = true;
  return journal;
}

Journal LoadJournal(const std::string& folder) {
  Journal journal = JournalOf(folder);
  Bytes bytes;
  if (!ReadLocalFile(folder + std::string(kJournalFile), bytes)) {
    journal.info.error = folder + ": the session's journal can't be read";
    return journal;
  }
  JsonLines lines(TextOf(bytes));
  JsonValue line;
  bool good = lines.Next(line) && line.Has("journal") && TakeLine(line, journal);
  while (good && lines.Next(line)) good = TakeLine(line, journal);
  const std::string_view rest = lines.Rest();
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
  const std::unordered_set<std::string_view> now(more.begin(), more.end());
  Sha256Digest chain{};
  std::string text;
  for (const JournalEntry& entry : journal.entries) {
    if (!entry.item.undone && !now.contains(entry.item.id)) continue;
    JsonLine line;
    line.Raw("undone", entry.item.id);
    text += line.Close(chain);
  }
  return text;
}

}  // namespace scrubwell
