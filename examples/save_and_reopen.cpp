// save_and_reopen FILE: saves a test result as an instrument does, and opens it again.
#include <cstdio>
#include <vector>

#include <libcrossplatform/common/ResultFile.h>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FILE\n", argv[0]);
    return 2;
  }
  using Veltra::ScaledInt;
  Veltra::ResultSummary summary;
  summary.setResultName("FDP-A1 port 07");
  summary.resultType = Veltra::RESULT_TYPE_FIBER;
  summary.timeStamp = 1706692500;  // 2024-01-31 09:15:00 UTC
  summary.status = Veltra::STATUS_PASS;
  summary.length = {ScaledInt(2148.0f, ScaledInt::SCALED_TO_ONES), Veltra::DISPLAY_TYPE_VALUE};
  summary.headroom = {ScaledInt(0.41f, ScaledInt::SCALED_TO_HUNDREDTHS), Veltra::DISPLAY_TYPE_GREATER_THAN};
  summary.testFlags = 1;
  summary.numPassTests = 3;
  std::vector<unsigned char> trace(16 * 1024, 0x7F);  // what the instrument measured; the section borrows it
  PFile::Section raw;
  if (raw.set(302, 1, PFile::SECTION_FLAG_COMPRESS, trace.data(), static_cast<unsigned>(trace.size()), false, 6) != 0) {
    return 1;
  }

  // The old file stays until commit() has the new one on the disk.
  PFile::SafeFileWriter file;
  if (file.open(argv[1]) != 0) {
    std::perror(argv[1]);
    return 1;
  }
  Veltra::MemFileWriter writer(&file.writer());
  if (writer.writeSection(summary, Veltra::RESULT_SUMMARY_SECTION_VERSION, PFile::SECTION_RESULT_SUMMARY, 0, 0) != 0 ||
      writer.write(raw) != 0 || file.commit() != 0) {
    std::perror(argv[1]);
    return 1;
  }

  Veltra::ResultSummary reopened;  // every section is checked; of a damaged one the answer tells number and offset
  const Veltra::ResultFileCheck check = checkResultFile(reopened, argv[1]);
  std::printf("%s: %s, %s m, headroom %s dB (read: %s)\n", reopened.getResultName().c_str(), toString(reopened.status),
              reopened.length.toString().c_str(), reopened.headroom.toString().c_str(), toString(check.status));
  return check.status == Veltra::RESULT_READER_OK && reopened == summary ? 0 : 1;
}
