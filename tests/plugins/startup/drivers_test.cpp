#include "plugins/startup/Rcp_drivers.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const Abbreviations kShort = {
    {"{K}", "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\VxD\\"},
    {"{k}", "|existingkey:HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\VxD\\"},
    {"{P}", "HKLM\\SYSTEM\\ControlSet001\\Services\\VxD\\"}};

TEST(Drivers, FindsAndCleans) {
  CheckText<TRCPDrivers>(R"(
      # healthy
      {K}A : StaticVxD = *vmm ; : DeviceVxDs = a.vxd, b.vxd ; {K}B : Start = hex:00
      {K}B : StaticVxD = dword:1 ; {K}C
      + C:\Windows\System\a.vxd ; C:\Windows\System32\b.vxd
      # both lists, items as they are listed, and what can't be told
      {K}A : DeviceVxDs = C:\x\gone.vxd
      {K}A : StaticVxD = *vmm,D:\gone.vxd,, b.vxd ,E:\gone.vxd,\\s\t\gone.vxd ; : Start = hex:00
      + drive D: network
      ? 1{k}A{v}StaticVxD{f} b.vxd  ; 1{k}A{v}DeviceVxDs{f}C:\x\gone.vxd
      ! set value {P}A "StaticVxD"="*vmm,D:\\gone.vxd,,E:\\gone.vxd,\\\\s\\t\\gone.vxd"
      ! delete value {P}A "DeviceVxDs"
      # a key goes with its last list
      {K}A : StaticVxD = gone.vxd ; : DeviceVxDs =  , , ; {K}B : StaticVxD = gone.vxd,
      {K}B : sTART = hex:00 ; {K}C : DeviceVxDs = , ; : Start = hex:00 ; : Other = x
      ? 1{k}A{v}StaticVxD{f}gone.vxd ; 2{k}A{v}DeviceVxDs
      ? 1{k}B{v}StaticVxD{f}gone.vxd ; 2{k}C{v}DeviceVxDs
      ! delete value {P}A "StaticVxD" ; delete value {P}A "DeviceVxDs" ; delete key {P}A
      ! delete value {P}B "StaticVxD" ; delete key {P}B ; delete value {P}C "DeviceVxDs"
      # one name twice is one problem, and both go with it
      {K}A : StaticVxD = gone.vxd,*vmm, gone.vxd
      ? 1{k}A{v}StaticVxD{f}gone.vxd ; 1{k}A{v}StaticVxD{f} gone.vxd
      ! set value {P}A "StaticVxD"="*vmm" ; set value {P}A "StaticVxD"="*vmm"
      # a key that can't be written
      & deny-write HKLM\SYSTEM\ControlSet001\Services\VxD\A
      {K}A : StaticVxD = gone.vxd ; {K}B : StaticVxD = ,
      ? 2{k}B{v}StaticVxD)",
                         kShort);
}

// A key whose values can't be read any more is not an empty one.
TEST(Drivers, KeepsAKeyThatCannotBeRead) {
  for (std::uint64_t n = 1; n <= 8; ++n) {
    const Case row = ReadCases(R"(# a second value
        {K}A : StaticVxD = gone.vxd ; : Other = x
        ! delete value {P}A "StaticVxD")",
                               kShort)[0];
    World world(row.registry);
    world.Run<TRCPDrivers>();
    world.Backend().Faults().FailNth(n, Status::Corrupt);
    for (const std::string& line : world.CleanAll()) EXPECT_EQ(line, row.journal->front()) << n;
  }
}

TEST(Drivers, TextsKnowNeitherViewNorValue) {
  World world(ReadCases("# one driver\n{K}A : StaticVxD = gone.vxd", kShort)[0].registry);
  world.Run<TRCPDrivers>();
  EXPECT_NE(world.Texts()[0].find("\"<a href=\"regjump:HK:HKEY_"), std::string::npos);
  EXPECT_NE(world.Texts()[0].find("\"#value#\" auf den"), std::string::npos);
}

}  // namespace
}  // namespace scrubwell::test
