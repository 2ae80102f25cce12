#include <libinspect/records/RecordCheck.h>

#include <fmt/format.h>

namespace Inspect {
namespace {

/// A hundred times the size of the records of a result, and a fraction of a second of work: a small file can contain
/// gigabytes of them.
constexpr uint64_t MOST_RECORD_BYTES = uint64_t{1} * 1024 * 1024;

}  // namespace

DecodedRecord examineRecord(const ByteSource& source, const SectionInfo& section, std::vector<uint8_t>& bytes,
                            Findings& findings) {
  DecodedRecord record;
  std::string error;
  const auto add = [&](FindingCode code, std::string wanted, std::string found) {
    findings.add({code, section.payloadOffset(), section.number, std::move(wanted), std::move(found)});
  };
  if (!loadPayload(source, section, bytes, error)) {
    findings.add(inflateFinding(section));
    return record;
  }
  record = decodeRecord(bytes);
  const bool isSummary = section.header.type == PFile::SECTION_RESULT_SUMMARY;
  if (record.outcome == DecodedRecord::DAMAGED) {
    add(E09_RECORD, "a " + record.name, fmt::format("code {}", record.status));
  } else if (isSummary && record.id != Veltra::ResultSummary::SERIAL_TYPE_ID) {
    add(E09_RECORD, "a ResultSummary", record.name.empty() ? "no known record" : record.name);
  }
  if (record.outcome != DecodedRecord::DECODED) return record;
  if (record.scaleWithoutText) {
    add(E10_SCALE_WITHOUT_TEXT, "a scale from -1 to 4", std::to_string(*record.scaleWithoutText));
  }
  if (record.hasNegativeCount) add(W04_NEGATIVE_COUNT, "counts of 0 to 127", "a negative count");
  if (record.used < bytes.size()) {
    add(W03_BYTES_AFTER_END, fmt::format("{} bytes of {}", record.used, record.name),
        fmt::format("{} bytes", bytes.size()));
  }
  return record;
}

ContainerReport examineDeep(const ByteSource& source) {
  uint64_t recordBytes = 0;
  bool isToldOfRest = false;
  return examine(source, Examination::ORDINARY, [&](const SectionInfo& section, Findings& findings) {
    if (section.number == 0 || section.verdict != DataVerdict::OK) return;
    std::vector<uint8_t> bytes;
    if (recordBytes < MOST_RECORD_BYTES) {
      const DecodedRecord record = examineRecord(source, section, bytes, findings);
      if (record.outcome != DecodedRecord::NO_RECORD) recordBytes += bytes.size();
      return;
    }
    std::string error;
    if (!loadPayload(source, section, bytes, error)) findings.add(inflateFinding(section));
    if (isToldOfRest) return;
    findings.add({W06_RECORDS_NOT_DECODED, section.offset, section.number,
                  fmt::format("at most {} bytes of records in a file", MOST_RECORD_BYTES),
                  fmt::format("{} before this section", recordBytes)});
    isToldOfRest = true;
  });
}

}  // namespace Inspect
