// Every allocation of the command is refused in turn: it ends with a code and a line, or as if nothing had happened.
// And what it holds is counted.
#include <fcntl.h>
#include <sys/mman.h>

#include <algorithm>

#include "AllocationFaults.h"
#include "RecordTesting.h"

int veltraMain(int argc, char** argv);

namespace {

using RecordTesting::fileBytes, RecordTesting::fileText, RecordTesting::writeFile, RecordTesting::Bytes;

constexpr int COULD_NOT = 4;

/// What the allocator counted in one run.
struct Counts {
  long refused = 0, allocations = 0;
  std::size_t peak = 0;  ///< bytes
};

/// How one run ended.
struct End : Counts {
  int code = 0;  ///< negative: by this signal
  std::string printed, complained;
};

class CommandRuns : public ::testing::Test {
 protected:
  CommandRuns() {
    writeFile(at("profile.dat"), std::string(R"({"InetAddr": "10.0.0.1", "Use DHCP": true})"));
    writeFile(at("result.json"), std::string(R"({"summary": {"resultName": "A-1", "length": "12.5", "status": "Pass"},
      "sections": [{"type": 302, "version": 1, "payload": "result.json", "compress": true}]})"));
    for (const char* const file : {"a.vres", "b.vres"}) run({"pack", "result.json", "-o", file}, -1, false);
    Bytes damaged = fileBytes(at("a.vres"));
    if (damaged.size() > 60) damaged[60] ^= 1;
    writeFile(at("c.vres"), damaged);
  }

  std::string at(const char* file) const { return _scratch.file(file); }

