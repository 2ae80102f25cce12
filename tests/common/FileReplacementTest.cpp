#include <libcrossplatform/common/FileReplacement.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <regex>

#include "PFileTesting.h"

using namespace PFile;
using namespace PFileTesting;
using RecordTesting::fileBytes, RecordTesting::writeFile;
using Veltra::FileReplacement, Veltra::FileStamp;

namespace {

struct stat statusOf(const std::string& name) {
  struct stat info {};
  EXPECT_EQ(stat(name.c_str(), &info), 0) << name;
  return info;
}

unsigned modeOf(const std::string& name) {
  return statusOf(name).st_mode & 07777;
}

struct FileReplacementTest : ::testing::Test {
  FileReplacementTest() {
    writeFile(path, OLD);
    EXPECT_EQ(chmod(dir.path.c_str(), 0777), 0);
  }
  bool replace(const std::string& name, FileReplacement::Access access = FileReplacement::ACCESS_AS_BEFORE) const {
    return Veltra::replaceFile(name, NEW.data(), NEW.size(), access);
  }
  auto entries() const { return std::distance(std::filesystem::directory_iterator(dir.path), {}); }

  const Bytes OLD = {1, 2, 3}, NEW = {4, 5};
  const TempDir dir;
  const std::string path = dir.file("a.pf");
  Section section;
};

/// Somebody who is neither root nor in any group of root's.
struct AsNobody {
  static constexpr unsigned ID = 65534;
  AsNobody() { EXPECT_TRUE(setegid(ID) == 0 && seteuid(ID) == 0); }
  ~AsNobody() { EXPECT_TRUE(seteuid(0) == 0 && setegid(0) == 0); }
};

}  // namespace

TEST_F(FileReplacementTest, AContainerReplacesTheFileOnlyWhenCommitted) {
  setSection(section, {300, 12, 0, {7}});
  {
    SafeFileWriter givenUp;
    ASSERT_EQ(givenUp.open(path.c_str()), 0);
    EXPECT_EQ(givenUp.open(path.c_str()), -1) << "not committed yet";
    EXPECT_EQ(givenUp.writer().write(section), 0);
  }
  EXPECT_EQ(fileBytes(path), OLD);
  EXPECT_EQ(entries(), 1) << "nothing is left beside it";
  SafeFileWriter file;
  EXPECT_EQ(file.commit(), -1) << "nothing is open";
  EXPECT_EQ(file.open(nullptr), -1);
  EXPECT_EQ(file.open(dir.file("none/a.pf").c_str()), -1);
  for (int i = 0; i < 2; ++i) {  // the second file does not count on from the first
    ASSERT_EQ(file.open(path.c_str()), 0);
    EXPECT_EQ(file.writer().write(section), 0);
    EXPECT_EQ(file.writer().size(), 24u + 21u);
    ASSERT_EQ(file.commit(), 0);
    EXPECT_EQ(fileBytes(path), imageOf({{300, 12, 0, {7}}}));
  }
  ASSERT_EQ(file.open(path.c_str()), 0);
  EXPECT_EQ(file.writer().close(false), 0);
  EXPECT_EQ(file.commit(), -1) << "whether it was closed well is not known";
  EXPECT_EQ(fileBytes(path), imageOf({{300, 12, 0, {7}}}));
}

TEST_F(FileReplacementTest, TheTemporaryFileIsPrivateAndTheNewOneHasTheModeOfTheOld) {
  const struct {
    unsigned old, mask;  ///< mode 0: there is no old file
    FileReplacement::Access access;
    unsigned now;
  } rows[] = {
      {0600, 022, FileReplacement::ACCESS_AS_BEFORE, 0600}, {0644, 077, FileReplacement::ACCESS_AS_BEFORE, 0644},
      {0, 022, FileReplacement::ACCESS_AS_BEFORE, 0644},    {0, 027, FileReplacement::ACCESS_AS_BEFORE, 0640},
      {0644, 022, FileReplacement::ACCESS_PRIVATE, 0600},   {0, 0777, FileReplacement::ACCESS_PRIVATE, 0600}};
  const std::regex wanted("a\\.pf\\.[0-9a-f]{16}\\.tmp");
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << std::oct << row.old << " umask " << row.mask);
    std::filesystem::remove(path);
    if (row.old != 0) writeFile(path, OLD);
    EXPECT_TRUE(row.old == 0 || chmod(path.c_str(), row.old) == 0);
    const mode_t before = umask(row.mask);
    FileReplacement file;
    EXPECT_TRUE(file.open(path, row.access));
    umask(before);
    EXPECT_EQ(modeOf(file.temporaryPath()) & ~0600u, 0u);
    EXPECT_TRUE(std::regex_match(file.temporaryPath().substr(dir.path.size() + 1), wanted)) << file.temporaryPath();
    EXPECT_TRUE(file.write(NEW.data(), NEW.size()) && file.commit());
    EXPECT_EQ(modeOf(path), row.now);
    EXPECT_EQ(fileBytes(path), NEW);
  }
}

