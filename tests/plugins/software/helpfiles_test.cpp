#include "plugins/software/Rcp_helpfiles.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

TEST(HelpFiles, FindsAndCleans) {
  CheckText<TRCPHelpFiles>(
      R"(
      # healthy, or not to be told
      {LM}{K} = C:\h ; : a.hlp = C:\h ; : b c.hlp = C:\h\ ; : only32.hlp = C:\Windows\System32
      {LM}{K} : gone.hlp = D:\h ; : num.hlp = dword:1
      + C:\h\a.hlp ; C:\h\b c.hlp ; C:\Windows\SysWOW64\only32.hlp ; drive D: cdrom
      # all four lists in their order
      {LM}{H} : gone.hlp = C:\h ; {W}{H} : gone.hlp = C:\h ; {LM}{K} : gone.hlp = C:\h
      {W}{K} : gone.hlp = C:\h
      ? 1{32}{K}{v}gone.hlp{f}C:\h\gone.hlp ; 1{64}{K}{v}gone.hlp{f}C:\h\gone.hlp
      ? 2{32}{H}{v}gone.hlp{f}C:\h\gone.hlp ; 2{64}{H}{v}gone.hlp{f}C:\h\gone.hlp
      ! {-Wv}{K} "gone.hlp" ; {-v}{K} "gone.hlp" ; {-Wv}{H} "gone.hlp" ; {-v}{H} "gone.hlp"
      # empty files, with and without a backslash
      & 32-bit
      {LM}{K} : nil.hlp = C:\h\ ; {LM}{H} : nil.chm = C:\h
      + C:\h\nil.hlp | size=0 ; C:\h\nil.chm | size=0
      ? 3{32}{K}{v}nil.hlp|existingfile:C:\h\nil.hlp ; 3{32}{H}{v}nil.chm|existingfile:C:\h\nil.chm
      ! {-v}{K} "nil.hlp" ; {-v}{H} "nil.chm")",
      {{"{K}", "Microsoft\\Windows\\Help"}, {"{H}", "Microsoft\\Windows\\HTML Help"}});
}

}  // namespace
}  // namespace scrubwell::test
