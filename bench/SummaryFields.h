#pragma once

#include <cstdint>
#include <string>

namespace Bench {

struct Measurement {
  int32_t raw = 0;
  int8_t scaledTo = 0;
  int8_t type = 0;
};

/// The fields of a result summary without any library around them: what the limits store and load, and what the peers
/// are given.
struct SummaryFields {
  std::string resultName;
  int8_t resultType = 0;
  int64_t timeStamp = 0;
  int8_t status = 0;
  Measurement length;
  Measurement headroom;
  uint32_t testFlags = 0;
  int8_t numPassTests = 0;
  int8_t numPassStarTests = 0;
  int8_t numFailTests = 0;
};

constexpr uint32_t SUMMARY_BYTES = 69;  ///< on the wire, with the 20 letters of the sample's name
constexpr int LIST_SIZE = 1000;

inline SummaryFields sampleFields() {
  return {"Floor 2 / Panel A-17", 1, 1706692500, 8, {452, 1, 1}, {13, 1, 3}, 0x80000001u, 12, 1, 0};
}

}  // namespace Bench
