#include "plugins/startup/Rcp_inifiles.h"
#include "registry/Stringhelper.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const Abbreviations kShort = {{"{=w}", "backup {w} ; set entry {w} "},
                              {"{-w}", "backup {w} ; delete entry {w} "},
                              {"{=s}", "backup {s} ; set entry {s} "},
                              {"{-s}", "backup {s} ; delete entry {s} "},
                              {"{win}", "{w} | text="},
                              {"{system}", "{s} | text="},
                              {"{w}", "C:\\Windows\\win.ini"},
                              {"{s}", "C:\\Windows\\system.ini"},
                              {"{p}", "|section:windows|value:"},
                              {"{boot}", "|section:boot|subkey:"},
                              {"{d32}", "|section:drivers32|subkey:"},
                              {"{here}", "C:\\a b\\a.exe ; {drv}"},
                              {"{drv}", "C:\\Windows\\System32\\a.drv"}};

TEST(IniFiles, FindsAndCleans) {
  CheckText<TRCPIniFiles>(R"(
      # no files
      # each kind in its order
      + {win}[embedding]\nOld=a,b,C:\\gone.exe,d\n[Extensions]\nold=gone.exe ^.old
        \n[windows]\nLoad=gone1.exe\nRun=gone2.exe
      + {system}[drivers32]\nwave=gone.drv\nmidi=,\n[BOOT]\nscrnsave.exe=C:\\gone.scr
        \ndrivers=gone.drv
      ? 1{p}run{f}gone2.exe ; 1{p}load{f}gone1.exe ; 2|caption:old{f}gone.exe ^.old
      ? 3|caption:Old{f}C:\gone.exe ; 4{boot}drivers{f}gone.drv
      ? 6{boot}SCRNSAVE.EXE{f}C:\gone.scr ; 4{d32}wave{f}gone.drv ; 5{d32}midi{f},
      ! {=w}[windows] run= ; {=w}[windows] load= ; {-w}[extensions] old ; {-w}[embedding] Old
      ! {=s}[boot] drivers= ; {-s}[boot] SCRNSAVE.EXE ; {-s}[drivers32] wave ; {-s}[drivers32] midi
      # healthy, or not to be told
      + {here} ; drive D: removable
      + {win}[windows]\nrun=C:\\a b\\a.exe /s , D:\\gone.exe,,\nload=\n[extensions]
        \na=C:\\a b\\a.exe ^.a\nb=%gone%\\b.exe\nc=\n;d=gone.exe\n[embedding]
        \ntwo=gone.exe,gone.exe\nempty=x,y,,z\nfull=x,y,C:\\a b\\a.exe,z
      + {system}[boot]\ndrivers=a.drv  *gone  a\nSCRNSAVE.EXE=(none)\n[drivers32]
        \na=*gone,a.drv\nb=\\\\server\\b.drv\n[drivers]\nc=gone.drv
      # the other items of a line keep their blanks
      + {here} ; drive D: removable
      + {win}[windows]\nload= C:\\a b\\a.exe , gone.exe\nrun=gone.exe, D:\\b,gone.exe {}
      ? 1{p}run{f}gone.exe ; 1{p}load{f}gone.exe
      ! {=w}[windows] run= D:\b ; {=w}[windows] load=C:\a b\a.exe {}
      # lists of drivers32 are scanned at commas and repaired at blanks
      + {drv} ; {system}[drivers32]\na=a.drv,gone.drv\nb=a.drv, gone.drv\nc=
        \n[boot]\ndrivers=a.drv  gone.drv
      ? 4{boot}drivers{f}gone.drv ; 4{d32}a{f}gone.drv ; 4{d32}b{f} gone.drv ; 5{d32}c{f}
      ! {=s}[boot] drivers=a.drv {} ; {=s}[drivers32] b=a.drv, ; {-s}[drivers32] c
      = 4{d32}a{f}gone.drv)",
                          kShort);
}

// A line that can't be read when it is to be repaired is not overwritten.
TEST(IniFiles, NeverEmptiesWhatItCannotRead) {
  World world({}, ReadCases(R"(# one of each
      + {win}[windows]\nrun=gone.exe ; {system}[boot]\ndrivers=gone.drv)",
                            kShort)[0]
                      .files);
  world.Run<TRCPIniFiles>();
  for (const UnicodeView file : {u"C:\\Windows\\win.ini", u"C:\\Windows\\system.ini"})
    world.Backend().Files().AddFile(file, Bytes(std::size_t{2} << 20));
  EXPECT_EQ(world.CleanAll(), Lines());
  EXPECT_EQ(world.Plugin().FCleanFailures, 2);
}

}  // namespace
}  // namespace scrubwell::test
