#include "plugins/system/Rcp_firewall.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

auto Entries(const std::vector<FirewallApplication>& applications,
             bool removesDisabledOnly = false) {
  return [=](Case& row) {
    row.setup = [=](World& world) {
      world.Windows().services.services[u"MpsSvc"].state = 4;
      world.Windows().firewall.applications = applications;
      world.Windows().firewall.removesDisabledOnly = removesDisabledOnly;
    };
  };
}

TEST(Firewall, FindsAndRemoves) {
  CheckText<TRCPFirewall>(
      R"(
      # healthy, or not to be told
      & others
      + C:\x\here.exe ; C:\Windows\SysWOW64\only32.exe ; drive E: network
      # missing programs, switched off or not
      & lost
      ? 1|displayname:A: 32{f}C:\x\gone.exe|imagefile:C:\x\gone.exe
      ? 1|displayname:{f}%windir%\gone.exe|imagefile:%windir%\gone.exe
      ! remove firewall C:\x\gone.exe ; remove firewall %windir%\gone.exe
      # only what is switched off can be removed
      & stubborn
      ? 1|displayname:A{f}C:\gone.exe|imagefile:C:\gone.exe
      ! disable firewall C:\gone.exe ; remove firewall C:\gone.exe)",
      {},
      {{"others", Entries({{u"A", u"C:\\x\\here.exe", true},
                           {u"B", u"%windir%\\System32\\only32.exe", true},
                           {u"C", u"E:\\gone.exe", true},
                           {u"F", u"", true},
                           {u"G", u"C:\\x", true},
                           {u"H", u"SYSTEM", true}})},
       {"lost",
        Entries({{u"A: 32", u"C:\\x\\gone.exe", true}, {u"", u"%windir%\\gone.exe", false}})},
       {"stubborn", Entries({{u"A", u"C:\\gone.exe", true}}, true)}});
}

TEST(Firewall, AsksTheServiceOnce) {
  const struct {
    UnicodeView service;
    std::uint32_t state;
    OsVersion version;
    bool isAdmin;
    Status connection;
    std::size_t found;
  } rows[] = {
      {u"MpsSvc", 4, OsVersion::Vista, true, Status::Ok, 1},
      {u"MpsSvc", 1, OsVersion::Win10, true, Status::Ok, 0},
      {u"SharedAccess", 4, OsVersion::Vista, true, Status::Ok, 0},
      {u"SharedAccess", 4, OsVersion::WinXP, true, Status::Ok, 1},
      {u"MpsSvc", 4, OsVersion::WinXP, true, Status::Ok, 0},
      {u"MpsSvc", 4, OsVersion::Win10, false, Status::Ok, 0},
      {u"MpsSvc", 4, OsVersion::Win10, true, Status::Denied, 0},
  };
  for (const auto& row : rows) {
    World world({}, {}, {.version = row.version, .isAdmin = row.isAdmin});
    world.Windows().services.services[UnicodeString(row.service)].state = row.state;
    world.Windows().firewall.applications = {{u"Gone", u"C:\\x\\gone.exe", true}};
    world.Windows().firewall.connection = row.connection;
    EXPECT_EQ(world.Run<TRCPFirewall>().size(), row.found);
    EXPECT_EQ(world.Plugin().FState, rcpScanned);
  }
}

}  // namespace
}  // namespace scrubwell::test
