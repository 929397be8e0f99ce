#include <map>
#include <set>

#include "hosts/cli/program_run.h"

namespace scrubwell::test {
namespace {

using namespace std::string_literals;

const std::string Where = " --windows @/C --backup @/backup ";

class Clean : public ProgramRun {
 protected:
  // Every file of the installation with its content.
  [[nodiscard]] std::map<std::string, std::string> Disk() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder_ / "C")) {
      if (entry.is_regular_file()) files[entry.path().string()] = Content(entry.path());
    }
    return files;
  }
  [[nodiscard]] std::set<std::string> Found(const std::string& more = "") const {
    std::set<std::string> ids;
    const json report = Scan(more);
    for (const json& problem : report.at("problems")) {
      if (problem.at("visible").get<bool>()) ids.insert(problem.at("id").get<std::string>());
    }
    return ids;
  }
  [[nodiscard]] std::string Id(const std::string& part) const { return IdOf(Scan(), part); }
};

TEST_F(Clean, PlansCleansAndPutsBack) {
  const std::string shared = "--plugins SharedFiles ";
  const auto disk = Disk();
  const std::set<std::string> before = Found();
  const std::set<std::string> ours = Found(shared);
  const json plan = Answer("clean --all --dry-run " + shared + Where, 0);
  EXPECT_TRUE(Disk() == disk && !fs::exists(folder_ / "backup"));
  EXPECT_EQ(plan["session"], "");
  EXPECT_EQ(plan["changes"].size(), 5U);
  for (const json& change : plan["changes"]) {
    EXPECT_EQ(change["action"], "delete_value");
    EXPECT_TRUE(ours.contains(change["problem"]));
  }

  json done = Answer("clean --all --yes " + shared + Where, 0);
  EXPECT_EQ(done["changes"], plan["changes"]) << "what was planned is what was done";
  EXPECT_EQ(done["problems"], plan["problems"]);
  for (const json& problem : done["problems"]) EXPECT_EQ(problem["outcome"], "fixed");
  EXPECT_EQ(Found(shared), std::set<std::string>());
  EXPECT_EQ(Found().size(), before.size() - ours.size());

  // First one problem's, then what is left.
  const std::string session = done["session"];
  const std::string one = *ours.begin();
  EXPECT_EQ(Answer("undo --backup @/backup --item " + one, 0)["changes"].size(), 1U);
  EXPECT_EQ(Found(shared), std::set<std::string>{one});
  EXPECT_EQ(Answer("undo " + session + Where, 0)["changes"].size(), 5U);
  EXPECT_EQ(Found(), before);
  const json listed = Answer("undo --list " + session + " --backup @/backup", 0);
  EXPECT_EQ(listed["session"]["undone"], listed["changes"].size());
  EXPECT_EQ(Answer("undo --list --backup @/backup", 0)["sessions"].size(), 3U);
}

TEST_F(Clean, CleansUntilNothingIsLeftAndSaysWhatIs) {
  const std::set<std::string> found = Found();
  const json once = Answer("clean --all --dry-run" + Where, 1);
  EXPECT_EQ(once["rounds"], 1);
  EXPECT_EQ(once["problems"].size(), found.size());
  EXPECT_TRUE(once["should_research"].get<bool>());
  bool parents = false;
  for (const json& change : once["changes"]) {
    parents |= change["emptied"].get<bool>();
    // What is written is shown; of files, those of settings.
    const bool ini =
        change["action"] == "write_file" && change["place"].get<std::string>().ends_with(".ini");
    EXPECT_EQ(change.contains("after"), change["action"] == "set_value" || ini) << change;
    EXPECT_TRUE(!ini || change.value("before", json()).size() == 1) << change;
  }
  EXPECT_TRUE(parents);

  const json done = Answer("clean --all --yes --until-clean" + Where, 1);
  EXPECT_GT(done["rounds"], 1);
  EXPECT_FALSE(done["should_research"].get<bool>());
  // Which class could replace another one is not for a cleaner to say.
  json left;
  for (const json& problem : done["problems"]) {
    if (problem["outcome"] != "fixed" && problem["outcome"] != "gone") left.push_back(problem);
  }
  ASSERT_EQ(left.size(), 1U) << left;
  EXPECT_EQ(left[0]["plugin"], "ActiveXCOM");
  EXPECT_EQ(left[0]["kind"], 3);
  EXPECT_EQ(done["counts"]["left"], 1);
  EXPECT_EQ(Found(), std::set<std::string>{left[0]["id"]}) << "a new scan finds what was left";
  EXPECT_EQ(Run("undo" + Where).status, 0);
  EXPECT_EQ(Found(), found) << "and undo brings all back";
}

