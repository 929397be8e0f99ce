#include "plugins/software/Rcp_uninstall.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const Abbreviations kShort = {
    {"{K}", "Microsoft\\Windows\\CurrentVersion\\Uninstall\\"},
    {"{C}", "Microsoft\\Windows\\CurrentVersion\\App Management\\ARPCache\\"},
    {"{s}", "{c}C:\\p q\\setup.exe ; : InstallSource = "},
    {"{x}", " : x = {}"},
    {"{c}", " : UninstallString = "}};

TEST(Uninstall, FindsAndCleans) {
  CheckText<TRCPUninstall>(R"(
      # nothing is missing
      {LM}{K}a{c}"C:\p q\unins000.exe" /SILENT ; {LM}{K}b{c}C:\p q\UNWISE.EXE C:\p q\INSTALL.LOG
      {LM}{K}c{c}MsiExec.exe /X{0F22C794-89DE-4F31-9479-827E3385CDAE} ; {LM}{K}d{c}D:\gone.exe
      {LM}{K}e{c}dword:1 ; {LM}{K}f : NoRemove = dword:1 ; {LM}{K}g : WindowsInstaller = dword:1
      {LM}{K}h : WindowsInstaller = 0 ; {LM}{K}i : SystemComponent = dword:0
      {LM}{K}j : QuietUninstallString = C:\p q\setup.exe ; {LM}{K}AddressBook ; {W}{K}AddressBook
      {LM}{C}a ; {LM}{C}{gone} ; {W}{C}B
      + C:\p q\setup.exe ; C:\p q\unins000.exe ; C:\p q\unins000.dat ; C:\p q\UNWISE.EXE
      + C:\p q\INSTALL.LOG ; C:\Windows\System32\msiexec.exe ; drive D: removable
      # installation sources that are there, or not to be told
      {LM}{K}1{s}C:\p q\media\ ; {LM}{K}2{s}"C:\p q\media" ; {LM}{K}3{s}C:\p q\setup.exe
      {LM}{K}4{s}D:\ ; {LM}{K}5{s}media ; {LM}{K}6{s}%ProgramFiles%\wide ; {LM}{K}7{s}.
      + C:\p q\setup.exe ; C:\p q\media\ ; C:\Program Files\wide\ ; drive D: removable
      # entries that are never looked at
      {LM}{K}InstallShield Uninstall Information{x} ; {LM}{K}{0F22C794-89DE-4F31-9479-827E3385CDAE}{x}
      {LM}{K}{fbccf9ce-61ee-425e-be4d-959d76fa7701}{x} ; {LM}{K}cineplayer.EXE{x} ; {LM}{K}MYST v{x}
      {LM}{K}{FDAE2B3E-E3A8-42FF-AF6F-0AF4C59AE2CC}{x} ; {LM}{K}SilverFast UScan-SE{x}
      {LM}{K}{4AA5742C-2B17-4289-A502-CB2EE0971CFF}{x} ; {LM}{K}Agnitum Outpost 2{x}
      {LM}{K}{2D5D9603-22CF-4B99-83F6-0CD20330F62E}{x}
      # what an entry can lack; small letters are no exception
      & 32-bit
      {LM}{K}a{c}C:\p\gone.exe ; {LM}{K}a : InstallSource = dword:1 ; {LM}{K}b{c}"C:\p\gone.exe"
      {LM}{K}c{c}"C:\p\gone.exe" /x ; {LM}{K}d : QuietUninstallString = C:\p\gone.exe
      {LM}{K}d : DisplayName =  {} ; : QuietDisplayName =  Q {}
      {LM}{K}e{c}C:\p q\UNWISE.EXE C:\p q\gone.log ; {LM}{K}f{c}RunDll32 C:\p\gone.dll,LaunchSetup x
      {LM}{K}g : DisplayName = App ; : NoRemove = dword:0 ; {LM}{K}h : NoRemove = 1
      {LM}{K}outpost : x = {}
      + C:\p q\UNWISE.EXE ; C:\Windows\System32\rundll32.exe
      ? 1{32}{K}a|caption:a{f}C:\p\gone.exe ; 1{32}{K}b|caption:b{f}C:\p\gone.exe
      ? 1{32}{K}c|caption:c{f}"C:\p\gone.exe" /x ; 1{32}{K}d|caption: Q {f}C:\p\gone.exe
      ? 2{32}{K}e|caption:e{f}C:\p q\UNWISE.EXE C:\p q\gone.log
      ? 2{32}{K}f|caption:f{f}RunDll32 C:\p\gone.dll,LaunchSetup x
      ? 3{32}{K}g|caption:App ; 3{32}{K}h|caption:h ; 3{32}{K}outpost|caption:outpost
      ! {-k}{K}a ; {-k}{K}b ; {-k}{K}c ; {-k}{K}d ; {-k}{K}e ; {-k}{K}f ; {-k}{K}g ; {-k}{K}h
      ! {-k}{K}outpost
      # source, of an installer package too
      & 32-bit
      {LM}{K}a : WindowsInstaller = dword:1 ; {LM}{K}a{c}C:\p\gone.exe
      {LM}{K}a : InstallSource = C:\no\ ; {LM}{K}b : WindowsInstaller = dword:1
      {LM}{K}b : InstallSource = C:\no
      ? 5{32}{K}a|caption:a{f}C:\no\
      ! {-v}{K}a "InstallSource"
      # both views; one entry with two problems
      {LM}{K}a{c}C:\p\gone.exe ; {LM}{K}a : InstallSource = "C:\no" ; {W}{K}a : x = {}
      ? 3{32}{K}a|caption:a ; 1{64}{K}a|caption:a{f}C:\p\gone.exe ; 5{64}{K}a|caption:a{f}C:\no
      ! {-Wk}{K}a ; {-k}{K}a
      # cache of either view
      {LM}{C}a ; {LM}{C}b ; {W}{C}b ; {LM}{K}a : NoRemove = dword:1
      ? 4|caption:b{32}{C}b ; 4|caption:b{64}{C}b
      ! {-Wk}{C}b ; {-k}{C}b
      # no cache on old systems
      & Windows NT 4
      {LM}{C}b)",
                           kShort,
                           {{"Windows NT 4", [](Case& row) {
                               row.options = {.is64Bit = false, .version = OsVersion::WinNT4};
                             }}});
}

}  // namespace
}  // namespace scrubwell::test
