#include <gtest/gtest.h>

#include "plugins/system/Rcp_firewall.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

std::string Problem(const std::string& name, const std::string& file) {
  return "1|displayname:" + name + "|missingfile:" + file + "|imagefile:" + file;
}

auto Running(const std::vector<FirewallApplication>& applications) {
  return [=](World& world) {
    world.Windows().services.services[u"MpsSvc"].state = 4;
    world.Windows().firewall.applications = applications;
  };
}

TEST(Firewall, AsksTheServiceOnce) {
  const struct {
    UnicodeView service;
    std::uint32_t state;
    OsVersion version;
    bool isAdmin;
    Status connection;
    bool found;
  } rows[] = {
      {u"MpsSvc", 4, OsVersion::Vista, true, Status::Ok, true},
      {u"MpsSvc", 1, OsVersion::Win10, true, Status::Ok, false},
      {u"SharedAccess", 4, OsVersion::Vista, true, Status::Ok, false},
      {u"SharedAccess", 4, OsVersion::WinXP, true, Status::Ok, true},
      {u"MpsSvc", 4, OsVersion::WinXP, true, Status::Ok, false},
      {u"MpsSvc", 4, OsVersion::Win10, false, Status::Ok, false},
      {u"MpsSvc", 4, OsVersion::Win10, true, Status::Denied, false},
  };
  for (const auto& row : rows) {
    World world({}, {}, {.version = row.version, .isAdmin = row.isAdmin});
    world.Windows().services.services[UnicodeString(row.service)].state = row.state;
    world.Windows().firewall.applications = {{u"Gone", u"C:\\x\\gone.exe", true}};
    world.Windows().firewall.connection = row.connection;
    auto& plugin = world.Create<TRCPFirewall>();
    EXPECT_EQ(plugin.FState, rcpInited);
    const Lines none;
    EXPECT_EQ(world.Scan(), row.found ? Lines{Problem("Gone", "C:\\x\\gone.exe")} : none);
    EXPECT_EQ(plugin.FState, rcpScanned);
    EXPECT_TRUE(plugin.FScanItemCount == 1 && plugin.ScanWeight == 12);
  }
}

TEST(Firewall, FindsAndRemoves) {
  const Case rows[] = {
      {.name = "healthy, or not to be told",
       .files = "C:\\x\\here.exe\nC:\\Windows\\SysWOW64\\only32.exe\ndrive E: network",
       .setup = Running({{u"A", u"C:\\x\\here.exe", true},
                         {u"B", u"%windir%\\System32\\only32.exe", true},
                         {u"C", u"E:\\gone.exe", true},
                         {u"F", u"", true},
                         {u"G", u"C:\\x", true},
                         {u"H", u"SYSTEM", true}})},
      {.name = "missing programs, switched off or not",
       .problems = {Problem("A: 32", "C:\\x\\gone.exe"), Problem("", "%windir%\\gone.exe")},
       .journal = Lines{"remove firewall C:\\x\\gone.exe", "remove firewall %windir%\\gone.exe"},
       .setup =
           Running({{u"A: 32", u"C:\\x\\gone.exe", true}, {u"", u"%windir%\\gone.exe", false}})},
      {.name = "only what is switched off can be removed",
       .problems = {Problem("A", "C:\\gone.exe")},
       .journal = Lines{"disable firewall C:\\gone.exe", "remove firewall C:\\gone.exe"},
       .setup =
           [](World& world) {
             Running({{u"A", u"C:\\gone.exe", true}})(world);
             world.Windows().firewall.removesDisabledOnly = true;
           }},
  };
  CheckCases<TRCPFirewall>(rows);
  CheckFaults<TRCPFirewall>(rows[1]);
}

}  // namespace
}  // namespace scrubwell::test
