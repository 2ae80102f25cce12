// A process is killed while it writes one container after the other. How often is in VELTRA_KILLS; after which of its
// system calls is drawn from VELTRA_SEED, which is printed. Between two calls it changes nothing that outlives it.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <random>

#include <libcrossplatform/common/PFile.h>
#include <libinspect/container/Recover.h>

#include "CallFaults.h"
#include "Workloads.h"

using namespace Workloads;
using RecordTesting::fileBytes;

namespace {

constexpr char PROFILE[] = "profile";

/// Files "0.pf", "1.pf" and so on until it is killed: one saved safely, one in place, in turn, and each time one
/// profile over the last. Whatever was closed has a byte written to `closed`.
[[noreturn]] void writeForEver(const std::string& directory, int closed) {
  for (int n = 0;; ++n) {
    const Workload& workload = *find(n % 2 == 0 ? "save" : "save_in_place");
    const int code = run(workload, directory + "/" + std::to_string(n) + ".pf");
    if (code != 0 || run(*find("profile_save"), directory + "/" + PROFILE) != 0 || ::write(closed, "", 1) != 1)
      _exit(1);
  }
}

long callsLeft = 0;

void killAfterLast(int, const long*, long) {
  if (--callsLeft < 0) kill(getpid(), SIGKILL);
}

constexpr int NOT_ALLOWED = 2;  ///< exit code where the machine has no such filter

/// @param calls  how many system calls are carried out before
/// @return how many files were closed before the kill; negative: this machine does not allow it
int killOnce(const std::string& directory, long calls) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    if (!Calls::trap()) _exit(NOT_ALLOWED);
    callsLeft = calls;
    Calls::observe(killAfterLast);
    writeForEver(directory, ends[1]);
  }
  ::close(ends[1]);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  if (WIFEXITED(status) && WEXITSTATUS(status) == NOT_ALLOWED) return -1;
  EXPECT_TRUE(WIFSIGNALED(status)) << "it ended by itself, with " << WEXITSTATUS(status);
  char byte = 0;
  int closed = 0;
  while (read(ends[0], &byte, 1) == 1) ++closed;
  ::close(ends[0]);
  return closed;
}

/// Where each section of a container ends.
std::vector<int> sectionEnds(const Bytes& container) {
  std::vector<int> ends;
  PFile::MemReader reader;
  EXPECT_EQ(reader.open(container.data(), static_cast<unsigned>(container.size())), 0);
  while (reader.skipNextSection() == 0) ends.push_back(reader.seek(0, Marshal::STREAM_FROM_CURRENT));
  return ends;
}

/// A file that was being written: never taken for good, and nothing that is whole in it is lost.
void expectSectionsRecovered(const std::string& path, const Bytes& whole) {
  const Bytes bytes = fileBytes(path);
  PFile::FileReader reader;
  EXPECT_EQ(isClean(path), bytes == whole);
  EXPECT_EQ(reader.open(path.c_str()) == 0, bytes == whole);
  std::string error;
  Inspect::ByteSource source;
  ASSERT_TRUE(source.open(path, error)) << error;
  const Inspect::Recovery recovery = findSections(source);
  const std::vector<int> ends = sectionEnds(whole);
  const auto kept = std::upper_bound(ends.begin(), ends.end(), static_cast<int>(bytes.size())) - ends.begin();
  ASSERT_EQ(recovery.kept.size(), static_cast<std::size_t>(kept));
  if (kept == 0) return;
  const std::string recovered = path + ".recovered";
  ASSERT_TRUE(writeRecovered(source, recovery, recovered, error)) << error;
  EXPECT_TRUE(isClean(recovered));
  const Bytes saved = fileBytes(recovered);
  ASSERT_EQ(saved.size(), static_cast<std::size_t>(ends[static_cast<std::size_t>(kept) - 1]));
  EXPECT_TRUE(std::equal(saved.begin() + 24, saved.end(), whole.begin() + 24)) << "after the file header";
}

}  // namespace

TEST(Kill, AClosedFileIsWholeAndOfAnUnclosedOneEverySectionIsRecovered) {
  constexpr unsigned MOST_CALLS = 200;  // of some ten files
  const unsigned long kills = numberFrom("VELTRA_KILLS", 20);
  const unsigned long seed = numberFrom("VELTRA_SEED", std::random_device()());
  std::printf("VELTRA_SEED=%lu VELTRA_KILLS=%lu\n", seed, kills);
  std::mt19937 random(static_cast<unsigned>(seed));
  const Bytes& whole = find("save")->after;
  int closedFiles = 0, torn = 0, temporary = 0;
  for (unsigned round = 0; round < kills && !HasFailure(); ++round) {
    const RecordTesting::TempDir directory;
    const int closed = killOnce(directory.path, static_cast<long>(random() % MOST_CALLS));
    if (closed < 0) GTEST_SKIP() << "this machine does not allow it";
    const std::filesystem::directory_iterator first(directory.path);
    for (const std::filesystem::path& path : std::vector<std::filesystem::path>(first, {})) {
      SCOPED_TRACE("kill " + std::to_string(round) + ": " + path.string());
      const bool isTemporary = path.extension() == ".tmp";  // of a safe writer: the file itself was not touched
      if (path.stem().stem() == PROFILE || path.stem() == PROFILE) {
        EXPECT_TRUE(isTemporary || fileBytes(path) == find("profile_save")->after);
        continue;
      }
      const int number = std::stoi(path.filename());
      if (number < closed || (!isTemporary && number % 2 == 0)) {
        EXPECT_FALSE(isTemporary);
        EXPECT_EQ(fileBytes(path), whole);
        ++closedFiles;
      } else {
        expectSectionsRecovered(path, whole);
        ++(isTemporary ? temporary : torn);
      }
    }
  }
  std::printf("%d closed files, %d torn, %d temporary\n", closedFiles, torn, temporary);
  EXPECT_GT(closedFiles + torn + temporary, 0);
}
