#include <array>

#include "hosts/cli/clean_report.h"
#include "hosts/report/json_writer.h"
#include "hosts/report/registry_text.h"
#include "hosts/report/system_sentence.h"

namespace scrubwell::hosts {

namespace {

// In the order of the enumerations.
constexpr std::array<std::string_view, 11> Actions = {"delete_key",
                                                      "delete_value",
                                                      "set_value",
                                                      "create_key",
                                                      "write_file",
                                                      "erase_file",
                                                      "erase_folder",
                                                      "keep_file",
                                                      "remove_task",
                                                      "remove_url",
                                                      "remove_firewall_application"};
constexpr std::array<std::string_view, 4> Outcomes = {"fixed", "failed", "still_found", "gone"};
constexpr std::array<std::string_view, 4> UndoOutcomes = {"restored", "already_there", "taken",
                                                          "failed"};

template <class Enum, std::size_t N>
std::string_view Name(const std::array<std::string_view, N>& names, Enum value) {
  const auto index = static_cast<std::size_t>(value);
  return index < N ? names[index] : std::string_view();
}

void WriteTexts(JsonWriter& json, const std::vector<std::string>& texts) {
  for (const std::string& text : texts) json.Text(InReportLanguage(text));
}

// The members of a change, without the brackets around them.
void WriteItem(JsonWriter& json, const JournalItem& item) {
  json.Key("id").Text(item.id);
  json.Key("action").Text(Name(Actions, item.action));
  json.Key("place").Text(item.place);
  json.Key("name").Text(item.name);
  json.Key("subkeys").Number(static_cast<std::int64_t>(item.subkeys));
  json.Key("values").Number(static_cast<std::int64_t>(item.values));
  json.Key("bytes").Number(static_cast<std::int64_t>(item.bytes));
}

void WriteLines(JsonWriter& json, const TStringList& lines) {
  json.BeginArray();
  for (const UnicodeString& line : lines) json.Text(line);
  json.EndArray();
}

// Members that a change has only where it writes something that can be shown.
void WriteWritten(JsonWriter& json, const JournalItem& item) {
  if (item.written == nullptr) return;
  const WrittenContent& written = *item.written;
  if (!written.after) {
    WriteLines(json.Key("before"), written.linesBefore);
    WriteLines(json.Key("after"), written.linesAfter);
    return;
  }
  if (written.before) WriteValue(json.Key("before"), *written.before);
  WriteValue(json.Key("after"), *written.after);
}

void WriteCleaned(JsonWriter& json, const CleanedProblem& problem) {
  json.BeginObject();
  json.Key("id").Text(problem.id);
  json.Key("plugin").Text(problem.plugin);
  json.Key("kind").Number(problem.kind);
  json.Key("caption").Text(problem.caption);
  json.Key("short_description").Text(problem.shortDescription);
  json.Key("outcome").Text(Name(Outcomes, problem.outcome));
  json.Key("round").Number(problem.round);
  json.EndObject();
}

// The members of a session, without the brackets around them.
void WriteSession(JsonWriter& json, const SessionInfo& session) {
  json.Key("name").Text(session.name);
  json.Key("folder").Text(session.folder);
  json.Key("time").Text(session.time);
  json.Key("target").Text(session.target);
  json.Key("product").Text(session.product);
  json.Key("undoes").Text(session.undoes);
  json.Key("items").Number(static_cast<std::int64_t>(session.items));
  json.Key("undone").Number(static_cast<std::int64_t>(session.undone));
  json.Key("carried_out").Bool(session.carriedOut);
  json.Key("bytes").Number(static_cast<std::int64_t>(SessionSize(session)));
  json.Key("error").Text(InReportLanguage(session.error));
}

}  // namespace

void WriteChanges(JsonWriter& json, const std::vector<JournalItem>& items,
                  const std::vector<JournalProblem>& problems) {
  const std::vector<bool> emptied = EmptiedParents(items);
  json.BeginArray();
  for (std::size_t i = 0; i < items.size(); ++i) {
    json.BeginObject();
    WriteItem(json, items[i]);
    json.Key("problem").Text(ProblemOf(items[i], problems));
    json.Key("emptied").Bool(emptied[i]);
    json.Key("undone").Bool(items[i].undone);
    WriteWritten(json, items[i]);
    json.EndObject();
  }
  json.EndArray();
}

std::string CleanJson(const CleanReport& report) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  WriteTarget(json.Key("target"), report.target);
  json.Key("dry_run").Bool(report.dryRun);
  json.Key("rounds").Number(report.result.rounds);
  json.Key("should_research").Bool(report.result.shouldReSearch);
  json.Key("problems").BeginArray();
  for (const CleanedProblem& problem : report.result.problems) WriteCleaned(json, problem);
  json.EndArray();
  WriteChanges(json.Key("changes"), report.items, report.journal);
  json.Key("counts").BeginObject();
  json.Key("left").Number(static_cast<std::int64_t>(report.result.Left()));
  json.Key("hidden").Number(static_cast<std::int64_t>(report.result.hidden));
  json.EndObject();
  json.Key("session").Text(report.commit.session);
  json.Key("backup").Text(report.commit.folder);
  json.Key("notes").BeginArray();
  for (const UnicodeString& note : report.notes) json.Text(note);
  WriteTexts(json, report.commit.notes);
  json.EndArray();
  json.EndObject();
  return out += '\n';
}

std::string SessionsJson(const std::vector<SessionInfo>& sessions) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  json.Key("sessions").BeginArray();
  for (const SessionInfo& session : sessions) {
    json.BeginObject();
    WriteSession(json, session);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  return out += '\n';
}

std::string SessionJson(const SessionContent& session) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  json.Key("session").BeginObject();
  WriteSession(json, session.info);
  json.EndObject();
  json.Key("problems").BeginArray();
  for (const JournalProblem& problem : session.problems) {
    json.BeginObject();
    json.Key("id").Text(problem.id);
    json.Key("plugin").Text(problem.plugin);
    json.Key("kind").Number(problem.kind);
    json.Key("caption").Text(problem.caption);
    json.Key("fixed").Bool(problem.fixed);
    json.EndObject();
  }
  json.EndArray();
  WriteChanges(json.Key("changes"), session.items, session.problems);
  json.EndObject();
  return out += '\n';
}

std::string UndoJson(const UndoResult& result) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  json.Key("session").Text(result.session);
  json.Key("changes").BeginArray();
  for (const UndoItem& entry : result.items) {
    json.BeginObject();
    WriteItem(json, entry.item);
    json.Key("outcome").Text(Name(UndoOutcomes, entry.outcome));
    json.Key("why").Text(InReportLanguage(entry.why));
    json.EndObject();
  }
  json.EndArray();
  json.Key("notes").BeginArray();
  WriteTexts(json, result.notes);
  json.EndArray();
  json.EndObject();
  return out += '\n';
}

}  // namespace scrubwell::hosts
