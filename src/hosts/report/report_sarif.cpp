#include <algorithm>
#include <unordered_map>

#include "hosts/driver/problem_id.h"
#include "hosts/report/hive_places.h"
#include "hosts/report/language.h"
#include "hosts/report/problem_kinds.h"
#include "hosts/report/problem_parts.h"
#include "hosts/report/report.h"
#include "hosts/report/report_texts.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

constexpr std::string_view kSchema =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";
constexpr std::string_view kBase = "WINDOWS_VOLUME";
constexpr std::string_view kTaxonomy = "MITRE ATT&CK";
constexpr std::string_view kAttackSite = "https://attack.mitre.org/";

// Results are matched from run to run by this; the name changes with how the digest is made.
constexpr std::string_view kFingerprint = "scrubwellProblem/v1";

std::string RuleId(UnicodeView plugin, std::int32_t kind) {
  return ToUtf8(plugin) + '/' + std::to_string(kind);
}

std::string_view LevelOf(Weight weight) {
  return weight == Weight::Warning ? "warning" : "note";
}

// A template as it reads without any data.
UnicodeString WithoutData(UnicodeView text) {
  UnicodeString result;
  while (!text.empty()) {
    const std::size_t start = text.find(u'#');
    const std::size_t end = start == UnicodeView::npos ? start : text.find(u'#', start + 1);
    if (end == UnicodeView::npos) return result.append(text);
    result.append(text.substr(0, start)).append(u"…");
    text.remove_prefix(end + 1);
  }
  return result;
}

// Every part of a log, and what they share.
class SarifLog {
 public:
  SarifLog(const ScanReport& report, std::string& out, const Drain& drain)
      : report_(report), out_(out), drain_(drain), json_(out, JsonLayout::OneLine) {
    CollectFiles();
  }
  void Write();

 private:
  void CollectFiles();
  void Message(std::string_view key, UnicodeView text);
  void WriteTool();
  void WriteRule(const TRCPlugin& plugin, const TProblemKind& kind);
  void WriteRelationship(std::string_view technique);
  void WriteTaxonomy();
  void WriteInvocation();
  void WriteArtifacts();
  void WriteFile(std::size_t index);
  void WriteResult(std::int32_t index);
  void WriteLocation(std::int32_t index);
  void WriteSuppressions(const TSweepError& problem);
  void WriteProperties(std::int32_t index);

  const ScanReport& report_;
  std::string& out_;
  const Drain& drain_;
  JsonWriter json_;
  std::vector<std::string> digests_ = ProblemDigests(*SweepErrors);
  std::vector<std::string> ids_ = ProblemIds(digests_);
  std::unordered_map<std::string, std::int64_t> rules_;  // number by id
  std::vector<std::string> files_;
  std::unordered_map<std::int32_t, std::size_t> fileOf_;  // into files_, by problem
};

void SarifLog::CollectFiles() {
  std::unordered_map<std::string, std::size_t> known;
  for (const std::int32_t index : report_.shown) {
    const std::string file = FileOfProblem(report_, index);
    if (file.empty()) continue;
    const auto [entry, isNew] = known.emplace(file, files_.size());
    if (isNew) files_.push_back(file);
    fileOf_[index] = entry->second;
  }
}

void SarifLog::Message(std::string_view key, UnicodeView text) {
  json_.Key(key).BeginObject();
  json_.Key("text").Text(WellFormed(text));
  json_.EndObject();
}

void SarifLog::WriteRelationship(std::string_view technique) {
  const auto taxa = AllTechniques();
  const auto taxon = std::ranges::find(taxa, technique, &Technique::id);
  json_.Key("relationships").BeginArray();
  json_.BeginObject();
  json_.Key("target").BeginObject();
  json_.Key("id").Text(technique);
  json_.Key("index").Number(taxon - taxa.begin());
  json_.Key("toolComponent").BeginObject();
  json_.Key("name").Text(kTaxonomy);
  json_.Key("index").Number(0);
  json_.EndObject();
  json_.EndObject();
  json_.Key("kinds").BeginArray();
  json_.Text("relevant");
  json_.EndArray();
  json_.EndObject();
  json_.EndArray();
}

