#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/common/ResultSummary.h>
#include <libinspect/container/FieldTrace.h>
#include <libinspect/records/IsoTime.h>
#include <libinspect/records/Measurements.h>

namespace Inspect {

/// A summary as the commands show it: its full JSON with times as ISO 8601 and measurements as objects.
Json::Value summaryJson(const Veltra::ResultSummary& summary);

/// The result of decoding a payload.
struct DecodedRecord {
  enum Outcome {
    NO_RECORD,  ///< no known record begins here
    DECODED,
    DAMAGED,  ///< a known record, which did not decode
  };
  Outcome outcome = NO_RECORD;
  uint32_t id = 0;                      ///< combined serial type id
  std::string name;                     ///< of its class
  int status = 0;                       ///< code of deserialize()
  uint32_t used = 0;                    ///< bytes the record took
  std::optional<int> scaleWithoutText;  ///< the first one found
  bool hasNegativeCount = false;

  /// The record itself; null unless a record of this class was decoded.
  template <class Record>
  const Record* as() const {
    return id == Record::SERIAL_TYPE_ID ? static_cast<const Record*>(value.get()) : nullptr;
  }
  /// Its JSON, many times the size of the record; null if none was decoded, or one that cannot be shown as text.
  /// @param reveal  give secrets as they are; otherwise they are masked
  Json::Value toJson(bool reveal) const;

  std::shared_ptr<const void> value;  ///< of the class that `id` names
  Json::Value (*valueJson)(const void* value) = nullptr;
};

/// Decodes the headed record at the beginning of bytes, chosen by its serial type id. Never stops the program.
/// @param onField  none, or receives every field that is read, its path below the name of the record
DecodedRecord decodeRecord(const std::vector<uint8_t>& bytes, const OnField& onField = {});

/// Overwrites by asterisks what may not be shown of a payload: the secrets of the settings it begins with, and all
/// bytes of a damaged record of settings or of anything else that names secrets.
/// @param record  what decodeRecord() made of the bytes
void maskSecrets(std::vector<uint8_t>& bytes, const DecodedRecord& record);

}  // namespace Inspect
