#include "plugins/software/Rcp_sharedfiles.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

TEST(SharedFiles, FindsAndCleans) {
  CheckText<TRCPSharedFiles>(R"(
      # both views, each its own problem
      {W}{K} : C:\x\gone.dll = dword:1 ; : C:\x\here.dll = dword:0
      {LM}{K} : C:\x\gone.dll = dword:1
      + C:\x\here.dll
      ? 1{32}{K}{v}C:\x\gone.dll{f}C:\x\gone.dll ; 1{64}{K}{v}C:\x\gone.dll{f}C:\x\gone.dll
      ! {-Wv}{K} "C:\x\gone.dll" ; {-v}{K} "C:\x\gone.dll"
      # one view on a 32-bit system
      & 32-bit
      {LM}{K} : C:\x\gone.dll = dword:1
      ? 1{32}{K}{v}C:\x\gone.dll{f}C:\x\gone.dll
      ! {-v}{K} "C:\x\gone.dll"
      # a drive that proves nothing, and a text that is no path
      {W}{K} : D:\gone.dll = dword:1 ; {W}{K} = C:\gone.dll
      + drive D: removable
      # a variable, and a file that only one system folder holds
      {W}{K} : %SystemRoot%\gone.dll = dword:1 ; : C:\Windows\System32\only32.dll = dword:1
      + C:\Windows\SysWOW64\only32.dll
      ? 1{32}{K}{v}%SystemRoot%\gone.dll{f}%SystemRoot%\gone.dll
      # a list that can't be written
      & deny-write HKLM\SOFTWARE\Wow6432Node\{K}
      {W}{K} : C:\x\gone.dll = dword:1 ; {LM}{K} : C:\x\gone.dll = dword:1
      ? 1{64}{K}{v}C:\x\gone.dll{f}C:\x\gone.dll)",
                             {{"{K}", "Microsoft\\Windows\\CurrentVersion\\SharedDLLs"}});
}

}  // namespace
}  // namespace scrubwell::test
