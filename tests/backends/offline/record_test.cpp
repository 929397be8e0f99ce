// The record of an interrupted clean is read from a disk that anybody may have written.
#include <gtest/gtest.h>

#include "backends/common/json_line.h"
#include "backends/offline/commit.h"
#include "support/disk.h"

namespace scrubwell::test {
namespace {

using namespace offline;
using State = PendingCommit::State;

TEST(Record, LeadsNowhereElse) {
  Disk disk;
  disk.Add("C/Windows/System32/config/");
  disk.Add("C/Windows/x");
  disk.Add("outside/x");
  disk.Link("C/Windows/out", "../../outside");
  disk.Link("C/Windows/link", "x");
  const std::string config = disk.Folder() + "/C/Windows/System32/config";
  DriveTree drives;
  std::string error;
  ASSERT_TRUE(drives.Add(u'C', disk.Folder() + "/C", DriveKind::Fixed, error)) << error;

  struct Row {
    CommitStep::Kind kind;
    char letter;
    std::string path;
    State state;
  };
  using Kind = CommitStep::Kind;
  const Row rows[] = {
      {Kind::Replace, 'C', "Windows/x", State::Committed},
      {Kind::MakeFolder, 'C', "Windows/new/newer", State::Committed},
      {Kind::Replace, 0, "/b/other/undone.jsonl", State::Committed},
      {Kind::Erase, 'C', "../outside/x", State::Unreadable},
      {Kind::Erase, 'C', "/../outside/x", State::Unreadable},
      {Kind::Erase, 'C', "Windows/../../outside/x", State::Unreadable},
      {Kind::Erase, 'C', "Windows/out/x", State::Unreadable},
      {Kind::Truncate, 'C', "Windows/link", State::Unreadable},
      {Kind::Erase, 'C', "", State::Unreadable},
      {Kind::Erase, 'D', "Windows/x", State::Unreadable},
      {static_cast<Kind>(5), 'C', "Windows/x", State::Unreadable},
      {Kind::Erase, 0, "/b/other/undone.jsonl", State::Unreadable},
      {Kind::Replace, 0, "/b/other/anything", State::Unreadable},
      {Kind::Replace, 0, "/b/../undone.jsonl", State::Unreadable},
      {Kind::Replace, 0, "/etc/x/undone.jsonl", State::Unreadable},
  };
  for (const Row& row : rows) {
    std::uint64_t chain = 0;
    std::string text = JsonLine().Number("record", 1).Raw("session", "/b/session").Close(chain);
    JsonLine step;
    step.Number("step", static_cast<int>(row.kind)).Number("drive", row.letter);
    text += step.Raw("path", row.path).Number("existed", 1).Close(chain);
    text += JsonLine().Number("end", 1).Close(chain);
    disk.Add("C/Windows/System32/config" + std::string(kPendingName), text);
    const PendingCommit pending = FindPending(config, drives);
    EXPECT_EQ(pending.state, row.state) << row.path << ": " << pending.error;
  }
}

}  // namespace
}  // namespace scrubwell::test
