// reopen_results FILE...: opens saved test results and checks that nothing was lost: each summary, read through the
// library and serialised again, must be the very bytes that were saved.
#include <cstdio>
#include <cstring>

#include <libcrossplatform/common/ResultFile.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>

namespace {

/// The saved bytes of the summary: the first section after the file header.
bool savedBytes(const char* path, PFile::Section& section) {
  PFile::FileReader reader;
  return reader.open(path) == PFile::PFILE_OK && reader.read(section, true) == PFile::PFILE_OK;
}

bool reopen(const char* path) {
  Veltra::ResultSummary summary;
  const Veltra::ResultFileCheck check = checkResultFile(summary, path);
  if (check.status != Veltra::RESULT_READER_OK) {
    std::printf("%s: %s, section %u at offset %llu\n", path, toString(check.status), unsigned{check.section},
                static_cast<unsigned long long>(check.offset));
    return false;
  }
  PFile::Section saved;
  Marshal::ByteStreamBuilder again(0);
  summary.serialize(again);
  const bool same = savedBytes(path, saved) && saved.payload.size() == again.size() &&
                    std::memcmp(saved.payload.data(), again.data(), again.size()) == 0;
  std::printf("%-28s %-7s %-16s %10s m %8s dB  %s\n", summary.getResultName().c_str(), toString(summary.resultType),
              toString(summary.status), summary.length.toString().c_str(), summary.headroom.toString().c_str(),
              same ? "same bytes" : "OTHER BYTES");
  return same;
}

}  // namespace

int main(int argc, char** argv) {
  bool allSame = argc > 1;
  for (int i = 1; i < argc; ++i) {
    if (!reopen(argv[i])) allSame = false;
  }
  return allSame ? 0 : 1;
}
