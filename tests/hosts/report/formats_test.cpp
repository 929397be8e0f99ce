#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "hosts/driver/problem_id.h"
#include "hosts/report/hive_places.h"
#include "hosts/report/problem_kinds.h"
#include "hosts/report/problem_parts.h"
#include "markup.h"
#include "registry/Stringhelper.h"
#include "report_world.h"

namespace scrubwell::hosts {
namespace {

using nlohmann::json;
using namespace std::string_view_literals;

// What a registry may hold to harm whoever reads the report.
const UnicodeString kHostile[] = {
    u"plain Grö\u00DFe \U0001F600",
    u"<script>alert(1)</script>",
    u"\"><img src=x onerror=alert(1)> ' & &amp;",
    u"<a href=\"regjump:64:HKLM\\X\">HKLM\\Y</a></details></main>",
    u"=cmd|'/c calc'!A0",
    u"+1",
    u"-1",
    u"@SUM(1)",
    u"\t=1",
    u"\r=1\n\",\";\"",
    u"\uFF1D1",
    UnicodeString(u"a\0b", 3),
    UnicodeString{u'a', 0xD83D, u'b', 0xDE00},
    u"exe\u202Egpj \u2066x\u2069 \u200F\u061C\uFEFF",
    u"\u001b[2J\u0085\u2028]]>--><!--",
};

// Each as text, key, value and file, every third one hidden.
void AddHostile(ReportWorld& world) {
  for (const UnicodeString& text : kHostile) {
    const UnicodeString link = u"<a href=\"regjump:64:" + text + u"\">" + text + u"</a>";
    world.Add(u"SharedFiles", 1,
              {u"existingkey:64:HKEY_LOCAL_MACHINE\\Software\\" + text, u"existingvalue:" + text,
               u"missingfile:" + text, text},
              text + link);
    TSweepError& problem = (*SweepErrors)[world.report.shown.back()];
    problem.Visible = world.report.shown.size() % 3 != 0;
    world.report.hidden += !problem.Visible;
  }
  world.Add(u"Nowhere", 7, {});
  world.report.notes = {kHostile, kHostile + std::size(kHostile)};
  world.report.target.productName = kHostile[1];
  world.report.target.folder = "/mnt/<b>";
}

std::vector<std::vector<std::string>> ParseCsv(const std::string& text) {
  std::vector<std::vector<std::string>> rows(1, std::vector<std::string>(1));
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string& cell = rows.back().back();
    if (quoted && text[i] == '"' && text[i + 1] == '"') {
      cell += text[++i];
    } else if (text[i] == '"') {
      quoted = !quoted;
    } else if (!quoted && text[i] == ',') {
      rows.back().emplace_back();
    } else if (!quoted && text[i] == '\r') {
      EXPECT_EQ(text[++i], '\n');
      rows.emplace_back(1);
    } else {
      cell += text[i];
    }
  }
  EXPECT_FALSE(quoted);
  EXPECT_EQ(rows.back(), std::vector<std::string>(1));
  rows.pop_back();
  return rows;
}

// The library takes no lone surrogates; reports that keep them are read without.
json ParseLossy(std::string text) {
  for (const std::string_view lone : {"\\ud83d", "\\ude00"}) {
    for (auto at = text.find(lone); at != std::string::npos; at = text.find(lone)) {
      text.replace(at, lone.size(), "\\ufffd");
    }
  }
  return json::parse(text);
}

TEST(CsvReport, ReadsBackAndHoldsNoFormula) {
  ReportWorld world;
  AddHostile(world);
  const auto rows = ParseCsv(CsvReport(world.report));
  ASSERT_EQ(rows.size(), world.report.shown.size() + 1);
  const std::vector<std::string> ids = ProblemIds(*SweepErrors);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const auto& row = rows[i];
    ASSERT_EQ(row.size(), rows[0].size());
    EXPECT_EQ(row[0], ids[i - 1]);
    const TSweepError& problem = (*SweepErrors)[static_cast<std::int32_t>(i - 1)];
    EXPECT_EQ(row[14], problem.Visible ? "no" : "yes");
    for (const std::string& cell : row) {
      EXPECT_TRUE(cell.empty() ||
                  std::string_view("=+-@\t\r\n").find(cell[0]) == std::string::npos);
      EXPECT_FALSE(cell.starts_with("\uFF1D"));
      EXPECT_EQ(cell.find_first_of(std::string_view("\0\x1b", 2)), std::string::npos);
      EXPECT_EQ(cell.find("\u202E"), std::string::npos);
    }
  }
  EXPECT_EQ(rows[1][6].substr(0, 5), "plain");
  EXPECT_EQ(rows[5][11], "'=cmd|'/c calc'!A0");
  EXPECT_EQ(rows[10][13], "'\r=1\n\",\";\"");
  EXPECT_EQ(rows[12][13], "a\uFFFDb");
}

