#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>

#include "clean_world.h"

namespace scrubwell::test {
namespace {

namespace fs = std::filesystem;

struct Killed {};

// Fails from a given point on. A point is one call, or 4 KiB of what is written. Flushing is
// counted, not done: the power stays on here.
class FaultDisk final : public offline::IDisk {
 public:
  enum class Mode { None, Kill, Full };
  explicit FaultDisk(Mode mode = Mode::None, int at = 0) : mode_(mode), at_(at) {}
  [[nodiscard]] int Points() const { return points_; }

  int Create(const offline::DiskPlace& file) override {
    return Step(true) ? ENOSPC : real_.Create(file);
  }
  int Append(const offline::DiskPlace& file, std::span<const std::uint8_t> data) override {
    while (!data.empty()) {
      const std::size_t size = std::min<std::size_t>(4096, data.size());
      if (Step(true)) return ENOSPC;
      const int error = real_.Append(file, data.subspan(0, size));
      if (error != 0) return error;
      data = data.subspan(size);
    }
    return 0;
  }
  int Sync(const offline::DiskPlace&) override { return Step(false), 0; }
  int SetAttributes(const offline::DiskPlace& path, const FileAttributes& attributes) override {
    return Step(false), real_.SetAttributes(path, attributes);
  }
  int Rename(const offline::DiskPlace& from, const offline::DiskPlace& to) override {
    return Step(false), real_.Rename(from, to);
  }
  int Truncate(const offline::DiskPlace& file) override {
    return Step(false), real_.Truncate(file);
  }
  int EraseFile(const offline::DiskPlace& file) override {
    return Step(false), real_.EraseFile(file);
  }
  int EraseFolder(const offline::DiskPlace& path) override {
    return Step(false), real_.EraseFolder(path);
  }
  int MakeFolder(const offline::DiskPlace& path) override {
    return Step(true) ? ENOSPC : real_.MakeFolder(path);
  }
  int FreeSpace(const offline::DiskPlace&, std::uint64_t& out) override {
    out = ~std::uint64_t{0} >> 1U;
    return 0;
  }

 private:
  bool Step(bool needsRoom) {
    ++points_;
    if (mode_ == Mode::Kill && points_ >= at_) throw Killed();
    return mode_ == Mode::Full && points_ >= at_ && needsRoom;
  }
  offline::IDisk& real_ = offline::RealDisk();
  Mode mode_;
  int at_;
  int points_ = 0;
};

// The same folder again and again, so that contents compare with their paths.
class Sweep {
 public:
  Sweep() : start_(Copy()) {
    old_ = world_.Content();
    FaultDisk disk;
    const CommitResult result = CleanAll(world_, &disk);
    EXPECT_EQ(result.failure, CleanFailure::None) << result.error;
    points_ = disk.Points();
    new_ = world_.Content();
    EXPECT_NE(old_, new_);
  }
  void Reset() {
    for (const fs::path& folder : {fs::path(world_.Folder()), fs::path(world_.Backups())}) {
      for (const auto& entry : fs::directory_iterator(folder)) fs::remove_all(entry.path());
    }
    fs::copy(start_, world_.Folder(), fs::copy_options::recursive);
  }
  // Wholly old or wholly new; what is new has a session that can put it back.
  testing::AssertionResult IsWhole() {
    const auto now = world_.Content();
    bool carriedOut = false;
    for (const SessionInfo& session : ListSessions(world_.Backups())) {
      if (session.carriedOut && !session.error.empty()) {
        return testing::AssertionFailure() << session.error;
      }
      carriedOut = carriedOut || session.carriedOut;
    }
    if (now != old_ && now != new_) return testing::AssertionFailure() << "neither old nor new";
    if ((now == new_) != carriedOut) return testing::AssertionFailure() << "not what is told";
    return testing::AssertionSuccess();
  }
  CleanWorld& World() { return world_; }
  [[nodiscard]] int Points() const { return points_; }
  [[nodiscard]] const std::map<std::string, std::string>& Old() const { return old_; }

 private:
  std::string Copy() {
    fs::copy(world_.Folder(), keep_.Path() / "start", fs::copy_options::recursive);
    return (keep_.Path() / "start").string();
  }
  CleanWorld world_;
  TempFolder keep_;
  std::string start_;
  std::map<std::string, std::string> old_;
  std::map<std::string, std::string> new_;
  int points_ = 0;
};

TEST(Crash, EveryPointLeavesAllOrNothing) {
  Sweep sweep;
  ASSERT_GE(sweep.Points(), 300);
  int completed = 0;
  for (int point = 1; point <= sweep.Points(); ++point) {
    sweep.Reset();
    FaultDisk disk(FaultDisk::Mode::Kill, point);
    EXPECT_THROW(CleanAll(sweep.World(), &disk), Killed) << point;
    const TargetOptions target = sweep.World().Options().target;
    const std::string backups = sweep.World().Backups();
    // A scan in between works, on the old or the finished state.
    EXPECT_NE(OfflineBackend::Open(target).backend, nullptr) << point;
    // The recovery is cut off as well, at a point that moves along.
    FaultDisk second(FaultDisk::Mode::Kill, 1 + point % 7);
    try {
      Recover(target, backups, &second);
    } catch (const Killed&) {
    }
    const RecoverResult recovered = Recover(target, backups);
    EXPECT_EQ(recovered.failure, CleanFailure::None) << point << recovered.error;
    if (recovered.outcome == RecoverResult::Outcome::Completed) ++completed;
    const bool isTakenBack = recovered.outcome == RecoverResult::Outcome::RolledBack;
    EXPECT_TRUE(!isTakenBack || fs::is_empty(sweep.World().Backups())) << point;
    EXPECT_TRUE(sweep.IsWhole()) << point;
  }
  EXPECT_GT(completed, 5);
  std::printf("%d points, %d completed by the last recovery\n", sweep.Points(), completed);
}

TEST(Crash, AFullDiskAtEveryPointChangesNothingOrAll) {
  Sweep sweep;
  for (int point = 1; point <= sweep.Points(); ++point) {
    sweep.Reset();
    FaultDisk disk(FaultDisk::Mode::Full, point);
    const CommitResult result = CleanAll(sweep.World(), &disk);
    const bool isOld = result.failure == CleanFailure::NotWritten;
    EXPECT_TRUE(isOld || result.failure == CleanFailure::None) << point << result.error;
    EXPECT_TRUE(sweep.IsWhole()) << point;
    EXPECT_EQ(fs::is_empty(sweep.World().Backups()), isOld) << point;
  }
}

TEST(Crash, KilledAtRandomTimes) {
  Sweep sweep;
  std::mt19937 random(4711);
  int finished = 0;
  for (int round = 0; round < 50; ++round) {
    sweep.Reset();
    const pid_t child = ::fork();
    if (child == 0) {
      CleanAll(sweep.World());
      ::_exit(0);
    }
    ASSERT_GT(child, 0);
    ::usleep(std::uniform_int_distribution<useconds_t>(1'000, 500'000)(random));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status)) ++finished;
    const RecoverResult recovered =
        Recover(sweep.World().Options().target, sweep.World().Backups());
    EXPECT_EQ(recovered.failure, CleanFailure::None) << recovered.error;
    EXPECT_TRUE(sweep.IsWhole()) << round;
  }
  std::printf("%d of 50 finished before they were killed\n", finished);
}

}  // namespace
}  // namespace scrubwell::test