TEST_F(FileReplacementTest, ReplacesNothingThatIsNoFile) {
  const std::string pipe = dir.file("pipe"), toPipe = dir.file("link"), toFile = dir.file("other");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::filesystem::create_symlink("pipe", toPipe);
  std::filesystem::create_symlink("a.pf", toFile);
  for (const std::string& name : {pipe, toPipe, dir.path, dir.path + "/", path + std::string(1, 0), std::string()}) {
    EXPECT_FALSE(replace(name)) << name;
    EXPECT_FALSE(replace(name, FileReplacement::ACCESS_PRIVATE)) << name;
  }
  EXPECT_TRUE(std::filesystem::is_fifo(pipe) && std::filesystem::is_symlink(toPipe));
  EXPECT_FALSE(replace(toFile, FileReplacement::ACCESS_PRIVATE));
  EXPECT_EQ(errno, ELOOP);
  EXPECT_TRUE(replace(toFile));
  EXPECT_FALSE(std::filesystem::is_symlink(toFile));
  EXPECT_EQ(fileBytes(path), OLD) << "the link is replaced, not followed";
}

TEST_F(FileReplacementTest, ReplacesOnlyWhatIsExpected) {
  for (int change = 0; change < 5; ++change) {
    SCOPED_TRACE(change);
    writeFile(path, OLD);
    if (change == 4) std::filesystem::remove(path);
    FileReplacement file;
    ASSERT_TRUE(file.open(path));
    file.expect(FileStamp::of(path));
    EXPECT_TRUE(change != 2 || replace(path));
    if (change == 3) std::filesystem::remove(path);
    if (change == 1 || change == 4) writeFile(path, Bytes{3, 2, 1});
    errno = 0;
    EXPECT_EQ(file.commit(), change == 0);
    EXPECT_EQ(errno == ESTALE, change != 0);
    const Bytes now = change == 0 ? Bytes() : change == 2 ? NEW : Bytes{3, 2, 1};
    EXPECT_TRUE(change == 3 ? !FileStamp::of(path).exists : fileBytes(path) == now);
  }
}

TEST_F(FileReplacementTest, ALongNameAndOneWithoutAFolderAreSavedWhereverTheProgramGoes) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(dir.path);
  const std::string longest = std::string(254 - 21, 'x') + "\u00E4" + std::string(20, 'y');
  for (const std::string& name : {std::string("a.pf"), longest}) {
    FileReplacement file;
    EXPECT_TRUE(file.open(name));
    EXPECT_EQ(file.temporaryPath().find("\xC3."), std::string::npos) << "a character cut in two";
    std::filesystem::current_path("/");
    EXPECT_TRUE(file.write(NEW.data(), NEW.size()) && file.commit());
    std::filesystem::current_path(dir.path);
    EXPECT_EQ(fileBytes(dir.file(name)), NEW);
  }
  std::filesystem::current_path(before);
  EXPECT_EQ(entries(), 2);
}

TEST_F(FileReplacementTest, WhatIsUnfinishedIsRemovedAtOnceButNotByAChild) {
  FileReplacement first, second;
  ASSERT_TRUE(first.open(path) && second.open(path));
  RecordTesting::inChild([&first] {
    FileReplacement::removeUnfinished();
    first.discard();
    return true;
  });
  EXPECT_EQ(entries(), 3);
  EXPECT_TRUE(first.commit());
  FileReplacement::removeUnfinished();
  EXPECT_EQ(entries(), 1);
  EXPECT_FALSE(second.commit());
}

TEST_F(FileReplacementTest, GivesOwnerAndGroupWhereTheSystemLetsIt) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  ASSERT_TRUE(chown(path.c_str(), 12345, 23456) == 0 && chmod(path.c_str(), 0640) == 0);
  EXPECT_TRUE(replace(path));
  EXPECT_TRUE(statusOf(path).st_uid == 12345 && statusOf(path).st_gid == 23456);
  EXPECT_EQ(modeOf(path), 0640u);
  EXPECT_TRUE(replace(path, FileReplacement::ACCESS_PRIVATE));
  EXPECT_EQ(statusOf(path).st_uid, 0u) << "private to who saves";

  ASSERT_TRUE(chown(path.c_str(), 0, 0) == 0 && chmod(path.c_str(), 04640) == 0);
  const std::string locked = dir.file("locked"), sticky = dir.file("sticky");
  std::filesystem::create_directory(locked);
  std::filesystem::create_directory(sticky);
  ASSERT_TRUE(chown(locked.c_str(), AsNobody::ID, 0) == 0 && chmod(locked.c_str(), 0300) == 0);
  ASSERT_EQ(chmod(sticky.c_str(), 01777), 0);
  writeFile(sticky + "/b", OLD);
  {
    const AsNobody nobody;
    if (faccessat(AT_FDCWD, dir.path.c_str(), W_OK, AT_EACCESS) != 0) GTEST_SKIP() << "a folder above is closed";
    EXPECT_TRUE(replace(path));
    EXPECT_TRUE(replace(locked + "/b")) << "a folder that cannot be synced";
    EXPECT_FALSE(replace(locked + "/c", FileReplacement::ACCESS_PRIVATE));
    EXPECT_FALSE(replace(sticky + "/b"));
  }
  EXPECT_EQ(modeOf(path), 0600u) << "nobody's group gets what was root's, or runs it";
  EXPECT_EQ(fileBytes(locked + "/b"), NEW);
  EXPECT_NE(access((locked + "/c").c_str(), F_OK), 0) << "refused before anything is written";
  EXPECT_EQ(fileBytes(sticky + "/b"), OLD);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(sticky), {}), 1);
}