TEST(JsonLinesReport, EachLineIsTheReportsProblemAndTheTarget) {
  ReportWorld world;
  AddHostile(world);
  const json whole = ParseLossy(JsonReport(world.report));
  std::istringstream lines(JsonLinesReport(world.report));
  std::string line;
  std::size_t number = 0;
  while (std::getline(lines, line)) {
    json one = ParseLossy(line);
    EXPECT_EQ(one["target"], whole["target"]);
    for (const char* name : {"target", "scrubwell", "status"}) EXPECT_EQ(one.erase(name), 1U);
    ASSERT_LT(number, whole["problems"].size());
    EXPECT_EQ(one, whole["problems"][number++]);
  }
  EXPECT_EQ(number, world.report.shown.size());
}

TEST(HtmlReport, HostileTextStaysText) {
  ReportWorld world;
  AddHostile(world);
  const std::string page = HtmlReport(world.report);
  const test::Markup markup(page);
  EXPECT_EQ(markup.error, "");
  const int bold = static_cast<int>(world.report.shown.size()) + 3;
  auto elements = markup.elements;
  for (const auto& [name, count] : std::map<std::string, int>{
           {"script", 1}, {"style", 1}, {"img", 0}, {"link", 0}, {"base", 0}, {"b", bold}}) {
    EXPECT_EQ(elements[name], count) << name;
  }
  std::size_t problems = 0;
  for (const std::string& attribute : markup.attributes) {
    problems += attribute == "class=\"p\"";
    EXPECT_FALSE(attribute.starts_with("on") || attribute.starts_with("style=")) << attribute;
    const bool isLink = attribute.starts_with("href=") || attribute.starts_with("src=");
    EXPECT_TRUE(!isLink || attribute.starts_with("href=\"#")) << attribute;
  }
  EXPECT_EQ(problems, world.report.shown.size());
  for (const std::string_view mark : {"\u202E"sv, "\u2066"sv, "\u200F"sv, "\uFEFF"sv, "\u0085"sv,
                                      "\x1b"sv, "\xED\xA0"sv, "\0"sv}) {
    EXPECT_EQ(page.find(mark), std::string::npos);
  }
}

TEST(HtmlReport, NamesUsersAndKeepsAnchorsApart) {
  ReportWorld world;
  for (int i = 0; i < 2; ++i) world.Add(u"Sounds", 1, {u"existingkey:HKEY_CURRENT_USER\\X"});
  world.report.users = {{u"anna", u"S-1-1"}, {u"ben<", u"S-1-2"}};
  world.report.owners = {u"anna", u"ben<"};
  const std::string page = HtmlReport(world.report);
  EXPECT_NE(page.find("<span class=\"tag\">ben&lt;</span>"), std::string::npos);
  std::map<std::string, int> anchors;
  for (const std::string& attribute : test::Markup(page).attributes) {
    if (!attribute.starts_with("id=")) continue;
    EXPECT_EQ(anchors[attribute]++, 0) << attribute;
  }
}

