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
  constexpr std::pair<std::size_t, std::uint8_t> kRows[] = {{2, 2},   {20, 67},   {21, 0xFF},
                                                            {22, 69}, {23, 0xFF}, {71, 0xFF}};
  for (const auto& [at, value] : kRows) {
    Bytes file = whole;
    file[at] = value;
    EXPECT_EQ(ReadJob(file, job), Status::Corrupt) << at;
  }
}

TEST(Job, ReadsRealTasks) {
  const std::string data = test::SharedData();
  if (data.empty()) return;
  Job job;
  EXPECT_EQ(ReadJob(test::ReadBytes(data + "/artefacts/job/wintask.job"), job), Status::Ok);
  EXPECT_EQ(job.application, u"C:\\Program Files (x86)\\Google\\Update\\GoogleUpdate.exe");
  EXPECT_EQ(job.parameters, u"/ua /installsource scheduler");
  EXPECT_TRUE(job.author == u"Brian" && job.triggerCount == 1);
}

}  // namespace
}  // namespace scrubwell::job
