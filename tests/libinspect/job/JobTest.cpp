
#include <libinspect/job/JobLinks.h>

#include "RecordTesting.h"

namespace Inspect {
namespace {

using Texts = std::vector<std::string>;

TEST(JobFiles, WhatWasReadBeforeAnErrorIsNotIntact) {
  ExpectedIds expected;
  std::string error;
  ASSERT_TRUE(expected.add("A1..A3", error)) << error;
  const FileRun run({}, {"notes.txt"}, 0, 0);
  JudgedFile result, other;
  result.hasSummary = true;
  other.state = FileState::OTHER;
  const ReadOutcome isRead, hasFailed = {ReadOutcome::COULD_NOT, "read error"};
  JobFiles job;
  result.summary.resultName = "A1";
  job.add("first", hasFailed, &result, run);
  result.summary.resultName = "A2";
  job.add("second", isRead, &result, run);
  job.add("A3.vres", hasFailed, nullptr, run);
  job.add("notes.txt", isRead, &other, run);
  job.add("folder/notes.txt", isRead, &other, run);
  EXPECT_EQ(job.unread, (Texts{"first", "A3.vres", "notes.txt"}));
  EXPECT_EQ(job.others, 1u);
  const std::vector<JobLink> links = linksOf(job, expected, CountPolicy::LATEST);
  EXPECT_EQ(coverageOf(links).damaged, (Texts{"A1", "A3"}));
  EXPECT_EQ(links[1].state, LinkState::NO_VERDICT);
}

}  // namespace
}  // namespace Inspect
