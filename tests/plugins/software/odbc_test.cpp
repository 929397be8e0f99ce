#include <gtest/gtest.h>

#include "plugins/software/Rcp_odbc.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

const std::string kDrivers = R"(HKEY_LOCAL_MACHINE\Software\ODBC\ODBCINST.INI\)";
const std::string kSources = R"(HKEY_LOCAL_MACHINE\Software\ODBC\ODBC.INI\)";
const std::string kListing = R"(HKLM\Software\ODBC\ODBC.INI\ODBC Data Sources)";
const std::string kNode = R"(HKLM\SOFTWARE\ODBC\)";

std::string Driver(const std::string& name, const std::string& file) {
  return "[" + kDrivers + name + "]\n\"Driver\"=\"" + file + "\"\n";
}
std::string Source(const std::string& name, const std::string& values = {}) {
  return "[" + kSources + name + "]\n" + values + "\n";
}
std::string Listing(const std::string& values) {
  return Source("ODBC Data Sources", values);
}
std::string OfListing(const std::string& kind, const std::string& name, const std::string& driver) {
  return kind + "|existingkey:" + kListing + "|existingvalue:" + name + "|missingdrv:" + driver;
}
std::string DriverMissing(const std::string& name, const std::string& file) {
  return "1|existingkey:" + kDrivers + name + "|existingvalue:Driver|missingfile:" + file +
         "|missingdrv:" + name;
}
std::string Unlisted(const std::string& name) {
  return "delete value " + kNode + "ODBC.INI\\ODBC Data Sources \"" + name + "\"";
}

const std::string kGone = "C:\\\\x\\\\gone.dll";
const std::string kGoneDriver = "\"Driver\"=\"" + kGone + "\"";
const MemoryOptions kBits32{.is64Bit = false};

TEST(ODBC, FindsAndCleans) {
  const Case rows[] = {
      {.name = "nothing registered", .options = kBits32},
      {.name = "healthy, or not to be told",
       .registry = Driver("Here", "C:\\\\x\\\\here.dll") + Driver("Bare", "sys.dll") +
                   Driver("Away", "D:\\\\gone.dll") + Driver("Empty", "") +
                   Driver("Vague", "%NoSuch%\\\\gone.dll") + "[" + kDrivers +
                   "ODBC Drivers]\n\"Gone\"=\"Installed\"\n" +
                   Source("own", R"("Driver"="sys.dll")") + Source("other") + Source("number") +
                   Listing(R"("own"="Bare"
"other"="here"
"number"=dword:1
"a\\b"="Here"
@="Gone"
)") + "[" + kSources.substr(0, kSources.size() - 1) +
                   "]\n" + kGoneDriver + "\n",
       .files = "C:\\x\\here.dll\nC:\\Windows\\System32\\sys.dll\ndrive D: removable",
       .options = kBits32},
      {.name = "an invalid driver and those who use it",
       .registry = Driver("Bad", kGone) + Driver("Bare", "gone.dll") + Source("a") + Source("b") +
                   Source("c") + Listing("\"a\"=\"Bad\"\n\"b\"=\"Bad\"\n\"c\"=\"bad\""),
       .problems = {DriverMissing("Bad", "C:\\x\\gone.dll"), DriverMissing("Bare", "gone.dll"),
                    OfListing("5", "a", "Bad"), OfListing("5", "b", "Bad")},
       .journal = Lines{"delete key " + kNode + "ODBCINST.INI\\Bad",
                        "delete key " + kNode + "ODBCINST.INI\\Bare"},
       // They count as repaired; without their driver they are another problem.
       .left = {OfListing("4", "a", "Bad"), OfListing("4", "b", "Bad"), OfListing("4", "c", "bad")},
       .options = kBits32},
      {.name = "listed without a key, and with one but no driver",
       .registry = Driver("Here", "C:\\\\x\\\\here.dll") + Source("b") +
                   Listing("\"a\"=\"None\"\n\"b\"=\"None\""),
       .files = "C:\\x\\here.dll",
       .problems = {"2|existingkey:" + kListing + "|existingvalue:a", OfListing("4", "b", "None")},
       .journal = Lines{Unlisted("a"), Unlisted("b")},
       .options = kBits32},
      {.name = "a data source's own driver comes first",
       .registry = Driver("Bad", kGone) + Source("a", kGoneDriver) + Source("b", kGoneDriver) +
                   Listing("\"a\"=\"Bad\"\n\"b\"=\"None\""),
       .problems = {DriverMissing("Bad", "C:\\x\\gone.dll"),
                    "3|existingkey:" + kSources +
                        "a|existingvalue:Driver|missingds:a|missingfile:C:\\x\\gone.dll",
                    "3|existingkey:" + kSources +
                        "b|existingvalue:Driver|missingds:b|missingfile:C:\\x\\gone.dll"},
       .journal =
           Lines{"delete key " + kNode + "ODBCINST.INI\\Bad", "delete key " + kNode + "ODBC.INI\\a",
                 Unlisted("a"), "delete key " + kNode + "ODBC.INI\\b", Unlisted("b")},
       .options = kBits32},
      {.name = "a protected data source",
       .registry = Source("BRW2008_NDS_NW", kGoneDriver) + Listing("\"BRW2008_NDS_NW\"=\"X\""),
       .options = kBits32},
      {.name = "a network drive; a driver that is no text",
       .registry = Driver("Bad", "N:\\\\gone.dll") + "[" + kDrivers + "No]\n\"Driver\"=dword:1\n",
       .files = "drive N: network",
       .problems = {DriverMissing("Bad", "N:\\gone.dll")},
       .options = kBits32},
      {.name = "the process's own view alone",
       .registry = Driver("Bad", kGone) + Listing("\"a\"=\"None\"")},
  };
  CheckCases<TRCPODBC>(rows);
  // Where a data source's own key or driver can't be told, its listing still can.
  for (const std::size_t row : {2U, 3U, 4U}) {
    Case fault = rows[row];
    fault.problems.push_back(OfListing("4", row == 3 ? "a" : "b", "None"));
    fault.problems.push_back(OfListing("5", "a", "Bad"));
    CheckFaults<TRCPODBC>(fault);
  }
}

TEST(ODBC, AnnouncesNothingAndStopsAfterTheFirstOfEachPass) {
  World world(Driver("A", kGone) + Driver("B", kGone) + Listing("\"a\"=\"A\"\n\"b\"=\"B\""), {},
              kBits32);
  auto& plugin = world.Create<TRCPODBC>();
  plugin.OnScanProgress = [](TRCPlugin&, std::int32_t, UnicodeView, bool) { ADD_FAILURE(); };
  plugin.Init();
  EXPECT_EQ(plugin.FScanItemCount, 4);
  StopSearch = true;
  plugin.Scan();
  EXPECT_EQ(world.Problems(), (Lines{DriverMissing("A", "C:\\x\\gone.dll"),
                                     "2|existingkey:" + kListing + "|existingvalue:a"}));
  EXPECT_EQ(plugin.FState, rcpScanned);
}

}  // namespace
}  // namespace scrubwell::test
