#include <gtest/gtest.h>

#include "plugins/startup/Rcp_inifiles.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

std::string WinIni(const std::string& text) {
  return "C:\\Windows\\win.ini | text=" + text + "\n";
}
std::string SystemIni(const std::string& text) {
  return "C:\\Windows\\system.ini | text=" + text + "\n";
}
const std::string kWin = R"(C:\Windows\win.ini)";
const std::string kSystem = R"(C:\Windows\system.ini)";

std::string Driver(const std::string& section, const std::string& entry, const std::string& file) {
  return "4|section:" + section + "|subkey:" + entry + "|missingfile:" + file;
}

const Case kEveryKind{
    .name = "each kind in its order",
    .files = WinIni(R"([embedding]\nOld=a,b,C:\\gone.exe,d\n[Extensions]\nold=gone.exe ^.old\n)"
                    R"([windows]\nLoad=gone1.exe\nRun=gone2.exe)") +
             SystemIni(R"([drivers32]\nwave=gone.drv\nmidi=,\n[BOOT]\nscrnsave.exe=C:\\gone.scr\n)"
                       R"(drivers=gone.drv)"),
    .problems = {"1|section:windows|value:run|missingfile:gone2.exe",
                 "1|section:windows|value:load|missingfile:gone1.exe",
                 "2|caption:old|missingfile:gone.exe ^.old",
                 "3|caption:Old|missingfile:C:\\gone.exe", Driver("boot", "drivers", "gone.drv"),
                 "6|section:boot|subkey:SCRNSAVE.EXE|missingfile:C:\\gone.scr",
                 Driver("drivers32", "wave", "gone.drv"),
                 "5|section:drivers32|subkey:midi|missingfile:,"},
    .journal = Lines{"backup " + kWin, "set entry " + kWin + " [windows] run=", "backup " + kWin,
                     "set entry " + kWin + " [windows] load=", "backup " + kWin,
                     "delete entry " + kWin + " [extensions] old", "backup " + kWin,
                     "delete entry " + kWin + " [embedding] Old", "backup " + kSystem,
                     "set entry " + kSystem + " [boot] drivers=", "backup " + kSystem,
                     "delete entry " + kSystem + " [boot] SCRNSAVE.EXE", "backup " + kSystem,
                     "delete entry " + kSystem + " [drivers32] wave", "backup " + kSystem,
                     "delete entry " + kSystem + " [drivers32] midi"},
};

TEST(IniFiles, FindsAndCleans) {
  const std::string files = "C:\\a b\\a.exe\nC:\\Windows\\System32\\a.drv\ndrive D: removable\n";
  const Case rows[] = {
      {.name = "no files"},
      kEveryKind,
      {.name = "healthy, or not to be told",
       .files = files +
                WinIni(R"([windows]\nrun=C:\\a b\\a.exe /s , D:\\gone.exe,,\nload=\n[extensions]\n)"
                       R"(a=C:\\a b\\a.exe ^.a\nb=%gone%\\b.exe\nc=\n;d=gone.exe\n[embedding]\n)"
                       R"(two=gone.exe,gone.exe\nempty=x,y,,z\nfull=x,y,C:\\a b\\a.exe,z)") +
                SystemIni(R"([boot]\ndrivers=a.drv  *gone  a\nSCRNSAVE.EXE=(none)\n[drivers32]\n)"
                          R"(a=*gone,a.drv\nb=\\\\server\\b.drv\n[drivers]\nc=gone.drv)")},
      {.name = "the other items of a line keep their blanks",
       .files = files + WinIni(R"([windows]\nload= C:\\a b\\a.exe , gone.exe\n)"
                               R"(run=gone.exe, D:\\b,gone.exe )"),
       .problems = {"1|section:windows|value:run|missingfile:gone.exe",
                    "1|section:windows|value:load|missingfile:gone.exe"},
       .journal = Lines{"backup " + kWin, "set entry " + kWin + " [windows] run= D:\\b",
                        "backup " + kWin, "set entry " + kWin + " [windows] load=C:\\a b\\a.exe "}},
      {.name = "lists of drivers32 are scanned at commas and repaired at blanks",
       .files = files + SystemIni(R"([drivers32]\na=a.drv,gone.drv\nb=a.drv, gone.drv\nc=\n)"
                                  R"([boot]\ndrivers=a.drv  gone.drv)"),
       .problems = {Driver("boot", "drivers", "gone.drv"), Driver("drivers32", "a", "gone.drv"),
                    Driver("drivers32", "b", " gone.drv"),
                    "5|section:drivers32|subkey:c|missingfile:"},
       .journal = Lines{"backup " + kSystem, "set entry " + kSystem + " [boot] drivers=a.drv ",
                        "backup " + kSystem, "set entry " + kSystem + " [drivers32] b=a.drv,",
                        "backup " + kSystem, "delete entry " + kSystem + " [drivers32] c"},
       .left = {Driver("drivers32", "a", "gone.drv")}},
  };
  CheckCases<TRCPIniFiles>(rows);
  CheckFaults<TRCPIniFiles>(kEveryKind);
}

// A line that can't be read when it is to be repaired is not overwritten.
TEST(IniFiles, NeverEmptiesWhatItCannotRead) {
  World world({}, WinIni(R"([windows]\nrun=gone.exe)") + SystemIni(R"([boot]\ndrivers=gone.drv)"));
  world.Run<TRCPIniFiles>();
  for (const UnicodeView file : {u"C:\\Windows\\win.ini", u"C:\\Windows\\system.ini"})
    world.Backend().Files().AddFile(file, Bytes(std::size_t{2} << 20));
  EXPECT_EQ(world.CleanAll(), Lines());
  EXPECT_EQ(world.Plugin().FCleanFailures, 2);
}

}  // namespace
}  // namespace scrubwell::test
