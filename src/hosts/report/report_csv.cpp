#include "hosts/driver/problem_id.h"
#include "hosts/report/problem_kinds.h"
#include "hosts/report/problem_parts.h"
#include "hosts/report/report.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kHeader =
    "id,user,plugin,category,kind,kind_title,caption,short_description,description,view,key,value,"
    "file,missing,hidden,attack";

// Spreadsheets take a cell that begins with one of these for a formula, and what stands in a
// registry may be written by anybody.
constexpr UnicodeView kFormulaStarts = u"=+-@\t\r\n\uFF1D\uFF0B\uFF0D\uFF20";

// Every cell in quotation marks: then no separator of any locale breaks a row.
void AppendCell(std::string& out, UnicodeView text) {
  if (!out.empty() && out.back() != '\n') out += ',';
  out += '"';
  if (!text.empty() && kFormulaStarts.find(text.front()) != UnicodeView::npos) out += '\'';
  for (const char c : ToUtf8(Harmless(text, true))) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
}

UnicodeView CaptionOf(const UnicodeString& pluginID) {
  TRCPlugin* plugin = nullptr;
  return GetPluginByID(pluginID, plugin) ? UnicodeView(plugin->Caption) : UnicodeView();
}

void AppendRow(std::string& out, const std::string& id, UnicodeView owner,
               const TSweepError& problem) {
  const ProblemPlace place = PlaceOf(problem);
  const ProblemKind* const kind = FindKind(problem.PluginID, problem.ErrorType);
  AppendCell(out, FromUtf8(id));
  AppendCell(out, owner);
  AppendCell(out, problem.PluginID);
  AppendCell(out, CaptionOf(problem.PluginID));
  AppendCell(out, IntToStr(problem.ErrorType));
  AppendCell(out, kind == nullptr ? UnicodeString() : LoadText(kind->title));
  AppendCell(out, problem.Caption);
  AppendCell(out, problem.ShortDescription);
  AppendCell(out, PlainText(problem.Description));
  AppendCell(out, place.view);
  AppendCell(out, place.key);
  AppendCell(out, place.value);
  AppendCell(out, place.file);
  AppendCell(out, place.missing);
  AppendCell(out, problem.Visible ? u"no" : u"yes");
  AppendCell(out, kind == nullptr ? UnicodeString() : FromUtf8(kind->technique));
  out += kLineEnd;
}

}  // namespace

std::string CsvReport(const ScanReport& report, const Drain& drain) {
  const std::vector<std::string> ids = ProblemIds(*SweepErrors);
  std::string out(kHeader);
  out += kLineEnd;
  for (const std::int32_t index : report.shown) {
    AppendRow(out, ids[static_cast<std::size_t>(index)], OwnerOf(report, index),
              (*SweepErrors)[index]);
    if (drain) drain(out);
  }
  return out;
}

}  // namespace scrubwell::hosts
