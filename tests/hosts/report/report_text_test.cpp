#include <sstream>

#include "hosts/report/columns.h"
#include "hosts/report/report.h"
#include "report_world.h"

namespace scrubwell::hosts {
namespace {

using namespace std::chrono_literals;

TEST(TextReport, FitsTheTerminal) {
  ReportWorld world;
  const UnicodeString texts[] = {
      u"several words of ordinary length that have to be broken somewhere on the way",
      u"日本語 の 文字 は 二倍 の 幅 が あり ます ので 早く 行 が 終わり ます 日本語 の 文字",
      u"e\u0301 e\u0301 e\u0301 e\u0301 e\u0301 e\u0301 e\u0301 e\u0301 e\u0301 e\u0301 e\u0301",
  };
  for (const UnicodeString& text : texts) {
    world.Add(u"Fonts", 1, {u"missingfile:" + text}, text);
  }
  for (const std::size_t width : {30U, 60U, 80U, 100U}) {
    TextLook look;
    look.width = width;
    std::istringstream lines(TextReport(world.report, look));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(Columns(line), width) << line;
  }
}

TEST(TextReport, SaysWhatItWasAskedFor) {
  const std::tuple<const char*, void (*)(ScanReport&, TextLook&), const char*, bool> rows[] = {
      {"colours", [](ScanReport&, TextLook& look) { look.colours = true; }, "\033[1mFonts", true},
      {"count", [](ScanReport&, TextLook&) {}, "Fonts (30)", true},
      {"all", [](ScanReport&, TextLook&) {}, "... and", false},
      {"limit", [](ScanReport&, TextLook& look) { look.limit = 4; }, "... and 26 more", true},
      {"limit of one less", [](ScanReport&, TextLook& look) { look.limit = 29; }, "... and", false},
      {"no data", [](ScanReport&, TextLook&) {}, "missingfile:", false},
      {"data", [](ScanReport&, TextLook& look) { look.details = true; }, "missingfile: 7", true},
      {"overview", [](ScanReport&, TextLook&) {}, "  30  Fonts", true},
      {"summary", [](ScanReport&, TextLook&) {}, "\n31 problems found. None is hidden.\n", true},
      {"left out", [](ScanReport& r, TextLook&) { r.leftOut = 5; }, "5 more are not part", true},
      {"new", [](ScanReport& r, TextLook&) { r.compared = true, r.leftOut = r.knownBefore = 1; },
       "31 new problems found. 1 was in the earlier report already. None is hidden.\n", true},
      {"stopped", [](ScanReport& r, TextLook&) { r.outcome = RunOutcome::Stopped; }, "stopped",
       true},
      {"notes", [](ScanReport& r, TextLook&) { r.notes = {u"why"}; }, "Notes\n  why\n", true},
      {"time", [](ScanReport& r, TextLook&) { r.duration = 1449ms; }, "took 1.4 s.", true},
      {"long time", [](ScanReport& r, TextLook&) { r.duration = 200400ms; }, "3 min 20 s.", true},
      {"owner",
       [](ScanReport& r, TextLook&) {
         r.users = {{u"anna", {}}}, r.owners = {u"anna"};
       },
       "[anna]", true},
  };
  ReportWorld world;
  for (int i = 0; i < 30; ++i) {
    world.Add(u"Fonts", 1, {u"missingfile:" + UnicodeString(1, static_cast<char16_t>(u'0' + i))});
  }
  world.Add(u"Sounds", 1, {u"missingfile:x"});
  for (const auto& [name, change, part, there] : rows) {
    ScanReport report = world.report;
    TextLook look;
    change(report, look);
    const std::string text = TextReport(report, look);
    EXPECT_EQ(text.find(part) != std::string::npos, there) << name << '\n' << text;
  }
}

}  // namespace
}  // namespace scrubwell::hosts
