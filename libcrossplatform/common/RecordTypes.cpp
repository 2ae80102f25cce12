#include <libcrossplatform/common/RecordTypes.h>

#include <libcrossplatform/common/DatabasePackageManifest.h>
#include <libcrossplatform/common/EquipmentInformation.h>
#include <libcrossplatform/common/FolderMetadata.h>
#include <libcrossplatform/common/InstrumentSettings.h>
#include <libcrossplatform/common/OrbelSettings.h>
#include <libcrossplatform/common/OtdrSpan.h>
#include <libcrossplatform/common/ResultSummary.h>

namespace Veltra {
namespace {

// The log names are those in the logs of instruments in the field: the result summaries differ from their class names,
// and records added later have none.
constexpr RecordType RECORD_TYPES[] = {
    {FibDbus::OtdrSpan::SERIAL_TYPE_ID, "OtdrSpan", ""},
    {ResultSummary::SERIAL_TYPE_ID, "ResultSummary", "ResultMetadata"},
    {ResultSummaryList::SERIAL_TYPE_ID, "ResultSummaryList", "ResultMetadataList"},
    {EquipmentInformation::SERIAL_TYPE_ID, "EquipmentInformation", "EquipmentInformation"},
    {InstrumentSettings::SERIAL_TYPE_ID, "InstrumentSettings", "InstrumentSettings"},
    {FolderMetadataList::SERIAL_TYPE_ID, "FolderMetadataList", "FolderMetadataList"},
    {DatabasePackageManifestSummary::SERIAL_TYPE_ID, "DatabasePackageManifestSummary", ""},
    {DatabaseVersion::SERIAL_TYPE_ID, "DatabaseVersion", ""},
    {DatabasePackageManifest::SERIAL_TYPE_ID, "DatabasePackageManifest", ""},
    {DatabaseDescriptorList::SERIAL_TYPE_ID, "DatabaseDescriptorList", ""},
    {OrbelSettings::SERIAL_TYPE_ID, "OrbelSettings", ""},
};

constexpr bool isInOrder() {
  for (std::size_t i = 1; i < std::size(RECORD_TYPES); ++i) {
    if (RECORD_TYPES[i - 1].id >= RECORD_TYPES[i].id) return false;
  }
  return true;
}
static_assert(isInOrder(), "no id stands twice");

}  // namespace

gsl::span<const RecordType> recordTypes() {
  return RECORD_TYPES;
}

const RecordType* findRecordType(uint32_t id) {
  for (const RecordType& type : RECORD_TYPES) {
    if (type.id == id) return &type;
  }
  return nullptr;
}

}  // namespace Veltra

namespace Marshal {

const char* veltraCommonIdToString(uint32_t combinedId) {
  const Veltra::RecordType* const type = Veltra::findRecordType(combinedId);
  return type != nullptr ? type->logName : "";
}

const char* veltraSystemIdToString(uint32_t) {
  return "";
}

}  // namespace Marshal
