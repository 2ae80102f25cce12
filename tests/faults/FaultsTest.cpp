// Runs with an allocator and a compress2() of its own, so it is a program of its own.
#include <dlfcn.h>
#include <zlib.h>

#include <random>
#include <stdexcept>
#include <thread>

#include <libcrossplatform/common/EncryptedString.h>
#include <libcrossplatform/common/ResultSummary.h>
#include <libcrossplatform/serialization/FieldCodec.h>

#include "AllocationFaults.h"
#include "PFileTesting.h"

using namespace PFile;
using namespace PFileTesting;

namespace {

/// What compress2() does, call by call: the code and the length it returns; after them the real function.
struct Answer {
  int code;
  uLongf left;
};
std::vector<Answer> answers;
std::vector<uLongf> capacities;

}  // namespace

extern "C" int compress2(Bytef* dest, uLongf* destLen, const Bytef* source, uLong sourceLen, int level) {
  capacities.push_back(*destLen);
  if (answers.empty()) {
    static const auto real = reinterpret_cast<decltype(&compress2)>(dlsym(RTLD_NEXT, "compress2"));
    return real(dest, destLen, source, sourceLen, level);
  }
  const Answer answer = answers.front();
  answers.erase(answers.begin());
  *destLen = answer.left;
  return answer.code;
}

/// Whether the machine has random numbers to give.
bool hasEntropy = true;
void std::random_device::_M_init(const std::string&) {
  if (!hasEntropy) throw std::runtime_error("random_device");
}
std::random_device::result_type std::random_device::_M_getval() {
  return 4;
}
void std::random_device::_M_fini() {}

TEST(Entropy, WithoutItNothingIsEncryptedAndFilesAreSavedAllTheSame) {
  hasEntropy = false;
  std::string text = "?";
  std::thread([&text] { text = EncryptedString::Encrypt("secret"); }).join();  // each thread asks for its own
  const TempDir dir;
  SafeFileWriter file;
  EXPECT_EQ(file.open(dir.file("a.pf").c_str()), 0);
  EXPECT_EQ(file.commit(), 0);
  hasEntropy = true;
  EXPECT_EQ(text, "");
  EXPECT_EQ(RecordTesting::fileBytes(dir.file("a.pf")), EMPTY_FILE);
}

TEST(Compression, TranscriptOfTheRetry) {
  Transcript transcript;
  Bytes data(1000, 'a');
  Section section(onDebug, onWarning, onError);
  const auto compress = [&](std::vector<Answer> plan) {
    capacities.clear();
    answers = std::move(plan);
    const int code =
        section.set(300, 12, SECTION_FLAG_COMPRESS, data.data(), static_cast<unsigned>(data.size()), false, 6);
    EXPECT_EQ(code == 0, section.payload.data() != data.data() && section.compressed) << "a failure keeps the data";
    return code;
  };
  STEP(compress({}));
  STEP(static_cast<int>(capacities[0]));  // one fused multiply-add: 1000 * 1.001 is a little less than 1001
  STEP(compress({{Z_BUF_ERROR, 40}}));
  STEP(static_cast<int>(capacities[1]));  // twice the length returned, less the length word, which is not stored
  STEP(Bytes(section.payload.data(), section.payload.data() + 5));
  STEP(section.verifyDataCrc());
  STEP(section.uncompressData());  // the size reads as 0
  STEP(compress({{Z_MEM_ERROR, 9}}));
  STEP(compress({{Z_BUF_ERROR, 40}, {Z_MEM_ERROR, 9}}));
  STEP(compress({{Z_BUF_ERROR, 5}}));
  STEP(compress({{Z_BUF_ERROR, 1}}));  // no room after the word
  STEP(compress({{Z_BUF_ERROR, 0}}));
  transcript.expectGolden("pfile_compression_retry");
}

TEST(Allocation, ClaimedSizesAreNotBelieved) {
  if (!Allocations::isReplaced()) GTEST_SKIP();
  constexpr std::size_t MODEST = 256 * 1024;  // 64 KiB ahead, in a string that doubles
  const Bytes claims = {0xff, 0xff, 0xff, 0xff, 'a', 'b'};
  const Bytes emptyListOfMany = {1, 0xff, 0xff};
  const Bytes fourGigabytes = EMPTY_FILE + headerClaiming(300, 0xFFFFFFFF) + Bytes(1024, 'x');
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], fourGigabytes.data(), fourGigabytes.size()), static_cast<ssize_t>(fourGigabytes.size()));
  close(ends[1]);

  Allocations::startMeasuring();
  FileReader reader;  // of a pipe, whose length nobody knows
  EXPECT_EQ(reader.open(("/dev/fd/" + std::to_string(ends[0])).c_str()), 0);
  Section section;
  EXPECT_EQ(reader.read(section, true), -1);
  close(ends[0]);

  for (void (Marshal::FieldReader::*read)(const char*, std::string&) :
       {&Marshal::FieldReader::text, &Marshal::FieldReader::terminatedText, &Marshal::FieldReader::countedText}) {
    RecordTesting::PlainReader plain(claims);
    Marshal::ByteStreamReader windowed(claims.data(), 6);
    for (Marshal::IObjectReader* const in : std::initializer_list<Marshal::IObjectReader*>{&plain, &windowed}) {
      std::string text = "kept";
      Marshal::FieldReader f(*in, 0);
      (f.*read)("text", text);
      EXPECT_EQ(f.status(), -3);
      EXPECT_EQ(text, "kept");
    }
  }
  Veltra::ResultPathSummaryList list;
  EXPECT_EQ(RecordTesting::readFrom(list, emptyListOfMany), -1);
  EXPECT_LT(Allocations::peak(), MODEST);
}

TEST(Allocation, ALargeSectionThatFindsNoMemoryIsAFailedRead) {
  if (!Allocations::isReplaced()) GTEST_SKIP();
  const TempDir dir;
  RecordTesting::writeFile(dir.file("a.pf"), closedFile(storedSection(300, 0, Bytes(100000))));
  FileReader reader;
  ASSERT_EQ(reader.open(dir.file("a.pf").c_str()), 0);
  Section section;
  Allocations::refuseAfter(0, true);
  const int code = reader.read(section, true);
  EXPECT_GT(Allocations::stopRefusing(), 0);
  EXPECT_EQ(code, -1);
}
