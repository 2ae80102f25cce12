// A process is killed while it writes one container after the other. How often is in VELTRA_KILLS; the times are drawn
// from VELTRA_SEED, which is printed.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <random>

#include <libcrossplatform/common/PFile.h>
#include <tools/inspect/Doctor.h>
#include <tools/inspect/Recover.h>

#include "Workloads.h"

using namespace PFile;
using Workloads::Bytes;

namespace {

constexpr int SECTIONS_OF_A_FILE = 40;
constexpr std::size_t FILE_HEADER_BYTES = 24;

unsigned long numberFrom(const char* variable, unsigned long otherwise) {
  const char* const text = std::getenv(variable);
  return text != nullptr ? std::strtoul(text, nullptr, 10) : otherwise;
}

/// Section `i` of the files of a round: from one byte to more than the buffer of a stream, every third compressed.
void setSection(Section& section, unsigned round, int i) {
  std::minstd_rand random(round * 1000 + static_cast<unsigned>(i) + 1);
  const std::size_t size = random() % 10 == 0 ? random() % 100000 + 1 : random() % 3000 + 1;
  auto* const bytes = new unsigned char[size];
  std::generate(bytes, bytes + size, [&] { return static_cast<unsigned char>(random() >> 16 & 15); });
  const SECTION_FLAGS flags = i % 3 == 0 ? SECTION_FLAG_COMPRESS : 0;
  section.set(static_cast<uint16_t>(300 + i % 21), 1, flags, bytes, static_cast<unsigned>(size), true, 6);
}

/// What a writer of this round puts behind the file header, and where each section ends.
Bytes sectionsOf(unsigned round, std::vector<std::size_t>& ends) {
  Bytes bytes;
  for (int i = 0; i < SECTIONS_OF_A_FILE; ++i) {
    Section section;
    setSection(section, round, i);
    const auto header = section.header.bytes();
    bytes.insert(bytes.end(), header.begin(), header.end());
    bytes.insert(bytes.end(), section.payload.data(), section.payload.data() + section.payload.size());
    ends.push_back(FILE_HEADER_BYTES + bytes.size());
  }
  return bytes;
}

/// Files "0.pf", "1.pf" and so on until it is killed: one saved safely, one in place, in turn. Whatever was closed has
/// a byte written to `closed`.
[[noreturn]] void writeForEver(const std::string& directory, unsigned round, int closed) {
  for (int n = 0;; ++n) {
    const std::string path = directory + "/" + std::to_string(n) + ".pf";
    SafeFileWriter safe;
    FileWriter plain;
    const bool isSafe = n % 2 == 0;
    int code = isSafe ? safe.open(path.c_str()) : plain.open(path.c_str());
    for (int i = 0; code == 0 && i < SECTIONS_OF_A_FILE; ++i) {
      Section section;
      setSection(section, round, i);
      code = (isSafe ? safe.writer() : plain).write(section);
    }
    if (code == 0) code = isSafe ? safe.commit() : plain.close(false);
    if (code != 0 || ::write(closed, "", 1) != 1) _exit(1);
  }
}

int opens(const std::string& path) {
  FileReader reader;
  return reader.open(path.c_str());
}

/// A file that was being written: never taken for good, and nothing that is whole in it is lost.
void expectSectionsRecovered(const std::string& path, const Bytes& sections, const std::vector<std::size_t>& ends) {
  const Bytes bytes = Workloads::fileBytes(path);
  const bool isClosed = bytes.size() == FILE_HEADER_BYTES + sections.size() && opens(path) == 0;
  EXPECT_EQ(Workloads::isClean(path), isClosed);
  EXPECT_EQ(opens(path) == 0, isClosed);
  std::string error;
  Inspect::ByteSource source;
  ASSERT_TRUE(source.open(path, error)) << error;
  const Inspect::Recovery recovery = findSections(source);
  const auto whole = std::upper_bound(ends.begin(), ends.end(), bytes.size()) - ends.begin();
  ASSERT_EQ(recovery.kept.size(), static_cast<std::size_t>(whole));
  if (whole == 0) return;
  const std::string recovered = path + ".recovered";
  ASSERT_TRUE(writeRecovered(source, recovery, recovered, error)) << error;
  EXPECT_TRUE(Workloads::isClean(recovered));
  const Bytes saved = Workloads::fileBytes(recovered);
  const auto last = static_cast<std::ptrdiff_t>(ends[static_cast<std::size_t>(whole) - 1]);
  ASSERT_EQ(saved.size(), static_cast<std::size_t>(last));
  EXPECT_TRUE(std::equal(saved.begin() + FILE_HEADER_BYTES, saved.end(), sections.begin()));
}

/// @return how many files were closed before the kill
int killOnce(const std::string& directory, unsigned round, unsigned microseconds) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) writeForEver(directory, round, ends[1]);
  ::close(ends[1]);
  usleep(microseconds);
  kill(child, SIGKILL);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status)) << "it ended by itself, with " << WEXITSTATUS(status);
  char byte = 0;
  int closed = 0;
  while (read(ends[0], &byte, 1) == 1) ++closed;
  ::close(ends[0]);
  return closed;
}

}  // namespace

TEST(Kill, AClosedFileIsWholeAndOfAnUnclosedOneEverySectionIsRecovered) {
  constexpr unsigned LONGEST_MICROSECONDS = 60000;
  const unsigned long kills = numberFrom("VELTRA_KILLS", 20);
  const unsigned long seed = numberFrom("VELTRA_SEED", std::random_device()());
  std::printf("VELTRA_SEED=%lu VELTRA_KILLS=%lu\n", seed, kills);
  std::mt19937 random(static_cast<unsigned>(seed));
  int whole = 0, torn = 0, temporary = 0;
  for (unsigned round = 0; round < kills && !HasFailure(); ++round) {
    SCOPED_TRACE("kill " + std::to_string(round));
    std::string directory = ::testing::TempDir() + "veltra.XXXXXX";
    ASSERT_NE(mkdtemp(&directory[0]), nullptr);
    std::vector<std::size_t> ends;
    const Bytes sections = sectionsOf(round, ends);
    const int closed = killOnce(directory, round, static_cast<unsigned>(random()) % LONGEST_MICROSECONDS);
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) paths.push_back(entry.path());
    for (const std::string& path : paths) {
      SCOPED_TRACE(path);
      const std::filesystem::path name = path;
      const bool isTemporary = name.extension() != ".pf";  // of a safe writer: the file itself was not touched
      const int number = std::stoi(name.filename());
      if (number < closed || (!isTemporary && number % 2 == 0)) {
        EXPECT_FALSE(isTemporary);
        EXPECT_TRUE(Workloads::isClean(path));
        const Bytes bytes = Workloads::fileBytes(path);
        EXPECT_TRUE(bytes.size() == ends.back() && std::equal(sections.begin(), sections.end(), bytes.begin() + 24));
        ++whole;
      } else {
        expectSectionsRecovered(path, sections, ends);
        ++(isTemporary ? temporary : torn);
      }
    }
    std::filesystem::remove_all(directory);
  }
  std::printf("%d closed files, %d torn, %d temporary\n", whole, torn, temporary);
  EXPECT_GT(whole + torn + temporary, 0);
}
