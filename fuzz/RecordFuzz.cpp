// Every record: one with a header is told by the id it begins with, and rebuilt by the settings factory if it is one of
// settings; every other input is tried as each record there is.
#include <algorithm>

#include <libcrossplatform/common/RecordTypes.h>
#include <libcrossplatform/common/Tweak.h>
#include <libcrossplatform/serialization/Header.h>

#include "RecordProperties.h"

using namespace Veltra;

namespace {

// What holds beyond the properties of every record.
void checkMore(const Marshal::ISerializable&) {}

void checkMore(const ResultSummary& summary) {
  const ResultSummary copy = summary;
  // Where a measurement is not a number the summary equals nothing, its copy included.
  const bool comparable = !summary.length.value.isNotANumber() && !summary.headroom.value.isNotANumber();
  FUZZ_CHECK((copy == summary) == comparable);
}

void checkMore(const ResultPathSummaryList& list) {
  for (const auto& element : list) {
    element->getDateTimeString();
    const ResultPathSummary* const found = list.find(element->resultName);
    FUZZ_CHECK(found != nullptr && found->resultName == element->resultName);
  }
}

template <class Record>
void check(const Fuzz::Input& input, Fuzz::Type<Record>) {
  Record record;
  if (Fuzz::checkRecord(input, record) == Marshal::STREAM_OK) checkMore(record);
}

/// What is not tried here would not be tried at all.
bool isComplete() {
  std::vector<uint32_t> ids;
  Fuzz::forEach(Fuzz::HeadedRecords(), [&](auto record) { ids.push_back(decltype(record)::type::SERIAL_TYPE_ID); });
  std::sort(ids.begin(), ids.end());
  const auto hasId = [](const RecordType& row, uint32_t id) { return row.id == id; };
  const auto types = recordTypes();
  return std::equal(types.begin(), types.end(), ids.begin(), ids.end(), hasId);
}

/// Settings rebuilt from bytes whose type nobody knows.
void checkFactory(Fuzz::Bytes bytes, Marshal::StreamOpStatus header, uint32_t id) {
  const Fuzz::Bytes before = bytes;
  Marshal::StreamOpStatus status = Marshal::STREAM_OK;
  const auto settings = Settings::create(bytes.data(), static_cast<unsigned>(bytes.size()), status);
  FUZZ_CHECK(bytes == before);
  FUZZ_CHECK(settings == nullptr || status == Marshal::STREAM_OK);
  if (status != Marshal::STREAM_OK) return;
  FUZZ_CHECK(header == Marshal::STREAM_OK);
  const std::unique_ptr<Settings> fresh = Settings::create(id);
  FUZZ_CHECK((settings != nullptr) == (fresh != nullptr));
  if (settings == nullptr) return;
  FUZZ_CHECK(fresh->getSettingsType() == settings->getSettingsType());
  Fuzz::Bytes written = Fuzz::bytesOf(*settings);
  const auto again = Settings::create(written.data(), static_cast<unsigned>(written.size()), status);
  FUZZ_CHECK(again != nullptr && status == Marshal::STREAM_OK);
  FUZZ_CHECK(again->getSettingsType() == settings->getSettingsType());
  FUZZ_CHECK(!Fuzz::readsBack(*settings) || Fuzz::bytesOf(*again) == written);
  // What one object shows another takes.
  const Json::Value json = settings->toJson(Dump::DumpFlags());
  FUZZ_CHECK(fresh->fromJson(&json));
  FUZZ_CHECK(!fresh->fromJson(nullptr));
}

/// A value is kept through its text, and a text it does not take leaves it alone.
template <class T>
void checkTweak(const Fuzz::Input& input) {
  Tweak<T> tweak("a", T(), "");
  Tweak<T> again("b", T(), "");
  Marshal::ByteStreamReader in(input.data, input.size32());
  if (tweak.deserialize(in) == Marshal::STREAM_OK) {
    FUZZ_CHECK(again.setFromText(tweak.getValueText()) == TWEAK_OK);
    FUZZ_CHECK(again.getValueText() == tweak.getValueText());
  }
  const std::string before = tweak.getValueText();
  if (tweak.setFromText(input.text()) != TWEAK_OK) FUZZ_CHECK(tweak.getValueText() == before);
}

/// Arithmetic and comparison of two values read one after the other, whatever their scales.
void checkMeasurements(const Fuzz::Input& input) {
  Marshal::ByteStreamReader in(input.data, input.size32());
  ToleranceMeas a, b;
  if (a.deserialize(in) != Marshal::STREAM_OK || b.deserialize(in) != Marshal::STREAM_OK) return;
  FUZZ_CHECK(a.isSameAs(a));
  const ScaledInt &x = a.value, &y = b.value;
  FUZZ_CHECK(!(x < y && x > y));
  FUZZ_CHECK(!(x < y) || x <= y);
  max(a, b).calculateDisplayType();
  subtractWithQuadratureTolerance(a, b).calculateDisplayType();
  addLossToleranceMeas(a, b).abs().valueToDisplayMeas();
  minTolerance(a, b).isSameAs(b);
  x.avg(y);
  (x - y).toDouble();
  (x + y).toFloat();
  ScaledInt read;
  FUZZ_CHECK(read.fromString(x.toString()));
}

}  // namespace

void Fuzz::runTarget(const Input& input) {
  static const bool IS_COMPLETE = isComplete();
  FUZZ_CHECK(IS_COMPLETE);
  if (input.size == 0) return;
  Marshal::ByteStreamReader in(input.data, input.size32());
  uint32_t id = 0;
  const Marshal::StreamOpStatus status = Marshal::peekHeaderSerialTypeID(in, id);
  FUZZ_CHECK(in.position() == 0 || status != Marshal::STREAM_OK);
  guarded([&] { checkFactory(input.bytes(), status, id); });
  forEach(HeadedRecords(), [&](auto record) {
    if (status != Marshal::STREAM_OK || decltype(record)::type::SERIAL_TYPE_ID == id) check(input, record);
  });
  if (status == Marshal::STREAM_OK) return;
  forEach(PlainRecords(), [&](auto record) { check(input, record); });
  forEach(Types<int, unsigned, float, std::string>(),
          [&](auto value) { checkTweak<typename decltype(value)::type>(input); });
  guarded([&] { checkMeasurements(input); });
}