  /// Runs the command in a process and the scratch directory.
  /// @param before  allocations before the refused one; negative: none is refused
  End run(std::vector<const char*> arguments, long before, bool forGood) const {
    auto* const counts =
        static_cast<Counts*>(mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    arguments.insert(arguments.begin(), "veltra");
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
      const auto redirect = [this](const char* file, int descriptor) {
        dup2(open(_streams.file(file).c_str(), O_CREAT | O_TRUNC | O_RDWR, 0600), descriptor);
      };
      if (chdir(_scratch.path.c_str()) != 0) _exit(99);
      redirect("in", STDIN_FILENO);
      redirect("out", STDOUT_FILENO);
      redirect("err", STDERR_FILENO);
      std::vector<char*> argv;
      for (const char* const argument : arguments) argv.push_back(const_cast<char*>(argument));
      argv.push_back(nullptr);
      Allocations::startMeasuring();
      if (before >= 0) Allocations::refuseAfter(before, forGood);
      const int code = veltraMain(static_cast<int>(arguments.size()), argv.data());
      const long allocations = Allocations::countSinceStart();
      *counts = {Allocations::stopRefusing(), allocations, Allocations::peak()};
      std::fflush(nullptr);
      _exit(code);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    const End end = {*counts, code, fileText(_streams.file("out")), fileText(_streams.file("err"))};
    munmap(counts, sizeof(Counts));
    return end;
  }

 private:
  const RecordTesting::TempDir _scratch, _streams;
};

class CommandSweep : public CommandRuns, public ::testing::WithParamInterface<std::vector<const char*>> {};

INSTANTIATE_TEST_SUITE_P(Of, CommandSweep,
                         ::testing::ValuesIn(std::vector<std::vector<const char*>>{
                             {"types", "nothing"},  // the first, for what comes before every command
                             {"summary", "-r", ".", "-j2", "--expect", "A-1..A-3"},
                             {"summary", "-r", ".", "-j1", "-f", "json", "--unsorted"},
                             // The library for workbooks does not survive a refused allocation.
                             {"summary", "-r", ".", "-j1", "-f", "sqlite", "-o", "job.db", "--force"},
                             {"info", "a.vres", "-f", "jsonl"},
                             {"list", "a.vres", "c.vres", "-f", "csv", "--spreadsheet"},
                             {"show", "a.vres"},
                             {"annotate", "a.vres", "-s", "1"},
                             {"diff", "a.vres", "c.vres"},
                             {"doctor", "-r", ".", "-j2"},
                             {"recover", "c.vres", "-o", "d.vres", "--force"},
                             {"report", "-r", ".", "-j1", "-o", "page.html", "--force"},
                             {"pack", "result.json", "-o", "d.vres", "--force"},
                             {"netprofile", "check", "--file", "profile.dat"},
                             {"help", "doctor"},
                             {"completion", "bash"},
                         }),
                         [](const auto& tested) {
                           return std::string(tested.param.front()) + std::to_string(tested.index);
                         });

}  // namespace

TEST_P(CommandSweep, EveryRefusedAllocationIsFourAndALine) {
  if (!Allocations::isReplaced()) GTEST_SKIP();
  const End whole = run(GetParam(), -1, false);
  ASSERT_GE(whole.code, 0);
  // Up to the start of a command all are alike; from one run to the next a thread more or less counts.
  const bool isFirst = std::string(GetParam().front()) == "types";
  const long begin = isFirst ? 0 : run({"types", "nothing"}, -1, false).allocations * 9 / 10;
  long met = 0;
  for (const bool forGood : {false, true}) {
    End end;
    // Of those that refuse all later ones, some stand for all.
    for (long k = begin; k == begin || end.refused > 0 || end.code < 0; k += forGood ? 7 : 1) {
      end = run(GetParam(), k, forGood);
      if (end.refused == 0 && end.code >= 0) break;
      ++met;
      SCOPED_TRACE("allocation " + std::to_string(k) + (forGood ? " and all later ones" : " alone"));
      const std::string& said = end.complained;
      const bool isAsEver = end.code == whole.code && end.printed == whole.printed;  // libc does without some memory
      ASSERT_TRUE(end.code == COULD_NOT || isAsEver) << end.code << "\n" << said;
      if (isAsEver) continue;
      EXPECT_EQ(said.rfind("veltra: ", 0), 0u) << said;
      EXPECT_TRUE(!said.empty() && said.back() == '\n');
      const auto lines = std::count(said.begin(), said.end(), '\n');
      EXPECT_TRUE(lines == 1 || !whole.complained.empty()) << said;  // findings came before
    }
  }
  std::printf("%ld runs met a refused allocation, of %ld in all\n", met, whole.allocations);
  EXPECT_GT(met, 0);
}

TEST_F(CommandRuns, ASummaryHoldsAFewBytesOfEachResultAndUnsortedOnlyItsName) {
  if (!Allocations::isReplaced()) GTEST_SKIP();
  constexpr int FEW = 64, MANY = 512;
  for (int i = 0; i < MANY; ++i) {
    for (const std::string folder : {"few", "many"}) {
      std::filesystem::create_directory(at(folder.c_str()));
      if (i < FEW || folder == "many")
        writeFile(at((folder + "/" + std::to_string(i)).c_str()), fileBytes(at("a.vres")));
    }
  }
  struct Row {
    const char* format;
    const char* order;  ///< an option
    std::size_t most;   ///< bytes of a result
  };
  for (const Row& row : {Row{"table", "-q", 800}, Row{"json", "-q", 500}, Row{"csv", "-q", 500},
                         Row{"jsonl", "-q", 500}, Row{"csv", "--unsorted", 100}, Row{"jsonl", "--unsorted", 100}}) {
    SCOPED_TRACE(std::string(row.format) + " " + row.order);
    const auto peakOf = [&](const char* folder) {
      const End end = run({"summary", "-j1", "-r", folder, "-f", row.format, row.order}, -1, false);
      EXPECT_EQ(end.code, 0);
      return end.peak;
    };
    EXPECT_LT((peakOf("many") - peakOf("few")) / (MANY - FEW), row.most);
  }
}
