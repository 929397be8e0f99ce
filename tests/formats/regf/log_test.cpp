#include <gtest/gtest.h>

#include "formats/regf/hive_samples.h"

namespace scrubwell::regf {
namespace {

struct Disk {
  Bytes hive;
  std::vector<Bytes> logs;
};

struct LogRow {
  const char* what;
  Disk (*disk)();
  std::uint32_t applied;  ///< log entries; none means stale
  std::uint32_t state;    ///< what the hive then says
};

const LogRow Rows[] = {
    {"no log",
     [] {
       return Disk{DirtyPrimary(), {}};
     },
     0, 0},
    {"one log",
     [] {
       return Disk{DirtyPrimary(), {NewLog({0, 1, 2})}};
     },
     3, 3},
    {"two logs",
     [] {
       return Disk{DirtyPrimary(), {NewLog({0, 1}), NewLog({2})}};
     },
     3, 3},
    {"second log older",
     [] {
       return Disk{DirtyPrimary(), {NewLog({1, 2}), NewLog({0})}};
     },
     3, 3},
    {"the same entry in both",
     [] {
       return Disk{DirtyPrimary(), {NewLog({0, 1}), NewLog({1})}};
     },
     2, 2},
    {"gap between the logs",
     [] {
       return Disk{DirtyPrimary(), {NewLog({0}), NewLog({2})}};
     },
     1, 1},
    {"gap inside a log",
     [] {
       return Disk{DirtyPrimary(), {NewLog({0, 2})}};
     },
     1, 1},
    {"begins after the hive",
     [] {
       return Disk{DirtyPrimary(), {NewLog({1, 2})}};
     },
     0, 0},
    {"entries of an earlier round",
     [] {
       Disk disk{DirtyPrimary(), {NewLog({0, 1, 2})}};
       Put32(disk.hive, base::Primary, First + 2);
       Put32(disk.hive, base::Secondary, First + 1);
       SignBase(disk.hive);
       return disk;
     },
     2, 3},
    {"last entry cut",
     [] {
       Disk disk{DirtyPrimary(), {NewLog({0, 1, 2})}};
       disk.logs[0].resize(disk.logs[0].size() - SectorSize);
       return disk;
     },
     2, 2},
    {"wrong hash of the second body",
     [] {
       Disk disk{DirtyPrimary(), {NewLog({0, 1})}};
       disk.logs[0].back() ^= 1;
       return disk;
     },
     1, 1},
    {"wrong hash of the first head",
     [] {
       Disk disk{DirtyPrimary(), {NewLog({0})}};
       disk.logs[0][SectorSize + 8] ^= 1;
       return disk;
     },
     0, 0},
    {"page outside the bins, rightly signed",
     [] {
       Disk disk{DirtyPrimary(), {NewLog({0, 1})}};
       const std::size_t second = disk.logs[0].size() - MakeEntry(1).size();
       Put32(disk.logs[0], second + 40, 0xFFFFF000U);
       SignEntry(std::span(disk.logs[0]).subspan(second));
       return disk;
     },
     1, 1},
    {"bins of two gigabytes, rightly signed",
     [] {
       Disk disk{DirtyPrimary(), {NewLog({0})}};
       Put32(disk.logs[0], SectorSize + 16, 0x7FFFF000U);
       SignEntry(std::span(disk.logs[0]).subspan(SectorSize));
       return disk;
     },
     0, 0},
    {"base block lost, taken from the log",
     [] {
       Disk disk{DirtyPrimary(), {NewLog({0, 1, 2})}};
       Put32(disk.hive, base::Root, 0x12345678);
       return disk;
     },
     3, 3},
    {"clean hive ignores its log",
     [] {
       return Disk{State(0), {NewLog({0, 1, 2})}};
     },
     0, 0},
    {"old log",
     [] {
       return Disk{DirtyPrimary(), {OldLog()}};
     },
     1, 3},
    {"old log of another time",
     [] {
       Disk disk{DirtyPrimary(), {OldLog()}};
       Put32(disk.logs[0], base::Time, 1);
       SignBase(disk.logs[0]);
       return disk;
     },
     0, 0},
    {"old log with unequal sequences",
     [] {
       Disk disk{DirtyPrimary(), {OldLog()}};
       Put32(disk.logs[0], base::Secondary, 1);
       SignBase(disk.logs[0]);
       return disk;
     },
     0, 0},
    {"old log cut",
     [] {
       Disk disk{DirtyPrimary(), {OldLog()}};
       disk.logs[0].resize(disk.logs[0].size() - 1);
       return disk;
     },
     0, 0},
    {"old log, base block lost",
     [] {
       Disk disk{DirtyPrimary(), {OldLog()}};
       Put32(disk.hive, base::Time, 1);
       return disk;
     },
     1, 3},
};

TEST(HiveLogs, AreAppliedAsFarAsTheyAreSound) {
  for (const LogRow& row : Rows) {
    SCOPED_TRACE(row.what);
    const Disk disk = row.disk();
    const bool clean = Get32(disk.hive, base::Primary) == Get32(disk.hive, base::Secondary);
    const OpenedHive opened = Hive::FromBytes(disk.hive, "hive", disk.logs);
    ASSERT_TRUE(opened.hive) << opened.error;
    const HiveFacts& facts = opened.hive->Facts();
    EXPECT_EQ(facts.logEntriesApplied, row.applied);
    EXPECT_EQ(facts.replayed, row.applied > 0);
    EXPECT_EQ(facts.stale, row.applied == 0 && !clean);
    EXPECT_EQ(Dump(*opened.hive), Dump(*Hive::FromBytes(State(row.state), "wanted").hive));
    EXPECT_TRUE(ChecksumRight(opened.hive->Image()));
  }
}

TEST(HiveLogs, HashIsTheSystems) {
  EXPECT_EQ(LogHash({}), 0xB39EFCA403966E08U);
  constexpr std::string_view text = "registry hive";  // not a multiple of four
  EXPECT_EQ(LogHash(Bytes(text.begin(), text.end())), 0x09E37EA146DFBB28U);
}

struct RealRow {
  const char* file;
  bool replayed, stale;
  std::size_t keys, values;  ///< 0: what hivexml counts
};

// The dirty user hive has 2,590 keys and 4,119 values in its file alone.
constexpr RealRow RealHives[] = {{"winxp-NTUSER.DAT", false, false, 0, 0},
                                 {"win7-NTUSER.DAT", false, false, 0, 0},
                                 {"win7-SYSTEM", false, false, 0, 0},
                                 {"win81-UsrClass.dat", false, false, 0, 0},
                                 {"winme-SOFTWARE", false, false, 0, 0},
                                 {"100_sub_keys.hiv", false, false, 0, 0},
                                 {"win10-UsrClass.dat", false, true, 0, 0},
                                 {"win10-dirty-NTUSER.DAT", true, false, 3105, 4695},
                                 {"corrupt_sub_key_list.hiv", false, false, 100, 99}};

std::size_t CountIn(const std::string& path, const char* element) {
  return std::stoul(OutputOf("hivexml '" + path + "' | grep -o '<" + element + " ' | wc -l"));
}

TEST(HiveReader, RealHivesAreReadWhole) {
  const char* data = std::getenv("SCRUBWELL_DATA");
  if (data == nullptr) {
    std::puts("SCRUBWELL_DATA is not set: no real hives are read");
    return;
  }
  const bool witness = !OutputOf("command -v hivexml").empty();
  const TempFolder folder;
  OutputOf("cd '" + std::string(data) + "/hives' && for f in *.xz; do xz -dc $f > '" +
           folder.Path().string() + "'/${f%.xz}; done");
  for (const RealRow& row : RealHives) {
    SCOPED_TRACE(row.file);
    const std::string path = (folder.Path() / row.file).string();
    const OpenedHive opened = Hive::Open(path, {path + ".LOG", path + ".LOG2", path + ".LOG1"});
    ASSERT_TRUE(opened.hive) << opened.error;
    const Hive& hive = *opened.hive;
    EXPECT_EQ(hive.Facts().replayed, row.replayed);
    EXPECT_EQ(hive.Facts().stale, row.stale);
    std::size_t keys = 0, values = 0, lost = 0;
    const Status walk = hive.Walk(hive.Root(), [&](const Subkey& subkey, int) {
      std::vector<RegValue> read;
      CellOffset found = subkey.key;
      lost += hive.Values(subkey.key, read) != Status::Ok;
      if (subkey.key != hive.Root()) {
        hive.Child(subkey.facts.parent, LowerCase(subkey.facts.name.Text()), found);
      }
      lost += found != subkey.key;
      ++keys;
      values += read.size();
    });
    const bool damaged = std::string_view(row.file).starts_with("corrupt");
    EXPECT_EQ(walk, damaged ? Status::Corrupt : Status::Ok);
    EXPECT_EQ(lost, 0U);
    if (row.keys == 0 && !witness) continue;
    EXPECT_EQ(keys, row.keys != 0 ? row.keys : CountIn(path, "node"));
    EXPECT_EQ(values, row.keys != 0 ? row.values : CountIn(path, "value"));
  }
}

}  // namespace
}  // namespace scrubwell::regf