TEST(SarifReport, IsConsistentInItself) {
  ReportWorld world;
  AddHostile(world);
  world.report.target.hives = {{u"HKLM\\SOFTWARE", "Windows/System32/config/SOFTWARE"}};
  world.report.outcome = RunOutcome::Stopped;
  const json log = json::parse(SarifReport(world.report));
  EXPECT_EQ(log["version"], "2.1.0");
  const json& run = log["runs"].at(0);
  EXPECT_FALSE(run["invocations"][0]["executionSuccessful"]);
  EXPECT_EQ(run["invocations"][0]["toolExecutionNotifications"].size(),
            world.report.notes.size() + 1);
  EXPECT_EQ(run["originalUriBaseIds"]["WINDOWS_VOLUME"]["uri"], "file:///mnt/%3Cb%3E/");
  const json& rules = run["tool"]["driver"]["rules"];
  const json& taxa = run["taxonomies"][0]["taxa"];
  for (const json& rule : rules) {
    for (const json& link : rule.value("relationships", json::array())) {
      EXPECT_EQ(taxa.at(link["target"]["index"].get<std::size_t>())["id"], link["target"]["id"]);
    }
  }
  ASSERT_EQ(run["results"].size(), world.report.shown.size());
  for (std::size_t i = 0; i < run["results"].size(); ++i) {
    const json& result = run["results"][i];
    const TSweepError& problem = (*SweepErrors)[static_cast<std::int32_t>(i)];
    EXPECT_EQ(result["partialFingerprints"]["scrubwellProblem/v1"], ProblemDigest(problem));
    EXPECT_EQ(result["suppressions"].empty(), problem.Visible);
    EXPECT_EQ(result["properties"]["data"].size(), problem.Data.size());
    if (problem.Data.empty()) continue;
    EXPECT_EQ(rules.at(result["ruleIndex"].get<std::size_t>())["id"], result["ruleId"]);
    const json& place = result["locations"].at(0);
    const json& artifact = place["physicalLocation"]["artifactLocation"];
    EXPECT_EQ(run["artifacts"].at(artifact["index"].get<std::size_t>())["location"], artifact);
    EXPECT_EQ(artifact["uri"], "Windows/System32/config/SOFTWARE");
  }
  EXPECT_FALSE(run["results"].back().contains("ruleIndex"));
}

TEST(SarifReport, FindsTheFileOfEveryEntry) {
  ReportWorld world("[HKEY_USERS\\S-1-5-21-1-2-3-1001_Classes\\.own]\n@=\"x\"\n");
  const std::tuple<UnicodeView, std::int32_t, UnicodeString, UnicodeView, std::string> rows[] = {
      {u"Fonts", 1, u"existingkey:64:HKEY_LOCAL_MACHINE\\SOFTWARE\\X", u"", "sw"},
      {u"ODBC", 2, u"existingkey:HKLM\\Software\\ODBC", u"", "sw"},
      {u"Drivers", 1, u"existingkey:HKEY_LOCAL_MACHINE\\system\\X", u"", "sys"},
      {u"Sounds", 1, u"existingkey:HKEY_CURRENT_USER\\AppEvents", u"", ""},
      {u"FileTypes", 8, u"existingkey:32:HKCU\\Software\\Classes\\.x", u"ben", "ben/classes"},
      {u"FileTypes", 8, u"existingkey:32:HKCU\\Software\\ClassesOther", u"anna", "anna/ntuser"},
      {u"FileTypes", 8, u"existingkey:32:HKEY_CLASSES_ROOT\\.x", u"ben", "ben/classes"},
      {u"FileTypes", 8, u"existingkey:32:HKEY_CLASSES_ROOT\\.x", u"", "sw"},
      {u"FileTypes", 8, u"existingkey:32:HKEY_USERS\\S-1-1\\X", u"", "anna/ntuser"},
      {u"FileTypes", 8, u"existingkey:32:HKEY_LOCAL_MACHINE\\HARDWARE\\X", u"", ""},
      {u"FileTypes", 8, u"existingkey:", u"", ""},
      {u"Autostart", 2, u"displayname:a ü", u"", "WINNT/Tasks/a ü.job"},
      {u"IniFiles", 1, u"section:windows", u"", "WINNT/win.ini"},
      {u"IniFiles", 6, u"section:boot", u"", "WINNT/system.ini"},
      {u"History", 10, u"existingfile:c:\\Users\\a\\b.lnk", u"", "Users/a/b.lnk"},
      {u"History", 10, u"existingfile:E:\\b.lnk", u"", ""},
  };
  world.report.users = {{u"anna", u"S-1-1"}, {u"ben", u"S-1-2"}};
  TargetFacts& target = world.report.target;
  target.systemRoot = u"C:\\WINNT";
  target.hives = {{u"HKLM\\SOFTWARE", "sw"},
                  {u"HKLM\\SYSTEM", "sys"},
                  {u"HKU\\S-1-1", "anna/ntuser"},
                  {u"HKU\\S-1-1_Classes", "anna/classes"},
                  {u"HKU\\S-1-2_Classes", "ben/classes"}};
  for (const auto& [plugin, kind, item, owner, file] : rows) {
    world.Add(plugin, kind, {item});
    world.report.owners.emplace_back(owner);
    EXPECT_EQ(FileOfProblem(world.report, world.report.shown.back()), file) << ToUtf8(item);
  }
  // With one user alone the registry tells whose a class is.
  world.report.users.clear();
  target.userSid = u"S-1-1";
  for (const auto& [key, file] :
       {std::pair<UnicodeView, std::string>{u".own", "anna/classes"}, {u".other", "sw"}}) {
    world.Add(u"FileTypes", 8, {u"existingkey:32:HKEY_CLASSES_ROOT\\" + UnicodeString(key)});
    EXPECT_EQ(FileOfProblem(world.report, world.report.shown.back()), file);
  }
}

