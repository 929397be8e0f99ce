#include <gtest/gtest.h>

#include "backends/common/access_check.h"

namespace scrubwell {

namespace {

using enum Status;

constexpr UnicodeView kUser = u"S-1-5-21-1-2-3-1001";
constexpr UnicodeView kAdmins = u"S-1-5-32-544";
constexpr UnicodeView kInstaller =
    u"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464";

struct Case {
  const char* name;
  std::vector<AccessEntry> entries;
  Status canDelete;
  Status canWrite;
};

AccessEntry Allow(UnicodeView sid, std::uint32_t mask, std::uint8_t flags = 0) {
  return {true, flags, mask, UnicodeString(sid)};
}
AccessEntry Deny(UnicodeView sid, std::uint32_t mask) {
  return {false, 0, mask, UnicodeString(sid)};
}
const AccessEntry kRefusal = Deny(u"S-1-1-0", kRightDelete);

const Case kCases[] = {
    {"an empty list allows nothing", {}, Denied, Denied},
    {"administrators", {Allow(kAdmins, kKeyAllAccess)}, Ok, Ok},
    {"generic all", {Allow(kAdmins, 0x10000000U)}, Ok, Ok},
    {"generic write", {Allow(kAdmins, 0x40000000U)}, Denied, Ok},
    {"generic read", {Allow(u"S-1-1-0", 0x80000000U)}, Denied, Denied},
    {"another user", {Allow(u"S-1-5-21-1-2-3-1002", kKeyAllAccess)}, Denied, Denied},
    {"rights add up", {Allow(kUser, 2), Allow(u"S-1-5-11", 4)}, Denied, Ok},
    {"only half of what writing needs", {Allow(kUser, 2)}, Denied, Denied},
    {"the installer's", {Allow(kInstaller, kKeyAllAccess), Allow(kAdmins, 1)}, Denied, Denied},
    {"for what it creates alone", {Allow(kAdmins, kKeyAllAccess, 8)}, Denied, Denied},
    {"creator owner is nobody", {Allow(u"S-1-3-0", kKeyAllAccess)}, Denied, Denied},
    {"a refusal in front", {kRefusal, Allow(kAdmins, kKeyAllAccess)}, Denied, Ok},
    {"a refusal behind comes too late", {Allow(kAdmins, kKeyAllAccess), kRefusal}, Ok, Ok},
};

}  // namespace

TEST(AccessCheck, Lists) {
  for (const Case& test : kCases) {
    const Bytes descriptor = BuildDescriptor(kInstaller, test.entries);
    EXPECT_EQ(CheckDescriptor(descriptor, kUser, Access::Delete), test.canDelete) << test.name;
    EXPECT_EQ(CheckDescriptor(descriptor, kUser, Access::Write), test.canWrite) << test.name;
  }
}

TEST(AccessCheck, NoListAllowsEverything) {
  EXPECT_EQ(CheckDescriptor({}, kUser, Access::Write), Ok);
  Bytes descriptor = BuildDescriptor(kAdmins, {});
  std::fill_n(descriptor.begin() + 16, 4, std::uint8_t{0});
  EXPECT_EQ(CheckDescriptor(descriptor, kUser, Access::Delete), Ok);
}

// Cut at every length and bent at every byte: never out of bounds, and a cut list is never taken
// for an allowing one.
TEST(AccessCheck, DamageIsUnknown) {
  const AccessEntry entries[] = {Deny(kUser, 1), Allow(kInstaller, 1),
                                 Allow(kAdmins, kKeyAllAccess)};
  const Bytes whole = BuildDescriptor(kAdmins, entries);
  for (std::size_t size = 1; size < whole.size(); ++size) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(CheckDescriptor(cut, kUser, Access::Delete), Unknown) << size;
  }
  for (std::size_t at = 0; at < whole.size(); ++at) {
    Bytes bent = whole;
    bent[at] = 0xFF;
    CheckDescriptor(bent, kUser, Access::Delete);
  }
  for (const UnicodeView text : {u"", u"S-1", u"S-2-5-18", u"S-1-5-x", u"S-1-5-4294967296"})
    EXPECT_TRUE(SidFromText(text).empty());
}

}  // namespace scrubwell
