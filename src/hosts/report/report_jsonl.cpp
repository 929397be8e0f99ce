#include "hosts/driver/problem_id.h"
#include "hosts/report/report.h"

namespace scrubwell::hosts {

std::string JsonLinesReport(const ScanReport& report, const Drain& drain) {
  // The target is the same in every line.
  std::string target;
  JsonWriter targetWriter(target, JsonLayout::OneLine);
  WriteTarget(targetWriter, report.target);
  const std::vector<std::string> ids = ProblemIds(*SweepErrors);
  std::string out;
  for (const std::int32_t index : report.shown) {
    JsonWriter json(out, JsonLayout::OneLine);
    json.BeginObject();
    json.Key("scrubwell").Text(SCRUBWELL_VERSION);
    json.Key("target").Raw(target);
    json.Key("status").Text(report.outcome == RunOutcome::Complete ? "complete" : "stopped");
    WriteProblemMembers(json, report, index, ids[static_cast<std::size_t>(index)]);
    json.EndObject();
    out += '\n';
    if (drain) drain(out);
  }
  return out;
}

}  // namespace scrubwell::hosts