TEST(ProblemParts, TakesOnlyRealLinksOut) {
  const std::pair<UnicodeString, std::vector<std::string>> rows[] = {
      {u"a \"<a href=\"regjump:64:HKLM\\X\">HKLM\\X</a>\" b", {"a \"", "[HKLM\\X]", "\" b"}},
      {u"<a href=\"regjump:HK:K\">K</a>", {"[K]"}},
      {u"<a href=\"regjump:64:A\">B</a>", {"<a href=\"regjump:64:A\">B</a>"}},
      {u"<a href=\"regjump:64:A\">B\">A\">B</a>", {"[A\">B]"}},
      {u"<a href=\"regjump:64:", {"<a href=\"regjump:64:"}},
      {u"<a href=\"http:x\">x</a>", {"<a href=\"http:x\">x</a>"}},
  };
  for (const auto& [text, expected] : rows) {
    std::vector<std::string> parts;
    for (const TextPart& part : SplitLinks(text)) {
      parts.push_back(part.isKey ? '[' + ToUtf8(part.text) + ']' : ToUtf8(part.text));
    }
    EXPECT_EQ(parts, expected) << ToUtf8(text);
  }
}

TEST(Formats, ArePutTogetherFromTheirPieces) {
  ReportWorld world;
  AddHostile(world);
  const ScanReport& report = world.report;
  const TextLook look;
  std::string pieces;
  std::size_t count = 0;
  const Drain drain = [&](std::string& text) {
    pieces += text;
    text.clear();
    ++count;
  };
  const auto check = [&](const std::string& whole, const std::string& rest) {
    EXPECT_EQ(pieces + rest, whole);
    EXPECT_GE(count, report.shown.size() - 1);  // one category is no plugin's
    pieces.clear();
    count = 0;
  };
  check(TextReport(report, look), TextReport(report, look, drain));
  check(JsonReport(report), JsonReport(report, drain));
  check(JsonLinesReport(report), JsonLinesReport(report, drain));
  check(CsvReport(report), CsvReport(report, drain));
  check(HtmlReport(report), HtmlReport(report, drain));
  check(SarifReport(report), SarifReport(report, drain));
}

}  // namespace
}  // namespace scrubwell::hosts
