#include <libinspect/records/RecordView.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <fmt/format.h>

#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/EquipmentInformation.h>
#include <libcrossplatform/common/FolderMetadata.h>
#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/OtdrSpan.h>
#include <libcrossplatform/common/TextUtil.h>
#include <libcrossplatform/common/TimeUtil.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/Header.h>
#include <libinspect/container/FieldTrace.h>

namespace Inspect {
namespace {

using Veltra::DisplayMeas;
using Veltra::ResultSummary;
using Veltra::ScaledInt;

const char* relationOf(Veltra::DisplayType type) {
  switch (type) {
    case Veltra::DISPLAY_TYPE_VALUE:
      return "=";
    case Veltra::DISPLAY_TYPE_GREATER_THAN:
      return ">";
    case Veltra::DISPLAY_TYPE_LESS_THAN:
      return "<";
    case Veltra::DISPLAY_TYPE_NOT_APPLICABLE:
      return "none";
    default:
      return "n/a";
  }
}

constexpr char DIGITS_FOLLOW[] = "//";  // what JsonCpp wants a comment to begin with

void noteOddities(const ResultSummary& summary, DecodedRecord& record) {
  if (!summary.length.value.hasPrintableScale() || !summary.headroom.value.hasPrintableScale()) {
    record.hasScaleWithoutText = true;
  }
  if (summary.numPassTests < 0 || summary.numPassStarTests < 0 || summary.numFailTests < 0) {
    record.hasNegativeCount = true;
  }
}

void decodeSummary(Marshal::IObjectReader& in, DecodedRecord& record) {
  ResultSummary summary;
  record.status = summary.deserialize(in);
  if (record.wantsJson) record.json = summaryJson(summary);
  noteOddities(summary, record);
}

void decodeSummaryList(Marshal::IObjectReader& in, DecodedRecord& record) {
  Veltra::ResultSummaryList list;
  record.status = list.deserialize(in);
  for (const auto& summary : list) noteOddities(*summary, record);
  if (!record.wantsJson) return;
  Json::Value& object = record.json[Veltra::ResultSummaryList::JSON_ROOT_NAME];
  object["size"] = static_cast<unsigned>(list.size());
  object["items"] = Json::Value(Json::arrayValue);
  for (const auto& summary : list) object["items"].append(summaryJson(*summary));
}

/// A record whose own full JSON is what is shown.
template <class Record>
void decodeJsonable(Marshal::IObjectReader& in, DecodedRecord& record) {
  Record decoded;
  record.status = decoded.deserialize(in);
  if (record.wantsJson) record.json = decoded.toJson(Dump::DumpFlags());
}

void decodeEquipment(Marshal::IObjectReader& in, DecodedRecord& record) {
  Veltra::EquipmentInformation equipment;
  record.status = equipment.deserialize(in);
  if (!record.wantsJson) return;
  record.json[record.name] = equipment.toJson(Dump::DumpFlags());
  Json::Value& object = record.json[record.name];
  object["moduleCalibrationTime"] = isoUtc(static_cast<time_t>(equipment.getModuleCalibrationTime()));
  object["moduleFirstUseDate"] = isoUtc(static_cast<time_t>(equipment.getModuleFirstUseDate()));
  object["liaCalibrationTime"] = isoUtc(static_cast<time_t>(equipment.getLiaCalibrationTime()));
}

/// A record without a JSON form: its fields by their names.
template <class Record>
void decodeByNames(Marshal::IObjectReader& in, DecodedRecord& record) {
  Record decoded;
  if (!record.wantsJson) {
    record.status = decoded.deserialize(in);
    return;
  }
  TracingReader tracing(in);
  record.status = decoded.deserialize(tracing);
  record.json[record.name] = treeOf(tracing.trace());
}

/// A path without its terminating zero would stop the program: it is read as a failure instead.
template <class Record>
void decodePackage(Marshal::IObjectReader& in, DecodedRecord& record) {
  TracingReader guarded(in);
  guarded.refuseOpenRuns();
  decodeJsonable<Record>(guarded, record);
}

void decodeSpan(Marshal::IObjectReader& in, DecodedRecord& record) {
  FibDbus::OtdrSpan span;
  record.status = span.deserialize(in);
  record.hasScaleWithoutText = !span.spanStart.hasPrintableScale() || !span.spanEnd.hasPrintableScale();
  if (record.wantsJson && !record.hasScaleWithoutText) record.json[record.name] = span.toJson(Dump::DumpFlags());
}

/// The records told by their serial type id.
struct Decoder {
  uint32_t id;
  const char* name;
  void (*decode)(Marshal::IObjectReader& in, DecodedRecord& record);
};
constexpr Decoder DECODERS[] = {
    {ResultSummary::SERIAL_TYPE_ID, ResultSummary::JSON_ROOT_NAME, decodeSummary},
    {Veltra::ResultSummaryList::SERIAL_TYPE_ID, Veltra::ResultSummaryList::JSON_ROOT_NAME, decodeSummaryList},
    {Veltra::EquipmentInformation::SERIAL_TYPE_ID, "EquipmentInformation", decodeEquipment},
    {Veltra::FolderMetadataList::SERIAL_TYPE_ID, "FolderMetadataList", decodeByNames<Veltra::FolderMetadataList>},
    {FibDbus::OtdrSpan::SERIAL_TYPE_ID, "OtdrSpan", decodeSpan},
    {Veltra::InstrumentSettings::SERIAL_TYPE_ID, "InstrumentSettings", decodeJsonable<Veltra::InstrumentSettings>},
    {Veltra::OrbelSettings::SERIAL_TYPE_ID, "OrbelSettings", decodeJsonable<Veltra::OrbelSettings>},
    {Veltra::DatabaseVersion::SERIAL_TYPE_ID, "DatabaseVersion", decodeJsonable<Veltra::DatabaseVersion>},
    {Veltra::DatabasePackageManifestSummary::SERIAL_TYPE_ID, "DatabasePackageManifestSummary",
     decodeJsonable<Veltra::DatabasePackageManifestSummary>},
    {Veltra::DatabaseDescriptorList::SERIAL_TYPE_ID, "DatabaseDescriptorList",
     decodePackage<Veltra::DatabaseDescriptorList>},
    {Veltra::DatabasePackageManifest::SERIAL_TYPE_ID, "DatabasePackageManifest",
     decodePackage<Veltra::DatabasePackageManifest>},
};

}  // namespace

std::string isoUtc(time_t time) {
  const std::string text = Veltra::isoTime(time);
  return text.empty() ? text : text + "Z";
}

bool fromIsoUtc(const std::string& text, time_t& time) {
  int64_t seconds = 0;
  if (Veltra::strToInt64(seconds, text.c_str(), 10)) {
    time = static_cast<time_t>(seconds);
    return true;
  }
  std::tm parts{};
  int end = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2dZ%n", &parts.tm_year, &parts.tm_mon, &parts.tm_mday,
                  &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &end) != 6 ||
      static_cast<std::size_t>(end) != text.size()) {
    return false;
  }
  parts.tm_year -= 1900;
  parts.tm_mon -= 1;
  const time_t read = timegm(&parts);
  // timegm() takes the 31st of April for the 1st of May: what does not print back was no date.
  if (isoUtc(read) != text) return false;
  time = read;
  return true;
}

