#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>

#include <gsl/span>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// What is known of a headed record.
struct RecordType {
  uint32_t id;          ///< combined serial type id, the record's SERIAL_TYPE_ID
  const char* name;     ///< of its class, without the namespace
  const char* logName;  ///< what Marshal::veltraCommonIdToString() returns; empty for most
};

/// Every headed record of this library, by ascending id.
VELTRA_EXPORT gsl::span<const RecordType> recordTypes();
/// @return null if the id is not of a record of this library; otherwise a row that lives as long as the program
VELTRA_EXPORT const RecordType* findRecordType(uint32_t id);

}  // namespace Veltra
