#include <set>

#include "hosts/cli/program_run.h"

namespace scrubwell::test {
namespace {

using Program = ProgramRun;

TEST_F(Program, AnswersToItsArguments) {
  const std::string scan = "scan --windows @/C ";
  // The part is of the output, or of the complaint for a status above 1.
  const std::tuple<std::string, int, std::string> rows[] = {
      {"--version", 0, "scrubwell 0."},
      {"--help", 0, "Commands:"},
      {"scan --help", 0, "--windows DIR"},
      {"scan --lang de --help", 0, "--windows ORDNER"},
      {"plugins --lang de", 0, "Gemeinsame Dateien"},
      {"scan --plugins Fonts @/C --output -", 1, "problems found."},
      {scan + "--plugins sharedfiles,SharedFiles", 1, "aqspell.dll"},
      {scan + "--user anna --drive e=@/C:removable", 1, "user anna"},
      {scan + "--lang en --lang de", 1, "Probleme gefunden."},
      {scan + "--plugins Fonts,Sounds --exclude fonts", 1, "\n2 problems found."},
      {scan + "--kind SharedFiles:1", 1, "5 problems found."},
      {scan + "--kind sharedfiles:1 --plugins Fonts", 1, "9 problems found."},
      {scan + "--filter AQSPELL", 1, "\n1 problem found. None is hidden. "},
      {scan + "--filter nowhere", 0, "more are not part of the selection."},
      {scan + "--fail-on none", 0, "102 problems found."},
      {scan + "--limit 2 --plugins Fonts", 1, "... and 2 more"},
      {scan + "--details --plugins Fonts", 1, "existingvalue: Quill Sans"},
      {scan + "--plugins Fonts --user all", 1, "users anna"},
      {"plugins --kinds", 0, " 1  "},
      {"explain --help", 0, "unknown id"},
      {"", 2, "command"},
      {scan + "--exclude Font", 2, "Font"},
      {scan + "--plugins Fonts --exclude fonts", 2, "no category"},
      {scan + "--kind Fonts", 2, "Fonts: not of the form"},
      {scan + "--kind Fonts:1,x", 2, "Fonts:1,x"},
      {scan + "--kind Fonts:99", 2, "Fonts:99: unknown kind"},
      {scan + "--kind Font:1", 2, "Font"},
      {scan + "--limit 9999999999", 2, "9999999999"},
      {scan + "--fail-on new", 2, "--since"},
      {scan + "--fail-on old", 2, "old"},
      {scan + "--since @/none.json", 2, "/none.json"},
      {scan + "--since @/C/Windows/win.ini", 2, "win.ini: is not a JSON report"},
      {"clean --all --dry-run --user all --windows @/C", 2, "scan only"},
      {"clean --all --dry-run --windows @/C --format csv", 2, "csv"},
      {"wash", 2, "wash: unknown command (see"},
      {"scna", 2, "did you mean scan?"},
      {"@/C", 2, "did you mean scrubwell scan /"},
      {"scan", 2, "--windows"},
      {"scan --windows ''", 2, "names no folder"},
      {"scan --live", 2, "--live: here a switched-off Windows"},
      {"recover --live --windows @/C", 2, "--live: here a switched-off Windows"},
      {scan + "--plugin Fonts", 2, "did you mean --plugins?"},
      {scan + "extra", 2, "extra: a second folder"},
      {"sessions prune", 2, "--keep N or --older-than DAYS"},
      {"sessions prune --keep 1", 2, "--yes"},
      {"sessions list --keep 1", 2, "--keep"},
      {scan + "--format xml", 2, "xml"},
      {scan + "--lang fr", 2, "fr"},
      {scan + "--plugins fomts", 2, "did you mean Fonts?"},
      {scan + "--plugins SharedFiles,nix --lang de", 2, "nix: unbekannte"},
      {scan + "--user berta", 2, "there are: anna"},
      {scan + "--drive E", 2, "E: "},
      {"scan @/none --lang de", 3, "/none: Datei oder Ordner nicht gefunden"},
      {"scan --windows @/C/Users", 3, "/C/Users: no Windows here"},
      {"reg HKLM @/C/Windows/System32", 3, "/C?"},
      {"ignore list @", 3, "/C?"},
      {"scan --windows @/C/Windows/notepad.exe", 3, "notepad.exe: is a file"},
      {"recover @/disk.img", 3, "is a disk image (NTFS)"},
      {"clean --all --dry-run @/C --output @/x.html", 2, "html: unknown format"},
  };
  Put(folder_ / "disk.img", "\xEB\x52\x90NTFS    ");
  for (const auto& [arguments, status, part] : rows) {
    SCOPED_TRACE(arguments);
    const Result result = Run(arguments);
    if (status > 1) {
      ExpectComplaint(result, status, part);
      continue;
    }
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.err, "") << "no progress line without a terminal";
    EXPECT_NE(result.out.find(part), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find('\033'), std::string::npos);
  }
}

TEST_F(Program, SpeaksTheLanguageOfTheEnvironment) {
  const std::pair<const char*, bool> rows[] = {
      {"LANG=de_AT.UTF-8", true},
      {"LANG=den_CA", false},
      {"LC_ALL=C LANG=de_DE", false},
      {"LC_ALL= LANG=de", true},
      {"", false},
      {"LC_MESSAGES=de LANG=en_US", true},
      {"LANGUAGE=fr:de LANG=en_US.UTF-8", true},
      {"LANGUAGE=de LC_ALL=C", false},
      {"LANGUAGE=en:de LANG=de_DE", false},
  };
  for (const auto& [environment, german] : rows) {
    const Result result = Run("plugins", environment);
    EXPECT_EQ(result.out.find("Gemeinsame") != std::string::npos, german) << environment;
  }
}

TEST_F(Program, FindsTheSameInEveryRunAndLanguage) {
  const json report = Scan("--plugins SharedFiles");
  EXPECT_EQ(Scan("--plugins SharedFiles"), report);
  EXPECT_EQ(report["target"]["build"], 19045);
  for (const char* name : {"/target/system_root", "/plugins/0/image_index", "/plugins/0/state",
                           "/problems/0/identification", "/counts/category_errors"})
    EXPECT_TRUE(report.contains(json::json_pointer(name))) << name;
  const json german = Scan("--plugins SharedFiles --lang de");
  EXPECT_EQ(german["problems"][0]["id"], report["problems"][0]["id"]);
  EXPECT_NE(german["problems"][0]["caption"], report["problems"][0]["caption"]);
}

TEST_F(Program, WritesTheOutputWholeOrNotAtAll) {
  const std::string scan = "scan --windows @/C --format json --output ";
  const fs::path file = folder_ / "report.json";
  Put(file, "old");
  fs::permissions(file, fs::perms(0640));
  fs::create_symlink("report.json", folder_ / "link.json");

  Result result = Run(scan + "@/link.json");
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(json::parse(Content(file)).at("status"), "complete");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
  EXPECT_TRUE(fs::is_symlink(folder_ / "link.json"));

  Put(file, "old");
  const std::tuple<std::string, int, std::string> rows[] = {
      {scan + "@/none/report.json", 2, "/none/report.json"},
      {scan + "@/C", 2, "/C"},
      {scan + "/dev/full", 2, "/dev/full"},
      {scan + "@/report.json --plugins nix", 2, "nix"},
      {"scan --windows @/none --output @/new.json", 3, "/none"},
  };
  for (const auto& [arguments, status, part] : rows) {
    SCOPED_TRACE(arguments);
    ExpectComplaint(Run(arguments), status, part);
    EXPECT_EQ(Content(file), "old");
  }
  EXPECT_FALSE(fs::exists(folder_ / "new.json"));
  for (const auto& entry : fs::directory_iterator(folder_)) {
    EXPECT_EQ(entry.path().string().find(".scrubwell-"), std::string::npos) << entry.path();
  }
  EXPECT_EQ(Run(scan + "/dev/null").status, 1);
  EXPECT_EQ(Run("scan --plugins Fonts @/C --output @/page.HTML").status, 1);
  EXPECT_TRUE(Content(folder_ / "page.HTML").starts_with("<!DOCTYPE html>"));
}

TEST_F(Program, NotesWhatIsWrongWithAnInstallation) {
  Put(folder_ / "C/Users/anna/NTUSER.DAT", "regf");
  EXPECT_NE(Scan().at("notes").dump().find("NTUSER.DAT"), std::string::npos) << "but it goes on";
  fs::remove(folder_ / "C/Windows/System32/config/SYSTEM");
  ExpectComplaint(Run("scan --windows @/C"), 3, "SYSTEM");
}

}  // namespace
}  // namespace scrubwell::test