TEST_F(Clean, PrintsHowItIsPutBackAndKeepsNoMoreThanIsWanted) {
  const std::set<std::string> before = Found();
  const std::string kept = " --backup \"@/it's kept\" ";
  for (int i = 0; i < 2; ++i) {
    const Result done = Run("clean --all --yes --plugins SharedFiles,IniFiles @/C" + kept);
    EXPECT_NE(done.out.find("+ drivers=mmsystem.dll\n"), std::string::npos) << done.out;
    const std::size_t at = done.out.find("scrubwell undo ");
    ASSERT_NE(at, std::string::npos) << done.out;
    const Result undone =
        Shell("cd / && " SCRUBWELL_PROGRAM + done.out.substr(at + 9, done.out.size() - at - 10));
    EXPECT_EQ(undone.status, 0) << undone.err;
    EXPECT_EQ(Found(), before);
  }
  const json sessions = Answer("sessions list" + kept, 0)["sessions"];
  ASSERT_EQ(sessions.size(), 4U);
  EXPECT_GT(sessions[0]["bytes"], 1000);
  // One that waits for recover stays, however old it is.
  fs::remove(fs::path(sessions[0]["folder"].get<std::string>()) / "carried-out");
  const std::pair<const char*, std::size_t> rows[] = {{"--keep 0 --older-than 1", 0},
                                                      {"--keep 9", 0},
                                                      {"--keep 0 --dry-run", 3},
                                                      {"--keep 3", 0},
                                                      {"--keep 1 --older-than 0", 2}};
  for (const auto& [limits, removed] : rows) {
    const json answer = Answer(std::string("sessions prune --yes ") + limits + kept, 0);
    EXPECT_EQ(answer["removed"].size(), removed) << limits;
  }
  const json left = Answer("undo --list" + kept, 0)["sessions"];
  EXPECT_EQ(left, Answer("sessions list" + kept, 0)["sessions"]);
}

TEST_F(Clean, WrongUseChangesNothing) {
  const std::string spell = Id("aqspell.dll");
  const std::string hidden = Id("aqhyph.dll");
  ASSERT_EQ(Run("ignore add " + hidden + Where).status, 0);
  ASSERT_EQ(Run("clean --yes --select " + Id("brightcore.dll") + Where).status, 0);
  Put(folder_ / "file", "");
  const std::string clean = "clean --yes --windows @/C --select " + spell + " --backup @/backup ";
  const std::tuple<std::string, int, std::string> rows[] = {
      {"clean --yes" + Where, 2, "--all"},
      {"clean --yes --all --select " + spell + Where, 2, "--all"},
      {"clean --all" + Where, 2, "--yes"},
      {"clean --yes --select " + spell + ",0123456789ab" + Where, 2, "0123456789ab"},
      {"clean --yes --select " + hidden + Where, 2, "hidden"},
      {clean + "--plugins Fonts", 2, spell},
      {clean + "--output @/none/x", 2, "/none/x"},
      {"clean --yes --all --user anna @/C --backup @/file", 2, "/file"},
      {"clean --yes --all --windows @/none", 3, "/none"},
      {"undo nosuch" + Where, 2, "nosuch"},
      {"undo --item 999" + Where, 2, "999"},
      {"undo --export @/none/x.reg" + Where, 2, "/none/x.reg"},
      {"undo --windows @/none --backup @/backup", 3, "/none"},
      {"undo --backup @/none", 2, ""},
      {"recover", 2, "--windows"},
      {"ignore" + Where, 2, "ACTION"},
      {"ignore wash" + Where, 2, "wash"},
      {"ignore add" + Where, 2, "ID"},
      {"ignore remove 0123456789ab" + Where, 2, "0123456789ab"},
      {"ignore remove --machine " + hidden + Where, 2, hidden},
      {"ignore list x --windows @/C", 2, "x"},
  };
  const auto disk = Disk();
  for (const auto& [arguments, status, part] : rows) {
    SCOPED_TRACE(arguments);
    ExpectComplaint(Run(arguments), status, part);
    EXPECT_TRUE(Disk() == disk);
  }
}

