// A container file: peek, skip and read, which must agree with each other and with the memory reader over the same
// bytes; and what reads whole files, results and packages.
#include <libcrossplatform/common/DatabaseManifestFile.h>
#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/common/ResultFile.h>

#include "ContainerImage.h"
#include "RecordProperties.h"
#include "Scratch.h"

using namespace PFile;

namespace {

/// How far two readers can be followed side by side: docs/reader-behaviour.md says where they part.
enum class Parting { GO_ON, STOP };

/// Both readers have read the section that begins at `at`.
Parting compare(std::size_t left, int fileCode, const Section& file, int memoryCode, const Section& memory) {
  if (left == 0) FUZZ_CHECK(fileCode == PFILE_END_OF_DATA && memoryCode == PFILE_END_OF_DATA);
  if (left > 0 && left < Header::BYTES) FUZZ_CHECK(fileCode == PFILE_END_OF_DATA && memoryCode == PFILE_FAILED);
  if (left < Header::BYTES) return Parting::STOP;
  FUZZ_CHECK(file.header == memory.header);
  if (!file.header.verifyHdrCrc()) {
    FUZZ_CHECK(fileCode == PFILE_FAILED && memoryCode == PFILE_FAILED);
    return Parting::STOP;
  }
  if (file.header.dataSize > left - Header::BYTES) {
    FUZZ_CHECK(fileCode == PFILE_FAILED && memoryCode == PFILE_OK && memory.payload.empty());
    return Parting::STOP;
  }
  FUZZ_CHECK(fileCode == memoryCode);
  if (fileCode == PFILE_OK) FUZZ_CHECK(file == memory && file.compressed == memory.compressed);
  return Parting::GO_ON;
}

/// The claim of the section at `at`, for the budget.
bool isAllowed(const Fuzz::Input& input, std::size_t at, const Header& header, Fuzz::DeclaredSizes& declared) {
  const std::size_t payload = std::min<std::size_t>(at + Header::BYTES, input.size);
  return declared.allow(header, input.data + payload, input.size - payload);
}

void checkReaders(const Fuzz::Input& input, const char* path) {
  FileReader file(Fuzz::formatAndDrop, Fuzz::formatAndDrop, Fuzz::formatAndDrop), skipper;
  MemReader memory;
  Fuzz::DeclaredSizes declared;
  const int opened = file.open(path, 64);
  FUZZ_CHECK(skipper.open(path) == opened);
  const int memoryOpened = memory.quickOpen(input.data, input.size32());
  if (opened != PFILE_OK || memoryOpened != PFILE_OK) {
    FUZZ_CHECK(opened != PFILE_OK);
    return;
  }
  Parting parting = Parting::GO_ON;
  while (parting == Parting::GO_ON) {
    const auto at = static_cast<std::size_t>(memory.seek(0, Marshal::STREAM_FROM_CURRENT));
    Header peeked;
    // A failed peek leaves the file where it stopped: this reader is then of no more use.
    const int peek = skipper.peek(peeked);
    const bool uncompress = peek == PFILE_OK && isAllowed(input, at, peeked, declared);
    Section fromFile, fromMemory;
    const int fileCode = file.read(fromFile, uncompress);
    FUZZ_CHECK(peek == PFILE_OK ? fromFile.header == peeked : fileCode == peek);
    if (peek == PFILE_OK) FUZZ_CHECK(skipper.skipNextSection() == PFILE_OK);
    const int memoryCode = memory.read(fromMemory, uncompress);
    parting = compare(input.size - at, fileCode, fromFile, memoryCode, fromMemory);
  }
  FUZZ_CHECK(file.close() == PFILE_OK);
}

/// Files and memory agree on a summary, but for the codes that reader-behaviour.md gives otherwise.
void checkSummary(const Fuzz::Input& input, const char* path) {
  using namespace Veltra;
  ResultSummary fromFile, fromMemory;
  ResultReaderStatus first = RESULT_READER_OK;
  if (!Fuzz::guarded([&] { first = readResultSummary(fromFile, path, false); })) return;
  const ResultReaderStatus memory = readResultSummary(fromMemory, input.data, input.size32());
  if (first == RESULT_READER_OK) {
    FUZZ_CHECK(memory == RESULT_READER_OK);
    FUZZ_CHECK(Fuzz::bytesOf(fromFile) == Fuzz::bytesOf(fromMemory));
  }
  Fuzz::guarded([&] {
    ResultSummary all;
    // More is looked at: a summary that is read so is read without, too.
    if (readResultSummary(all, path, true) != RESULT_READER_OK) return;
    FUZZ_CHECK(first == RESULT_READER_OK && Fuzz::bytesOf(all) == Fuzz::bytesOf(fromFile));
  });
  // The check takes types that the reader stops at, and nothing that it refuses. It never stops.
  ResultSummary checked;
  const ResultFileCheck check = checkResultFile(checked, path);
  FUZZ_CHECK(check.status != RESULT_READER_OK || (first == RESULT_READER_OK && check.offset <= input.size &&
                                                  Fuzz::bytesOf(checked) == Fuzz::bytesOf(fromFile)));
}

/// What was read of a package is written as a package that reads the same.
void checkPackage(const char* path) {
  static const Fuzz::ScratchDirectory DIRECTORY;
  const std::string written = DIRECTORY.file("package");
  Veltra::DatabasePackageManifest manifest, again;
  if (Veltra::readManifestFile(manifest, path) != READER_OK) return;
  FUZZ_CHECK(Veltra::writeManifestFile(manifest, SECTION_LIMIT_MANIFEST, written.c_str()) == PFILE_OK);
  FUZZ_CHECK(Veltra::readManifestFile(again, written.c_str()) == READER_OK);
  FUZZ_CHECK(again == manifest);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  return Fuzz::runInput(data, size, [](const Fuzz::Input& input) {
    static Fuzz::MemoryFile file;
    file.fill(input.data, input.size);
    checkReaders(input, file.path());
    Fuzz::guarded([&] { checkSummary(input, file.path()); });
    Fuzz::guarded([&] { checkPackage(file.path()); });
  });
}
