#include <gtest/gtest.h>

#include "backends/memory/memory_backend.h"
#include "backends/offline/offline_services.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr std::string_view kPolicy =
    R"([HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\SharedAccess\Parameters\FirewallPolicy)";

TEST(OfflineFirewall, ListsAndRemovesThroughTheRegistry) {
  MemoryBackend backend;
  const std::string policy(kPolicy);
  ASSERT_EQ(backend.AddRegistry(policy + R"(\StandardProfile\AuthorizedApplications\List]
"C:\\old.exe"="C:\\old.exe:*:Disabled:@res.dll,-7"
)" + policy + R"(\DomainProfile\AuthorizedApplications\List]
"C:\\domain.exe"="C:\\domain.exe:*:Enabled:Domain"
)" + policy + R"(\FirewallRules]
"1"="v2.10|Action=Allow|Dir=In|Protocol=6|App=%SystemRoot%\\a.exe|Name=@%SystemRoot%\\b.dll,-1|"
"2"="v2.10|Action=Allow|Dir=In|Protocol=17|App=C:\\WINDOWS\\A.EXE|Name=A|"
"3"="v2.10|Action=Allow|Dir=In|App=C:\\new.exe|Name=A, 5|"
"4"="v2.10|Action=Block|Dir=In|App=C:\\new.exe|Name=B|"
"5"=dword:1
)"),
            "");
  backend.World().resources.strings[u"C:\\Windows\\System32\\res.dll"][7] = u"The old one";
  Installation installation;
  installation.systemRoot = u"C:\\Windows";
  OfflineSystem system(backend.Registry(), installation, nullptr);
  OfflineFirewall firewall(backend.Registry(), system, backend.World().resources);
  const auto list = [&firewall] {
    std::vector<FirewallApplication> applications;
    EXPECT_EQ(firewall.Applications(applications), Status::Ok);
    std::string text;
    for (const auto& each : applications) text += ToUtf8(each.imageFile + u"|" + each.name + u"\n");
    return text;
  };
  const std::string others = "C:\\old.exe|The old one\n";
  EXPECT_EQ(list(), others + "C:\\Windows\\a.exe|@%SystemRoot%\\b.dll,-1\nC:\\new.exe|A, 5\n");

  EXPECT_EQ(firewall.Remove(u"c:\\windows\\a.exe"), Status::Ok);
  EXPECT_EQ(firewall.Remove(u"c:\\windows\\a.exe"), Status::Absent);
  EXPECT_EQ(firewall.Remove(u"C:\\new.exe"), Status::Ok);
  EXPECT_EQ(firewall.Remove(u"C:\\domain.exe"), Status::Absent);
  EXPECT_EQ(list(), others);
  EXPECT_EQ(backend.Journal().size(), 3U);

  backend.BreakKey(
      u"HKLM\\SYSTEM\\ControlSet001\\Services\\SharedAccess\\Parameters\\"
      u"FirewallPolicy\\FirewallRules",
      Status::Denied);
  std::vector<FirewallApplication> applications;
  EXPECT_EQ(firewall.Applications(applications), Status::Denied);
  EXPECT_EQ(firewall.Remove(u"C:\\old.exe"), Status::Denied);
}

}  // namespace
}  // namespace scrubwell::offline
