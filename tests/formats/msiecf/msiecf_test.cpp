#include <gtest/gtest.h>

#include "formats/msiecf/msiecf_samples.h"
#include "support/disk.h"

namespace scrubwell::msiecf {
namespace {

using enum Status;

std::vector<std::string> Locations(const Bytes& file) {
  std::vector<UrlRecord> records;
  EXPECT_EQ(ReadUrls(file, records), Ok);
  std::vector<std::string> out;
  for (const UrlRecord& record : records) out.push_back(record.location);
  return out;
}

using Texts = std::vector<std::string>;

TEST(Msiecf, ErasesOneWholeRecord) {
  Bytes file = BuildFile({"Visited: a@x", "Visited: \xE4@y", "Visited: a@z"});
  EXPECT_EQ(Locations(file), (Texts{"Visited: a@x", "Visited: \xE4@y", "Visited: a@z"}));
  EXPECT_EQ(EraseRecord(file, "Visited: a@"), Absent);
  ASSERT_EQ(EraseRecord(file, "Visited: \xE4@y"), Ok);
  EXPECT_EQ(Locations(file), (Texts{"Visited: a@x", "Visited: a@z"}));

  Bytes expected = BuildFile({"Visited: a@x", "Visited: \xE4@y", "Visited: a@z"});
  std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(Record(1)), 256, std::uint8_t{0});
  Set(expected, HashItem(1), 1), Set(expected, HashItem(1) + 4, 1);
  Set(expected, 40, kTableBlocks + 4);
  expected[0x254] = 0x33;
  EXPECT_EQ(file, expected);
  EXPECT_EQ(EraseRecord(file, "Visited: \xE4@y"), Absent);
}

TEST(Msiecf, ChangesNothingInDoubt) {
  const struct {
    const char* name;
    std::size_t at, value, size;
    Status erase, read;
  } kRows[] = {
      {"older version", 25, '4', 1, Unknown, Unknown},
      {"no signature", 0, 0, 1, Corrupt, Corrupt},
      {"longer than the file", 28, 0x10000, 4, Corrupt, Corrupt},
      {"table outside", 32, 0x100000, 4, Corrupt, Corrupt},
      {"table off the blocks", 32, 0x4001, 4, Corrupt, Corrupt},
      {"tables in a ring", kTable + 8, kTable, 4, Corrupt, Corrupt},
      {"no blocks at all", 36, 0, 4, Corrupt, Corrupt},
      {"endless cache folders", 72, 0xFFFA0000, 4, Corrupt, Corrupt},
      {"record in the header", 5760, 0x48534148, 4, Corrupt, Corrupt},
      {"cached file", Record(0) + 60, 110, 4, Denied, Ok},
      {"foreign block", 0x254, 0x0D, 1, Corrupt, Ok},
      {"count too small", 40, 1, 4, Corrupt, Ok},
      {"record too long", Record(0) + 4, 1000, 4, Absent, Ok},
      {"location outside", Record(0) + 52, 0xFFFFFF, 4, Absent, Ok},
      {"freed before", 0x254, 0x0C, 1, Absent, Ok},
  };
  for (const auto& row : kRows) {
    Bytes file = BuildFile({"Visited: a@x", "Visited: a@y"});
    Set(file, row.at, row.value, row.size);
    const Bytes before = file;
    EXPECT_EQ(EraseRecord(file, "Visited: a@x"), row.erase) << row.name;
    EXPECT_EQ(file, before) << row.name;
    std::vector<UrlRecord> records;
    EXPECT_EQ(ReadUrls(file, records), row.read) << row.name;
  }
  Bytes empty;
  EXPECT_EQ(EraseRecord(empty, "x"), Corrupt);
}

TEST(Msiecf, EmptiesRealFilesRecordByRecord) {
  const std::string data = test::SharedData();
  if (data.empty()) return;
  const std::pair<const char*, std::size_t> kFiles[] = {{"History.IE5-index.dat", 15},
                                                        {"MSHist012013031020130311-index.dat", 23}};
  for (const auto& [name, count] : kFiles) {
    const std::string path = data + "/artefacts/index.dat/" + name;
    Bytes file = test::ReadBytes(path);
    const std::size_t allocated = Get(file, 40);
    Texts expected = Locations(file);
    ASSERT_EQ(expected.size(), count) << name;
    std::size_t freed = 0;
    std::vector<UrlRecord> records;
    EXPECT_EQ(ReadUrls(file, records), Ok);
    for (const UrlRecord& record : records) {
      EXPECT_EQ(EraseRecord(file, record.location), Ok) << record.location;
      expected.erase(expected.begin());
      freed += record.size / 128;
      EXPECT_EQ(Locations(file), expected) << record.location;
    }
    EXPECT_EQ(Get(file, 40), allocated - freed) << name;
  }
}

}  // namespace
}  // namespace scrubwell::msiecf
