#include "plugins/software/Rcp_apppaths.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const std::string kPaths = R"(Microsoft\Windows\CurrentVersion\App Paths)";
const std::string kPlace = "HKLM\\SOFTWARE\\" + kPaths + "\\";
const Abbreviations kShort = {{"{gone}", "|caption:a.exe{f}C:\\x\\gone.exe"}, {"{K}", kPaths}};

TEST(AppPaths, FindsAndCleans) {
  CheckText<TRCPAppPaths>(
      R"(
      # healthy, or not to be told
      & 32-bit
      {LM}{K}\here.exe = C:\x y\here.exe ; {LM}{K}\quoted.exe = "C:\x y\here.exe"
      {LM}{K}\folder.exe = C:\x y\ ; {LM}{K}\number.exe = dword:1
      {LM}{K}\path.exe : Path = C:\nowhere ; {LM}{K}\empty.exe = {} ; {LM}{K}\parent.exe\sub
      {LM}{K}\TB85.EXE = C:\x\gone.exe ; {LM}{K}\d.exe = D:\gone.exe ; {LM}{K}\bare.exe = gone.exe
      + C:\x y\here.exe ; drive D: removable
      # the whole key when nothing else is in it; an exception in other letter case
      & 32-bit
      {LM}{K}\a.exe = C:\x\gone.exe ; {LM}{K}\b.exe ; {LM}{K}\tb85.exe = C:\x\gone.exe
      ? 1{32}{K}\a.exe{gone} ; 2{32}{K}\b.exe|caption:b.exe
      ? 1{32}{K}\tb85.exe|caption:tb85.exe{f}C:\x\gone.exe
      ! {-k}{K}\a.exe ; {-k}{K}\b.exe ; {-k}{K}\tb85.exe
      # both views see one shared key
      {LM}{K}\a.exe = C:\x\gone.exe
      ? 1{32}{K}\a.exe{gone} ; 1{64}{K}\a.exe{gone}
      ! {-k}{K}\a.exe
      # a key that can't be deleted
      & 32-bit
      & deny-delete HKLM\SOFTWARE\{K}\a.exe
      {LM}{K}\a.exe = C:\x\gone.exe ; {LM}{K}\b.exe
      ? 2{32}{K}\b.exe|caption:b.exe
      # each view its own key
      & before Windows 7
      {LM}{K}\a.exe = C:\x\gone.exe ; {W}{K}\b.exe
      ? 2{32}{K}\b.exe|caption:b.exe ; 1{64}{K}\a.exe{gone}
      ! {-Wk}{K}\b.exe ; {-k}{K}\a.exe)",
      kShort,
      {{"before Windows 7", [](Case& row) { row.options.rules = ViewRules::BeforeWindows7; }}});
}

// What becomes of the other values of a key whose program is gone.
TEST(AppPaths, KeepsWhatStillLeadsSomewhere) {
  const std::string target = "delete value " + kPlace + "a.exe @";
  const std::string folders = "delete value " + kPlace + "a.exe \"Path\"";
  const std::string key = "delete key " + kPlace + "a.exe";
  const std::string values = "HKEY_LOCAL_MACHINE\\SOFTWARE\\" + kPaths + "\\a.exe : ";
  const std::string gone =
      Classes("HKEY_LOCAL_MACHINE\\SOFTWARE\\" + kPaths + "\\a.exe = C:\\x\\gone.exe");
  const std::pair<std::string, Lines> rows[] = {
      {"Path = C:\\x y", {target}},          {"Path = C:\\x y;", {target}},
      {"Path = C:\\no z;C:\\x y", {target}}, {"Path = C:\\no z;D:\\a b", {target}},
      {"Path = \\\\s\\s", {target}},         {"Path = ", {target}},
      {"Path = C:\\no", {folders, key}},     {"Path = C:\\no z;C:\\no w;", {folders, key}}};
  for (const auto& [value, journal] : rows) {
    World world(gone + Classes(values + value), "C:\\x y\\", {.is64Bit = false});
    world.Run<TRCPAppPaths>();
    EXPECT_EQ(world.CleanAll(), journal) << value;
    EXPECT_EQ(RealSweepErrorCount, 0);
  }
  // Every read of a repair fails once: what can't be read is not empty.
  for (std::uint64_t n = 1; n < 12; ++n) {
    World world(gone + Classes(values + "UseUrl = dword:1"), "", {.is64Bit = false});
    world.Run<TRCPAppPaths>();
    world.Backend().Faults().FailNth(n, Status::Corrupt);
    const Lines journal = world.CleanAll();
    EXPECT_TRUE(journal.empty() || journal == Lines{target}) << n;
  }
}

}  // namespace
}  // namespace scrubwell::test
