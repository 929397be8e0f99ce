#include <gtest/gtest.h>

#include "plugins/startup/Rcp_drivers.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

const std::string kKey = R"([HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\VxD\)";

std::string Place(const std::string& name, const std::string& value) {
  return R"(|existingkey:HKEY_LOCAL_MACHINE\System\CurrentControlSet\Services\VxD\)" + name +
         "|existingvalue:" + value;
}
std::string Missing(const std::string& name, const std::string& value, const std::string& file) {
  return "1" + Place(name, value) + "|missingfile:" + file;
}
const std::string kPhysical = R"(HKLM\SYSTEM\ControlSet001\Services\VxD\)";

TEST(Drivers, FindsAndCleans) {
  const Case rows[] = {
      {.name = "no drivers"},
      {.name = "healthy",
       .registry = kKey + "A]\n\"StaticVxD\"=\"*vmm\"\n\"DeviceVxDs\"=\"a.vxd, b.vxd\"\n" + kKey +
                   "B]\n\"Start\"=hex:00\n\"StaticVxD\"=dword:1\n" + kKey + "C]\n",
       .files = "C:\\Windows\\System\\a.vxd\nC:\\Windows\\System32\\b.vxd\n"},
      {.name = "one of three",
       .registry = kKey + "A]\n\"StaticVxD\"=\" a.vxd,*vmm,b.vxd \"\n",
       .files = "C:\\Windows\\System\\a.vxd\n",
       .problems = {Missing("A", "StaticVxD", "b.vxd")},
       .journal = Lines{"set value " + kPhysical + "A \"StaticVxD\"=\" a.vxd,*vmm\""}},
      {.name = "both lists, items as they are listed, and what can't be told",
       .registry = kKey + "A]\n\"DeviceVxDs\"=\"C:\\\\x\\\\gone.vxd\"\n\"StaticVxD\"="
                          "\"D:\\\\gone.vxd,, b.vxd ,E:\\\\gone.vxd,\\\\\\\\s\\\\t\\\\gone.vxd\"\n"
                          "\"Start\"=hex:00\n",
       .files = "drive D: network\n",
       .problems = {Missing("A", "StaticVxD", " b.vxd "),
                    Missing("A", "DeviceVxDs", "C:\\x\\gone.vxd")},
       .journal = Lines{"set value " + kPhysical +
                            "A \"StaticVxD\"=\"D:\\\\gone.vxd,,E:\\\\gone."
                            "vxd,\\\\\\\\s\\\\t\\\\gone.vxd\"",
                        "delete value " + kPhysical + "A \"DeviceVxDs\""}},
      {.name = "a key goes with its last list",
       .registry = kKey + "A]\n\"StaticVxD\"=\"gone.vxd\"\n\"DeviceVxDs\"=\" , ,\"\n" + kKey +
                   "B]\n\"StaticVxD\"=\"gone.vxd,\"\n\"sTART\"=hex:00\n" + kKey +
                   "C]\n\"DeviceVxDs\"=\"\"\n\"Start\"=hex:00\n\"Other\"=\"\"\n",
       .problems = {Missing("A", "StaticVxD", "gone.vxd"), "2" + Place("A", "DeviceVxDs"),
                    Missing("B", "StaticVxD", "gone.vxd"), "2" + Place("C", "DeviceVxDs")},
       .journal =
           Lines{"delete value " + kPhysical + "A \"StaticVxD\"",
                 "delete value " + kPhysical + "A \"DeviceVxDs\"", "delete key " + kPhysical + "A",
                 "delete value " + kPhysical + "B \"StaticVxD\"", "delete key " + kPhysical + "B",
                 "delete value " + kPhysical + "C \"DeviceVxDs\""}},
      {.name = "one name twice is one problem, and both go with it",
       .registry = kKey + "A]\n\"StaticVxD\"=\"gone.vxd,*vmm, gone.vxd\"\n",
       .problems = {Missing("A", "StaticVxD", "gone.vxd"), Missing("A", "StaticVxD", " gone.vxd")},
       .journal = Lines{"set value " + kPhysical + "A \"StaticVxD\"=\"*vmm\"",
                        "set value " + kPhysical + "A \"StaticVxD\"=\"*vmm\""}},
      {.name = "a key that can't be written",
       .registry = kKey + "A]\n\"StaticVxD\"=\"gone.vxd\"\n" + kKey + "B]\n\"StaticVxD\"=\",\"\n",
       .problems = {"2" + Place("B", "StaticVxD")},
       .setup =
           [](World& world) {
             world.Backend().DenyWrite(u"HKLM\\SYSTEM\\ControlSet001\\Services\\VxD\\A");
           }},
  };
  CheckCases<TRCPDrivers>(rows);
  CheckFaults<TRCPDrivers>(rows[3]);
}

// A key whose values can't be read any more is not an empty one.
TEST(Drivers, KeepsAKeyThatCannotBeRead) {
  for (std::uint64_t n = 1; n <= 8; ++n) {
    World world(kKey + "A]\n\"StaticVxD\"=\"gone.vxd\"\n\"Other\"=\"x\"\n");
    world.Run<TRCPDrivers>();
    world.Backend().Faults().FailNth(n, Status::Corrupt);
    for (const std::string& line : world.CleanAll())
      EXPECT_EQ(line, "delete value " + kPhysical + "A \"StaticVxD\"") << n;
  }
}

TEST(Drivers, TextsKnowNeitherViewNorValue) {
  World world(kKey + "A]\n\"StaticVxD\"=\"gone.vxd\"\n");
  world.Run<TRCPDrivers>();
  EXPECT_NE(world.Texts()[0].find("\"<a href=\"regjump:HK:HKEY_"), std::string::npos);
  EXPECT_NE(world.Texts()[0].find("\"#value#\" auf den"), std::string::npos);
}

}  // namespace
}  // namespace scrubwell::test
