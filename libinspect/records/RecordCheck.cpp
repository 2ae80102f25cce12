#include <libinspect/records/RecordCheck.h>

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/RecordTypes.h>
#include <libcrossplatform/common/ResultSummary.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/Header.h>

namespace Inspect {
namespace {

/// The section types whose readers take one record and no other.
struct BoundType {
  uint16_t type;
  uint32_t record;
};
constexpr BoundType BOUND_TYPES[] = {
    {PFile::SECTION_LIMIT_MANIFEST, Veltra::DatabasePackageManifest::SERIAL_TYPE_ID},
    {PFile::SECTION_CABLE_MANIFEST, Veltra::DatabasePackageManifest::SERIAL_TYPE_ID},
    {PFile::SECTION_RESULT_SUMMARY, Veltra::ResultSummary::SERIAL_TYPE_ID},
};

/// The record that a section of this type must hold; null if it may hold any, or none.
const Veltra::RecordType* boundRecord(uint16_t type) {
  const auto* const row = std::find_if(std::begin(BOUND_TYPES), std::end(BOUND_TYPES),
                                       [type](const BoundType& bound) { return bound.type == type; });
  return row != std::end(BOUND_TYPES) ? Veltra::findRecordType(row->record) : nullptr;
}

/// The record that stored bytes begin with; null if it is no known one.
const Veltra::RecordType* recordAt(const ByteSource& source, uint64_t offset) {
  uint8_t bytes[Marshal::Header::BYTES];
  uint32_t id = 0;
  if (source.readAt(offset, bytes, sizeof bytes) != sizeof bytes) return nullptr;
  Marshal::ByteStreamReader in(bytes, sizeof bytes);
  return Marshal::peekHeaderSerialTypeID(in, id) == Marshal::STREAM_OK ? Veltra::findRecordType(id) : nullptr;
}

}  // namespace

DecodedRecord examineRecord(const ByteSource& source, const SectionInfo& section, std::vector<uint8_t>& bytes,
                            Findings& findings) {
  constexpr uint32_t MOST = PFile::Section::MAX_UNCOMPRESSED;
  const Veltra::RecordType* const bound = boundRecord(section.header.type);
  const std::string wanted = bound != nullptr ? fmt::format("a {}", bound->name) : "";
  DecodedRecord record;
  const auto add = [&](FindingCode code, std::string expected, std::string found) {
    findings.add({code, section.payloadOffset(), section.number, std::move(expected), std::move(found)});
  };
  if (const bool isStored = (section.header.flags & PFile::SECTION_FLAG_COMPRESS) == 0; isStored) {
    const Veltra::RecordType* const begun = recordAt(source, section.payloadOffset());
    if (begun == nullptr && bound != nullptr) add(E09_RECORD, wanted, "no known record");
    if (begun == nullptr) return record;
    if (section.header.dataSize > MOST) {
      add(bound != nullptr ? E09_RECORD : W06_RECORDS_NOT_DECODED,
          fmt::format("a {} of at most {} bytes", begun->name, MOST), counted(section.header.dataSize, "byte"));
      return record;
    }
  }
  std::string error;
  if (!loadPayload(source, section, bytes, error)) {
    findings.add(inflateFinding(section));
    return record;
  }
  record = decodeRecord(bytes);
  if (record.outcome == DecodedRecord::DAMAGED) {
    const bool isOther = bound != nullptr && record.id != bound->id;
    add(E09_RECORD, bound != nullptr ? wanted : "a " + record.name,
        fmt::format("{}code {}", isOther ? "a " + record.name + ", " : "", record.status));
  } else if (bound != nullptr && record.id != bound->id) {
    add(E09_RECORD, wanted, record.name.empty() ? "no known record" : record.name);
  }
  if (record.outcome != DecodedRecord::DECODED) return record;
  if (record.scaleWithoutText) {
    add(E10_SCALE_WITHOUT_TEXT,
        fmt::format("a scale from {} to {}", static_cast<int>(Veltra::ScaledInt::SCALED_TO_TENS),
                    static_cast<int>(Veltra::ScaledInt::SCALED_TO_TENTHOUSANDTHS)),
        std::to_string(*record.scaleWithoutText));
  }
  if (record.hasNegativeCount) add(W04_NEGATIVE_COUNT, "counts of 0 to 127", "a negative count");
  if (record.used < bytes.size()) {
    add(W03_BYTES_AFTER_END, counted(record.used, "byte") + " of " + record.name, counted(bytes.size(), "byte"));
  }
  return record;
}

}  // namespace Inspect
