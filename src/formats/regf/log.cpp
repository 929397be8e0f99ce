#include "formats/regf/log.h"

#include <algorithm>
#include <bit>

namespace scrubwell::regf {
namespace {

constexpr std::uint32_t NewLogType = 6;
constexpr std::uint32_t OldLogTypes[] = {1, 2};

/// Fields of an entry of a new log.
namespace entry {
constexpr std::size_t Size = 4, Flags = 8, Sequence = 12, BinsSize = 16, PageCount = 20,
                      BodyHash = 24, HeadHash = 32, Pages = 40;
}

struct Entry {
  ByteView bytes;
  ByteView logBase;  ///< the base block of the log that the entry lies in
  [[nodiscard]] std::uint32_t Sequence() const { return Get32(bytes, entry::Sequence); }
};

class Marvin {
 public:
  void Word(std::uint32_t word) {
    low_ += word;
    Mix();
  }
  [[nodiscard]] std::uint64_t Finish(std::uint32_t lastWord) {
    Word(lastWord);
    Mix();
    return static_cast<std::uint64_t>(high_) << 32 | low_;
  }

 private:
  void Mix() {
    high_ ^= low_;
    low_ = std::rotl(low_, 20) + high_;
    high_ = std::rotl(high_, 9) ^ low_;
    low_ = std::rotl(low_, 27) + high_;
    high_ = std::rotl(high_, 19);
  }
  // The two halves of the seed 0x82EF4D887A4E55C5.
  std::uint32_t low_ = 0x7A4E55C5U;
  std::uint32_t high_ = 0x82EF4D88U;
};

bool HasLetters(ByteView bytes, const char (&letters)[5]) {
  return bytes.size() >= 4 && std::equal(letters, letters + 4, bytes.begin());
}

bool IsLog(ByteView log) {
  return log.size() >= SectorSize && HasLetters(log, "regf") && ChecksumRight(log);
}

/// The entry at a place of a new log, when it is whole and its hashes are right.
ByteView EntryAt(ByteView log, std::size_t at) {
  if (at > log.size() || log.size() - at < SectorSize) return {};
  const ByteView rest = log.subspan(at);
  if (!HasLetters(rest, "HvLE")) return {};
  const std::uint32_t size = Get32(rest, entry::Size);
  if (size < SectorSize || size % SectorSize != 0 || size > rest.size()) return {};
  const ByteView bytes = rest.first(size);
  if (Get64(bytes, entry::HeadHash) != LogHash(bytes.first(entry::HeadHash))) return {};
  if (Get64(bytes, entry::BodyHash) != LogHash(bytes.subspan(entry::Pages))) return {};
  return bytes;
}

void CollectEntries(ByteView log, std::vector<Entry>& out) {
  if (!IsLog(log) || Get32(log, base::Type) != NewLogType) return;
  std::size_t at = SectorSize;
  std::uint32_t last = 0;
  bool first = true;
  for (;;) {
    const ByteView bytes = EntryAt(log, at);
    if (bytes.empty()) return;
    const Entry found{bytes, log.first(SectorSize)};
    // What follows a jump is left over from an earlier round through the log.
    if (!first && found.Sequence() != last + 1) return;
    out.push_back(found);
    last = found.Sequence();
    first = false;
    at += bytes.size();
  }
}

/// Puts the base block in order after a replay, or takes it over from the log.
void FinishBaseBlock(Bytes& image, std::uint32_t sequence) {
  const std::span<std::uint8_t> all(image);
  Put32(all, base::Type, 0);
  Put32(all, base::Primary, sequence);
  Put32(all, base::Secondary, sequence);
  Put32(all, base::BinsSize, static_cast<std::uint32_t>(image.size() - BaseBlockSize));
  Put32(all, base::Checksum, BaseBlockChecksum(all));
}

/// True when every page of the entry lies inside the bins and its bytes inside the entry.
bool PagesFit(ByteView bytes, std::uint32_t binsSize) {
  const std::uint64_t count = Get32(bytes, entry::PageCount);
  std::uint64_t dataAt = entry::Pages + count * 8;
  if (dataAt > bytes.size()) return false;
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::size_t at = entry::Pages + static_cast<std::size_t>(i) * 8;
    const std::uint64_t offset = Get32(bytes, at);
    const std::uint64_t size = Get32(bytes, at + 4);
    dataAt += size;
    if (offset + size > binsSize || dataAt > bytes.size()) return false;
  }
  return true;
}

/// Applies one entry, or changes nothing and answers false.
bool ApplyEntry(const Entry& from, Bytes& image) {
  const ByteView bytes = from.bytes;
  const std::uint32_t binsSize = Get32(bytes, entry::BinsSize);
  if (binsSize == 0 || binsSize % PageSize != 0 || !PagesFit(bytes, binsSize)) return false;
  // New bins come with the entry that adds them; more growth than that is no real entry, and
  // must not make us ask for gigabytes.
  if (binsSize > image.size() - BaseBlockSize + bytes.size()) return false;
  image.resize(BaseBlockSize + binsSize);
  const std::size_t count = Get32(bytes, entry::PageCount);
  std::size_t dataAt = entry::Pages + count * 8;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t offset = Get32(bytes, entry::Pages + i * 8);
    const std::size_t size = Get32(bytes, entry::Pages + i * 8 + 4);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(dataAt), size,
                image.begin() + static_cast<std::ptrdiff_t>(BaseBlockSize + offset));
    dataAt += size;
  }
  Put32(image, base::Flags, Get32(bytes, entry::Flags));
  return true;
}

