// Every headed record, told by the id it begins with.
#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/EquipmentInformation.h>
#include <libcrossplatform/common/FolderMetadata.h>
#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/OtdrSpan.h>
#include <libcrossplatform/common/RecordTypes.h>
#include <libcrossplatform/common/ResultSummary.h>
#include <libcrossplatform/serialization/Header.h>

#include <algorithm>

#include "RecordProperties.h"

namespace {

struct HeadedRecord {
  uint32_t id;
  Marshal::StreamOpStatus (*check)(const Fuzz::Input& input);
};

template <class Record>
constexpr HeadedRecord headed() {
  return {Record::SERIAL_TYPE_ID, Fuzz::checkRecord<Record>};
}

/// All there are. The records without a header are left out: PlainRecordFuzz.cpp has them, the path summaries stand in
/// ResultSummaryFuzz.cpp.
constexpr HeadedRecord RECORDS[] = {
    headed<Veltra::ResultSummary>(),
    headed<Veltra::ResultSummaryList>(),
    headed<Veltra::EquipmentInformation>(),
    headed<Veltra::InstrumentSettings>(),
    headed<Veltra::OrbelSettings>(),
    headed<Veltra::FolderMetadataList>(),
    headed<Veltra::DatabaseVersion>(),
    headed<Veltra::DatabaseDescriptorList>(),
    headed<Veltra::DatabasePackageManifestSummary>(),
    headed<Veltra::DatabasePackageManifest>(),
    headed<FibDbus::OtdrSpan>(),
};

bool hasEveryRecord() {
  return std::all_of(Veltra::recordTypes().begin(), Veltra::recordTypes().end(), [](const Veltra::RecordType& type) {
    return std::any_of(std::begin(RECORDS), std::end(RECORDS), [&](const HeadedRecord& r) { return r.id == type.id; });
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  return Fuzz::runInput(data, size, [](const Fuzz::Input& input) {
    static const bool IS_COMPLETE = hasEveryRecord();
    FUZZ_CHECK(IS_COMPLETE);
    if (input.size == 0) return;
    Marshal::ByteStreamReader in(input.data, input.size32());
    uint32_t id = 0;
    const Marshal::StreamOpStatus status = Marshal::peekHeaderSerialTypeID(in, id);
    FUZZ_CHECK(in.position() == 0 || status != Marshal::STREAM_OK);
    for (const HeadedRecord& record : RECORDS) {
      if (status != Marshal::STREAM_OK || record.id == id) Fuzz::guarded([&] { record.check(input); });
    }
  });
}
