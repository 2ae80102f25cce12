#include <libcrossplatform/serialization/MarshalTypes.h>

namespace Marshal {

const char* veltraCommonIdToString(uint32_t combinedId) {
  switch (combinedId) {
    case 0x510001:
      return "ResultMetadata";
    case 0x510002:
      return "ResultMetadataList";
    case 0x510003:
      return "EquipmentInformation";
    case 0x510004:
      return "InstrumentSettings";
    case 0x510006:
      return "FolderMetadataList";
    default:
      return "";
  }
}

const char* veltraSystemIdToString(uint32_t) {
  return "";
}

}  // namespace Marshal