/// The file from its base block to the end of its bins, or as far as the file goes.
Bytes CopyOfBins(ByteView hive, std::uint32_t binsSize) {
  const std::size_t end = std::min<std::size_t>(hive.size(), BaseBlockSize + std::size_t{binsSize});
  return Bytes(hive.begin(), hive.begin() + static_cast<std::ptrdiff_t>(end));
}

/// The run of entries to apply. From the secondary sequence on when the base block is sound;
/// else, nothing being known of the hive, the longest unbroken run up to the newest entry.
std::span<const Entry> SelectRun(const std::vector<Entry>& sorted, ByteView hive) {
  std::size_t begin = 0;
  std::size_t end = sorted.size();
  if (ChecksumRight(hive)) {
    const std::uint32_t start = Get32(hive, base::Secondary);
    while (begin < end && sorted[begin].Sequence() != start) ++begin;
    end = begin == end ? end : begin + 1;
    while (end < sorted.size() && sorted[end].Sequence() == sorted[end - 1].Sequence() + 1) ++end;
  } else if (end > 0) {
    begin = end - 1;
    while (begin > 0 && sorted[begin - 1].Sequence() + 1 == sorted[begin].Sequence()) --begin;
  }
  return std::span(sorted).subspan(begin, end - begin);
}

Replay ReplayNew(ByteView hive, const std::vector<ByteView>& logs) {
  std::vector<Entry> entries;
  for (const ByteView log : logs) CollectEntries(log, entries);
  const auto bySequence = [](const Entry& a, const Entry& b) {
    return a.Sequence() < b.Sequence();
  };
  std::stable_sort(entries.begin(), entries.end(), bySequence);
  const auto same = [](const Entry& a, const Entry& b) { return a.Sequence() == b.Sequence(); };
  entries.erase(std::unique(entries.begin(), entries.end(), same), entries.end());

  Replay replay;
  const std::span<const Entry> run = SelectRun(entries, hive);
  if (run.empty()) return replay;
  const ByteView baseBlock = ChecksumRight(hive) ? hive : run.front().logBase;
  replay.image = CopyOfBins(hive, Get32(baseBlock, base::BinsSize));
  std::copy_n(baseBlock.begin(), SectorSize, replay.image.begin());
  for (const Entry& one : run) {
    if (!ApplyEntry(one, replay.image)) break;
    ++replay.entries;
  }
  if (replay.entries == 0) return {};
  FinishBaseBlock(replay.image, run[replay.entries - 1].Sequence());
  return replay;
}

