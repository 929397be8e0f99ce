#include <gtest/gtest.h>

#include "formats/regf/editor.h"
#include "formats/regf/hive_samples.h"

namespace scrubwell::regf {
namespace {

/// With a field of the entry that begins there set, and the entry's sums right again.
Bytes WithEntry(Bytes log, std::size_t entry, std::size_t field, std::uint32_t value) {
  Put32(log, entry + field, value);
  SignEntry(std::span(log).subspan(entry));
  return log;
}

Bytes Flipped(Bytes log, std::size_t at) {
  log[at] ^= 1;
  return log;
}

Bytes Cut(Bytes log, std::size_t size) {
  log.resize(log.size() - size);
  return log;
}

struct LogRow {
  const char* what;
  Bytes hive;
  std::vector<Bytes> logs;
  std::uint32_t applied;  ///< log entries; none means stale
  std::uint32_t state;    ///< what the hive then says
};

TEST(HiveLogs, AreAppliedAsFarAsTheyAreSound) {
  const Bytes dirty = DirtyPrimary();
  const Bytes two = NewLog({0, 1}), three = NewLog({0, 1, 2}), old = OldLog();
  const std::size_t second = two.size() - MakeEntry(1).size();
  const Bytes later = With(With(dirty, base::Primary, First + 2), base::Secondary, First + 1);
  const LogRow rows[] = {
      {"no log", dirty, {}, 0, 0},
      {"one log", dirty, {three}, 3, 3},
      {"two logs", dirty, {two, NewLog({2})}, 3, 3},
      {"second log older", dirty, {NewLog({1, 2}), NewLog({0})}, 3, 3},
      {"the same entry in both", dirty, {two, NewLog({1})}, 2, 2},
      {"gap between the logs", dirty, {NewLog({0}), NewLog({2})}, 1, 1},
      {"gap inside a log", dirty, {NewLog({0, 2})}, 1, 1},
      {"begins after the hive", dirty, {NewLog({1, 2})}, 0, 0},
      {"entries of an earlier round", later, {three}, 2, 3},
      {"last entry cut", dirty, {Cut(three, SectorSize)}, 2, 2},
      {"wrong hash of the second body", dirty, {Flipped(two, two.size() - 1)}, 1, 1},
      {"wrong hash of the first head", dirty, {Flipped(two, SectorSize + 8)}, 0, 0},
      {"page outside the bins", dirty, {WithEntry(two, second, 40, 0xFFFFF000U)}, 1, 1},
      {"bins of two gigabytes", dirty, {WithEntry(two, SectorSize, 16, 0x7FFFF000U)}, 0, 0},
      {"base block lost", Flipped(dirty, base::Root), {three}, 3, 3},
      {"clean hive ignores its log", State(0), {three}, 0, 0},
      {"old log", dirty, {old}, 1, 3},
      {"old log of another time", dirty, {With(old, base::Time, 1)}, 0, 0},
      {"old log with unequal sequences", dirty, {With(old, base::Secondary, 1)}, 0, 0},
      {"old log cut", dirty, {Cut(old, 1)}, 0, 0},
      {"old log, base block lost", Flipped(dirty, base::Time), {old}, 1, 3},
  };
  for (const LogRow& row : rows) {
    SCOPED_TRACE(row.what);
    const bool clean = Get32(row.hive, base::Primary) == Get32(row.hive, base::Secondary);
    const OpenedHive opened = Hive::FromBytes(row.hive, "hive", row.logs);
    ASSERT_TRUE(opened.hive) << opened.error;
    const HiveFacts& facts = opened.hive->Facts();
    EXPECT_EQ(facts.logEntriesApplied, row.applied);
    EXPECT_EQ(facts.replayed, row.applied > 0);
    EXPECT_EQ(facts.stale, row.applied == 0 && !clean);
    EXPECT_EQ(DumpTree(*opened.hive), DumpTree(*Hive::FromBytes(State(row.state), "").hive));
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
  bool replayed = false, stale = false;
  std::size_t keys = 0, values = 0;  ///< 0: compared with another reader elsewhere
};

// The dirty user hive has 2,590 keys and 4,119 values in its file alone.
constexpr RealRow RealHives[] = {{"winxp-NTUSER.DAT"},
                                 {"win7-NTUSER.DAT"},
                                 {"win7-SYSTEM"},
                                 {"win10-UsrClass.dat", false, true},
                                 {"win10-dirty-NTUSER.DAT", true, false, 3105, 4695},
                                 {"corrupt_sub_key_list.hiv", false, false, 100, 99}};

TEST(HiveReader, RealHivesAreReadWhole) {
  const std::string data = test::SharedData();
  if (data.empty()) return;
  const test::TempFolder folder;
  OutputOf("cd '" + data + "/hives' && for f in *.xz; do xz -dc $f > '" + folder.Path().string() +
           "'/${f%.xz}; done");
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
    if (row.keys == 0) continue;
    EXPECT_EQ(keys, row.keys);
    EXPECT_EQ(values, row.values);
  }
}

}  // namespace
}  // namespace scrubwell::regf