void SarifLog::WriteRule(const TRCPlugin& plugin, const TProblemKind& kind) {
  const ProblemKind* const known = FindKind(plugin.FPluginID, kind.kind);
  const std::string id = RuleId(plugin.FPluginID, kind.kind);
  const std::string_view technique = known == nullptr ? std::string_view() : known->technique;
  rules_.emplace(id, static_cast<std::int64_t>(rules_.size()));
  json_.BeginObject();
  json_.Key("id").Text(id);
  Message("shortDescription", known == nullptr ? plugin.Caption : LoadText(known->title));
  Message("fullDescription", WithoutData(LoadText(kind.description)));
  const UnicodeString& help =
      plugin.Description.empty() ? plugin.ShortDescription : plugin.Description;
  Message("help", help);
  json_.Key("defaultConfiguration").BeginObject();
  json_.Key("level").Text(LevelOf(known == nullptr ? Weight::Note : known->weight));
  json_.EndObject();
  if (!technique.empty()) WriteRelationship(technique);
  json_.Key("properties").BeginObject();
  json_.Key("category").Text(plugin.Caption);
  json_.Key("tags").BeginArray();
  json_.Text("registry");
  json_.Text(plugin.FPluginID);
  if (!technique.empty()) json_.Text("attack." + std::string(technique));
  json_.EndArray();
  json_.EndObject();
  json_.EndObject();
}

void SarifLog::WriteTool() {
  json_.Key("tool").BeginObject();
  json_.Key("driver").BeginObject();
  json_.Key("name").Text("Scrubwell");
  json_.Key("version").Text(SCRUBWELL_VERSION);
  json_.Key("semanticVersion").Text(SCRUBWELL_VERSION);
  Message("shortDescription", LoadText(texts::ReportProgram));
  json_.Key("supportedTaxonomies").BeginArray();
  json_.BeginObject();
  json_.Key("name").Text(kTaxonomy);
  json_.Key("index").Number(0);
  json_.EndObject();
  json_.EndArray();
  json_.Key("rules").BeginArray();
  for (const TRCPlugin* plugin : *Plugins) {
    for (const TProblemKind& kind : plugin->Kinds()) WriteRule(*plugin, kind);
  }
  json_.EndArray();
  json_.EndObject();
  json_.EndObject();
}

void SarifLog::WriteTaxonomy() {
  json_.Key("taxonomies").BeginArray();
  json_.BeginObject();
  json_.Key("name").Text(kTaxonomy);
  json_.Key("organization").Text("MITRE");
  json_.Key("informationUri").Text(kAttackSite);
  Message("shortDescription", LoadText(texts::SarifTaxonomy));
  json_.Key("taxa").BeginArray();
  for (const Technique& technique : AllTechniques()) {
    std::string page(technique.id);
    std::ranges::replace(page, '.', '/');
    json_.BeginObject();
    json_.Key("id").Text(technique.id);
    json_.Key("name").Text(technique.name);
    json_.Key("helpUri").Text(std::string(kAttackSite) + "techniques/" + page + "/");
    json_.EndObject();
  }
  json_.EndArray();
  json_.EndObject();
  json_.EndArray();
}

// Without times, so that the same scan makes the same report.
void SarifLog::WriteInvocation() {
  const bool complete = report_.outcome == RunOutcome::Complete;
  json_.Key("invocations").BeginArray();
  json_.BeginObject();
  json_.Key("executionSuccessful").Bool(complete);
  json_.Key("toolExecutionNotifications").BeginArray();
  const auto notify = [this](std::string_view level, UnicodeView text) {
    json_.BeginObject();
    json_.Key("level").Text(level);
    Message("message", text);
    json_.EndObject();
  };
  if (!complete) notify("warning", LoadText(texts::ReportStopped));
  for (const UnicodeString& note : report_.notes) notify("note", note);
  json_.EndArray();
  json_.EndObject();
  json_.EndArray();
}

void SarifLog::WriteFile(std::size_t index) {
  const std::string& file = files_[index];
  json_.BeginObject();
  json_.Key("uri").Text(UriOf(file));
  if (!file.starts_with('/')) json_.Key("uriBaseId").Text(kBase);
  json_.Key("index").Number(static_cast<std::int64_t>(index));
  json_.EndObject();
}

void SarifLog::WriteArtifacts() {
  json_.Key("originalUriBaseIds").BeginObject();
  json_.Key(kBase).BeginObject();
  std::string folder = report_.target.folder;
  if (folder.starts_with('/')) {
    if (!folder.ends_with('/')) folder += '/';
    json_.Key("uri").Text(UriOf(folder));
  }
  Message("description", LoadText(texts::SarifVolume));
  json_.EndObject();
  json_.EndObject();
  json_.Key("artifacts").BeginArray();
  for (std::size_t i = 0; i < files_.size(); ++i) {
    json_.BeginObject();
    json_.Key("location");
    WriteFile(i);
    json_.Key("roles").BeginArray();
    json_.Text("analysisTarget");
    json_.EndArray();
    json_.EndObject();
  }
  json_.EndArray();
}

