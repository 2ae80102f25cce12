#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>

#include <libcrossplatform/logging/Export.h>
#include <libcrossplatform/serialization/MarshalTypes.h>

namespace PFile {

/// printf-style receiver of the container's messages. Null drops them.
using LogCallback = void (*)(char const* format, ...);

/// Flags of a section. Only one bit has a meaning; bits 1 to 11 are kept as they are.
using SECTION_FLAGS = uint16_t;
constexpr SECTION_FLAGS SECTION_FLAG_COMPRESS = 1;  ///< the payload is to be, or was, stored compressed

/// Type of the section that opens every file; its payload is the file's total length, 32 bits little-endian.
constexpr uint16_t FILE_HEADER_TYPE = 1;
constexpr uint16_t FILE_HEADER_VERSION = 1;  ///< written; readers do not compare it
constexpr int FILE_HEADER_LEVEL = 3;         ///< passed but not used: the file header is not compressed

// Codes of the readers and writers.
constexpr int PFILE_OK = 0;            ///< done
constexpr int PFILE_FAILED = -1;       ///< the error callbacks that are set received one or more messages that say why
constexpr int PFILE_END_OF_DATA = -2;  ///< no more sections

/// What a seek counts from: 0 the beginning, 1 the current position, 2 the end.
using StreamPosition = Marshal::StreamPosition;

/// Outcome of reading a package or record from a container.
enum PFileReaderStatus : int32_t {
  READER_OK = 0,                  ///< read
  READER_WRONG_FILE_TYPE = 1,     ///< the first section is missing, damaged or no manifest
  READER_VERSION_TOO_NEW = 2,     ///< of a record
  READER_CORRUPT = 3,             ///< a record is damaged
  READER_ERROR_OPENING_FILE = 4,  ///< missing, not readable, or no container
};

/// "ok", "wrong file type", "version too new", "corrupt", "error opening file"; "error" for any other value.
VELTRA_EXPORT char const* toString(PFileReaderStatus status);

/// What a record's code means for the file it came from: -6 and -5 are too new, every other failure is corrupt. The
/// result files have a mapping of their own (Veltra::streamOpToReaderStatus), which differs on purpose.
VELTRA_EXPORT PFileReaderStatus streamOpToReaderStatus(Marshal::StreamOpStatus status);

}  // namespace PFile
