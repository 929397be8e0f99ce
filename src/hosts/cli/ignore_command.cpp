#include <memory>

#include "hosts/cli/commands.h"
#include "hosts/cli/stop_signals.h"
#include "hosts/cli/targets.h"
#include "hosts/driver/problem_id.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/json_writer.h"
#include "hosts/report/language.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

RootKey ListRoot(bool machine) {
  return machine ? Platform().product.root : HKEY_CURRENT_USER;
}

// The list changes through the same transaction as everything else, so that this too can be put
// back.
int Commit(ICleanSession& session) {
  const UnstoppableSection section;
  if (StopRequested()) return Fail(Stopped, Say(texts::NothingChanged));
  const CommitResult result = session.Commit();
  return result.failure == CleanFailure::None ? NoProblems
                                              : Fail(CodeOf(result.failure), result.error);
}

int Add(const IgnoreCommand& command, ICleanSession& session) {
  ScanOptions options;
  options.plugins = command.plugins;
  if (const auto error = ApplyChoice(options)) return Fail(WrongUse, *error);
  if (ScanWithProgress() == RunOutcome::Stopped) return Fail(Stopped, Say(texts::NothingChanged));
  std::int32_t index = -1;
  const SelectFailure failure = FindProblem(command.id, index);
  if (failure == SelectFailure::Ambiguous) {
    return Fail(WrongUse, Say(texts::AmbiguousProblem, {command.id}));
  }
  // One that is hidden already may be put on the other list, or get another reason.
  if (index < 0) return Fail(WrongUse, Say(texts::UnknownProblem, {command.id}));
  const TSweepError& problem = (*SweepErrors)[index];
  const UnicodeString reason =
      command.reason.empty() ? problem.ShortDescription : FromUtf8(command.reason);
  const std::string id = ProblemIds(*SweepErrors)[static_cast<std::size_t>(index)];
  const Status status = StoreIgnoredProblem(
      problem, {FromUtf8(id), problem.PluginID, problem.Caption, reason}, command.machine);
  if (status != Status::Ok) return Fail(Unreadable, Say(texts::IgnoreNotStored, {command.id}));
  return Commit(session);
}

int Remove(const IgnoreCommand& command, ICleanSession& session) {
  const Status status = RemoveIgnoredProblem(FromUtf8(command.id), command.machine);
  if (status == Status::Absent) return Fail(WrongUse, Say(texts::NotIgnored, {command.id}));
  if (status != Status::Ok) return Fail(Unreadable, Say(texts::IgnoreNotStored, {command.id}));
  return Commit(session);
}

struct IgnoredEntry {
  TIgnoredProblem problem;
  bool machine = false;
};

void ReadList(bool machine, std::vector<IgnoredEntry>& entries) {
  TStringList names;
  TStringList data;
  EnumRegValuesEx(ListRoot(machine), IgnoredProblemsKey(), names, data, {});
  for (std::size_t i = 0; i < names.size() && i < data.size(); ++i) {
    ClearIgnoredProblems();
    AddIgnoredProblem(names[i], data[i]);
    const auto* entry = static_cast<const TIgnoredProblem*>(IgnoredProblems->First());
    if (entry != nullptr) entries.push_back({*entry, machine});
  }
  ClearIgnoredProblems();
}

std::string ListText(const std::vector<IgnoredEntry>& entries) {
  if (entries.empty()) return Say(texts::NoIgnored) + '\n';
  std::string out;
  for (const auto& [problem, machine] : entries) {
    out += Printable(problem.StoredName) + "  " + Printable(problem.Text1) + "  " +
           Printable(problem.Text2);
    if (machine) out += ' ' + Say(texts::OnMachineList);
    out += '\n';
    if (!problem.Text3.empty()) AppendWrapped(out, Printable(problem.Text3), 4, ReportWidth(false));
  }
  return out;
}

std::string ListJson(const std::vector<IgnoredEntry>& entries) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  json.Key("ignored").BeginArray();
  for (const auto& [problem, machine] : entries) {
    json.BeginObject();
    json.Key("id").Text(problem.StoredName);
    json.Key("plugin").Text(problem.Text1);
    json.Key("caption").Text(problem.Text2);
    json.Key("reason").Text(problem.Text3);
    json.Key("machine").Bool(machine);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  return out += '\n';
}

int List(const IgnoreCommand& command) {
  const OpenedTarget opened = OpenTarget(command.target);
  if (!opened.target) {
    return Fail(CodeOf(opened.failure), opened.error);
  }
  const LoadedPackage package(opened.target->Platform());
  std::vector<IgnoredEntry> entries;
  if (!command.machine) ReadList(false, entries);
  ReadList(true, entries);
  const bool json = command.format == ReportFormat::Json;
  return Run(PrintCommand{json ? ListJson(entries) : ListText(entries)});
}

}  // namespace

int Run(const IgnoreCommand& command) {
  if (command.action == IgnoreAction::List) return List(command);
  CleanOptions options;
  options.target = command.target;
  options.backupFolder = command.backup;
  const OpenedSession opened = OpenSession(options);
  if (!opened.session) return Fail(CodeOf(opened.failure), opened.error);
  const LoadedPackage package(opened.session->Backend().Platform());
  CatchStopSignals();
  return command.action == IgnoreAction::Add ? Add(command, *opened.session)
                                             : Remove(command, *opened.session);
}

}  // namespace scrubwell::hosts
