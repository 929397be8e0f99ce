#include "plugins/startup/Rcp_autostart.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const Abbreviations kShort = {{"{P}", "Microsoft\\Windows\\CurrentVersion\\"},
                              {"{u}", "|existingkey:32:HKEY_CURRENT_USER\\Software\\"},
                              {"{a}", "{v}a|caption:a{f}C:\\gone.exe"},
                              {"{=}", " = C:\\gone.exe ; : a = C:\\gone.exe"}};

auto Tasks(const decltype(MemoryTasks::jobs)& jobs, Status connection = Status::Ok) {
  return [=](Case& row) {
    row.setup = [=](World& world) {
      world.Windows().tasks.jobs = jobs;
      world.Windows().tasks.connection = connection;
    };
  };
}

TEST(Autostart, FindsAndCleans) {
  CheckText<TRCPAutostart>(
      R"(
      # nothing there, or no text
      {LM}{P}Run : a = dword:1 ; : b = hex:78,00,79,00
      # every source in its order; default values and other keys are none
      & a lost task
      {LM}{P}Run{=} ; {W}{P}Run{=} ; {S}{P}Run{=} ; {LM}{P}Run-{=} ; {W}{P}Run-{=} ; {S}{P}Run-{=}
      {LM}{P}RunServices{=} ; {W}{P}RunServices{=} ; {S}{P}RunServices{=} ; {LM}{P}RunOnce{=}
      ? 1{32}{P}Run{a} ; 1{64}{P}Run{a} ; 1{32}{P}Run-{a} ; 1{64}{P}Run-{a}
      ? 1{32}{P}RunServices{a} ; 1{64}{P}RunServices{a} ; 1{u}{P}Run{a} ; 1{u}{P}Run-{a}
      ? 2|displayname:ä.b{f}C:\gone.exe|jobfile:Ã¤.b.job
      ! {-Wv}{P}Run "a" ; {-v}{P}Run "a" ; {-Wv}{P}Run- "a" ; {-v}{P}Run- "a"
      ! {-Wv}{P}RunServices "a" ; {-v}{P}RunServices "a" ; {-S}{P}Run "a" ; {-S}{P}Run- "a"
      ! remove task ä.b.job
      # the file of a launcher counts; folders are something, too
      {W}{P}Run : a = rundll32.exe C:\gone.dll,x ; : b = C:\Windows ; : c = E:\gone.exe
      + C:\Windows\System32\rundll32.exe ; drive E: network
      ? 1{32}{P}Run{v}a|caption:a{f}rundll32.exe C:\gone.dll,x
      # one entry of the machine's Run key is never reported
      {W}{P}Run : wbLogon = C:\gone.exe ; {LM}{P}Run : WBLOGON = C:\gone.exe
      {LM}{P}Run- : WBLOGON = C:\gone.exe ; {S}{P}Run : WBLOGON = C:\gone.exe
      ? 1{64}{P}Run-{v}WBLOGON|caption:WBLOGON{f}C:\gone.exe
      ? 1{u}{P}Run{v}WBLOGON|caption:WBLOGON{f}C:\gone.exe
      # tasks that are sound or tell nothing
      & other tasks
      + C:\here.exe ; C:\Windows\System32\bare.exe ; drive D: removable
      # without a scheduler only the registry counts
      & no scheduler
      {S}{P}Run : a = C:\gone.exe
      ? 1{u}{P}Run{a})",
      kShort,
      {{"a lost task", Tasks({{u"\u00E4.b.job", u"C:\\gone.exe"}})},
       {"other tasks", Tasks({{u"1.job", u"\"C:\\here.exe\""},
                              {u"2.job", u"bare"},
                              {u"3.job", u""},
                              {u"4.job", u"D:\\gone.exe"}})},
       {"no scheduler", Tasks({{u"1.job", u"C:\\gone.exe"}}, Status::Unknown)}});
}

}  // namespace
}  // namespace scrubwell::test
