#include <gtest/gtest.h>

#include <sys/stat.h>

#include <libinspect/job/JobFiles.h>

#include "RecordTesting.h"

namespace Inspect {
namespace {

using Texts = std::vector<std::string>;

TEST(ResultRows, CoverageNamesEachIdOnceAndEveryForeignResult) {
  struct Row {
    Texts results, damagedResults, lostFiles, missing, damaged, twice, foreign;
    std::vector<int> counts;
  };
  const Row rows[] = {
      {{}, {}, {}, {"A1", "A2", "A3"}, {}, {}, {}, {0, 0, 0}},
      {{"A1", "A2", "A3"}, {}, {}, {}, {}, {}, {}, {1, 1, 1}},
      {{"A2", "A2", "A2", "A1"}, {}, {}, {"A3"}, {}, {"A2"}, {}, {1, 3, 0}},  // a third result names its ID no second
                                                                              // time
      {{"Z9", "A4", "Z9"}, {}, {}, {"A1", "A2", "A3"}, {}, {}, {"Z9", "A4", "Z9"}, {0, 0, 0}},
      {{"A1"}, {"A1", "A2", "Z9"}, {"x/A3.vres", "A4.vres"}, {}, {"A2", "A3"}, {}, {"Z9"}, {1, 0, 0}},
      {{}, {}, {"A1.recovered.vres", "A1x.vres", "A2"}, {"A1", "A3"}, {"A2"}, {}, {}, {0, 0, 0}},
  };
  CableIdSet expected;
  std::string error;
  ASSERT_TRUE(parseExpected("A1..A3", expected, error)) << error;
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.results) + testing::PrintToString(row.lostFiles));
    std::vector<ResultRow> results;
    for (const Texts* ids : {&row.results, &row.damagedResults}) {
      for (const std::string& id : *ids) {
        results.push_back({"", {}, ids == &row.damagedResults});
        results.back().summary.resultName = id;
      }
    }
    const Coverage coverage = coverageOf(results, row.lostFiles, expected);
    EXPECT_EQ(coverage.missing, row.missing);
    EXPECT_EQ(coverage.damaged, row.damaged);
    EXPECT_EQ(coverage.twice, row.twice);
    EXPECT_EQ(coverage.foreign, row.foreign);
    EXPECT_EQ(coverage.results, row.counts);
  }
}

TEST(JobFiles, WhatWasReadBeforeAnErrorIsNotIntact) {
  CableIdSet expected;
  std::string error;
  ASSERT_TRUE(parseExpected("A1..A3", expected, error)) << error;
  const FileRun run({}, {"notes.txt"}, 0);
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
  EXPECT_EQ(job.coverageOf(expected).damaged, (Texts{"A1", "A3"}));
  EXPECT_EQ(job.coverageOf(expected).results, (std::vector<int>{0, 1, 0}));
}

TEST(ManyFiles, OfAFolderRegularFilesAndLinksToThem) {
  namespace fs = std::filesystem;
  const RecordTesting::TempDir folder;
  const std::string inner = folder.file("b"), loop = folder.file("loop"), dangling = folder.file("dangling");
  fs::create_directory(inner);
  RecordTesting::writeFile(folder.file("c"), {1, 2, 3});
  RecordTesting::writeFile(inner + "/a", {1});
  fs::create_symlink("c", folder.file("link"));
  fs::create_symlink("nowhere", dangling);
  fs::create_symlink("loop", loop);
  fs::create_directory_symlink(".", inner + "/up");
  ASSERT_EQ(mkfifo(folder.file("fifo").c_str(), 0600), 0);

  Texts faults;
  const Texts files = filesOf({folder.path, dangling}, true, faults);
  EXPECT_EQ(files, (Texts{inner + "/a", folder.file("c"), folder.file("link"), dangling})) << "what is named is tried";
  EXPECT_EQ(faults, Texts());
  EXPECT_EQ(bytesOf(files), 7u) << "what cannot be looked at has no bytes";
  EXPECT_EQ(filesOf({folder.path, loop}, false, faults), Texts{loop});
  EXPECT_EQ(faults, Texts{folder.path + ": is a directory; use -r to look into it"});
}

}  // namespace
}  // namespace Inspect