/// An old log: a bitmap of 512-byte pages of the bins, then those pages in order.
Replay ReplayOld(ByteView hive, ByteView log) {
  const bool oldType =
      std::ranges::find(OldLogTypes, Get32(log, base::Type)) != std::end(OldLogTypes);
  if (!oldType || Get32(log, base::Primary) != Get32(log, base::Secondary)) return {};
  // The base block's time, or where that is lost the copy of it in the first bin, ties the two.
  constexpr std::size_t firstBinTime = BaseBlockSize + 20;
  if (!ChecksumRight(hive) && hive.size() < firstBinTime + 8) return {};
  const std::uint64_t time = Get64(hive, ChecksumRight(hive) ? base::Time : firstBinTime);
  const std::uint32_t binsSize = Get32(log, base::BinsSize);
  const std::size_t bitmapSize = binsSize / SectorSize / 8;
  const std::size_t bitmapAt = SectorSize + 4;
  if (time != Get64(log, base::Time) || binsSize == 0 || binsSize % PageSize != 0) return {};
  if (log.size() < bitmapAt + bitmapSize || !HasLetters(log.subspan(SectorSize), "DIRT")) return {};

  const ByteView bitmap = log.subspan(bitmapAt, bitmapSize);
  std::size_t pages = 0;
  for (const std::uint8_t bits : bitmap) pages += static_cast<std::size_t>(std::popcount(bits));
  std::size_t from = (bitmapAt + bitmapSize + SectorSize - 1) / SectorSize * SectorSize;
  if (pages == 0 || from + pages * SectorSize > log.size()) return {};

  Replay replay{CopyOfBins(hive, binsSize), 1};
  // New bins are dirty as a whole, so growth can't exceed what the log brings.
  if (BaseBlockSize + std::size_t{binsSize} > replay.image.size() + pages * SectorSize) return {};
  replay.image.resize(BaseBlockSize + std::size_t{binsSize});
  for (std::size_t page = 0; page < bitmapSize * 8; ++page) {
    if ((bitmap[page / 8] >> page % 8 & 1) == 0) continue;
    std::copy_n(
        log.begin() + static_cast<std::ptrdiff_t>(from), SectorSize,
        replay.image.begin() + static_cast<std::ptrdiff_t>(BaseBlockSize + page * SectorSize));
    from += SectorSize;
  }
  std::copy_n(log.begin(), SectorSize, replay.image.begin());
  FinishBaseBlock(replay.image, Get32(log, base::Secondary));
  return replay;
}

}  // namespace

std::uint64_t LogHash(ByteView bytes) {
  Marvin hash;
  const std::size_t words = bytes.size() / 4;
  for (std::size_t i = 0; i < words; ++i) hash.Word(Get32(bytes, i * 4));
  std::uint32_t last = 0x80U;
  for (std::size_t i = bytes.size(); i > words * 4; --i) last = last << 8 | bytes[i - 1];
  return hash.Finish(last);
}

bool ChecksumRight(ByteView baseBlock) {
  return Get32(baseBlock, base::Checksum) == BaseBlockChecksum(baseBlock);
}

Replay ReplayLogs(ByteView hive, const std::vector<ByteView>& logs) {
  Replay replay = ReplayNew(hive, logs);
  for (auto log = logs.begin(); replay.entries == 0 && log != logs.end(); ++log) {
    if (IsLog(*log)) replay = ReplayOld(hive, *log);
  }
  return replay;
}

std::uint32_t NewestLogSequence(ByteView log) {
  if (!IsLog(log)) return 0;
  std::vector<Entry> entries;
  CollectEntries(log, entries);
  std::uint32_t newest = Get32(log, base::Primary);
  for (const Entry& one : entries) newest = std::max(newest, one.Sequence());
  return newest;
}

}  // namespace scrubwell::regf
