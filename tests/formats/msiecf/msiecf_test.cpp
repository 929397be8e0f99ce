#include "formats/msiecf/msiecf.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace scrubwell::msiecf {
namespace {

constexpr std::size_t kTable = 0x4000;
constexpr std::size_t kTableBlocks = 32;
constexpr std::size_t kRecords = kTable + kTableBlocks * 128;
constexpr std::size_t kBlocks = 64;

void Set(Bytes& file, std::size_t at, std::size_t value, std::size_t size = 4) {
  for (std::size_t i = 0; i < size; ++i) file[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
}
std::size_t Get(const Bytes& file, std::size_t at) {
  return file[at] | std::size_t{file[at + 1]} << 8 | std::size_t{file[at + 2]} << 16;
}
void SetText(Bytes& file, std::size_t at, std::string_view text) {
  std::copy(text.begin(), text.end(), file.begin() + static_cast<std::ptrdiff_t>(at));
}
std::size_t HashItem(std::size_t index) {
  return kTable + 16 + index * 8;
}
std::size_t Record(std::size_t index) {
  return kRecords + index * 256;
}

/// A file with these locations, two blocks each, side by side in one group of the hash table.
Bytes BuildFile(std::initializer_list<std::string_view> locations) {
  Bytes file(0x4000 + kBlocks * 128);
  SetText(file, 0, "Client UrlCache MMF Ver 5.2");
  Set(file, 28, file.size());
  Set(file, 32, kTable);
  Set(file, 36, kBlocks);
  const std::size_t used = kTableBlocks + locations.size() * 2;
  Set(file, 40, used);
  for (std::size_t i = 0; i < used; ++i) {
    file[0x250 + i / 8] = static_cast<std::uint8_t>(file[0x250 + i / 8] | 1U << i % 8);
  }
  SetText(file, kTable, "HASH");
  Set(file, kTable + 4, kTableBlocks);
  for (std::size_t i = 0; i < 510; ++i) Set(file, HashItem(i), 3), Set(file, HashItem(i) + 4, 3);
  std::size_t index = 0;
  for (const std::string_view location : locations) {
    const std::size_t at = Record(index);
    SetText(file, at, "URL ");
    Set(file, at + 4, 2);
    Set(file, at + 52, 104);
    file[at + 56] = 0xFE;
    SetText(file, at + 104, location);
    Set(file, HashItem(index), 0x1240 + index * 0x40);
    Set(file, HashItem(index++) + 4, at);
  }
  return file;
}

std::vector<std::string> Locations(const Bytes& file) {
  std::vector<UrlRecord> records;
  EXPECT_EQ(ReadUrls(file, records), Status::Ok);
  std::vector<std::string> out;
  for (const UrlRecord& record : records) out.push_back(record.location);
  return out;
}

using Texts = std::vector<std::string>;

TEST(Msiecf, ErasesOneWholeRecord) {
  Bytes file = BuildFile({"Visited: a@x", "Visited: \xE4@y", "Visited: a@z"});
  EXPECT_EQ(Locations(file), (Texts{"Visited: a@x", "Visited: \xE4@y", "Visited: a@z"}));
  EXPECT_EQ(EraseRecord(file, "Visited: a@"), Status::Absent);
  ASSERT_EQ(EraseRecord(file, "Visited: \xE4@y"), Status::Ok);
  EXPECT_EQ(Locations(file), (Texts{"Visited: a@x", "Visited: a@z"}));

  Bytes expected = BuildFile({"Visited: a@x", "Visited: \xE4@y", "Visited: a@z"});
  std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(Record(1)), 256, std::uint8_t{0});
  Set(expected, HashItem(1), 1), Set(expected, HashItem(1) + 4, 1);
  Set(expected, 40, kTableBlocks + 4);
  expected[0x254] = 0x33;
  EXPECT_EQ(file, expected);
  EXPECT_EQ(EraseRecord(file, "Visited: \xE4@y"), Status::Absent);
}

TEST(Msiecf, ChangesNothingInDoubt) {
  struct Row {
    const char* name;
    std::size_t at, value, size;
    Status erase, read;
  };
  const Row kRows[] = {
      {"older version", 25, '4', 1, Status::Unknown, Status::Unknown},
      {"no signature", 0, 0, 1, Status::Corrupt, Status::Corrupt},
      {"longer than the file", 28, 0x10000, 4, Status::Corrupt, Status::Corrupt},
      {"table outside", 32, 0x100000, 4, Status::Corrupt, Status::Corrupt},
      {"table off the blocks", 32, 0x4001, 4, Status::Corrupt, Status::Corrupt},
      {"tables in a ring", kTable + 8, kTable, 4, Status::Corrupt, Status::Corrupt},
      {"no blocks at all", 36, 0, 4, Status::Corrupt, Status::Corrupt},
      {"cached file", Record(0) + 60, 110, 4, Status::Denied, Status::Ok},
      {"foreign block", 0x254, 0x0D, 1, Status::Corrupt, Status::Ok},
      {"count too small", 40, 1, 4, Status::Corrupt, Status::Ok},
      {"record too long", Record(0) + 4, 1000, 4, Status::Absent, Status::Ok},
      {"location outside", Record(0) + 52, 0xFFFFFF, 4, Status::Absent, Status::Ok},
      {"freed before", 0x254, 0x0C, 1, Status::Absent, Status::Ok},
  };
  for (const Row& row : kRows) {
    Bytes file = BuildFile({"Visited: a@x", "Visited: a@y"});
    Set(file, row.at, row.value, row.size);
    const Bytes before = file;
    EXPECT_EQ(EraseRecord(file, "Visited: a@x"), row.erase) << row.name;
    EXPECT_EQ(file, before) << row.name;
    std::vector<UrlRecord> records;
    EXPECT_EQ(ReadUrls(file, records), row.read) << row.name;
  }
  Bytes empty;
  EXPECT_EQ(EraseRecord(empty, "x"), Status::Corrupt);
}

TEST(Msiecf, EmptiesRealFilesRecordByRecord) {
  const char* data = std::getenv("SCRUBWELL_DATA");
  if (data == nullptr) {
    std::printf("without SCRUBWELL_DATA no real files\n");
    return;
  }
  const std::pair<const char*, std::size_t> kFiles[] = {{"History.IE5-index.dat", 15},
                                                        {"MSHist012013031020130311-index.dat", 23}};
  for (const auto& [name, count] : kFiles) {
    std::ifstream in(std::string(data) + "/artefacts/index.dat/" + name, std::ios::binary);
    Bytes file{std::istreambuf_iterator<char>(in), {}};
    const std::size_t allocated = Get(file, 40);
    Texts expected = Locations(file);
    ASSERT_EQ(expected.size(), count) << name;
    std::size_t freed = 0;
    std::vector<UrlRecord> records;
    EXPECT_EQ(ReadUrls(file, records), Status::Ok);
    for (const UrlRecord& record : records) {
      EXPECT_EQ(EraseRecord(file, record.location), Status::Ok) << record.location;
      expected.erase(expected.begin());
      freed += record.size / 128;
      EXPECT_EQ(Locations(file), expected) << record.location;
    }
    EXPECT_EQ(Get(file, 40), allocated - freed) << name;
  }
}

}  // namespace
}  // namespace scrubwell::msiecf