std::string digitsOf(const Json::Value& number) {
  const std::string comment = number.getComment(Json::commentAfterOnSameLine);
  return comment.empty() ? comment : comment.substr(sizeof DIGITS_FOLLOW - 1);
}

std::optional<double> measuredNumber(const DisplayMeas& measurement) {
  const ScaledInt& value = measurement.value;
  const bool isShown =
      measurement.type >= Veltra::DISPLAY_TYPE_VALUE && measurement.type <= Veltra::DISPLAY_TYPE_LESS_THAN;
  if (!isShown || !value.isFinite() || !value.hasPrintableScale()) return std::nullopt;
  const double raw = value.getRaw();
  const int scale = value.getScaledTo();
  return scale < 0 ? raw * std::pow(10.0, -scale) : raw / std::pow(10.0, scale);
}

Json::Value measurementJson(const DisplayMeas& measurement) {
  Json::Value json(Json::objectValue);
  const char* const relation = relationOf(measurement.type);
  const bool printable = measurement.value.hasPrintableScale();
  const std::optional<double> number = measuredNumber(measurement);
  json["relation"] = relation;
  json["value"] = number ? Json::Value(*number) : Json::Value();
  if (number) {  // the digits the measurement has
    const int decimals = std::max<int>(measurement.value.getScaledTo(), 0);
    json["value"].setComment(fmt::format("{}{:.{}f}", DIGITS_FOLLOW, *number, decimals), Json::commentAfterOnSameLine);
  }
  json["text"] = printable ? Json::Value(measurement.toString()) : Json::Value();
  return json;
}

std::string measurementText(const DisplayMeas& measurement) {
  const Json::Value json = measurementJson(measurement);
  return json["value"].isNull() ? "-" : json["text"].asString();
}

Json::Value summaryJson(const ResultSummary& summary) {
  // The library's JSON without the texts it may not be able to print; they are put in below.
  ResultSummary rest = summary;
  rest.length.clear();
  rest.headroom.clear();
  Json::Value json = rest.toJson(Dump::DumpFlags());
  Json::Value& object = json[ResultSummary::JSON_ROOT_NAME];
  object["timeStamp"] = isoUtc(static_cast<time_t>(summary.timeStamp));
  object["length"] = measurementJson(summary.length);
  object["headroom"] = measurementJson(summary.headroom);
  return json;
}

DecodedRecord decodeRecord(const std::vector<uint8_t>& bytes, RecordForm form, std::vector<TracedField>* trace) {
  DecodedRecord record;
  record.wantsJson = form == RecordForm::JSON;
  if (bytes.empty()) return record;
  Marshal::ByteStreamReader in(bytes.data(), static_cast<uint32_t>(bytes.size()));
  if (Marshal::peekHeaderSerialTypeID(in, record.id) != Marshal::STREAM_OK) return record;
  for (const Decoder& decoder : DECODERS) {
    if (decoder.id != record.id) continue;
    record.name = decoder.name;
    TracingReader tracing(in);
    decoder.decode(trace != nullptr ? static_cast<Marshal::IObjectReader&>(tracing) : in, record);
    if (trace != nullptr) *trace = tracing.trace();
    record.used = in.position();
    record.outcome = record.status == Marshal::STREAM_OK ? DecodedRecord::DECODED : DecodedRecord::DAMAGED;
  }
  return record;
}

std::vector<std::pair<uint32_t, std::string>> knownRecords() {
  std::vector<std::pair<uint32_t, std::string>> records;
  for (const Decoder& decoder : DECODERS) records.emplace_back(decoder.id, decoder.name);
  return records;
}

}  // namespace Inspect
