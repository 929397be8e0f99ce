#include "hosts/report/previous_scan.h"

#include <gtest/gtest.h>

#include <map>

#include "hosts/driver/problem_id.h"
#include "hosts/report/columns.h"

namespace scrubwell::hosts {
namespace {

TSweepError Problem() {
  TSweepError problem;
  problem.PluginID = u"Fonts";
  problem.ErrorType = 1;
  problem.Data = {u"missingfile:C:\\a.ttf"};
  return problem;
}

std::string Report(const std::string& problems, const std::string& status = "complete") {
  return R"({"scrubwell": "1", "status": ")" + status + R"(", "problems": [)" + problems + "]}";
}

TEST(PreviousScan, RefusesWhatIsNoReport) {
  const std::string rows[] = {"",
                              "[]",
                              "{}",
                              "\"problems\"",
                              R"({"problems": []})",
                              R"({"scrubwell": "1", "problems": {}})",
                              R"({"scrubwell": "1", "x": {"problems": []}})",
                              Report("").substr(0, 30),
                              Report("") + "x",
                              Report(R"({"id": "\ud8)"),
                              Report("{\"id\": \"\xFF\xFE\"}"),
                              Report(R"({"kind": 1e999999})"),
                              Report(std::string(1000000, '[')),
                              Report(std::string("{\"id\": \"\0\"}", 11))};
  for (const std::string& row : rows) {
    PreviousScan scan;
    EXPECT_EQ(scan.Read(row), PreviousFailure::NoReport) << row.substr(0, 60);
    EXPECT_EQ(scan.Count(), 0U);
    EXPECT_FALSE(scan.Knows(Problem(), {}));
  }
}

TEST(PreviousScan, KnowsAProblemByItsId) {
  const std::string id = ProblemDigest(Problem()).substr(0, 12);
  const std::string of = R"("plugin": "Fonts", "kind": 1)";
  const std::tuple<std::string, UnicodeString, bool> rows[] = {
      {R"({"id": ")" + id + R"(", )" + of + "}", u"", true},
      {"{" + of + R"(, "data": ["id", {"id": 1}], "id": ")" + id + R"("})", u"", true},
      {R"({"id": ")" + id + R"(abcd", )" + of + "}", u"", true},
      {R"({"id": ")" + id + R"(", )" + of + R"(, "data": ["\ud800", "\\ud800", "\ud83d\ude00"]})",
       u"", true},
      {R"({"id": ")" + id.substr(0, 11) + R"(", )" + of + "}", u"", false},
      {R"({"id": "000000000000", )" + of + "}", u"", false},
      {R"({"id": ")" + id + R"(", "plugin": "Fonts", "kind": 2})", u"", false},
      {R"({"id": ")" + id + R"(", "plugin": "Sounds", "kind": 1})", u"", false},
      {R"({"id": 5, "plugin": [], "kind": "1", "user": null})", u"", false},
      {R"({"x": {"id": ")" + id + R"(", )" + of + "}}", u"", false},
      {R"({"id": ")" + id + R"(", )" + of + R"(, "user": "anna"})", u"anna", true},
      {R"({"id": ")" + id + R"(", )" + of + R"(, "user": "anna"})", u"berta", false},
      {R"({"id": ")" + id + R"(", )" + of + R"(, "user": ""})", u"berta", true},
  };
  for (const auto& [problem, owner, known] : rows) {
    PreviousScan scan;
    ASSERT_EQ(scan.Read(Report(problem)), PreviousFailure::None) << problem;
    EXPECT_EQ(scan.Count(), 1U);
    EXPECT_EQ(scan.Knows(Problem(), owner), known) << problem;
  }
}

TEST(PreviousScan, SaysWhetherTheReportIsWhole) {
  for (const auto& [report, complete] : std::map<std::string, bool>{
           {Report(""), true},
           {Report("", "stopped"), false},
           {R"({"scrubwell": "", "problems": [], "counts": {"left_out": 2}})", false}}) {
    PreviousScan scan;
    EXPECT_EQ(scan.Read(report), PreviousFailure::None);
    EXPECT_EQ(scan.IsComplete(), complete) << report;
  }
}

TEST(Columns, MeasuresAndCuts) {
  const std::tuple<std::string, std::size_t, std::string> rows[] = {
      {"", 0, ""},
      {"abcd", 4, "abc"},
      {"Größe", 5, "Grö"},
      {"日本語", 6, "日"},
      {"ｆｕｌｌ", 8, "ｆ"},
      {"한국", 4, "한"},
      {"e\u0301a\u0300bc", 4, "e\u0301a\u0300b"},
      {"\U0001F600x", 3, "\U0001F600x"},
      {"\u200Bab", 2, "\u200Bab"},
      {"a\xFF\xC3", 3, "a\xFF\xC3"},
      {"\xE6\x97", 2, "\xE6\x97"},
      {"\xF8\x88\x80\x80", 4, "\xF8\x88\x80"},
  };
  for (const auto& [text, columns, firstThree] : rows) {
    EXPECT_EQ(Columns(text), columns) << text;
    EXPECT_EQ(FirstColumns(text, 3), firstThree) << text;
  }
}

}  // namespace
}  // namespace scrubwell::hosts
