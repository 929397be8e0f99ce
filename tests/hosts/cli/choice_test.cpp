// Which problems are shown, why they are problems, and the registry at hand.
#include <set>

#include "hosts/cli/program_run.h"

namespace scrubwell::test {
namespace {

using Choice = ProgramRun;

TEST_F(Choice, ShowsWhatIsNewSinceAnEarlierReport) {
  const std::string scan = "scan --windows @/C ";
  json earlier = Scan();
  const std::size_t all = earlier["problems"].size();
  const json dropped = earlier["problems"][3];
  Put(folder_ / "whole.json", earlier.dump());
  earlier["problems"].erase(3);
  Put(folder_ / "earlier.json", earlier.dump());
  const json news = Answer(scan + "--since @/earlier.json", 1);
  EXPECT_EQ(news["problems"], json::array({dropped}));
  EXPECT_EQ(news["counts"]["known_before"], all - 1);
  const std::pair<std::string, int> rows[] = {
      {"--since @/whole.json", 0},
      {"--since @/whole.json --fail-on any", 1},
      {"--since @/earlier.json --fail-on none", 0},
      {"--since @/earlier.json --lang de", 1},
      {"--since @/earlier.json --kind Sounds:1", 0},
      {"--since @/whole.json --user all", 0},
  };
  for (const auto& [arguments, status] : rows)
    EXPECT_EQ(Run(scan + arguments).status, status) << arguments;

  // The earlier report knew only a part, and says so.
  ASSERT_EQ(Run(scan + "--filter aqspell --format json --output @/part.json").status, 1);
  const json part = Answer(scan + "--since @/part.json", 1);
  EXPECT_EQ(part["problems"].size(), all - 1);
  EXPECT_NE(part["notes"].dump().find("incomplete"), std::string::npos);
}

TEST_F(Choice, TellsTheUsersApart) {
  const json one = Scan();
  fs::copy(folder_ / "C/Users/anna", folder_ / "C/Users/berta", fs::copy_options::recursive);
  const json both = Answer("scan --windows @/C --user all", 1);
  EXPECT_EQ(both["users"].size(), 2U);
  // What is anna's alone is berta's as well now; all else is there once.
  std::multiset<std::string> annas, bertas, machine;
  for (const json& problem : both["problems"]) {
    const std::string user = problem["user"];
    (user == "anna" ? annas : user == "berta" ? bertas : machine).insert(problem["id"]);
    EXPECT_TRUE(!user.empty() || problem.dump().find("HKEY_CURRENT_USER") == std::string::npos);
  }
  EXPECT_FALSE(annas.empty());
  // Paths name the profile folder, so that only entries below the user's hive are the same.
  EXPECT_EQ(annas.size(), bertas.size());
  EXPECT_EQ(annas.size() + machine.size(), one["problems"].size());
  EXPECT_EQ(both["counts"]["real_sweep_errors"], both["problems"].size());
}

TEST_F(Choice, CleanTakesOnlyWhatIsChosen) {
  const std::string clean = "clean --dry-run --windows @/C ";
  const json report = Scan();
  const json plan = Answer(clean + "--all --filter brightcore", 0);
  EXPECT_EQ(plan["problems"].size(), 2U);
  for (const json& change : plan["changes"]) {
    EXPECT_NE(change["problem"], "") << "nothing but what the filter lets through";
  }
  EXPECT_EQ(Answer(clean + "--all --kind Fonts:1 --exclude Sounds", 0)["problems"].size(), 2U);
  const std::string id = IdOf(report, "quillsans", "Fonts");
  ExpectComplaint(Run(clean + "--filter brightcore --select " + id), 2,
                  "not part of the selection");
}

// Whether an entry of the list has all these members.
bool Holds(const json& list, const json& members) {
  return std::any_of(list.begin(), list.end(), [&](json entry) {
    const json whole = entry;
    entry.update(members);
    return entry == whole;
  });
}

TEST_F(Choice, ExplainsWithEvidence) {
  const json report = Scan();
  const std::string windows = R"(C:\Windows)", programs = R"(C:\Program Files)";
  const std::string fonts = windows + R"(\Fonts\quillsans.ttf)";
  // Plugin, a part of the problem's data, and what one of the lists holds.
  const std::tuple<std::string, std::string, std::string, json> rows[] = {
      {"SharedFiles", "aqspell.dll", "files", {{"redirected", true}, {"answer", "absent"}}},
      {"SharedFiles", "%ProgramFiles%", "variables", {{"name", "ProgramFiles"}, {"view", 32}}},
      {"SharedFiles",
       "%ProgramFiles%",
       "paths",
       {{"means",
         {programs + R"( (x86)\Brightpad\brightcore.dll)",
          programs + R"(\Brightpad\brightcore.dll)"}}}},
      {"Drivers",
       "aqdisk.vxd",
       "paths",
       {{"searched_in",
         {windows + R"(\System32)", windows + R"(\System)", windows,
          windows + R"(\System32\Wbem)"}}}},
      {"Fonts", "quillsans", "files", {{"path", fonts}, {"answer", "absent"}}},
      {"Autostart",
       "agent.exe",
       "registry",
       {{"asked", "values"}, {"view", 64}, {"value_count", 3}}},
      {"IniFiles", "clock.exe", "changes", {{"action", "write_file"}}},
      {"ODBC", "aqtables.dll", "registry", {{"name", "Driver"}, {"answer", "found"}}},
      {"IniFiles", "clock.exe", "sources", {{"kind", "ini"}, {"answer", "found"}}},
  };
  for (const auto& [plugin, part, list, entry] : rows) {
    SCOPED_TRACE(plugin + ' ' + part);
    const std::string id = IdOf(report, part, plugin);
    const json why = Answer("explain " + id + " --windows @/C --plugins " + plugin, 0);
    EXPECT_EQ(why["problem"]["id"], id);
    EXPECT_TRUE(why["complete"]);
    EXPECT_FALSE(why["changes"].empty());
    EXPECT_TRUE(Holds(why[list], entry)) << why[list].dump(1);
    // Nothing stands twice, nor is what the program asks for itself among it.
    const json& answers = why["registry"];
    EXPECT_EQ(std::set<json>(answers.begin(), answers.end()).size(), answers.size());
    EXPECT_EQ(answers.dump().find("IgnoredProblems"), std::string::npos);
    const std::size_t files = why["files"].size();
    EXPECT_TRUE(plugin != "Fonts" || files == 2) << "those of other fonts as well: " << files;
  }
  const Result text = Run("explain " + IdOf(report, "quillsans", "Fonts") + " --windows @/C");
  EXPECT_NE(text.out.find("absent   " + fonts), std::string::npos) << text.out;
  EXPECT_EQ(Scan(), report) << "explaining changes nothing";
  ExpectComplaint(Run("explain 000000000000 --windows @/C"), 2, "000000000000");
}

TEST_F(Choice, ShowsAndSearchesTheRegistry) {
  const std::string run = R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Run)";
  // The part is of the output, or of the complaint above 0.
  const std::tuple<std::string, int, std::string> rows[] = {
      {"'HKLM\\" + run + "'", 0, R"("Stick Tools"  REG_SZ  "E:\Tools\sticktray.exe")"},
      {"'hkey_local_machine\\" + run + "\\' --view 32", 0, "quillaudio.ocx"},
      {"'regjump:HK:HKEY_LOCAL_MACHINE\\" + run + "'", 0, "(64-bit)"},
      {"'Computer\\HKEY_LOCAL_MACHINE\\" + run + "'", 0, "Values (3)"},
      {"find STICKTRAY", 0, run + R"(  "Stick Tools")"},
      {"find aqdisk --key HKLM --view 32 --format json", 0, R"("found_in":"key")"},
      {"'HKLM\\Nowhere'", 1, "no such key"},
      {"find x --key 'HKLM\\Nowhere'", 1, "no such key"},
      {"HKXY", 2, "HKXY: not a key"},
      {"find", 2, "TEXT"},
      {"HKLM --key HKLM", 2, "--key"},
      {"HKLM --view 16", 2, "16"},
  };
  for (const auto& [arguments, status, part] : rows) {
    SCOPED_TRACE(arguments);
    const Result result = Run("reg " + arguments + " --windows @/C");
    EXPECT_EQ(result.status, status) << result.err;
    const std::string& said = status == 0 ? result.out : result.err;
    EXPECT_NE(said.find(part), std::string::npos) << result.out << result.err;
  }
  const json key = Answer("reg 'HKLM\\" + run + "' --windows @/C", 0);
  EXPECT_EQ(key["values"].at(2)["text"], R"(E:\Tools\sticktray.exe)");
  EXPECT_EQ(key["values"][2]["bytes"], 46);
}

}  // namespace
}  // namespace scrubwell::test
