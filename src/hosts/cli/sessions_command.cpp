#include "hosts/cli/clean_report.h"
#include "hosts/cli/commands.h"
#include "hosts/cli/console.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/json_writer.h"
#include "hosts/report/language.h"

namespace scrubwell::hosts {

namespace {

std::string PrunedJson(const std::vector<SessionInfo>& sessions, bool dryRun) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  json.Key("dry_run").Bool(dryRun);
  json.Key("removed").BeginArray();
  for (const SessionInfo& session : sessions) json.Text(session.name);
  json.EndArray();
  json.EndObject();
  return out += '\n';
}

bool UserAgrees(const std::string& list, std::size_t count) {
  WriteTo(Stream::Error, list + Say(texts::AskPrune, {std::to_string(count)}));
  return ReadsYes();
}

int Prune(const SessionsCommand& command, const std::vector<SessionInfo>& sessions) {
  const std::vector<SessionInfo> old = SessionsToPrune(sessions, command.limits);
  const bool json = command.format == ReportFormat::Json;
  // While they are still there to be measured.
  const std::string list = old.empty() ? std::string() : SessionsText(old) + '\n';
  if (!command.dryRun && !old.empty()) {
    if (!command.yes && !UserAgrees(list, old.size()))
      return Fail(ProblemsFound, Say(texts::NothingChanged));
    for (const SessionInfo& session : old) {
      const std::string why = RemoveSession(session);
      if (!why.empty()) return Fail(Unreadable, why);
    }
  }
  if (json) return Run(PrintCommand{PrunedJson(old, command.dryRun)});
  if (old.empty()) return Run(PrintCommand{Say(texts::NothingToPrune) + '\n'});
  const std::string end =
      command.dryRun ? Say(texts::DryRunEnd) : Say(texts::Pruned, {std::to_string(old.size())});
  const bool shown = !command.dryRun && !command.yes;
  return Run(PrintCommand{(shown ? std::string() : list) + end + '\n'});
}

}  // namespace

int Run(const SessionsCommand& command) {
  const bool ask = command.prune && !command.yes && !command.dryRun;
  if (ask && !IsTerminal(Stream::Input)) return Fail(WrongUse, Say(texts::NeedsYes));
  const std::vector<SessionInfo> sessions = ListSessions(command.backup);
  if (command.prune) return Prune(command, sessions);
  const bool json = command.format == ReportFormat::Json;
  return Run(PrintCommand{json ? SessionsJson(sessions) : SessionsText(sessions)});
}

}  // namespace scrubwell::hosts
