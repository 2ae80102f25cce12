#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <cstdint>
#include <variant>

#include <boost/optional.hpp>

#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/common/ResultSummary.h>

/// A saved test result is a container whose first section after the file header is the result summary, followed by the
/// test's data sections.
namespace Veltra {

/// Outcome of reading a result file.
enum ResultReaderStatus : int32_t {
  RESULT_READER_OK = 0,                 ///< read
  RESULT_READER_WRONG_RESULT_TYPE = 1,  ///< never given by this library; for callers that want one type
  RESULT_READER_VERSION_TOO_NEW = 2,    ///< of a section or a record
  RESULT_READER_CORRUPT = 3,            ///< a section or a record is damaged
  RESULT_READER_ERROR = 4,              ///< not opened, or no result file
};

/// "ok", "wrong result type", "version too new", "corrupt", "error"; empty for any other value.
VELTRA_EXPORT char const* toString(ResultReaderStatus status);

/// Outcome of writing a section.
enum ResultWriterStatus : int32_t {
  RESULT_WRITER_OK = 0,     ///< written
  RESULT_WRITER_ERROR = 1,  ///< not written, or not wholly
};

/// "ok", "error"; empty for any other value.
VELTRA_EXPORT char const* toString(ResultWriterStatus status);

/// What a record's code means for a result file: -5 is too new, -6 and -4 to -1 corrupt, any other failure an error.
/// PFile::streamOpToReaderStatus maps -6 and unknown codes otherwise; both are kept as they are.
VELTRA_EXPORT ResultReaderStatus streamOpToReaderStatus(Marshal::StreamOpStatus status);

/// Version of the section that holds the summary. The record in it has its own version, which may rise independently.
constexpr uint16_t RESULT_SUMMARY_SECTION_VERSION = 1;

/// Newest content version of a section type that this library reads; empty for a type it does not know.
VELTRA_EXPORT boost::optional<uint16_t> newestKnownVersion(uint16_t sectionType);

/// How far the check of a result file got.
struct ResultFileCheck {
  ResultReaderStatus status;  ///< the worst of what was found: damage before a newer version
  /// The section that decided the status, counted from 0, the file header; 1 is the summary. When the status is 0, the
  /// number of sections.
  uint32_t section;
  uint64_t offset;  ///< where that section begins, in bytes; when the status is 0, the length of the file
};

/// Reads the summary of a result file and checks the whole file: every section by its CRC-32, the versions that this
/// library knows, and that the sections end where the file header says they do. A type that newestKnownVersion() does
/// not know, any copper measurement among them, is accepted. No content of a file stops the program; of compressed
/// sections only the summary is uncompressed.
/// @return 0 `out` is filled; 2 a section (the first such is reported) or the record in the summary is newer than this
///         library reads, and nothing is damaged; 3 a section is damaged or cut, the record in the summary is damaged,
///         or the sections end elsewhere, at `offset`; 4 the file could not be opened, its file header is damaged, or
///         its first section is not a summary.
///         Unless 0, `out` may be partly filled.
[[nodiscard]] VELTRA_EXPORT ResultFileCheck checkResultFile(ResultSummary& out, char const* path);

/// Reads the summary of a result file.
/// @param checkAllSections  also read every further section, CRC and all, and compare its version. A section of a type
///                          that newestKnownVersion() does not know is then the fatal assertion "Invalid section type":
///                          use checkResultFile() for files that the program has not written itself.
/// @return 0 `out` is filled; 2 a section, or a record in the summary, is newer than this library reads; 3 a section
///         failed, or the summary is damaged; 4 the file could not be opened, or its first section is not a summary.
///         Unless 0 `out` may be partly filled.
[[nodiscard]] VELTRA_EXPORT ResultReaderStatus readResultSummary(ResultSummary& out, char const* path,
                                                                 bool checkAllSections);
/// The same from a file's bytes. No section version is checked, and a section that cannot be read is 4 here, not 3.
[[nodiscard]] VELTRA_EXPORT ResultReaderStatus readResultSummary(ResultSummary& out, unsigned char const* buffer,
                                                                 unsigned int size);

///@{
/// Reads only the result type. @return as readResultSummary(); unless 0 `out` is unchanged
[[nodiscard]] VELTRA_EXPORT ResultReaderStatus readResultType(ResultType& out, char const* path);
[[nodiscard]] VELTRA_EXPORT ResultReaderStatus readResultType(ResultType& out, unsigned char const* buffer,
                                                              unsigned int size);
///@}

/// Writes records as sections into a container in memory or in a file.
class VELTRA_EXPORT MemFileWriter {
 public:
  ///@{
  /// @param target  borrowed, open
  explicit MemFileWriter(PFile::MemWriter* target) : _target(target) {}
  explicit MemFileWriter(PFile::FileWriter* target) : _target(target) {}
  ///@}

  /// Writes a section; the code is the target's own.
  [[nodiscard]] int write(PFile::Section& section);
  /// Serialises a record and writes it as a section. Note the order: content version before type.
  /// @param flags      PFile::SECTION_FLAG_COMPRESS or 0
  /// @param compLevel  zlib level 0 to 9, ignored unless compressing
  /// @return a ResultWriterStatus: 0; 1 the record has too many bytes, compression failed, or the target could not
  ///         write it. A record without bytes is 1 in a file; in memory it is 0 and nothing is written.
  [[nodiscard]] int writeSection(Marshal::ISerializable& record, unsigned short version, unsigned short type,
                                 PFile::SECTION_FLAGS flags, int compLevel);

 private:
  std::variant<PFile::MemWriter*, PFile::FileWriter*> _target;
};

}  // namespace Veltra