void SarifLog::WriteLocation(std::int32_t index) {
  const ProblemPlace place = PlaceOf((*SweepErrors)[index]);
  const auto file = fileOf_.find(index);
  json_.Key("locations").BeginArray();
  if (file == fileOf_.end() && place.key.empty()) return json_.EndArray();
  json_.BeginObject();
  if (file != fileOf_.end()) {
    json_.Key("physicalLocation").BeginObject();
    json_.Key("artifactLocation");
    WriteFile(file->second);
    json_.EndObject();
  }
  if (!place.key.empty()) {
    json_.Key("logicalLocations").BeginArray();
    json_.BeginObject();
    json_.Key("name").Text(WellFormed(place.key.substr(place.key.rfind(u'\\') + 1)));
    json_.Key("fullyQualifiedName").Text(WellFormed(place.key));
    json_.Key("kind").Text("resource");
    json_.EndObject();
    json_.EndArray();
  }
  json_.EndObject();
  json_.EndArray();
}

// An empty list says that it is not suppressed; no list would leave that open.
void SarifLog::WriteSuppressions(const TSweepError& problem) {
  json_.Key("suppressions").BeginArray();
  if (!problem.Visible) {
    json_.BeginObject();
    json_.Key("kind").Text("external");
    json_.Key("status").Text("accepted");
    json_.Key("justification").Text(LoadText(texts::SarifIgnored));
    json_.EndObject();
  }
  json_.EndArray();
}

void SarifLog::WriteProperties(std::int32_t index) {
  const TSweepError& problem = (*SweepErrors)[index];
  const ProblemPlace place = PlaceOf(problem);
  json_.Key("properties").BeginObject();
  json_.Key("problemId").Text(ids_[static_cast<std::size_t>(index)]);
  json_.Key("caption").Text(WellFormed(problem.Caption));
  if (!OwnerOf(report_, index).empty()) {
    json_.Key("user").Text(WellFormed(OwnerOf(report_, index)));
  }
  if (!place.view.empty()) json_.Key("view").Text(place.view);
  if (place.hasValue) json_.Key("value").Text(WellFormed(place.value));
  json_.Key("data").BeginArray();
  for (const UnicodeString& item : problem.Data) json_.Text(WellFormed(item));
  json_.EndArray();
  json_.EndObject();
}

void SarifLog::WriteResult(std::int32_t index) {
  const TSweepError& problem = (*SweepErrors)[index];
  const ProblemKind* const kind = FindKind(problem.PluginID, problem.ErrorType);
  const std::string rule = RuleId(problem.PluginID, problem.ErrorType);
  const auto number = rules_.find(rule);
  json_.BeginObject();
  json_.Key("ruleId").Text(rule);
  if (number != rules_.end()) json_.Key("ruleIndex").Number(number->second);
  json_.Key("level").Text(LevelOf(kind == nullptr ? Weight::Note : kind->weight));
  const UnicodeString words = PlainText(problem.Description);
  Message("message", words.empty() ? problem.Caption : problem.Caption + u": " + words);
  WriteLocation(index);
  json_.Key("partialFingerprints").BeginObject();
  json_.Key(kFingerprint).Text(digests_[static_cast<std::size_t>(index)]);
  // The same entry of two users is two results.
  if (!OwnerOf(report_, index).empty()) {
    json_.Key("user/v1").Text(WellFormed(OwnerOf(report_, index)));
  }
  json_.EndObject();
  WriteSuppressions(problem);
  WriteProperties(index);
  json_.EndObject();
}

void SarifLog::Write() {
  json_.BeginObject();
  json_.Key("$schema").Text(kSchema);
  json_.Key("version").Text("2.1.0");
  json_.Key("runs").BeginArray();
  json_.BeginObject();
  WriteTool();
  json_.Key("language").Text(PackageLanguage() == TLanguage::German ? "de" : "en");
  WriteInvocation();
  WriteArtifacts();
  WriteTaxonomy();
  json_.Key("results").BeginArray();
  for (const std::int32_t index : report_.shown) {
    WriteResult(index);
    if (drain_) drain_(out_);
  }
  json_.EndArray();
  json_.Key("properties").BeginObject();
  TargetFacts target = report_.target;
  target.productName = WellFormed(target.productName);
  target.userName = WellFormed(target.userName);
  WriteTarget(json_.Key("target"), target);
  json_.EndObject();
  json_.EndObject();
  json_.EndArray();
  json_.EndObject();
}

}  // namespace

std::string SarifReport(const ScanReport& report, const Drain& drain) {
  std::string out;
  SarifLog(report, out, drain).Write();
  out += '\n';
  return out;
}

}  // namespace scrubwell::hosts
