#include <gtest/gtest.h>

#include "formats/job/job_samples.h"
#include "support/disk.h"

namespace scrubwell::job {
namespace {

TEST(Job, ReadsEveryField) {
  Job job;
  ASSERT_EQ(ReadJob(BuildJob(), job), Status::Ok);
  EXPECT_EQ(job.application, u"C:\\\u0416.exe");
  EXPECT_EQ(job.parameters, u"/q");
  EXPECT_EQ(job.workingDirectory, u"");
  EXPECT_EQ(job.author, u"\xD800");
  EXPECT_EQ(job.comment, u"c");
  EXPECT_TRUE(job.disabled && job.hidden);
  EXPECT_EQ(job.status, 0x41300U);
  EXPECT_EQ(job.exitCode, 5U);
  EXPECT_EQ(job.triggerCount, 2);
}

TEST(Job, RefusesDamage) {
  const Bytes whole = BuildJob();
  Job job;
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(ReadJob(std::span(whole).first(size), job), Status::Corrupt) << size;
    EXPECT_TRUE(job.application.empty());
  }
  EXPECT_EQ(ReadJob(Bytes(kMaxFileSize + 1, 1), job), Status::Corrupt);
  struct Row {
    std::size_t at;
    std::uint8_t value;
  };
  constexpr Row kRows[] = {{2, 2}, {20, 67}, {21, 0xFF}, {22, 69}, {23, 0xFF}, {71, 0xFF}};
  for (const Row& row : kRows) {
    Bytes file = whole;
    file[row.at] = row.value;
    EXPECT_EQ(ReadJob(file, job), Status::Corrupt) << row.at;
  }
}

TEST(Job, ReadsRealTasks) {
  const std::string data = test::SharedData();
  if (data.empty()) return;
  struct Row {
    const char* file;
    UnicodeView application, parameters, author;
    std::uint16_t triggers;
  };
  constexpr Row kRows[] = {{"wintask", u"C:\\Program Files (x86)\\Google\\Update\\GoogleUpdate.exe",
                            u"/ua /installsource scheduler", u"Brian", 1},
                           {"At1", u"cmd.exe", u"", u"WORKGROUP\\DESKTOP-EIS938N$", 1}};
  for (const Row& row : kRows) {
    Job job;
    const Bytes file = test::ReadBytes(data + "/artefacts/job/" + row.file + ".job");
    EXPECT_EQ(ReadJob(file, job), Status::Ok) << row.file;
    EXPECT_EQ(job.application, row.application) << row.file;
    EXPECT_EQ(job.parameters, row.parameters) << row.file;
    EXPECT_EQ(job.author, row.author) << row.file;
    EXPECT_EQ(job.triggerCount, row.triggers) << row.file;
  }
}

}  // namespace
}  // namespace scrubwell::job
