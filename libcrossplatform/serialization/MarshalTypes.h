#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>

#include <libcrossplatform/logging/Export.h>

namespace Marshal {

/// Outcome of reading a record: 0 success, a negative code otherwise. Codes of nested records are passed on unchanged.
using StreamOpStatus = int;

constexpr StreamOpStatus STREAM_OK = 0;               ///< read, or nothing was wrong so far
constexpr StreamOpStatus STREAM_WRONG_ELEMENT = -1;   ///< an element is missing or wrong, or another record's id
constexpr StreamOpStatus STREAM_NOT_A_HEADER = -2;    ///< no record header: wrong marker, or header format 0
constexpr StreamOpStatus STREAM_SHORT = -3;           ///< a read failed: the stream ran out or is in error
constexpr StreamOpStatus STREAM_WRONG_LENGTH = -4;    ///< the record did not use exactly the bytes its header claims
constexpr StreamOpStatus STREAM_TOO_NEW = -5;         ///< a header or record version newer than this library reads
constexpr StreamOpStatus STREAM_INLINE_TOO_NEW = -6;  ///< the same for the path summaries' own version byte

/// What a seek counts from.
enum StreamPosition : int32_t {
  STREAM_FROM_BEGIN = 0,    ///< the first byte
  STREAM_FROM_CURRENT = 1,  ///< the next byte to be read or written
  STREAM_FROM_END = 2,      ///< after the last byte
};

/// Names the class of a headed record.
struct SerialTypeID {
  uint16_t systemId = 0;  ///< who numbers the classes: SYSTEM_VELTRA_COMMON, SYSTEM_FIBRE
  uint16_t classId = 0;   ///< which record, within the system

  /// The one number used where ids are compared: the system in the upper half.
  constexpr uint32_t combined() const { return (static_cast<uint32_t>(systemId) << 16) | classId; }
  /// The reverse of combined().
  static constexpr SerialTypeID fromCombined(uint32_t id) {
    return {static_cast<uint16_t>(id >> 16), static_cast<uint16_t>(id & 0xFFFF)};
  }
};

constexpr char ELEMENT_NAME[] = "element";  ///< field name of each element of a list record

constexpr uint16_t SYSTEM_VELTRA_COMMON = 0x51;  ///< this library's own records
constexpr uint16_t SYSTEM_FIBRE = 0x41;          ///< records of the fibre services

/// Name of a record's combined id in logs and dumps; empty for an id without one. Two names differ
/// from the class names. Defined with the records themselves, which this folder does not know.
VELTRA_EXPORT const char* veltraCommonIdToString(uint32_t combinedId);

/// Name of a system range; empty for every range this library's records use.
VELTRA_EXPORT const char* veltraSystemIdToString(uint32_t systemId);

}  // namespace Marshal
