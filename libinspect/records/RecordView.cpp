#include <libinspect/records/RecordView.h>

#include <fmt/format.h>

#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/EquipmentInformation.h>
#include <libcrossplatform/common/FolderMetadata.h>
#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/OtdrSpan.h>
#include <libcrossplatform/common/RecordTypes.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/Header.h>
#include <libinspect/container/Secrets.h>

namespace Inspect {
namespace {

using Veltra::EquipmentInformation;
using Veltra::FolderMetadataList;
using Veltra::ResultSummary;
using Veltra::ResultSummaryList;

// The JSON of each record. Records without an overload here use their own.

Json::Value jsonOf(const Dump::IJsonable& record) {
  return record.toJson(Dump::DumpFlags());
}

Json::Value jsonOf(const ResultSummary& summary) {
  return summaryJson(summary);
}

Json::Value jsonOf(const ResultSummaryList& list) {
  Json::Value json;
  Json::Value& object = json[ResultSummaryList::JSON_ROOT_NAME];
  object["size"] = static_cast<unsigned>(list.size());
  object["items"] = Json::Value(Json::arrayValue);
  for (const auto& summary : list) object["items"].append(summaryJson(*summary));
  return json;
}

Json::Value jsonOf(const EquipmentInformation& equipment) {
  Json::Value json;
  Json::Value& object = json["EquipmentInformation"] = equipment.toJson(Dump::DumpFlags());
  object["moduleCalibrationTime"] = isoUtc(static_cast<time_t>(equipment.getModuleCalibrationTime()));
  object["moduleFirstUseDate"] = isoUtc(static_cast<time_t>(equipment.getModuleFirstUseDate()));
  object["liaCalibrationTime"] = isoUtc(static_cast<time_t>(equipment.getLiaCalibrationTime()));
  return json;
}

Json::Value jsonOf(const FolderMetadataList& list) {
  Json::Value json;
  Json::Value& object = json["FolderMetadataList"] = Json::Value(Json::objectValue);
  for (std::size_t i = 0; i < list.size(); ++i) {
    Json::Value& folder = object[fmt::format("element[{}]", i)];
    folder["name"] = list[i]._name;
    folder["dirPath"] = list[i]._dirPath;
    folder["hasSubdir"] = list[i]._hasSubdir;
  }
  return json;
}

Json::Value jsonOf(const FibDbus::OtdrSpan& span) {
  Json::Value json;
  if (!span.spanStart.hasPrintableScale() || !span.spanEnd.hasPrintableScale()) return json;
  json["OtdrSpan"] = span.toJson(Dump::DumpFlags());
  return json;
}

// What is odd about a record, but not a reason to refuse it.

template <class Record>
void noteOddities(const Record&, DecodedRecord&) {}

void noteScale(const Veltra::ScaledInt& value, DecodedRecord& record) {
  if (!value.hasPrintableScale() && !record.scaleWithoutText) record.scaleWithoutText = value.getScaledTo();
}

void noteOddities(const ResultSummary& summary, DecodedRecord& record) {
  noteScale(summary.length.value, record);
  noteScale(summary.headroom.value, record);
  if (summary.numPassTests < 0 || summary.numPassStarTests < 0 || summary.numFailTests < 0) {
    record.hasNegativeCount = true;
  }
}

void noteOddities(const ResultSummaryList& list, DecodedRecord& record) {
  for (const auto& summary : list) noteOddities(*summary, record);
}

void noteOddities(const FibDbus::OtdrSpan& span, DecodedRecord& record) {
  noteScale(span.spanStart, record);
  noteScale(span.spanEnd, record);
}

template <class Record>
void decode(Marshal::IObjectReader& in, DecodedRecord& record) {
  const auto value = std::make_shared<Record>();
  record.status = value->deserialize(in);
  noteOddities(*value, record);
  if (record.status != Marshal::STREAM_OK) return;
  record.value = value;
  record.valueJson = [](const void* decoded) { return jsonOf(*static_cast<const Record*>(decoded)); };
}

/// A path without its terminating zero would stop the program: it is read as a failure instead.
template <class Record>
void decodePackage(Marshal::IObjectReader& in, DecodedRecord& record) {
  const OnField nobody;
  TracingReader guarded(in, "", nobody);
  guarded.refuseOpenRuns();
  decode<Record>(guarded, record);
}

/// How to decode the records of Veltra::recordTypes(), in that order.
struct Decoder {
  uint32_t id;
  void (*decode)(Marshal::IObjectReader& in, DecodedRecord& record);
};
constexpr Decoder DECODERS[] = {
    {FibDbus::OtdrSpan::SERIAL_TYPE_ID, decode<FibDbus::OtdrSpan>},
    {ResultSummary::SERIAL_TYPE_ID, decode<ResultSummary>},
    {ResultSummaryList::SERIAL_TYPE_ID, decode<ResultSummaryList>},
    {EquipmentInformation::SERIAL_TYPE_ID, decode<EquipmentInformation>},
    {Veltra::InstrumentSettings::SERIAL_TYPE_ID, decode<Veltra::InstrumentSettings>},
    {FolderMetadataList::SERIAL_TYPE_ID, decode<FolderMetadataList>},
    {Veltra::DatabasePackageManifestSummary::SERIAL_TYPE_ID, decode<Veltra::DatabasePackageManifestSummary>},
    {Veltra::DatabaseVersion::SERIAL_TYPE_ID, decode<Veltra::DatabaseVersion>},
    {Veltra::DatabasePackageManifest::SERIAL_TYPE_ID, decodePackage<Veltra::DatabasePackageManifest>},
    {Veltra::DatabaseDescriptorList::SERIAL_TYPE_ID, decodePackage<Veltra::DatabaseDescriptorList>},
    {Veltra::OrbelSettings::SERIAL_TYPE_ID, decode<Veltra::OrbelSettings>},
};

}  // namespace

Json::Value summaryJson(const ResultSummary& summary) {
  namespace Names = Veltra::SummaryNames;
  Json::Value json;
  Json::Value& object = json[ResultSummary::JSON_ROOT_NAME];
  object[Names::RESULT_NAME] = summary.resultName;
  object[Names::RESULT_TYPE] = toString(summary.resultType);
  object[Names::TIME_STAMP] = isoUtc(static_cast<time_t>(summary.timeStamp));
  object[Names::STATUS] = toString(summary.status);
  object[Names::LENGTH] = measurementJson(summary.length);
  object[Names::HEADROOM] = measurementJson(summary.headroom);
  object[Names::TEST_FLAGS] = Veltra::bitsToJson(summary.testFlags);
  object[Names::NUM_PASS_TESTS] = summary.numPassTests;
  object[Names::NUM_PASS_STAR_TESTS] = summary.numPassStarTests;
  object[Names::NUM_FAIL_TESTS] = summary.numFailTests;
  return json;
}

Json::Value DecodedRecord::toJson(bool reveal) const {
  Json::Value json = value != nullptr ? valueJson(value.get()) : Json::Value();
  return reveal ? json : withoutSecrets(std::move(json));
}

void maskSecrets(std::vector<uint8_t>& bytes, const DecodedRecord& record) {
  constexpr std::size_t TEXT_AT = Marshal::Header::BYTES + sizeof(uint32_t);
  const bool isDecoded = record.outcome == DecodedRecord::DECODED;
  const std::size_t end = isDecoded ? record.used : 0;
  if (record.id == Veltra::OrbelSettings::SERIAL_TYPE_ID && bytes.size() > TEXT_AT) {
    // The record is one text, JSON, with its length before it and a zero after it.
    if (!isDecoded) return maskAll(bytes.data() + TEXT_AT, bytes.size() - TEXT_AT);
    maskSecretsInText(bytes.data() + TEXT_AT, end - 1 - TEXT_AT);
  }
  maskSecretsInBytes(bytes.data() + end, bytes.size() - end);
}

DecodedRecord decodeRecord(const std::vector<uint8_t>& bytes, const OnField& onField) {
  DecodedRecord record;
  if (bytes.empty()) return record;
  Marshal::ByteStreamReader in(bytes.data(), static_cast<uint32_t>(bytes.size()));
  if (Marshal::peekHeaderSerialTypeID(in, record.id) != Marshal::STREAM_OK) return record;
  const Veltra::RecordType* const type = Veltra::findRecordType(record.id);
  if (type == nullptr) return record;
  for (const Decoder& decoder : DECODERS) {
    if (decoder.id != record.id) continue;
    record.name = type->name;
    TracingReader tracing(in, type->name, onField);
    decoder.decode(onField ? static_cast<Marshal::IObjectReader&>(tracing) : in, record);
    record.used = in.position();
    record.outcome = record.status == Marshal::STREAM_OK ? DecodedRecord::DECODED : DecodedRecord::DAMAGED;
  }
  return record;
}

}  // namespace Inspect