TEST_F(Clean, IgnoresForGood) {
  const std::string mine = Id("aqspell.dll");
  const std::string all = Id("aqhyph.dll");
  const std::size_t found = Found().size();
  EXPECT_EQ(Run("ignore add " + mine + " --reason 'kept: 100% = mine'" + Where).status, 0);
  EXPECT_EQ(Run("ignore add " + all + " --machine --plugins SharedFiles" + Where).status, 0);
  EXPECT_EQ(Found().size(), found - 2);

  const std::string scan = "scan --plugins SharedFiles --windows @/C ";
  const std::tuple<std::string, std::string, bool> rows[] = {
      {scan, "2 more are hidden", true},
      {scan + "--all", "(hidden)", true},
      {"ignore list --windows @/C", "kept: 100% = mine", true},
      {"ignore list --windows @/C", mine + "  SharedFiles", true},
      {"ignore list --machine --windows @/C", mine, false},
      {"clean --all --dry-run" + Where, mine, false},
  };
  for (const auto& [arguments, part, isThere] : rows) {
    const Result result = Run(arguments);
    EXPECT_EQ(result.out.find(part) != std::string::npos, isThere)
        << arguments << part << result.out << result.err;
  }
  const json list = Answer("ignore list --windows @/C", 0)["ignored"];
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0]["id"], mine);
  EXPECT_EQ(list[0]["reason"], "kept: 100% = mine");
  EXPECT_TRUE(!list[0]["machine"] && list[1]["machine"]);
  // A hidden problem is explained too, but nothing would become of it.
  const json why = Answer("explain " + mine + " --windows @/C", 0);
  EXPECT_TRUE(!why["problem"]["visible"] && why["complete"] && why["changes"].empty());
  EXPECT_EQ(Answer("recover --windows @/C", 0)["outcome"], "nothing_to_do");
  EXPECT_EQ(Run("ignore remove " + mine + Where).status, 0);
  EXPECT_EQ(Run("ignore remove --machine " + all + Where).status, 0);
  EXPECT_EQ(Found().size(), found);
  EXPECT_NE(Run(scan).out.find("None is hidden"), std::string::npos);
  // Taking the removal back hides it again.
  EXPECT_EQ(Run("undo" + Where).status, 0);
  EXPECT_EQ(Found().size(), found - 1);
}

TEST_F(Clean, SessionsMustFit) {
  const json done = Answer("clean --all --yes --plugins SharedFiles" + Where, 0);
  const std::string session = done["session"];
  const auto disk = Disk();
  // Another installation: the same sample with a number of its own.
  ASSERT_EQ(Shell("cp -r " SCRUBWELL_SOURCE_DIR "/samples @/samples && "
                  "find @/samples/registry -type f -exec sed -i "
                  "'s/^\"ProductName\"=.*/&\\n\"ProductId\"=\"other\"/' {} + && " SCRUBWELL_MKSAMPLE
                  " @/samples @/other")
                .status,
            0);
  ExpectComplaint(Run("undo --windows @/other/C --backup @/backup"), 2, "no clean of this");
  ExpectComplaint(Run("undo --windows @/other/C --backup @/backup " + session), 2,
                  "another Windows");
  ASSERT_EQ(Run("clean --all --yes --plugins Fonts @/other/C --backup @/backup").status, 0);
  ASSERT_EQ(Shell("rm -r @/other/C && cp -r @/C @/other/C").status, 0);
  ExpectComplaint(Run("undo --backup @/backup"), 2, "another Windows");
  EXPECT_NE(Run("undo --export - " + Where).out.find("S\0h\0a\0r\0e\0d\0"s), std::string::npos);
  EXPECT_TRUE(Disk() == disk);
  EXPECT_EQ(Answer("undo" + Where, 0)["session"], session) << "of this Windows the last";
}

}  // namespace
}  // namespace scrubwell::test
