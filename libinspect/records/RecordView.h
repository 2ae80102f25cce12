#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <json/value.h>

#include <libcrossplatform/common/DisplayMeas.h>
#include <libcrossplatform/common/ResultSummary.h>
#include <libinspect/container/FieldTrace.h>

namespace Inspect {

/// A time as ISO 8601, UTC: 2024-01-31T09:15:00Z; empty for a time that cannot be written.
std::string isoUtc(time_t time);
/// Reads the form isoUtc() writes, or whole seconds since 1970.
bool fromIsoUtc(const std::string& text, time_t& time);

/// The number of a measurement that has one, of a bound too: the nearest to what its decimal text says. The library's
/// own conversions go through single precision.
std::optional<double> measuredNumber(const Veltra::DisplayMeas& measurement);
/// {"value": 12.5, "relation": "=", "text": "12.5"}; relation one of "=", ">", "<", "n/a", "none"; value null where
/// there is no number. A scale without a text gives null for both value and text, where the library would stop.
Json::Value measurementJson(const Veltra::DisplayMeas& measurement);
/// The decimal text of such a value with all digits the measurement has, 12.50; empty for any other value.
std::string digitsOf(const Json::Value& number);
/// The measurement for people: its relation and number, "-" where there is no number.
std::string measurementText(const Veltra::DisplayMeas& measurement);

/// A summary as the commands show it: its full JSON with times as ISO 8601 and measurements as objects.
Json::Value summaryJson(const Veltra::ResultSummary& summary);

/// What decoding a payload gave.
struct DecodedRecord {
  enum Outcome {
    NO_RECORD,  ///< no known record begins here
    DECODED,
    DAMAGED,  ///< a known record, which did not decode
  };
  Outcome outcome = NO_RECORD;
  uint32_t id = 0;   ///< combined serial type id
  std::string name;  ///< of its class
  Json::Value json;
  int status = 0;     ///< code of deserialize()
  uint32_t used = 0;  ///< bytes the record took
  bool wantsJson = true;
  bool hasScaleWithoutText = false;
  bool hasNegativeCount = false;
};

enum class RecordForm { JSON, VERDICT_ALONE };

/// Decodes the headed record that bytes begin with, told by its serial type id. Never stops the program.
/// @param form   whether the JSON is wanted, which takes many times the bytes of the record
/// @param trace  null, or receives every field that was read
DecodedRecord decodeRecord(const std::vector<uint8_t>& bytes, RecordForm form,
                           std::vector<TracedField>* trace = nullptr);

/// The records that are decoded: combined id and class name.
std::vector<std::pair<uint32_t, std::string>> knownRecords();

}  // namespace Inspect
