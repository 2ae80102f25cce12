#include <libcrossplatform/common/PFileSafeWriter.h>

#include <sys/stat.h>

#include "PFileTesting.h"

using namespace PFile;
using namespace PFileTesting;
using RecordTesting::fileBytes;

namespace {

struct SafeFileWriterTest : ::testing::Test {
  SafeFileWriterTest() { RecordTesting::writeFile(path, OLD); }
  unsigned mode(const std::string& name) const {
    struct stat info {};
    EXPECT_EQ(stat(name.c_str(), &info), 0);
    return info.st_mode & 07777;
  }
  const Bytes OLD = {1, 2, 3};
  const TempDir dir;
  const std::string path = dir.file("a.pf");
  Section section;
};

}  // namespace

TEST_F(SafeFileWriterTest, ReplacesTheFileOnlyWhenCommitted) {
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  setSection(section, {300, 12, 0, {7}});
  {
    SafeFileWriter givenUp;
    ASSERT_EQ(givenUp.open(path.c_str()), 0);
    EXPECT_EQ(givenUp.open(path.c_str()), -1) << "not committed yet";
    EXPECT_EQ(givenUp.writer().write(section), 0);
  }
  EXPECT_EQ(fileBytes(path), OLD);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path), {}), 1) << "nothing is left beside it";
  SafeFileWriter file;
  EXPECT_EQ(file.commit(), -1) << "nothing is open";
  EXPECT_EQ(file.open(nullptr), -1);
  EXPECT_EQ(file.open(dir.file("none/a.pf").c_str()), -1);
  for (int i = 0; i < 2; ++i) {  // the second file does not count on from the first
    ASSERT_EQ(file.open(path.c_str()), 0);
    EXPECT_EQ(file.writer().write(section), 0);
    ASSERT_EQ(file.commit(), 0);
    EXPECT_EQ(fileBytes(path), imageOf({{300, 12, 0, {7}}}));
  }
  EXPECT_EQ(mode(path), 0640u) << "of the file it replaced";

  const mode_t before = umask(027);
  EXPECT_EQ(file.open(dir.file("new.pf").c_str()), 0);
  umask(before);
  ASSERT_EQ(file.commit(), 0);
  EXPECT_EQ(mode(dir.file("new.pf")), 0640u) << "what the umask leaves";
}

TEST_F(SafeFileWriterTest, ReplacesNothingThatIsNoFileAndNothingByWhatNeedNotBeOnTheDisk) {
  const std::string pipe = dir.file("pipe"), link = dir.file("link");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::filesystem::create_symlink("pipe", link);
  SafeFileWriter file;
  for (const std::string& name : {pipe, link, dir.path}) EXPECT_EQ(file.open(name.c_str()), -1) << name;
  EXPECT_TRUE(std::filesystem::is_fifo(pipe) && std::filesystem::is_symlink(link));

  ASSERT_EQ(file.open(path.c_str()), 0);
  EXPECT_EQ(file.writer().close(false), 0);
  EXPECT_EQ(file.commit(), -1);
  EXPECT_EQ(fileBytes(path), OLD);
}

TEST_F(SafeFileWriterTest, ANameWithoutAFolderIsSavedInTheCurrentOne) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(dir.path);
  SafeFileWriter file;
  EXPECT_EQ(file.open("a.pf"), 0);
  EXPECT_EQ(file.commit(), 0);
  std::filesystem::current_path(before);
  EXPECT_EQ(fileBytes(path), EMPTY_FILE);
}
