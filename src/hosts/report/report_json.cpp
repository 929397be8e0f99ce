#include "hosts/driver/problem_id.h"
#include "hosts/report/json_writer.h"
#include "hosts/report/report.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

std::string_view StateName(TRcpState state) {
  switch (state) {
    case rcpInited:
      return "inited";
    case rcpScanned:
      return "scanned";
    case rcpCleaned:
      return "cleaned";
    case rcpUnknown:
      break;
  }
  return "unknown";
}

void WritePlugin(JsonWriter& json, const TRCPlugin& plugin) {
  json.BeginObject();
  json.Key("id").Text(plugin.FPluginID);
  json.Key("caption").Text(plugin.Caption);
  json.Key("short_description").Text(plugin.ShortDescription);
  json.Key("description").Text(plugin.Description);
  json.Key("image_index").Number(plugin.ImageIndex);
  json.Key("icon").Text(plugin.IconFileName);
  json.Key("group").Number(plugin.GroupIndex);
  json.Key("active").Bool(plugin.Active);
  json.Key("state").Text(StateName(plugin.FState));
  json.Key("scan_item_count").Number(plugin.FScanItemCount);
  json.Key("scan_weight").Number(plugin.ScanWeight);
  json.Key("error_count").Number(plugin.ErrorCount);
  json.EndObject();
}

template <class Written>
void WriteProblems(JsonWriter& json, const ScanReport& report, Written&& written) {
  const std::vector<std::string> ids = ProblemIds(*SweepErrors);
  json.BeginArray();
  for (const std::int32_t i : report.shown) {
    json.BeginObject();
    WriteProblemMembers(json, report, i, ids[static_cast<std::size_t>(i)]);
    json.EndObject();
    written();
  }
  json.EndArray();
}

void WriteUsers(JsonWriter& json, const std::vector<ScannedUser>& users) {
  json.BeginArray();
  for (const ScannedUser& user : users) {
    json.BeginObject();
    json.Key("user").Text(user.name);
    json.Key("user_sid").Text(user.sid);
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

void WriteTarget(JsonWriter& json, const TargetFacts& target) {
  json.BeginObject();
  json.Key("folder").Text(target.folder);
  json.Key("product").Text(target.productName);
  json.Key("version").Text(target.version);
  json.Key("build").Number(target.build);
  json.Key("is_64bit").Bool(target.is64Bit);
  json.Key("user").Text(target.userName);
  json.Key("user_sid").Text(target.userSid);
  json.Key("system_root").Text(target.systemRoot);
  json.Key("control_set").Number(target.controlSet);
  json.EndObject();
}

void WriteProblemMembers(JsonWriter& json, const ScanReport& report, std::int32_t index,
                         const std::string& id) {
  const TSweepError& problem = (*SweepErrors)[index];
  json.Key("id").Text(id);
  if (!report.users.empty()) json.Key("user").Text(OwnerOf(report, index));
  json.Key("plugin").Text(problem.PluginID);
  json.Key("kind").Number(problem.ErrorType);
  json.Key("icon").Text(problem.IconID);
  json.Key("caption").Text(problem.Caption);
  json.Key("short_description").Text(problem.ShortDescription);
  json.Key("description").Text(problem.Description);
  json.Key("data").BeginArray();
  for (const UnicodeString& item : problem.Data) json.Text(item);
  json.EndArray();
  json.Key("selected").Bool(problem.Selected);
  json.Key("fixed").Bool(problem.Fixed);
  json.Key("visible").Bool(problem.Visible);
  json.Key("is_64bit").Bool(problem.Is64Bit);
  json.Key("identification").Text(BuildErrorIdentificationString(problem));
}

std::string JsonReport(const ScanReport& report, const Drain& drain) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  WriteTarget(json.Key("target"), report.target);
  json.Key("status").Text(report.outcome == RunOutcome::Complete ? "complete" : "stopped");
  json.Key("should_research").Bool(ShouldReSearch);
  json.Key("plugins").BeginArray();
  for (const TRCPlugin* plugin : *Plugins) WritePlugin(json, *plugin);
  json.EndArray();
  if (!report.users.empty()) WriteUsers(json.Key("users"), report.users);
  WriteProblems(json.Key("problems"), report, [&] {
    if (drain) drain(out);
  });
  json.Key("counts").BeginObject();
  json.Key("real_sweep_errors").Number(RealSweepErrorCount);
  json.Key("category_errors").Number(CategoryErrors);
  json.Key("hidden").Number(static_cast<std::int64_t>(report.hidden));
  json.Key("left_out").Number(static_cast<std::int64_t>(report.leftOut));
  json.Key("known_before").Number(static_cast<std::int64_t>(report.knownBefore));
  json.EndObject();
  json.Key("notes").BeginArray();
  for (const UnicodeString& note : report.notes) json.Text(note);
  json.EndArray();
  json.EndObject();
  out += '\n';
  return out;
}

}  // namespace scrubwell::hosts
