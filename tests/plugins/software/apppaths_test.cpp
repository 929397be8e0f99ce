#include <gtest/gtest.h>

#include "plugins/software/Rcp_apppaths.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

const std::string kPaths = R"(Microsoft\Windows\CurrentVersion\App Paths)";
const std::string kPlace = "HKLM\\SOFTWARE\\" + kPaths + "\\";

// One subkey with its values.
std::string Key(const std::string& name, const std::string& values,
                const std::string& node = "SOFTWARE\\") {
  return "[HKEY_LOCAL_MACHINE\\" + node + kPaths + "\\" + name + "]\n" + values + "\n";
}

std::string Problem(const std::string& kind, const std::string& name, const std::string& file = {},
                    const std::string& view = "32") {
  return kind + "|existingkey:" + view + ":HKEY_LOCAL_MACHINE\\Software\\" + kPaths + "\\" + name +
         "|caption:" + name + (file.empty() ? "" : "|missingfile:" + file);
}

constexpr const char* kGone = R"(@="C:\\x\\gone.exe")";
const std::string kGonePath = "C:\\x\\gone.exe";
const MemoryOptions kBits32{.is64Bit = false};

TEST(AppPaths, FindsAndCleans) {
  const Lines wholeKey{"delete key " + kPlace + "a.exe"};
  const std::string files = "C:\\x y\\here.exe\nC:\\z\\";
  const Case rows[] = {
      {.name = "healthy, or not to be told",
       .registry = Key("here.exe", R"(@="C:\\x y\\here.exe")") +
                   Key("quoted.exe", R"(@="\"C:\\x y\\here.exe\"")") +
                   Key("folder.exe", R"(@="C:\\x y\\")") + Key("number.exe", "@=dword:1") +
                   Key("path.exe", R"("Path"="C:\\nowhere")") + Key("empty.exe", R"(@="")") +
                   Key("parent.exe\\sub", "") + Key("TB85.EXE", kGone) +
                   Key("d.exe", R"(@="D:\\gone.exe")") + Key("bare.exe", R"(@="gone.exe")"),
       .files = files + "\ndrive D: removable",
       .options = kBits32},
      {.name = "the whole key when nothing else is in it; an exception in other letter case",
       .registry = Key("a.exe", kGone) + Key("b.exe", "") + Key("tb85.exe", kGone),
       .problems = {Problem("1", "a.exe", kGonePath), Problem("2", "b.exe"),
                    Problem("1", "tb85.exe", kGonePath)},
       .journal = Lines{wholeKey[0], "delete key " + kPlace + "b.exe",
                        "delete key " + kPlace + "tb85.exe"},
       .options = kBits32},
      {.name = "both views see one shared key",
       .registry = Key("a.exe", kGone),
       .problems = {Problem("1", "a.exe", kGonePath), Problem("1", "a.exe", kGonePath, "64")},
       .journal = wholeKey},
      {.name = "each view its own key",
       .registry = Key("a.exe", kGone) + Key("b.exe", "", "SOFTWARE\\Wow6432Node\\"),
       .problems = {Problem("2", "b.exe"), Problem("1", "a.exe", kGonePath, "64")},
       .journal =
           Lines{"delete key HKLM\\SOFTWARE\\Wow6432Node\\" + kPaths + "\\b.exe", wholeKey[0]},
       .options = {.rules = ViewRules::BeforeWindows7}},
      {.name = "a key that can't be deleted",
       .registry = Key("a.exe", kGone) + Key("b.exe", ""),
       .problems = {Problem("2", "b.exe")},
       .options = kBits32,
       .setup =
           [](World& world) {
             world.Backend().DenyDelete(
                 u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\a.exe");
           }},
  };
  CheckCases<TRCPAppPaths>(rows);
  CheckFaults<TRCPAppPaths>(rows[3]);
}

// What becomes of the other values of a key whose program is gone.
TEST(AppPaths, KeepsWhatStillLeadsSomewhere) {
  const std::string target = "delete value " + kPlace + "a.exe @";
  const std::string folders = "delete value " + kPlace + "a.exe \"Path\"";
  const std::string key = "delete key " + kPlace + "a.exe";
  const struct {
    const char* values;
    Lines journal;
  } rows[] = {
      {R"("Path"="C:\\x y")", {target}},
      {R"("Path"="C:\\x y;")", {target}},
      {R"("Path"="C:\\no z;C:\\x y")", {target}},
      {R"("Path"="C:\\no z;D:\\a b")", {target}},
      {R"("Path"="\\\\s\\s")", {target}},
      {R"("Path"="C:\\no")", {folders, key}},
      {R"("Path"="C:\\no z;C:\\no w;")", {folders, key}},
      {"\"Path\"=\"C:\\\\no\"\n\"UseUrl\"=dword:1", {folders, target}},
      {R"("Path"="")", {target}},
  };
  for (const auto& row : rows) {
    World world(Key("a.exe", std::string(kGone) + "\n" + row.values), "C:\\x y\\", kBits32);
    world.Run<TRCPAppPaths>();
    EXPECT_EQ(world.CleanAll(), row.journal) << row.values;
    EXPECT_EQ(RealSweepErrorCount, 0);
  }
  // Every read of a repair fails once: what can't be read is not empty.
  for (std::uint64_t n = 1; n < 12; ++n) {
    World world(Key("a.exe", std::string(kGone) + "\n\"UseUrl\"=dword:1"), "", kBits32);
    world.Run<TRCPAppPaths>();
    world.Backend().Faults().FailNth(n, Status::Corrupt);
    const Lines journal = world.CleanAll();
    EXPECT_TRUE(journal.empty() || journal == Lines{target}) << n;
  }
}

}  // namespace
}  // namespace scrubwell::test
